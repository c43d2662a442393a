#include "qt/hierarchy_p.h"

#include "qt/handles_p.h"
#include "qt/items_p.h"
#include "qt/names_p.h"

#include "objectmodel/class.h"
#include "objectmodel/delegates.h"
#include "objectmodel/object.h"

namespace Vantrel::QtWrapper {

namespace {

/** A null parent is the top level; one that is gone has no children. */
std::vector<Node> childrenOf(const SharedPtr<Object> &parent)
{
    if (!parent) {
        return topLevelNodes();
    }
    const Node node = nodeOf(parent);
    return node ? childNodes(node) : std::vector<Node>();
}

QString shortNameOf(const Node &node)
{
    for (const QString &name : {objectNameOf(node), labelOf(node)}) {
        if (!name.isEmpty()) {
            return name;
        }
    }
    return typeName(node);
}

Node hiddenChild(const Node &parent, const QString &name)
{
    Node found;
    visitHiddenObjects(parent, [&](const Node &node) {
        if (objectNameOf(node) == name && parentNode(node) == parent) {
            found = node;
        }
        return !found;
    });
    return found;
}

Node childByName(const std::vector<Node> &children, const QString &name)
{
    for (const auto nameOfChild : {objectNameOf, labelOf, shortNameOf}) {
        for (const Node &child : children) {
            if (nameOfChild(child) == name) {
                return child;
            }
        }
    }
    return Node();
}

class Hierarchy : public ObjectHierarchyDelegate
{
public:
    using ObjectHierarchyDelegate::ObjectHierarchyDelegate;

    int numChildren(SharedPtr<Object> parent) override { return int(childrenOf(parent).size()); }

    SharedPtr<Object> child(SharedPtr<Object> parent, int index) override
    {
        const auto nodes = childrenOf(parent);
        return index >= 0 && index < int(nodes.size()) ? handleOf(nodes[index])
                                                       : SharedPtr<Object>();
    }

    SharedPtr<Object> childByName(SharedPtr<Object> parent, const QString &name) override
    {
        if (name.isEmpty()) {
            return {};
        }
        Node found = QtWrapper::childByName(childrenOf(parent), name);
        if (!found && parent) {
            const Node node = nodeOf(parent);
            found = node ? hiddenChild(node, name) : Node();
        }
        return handleOf(found);
    }

    SharedPtr<Object> objectByQualifiedName(SharedPtr<Object> parent,
                                            const ObjectName &name) override
    {
        const Node root = nodeOf(parent);
        return parent && !root ? SharedPtr<Object>() : handleOf(findNode(root, name));
    }

    QString name(SharedPtr<Object> object) override { return shortNameOf(nodeOf(object)); }
    QString qualifiedName(SharedPtr<Object> object) override { return nameOf(nodeOf(object)); }

    ObjectList children(SharedPtr<Object> parent) override
    {
        ObjectList list;
        for (const Node &node : childrenOf(parent)) {
            if (const SharedPtr<Object> handle = handleOf(node)) {
                list << handle;
            }
        }
        return list;
    }

    SharedPtr<Object> parent(SharedPtr<Object> object) override
    {
        return handleOf(parentNode(nodeOf(object)));
    }

    int wrapperType(SharedPtr<Object> object) override { return int(nodeOf(object).kind()); }
};

} // namespace

void registerHierarchy()
{
    registerItemClasses();
    // Objects ask for that of their class, the Inspector for the top level.
    for (const QString &className : {QStringLiteral("Vantrel::ToplevelQt"),
                                     QStringLiteral("QObject"), itemClass()->className()}) {
        if (!DelegateFactory::self()->delegate(className, Delegate::ObjectHierarchy)) {
            new Hierarchy(className); // the factory knows it as long as the process lives
        }
    }
}

} // namespace Vantrel::QtWrapper
