#include "testclass.h"

#include "objectmodel/delegates.h"
#include "objectmodel/uielement.h"

#include <gtest/gtest.h>

#include <limits>

using namespace Vantrel;
using namespace VantrelTest;

namespace {

class Conversion : public ConversionDelegate
{
public:
    explicit Conversion(const char *className) : ConversionDelegate(QString::fromLatin1(className)) { }
    int capabilities() const override { return 0; }
};

class FixedBounds : public GeometryDelegate
{
public:
    explicit FixedBounds(const char *className) : GeometryDelegate(QString::fromLatin1(className)) { }
    Rect globalBounds(SharedPtr<Object>) override { return bounds; }
    bool isVisible(SharedPtr<Object>) override { return true; }
    SharedPtr<Object> objectAt(SharedPtr<Object>, int, int) override { return {}; }
    Rect bounds {10, 20, 30, 40};
};

int items[4];

/** Two top-level objects; the second has two children. */
class Family : public ObjectHierarchyDelegate
{
public:
    explicit Family(const TestClass &c) : ObjectHierarchyDelegate(c.className())
    {
        for (int &item : items) {
            objects << SharedPtr<Object>(new Object(&item, &c, ObjectAttribute::Pointer()));
        }
    }
    int numChildren(SharedPtr<Object> parent) override { return int(list(parent).size()); }
    SharedPtr<Object> child(SharedPtr<Object> parent, int index) override
    {
        return list(parent).at(index);
    }
    SharedPtr<Object> childByName(SharedPtr<Object>, const QString &) override { return {}; }
    QString name(SharedPtr<Object>) override { return QString(); }
    QString qualifiedName(SharedPtr<Object>) override { return QString(); }
    int wrapperType(SharedPtr<Object>) override { return 0; }

    ObjectList objects;

private:
    ObjectList list(const SharedPtr<Object> &parent) const
    {
        if (!parent) {
            return {objects[0], objects[1]};
        }
        return parent->sameAs(objects[1]) ? ObjectList {objects[2], objects[3]} : ObjectList();
    }
};

QStringList classNames(const std::vector<const Delegate *> &delegates)
{
    QStringList names;
    for (const Delegate *delegate : delegates) {
        names << delegate->className();
    }
    return names;
}

} // namespace

TEST(DelegateFactory, FindsAlongTheClassHierarchy)
{
    const DelegateFactory *factory = DelegateFactory::self();
    const TestClass &base = *new TestClass("DtBase");
    const TestClass &middle = *new TestClass("DtMiddle", &base);
    const TestClass &leaf = *new TestClass("DtLeaf", &middle);
    EXPECT_EQ(nullptr, factory->delegate(&leaf, Delegate::Conversion));
    EXPECT_EQ(nullptr, factory->delegate(nullptr, Delegate::Conversion));

    const Conversion ofBase("DtBase");
    EXPECT_EQ(&ofBase, factory->delegate(&leaf, Delegate::Conversion));
    EXPECT_EQ(nullptr, factory->delegate(&leaf, Delegate::Comparison));
    EXPECT_EQ(nullptr, factory->delegate(QStringLiteral("DtLeaf"), Delegate::Conversion));
    {
        const Conversion ofMiddle("DtMiddle");
        EXPECT_EQ(&ofMiddle, factory->find<ConversionDelegate>(&leaf));
        EXPECT_EQ(&ofBase, ofMiddle.super());
        EXPECT_EQ(nullptr, ofBase.super());
    }
    EXPECT_EQ(&ofBase, factory->delegate(&leaf, Delegate::Conversion));
}

TEST(DelegateFactory, RemembersTheSuperDelegateOnce)
{
    new TestClass("DtSuperLeaf", new TestClass("DtSuperBase"));
    const Conversion leaf("DtSuperLeaf");
    EXPECT_EQ(nullptr, leaf.super());
    const Conversion late("DtSuperBase");
    EXPECT_EQ(nullptr, leaf.super());
    EXPECT_EQ(nullptr, Conversion("DtNoSuchClass").super());
}

TEST(DelegateFactory, ReplacesAnEarlierDelegateOfTheKey)
{
    const QString name = QStringLiteral("DtReplaced");
    auto first = std::make_unique<Conversion>("DtReplaced");
    const Conversion second("DtReplaced");
    EXPECT_EQ(&second, DelegateFactory::self()->delegate(name, Delegate::Conversion));
    first.reset(); // the earlier one does not take the later one with it
    EXPECT_EQ(&second, DelegateFactory::self()->delegate(name, Delegate::Conversion));
}

TEST(DelegateFactory, ListsATypeByClassName)
{
    const FixedBounds b("DtSortB");
    const FixedBounds c("DtSortC");
    const FixedBounds a("DtSortA");
    const Conversion other("DtSortA");
    const QStringList names
        = classNames(DelegateFactory::self()->delegatesForType(Delegate::Geometry));
    EXPECT_EQ((QStringList {"DtSortA", "DtSortB", "DtSortC"}),
              names.filter(QStringLiteral("DtSort")));
    EXPECT_TRUE(std::is_sorted(names.begin(), names.end()));
}

