#include "objectmodel/objectmap.h"

#include "objectmodel/diagnostics_p.h"
#include "objectmodel/objectmapfile_p.h"

#include <QHash>

#include <algorithm>
#include <initializer_list>

namespace Vantrel {

namespace {

ObjectMap *currentMap = nullptr;

/** Each level of quoting doubles backslashes, so texts are bounded in depth and length. */
const int maximumFixedLevel = 64;
const int maximumFixedLength = 1 << 20;

/** What the rewriting of one name, with all that is nested in it, may still cost. */
struct FixLimits
{
    bool add;
    int level = 0;
    /** In UTF-16 units: enough for every level to have the maximum length. */
    qint64 budget = qint64(maximumFixedLevel) * maximumFixedLength;
};

bool isSymbolic(const QString &name)
{
    return name.startsWith(QLatin1Char(':'));
}

/** Of a value as a condition writes it, with quotes and escapes. */
int quotedLength(const QString &value)
{
    return value.size() + value.count(QLatin1Char('\\')) + value.count(QLatin1Char('\'')) + 2;
}

} // namespace

class ObjectMapPrivate
{
public:
    explicit ObjectMapPrivate(bool ownerFlag) : flag(ownerFlag) {}

    void insert(const ObjectName &realName, const QString &symbolicName);
    void insertRealName(const ObjectName &realName, const QString &symbolicName);
    void clearRealNames();
    const QString *findSymbol(const QString &realName, const QString &oldName) const;

    QString symbolicName(const QString &realName, FixLimits *limits);
    QString fixedName(const QString &name, FixLimits *limits);
    QString addNew(const QString &realName);
    QString freeSymbol(const QString &base);
    QString withoutNesting(const QString &nestedName, FixLimits *limits);

