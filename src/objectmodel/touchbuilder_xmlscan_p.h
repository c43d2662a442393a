#ifndef VANTREL_TOUCHBUILDER_XMLSCAN_P_H
#define VANTREL_TOUCHBUILDER_XMLSCAN_P_H

#include <string>

namespace Vantrel {

/**
 * Guards TinyXML against hostile text: its parser recurses into elements,
 * compares each attribute with all before it, drops what follows the root
 * element, and does not stop at an embedded NUL. One linear pass refuses
 * text that is too large, nested too deeply or more than one element.
 *
 * @p plain receives the text for the parser: everything but tags and character
 * data is overwritten by spaces, so that both agree on where a tag is.
 */
bool scanXml(const std::string &text, std::string *plain, std::string *error);

/** How errors name a place, from 1; empty without one. Columns count bytes. */
std::string xmlPositionText(int row, int column);

} // namespace Vantrel

#endif // VANTREL_TOUCHBUILDER_XMLSCAN_P_H
