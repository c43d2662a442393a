#include "qt/treedump.h"

#include "qt/delegates_p.h"
#include "qt/dump_p.h"
#include "qt/geometry_p.h"
#include "qt/grab_p.h"
#include "qt/handles_p.h"
#include "qt/names_p.h"
#include "qt/propertytexts_p.h"

#include "objectmodel/class.h"
#include "objectmodel/delegates.h"
#include "objectmodel/inspector.h"
#include "objectmodel/object.h"

#include <QCoreApplication>
#include <QHash>

#include <algorithm>
#include <limits>

namespace Vantrel::QtWrapper {

namespace {

// What the dump itself says of an object, and properties of the same names may not overwrite.
const QString realNameProperty = QStringLiteral("realName");
const QString omittedProperty = QStringLiteral("omitted");
const QString incompleteProperty = QStringLiteral("incomplete");
const QString unreadableProperty = QStringLiteral("unreadable");

const QString goneText = QStringLiteral("destroyed while it was dumped");

bool isReserved(const QString &name)
{
    return name == realNameProperty || name == omittedProperty || name == incompleteProperty
        || name == unreadableProperty;
}

ScreenRectangle screenRectangle(const QRect &rect)
{
    return rect.isNull() ? ScreenRectangle()
                         : ScreenRectangle{rect.x(), rect.y(), rect.width(), rect.height()};
}

QString shortName(const Node &node)
{
    const QString name = objectNameOf(node);
    return name.isEmpty() ? labelOf(node) : name;
}

/** Of which a single widget may show a million. */
bool isItem(const Node &node)
{
    return node.kind() != Node::Kind::None && node.kind() != Node::Kind::Object;
}

struct ChildLimits
{
    int maxItems = std::numeric_limits<int>::max();
    bool onlyShown = false;
};

/** @return the number of items that were left out because of their number. */
int listChildren(const Node &parent, const ChildLimits &limits, int numItems, ObjectList *children)
{
    int numOmitted = 0;
    visitChildNodes(parent, [&](const Node &node) {
        if (limits.onlyShown && !isShown(node)) {
            return true;
        }
        if (isItem(node) && numItems >= limits.maxItems) {
            ++numOmitted;
            return true;
        }
        numItems += isItem(node) ? 1 : 0;
        if (SharedPtr<Object> handle = handleOf(node)) {
            children->push_back(std::move(handle));
        }
        return true;
    });
    return numOmitted;
}

/** The delegate for all objects of this wrapper. */
class Dump : public DumpObjectTreeDelegate
{
public:
    using DumpObjectTreeDelegate::DumpObjectTreeDelegate;

    bool dumpObject(SharedPtr<Object> object, bool withProperties, UiElement *element,
                    const Filters &, QString *error) const override
    {
        const Node node = nodeOf(object);
        if (!node) {
            *error = goneText;
            return false;
        }
        element->type = typeName(node);
        element->bounds = screenRectangle(boundsOf(node));
        element->name = shortName(node);
        return !withProperties || dumpProperties(object, element, error);
    }

    bool takeScreenshot(SharedPtr<Object> object, UiElement *element) const override
    {
        QString error;
        const QByteArray picture = toPng(grabNode(nodeOf(object), &error));
        if (picture.isEmpty()) {
            return false;
        }
        element->screenshot = picture;
        return true;
    }

    bool setProperty(const Property *property, SharedPtr<Object> object, UiElement *element,
                     int) const override
    {
        const SharedPtr<Object> value = property->isReadable() ? property->get(object) : nullptr;
        if (!value || value->isNull()) {
            return false;
        }
        element->setProperty(property->name(), value->toString());
        return true;
    }

    bool children(SharedPtr<Object> object, ObjectList *children) const override
    {
        const Node node = nodeOf(object);
        if (node) {
            listChildren(node, ChildLimits(), 0, children);
        }
        return !node.isNull();
    }

    bool visibleGlobalBounds(SharedPtr<Object> object, ScreenRectangle *bounds) const override
    {
        const Node node = nodeOf(object);
        if (node) {
            *bounds = screenRectangle(visibleBoundsOf(node));
        }
        return !node.isNull();
    }

private:
    static bool dumpProperties(const SharedPtr<Object> &object, UiElement *element, QString *error)
    {
        const PropertyTexts texts = propertyTexts(object);
        for (const auto &property : texts.values) {
            if (!isReserved(property.first)) {
                element->setProperty(property.first, property.second);
            }
        }
        if (!texts.unreadable.isEmpty()) {
            element->setProperty(unreadableProperty, texts.unreadable.join(QLatin1String(", ")));
        }
        if (texts.isIncomplete) {
            *error = goneText;
        }
        return !texts.isIncomplete;
    }
};

/**
 * Builds one dump in three steps, because getters of properties and filters are
 * code of the application, which can take away what is being dumped: what
 * there is, then all names in one go, then what the delegates tell. Handles
 * keep track of what is gone.
 */
class TreeDump
{
public:
    explicit TreeDump(const DumpOptions &options) : m_options(options)
    {
        if (options.filter) {
            m_filters["filter"] = const_cast<DumpFilter *>(options.filter);
        }
    }

    /** Null, with the last error set, when a delegate refuses. */
    std::unique_ptr<UiElement> dump(const SharedPtr<Object> &root)
    {
        auto tree = std::make_unique<UiElement>();
        if (collect(root, tree.get())) {
            addNames();
            addDetails();
        }
        return leave() ? std::move(tree) : nullptr;
    }

    /** Only what would be dumped. */
    bool list(const SharedPtr<Object> &root, ObjectList *objects)
    {
        UiElement tree;
        collect(root, &tree);
        for (const Entry &entry : m_entries) {
            objects->push_back(entry.object);
        }
        return leave();
    }

private:
    struct Entry
    {
        SharedPtr<Object> object;
        UiElement *element;
        DumpObjectTreeDelegate *delegate;
    };

