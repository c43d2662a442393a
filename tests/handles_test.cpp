// Who keeps native data alive, and who frees it when.

#include "testclass.h"

#include "objectmodel/classbuilder.h"
#include "objectmodel/containerclasses.h"
#include "objectmodel/containers.h"
#include "objectmodel/delegates.h"
#include "objectmodel/wrap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>

using namespace Vantrel;
using namespace VantrelTest;

namespace {

/** The numbers of the Things that ended, in the order of their ends. */
std::vector<int> ended;

std::vector<int> taken(std::vector<int> *list)
{
    std::vector<int> result;
    result.swap(*list);
    return result;
}

struct Part
{
    int number = 0;
};

/** Without a virtual destructor: data is to be freed as what it was made as. */
struct Base
{
    int number = 0;
};

struct Thing : Base
{
    explicit Thing(int n) : part{n} { number = n; }
    Thing(const Thing &other) : Base(other), part(other.part) {}
    ~Thing() { ended.push_back(part.number); }
    Part &itsPart() { return part; }
    const Thing &larger(const Thing &other) { return number < other.number ? other : *this; }
    Part *partOf(Thing &other) { return &other.part; }
    Thing &noting(const Thing &) { return *this; }
    int *greater(int *a, int *b) { return *a < *b ? b : a; }
    std::vector<Part *> parts() { return {&part}; }
    Thing *first(std::vector<Thing *> things) { return things.front(); }
    Thing *made() { return new Thing(99); }
    Part part;
    std::vector<char> rest = std::vector<char>(64);
};

struct Classes
{
    Classes() {}
    const bool hasContainers = (registerContainerClasses(), true);
    const Class *part = ClassBuilder<Part>("HandlesPart").property("number", &Part::number).add();
    const Class *base = ClassBuilder<Base>("HandlesBase").property("number", &Base::number).add();
    const Class *thing = ClassBuilder<Thing>("HandlesThing")
                             .superClass<Base>()
                             .constructor<int>({"number"})
                             .property("part", &Thing::itsPart)
                             .method("larger", &Thing::larger, {"other"})
                             .method("partOf", &Thing::partOf, {"other"})
                             .method("noting", &Thing::noting, {"other"})
                             .method("greater", &Thing::greater, {"a", "b"})
                             .method("parts", &Thing::parts)
                             .method("first", &Thing::first, {"things"})
                             .method("made", &Thing::made)
                             .add();
    const Class *other = new TestClass("HandlesOther");
};

const Classes &classes()
{
    static const auto *const all = new Classes;
    return *all;
}

SharedPtr<Object> newThing(int number)
{
    SharedPtr<Object> thing = classes().thing->wrap(new Thing(number), ObjectAttribute());
    thing->setAutoDelete(true);
    return thing;
}

template <class T>
T &nativeOf(const SharedPtr<Object> &object)
{
    void *data = nullptr;
    object->get(&data);
    return *static_cast<T *>(data);
}

SharedPtr<Object> get(const SharedPtr<Object> &object, const char *property)
{
    return object->type()->property(QString(property))->get(object);
}

SharedPtr<Object> call(const SharedPtr<Object> &object, const char *method, const ObjectList &list)
{
    return object->type()->methods(method).invoke(object, list);
}

/** A class that keeps one handle for everything and gives it again, or refuses data. */
class OneHandleClass : public TestClass
{
public:
    explicit OneHandleClass(const char *name) : TestClass(name) {}
    SharedPtr<Object> wrap(void *data, const ObjectAttribute &attribute) override
    {
        if (refuses) {
            return {};
        }
        if (!handle) {
            handle = SharedPtr<Object>(new Object(data, this, attribute));
        }
        return handle;
    }
    SharedPtr<Object> handle;
    bool refuses = false;
};

/** Keeps a view of itself from its construction on. */
class SelfViewing : public Object
{
public:
    explicit SelfViewing(void *data) : Object(data, classes().thing, ObjectAttribute())
    {
        setAutoDelete(true);
        m_view = reference();
    }

private:
    SharedPtr<Object> m_view;
};

static_assert(!std::is_convertible_v<Object *, SharedPtr<Object>>,
              "a bare pointer must not become an owner unnoticed");

} // namespace

