#include "objectmodel/arguments_p.h"

#include "objectmodel/class.h"
#include "objectmodel/inspector.h"
#include "objectmodel/primitivevalue_p.h"

#include <algorithm>

namespace Vantrel {

namespace {

enum class TextShape { None, Character, Text, TextList };

/** What native code finds behind a pointer to a "char"; reading it in another shape would overrun.
 */
TextShape textShape(const Class *c, const ObjectAttribute &attribute)
{
    if (primitiveKind(c) != PrimitiveKind::Char) {
        return TextShape::None;
    }
    if (attribute.isPointer() && attribute.isArray()) {
        return TextShape::TextList;
    }
    return attribute.isPointer() || attribute.isArray() ? TextShape::Text : TextShape::Character;
}

/** How many elements native code may read behind the pointer, at least. */
int elementsGiven(const ObjectAttribute &attribute)
{
    return attribute.isArray() ? attribute.arrayLength() : 1;
}

int elementsWanted(const Argument &declared)
{
    return declared.isArray() ? std::max(1, declared.arrayLength()) : 1;
}

SharedPtr<Object> converted(const SharedPtr<Object> &value, const Argument &declared)
{
    const Class *source = value->type();
    const bool toPointer =
        textShape(declared.type(), declared.attribute()) == TextShape::Text || declared.isPointer();
    if (!source->canConvertTo(declared.type(), value->objectAttribute().isPointer(), toPointer,
                              nullptr)) {
        return {};
    }
    SharedPtr<Object> result = source->convertTo(value, declared.type(), toPointer);
    return result && result->isA(declared.type()) && fits(result, declared) ? result
                                                                            : SharedPtr<Object>();
}

/** The value of a key, or of several keys of bits as in "AlignLeft | AlignTop". */
int valueOfKeys(const Enum &enumType, const QString &keys, bool *ok)
{
    int value = enumType.value(keys, ok);
    if (*ok || !enumType.isMask() || !keys.contains(u'|')) {
        return value;
    }
    *ok = true;
    value = 0;
    for (const QString &key : keys.split(u'|')) {
        bool isKey = false;
        value |= enumType.value(key.trimmed(), &isKey);
        *ok = *ok && isKey;
    }
    return value;
}

/** Enums accept the texts of their keys, and numbers written as text. */
SharedPtr<Object> enumValue(const SharedPtr<Object> &text, const Argument &declared)
{
    bool ok = false;
    int number = valueOfKeys(*declared.enumType(), text->toString(), &ok);
    if (!ok) {
        number = text->toString().toInt(&ok);
    }
    if (!ok) {
        return {};
    }
    SharedPtr<Object> value = Inspector::self()->createPrimitive(number);
    if (!value) {
        return {};
    }
    return value->isA(declared.type()) ? value : converted(value, declared);
}

QString shapeText(const ObjectAttribute &attribute)
{
    return QLatin1String(attribute.isPointer() ? " *" : "")
        + QLatin1String(attribute.isArray() ? " []" : "");
}

} // namespace

QString mismatch(const SharedPtr<Object> &value, const Argument &declared)
{
    if (declared.takesAnyObject()) {
        return QString();
    }
    const QString type = declared.type() ? declared.type()->className() : QStringLiteral("unknown");
    if (!value) {
        return QStringLiteral("no object given, %1 expected").arg(type);
    }
    if (!value->isValid()) {
        return QStringLiteral("invalidated object given, %1 expected").arg(type);
    }
    if (adapted(value, declared)) {
        return QString();
    }
    if (value->isNull()) {
        return QStringLiteral("null object given, %1 expected").arg(type);
    }
    if (declared.enumType() && primitiveKind(value->type()) == PrimitiveKind::Char) {
        return QStringLiteral("'%1' is no key of %2")
            .arg(value->toString(), declared.enumType()->name());
    }
    const QString given = value->className();
    return given == type ? QStringLiteral("%1 cannot convert to %2")
                               .arg(given + shapeText(value->objectAttribute()),
                                    type + shapeText(declared.attribute()))
                         : QStringLiteral("%1 cannot convert to %2").arg(given, type);
}

bool fits(const SharedPtr<Object> &value, const Argument &declared)
{
    if (value->isNull()) {
        return declared.isPointer();
    }
    constexpr int shapeFlags = ObjectAttribute::PointerFlag | ObjectAttribute::ArrayFlag;
    const ObjectAttribute given = value->objectAttribute();
    if (!((given.getFlags() | declared.attribute().getFlags()) & shapeFlags)) {
        return true; // one single value for another, whatever the class
    }
    const TextShape wanted = textShape(declared.type(), declared.attribute());
    if (wanted == TextShape::None) {
        return elementsGiven(given) >= elementsWanted(declared);
    }
    if (wanted != textShape(declared.type(), given)) {
        return false;
    }
    const bool counted = wanted == TextShape::TextList && declared.arrayLength() > 0;
    return !counted || elementsGiven(given) >= elementsWanted(declared);
}

bool areAsDeclared(const ObjectList &values, const Signature &signature)
{
    auto value = values.begin();
    for (const Argument &declared : signature.arguments()) {
        const SharedPtr<Object> &given = *value++;
        const bool accepted = plainData(given, declared) || declared.takesAnyObject()
            || (given && given->isA(declared.type()) && fits(given, declared));
        if (!accepted) {
            return false;
        }
    }
    return true;
}

SharedPtr<Object> adapted(const SharedPtr<Object> &value, const Argument &declared)
{
    if (declared.takesAnyObject()) {
        return value;
    }
    if (!value || !declared.type()) {
        return {};
    }
    const Class *source = value->type();
    const bool isDeclaredClass = Class::isSubClass(source, declared.type());
    if (isDeclaredClass && fits(value, declared)) {
        return value;
    }
    if (value->isNull()) {
        return {};
    }
    if (isDeclaredClass) {
        return converted(value, declared);
    }
    if (declared.enumType() && textShape(source, value->objectAttribute()) == TextShape::Text) {
        return enumValue(value, declared);
    }
    return converted(value, declared);
}

AdaptedArguments::AdaptedArguments(const Signature &signature, const ObjectList &arguments)
    : m_given(arguments), m_valid(int(arguments.size()) == signature.numArguments())
{
    if (!m_valid) {
        return;
    }
    std::size_t i = 0;
    for (const Argument &declared : signature.arguments()) {
        SharedPtr<Object> argument = adapted(arguments[i], declared);
        if (!argument && !declared.takesAnyObject()) {
            m_valid = false;
            return;
        }
        if (argument != arguments[i]) {
            if (m_converted.empty()) {
                m_converted = arguments;
            }
            m_converted[i] = argument;
        }
        ++i;
    }
}

QString AdaptedArguments::mismatch(const Signature &signature, const ObjectList &arguments)
{
    const int expected = signature.numArguments();
    if (int(arguments.size()) != expected) {
        return QStringLiteral("expects %1 argument%2, %3 given")
            .arg(QString::number(expected), QLatin1String(expected == 1 ? "" : "s"),
                 QString::number(arguments.size()));
    }
    std::size_t i = 0;
    for (const Argument &declared : signature.arguments()) {
        const QString reason = Vantrel::mismatch(arguments[i], declared);
        ++i;
        if (!reason.isEmpty()) {
            return QStringLiteral("argument %1: %2").arg(QString::number(i), reason);
        }
    }
    return QString();
}

NativeArguments::NativeArguments(const ObjectList &arguments) : m_pointers(int(arguments.size()))
{
    void **pointer = m_pointers.data();
    for (const SharedPtr<Object> &argument : arguments) {
        *pointer = nullptr;
        if (argument) {
            argument->get(pointer);
        }
        ++pointer;
    }
}

} // namespace Vantrel