TEST(GeometryDelegate, TranslatesByTheGlobalBounds)
{
    FixedBounds delegate("DtGeometry");
    const GeometryDelegate::Point inside = delegate.globalToRelative({}, 15, 26);
    EXPECT_TRUE(inside.valid);
    EXPECT_EQ(5, inside.x);
    EXPECT_EQ(6, inside.y);
    EXPECT_EQ(-1, inside.screen);
    const GeometryDelegate::Point global = delegate.relativeToNative({}, 5, 6);
    EXPECT_EQ(15, global.x);
    EXPECT_EQ(26, global.y);
    for (const auto &bounds : {GeometryDelegate::Rect {1, 2, -1, 4}, {1, 2, 3, -1}}) {
        delegate.bounds = bounds;
        for (const auto &point :
             {delegate.globalToRelative({}, 5, 5), delegate.relativeToGlobal({}, 5, 5)}) {
            EXPECT_FALSE(point.valid);
            EXPECT_EQ(0, point.x);
            EXPECT_EQ(0, point.y);
            EXPECT_EQ(-1, point.screen);
        }
    }
    delegate.bounds = {1, 2, 0, 0};
    EXPECT_TRUE(delegate.relativeToGlobal({}, 5, 5).valid);
    const int most = std::numeric_limits<int>::max();
    EXPECT_EQ(most, delegate.relativeToGlobal({}, most, 0).x);
    EXPECT_EQ(-most - 1, delegate.globalToRelative({}, 0, -most).y);
}

TEST(DumpObjectTreeDelegate, FillsElementsForWhatTheFiltersAccept)
{
    class NoNumbers : public DumpFilter
    {
        bool accepts(const SharedPtr<Object> &object) const override
        {
            return !object->isA(primitive(PrimitiveId::Int));
        }
    };
    class Dump : public DumpObjectTreeDelegate
    {
    public:
        Dump() : DumpObjectTreeDelegate(QStringLiteral("DtDumped")) {}
        bool dumpObject(SharedPtr<Object> object, bool, UiElement *element, const Filters &filters,
                        QString *) const override
        {
            if (!filters.at("numbers")->accepts(object)) {
                return false;
            }
            UiElement *child = element->addChild();
            child->setProperty(QStringLiteral("text"), QStringLiteral("old"));
            child->setProperty(QStringLiteral("size"), QStringLiteral("1"));
            child->setProperty(QStringLiteral("text"), object->toString());
            return true;
        }
    } dump;
    NoNumbers numbers;
    const DumpObjectTreeDelegate::Filters filters {{"numbers", &numbers}};
    UiElement root;
    EXPECT_FALSE(dump.dumpObject(inspector()->createPrimitive(1), true, &root, filters, nullptr));
    EXPECT_TRUE(dump.dumpObject(inspector()->createPrimitive("a"), true, &root, filters, nullptr));
    ASSERT_EQ(1u, root.children().size());
    const std::vector<std::pair<QString, QString>> expected {{"text", "a"}, {"size", "1"}};
    EXPECT_EQ(expected, root.children().front()->properties());
    // What a delegate does not override it does not handle, and says so.
    EXPECT_FALSE(dump.takeScreenshot(inspector()->createPrimitive(1), &root));
    EXPECT_FALSE(dump.isTransparent(inspector()->createPrimitive(1)));
}

TEST(ObjectHierarchyDelegate, FindsTheParentThroughAllObjects)
{
    const TestClass &c = *new TestClass("DtFamily");
    Family family(c);
    inspector()->addTopLevelHierarchyDelegate(&family);
    EXPECT_TRUE(family.objects[3]->parent()->sameAs(family.objects[1]));
    EXPECT_TRUE(family.objects[1]->parent().isNull());
    EXPECT_TRUE(family.parent({}).isNull());
    const SharedPtr<Object> stranger(new Object(&family, &c, ObjectAttribute::Pointer()));
    EXPECT_TRUE(stranger->parent().isNull());
}

TEST(ObjectHierarchyDelegate, FindsNoParentInACircle)
{
    const TestClass &c = *new TestClass("DtCircle");
    /** Everything is below everything, and there is nothing beside it. */
    class Circle : public Family
    {
    public:
        using Family::Family;
        ObjectList children(SharedPtr<Object> parent) override
        {
            return parent ? ObjectList{objects[0], objects[1]} : ObjectList{{}, objects[0]};
        }
    };
    Circle circle(c);
    inspector()->addTopLevelHierarchyDelegate(&circle);
    EXPECT_TRUE(circle.objects[1]->parent()->sameAs(circle.objects[0]));
    EXPECT_TRUE(circle.objects[2]->parent().isNull());
}

TEST(DelegateFactory, ForgetsAFallbackThatIsGone)
{
    class Registry : public FallbackRegistry
    {
        bool isQObjectBased(const QString &) const override { return true; }
    };
    DelegateFactory *factory = DelegateFactory::self();
    {
        const Registry registry;
        factory->setFallbackRegistry(&registry);
    }
    EXPECT_EQ(nullptr, factory->fallbackRegistry());
    factory->removeDelegate(nullptr);
}