TEST(Handles, FreeReplacedDataWhenItsViewsAreGone)
{
    const auto view = [](const SharedPtr<Object> &thing, int kind) {
        switch (kind) {
        case 0:
            return thing->reference();
        case 1:
            return get(thing, "part");
        default:
            Base same{nativeOf<Thing>(thing).number};
            EXPECT_TRUE(classes().base->wrap(&same, ObjectAttribute())->compare(thing));
            return SharedPtr<Object>();
        }
    };
    for (int kind = 0; kind < 3; ++kind) {
        SCOPED_TRACE(kind);
        ended.clear();
        SharedPtr<Object> thing = newThing(1);
        view(thing, kind);
        thing->put(new Thing(2));
        EXPECT_EQ(std::vector<int>{1}, taken(&ended));
        const SharedPtr<Object> kept = view(thing, kind);
        thing->put(new Thing(3));
        EXPECT_EQ(kept ? 0u : 1u, taken(&ended).size());
        thing.reset();
        EXPECT_EQ(std::vector<int>{3}, taken(&ended));
    }
}

TEST(Handles, AreCastWithoutGivingTheirDataAway)
{
    ended.clear();
    SharedPtr<Object> thing = newThing(1);
    thing->castTo(classes().other);
    EXPECT_TRUE(thing->isAutoDelete());
    thing->put(new Thing(2));
    EXPECT_EQ(std::vector<int>{1}, taken(&ended)) << "a refused cast changes nothing";

    thing->castTo(classes().base);
    EXPECT_TRUE(thing->isAutoDelete());
    SharedPtr<Object> view = thing->reference();
    thing.reset();
    EXPECT_EQ(0u, ended.size());
    view.reset();
    EXPECT_EQ(std::vector<int>{2}, taken(&ended)) << "as what it was made as";

    thing = newThing(3);
    Thing *native = &nativeOf<Thing>(thing);
    thing->castTo(classes().base);
    delete native;
    thing->invalidate();
    thing.reset();
    EXPECT_EQ(std::vector<int>{3}, taken(&ended));
}

TEST(Handles, KeepWhatAResultByReferenceLooksInto)
{
    ended.clear();
    const SharedPtr<Object> part = get(newThing(7), "part");
    EXPECT_EQ(7, get(part, "number")->toInteger());
    const SharedPtr<Object> converted = call(newThing(1), "larger", {wrap(9)});
    EXPECT_EQ(9, get(converted, "number")->toInteger());
    const SharedPtr<Object> ofArgument = call(newThing(2), "partOf", {newThing(8)});
    EXPECT_EQ(8, get(ofArgument, "number")->toInteger());
    EXPECT_EQ(std::vector<int>{1}, taken(&ended)) << "the result is known to be the argument";
    EXPECT_EQ(9, call(newThing(1), "greater", {wrap(5), wrap(9)})->toInteger());
    const SharedPtr<Object> list = call(newThing(4), "parts", {});
    EXPECT_EQ(4, get(ArrayClass::unwrapObject(list).at(0), "number")->toInteger());
    const SharedPtr<Object> item =
        call(newThing(1), "first", {ArrayClass::wrapObject({newThing(6)})});
    EXPECT_EQ(6, get(item, "number")->toInteger());
    ended.clear();
    SharedPtr<Object> self = newThing(3);
    for (int i = 0; i < 10; ++i) {
        self = call(self, "noting", {wrap(20 + i)});
    }
    EXPECT_EQ(10u, taken(&ended).size()) << "a result that is the object keeps no arguments";
    EXPECT_EQ(3, get(self, "number")->toInteger());
}

TEST(Handles, OwnResultsApartFromWhatTheseCameFrom)
{
    ended.clear();
    SharedPtr<Object> made = call(newThing(1), "made", {});
    made->setAutoDelete(true);
    SharedPtr<Object> part = get(made, "part");
    made->castTo(classes().base);
    made.reset();
    EXPECT_EQ(99, get(part, "number")->toInteger());
    part.reset();
    EXPECT_EQ((std::vector<int>{99, 1}), taken(&ended));

    made = classes().base->wrap(new Thing(3), ObjectAttribute());
    made->castTo(classes().thing);
    made->setAutoDelete(true);
    made.reset();
    EXPECT_EQ(std::vector<int>{3}, taken(&ended)) << "as the most derived that it is known to be";
}

