#include "objectmodel/objectname.h"

#include "objectmodel/inspector.h"
#include "objectmodel/objectmap.h"
#include "objectmodel/objectnameparser_p.h"
#include "objectmodel/pattern_p.h"

#include <QRegExp>

#include <algorithm>
#include <optional>

namespace Vantrel {

namespace {

bool isSymbolic(const QString &name)
{
    return name.startsWith(QLatin1Char(':'));
}

/** What the current map makes of @p name; without a map, what an empty one would. */
ObjectName resolved(const QString &name)
{
    if (const ObjectMap *map = ObjectMap::self()) {
        return map->objectName(name);
    }
    return ObjectName(isSymbolic(name) ? name.mid(1) : name);
}

QString quoted(const QString &value)
{
    QString escaped = value;
    escaped.replace(QLatin1Char('\\'), QLatin1String("\\\\"));
    escaped.replace(QLatin1Char('\''), QLatin1String("\\'"));
    return QLatin1Char('\'') + escaped + QLatin1Char('\'');
}

class PropertyCollector : public NameVisitor
{
public:
    void visitText(int level, QStringView name, PropertyValue::Modifiers mode,
                   QStringView value) override
    {
        if (level == 1) {
            properties.insert(name.toString(), PropertyValue(value.toString(), mode));
        }
    }
    void visitNested(QStringView name, PropertyValue::Modifiers mode, QStringView text) override
    {
        properties.insert(name.toString(),
                          PropertyValue(text.toString(), mode, PropertyValue::Object));
    }

    QMap<QString, PropertyValue> properties;
};

/**
 * A text whose plain comparison is the comparison of lists of (name, mode,
 * value): U+0000 ends names and values, and U+0001 masks the two in them.
 */
class OrderKeyBuilder : public NameVisitor
{
public:
    explicit OrderKeyBuilder(int capacity) { key.reserve(capacity); }

    void visitText(int level, QStringView name, PropertyValue::Modifiers mode,
                   QStringView value) override
    {
        if (level == 1) {
            add(name, mode, value);
        }
    }
    void visitNested(QStringView name, PropertyValue::Modifiers mode, QStringView text) override
    {
        add(name, mode, text);
    }

    void add(QStringView name, PropertyValue::Modifiers mode, QStringView value)
    {
        const int begin = key.size();
        append(name);
        const QStringView all(key);
        isSorted = isSorted && (begin == 0 || lastName(all).compare(all.mid(begin)) < 0);
        m_lastBegin = begin;
        m_lastEnd = key.size();
        key.append(QChar(ushort(mode)));
        append(value);
    }

    QString key;
    bool isSorted = true;

private:
    QStringView lastName(QStringView all) const
    {
        return all.mid(m_lastBegin, m_lastEnd - m_lastBegin);
    }

    void append(QStringView text)
    {
        const auto isMasked = [](QChar c) { return c.unicode() <= 1; };
        if (std::none_of(text.begin(), text.end(), isMasked)) {
            key.append(text.data(), int(text.size()));
        } else {
            for (const QChar c : text) {
                key += isMasked(c) ? QString(QChar(1)) + QChar(c.unicode() + 1) : QString(c);
            }
        }
        key.append(QChar(0));
    }

