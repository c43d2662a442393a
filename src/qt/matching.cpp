#include "qt/matching_p.h"

#include "qt/handles_p.h"
#include "qt/items_p.h"
#include "qt/names_p.h"
#include "qt/traits_p.h"
#include "qt/tree_p.h"
#include "qt/values_p.h"

#include "objectmodel/inspector.h"
#include "objectmodel/object.h"
#include "objectmodel/objectmap.h"
#include "objectmodel/objectsearch.h"

#include <QHeaderView>
#include <QMetaProperty>
#include <QThread>

#include <algorithm>
#include <array>

namespace Vantrel::QtWrapper {

namespace {

/** Symbolic names can refer to each other in a circle. */
constexpr int maximumDepth = 32;

QString boolText(bool value)
{
    return value ? QStringLiteral("true") : QStringLiteral("false");
}

bool matchesBool(const PropertyValue &wanted, bool value, QString *actual)
{
    if (actual) {
        *actual = boolText(value);
    }
    return wanted.matches(boolText(value))
        || wanted.matches(value ? QStringLiteral("1") : QStringLiteral("0"));
}

bool matchesText(const PropertyValue &wanted, const QString &value, QString *actual)
{
    if (actual) {
        *actual = value.isNull() ? QLatin1String("") : value;
    }
    return wanted.matches(value);
}

/** -1 for what stands in no row. */
int rowOf(const Node &node)
{
    if (node.kind() == Node::Kind::HeaderSection) {
        const auto *header = static_cast<QHeaderView *>(node.host());
        return header->orientation() == Qt::Vertical ? node.section() : -1;
    }
    return node.index().row();
}

int columnOf(const Node &node)
{
    if (node.kind() == Node::Kind::HeaderSection) {
        const auto *header = static_cast<QHeaderView *>(node.host());
        return header->orientation() == Qt::Horizontal ? node.section() : -1;
    }
    return node.kind() == Node::Kind::Tab ? node.section() : node.index().column();
}

QString describe(const Node &node)
{
    const QString name = objectNameOf(node);
    const QString text = name.isEmpty() ? labelOf(node) : name;
    return text.isEmpty() ? typeName(node) : text;
}

/** A name that another one refers to; null when the condition is a plain text. */
std::unique_ptr<ObjectName> referredName(const PropertyValue &value)
{
    const QString &text = value.stringValue();
    if (value.matchingMode() != PropertyValue::Equals
        || (!value.isObject() && !text.startsWith(QLatin1Char(':')))) {
        return nullptr;
    }
    const ObjectMap *map = ObjectMap::self();
    if (value.isObject() || !map) {
        return std::make_unique<ObjectName>(value.isObject() ? text : text.mid(1));
    }
    return std::make_unique<ObjectName>(map->objectName(text));
}

} // namespace

/** What all conditions of a search share. */
struct Matcher::Context
{
    Relations relations;
};

struct Matcher::Condition
{
    bool isRelation() const { return kind >= Kind::Window; }
    bool asksApplication() const { return kind != Kind::Type && kind != Kind::Name; }

    PropertyValue wanted;
    QByteArray name;
    QByteArray utf8; ///< of the wanted text
    Kind kind = Kind::Property;
    bool isPlain = false;

    // Relations, and properties that are objects, match a name or one object.
    std::unique_ptr<Matcher> nested;
    bool isOneObject = false;
    Node object;
    QHash<Node, bool> known;