TEST(Handles, LetTheirClassUseThemWhileItFreesTheirData)
{
    auto &c = *new TestClass("HandlesFreeing", primitive(PrimitiveId::Int));
    int deletions = 0;
    SharedPtr<Object> handle = wrap(1);
    handle->castTo(&c);
    SharedPtr<Object> kept;
    c.onDelete = [&](void *data) {
        ++deletions;
        if (handle) {
            kept = handle->reference();
        }
        delete static_cast<int *>(data);
    };
    handle->put(new int(2));
    kept.reset();
    const SharedPtr<Object> view = handle->reference();
    handle.reset();
    EXPECT_EQ(2, nativeOf<int>(view));
    EXPECT_EQ(1, deletions);
    view->put(nullptr);
    EXPECT_EQ(2, deletions);
    SharedPtr<Object> number = wrap(1);
    number->castTo(&c);
    number.reset();
    EXPECT_EQ(3, deletions) << "though the library made the data";
    c.onDelete = nullptr;
}

TEST(Handles, KeepWhatConversionsMakeOfThem)
{
    auto &c = *new TestClass("HandlesConverted");
    int deletions = 0;
    int data = 0;
    c.onDelete = [&](void *) { ++deletions; };
    c.onCanConvert = [](const Class *, bool, bool) { return true; };
    c.onConvert = [](SharedPtr<Object> object, const Class *target) {
        return target->wrap(&nativeOf<int>(object), ObjectAttribute::Pointer());
    };
    SharedPtr<Object> object(new Object(&data, &c, ObjectAttribute()));
    object->setAutoDelete(true);
    SharedPtr<Object> view = object->type()->convertTo(object, classes().other, true);
    view->put(&data); // the same
    object->put(&data);
    object.reset();
    EXPECT_EQ(0, deletions);
    view.reset();
    EXPECT_EQ(1, deletions);

    object = SharedPtr<Object>(new Object(&data, &c, ObjectAttribute()));
    object->setAutoDelete(true);
    c.onDelete = [&](void *) {
        ++deletions;
        object->invalidate();
    };
    object->put(&deletions);
    EXPECT_TRUE(object->isNull());
    EXPECT_EQ(3, deletions) << "the new data too, which nothing holds";
    c.onDelete = nullptr;
    c.onCanConvert = nullptr;
    c.onConvert = nullptr;
}

TEST(Handles, AreLeftAloneWhenWrapGivesThemAgain)
{
    auto &c = *new OneHandleClass("HandlesOne");
    int data = 0;
    int deletions = 0;
    c.onDelete = [&](void *) { ++deletions; };
    SharedPtr<Object> handle = static_cast<const Class &>(c).wrap(&data, ObjectAttribute());
    handle->setAutoDelete(true);
    EXPECT_EQ(handle, handle->reference());
    c.handle.reset();
    handle.reset();
    EXPECT_EQ(1, deletions);

    c.refuses = true;
    const SharedPtr<Object> null = static_cast<const Class &>(c).createNull();
    ASSERT_TRUE(null);
    EXPECT_TRUE(null->isNull());
    EXPECT_EQ(&c, null->type());
    EXPECT_TRUE(null->objectAttribute().isPointer());
    c.onDelete = nullptr;
}

TEST(Handles, EndWhenTheirOwnerLetsGoWhileTheyNameThemselves)
{
    ended.clear();
    auto *object = new Object(new Thing(1), classes().thing, ObjectAttribute());
    object->setAutoDelete(true);
    auto named = object->castTo(nullptr);
    SharedPtr<Object> owner(object);
    named.reset();
    owner.reset();
    EXPECT_EQ(std::vector<int>{1}, taken(&ended));
    SharedPtr<Object>(new SelfViewing(new Thing(2))).reset();
    EXPECT_EQ(std::vector<int>{2}, taken(&ended));
}

