#include "qt/names_p.h"

#include "qt/nameindex_p.h"
#include "qt/relations_p.h"
#include "qt/traits_p.h"
#include "qt/tree_p.h"

#include <QAbstractItemView>
#include <QHeaderView>
#include <QPointer>

#include <algorithm>
#include <utility>

namespace Vantrel::QtWrapper {

namespace {

constexpr int maximumLabelLength = 60;
/** Models can be large; the texts of more items than these are not compared. */
constexpr int maximumItemsToRead = 10000;

/** Some conditions of a name, always in one order. */
class Conditions
{
public:
    explicit Conditions(const Node &node) { add("type", typeName(node)); }

    Conditions with(const char *name, const QString &text) const
    {
        Conditions result = *this;
        result.add(name, text);
        return result;
    }
    /** The same for the same conditions only. */
    QString key() const
    {
        QString key;
        for (const auto &condition : m_conditions) {
            key += QLatin1String(condition.first) + QLatin1Char('=') + condition.second
                + QChar(QChar::Null);
        }
        return key;
    }
    /** With @p scope, a name, as one more condition unless it is empty; @p occurrence from 1. */
    QString name(const char *relation, const QString &scope, int occurrence) const
    {
        QMap<QString, PropertyValue> properties;
        for (const auto &condition : m_conditions) {
            properties.insert(QString::fromLatin1(condition.first),
                              PropertyValue(condition.second));
        }
        if (!scope.isEmpty()) {
            properties.insert(QString::fromLatin1(relation),
                              PropertyValue(scope, PropertyValue::Equals, PropertyValue::Object));
        }
        if (occurrence > 1) {
            properties.insert(QStringLiteral("occurrence"),
                              PropertyValue(QString::number(occurrence)));
        }
        return qualifiedNameFromProperties(properties);
    }

private:
    void add(const char *name, const QString &text) { m_conditions.emplace_back(name, text); }

    std::vector<std::pair<const char *, QString>> m_conditions;
};

/** A label that a name can show: short, on one line. */
QString usableLabel(const QString &text)
{
    const bool isUsable = text.size() <= maximumLabelLength && !text.trimmed().isEmpty()
        && std::all_of(text.begin(), text.end(), [](QChar c) { return c != QChar::LineFeed; });
    return isUsable ? text : QString();
}

/** What a user fills in is named after the label beside it. */
Node labelBeside(const Node &node, Relations &relations)
{
    const bool isFilledIn = node.widget() && traitsOf(node.object()).is(Traits::Content);
    return isFilledIn ? relations.buddyOf(node) : Node();
}

/** What tells whether a node is still there after getters, code of the application, have run. */
QPointer<QObject> watchedOf(const Node &node)
{
    return node.object() ? node.object() : node.host();
}

/** The texts by which a node is found, whether or not they are good to name it. */
struct Texts
{
    Texts(const Node &node, Relations &relations) : name(objectNameOf(node))
    {
        const QPointer<QObject> watched = watchedOf(node);
        label = usableLabel(labelOf(node));
        content = watched ? usableLabel(contentOf(node)) : QString();
        if (!watched) {
            return;
        }
        if (const Node buddy = labelBeside(node, relations)) {
            buddyName = objectNameOf(buddy);
            buddyLabel = usableLabel(labelOf(buddy));
        }
    }

