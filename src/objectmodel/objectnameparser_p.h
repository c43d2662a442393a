#ifndef VANTREL_OBJECTNAMEPARSER_P_H
#define VANTREL_OBJECTNAMEPARSER_P_H

#include "objectmodel/objectname.h"

#include <QStringView>

namespace Vantrel {

/** Receives the conditions of a multi-property name while it is parsed. */
class NameVisitor
{
public:
    virtual ~NameVisitor() = default;
    /**
     * A quoted value without its escapes. The outermost name has the level 1.
     * The views are valid during the call only.
     */
    virtual void visitText(int level, QStringView name, PropertyValue::Modifiers mode,
                           QStringView value) = 0;
    /** A nested name, with its braces, that is a value of the outermost name. */
    virtual void visitNested(QStringView name, PropertyValue::Modifiers mode, QStringView text) = 0;
};

/**
 * Parses the name at @p index, as parseNameByProperties() does, in linear time
 * and with a call stack that does not grow with the nesting. Conditions that
 * come before a mistake are visited.
 * @return false on failure, which does not depend on @p error being null.
 */
bool parseName(const QString &text, int *index, QString *error, NameVisitor *visitor);

/** "=", "~=" or "?=". */
QLatin1String operatorText(PropertyValue::Modifiers mode);

} // namespace Vantrel

#endif // VANTREL_OBJECTNAMEPARSER_P_H