TEST(Handles, FreeValuesOfClassesWrittenByHand)
{
    struct Plain : Thing
    {
        Plain() : Thing(5) {}
    };
    struct Refused : Thing
    {
        Refused() : Thing(6) {}
    };
    ended.clear();
    const auto *plain = new Class("HandlesPlain", true);
    ASSERT_TRUE(registerNativeClass<Plain>(plain));
    EXPECT_TRUE(registerNativeClass<Plain>(plain));
    EXPECT_FALSE(registerNativeClass<Refused>(plain)) << "its data is of one type";
    EXPECT_TRUE(wrap(Plain()));
    EXPECT_EQ((std::vector<int>{5, 5}), taken(&ended)) << "the temporary and its copy";

    auto *refusing = new OneHandleClass("HandlesRefusing");
    refusing->refuses = true;
    ASSERT_TRUE(registerNativeClass<Refused>(refusing));
    EXPECT_FALSE(wrap(Refused()));
    EXPECT_EQ((std::vector<int>{6, 6}), taken(&ended));
    refusing->refuses = false;
    Refused first;
    refusing->wrap(&first, ObjectAttribute());
    EXPECT_FALSE(wrap(first)) << "its one handle is of other data";
    EXPECT_FALSE(refusing->handle->isAutoDelete());
    EXPECT_EQ(std::vector<int>{6}, taken(&ended));
    refusing->handle.reset();
}

TEST(Handles, OfCharactersAndTextsStayWithinTheirData)
{
    EXPECT_EQ("A", wrap('A')->reference()->toString());
    const SharedPtr<Object> text = wrap("");
    text->dereference()->fromInteger(65);
    EXPECT_EQ("A", text->toString());
    const SharedPtr<Object> list = wrap(QStringList{"a", "b"});
    const SharedPtr<Object> first = list->dereference();
    EXPECT_EQ("a", first->toString());
    first->fromInteger(7);
    EXPECT_EQ("[ a, b ]", list->toString());

    // Foreign data ends where it ends.
    const auto foreign = [](char *data, const ObjectAttribute &attribute) {
        return primitive(PrimitiveId::Char)->wrap(data, attribute);
    };
    const std::unique_ptr<char> character(new char('B'));
    EXPECT_EQ("B", foreign(character.get(), ObjectAttribute::Reference())->reference()->toString());
    const std::unique_ptr<char[]> empty(new char[1]());
    const SharedPtr<Object> emptyText = foreign(empty.get(), ObjectAttribute::Pointer());
    emptyText->dereference()->fromInteger(65);
    EXPECT_EQ("", emptyText->toString());
    char word[] = "word";
    const SharedPtr<Object> letter = foreign(word, ObjectAttribute::Pointer())->dereference();
    letter->fromInteger('W');
    EXPECT_EQ("Word", letter->reference()->toString());

    // Two views of one value, both replaced.
    SharedPtr<Object> number = wrap(5);
    const SharedPtr<Object> view = number->reference();
    number->put(nullptr);
    number.reset();
    const SharedPtr<Object> value = view->dereference();
    view->put(nullptr);
    view->put(nullptr);
    EXPECT_EQ("5", value->toString());
}

namespace {

/** What keeps a Thing, as simple as it can be: every handle has one from the start. */
struct Life
{
    explicit Life(Thing *t) : thing(t), number(t->number) {}
    ~Life()
    {
        if (isOwned) {
            expected.push_back(number);
        } else {
            abandoned.push_back(thing);
        }
    }
    Thing *const thing;
    const int number;
    bool isOwned = false;
    static std::vector<int> expected;
    static std::vector<Thing *> abandoned;
};

std::vector<int> Life::expected;
std::vector<Thing *> Life::abandoned;

struct Handle
{
    SharedPtr<Object> object;
    std::shared_ptr<Life> life;
    /** Whether it sees the Thing and not its Part. */
    bool isWhole = true;
};

/** Random steps with a few handles, each done to the real ones and to the model. */
class Model
{
public:
    explicit Model(unsigned seed) : m_random(seed), m_handles(12) {}
    ~Model()
    {
        for (Handle &handle : m_handles) {
            drop(handle);
        }
        for (Thing *thing : Life::abandoned) {
            delete thing;
        }
    }