    QString name;
    QString label;
    QString content;
    QString buddyName;
    QString buddyLabel;
};

/** What can name a node, the best first. The last one is its type alone. */
std::vector<Conditions> candidatesOf(const Node &node, const Texts &texts)
{
    const Conditions type(node);
    std::vector<Conditions> candidates;
    if (!texts.name.isEmpty()) {
        candidates.push_back(type.with("name", texts.name));
    }
    if (!texts.label.isEmpty()) {
        if (!texts.name.isEmpty()) {
            candidates.push_back(candidates.front().with("text", texts.label));
        }
        candidates.push_back(type.with("text", texts.label));
    }
    // A colon in front makes a symbol of an object map.
    if (!texts.buddyLabel.isEmpty() && !texts.buddyLabel.startsWith(QLatin1Char(':'))) {
        candidates.push_back(type.with("buddy", texts.buddyLabel));
    }
    candidates.push_back(type);
    return candidates;
}

/** Everything that finds a node by one of the above. */
QStringList keysOf(const Node &node, const Texts &texts)
{
    QStringList keys;
    for (const Conditions &candidate : candidatesOf(node, texts)) {
        keys << candidate.key();
    }
    const Conditions type(node);
    if (!texts.content.isEmpty() && texts.content != texts.label) {
        keys << type.with("text", texts.content).key();
        if (!texts.name.isEmpty()) {
            keys << type.with("name", texts.name).with("text", texts.content).key();
        }
    }
    if (!texts.buddyName.isEmpty() && texts.buddyName != texts.buddyLabel) {
        keys << type.with("buddy", texts.buddyName).key();
    }
    return keys;
}

bool isOfModel(const Node &node)
{
    return node.kind() == Node::Kind::ModelItem || node.kind() == Node::Kind::HeaderSection;
}

Conditions placeIn(const Node &node, const Conditions &conditions)
{
    if (node.kind() == Node::Kind::ModelItem) {
        return conditions.with("row", QString::number(node.index().row()))
            .with("column", QString::number(node.index().column()));
    }
    const auto *header = static_cast<QHeaderView *>(node.host());
    const char *which = header->orientation() == Qt::Horizontal ? "column" : "row";
    return conditions.with(which, QString::number(node.section()));
}

std::vector<Conditions> partCandidatesOf(const Node &node)
{
    const Conditions type(node);
    std::vector<Conditions> candidates;
    const QPointer<QObject> watched = watchedOf(node);
    const QString text = usableLabel(labelOf(node));
    if (!watched) {
        return {type};
    }
    if (!text.isEmpty()) {
        candidates = {type.with("text", text), placeIn(node, type.with("text", text))};
    }
    candidates.push_back(placeIn(node, type));
    return candidates;
}

/** Sections are told apart together with the items, below the view of both. */
Node scopeOf(const Node &part)
{
    const Node host(part.host());
    const Node parent = parentNode(host);
    const bool isHeaderOfView = part.kind() == Node::Kind::HeaderSection && parent.widget()
        && traitsOf(parent.object()).is(Traits::ItemView);
    return isHeaderOfView ? parent : host;
}

bool isTooLarge(const Node &scope)
{
    int numParts = 0;
    return !visitNodes(scope, [&numParts](const Node &node) {
        numParts += isOfModel(node);
        return numParts <= maximumItemsToRead;
    });
}

} // namespace

struct NameMaker::Index
{
    /** What is below one view. */
    struct Parts
    {
        bool isTooLarge = false;
        QString scopeName;
        NameIndex index;
    };

    Index();
    void addHidden();
    void add(const Node &node, int parent);

    QString name(const Node &node);
    QString objectName(int place);
    QString uniqueName(int place);
    QString nameInContainer(int place, const std::vector<Conditions> &candidates);
    std::vector<Conditions> candidatesAt(int place);
    int end(int place) const { return place < numInTree ? numInTree : objects.size(); }

    QString partName(const Node &part);
    QString nameInLargeView(const Node &part, const QString &scopeName);
    Parts &partsOf(const Node &scope);