    QMap<ObjectName, QString> realNames;
    QMap<QString, ObjectName> symbolicNames;
    bool flag;
    bool isModified = false;
    /** Whether the order of real names does not tell which of them are equal. */
    bool hasIrregularNames = false;
    /** The first suffix of a symbol that may be free: those below it are taken. */
    QHash<QString, int> nextSuffix;
};

void ObjectMapPrivate::insert(const ObjectName &realName, const QString &symbolicName)
{
    insertRealName(realName, symbolicName);
    // Files are sorted by symbolic name, so the end is where most entries belong.
    symbolicNames.insert(symbolicNames.cend(), symbolicName, realName);
}

void ObjectMapPrivate::insertRealName(const ObjectName &realName, const QString &symbolicName)
{
    hasIrregularNames = hasIrregularNames || !realName.isOrderedAsCompared();
    realNames.insert(realName, symbolicName);
}

void ObjectMapPrivate::clearRealNames()
{
    realNames.clear();
    hasIrregularNames = false;
    nextSuffix.clear();
}

/** The symbol of the first real name, in the order of the map, that equals @p realName. */
const QString *ObjectMapPrivate::findSymbol(const QString &realName, const QString &oldName) const
{
    const ObjectName name(realName);
    const ObjectName alternative(oldName);
    if (hasIrregularNames) {
        for (auto it = realNames.cbegin(); it != realNames.cend(); ++it) {
            if (it.key() == name || it.key() == alternative) {
                return &it.value();
            }
        }
        return nullptr;
    }
    const bool isNameFirst = realName == oldName || name < alternative;
    auto found = realNames.constFind(isNameFirst ? name : alternative);
    if (found == realNames.cend() && realName != oldName) {
        found = realNames.constFind(isNameFirst ? alternative : name);
    }
    return found == realNames.cend() ? nullptr : &found.value();
}

QString ObjectMapPrivate::symbolicName(const QString &realName, FixLimits *limits)
{
    QString name = fixedName(realName, limits);
    if (isSymbolic(name)) {
        return name;
    }
    if (const QString *symbol = findSymbol(name, ObjectMap::convertToOldName(name))) {
        return *symbol;
    }
    return limits->add ? addNew(name) : name;
}

QString ObjectMapPrivate::addNew(const QString &realName)
{
    QString symbol = QLatin1Char(':') + realName;
    if (isMultiPropertyName(realName)) {
        symbol = freeSymbol(QLatin1Char(':') + ObjectMap::symbolFromMultiPropName(realName));
    }
    symbol.remove(QLatin1Char('\n'));
    insert(ObjectName(realName), symbol);
    isModified = true;
    return symbol;
}

QString ObjectMapPrivate::freeSymbol(const QString &base)
{
    if (!symbolicNames.contains(base)) {
        return base;
    }
    int &suffix = nextSuffix[base];
    suffix = qMax(suffix, 2);
    QString symbol;
    while (symbolicNames.contains(symbol = base + QLatin1Char('_') + QString::number(suffix))) {
        ++suffix;
    }
    return symbol;
}

QString ObjectMapPrivate::fixedName(const QString &name, FixLimits *limits)
{
    if (!isMultiPropertyName(name)) {
        return name;
    }
    QMap<QString, PropertyValue> properties = parseNameByProperties(name);
    int length = 1;
    for (auto it = properties.cbegin(); it != properties.cend(); ++it) {
        const int operatorLength = it->matchingMode() == PropertyValue::Equals ? 1 : 2;
        length += it.key().size() + operatorLength + 1;
        length += it->isObject() ? 0 : quotedLength(it->stringValue());
    }
    bool isTooLong = length > maximumFixedLength;
    for (PropertyValue &value : properties) {
        if (value.isObject()) {
            QString text = isTooLong ? QString() : withoutNesting(value.stringValue(), limits);
            isTooLong = isTooLong || length + quotedLength(text) > maximumFixedLength;
            text = isTooLong ? value.stringValue() : text;
            length += quotedLength(text);
            value = PropertyValue(text, value.matchingMode());
        }
    }
    limits->budget -= length;
    return qualifiedNameFromProperties(properties);
}

QString ObjectMapPrivate::withoutNesting(const QString &nestedName, FixLimits *limits)
{
    if (limits->level == maximumFixedLevel || limits->budget <= 0) {
        return nestedName;
    }
    ++limits->level;
    QString text = symbolicName(nestedName, limits);
    --limits->level;
    return text;
}

ObjectMap::ObjectMap(bool flag) : d(std::make_unique<ObjectMapPrivate>(flag))
{
    currentMap = this;
}

ObjectMap::ObjectMap(const ObjectMap &other) : d(std::make_unique<ObjectMapPrivate>(*other.d))
{
    currentMap = this;
}

ObjectMap &ObjectMap::operator=(const ObjectMap &other)
{
    *d = *other.d;
    return *this;
}

ObjectMap::~ObjectMap()
{
    if (currentMap == this) {
        currentMap = nullptr;
    }
}

ObjectMap *ObjectMap::self()
{
    return currentMap;
}

bool ObjectMap::flag() const
{
    return d->flag;
}

bool ObjectMap::isModified() const
{
    return d->isModified;
}

const QMap<ObjectName, QString> &ObjectMap::realNames() const
{
    return d->realNames;
}

const QMap<QString, ObjectName> &ObjectMap::symbolicNames() const
{
    return d->symbolicNames;
}

void ObjectMap::add(const ObjectName &realName, const QString &symbolicName)
{
    d->isModified = true;
    d->insert(realName, symbolicName);
}

void ObjectMap::setSymbolicNames(const QMap<QString, ObjectName> &symbolicNames)
{
    d->isModified = true;
    d->symbolicNames = symbolicNames;
    d->clearRealNames();
    for (auto it = d->symbolicNames.cbegin(); it != d->symbolicNames.cend(); ++it) {
        d->insertRealName(it.value(), it.key());
    }
}

void ObjectMap::clear()
{
    d->symbolicNames.clear();
    d->clearRealNames();
}

ObjectName ObjectMap::objectName(const QString &name) const
{
    if (!isSymbolic(name)) {
        return ObjectName(name);
    }
    const auto found = d->symbolicNames.constFind(name);
    return found != d->symbolicNames.cend() ? found.value() : ObjectName(name.mid(1));
}

QString ObjectMap::realName(const QString &name) const
{
    return objectName(name).qualifiedName();
}

QString ObjectMap::symbolicName(const QString &realName, bool add)
{
    FixLimits limits{add};
    return d->symbolicName(realName, &limits);
}

QString ObjectMap::multiPropNameToSymbolic(const QString &name) const
{
    return d->freeSymbol(QLatin1Char(':') + symbolFromMultiPropName(name));
}

namespace {

using Properties = QMap<QString, PropertyValue>;
using PropertyNames = std::initializer_list<const char *>;

const PropertyNames windowProperties = {"window"};
const PropertyNames containerProperties = {"container", "form"};
const PropertyNames labelProperties = {"innerText",   "simplifiedInnerText",
                                       "text",        "title",
                                       "windowTitle", "caption",
                                       "label",       "name",
                                       "objectName",  "img_name",
                                       "img_alt",     "id",
                                       "img_id",      "value",
                                       "buddy",       "parentWidget",
                                       "leftWidget",  "aboveWidget",
                                       "leftObject",  "aboveObject",
                                       "stringValue", "className",
                                       "row",         "currentTitle",
                                       "placeholder", "resourceName",
                                       "toolTip"};
const PropertyNames typeProperties = {"type", "tagName", "basetype", "styletype"};

/** Names that toolkits give on their own, which say nothing about the object. */
bool isMeaninglessName(const QString &name)
{
    const auto meaningless = {"unnamed",         "qt_viewport",
                              "tab control",     "qt_clipped_viewport",
                              "qt_spinbox_edit", "automatic menu bar"};
    return std::any_of(meaningless.begin(), meaningless.end(),
                       [&name](const char *text) { return name == QLatin1String(text); });
}

QString usableText(const Properties &properties, const QString &propertyName)
{
    QString text = properties.value(propertyName).stringValue();
    if (propertyName == QLatin1String("name") && isMeaninglessName(text)) {
        return {};
    }
    const auto column = properties.constFind(QStringLiteral("column"));
    if (propertyName == QLatin1String("row") && !text.isEmpty() && column != properties.cend()) {
        return text + QLatin1Char('_') + column->stringValue();
    }
    return text;
}

QString firstUsableText(const Properties &properties, PropertyNames names)
{
    for (const char *name : names) {
        QString text = usableText(properties, QString::fromLatin1(name));
        if (!text.isEmpty()) {
            return text;
        }
    }
    return {};
}

} // namespace

QString ObjectMap::symbolFromMultiPropName(const QString &name)
{
    const Properties properties = parseNameByProperties(name);
    QString symbol;
    for (const PropertyNames &names : {windowProperties, containerProperties, labelProperties}) {
        const QString text = firstUsableText(properties, names);
        if (!symbol.isEmpty() && !text.isEmpty()) {
            symbol += QLatin1Char('.');
        }
        symbol += text;
    }
    const QString type = firstUsableText(properties, typeProperties);
    return symbol + QLatin1Char('_') + type.mid(type.lastIndexOf(QLatin1Char('.')) + 1);
}

QString ObjectMap::fixedName(const QString &name, bool add)
{
    FixLimits limits{add};
    return d->fixedName(name, &limits);
}

QString ObjectMap::printableName(const QString &name)
{
    QString result = name;
    result.replace(QLatin1Char('\n'), QLatin1String("\\n"));
    result.replace(QLatin1Char('\r'), QLatin1String("\\r"));
    result.replace(QLatin1Char('\t'), QLatin1String("\\t"));
    return result;
}

/** The form of @p name in maps of former releases. There were none, so it is @p name. */
QString ObjectMap::convertToOldName(const QString &name)
{
    return name;
}

bool ObjectMap::isMultiPropertyName(const QString &name)
{
    return Vantrel::isMultiPropertyName(name);
}

bool ObjectMap::loadFromFile(const QString &fileName)
{
    QString text;
    if (!readObjectMapFile(fileName, &text)) {
        return false;
    }
    clear();
    loadFromString(text);
    d->isModified = false;
    return true;
}

void ObjectMap::loadFromString(const QString &text)
{
    for (const auto &[symbolicName, realName] : parseSerializedMap(text)) {
        d->insert(realName, symbolicName);
    }
}

QString ObjectMap::toString() const
{
    QString text;
    for (auto it = d->symbolicNames.cbegin(); it != d->symbolicNames.cend(); ++it) {
        text += escapeForSerialize(it.key()) + QLatin1Char('\t')
            + escapeForSerialize(it->qualifiedName()) + QLatin1Char('\n');
    }
    return text;
}

bool ObjectMap::saveToFile(const QString &fileName)
{
    if (!d->isModified) {
        return true;
    }
    if (!writeObjectMapFile(fileName, toString())) {
        printDiagnostic("ObjectMap::save() failed when opening '%s'\n",
                        fileName.toLocal8Bit().constData());
        return false;
    }
    d->isModified = false;
    return true;
}

} // namespace Vantrel
