#ifndef VANTREL_TOUCHBUILDER_XMLSCAN_P_H
#define VANTREL_TOUCHBUILDER_XMLSCAN_P_H

#include <string>

class TiXmlElement;

namespace Vantrel {

/** Hears of the elements of a document in their order. */
class XmlHandler
{
public:
    virtual ~XmlHandler();
    /**
     * @p element has the attributes and no content; @p depth is 0 for the root.
     * False, with the reason in @p error, ends the reading.
     */
    virtual bool startElement(const TiXmlElement &element, int depth, std::string *error) = 0;
    virtual void endElement(int depth) = 0;
};

/**
 * Reads XML one tag at a time, because a whole document in the parser's form
 * takes ten times the memory of its text. The parser sees each start tag on its
 * own; this function matches the tags, skips comments and the like, and refuses
 * text that is too large, nested too deeply or more than one element.
 */
bool scanXml(const std::string &text, XmlHandler *handler, std::string *error);

} // namespace Vantrel

#endif // VANTREL_TOUCHBUILDER_XMLSCAN_P_H
