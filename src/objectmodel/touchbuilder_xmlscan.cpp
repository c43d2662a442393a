#include "objectmodel/touchbuilder_xmlscan_p.h"

#include <tinyxml.h>

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <vector>

namespace Vantrel {

namespace {

constexpr std::size_t maxSize = std::size_t(256) << 20;
/** The parser copies a tag several times. */
constexpr std::size_t maxTagSize = std::size_t(1) << 20;
constexpr int maxDepth = 16;
/** The parser compares each attribute with all before it. */
constexpr int maxAttributes = 64;
/**
 * Bounds the memory of what is read. A gesture of a million points, each in a
 * sample of its own, has nine million.
 */
constexpr int maxParts = 10000000;

bool isSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

/** What the parser takes for the first character of a name. */
bool isNameStart(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'
        || static_cast<unsigned char>(c) >= 127;
}

class XmlScan
{
public:
    XmlScan(std::string_view text, XmlHandler *handler) : m_text(text), m_handler(handler)
    {
        m_parser.SetTabSize(0); // it need not count rows and columns
    }

    bool run()
    {
        m_position = std::min(m_text.find('\0'), m_text.size());
        if (m_position < m_text.size()) {
            return fail("a NUL character");
        }
        m_position = startsWithAt(0, "\xEF\xBB\xBF") ? 3 : 0;
        while (m_position < m_text.size()) {
            if (!(m_text[m_position] == '<' ? markup() : characterData())) {
                return false;
            }
        }
        if (!m_open.empty()) {
            return fail("the end tag of \"" + m_open.back() + "\" is missing");
        }
        return m_numParts > 0 || fail("there is no element");
    }

    const std::string &error() const { return m_error; }

private:
    bool startsWithAt(std::size_t position, std::string_view what) const
    {
        return m_text.compare(position, what.size(), what) == 0;
    }

    bool startsWith(std::string_view what) const { return startsWithAt(m_position, what); }

    bool markup()
    {
        if (startsWith("<!--")) {
            return skipThrough("-->", 4);
        }
        if (startsWith("<?")) {
            return skipThrough("?>", 2);
        }
        if (startsWith("<![CDATA[")) {
            return m_open.empty() ? fail("text outside the root element") : skipThrough("]]>", 9);
        }
        if (startsWith("<!")) {
            return fail("document types are not supported");
        }
        if (startsWith("</")) {
            return endTag();
        }
        if (m_position + 1 < m_text.size() && isNameStart(m_text[m_position + 1])) {
            return startTag();
        }
        return fail("a tag without a name");
    }

    bool characterData()
    {
        const std::size_t end = std::min(m_text.find('<', m_position), m_text.size());
        if (m_open.empty()) {
            m_position = std::min(m_text.find_first_not_of(" \t\n\r", m_position), end);
        }
        if (m_position < end && m_open.empty()) {
            return fail("text outside the root element");
        }
        m_position = end;
        return true;
    }

    bool startTag()
    {
        if (m_open.empty() && m_numParts > 0) {
            return fail("more than one root element");
        }
        if (m_open.size() == maxDepth) {
            return fail("elements are nested deeper than 16");
        }
        std::size_t size = 0;
        if (!measureTag(&size) || !readElement(m_text.substr(m_position, size))) {
            return false;
        }
        m_position += size;
        return true;
    }

    bool readElement(std::string_view tag)
    {
        const bool isEmpty = tag[tag.size() - 2] == '/';
        const TiXmlElement *element = parsed(tag, isEmpty);
        if (!element) {
            return fail(m_parser.ErrorDesc());
        }
        const int depth = int(m_open.size());
        std::string reason;
        if (!m_handler->startElement(*element, depth, &reason)) {
            return fail(reason);
        }
        if (isEmpty) {
            m_handler->endElement(depth);
        } else {
            m_open.push_back(element->ValueStr());
        }
        return true;
    }