    // What was found out about classes; siblings are of a few, in turns.
    struct ClassEntry
    {
        const QMetaObject *meta = nullptr;
        const char *className = nullptr;
        bool isOfType = false;
        int propertyIndex = -1;
        int propertyType = QMetaType::UnknownType;
    };
    const ClassEntry &entryOf(const QMetaObject *meta);
    std::array<ClassEntry, 64> classes;
};

const Matcher::Condition::ClassEntry &Matcher::Condition::entryOf(const QMetaObject *meta)
{
    ClassEntry &entry = classes[(quintptr(meta) >> 4) % classes.size()];
    // Meta objects of single objects come and go, perhaps at the same address.
    if (entry.meta == meta && entry.className == meta->className()) {
        return entry;
    }
    entry = ClassEntry{meta, meta->className(), utf8 == meta->className()};
    if (kind == Kind::Property || kind == Kind::Row || kind == Kind::Column) {
        entry.propertyIndex = meta->indexOfProperty(name.constData());
        const QMetaProperty property = meta->property(entry.propertyIndex);
        if (property.isReadable()) {
            entry.propertyType = property.userType();
        }
    }
    return entry;
}

Matcher::Matcher(const ObjectName &name) : Matcher(name, std::make_shared<Context>(), 0) {}

Matcher::Matcher(const ObjectName &name, const std::shared_ptr<Context> &context, int depth)
    : m_context(context)
{
    compile(name, depth);
}

Matcher::~Matcher() = default;

Matcher::Kind Matcher::kindOf(const QString &name)
{
    static const struct
    {
        const char *name;
        Kind kind;
    } rows[] = {
        {"type", Kind::Type},
        {"name", Kind::Name},
        {"text", Kind::Text},
        {"visible", Kind::Visible},
        {"enabled", Kind::Enabled},
        {"window", Kind::Window},
        {"container", Kind::Container},
        {"buddy", Kind::Buddy},
        {"leftWidget", Kind::LeftWidget},
        {"aboveWidget", Kind::AboveWidget},
        {"row", Kind::Row},
        {"column", Kind::Column},
    };
    for (const auto &row : rows) {
        if (name == QLatin1String(row.name)) {
            return row.kind;
        }
    }
    return Kind::Property;
}

void Matcher::compile(const ObjectName &name, int depth)
{
    const auto properties = name.properties();
    for (auto it = properties.begin(); it != properties.end() && m_error.isEmpty(); ++it) {
        if (it.key() == QLatin1String("occurrence")) {
            continue;
        }
        Condition condition;
        condition.wanted = it.value();
        condition.name = it.key().toUtf8();
        condition.utf8 = it.value().stringValue().toUtf8();
        condition.kind = kindOf(it.key());
        condition.isPlain = it.value().matchingMode() == PropertyValue::Equals
            && !it.value().isObject() && !it.value().stringValue().startsWith(QLatin1Char(':'));
        if (condition.isRelation() || condition.kind == Kind::Property) {
            compileNested(condition, depth);
        }
        m_conditions.push_back(std::move(condition));
    }
    for (int i = 0; i < int(m_conditions.size()); ++i) {
        m_order.push_back(i);
    }
    std::stable_sort(m_order.begin(), m_order.end(),
                     [this](int a, int b) { return m_conditions[a].kind < m_conditions[b].kind; });
}

/**
 * A nested name is matched condition by condition, which is what it means; one
 * that tells which of several objects, or where in a hierarchy, is searched once.
 */
void Matcher::compileNested(Condition &condition, int depth)
{
    const auto name = referredName(condition.wanted);
    if (!name) {
        return;
    }
    const auto fail = [&](const QString &reason) {
        m_error = QStringLiteral("The name in the condition '%1' %2")
                      .arg(QString::fromUtf8(condition.name), reason);
    };
    if (depth >= maximumDepth) {
        fail(QStringLiteral("refers to itself, or names are nested too deeply"));
    } else if (!name->isValid()) {
        fail(QStringLiteral("is invalid: %1").arg(mistakeIn(*name)));
    } else if (name->occurrenceValue() < 1) {
        fail(QStringLiteral("has an occurrence that is no number above 0"));
    } else if (!name->isMultiProperty()) {
        // A symbol that is in no map may be a text as well.
        condition.isOneObject = condition.isRelation();
        condition.object = nodeOf(Inspector::self()->findObject(name->qualifiedName()));
    } else if (name->properties().contains(QStringLiteral("occurrence"))) {
        condition.isOneObject = true;
        condition.object = findNode(Node(), *name);
    } else {
        condition.nested.reset(new Matcher(*name, m_context, depth + 1));
        if (!condition.nested->error().isEmpty()) {
            fail(QStringLiteral("cannot be used: %1").arg(condition.nested->error()));
        }
    }
}

bool Matcher::canMatchModelItems() const
{
    return std::none_of(m_conditions.begin(), m_conditions.end(), [](const Condition &condition) {
        const PropertyValue &wanted = condition.wanted;
        return (condition.kind == Kind::Type && !wanted.matches(QStringLiteral("ModelItem"))
                && !wanted.matches(QStringLiteral("HeaderSection")))
            || (condition.kind == Kind::Name && !wanted.matches(QString()));
    });
}

bool Matcher::matches(const Node &node)
{
    bool isWatched = false;
    for (const int index : m_order) {
        Condition &condition = m_conditions[index];
        if (!isWatched && condition.asksApplication()) {
            watch(node);
            isWatched = true;
        }
        if (!holds(condition, node, nullptr) || (isWatched && !m_watched)) {
            return false;
        }
    }
    return true;
}

/** Getters are code of the application, and may end what they belong to. */
void Matcher::watch(const Node &node)
{
    m_watched = node.object() ? node.object() : node.host();
}

/** Neighbours are not looked for where nothing else fits, as nobody asks for those. */
bool Matcher::matches(int index, const Node &node, QString *actual)
{
    Condition &condition = m_conditions[index];
    watch(node);
    const bool isAsked = condition.kind <= Kind::Window || holdsCheaply(node);
    return isAsked && m_watched && holds(condition, node, actual);
}

bool Matcher::holdsCheaply(const Node &node)
{
    bool hasCheap = false;
    for (Condition &condition : m_conditions) {
        const bool isCheap = condition.kind == Kind::Type || condition.kind == Kind::Name
            || condition.kind == Kind::Text;
        if (isCheap && m_watched) {
            if (holds(condition, node, nullptr)) {
                return true;
            }
            hasCheap = true;
        }
    }
    return !hasCheap;
}

bool Matcher::holds(Condition &condition, const Node &node, QString *actual)
{
    switch (condition.kind) {
    case Kind::Type:
        return holdsForType(condition, node, actual);
    case Kind::Name:
        return matchesText(condition.wanted, objectNameOf(node), actual);
    case Kind::Property:
        return holdsForProperty(condition, node, actual);
    case Kind::Row:
    case Kind::Column: {
        const int number = condition.kind == Kind::Row ? rowOf(node) : columnOf(node);
        return number == -1 ? holdsForProperty(condition, node, actual)
                            : matchesText(condition.wanted, QString::number(number), actual);
    }
    case Kind::Enabled:
        return matchesBool(condition.wanted, isEnabled(node), actual);
    case Kind::Visible:
        return matchesBool(condition.wanted, isShown(node), actual);
    case Kind::Text:
        return holdsForText(condition, node, actual);
    case Kind::Window: {
        const Node window = windowNode(node);
        return holdsForRelated(condition, window == node ? Node() : window, actual);
    }
    case Kind::Container:
        return holdsForContainer(condition, parentNode(node), actual);
    case Kind::LeftWidget:
        return holdsForRelated(condition, m_context->relations.leftOf(node), actual);
    case Kind::AboveWidget:
        return holdsForRelated(condition, m_context->relations.above(node), actual);
    case Kind::Buddy:
        return holdsForRelated(condition, m_context->relations.buddyOf(node), actual);
    }
    return false;
}

bool Matcher::holdsForType(Condition &condition, const Node &node, QString *actual)
{
    const QObject *object = node.object();
    if (!object || !condition.isPlain || actual) {
        return matchesText(condition.wanted, typeName(node), actual);
    }
    return condition.entryOf(object->metaObject()).isOfType;
}

bool Matcher::holdsForText(const Condition &condition, const Node &node, QString *actual)
{
    if (matchesText(condition.wanted, labelOf(node), actual)) {
        return true;
    }
    const QString content = m_watched ? contentOf(node) : QString();
    if (content.isNull()) {
        return false;
    }
    return matchesText(condition.wanted, content, actual && actual->isEmpty() ? actual : nullptr);
}

bool Matcher::holdsForProperty(Condition &condition, const Node &node, QString *actual)
{
    QObject *object = node.object();
    if (!object) {
        const QVariant value = itemProperty(node, QString::fromUtf8(condition.name));
        return value.isValid() && holdsForValue(condition, value, QMetaProperty(), actual);
    }
    const QMetaObject *meta = object->metaObject();
    const Condition::ClassEntry &entry = condition.entryOf(meta);
    if (entry.propertyIndex == -1) {
        // Asked first, because unlike property() it does not look the class up again.
        if (object->dynamicPropertyNames().isEmpty()) {
            return false;
        }
        const QVariant value = object->property(condition.name.constData());
        return holdsForValue(condition, value, QMetaProperty(), actual);
    }
    if (entry.propertyType == QMetaType::QString) {
        return matchesText(condition.wanted, readText(object, entry.propertyIndex), actual);
    }
    const QMetaProperty property = meta->property(entry.propertyIndex);
    return holdsForValue(condition, property.read(object), property, actual);
}

bool Matcher::holdsForValue(Condition &condition, const QVariant &value,
                            const QMetaProperty &property, QString *actual)
{
    if (!value.isValid()) {
        return false;
    }
    if (value.userType() == QMetaType::Bool) {
        return matchesBool(condition.wanted, value.toBool(), actual);
    }
    if (condition.nested || condition.isOneObject) {
        auto *related = value.value<QObject *>();
        // That of another thread may change or end meanwhile.
        const bool isOurs = related && related->thread() == QThread::currentThread();
        return isOurs && holdsForRelated(condition, Node(related), actual);
    }
    const QMetaEnum enumerator = property.enumerator();
    if (enumerator.isValid() && condition.wanted.matches(QString::number(value.toInt()))) {
        return true;
    }
    return matchesText(condition.wanted, textOf(value, enumerator), actual);
}

bool Matcher::holdsForRelated(Condition &condition, const Node &related, QString *actual)
{
    if (!related) {
        return false;
    }
    if (actual) {
        *actual = describe(related);
    }
    if (condition.isOneObject) {
        return related == condition.object;
    }
    if (condition.nested) {
        const auto known = condition.known.constFind(related);
        return known != condition.known.constEnd()
            ? *known
            : *condition.known.insert(related, condition.nested->matches(related));
    }
    return condition.wanted.matches(objectNameOf(related))
        || condition.wanted.matches(labelOf(related));
}

/** Siblings ask for the same containers, so the answer for each is kept. */
bool Matcher::holdsForContainer(Condition &condition, const Node &node, QString *actual)
{
    bool holds = false;
    std::vector<Node> asked;
    for (Node container = node; container && !holds; container = parentNode(container)) {
        const auto known = condition.known.constFind(container);
        if (known != condition.known.constEnd()) {
            holds = *known;
            break;
        }
        asked.push_back(container);
        holds = condition.isOneObject ? container == condition.object
            : condition.nested        ? condition.nested->matches(container)
                                      : condition.wanted.matches(objectNameOf(container))
                || condition.wanted.matches(labelOf(container));
    }
    for (const Node &container : asked) {
        condition.known.insert(container, holds);
    }
    if (actual && node) {
        *actual = describe(node);
    }
    return holds;
}

Node findNode(const Node &root, const ObjectName &name)
{
    if (!name.isMultiProperty()) {
        return Node();
    }
    Matcher matcher(name);
    if (!matcher.error().isEmpty()) {
        Inspector::self()->setError(matcher.error());
        return Node();
    }
    ObjectMatcher candidates(name);
    Node found;
    const auto offer = [&](const Node &node) {
        int next = 0;
        bool isThere = true;
        const auto holds = [&](const ObjectMatcher::Condition &, QString *actual) {
            const int index = next++;
            if (actual) {
                const bool isHeld = isThere && matcher.matches(index, node, actual);
                isThere = isThere && matcher.isNodeThere();
                return isHeld && isThere;
            }
            // The first question is answered for all, in the order of their costs.
            return index > 0 || matcher.matches(node);
        };
        if (node != root && candidates.offer(holds, [&] {
                return isThere ? handleOf(node) : SharedPtr<Object>();
            })) {
            found = node;
        }
        return !found;
    };
    const auto items = matcher.canMatchModelItems() ? ModelItems::Visited : ModelItems::LeftOut;
    if (visitNodes(root, items, offer)) {
        visitHiddenObjects(root, offer);
    }
    return found;
}

} // namespace Vantrel::QtWrapper