    int m_lastBegin = 0;
    int m_lastEnd = 0;
};

QString orderKey(const QMap<QString, PropertyValue> &properties)
{
    OrderKeyBuilder builder(0);
    for (auto it = properties.cbegin(); it != properties.cend(); ++it) {
        builder.add(it.key(), it->matchingMode(), it->stringValue());
    }
    return builder.key;
}

bool isTextAfterName(const QString &text, int index)
{
    return index < text.size() - 1;
}

} // namespace

QLatin1String operatorText(PropertyValue::Modifiers mode)
{
    switch (mode) {
    case PropertyValue::RegExp:
        return QLatin1String("~=");
    case PropertyValue::Wildcard:
        return QLatin1String("?=");
    case PropertyValue::Equals:
        break;
    }
    return QLatin1String("=");
}

/** The regular expression of a condition, shared by the copies of the condition. */
class PropertyPattern
{
public:
    bool isIn(const QString &candidate, const QString &text, PropertyValue::Modifiers mode)
    {
        if (!m_expression) {
            compile(mode == PropertyValue::Wildcard ? PropertyValue::wildcardToRegExp(text) : text);
        }
        return m_expression->indexIn(candidate) != -1;
    }

private:
    void compile(const QString &pattern)
    {
        const QString problem = patternProblem(pattern);
        if (!problem.isEmpty()) {
            Inspector::self()->setError(
                QStringLiteral("Cannot match the pattern '%1': %2").arg(pattern, problem));
        }
        // An unterminated group is as invalid as the pattern that cannot be compiled.
        m_expression.emplace(problem.isEmpty() ? pattern : QStringLiteral("("), Qt::CaseSensitive,
                             QRegExp::RegExp);
    }