    void step()
    {
        Handle &handle = any();
        switch (handle.life ? pick(12) : 0) {
        case 0:
            drop(handle);
            handle = created();
            break;
        case 1:
            copy(handle);
            break;
        case 2:
            view(handle, handle.object->reference(), handle.isWhole);
            break;
        case 3:
            view(handle, handle.object->dereference(), handle.isWhole);
            break;
        case 4:
            if (handle.isWhole && handle.object->isA(classes().thing)) {
                view(handle, get(handle.object, "part"), false);
            }
            break;
        case 5:
            convert(handle);
            break;
        case 6:
            if (handle.isWhole) {
                handle.object->castTo(pick(2) ? classes().base : classes().thing);
            }
            break;
        case 7:
            put(handle);
            break;
        case 8:
            invalidate(handle);
            break;
        case 9:
            compare(handle, any());
            break;
        case 10:
            own(handle);
            break;
        default:
            drop(handle);
        }
    }

    /** Whether the same Things ended, in whatever order. */
    bool agrees()
    {
        std::sort(Life::expected.begin(), Life::expected.end());
        std::sort(ended.begin(), ended.end());
        return taken(&Life::expected) == taken(&ended);
    }
    bool readsRight() const
    {
        return std::all_of(m_handles.begin(), m_handles.end(), [](const Handle &handle) {
            return !handle.life
                || get(handle.object, "number")->toInteger() == handle.life->number;
        });
    }

private:
    int pick(int count) { return int(m_random() % unsigned(count)); }
    Handle &any() { return m_handles[std::size_t(pick(int(m_handles.size())))]; }

    Handle created()
    {
        const SharedPtr<Object> thing = newThing(m_next++);
        return {thing, std::make_shared<Life>(&nativeOf<Thing>(thing))};
    }
    static bool isLast(const Handle &handle) { return handle.object->referenceCount() == 1; }
    /** What a handle does with its data when it goes or turns to other data. */
    static void letGo(Handle &handle)
    {
        handle.life->isOwned |= handle.object->isAutoDelete();
        handle.life.reset();
    }
    void drop(Handle &handle)
    {
        if (handle.life && isLast(handle)) {
            letGo(handle);
        }
        handle = Handle();
    }
    void copy(const Handle &handle)
    {
        Handle &target = any();
        if (target.object != handle.object) {
            drop(target);
            target = handle;
        }
    }
    void view(const Handle &handle, const SharedPtr<Object> &seen, bool isWhole)
    {
        Handle &target = any();
        if (seen == handle.object || target.object == handle.object) {
            return;
        }
        const std::shared_ptr<Life> life = handle.life;
        drop(target);
        target = {seen, life, isWhole};
    }
    void convert(const Handle &handle)
    {
        if (handle.isWhole && handle.object->type() == classes().thing) {
            view(handle, handle.object->type()->convertTo(handle.object, classes().base, true), true);
        }
    }
    void put(Handle &handle)
    {
        if (!handle.isWhole || !isLast(handle)) {
            return;
        }
        letGo(handle);
        handle.object->castTo(classes().thing); // of which the new data is
        auto *thing = new Thing(m_next++);
        handle.object->put(thing);
        handle.object->setAutoDelete(true); // nobody else would free it
        handle.life = std::make_shared<Life>(thing);
    }
    void invalidate(Handle &handle)
    {
        if (!isLast(handle)) {
            return;
        }
        if (handle.isWhole) {
            handle.life->isOwned = false; // it is gone for all who see it
        }
        handle.object->invalidate();
        handle = Handle();
    }
    void compare(const Handle &a, const Handle &b)
    {
        if (a.life && b.life && a.isWhole && b.isWhole) {
            EXPECT_EQ(a.life->number == b.life->number, a.object->compare(b.object));
        }
    }
    void own(Handle &handle)
    {
        if (handle.isWhole) {
            handle.object->setAutoDelete(true);
        }
    }
    std::mt19937 m_random;
    std::vector<Handle> m_handles;
    int m_next = 1;
};

} // namespace

TEST(Handles, FreeEachThingOnceWhateverIsDoneToThem)
{
    ended.clear();
    Model model(2026);
    for (int i = 0; i < 1000000; ++i) {
        model.step();
        ASSERT_TRUE(model.agrees()) << "step " << i;
        if (i % 64 == 0) {
            ASSERT_TRUE(model.readsRight()) << "step " << i;
        }
    }
}
