// Finds the objects of a small application by their names: search_demo [map file].
// The application is described by ClassBuilder, its delegate matches candidates
// with ObjectMatcher, and the object map comes from a file.

#include "objectmodel/classbuilder.h"
#include "objectmodel/delegates.h"
#include "objectmodel/inspector.h"
#include "objectmodel/objectmap.h"
#include "objectmodel/objectsearch.h"
#include "objectmodel/wrap.h"

#include <cstdio>
#include <memory>
#include <vector>

using namespace Vantrel;

namespace {

struct Item
{
    QString type;
    QString title;
    Item *container = nullptr;
    std::vector<std::unique_ptr<Item>> children;

    Item *add(const char *childType, const char *childTitle)
    {
        children.push_back(std::make_unique<Item>());
        Item *child = children.back().get();
        child->type = QString::fromUtf8(childType);
        child->title = QString::fromUtf8(childTitle);
        child->container = this;
        return child;
    }
};

class Hierarchy : public ObjectHierarchyDelegate
{
public:
    explicit Hierarchy(Item *root) : ObjectHierarchyDelegate(QStringLiteral("Item")), m_root(root)
    {
        Inspector::self()->addTopLevelHierarchyDelegate(this);
    }

    int numChildren(SharedPtr<Object> parent) override
    {
        return int(item(parent)->children.size());
    }
    SharedPtr<Object> child(SharedPtr<Object> parent, int index) override
    {
        return wrap(item(parent)->children.at(index).get());
    }
    SharedPtr<Object> childByName(SharedPtr<Object> parent, const QString &name) override
    {
        for (const auto &candidate : item(parent)->children) {
            if (candidate->title == name) {
                return wrap(candidate.get());
            }
        }
        return {};
    }
    SharedPtr<Object> objectByQualifiedName(SharedPtr<Object> parent,
                                            const ObjectName &name) override
    {
        ObjectMatcher matcher(name);
        Item *found = search(item(parent), matcher);
        return found ? wrap(found) : SharedPtr<Object>();
    }
    QString name(SharedPtr<Object> object) override { return item(object)->title; }
    QString qualifiedName(SharedPtr<Object> object) override { return item(object)->title; }
    int wrapperType(SharedPtr<Object>) override { return 0; }

private:
    Item *item(const SharedPtr<Object> &object) const
    {
        return object ? unwrap<Item *>(object) : m_root;
    }
    static Item *search(Item *below, ObjectMatcher &matcher)
    {
        for (const auto &child : below->children) {
            const auto holds = [&](const ObjectMatcher::Condition &condition, QString *actual) {
                return matches(*child, condition, actual);
            };
            if (matcher.offer(holds, [&] { return wrap(child.get()); })) {
                return child.get();
            }
            if (Item *found = search(child.get(), matcher)) {
                return found;
            }
        }
        return nullptr;
    }
    static bool matches(const Item &item, const ObjectMatcher::Condition &condition,
                        QString *actual)
    {
        if (condition.name == QLatin1String("container")) {
            const auto container = Inspector::self()->findObject(condition.wanted.stringValue());
            return container && unwrap<Item *>(container) == item.container;
        }
        const bool isType = condition.name == QLatin1String("type");
        const bool isTitle =
            condition.name == QLatin1String("title") || condition.name == QLatin1String("text");
        return (isType || isTitle) && condition.holds(isType ? item.type : item.title, actual);
    }

    Item *m_root;
};

void find(const char *name)
{
    Inspector *inspector = Inspector::self();
    const SharedPtr<Object> found = inspector->findObject(QString::fromUtf8(name));
    std::printf("%s\n", name);
    if (found) {
        const Item *item = unwrap<Item *>(found);
        std::printf("  found %s \"%s\" in \"%s\"\n", qUtf8Printable(item->type),
                    qUtf8Printable(item->title), qUtf8Printable(item->container->title));
        return;
    }
    for (const NearMiss &miss : inspector->nearMisses()) {
        std::printf("  near:");
        for (const NearMiss::Condition &condition : miss.conditions) {
            std::printf(" %s is '%s'%s", qUtf8Printable(condition.name),
                        qUtf8Printable(condition.actual), condition.held ? "" : " (no)");
        }
        std::printf("\n");
    }
    std::printf(
        "  %s\n",
        qUtf8Printable(inspector->lastError().replace(QLatin1String("\n"), QLatin1String("\n  "))));
}

} // namespace

int main(int argc, char *argv[])
{
    Item root;
    Item *window = root.add("Window", "Address Book");
    window->add("Edit", "Ann");
    window->add("Button", "OK");
    Item *question = root.add("Window", "Question");
    question->add("Button", "OK");
    question->add("Button", "Cancel");
    ClassBuilder<Item>("Item").add();
    Hierarchy hierarchy(&root);
    ObjectMap map(false);
    if (argc > 1 && !map.loadFromFile(QString::fromLocal8Bit(argv[1]))) {
        std::fprintf(stderr, "cannot read %s\n", argv[1]);
        return 1;
    }
    Inspector::self()->lastError();

    find(":AddressBook.OK");
    find(":Question.OK");
    find("{title~='^C' type='Button'}");
    find("{title='Question'}.Cancel");
    find("Address Book.Ann");
    find("{text='ok' type='Button'}");
    find("Address Book.Bob");
    find(":Missing");
    return 0;
}