    /** The tag as an element without content; null when the parser rejects it. */
    const TiXmlElement *parsed(std::string_view tag, bool isEmpty)
    {
        m_tag = tag;
        if (!isEmpty && m_tag.back() == '>') {
            m_tag.insert(m_tag.size() - 1, 1, '/');
        }
        m_parser.Clear();
        // Bytes as they are: the parser's UTF-8 mode reads beyond a text that
        // ends inside a character.
        m_parser.Parse(m_tag.c_str(), nullptr, TIXML_ENCODING_LEGACY);
        return m_parser.Error() ? nullptr : m_parser.RootElement();
    }

    bool endTag()
    {
        if (m_open.empty()) {
            return fail("an end tag without a start tag");
        }
        const std::string &name = m_open.back();
        std::size_t end = m_position + 2 + name.size();
        const bool isNamed = startsWithAt(m_position + 2, name);
        while (isNamed && end < m_text.size() && isSpace(m_text[end])) {
            ++end;
        }
        if (!isNamed || end >= m_text.size() || m_text[end] != '>') {
            return fail("the end tag of \"" + name + "\" was expected");
        }
        m_position = end + 1;
        m_open.pop_back();
        m_handler->endElement(int(m_open.size()));
        return true;
    }

    /** Through the ">" that is in no quotes, or to the end, which the parser complains about. */
    bool measureTag(std::size_t *size)
    {
        const char *const begin = m_text.data() + m_position;
        const char *const end = m_text.data() + m_text.size();
        const char *here = begin + 1;
        int numAttributes = 0;
        char quote = 0;
        for (; here != end && (quote || *here != '>') && *here != '<'; ++here) {
            if (quote) {
                quote = *here == quote ? 0 : quote;
            } else if (*here == '"' || *here == '\'') {
                quote = *here;
            } else if (*here == '=') {
                ++numAttributes;
            }
        }
        if (here != end && *here == '<') {
            m_position += std::size_t(here - begin);
            return fail("\"<\" inside of a tag");
        }
        *size = std::size_t(here - begin) + (here != end ? 1 : 0);
        return countTag(*size, numAttributes);
    }

    bool countTag(std::size_t size, int numAttributes)
    {
        if (size > maxTagSize) {
            return fail("a tag larger than 1 MiB");
        }
        if (numAttributes > maxAttributes) {
            return fail("an element with more than 64 attributes");
        }
        m_numParts += 1 + numAttributes;
        return m_numParts <= maxParts || fail("more than 10000000 start tags and attributes");
    }

    bool skipThrough(std::string_view end, std::size_t from)
    {
        const std::size_t found = m_text.find(end, m_position + from);
        if (found == std::string_view::npos) {
            return fail('"' + std::string(end) + "\" is missing");
        }
        m_position = found + end.size();
        return true;
    }

    /** Rows and columns count from 1, columns in bytes. */
    bool fail(const std::string &what)
    {
        const auto here = m_text.begin() + std::ptrdiff_t(m_position);
        const auto row = std::count(m_text.begin(), here, '\n') + 1;
        const std::size_t lineStart = m_position == 0 ? 0 : m_text.rfind('\n', m_position - 1) + 1;
        m_error = "row " + std::to_string(row) + ", column "
            + std::to_string(m_position - lineStart + 1) + ": " + what;
        return false;
    }

    std::string_view m_text;
    XmlHandler *m_handler;
    TiXmlDocument m_parser;
    std::string m_tag;
    std::vector<std::string> m_open; ///< the names of elements without their end tag
    std::size_t m_position = 0;
    int m_numParts = 0; ///< start tags and attributes
    std::string m_error;
};

} // namespace

XmlHandler::~XmlHandler() = default;

bool scanXml(const std::string &text, XmlHandler *handler, std::string *error)
{
    if (text.size() > maxSize) {
        *error = "the text is larger than 256 MiB";
        return false;
    }
    XmlScan scan(text, handler);
    if (scan.run()) {
        return true;
    }
    *error = scan.error();
    return false;
}

} // namespace Vantrel
