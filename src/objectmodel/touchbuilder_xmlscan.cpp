#include "objectmodel/touchbuilder_xmlscan_p.h"

#include <algorithm>
#include <cstddef>

namespace Vantrel {

namespace {

constexpr std::size_t maxSize = std::size_t(256) << 20;
constexpr int maxDepth = 16;
constexpr int maxAttributes = 64;
/** Bounds the memory of the parsed document; a gesture of a million points has less. */
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
    explicit XmlScan(std::string *text) : m_text(*text) {}

    bool run()
    {
        m_position = std::min(m_text.find('\0'), m_text.size());
        if (m_position < m_text.size()) {
            return fail("a NUL character");
        }
        m_position = 0;
        if (m_text.compare(0, 3, "\xEF\xBB\xBF") == 0) {
            blank(3);
        }
        while (m_position < m_text.size()) {
            if (!(m_text[m_position] == '<' ? markup() : characterData())) {
                return false;
            }
        }
        return true;
    }

    const std::string &error() const { return m_error; }

private:
    bool startsWith(const char *what) const
    {
        return m_text.compare(m_position, std::char_traits<char>::length(what), what) == 0;
    }

    bool markup()
    {
        if (startsWith("<!--")) {
            return blankThrough("-->", 4);
        }
        if (startsWith("<?")) {
            return blankThrough("?>", 2);
        }
        if (startsWith("<![CDATA[")) {
            return m_depth > 0 ? blankThrough("]]>", 9) : fail("text outside the root element");
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
        while (m_position < end) {
            if (m_depth == 0 && !isSpace(m_text[m_position])) {
                return fail("text outside the root element");
            }
            ++m_position;
        }
        return true;
    }

    bool startTag()
    {
        if (m_depth == 0 && m_numParts > 0) {
            return fail("more than one root element");
        }
        if (m_depth == maxDepth) {
            return fail("elements are nested deeper than 16");
        }
        if (!skipTag()) {
            return false;
        }
        // A tag without an end reaches to the end of the text; the parser complains about it.
        if (m_text[m_position - 2] != '/') {
            ++m_depth;
        }
        return true;
    }

    bool endTag()
    {
        if (m_depth == 0) {
            return fail("an end tag without a start tag");
        }
        --m_depth;
        return skipTag();
    }

    /** To behind the ">" that is in no quotes, or to the end. */
    bool skipTag()
    {
        int numAttributes = 0;
        char quote = 0;
        for (++m_position; m_position < m_text.size(); ++m_position) {
            const char c = m_text[m_position];
            if (c == '<') {
                return fail("\"<\" inside of a tag");
            }
            if (quote) {
                if (c == quote) {
                    quote = 0;
                }
            } else if (c == '"' || c == '\'') {
                quote = c;
            } else if (c == '=') {
                if (++numAttributes > maxAttributes) {
                    return fail("an element with more than 64 attributes");
                }
            } else if (c == '>') {
                ++m_position;
                break;
            }
        }
        m_numParts += 1 + numAttributes;
        return m_numParts <= maxParts || fail("more than 10000000 elements and attributes");
    }

    bool blankThrough(const char *end, std::size_t from)
    {
        const std::size_t found = m_text.find(end, m_position + from);
        if (found == std::string::npos) {
            return fail(std::string("\"") + end + "\" is missing");
        }
        blank(found + std::char_traits<char>::length(end) - m_position);
        return true;
    }

    void blank(std::size_t count)
    {
        for (const std::size_t end = m_position + count; m_position < end; ++m_position) {
            if (m_text[m_position] != '\n') {
                m_text[m_position] = ' ';
            }
        }
    }

    bool fail(const std::string &what)
    {
        const auto here = m_text.begin() + std::ptrdiff_t(m_position);
        const auto row = std::count(m_text.begin(), here, '\n') + 1;
        const std::size_t lineStart = m_position == 0 ? 0 : m_text.rfind('\n', m_position - 1) + 1;
        m_error = xmlPositionText(int(row), int(m_position - lineStart + 1)) + what;
        return false;
    }

    std::string &m_text;
    std::size_t m_position = 0;
    int m_depth = 0;
    int m_numParts = 0; ///< elements and attributes
    std::string m_error;
};

} // namespace

bool scanXml(const std::string &text, std::string *plain, std::string *error)
{
    if (text.size() > maxSize) {
        *error = xmlPositionText(0, 0) + "the text is larger than 256 MiB";
        return false;
    }
    *plain = text;
    XmlScan scan(plain);
    if (scan.run()) {
        return true;
    }
    *error = scan.error();
    return false;
}

std::string xmlPositionText(int row, int column)
{
    std::string text = "<anonymous xml document>";
    if (row > 0) {
        text += ", row " + std::to_string(row) + ", column " + std::to_string(column);
    }
    return text + ": ";
}

} // namespace Vantrel