    std::optional<QRegExp> m_expression;
};

PropertyValue::PropertyValue() = default;

PropertyValue::PropertyValue(const QString &text, Modifiers mode, Type type)
    : m_text(text), m_mode(mode), m_type(type),
      m_isPlain(mode == Equals && type == String && !isSymbolic(text))
{
    if (mode == RegExp || mode == Wildcard) {
        m_pattern = std::make_shared<PropertyPattern>();
    }
}

bool PropertyValue::matchesSpecially(const QString &candidate) const
{
    if (m_mode != Equals) {
        return m_pattern && m_pattern->isIn(candidate, m_text, m_mode);
    }
    if (candidate == m_text) {
        return true;
    }
    if (isObject()) {
        return resolved(candidate) == resolved(m_text);
    }
    return isSymbolic(m_text) && matchesSymbol(candidate);
}

/** Whether @p candidate names the object that the symbolic name m_text stands for. */
bool PropertyValue::matchesSymbol(const QString &candidate) const
{
    const ObjectMap *map = ObjectMap::self();
    if (!map || !(isSymbolic(candidate) || isMultiPropertyName(candidate))) {
        return false;
    }
    const auto found = map->symbolicNames().constFind(m_text);
    return found != map->symbolicNames().constEnd() && *found == map->objectName(candidate);
}

bool PropertyValue::operator==(const PropertyValue &other) const
{
    return m_mode == other.m_mode && m_text == other.m_text;
}

namespace {

QString regExpForUnescaped(QChar c)
{
    if (c == QLatin1Char('*')) {
        return QStringLiteral(".*");
    }
    if (c == QLatin1Char('?')) {
        return QStringLiteral(".");
    }
    return QStringLiteral("$()+.^{}|").contains(c) ? QLatin1Char('\\') + QString(c) : QString(c);
}

QString regExpForEscaped(QChar c)
{
    if (QStringLiteral("*?[]").contains(c)) {
        return QLatin1Char('\\') + QString(c);
    }
    return QStringLiteral("\\\\") + regExpForUnescaped(c);
}

} // namespace

QString PropertyValue::wildcardToRegExp(const QString &wildcard)
{
    QString result;
    bool isEscaped = false;
    for (int i = 0; i < wildcard.size(); ++i) {
        const QChar c = wildcard.at(i);
        if (c == QLatin1Char('\\')) {
            // After a doubled backslash the second one escapes as well.
            result += isEscaped ? QStringLiteral("\\\\") : QString();
            isEscaped = true;
        } else if (c == QLatin1Char('[') && !isEscaped) {
            const int end = endOfBracketExpression(wildcard, i);
            result += wildcard.mid(i, end - i);
            i = end - 1;
        } else {
            result += isEscaped ? regExpForEscaped(c) : regExpForUnescaped(c);
            isEscaped = false;
        }
    }
    return isEscaped ? result + QStringLiteral("\\\\") : result;
}

ObjectName::ObjectName() = default;

ObjectName::ObjectName(const QString &text) : m_text(text), m_current(Text)
{
    if (text.isEmpty()) {
        m_error = QStringLiteral("Empty string is not a valid object name.");
    }
}

ObjectName::ObjectName(const QMap<QString, PropertyValue> &properties)
    : m_properties(properties), m_current(Properties), m_isAsWritten(false)
{}

QString ObjectName::qualifiedName() const
{
    if (!(m_current & Text)) {
        m_text = qualifiedNameFromProperties(m_properties);
        m_current = Text | Properties;
    }
    return m_text;
}

QMap<QString, PropertyValue> ObjectName::properties() const
{
    if (m_current & Properties) {
        return m_properties;
    }
    m_current = Text | Properties;
    if (isMultiPropertyName(m_text)) {
        m_properties = parseNameByProperties(m_text, &m_error);
    } else if (m_text.startsWith(QLatin1Char('{')) || m_text.endsWith(QLatin1Char('}'))) {
        m_error =
            QStringLiteral("Hierarchical names must not start with '{' or end in '}': ") + m_text;
    }
    return m_properties;
}

PropertyValue ObjectName::property(const QString &key) const
{
    return properties().value(key);
}

void ObjectName::setProperty(const QString &key, const PropertyValue &value)
{
    properties();
    m_properties.insert(key, value);
    edited();
}

void ObjectName::removeProperty(const QString &key)
{
    properties();
    m_properties.remove(key);
    edited();
}

void ObjectName::edited()
{
    m_text.clear();
    m_orderKey.clear();
    m_order = Order::Unknown;
    m_current = Properties;
    m_isAsWritten = false;
}

QString ObjectName::errorMessage() const
{
    properties();
    return m_error;
}

bool ObjectName::isValid() const
{
    return errorMessage().isEmpty();
}

bool ObjectName::isEmpty() const
{
    return ((m_current & Properties) && m_properties.isEmpty())
        || ((m_current & Text) && m_text.isEmpty());
}

bool ObjectName::isMultiProperty() const
{
    if (!isValid()) {
        return false;
    }
    return !m_properties.isEmpty() || isMultiPropertyName(qualifiedName());
}

int ObjectName::occurrenceValue() const
{
    const QString text = property(QStringLiteral("occurrence")).stringValue();
    if (text.isEmpty()) {
        return 1;
    }
    bool isInteger = false;
    const int value = text.toInt(&isInteger, 10);
    return isInteger && value > 0 ? value : -1;
}

bool ObjectName::operator==(const ObjectName &other) const
{
    if (qualifiedName() == other.qualifiedName()) {
        return true;
    }
    return isMultiProperty() && other.isMultiProperty() && m_properties == other.m_properties;
}

bool operator<(const ObjectName &a, const ObjectName &b)
{
    a.makeOrder();
    b.makeOrder();
    return a.m_order == b.m_order ? a.m_orderKey < b.m_orderKey : a.m_order < b.m_order;
}

/**
 * Works on the text alone. Properties that were not parsed from it may differ
 * from those that it says, for example when a property name contains a blank.
 */
void ObjectName::makeOrder() const
{
    if (m_order != Order::Unknown) {
        return;
    }
    m_order = Order::ByText;
    m_orderKey = qualifiedName();
    if (!isMultiPropertyName(m_text)) {
        return;
    }
    OrderKeyBuilder builder(m_text.size());
    int index = 0;
    if (parseName(m_text, &index, nullptr, &builder) && !isTextAfterName(m_text, index)) {
        m_order = Order::ByProperties;
        m_orderKey = builder.isSorted ? builder.key : orderKey(parseNameByProperties(m_text));
    }
}

/** Whether being equal and having the same place in the order are one thing for this name. */
bool ObjectName::isOrderedAsCompared() const
{
    if (m_isAsWritten) {
        return true;
    }
    const ObjectName written(qualifiedName());
    return isMultiProperty() == written.isMultiProperty() && m_properties == written.m_properties;
}

namespace {

/** What would complete @p text, a name that ends too early; empty when nothing simple does. */
QString missingEnd(const QString &text)
{
    const struct
    {
        const char *end;
        const char *missing;
    } rows[] = {
        {"", "'}'"},
        {"'", "a closing quote and '}'"},
        {"''", "a value and '}'"},
        {"=''", "an operator, a value and '}'"},
    };
    const QString braces(text.count(u'{'), u'}');
    for (const auto &row : rows) {
        int index = 0;
        PropertyCollector ignored;
        if (parseName(text + QLatin1String(row.end) + braces, &index, nullptr, &ignored)) {
            return QString::fromLatin1(row.missing);
        }
    }
    return QString();
}

/** What the parser says of @p text, which begins like a multi-property name. */
QString mistakeInBraces(const QString &text)
{
    QString error;
    int index = 0;
    parseNameByProperties(text, &index, &error);
    if (error.isEmpty()) {
        return QStringLiteral("Object name '%1' is complete at column %2, but more text follows")
            .arg(text, QString::number(index + 1));
    }
    const QString missing = index == text.size() ? missingEnd(text) : QString();
    return missing.isEmpty() ? error.trimmed()
                             : QStringLiteral("%1: %2 missing").arg(error, missing);
}

} // namespace

QString mistakeIn(const ObjectName &name)
{
    const QString text = name.qualifiedName();
    const QString error = name.errorMessage().trimmed();
    const bool isCut = text.startsWith(QLatin1Char('{')) && !isMultiPropertyName(text);
    return error.isEmpty() || !isCut ? error : mistakeInBraces(text);
}

bool isMultiPropertyName(const QString &text)
{
    return text.startsWith(QLatin1Char('{')) && text.endsWith(QLatin1Char('}'));
}

QMap<QString, PropertyValue> parseNameByProperties(const QString &text, QString *error)
{
    const QString trimmed = text.trimmed();
    if (!isMultiPropertyName(trimmed)) {
        if (error) {
            *error = QStringLiteral("Not a multi-property string: %1").arg(trimmed);
        }
        return {};
    }
    int index = 0;
    const QMap<QString, PropertyValue> properties = parseNameByProperties(trimmed, &index, error);
    if (!isTextAfterName(trimmed, index)) {
        return properties;
    }
    if (error && error->isEmpty()) {
        *error = QStringLiteral("Error parsing object name %1 (trimmed: %2). Parsed %3 characters, "
                                "but name still has %4 more to parse")
                     .arg(text, trimmed, QString::number(index),
                          QString::number(trimmed.size() - index - 1));
    }
    return {};
}

QMap<QString, PropertyValue> parseNameByProperties(const QString &text, int *index, QString *error)
{
    PropertyCollector collector;
    return parseName(text, index, error, &collector) ? collector.properties
                                                     : QMap<QString, PropertyValue>();
}

QString qualifiedNameFromProperties(const QMap<QString, PropertyValue> &properties)
{
    QString text(QLatin1Char('{'));
    for (auto it = properties.cbegin(); it != properties.cend(); ++it) {
        if (it != properties.cbegin()) {
            text += QLatin1Char(' ');
        }
        text += it.key() + operatorText(it->matchingMode());
        text += it->isObject() ? it->stringValue() : quoted(it->stringValue());
    }
    return text + QLatin1Char('}');
}

bool qualifiedNamesEqual(const QString &a, const QString &b)
{
    if (!isMultiPropertyName(a) || !isMultiPropertyName(b)) {
        return a == b;
    }
    return parseNameByProperties(a) == parseNameByProperties(b);
}

QString normalizedHierarchicalName(const QString &name)
{
    return name;
}

} // namespace Vantrel