    bool collect(const SharedPtr<Object> &root, UiElement *tree)
    {
        return root ? add(root, tree, 0) : addApplication(tree);
    }

    bool addApplication(UiElement *element)
    {
        element->type = QStringLiteral("Application");
        element->name = QCoreApplication::applicationName();
        ObjectList objects;
        for (const Node &node : topLevelNodes()) {
            if (m_options.onlyShown && !isShown(node)) {
                continue;
            }
            if (SharedPtr<Object> handle = handleOf(node)) {
                objects.push_back(std::move(handle));
            }
        }
        return m_options.depth == 0 || addAll(objects, element, 1);
    }

    bool addAll(const ObjectList &objects, UiElement *parent, int level)
    {
        return std::all_of(objects.begin(), objects.end(), [&](const SharedPtr<Object> &object) {
            const bool isWanted = !m_options.filter || m_options.filter->accepts(object);
            return !isWanted || !object->isValid() || add(object, parent->addChild(), level);
        });
    }

    bool add(const SharedPtr<Object> &object, UiElement *element, int level)
    {
        auto *delegate = DelegateFactory::self()->find<DumpObjectTreeDelegate>(object->type());
        if (delegate && !enter(delegate, object)) {
            return false;
        }
        m_entries.push_back({object, element, delegate});
        if (!delegate || level == m_options.depth) {
            return true;
        }
        ObjectList children;
        const int numOmitted = childrenOf(delegate, object, &children);
        if (numOmitted > 0) {
            m_numOmitted.insert(element, numOmitted);
        }
        return addAll(children, element, level + 1);
    }

    /** @return the number of children that were left out because of their number. */
    int childrenOf(DumpObjectTreeDelegate *delegate, const SharedPtr<Object> &object,
                   ObjectList *children)
    {
        const Node node = nodeOf(object);
        // The interface of delegates knows no limits, and a view may have a million items.
        if (!node || !dynamic_cast<Dump *>(delegate)) {
            delegate->children(object, children);
            return 0;
        }
        const QWidget *host = node.host();
        const std::size_t before = children->size();
        const int numOmitted = listChildren(node, {m_options.maxItems, m_options.onlyShown},
                                            m_numItems.value(host), children);
        const auto isItemHandle = [](const SharedPtr<Object> &child) {
            return isItem(nodeOf(child));
        };
        m_numItems[host] += int(std::count_if(children->begin() + std::ptrdiff_t(before),
                                              children->end(), isItemHandle));
        return numOmitted;
    }

    /** Every delegate that takes part is told once, with its first object. */
    bool enter(DumpObjectTreeDelegate *delegate, const SharedPtr<Object> &object)
    {
        const auto known = std::find(m_delegates.begin(), m_delegates.end(), delegate);
        if (known == m_delegates.end()) {
            delegate->enterDump(object, m_filters, &m_error);
            m_delegates.push_back(delegate);
        }
        return m_error.isEmpty();
    }

    bool leave()
    {
        for (const DumpObjectTreeDelegate *delegate : m_delegates) {
            delegate->leaveDump(&m_error);
        }
        if (!m_error.isEmpty()) {
            Inspector::self()->setError(QStringLiteral("Can't dump the tree: ") + m_error);
        }
        return m_error.isEmpty();
    }

    void addNames()
    {
        NameMaker names;
        for (const Entry &entry : m_entries) {
            const Node node = nodeOf(entry.object);
            entry.element->type = node ? typeName(node) : entry.object->className();
            entry.element->setProperty(realNameProperty,
                                       node ? names.name(node) : entry.object->qualifiedName());
            if (const int numOmitted = m_numOmitted.value(entry.element)) {
                entry.element->setProperty(omittedProperty, QString::number(numOmitted));
            }
        }
    }

    void addDetails()
    {
        const PropertyTables tables;
        for (const Entry &entry : m_entries) {
            QString error;
            if (entry.delegate) {
                entry.delegate->dumpObject(entry.object, m_options.withProperties, entry.element,
                                           m_filters, &error);
            }
            if (!error.isEmpty()) {
                entry.element->setProperty(incompleteProperty, error);
            }
        }
    }

    const DumpOptions m_options;
    DumpObjectTreeDelegate::Filters m_filters;
    std::vector<DumpObjectTreeDelegate *> m_delegates;
    std::vector<Entry> m_entries;
    QHash<const UiElement *, int> m_numOmitted;
    /** Items so far, of each widget that shows some. */
    QHash<const QWidget *, int> m_numItems;
    QString m_error;
};

bool canDump(const SharedPtr<Object> &root)
{
    const bool isKnown = !root || nodeOf(root);
    if (!isKnown) {
        Inspector::self()->setError(
            QStringLiteral("Can't dump the tree of an object of type %1: %2")
                .arg(root->className(),
                     root->isValid() && !root->isNull()
                         ? QStringLiteral("it is no object of the application")
                         : QStringLiteral("it no longer exists")));
    }
    return isKnown;
}

} // namespace

std::unique_ptr<UiElement> dumpTree(const SharedPtr<Object> &root, const DumpOptions &options)
{
    return canDump(root) ? TreeDump(options).dump(root) : nullptr;
}

bool listObjects(const SharedPtr<Object> &root, const DumpOptions &options, ObjectList *objects)
{
    return canDump(root) && TreeDump(options).list(root, objects);
}

void registerDump()
{
    for (const QString &name : wrappedClassNames()) {
        new Dump(name);
    }
}

} // namespace Vantrel::QtWrapper