    Relations relations;
    /** All but the parts of models; what is hidden comes last. */
    NameIndex objects;
    /** By place. */
    std::vector<QPointer<QObject>> watched;
    int numInTree = 0;
    bool hasHidden = false;
    /** By place: names without a nested one; null when not asked for yet. */
    QHash<int, QString> uniqueNames;
    QHash<Node, Parts *> parts;
    std::vector<std::unique_ptr<Parts>> ownedParts;
};

NameMaker::Index::Index()
{
    visitNodes(Node(), ModelItems::LeftOut, [this](const Node &node) {
        add(node, objects.placeOf(parentNode(node)));
        return true;
    });
    numInTree = objects.size();
    objects.finish();
}

void NameMaker::Index::add(const Node &node, int parent)
{
    const int place = objects.add(node, parent);
    watched.push_back(watchedOf(node));
    const Texts texts(node, relations);
    if (watched.back()) {
        for (const QString &key : keysOf(node, texts)) {
            objects.enter(place, key);
        }
    }
}

void NameMaker::Index::addHidden()
{
    if (!std::exchange(hasHidden, true)) {
        visitHiddenObjects(Node(), [this](const Node &node) {
            add(node, -1);
            return true;
        });
        objects.finish();
    }
}

/** None for what is gone. */
std::vector<Conditions> NameMaker::Index::candidatesAt(int place)
{
    if (!watched[std::size_t(place)]) {
        return {};
    }
    const Node &node = objects.node(place);
    const Texts texts(node, relations);
    return watched[std::size_t(place)] ? candidatesOf(node, texts) : std::vector<Conditions>();
}

QString NameMaker::Index::name(const Node &node)
{
    if (isOfModel(node)) {
        return partName(node);
    }
    const QPointer<QObject> isThere = watchedOf(node);
    int place = objects.placeOf(node);
    if (place == -1) {
        addHidden();
        place = objects.placeOf(node);
    }
    if (place != -1) {
        return objectName(place);
    }
    if (!isThere) {
        return QString();
    }
    // Nothing leads to it, so no search comes to it either.
    const Texts texts(node, relations);
    return isThere ? candidatesOf(node, texts).front().name("", QString(), 1) : QString();
}

QString NameMaker::Index::objectName(int place)
{
    const QString unique = uniqueName(place);
    if (!unique.isEmpty()) {
        return unique;
    }
    const auto candidates = candidatesAt(place);
    if (candidates.empty()) {
        return QString();
    }
    const QString contained = nameInContainer(place, candidates);
    if (!contained.isEmpty()) {
        return contained;
    }
    const Conditions &best = candidates.front();
    return best.name("", QString(), objects.count(best.key(), 0, place) + 1);
}

QString NameMaker::Index::uniqueName(int place)
{
    const auto known = uniqueNames.constFind(place);
    if (known != uniqueNames.constEnd()) {
        return *known;
    }
    QString name;
    for (const Conditions &candidate : candidatesAt(place)) {
        if (objects.count(candidate.key(), 0, end(place)) == 1) {
            name = candidate.name("", QString(), 1);
            break;
        }
    }
    return *uniqueNames.insert(place, name);
}

/** By the nearest container in which the node is the only one, else the nth of the nearest. */
QString NameMaker::Index::nameInContainer(int place, const std::vector<Conditions> &candidates)
{
    QString nthOfNearest;
    for (int container = objects.parentOf(place); container != -1;
         container = objects.parentOf(container)) {
        const QString scope = uniqueName(container);
        if (scope.isEmpty()) {
            continue;
        }
        const char *relation = objects.parentOf(container) == -1 ? "window" : "container";
        for (const Conditions &candidate : candidates) {
            if (objects.count(candidate.key(), container + 1, objects.endOf(container)) == 1) {
                return candidate.name(relation, scope, 1);
            }
        }
        if (nthOfNearest.isEmpty()) {
            const int before = objects.count(candidates.front().key(), container + 1, place);
            nthOfNearest = candidates.front().name(relation, scope, before + 1);
        }
    }
    return nthOfNearest;
}

NameMaker::Index::Parts &NameMaker::Index::partsOf(const Node &scope)
{
    Parts *&known = parts[scope];
    if (known) {
        return *known;
    }
    ownedParts.push_back(std::make_unique<Parts>());
    known = ownedParts.back().get();
    Parts &added = *known;
    const QPointer<QObject> isThere = watchedOf(scope);
    added.scopeName = name(scope);
    added.isTooLarge = isThere && isTooLarge(scope);
    if (isThere && !added.isTooLarge) {
        visitNodes(scope, [&added](const Node &node) {
            if (isOfModel(node)) {
                const int place = added.index.add(node, -1);
                for (const Conditions &candidate : partCandidatesOf(node)) {
                    added.index.enter(place, candidate.key());
                }
            }
            return true;
        });
    }
    return added;
}

QString NameMaker::Index::partName(const Node &part)
{
    const QPointer<QObject> view = watchedOf(part);
    const Parts &found = partsOf(scopeOf(part));
    if (!view) {
        return QString();
    }
    if (found.isTooLarge) {
        return nameInLargeView(part, found.scopeName);
    }
    const auto candidates = partCandidatesOf(part);
    if (!view) {
        return QString();
    }
    for (const Conditions &candidate : candidates) {
        if (found.index.count(candidate.key(), 0, found.index.size()) == 1) {
            return candidate.name("container", found.scopeName, 1);
        }
    }
    const Conditions &best = candidates[candidates.size() > 1];
    const int before = found.index.count(best.key(), 0, found.index.placeOf(part));
    return best.name("container", found.scopeName, before + 1);
}

/** Of a tree, where rows are counted in each branch, the nth with these numbers is meant. */
QString NameMaker::Index::nameInLargeView(const Node &part, const QString &scopeName)
{
    const Conditions place = placeIn(part, Conditions(part));
    const auto *view = qobject_cast<QAbstractItemView *>(part.host());
    if (part.kind() != Node::Kind::ModelItem || !showsTree(view)) {
        return place.name("container", scopeName, 1);
    }
    int numFound = 0;
    visitNodes(Node(part.host()), [&](const Node &node) {
        numFound += node.kind() == Node::Kind::ModelItem && node.index().row() == part.index().row()
            && node.index().column() == part.index().column();
        return node != part;
    });
    return place.name("container", scopeName, numFound);
}

NameMaker::NameMaker() : d(std::make_unique<Index>()) {}

NameMaker::~NameMaker() = default;

QString NameMaker::name(const Node &node)
{
    return d->name(node);
}

QString nameOf(const Node &node)
{
    return NameMaker().name(node);
}

} // namespace Vantrel::QtWrapper
