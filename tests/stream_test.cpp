#include "streambytes.h"
#include "testclass.h"

#include "objectmodel/delegates.h"
#include "objectmodel/namespace.h"

#include <gtest/gtest.h>

#include <limits>
#include <map>
#include <memory>
#include <tuple>

using namespace Vantrel;
using namespace VantrelTest;

namespace {

const Enum::Item speedItems[] = {{"slow", 1}, {"fast", 2}, {nullptr, 0}};

/** The owner of the descriptors below, in the global namespace. */
TestClass *train()
{
    static TestClass *c = &(new TestClass("StreamTest_Train"))->addEnum("Speed", speedItems);
    return c;
}

const Enum *speed()
{
    return static_cast<const Class *>(train())->enumerator("Speed");
}

QDataStream::Status readPiped(const QByteArray &bytes, Serializable &record, int *unread)
{
    Pipe pipe(bytes);
    QDataStream stream(&pipe);
    record.readObject(stream);
    *unread = pipe.numUnread();
    return stream.status();
}

QByteArray intType(const char *name)
{
    return text(name) + text("int") + number(0) + number(0) + number(0) + text("") + text("");
}

/** A record, its bytes, and something of the same kind to read it into. */
struct Sample
{
    const char *what;
    const char *file;
    std::shared_ptr<const Serializable> record;
    QByteArray bytes;
    std::function<std::shared_ptr<Serializable>()> blank;
};

template <class T, class... Arguments>
std::function<std::shared_ptr<Serializable>()> blank(Arguments... arguments)
{
    return [=] { return std::make_shared<T>(arguments...); };
}

/** Kept, because the Inspector knows it once it was read. */
std::shared_ptr<Serializable> blankNamespace()
{
    static auto *const kept = new std::vector<std::shared_ptr<Serializable>>;
    kept->push_back(std::make_shared<Namespace>());
    return kept->back();
}

std::shared_ptr<const Serializable> oldMethod()
{
    Signature signature("go", {intArgument("km")});
    auto method = std::make_shared<Method>(7, train(), intArgument(), signature, Method::Static);
    method->deprecate("old");
    return method;
}

std::shared_ptr<const Serializable> unmaskedEnum()
{
    auto result = std::make_shared<Enum>(3, train(), "Gear", speedItems);
    result->setIsMask(false);
    return result;
}

std::vector<Sample> samples()
{
    const Class *owner = train();
    const auto attribute = std::make_shared<ObjectAttribute>(ObjectAttribute::PointerFlag | 16, 3);
    const Argument plain = intArgument("km");
    const Argument withEnum(QString(), primitive(PrimitiveId::Int), ObjectAttribute::Reference(),
                            speed());
    const QByteArray enumBytes = nullText() + text("int") + number(0) + number(1) + number(0)
        + text("StreamTest_Train") + text("Speed");
    const Signature two("not written", {plain, withEnum});
    const QByteArray ownerName = text("StreamTest_Train");
    const QByteArray rootBytes = number(31) + text("StreamTest_Root") + number(-1);
    static const auto root = [&] {
        auto result = blankNamespace();
        readFrom(rootBytes, *result);
        return result;
    }();
    return {
        {"an attribute", "attribute.bin", attribute, number(18) + number(3),
         blank<ObjectAttribute>()},
        {"an argument of a class", "argument.bin", std::make_shared<Argument>(plain), intType("km"),
         blank<Argument>()},
        {"an argument without class and with a null name", nullptr, std::make_shared<Argument>(),
         nullText() + text("") + number(0) + number(0) + number(0) + text("") + text(""),
         blank<Argument>()},
        {"an argument of an enum", nullptr, std::make_shared<Argument>(withEnum), enumBytes,
         blank<Argument>()},
        {"a signature of two arguments", "signature.bin", std::make_shared<Signature>(two),
         number(2) + intType("km") + enumBytes, blank<Signature>()},
        {"an empty signature", nullptr, std::make_shared<Signature>(), number(0),
         blank<Signature>()},
        {"a static, deprecated method", "method.bin", oldMethod(),
         text("go") + ownerName + number(1) + intType("km") + number(7) + number(1) + intType("")
             + text("old"),
         blank<Method>(owner)},
        {"a constructor", "constructor.bin",
         std::make_shared<Constructor>(2, owner, Signature("x", {plain})),
         ownerName + number(2) + number(1) + intType("km"), blank<Constructor>(owner)},
        {"an event that can be sent", "event.bin",
         std::make_shared<Event>(5, owner, Signature("arrived", {plain}), Event::Sendable),
         text("arrived") + ownerName + number(5) + number(1) + number(1) + intType("km"),
         blank<Event>(owner)},
        {"a property, whose flag for storing stays at home", "property.bin",
         std::make_shared<Property>(4, owner, intArgument(), "doors", 15),
         text("doors") + intType("") + ownerName + number(0) + number(4) + number(11),
         blank<Property>()},
        {"an enum that is not a mask", "enum.bin", unmaskedEnum(),
         text("Gear") + number(3) + ownerName + number(2) + number(0) + text("slow") + number(1)
             + text("fast") + number(2),
         blank<Enum>(owner)},
        {"a namespace that is a root", "namespace.bin", root, rootBytes, blankNamespace},
    };
}

QByteArray headerOf(const Class *c)
{
    return number(c->id()) + QByteArray(text(qPrintable(c->className()))) + number(0) + number(0);
}

/** Objects are data of their own address; their properties are made by the class. */
SharedPtr<Object> wrapped(const Class *c, void *data)
{
    return c->wrap(data, ObjectAttribute());
}

/** Two numbers that share the data of their owner, a write-only and a static property. */
struct Gauge
{
    int level = 3;
    qint16 offset = -2;
};

TestClass *gaugeClass()
{
    static TestClass *c = [] {
        auto *made = new TestClass("StreamTest_Gauge");
        made->addProperty("level", intArgument());
        made->addProperty("secret", intArgument(), Property::Writable);
        made->addProperty("count", intArgument(), Property::Readable | Property::Static);
        made->addProperty("offset", Argument(primitive(PrimitiveId::Short)));
        made->addProperty("missing", intArgument());
        made->onGet = [](int id, void *data) -> SharedPtr<Object> {
            auto *gauge = static_cast<Gauge *>(data);
            if (id == 0) {
                return wrapped(primitive(PrimitiveId::Int), &gauge->level);
            }
            return id == 3 ? wrapped(primitive(PrimitiveId::Short), &gauge->offset)
                           : SharedPtr<Object>();
        };
        return made;
    }();
    return c;
}

/** The objects of a class as one family, each with the children that a test gives it. */
class Family : public ObjectHierarchyDelegate
{
public:
    explicit Family(const Class *c) : ObjectHierarchyDelegate(c->className()) {}
    int numChildren(SharedPtr<Object> parent) override
    {
        ++numAsked;
        return onCount ? onCount() : int(children[dataOf(parent)].size());
    }
    SharedPtr<Object> child(SharedPtr<Object> parent, int index) override
    {
        return children[dataOf(parent)].at(std::size_t(index));
    }
    SharedPtr<Object> childByName(SharedPtr<Object>, const QString &) override { return {}; }
    QString name(SharedPtr<Object>) override { return QString(); }
    QString qualifiedName(SharedPtr<Object>) override { return QString(); }
    int wrapperType(SharedPtr<Object>) override { return 0; }

    std::map<void *, std::vector<SharedPtr<Object>>> children;
    std::function<int()> onCount;
    int numAsked = 0;

private:
    static void *dataOf(const SharedPtr<Object> &object)
    {
        void *data = nullptr;
        object->get(&data);
        return data;
    }
};

/** Payloads of one number that counts how often it was asked for. */
class CountingPayload : public SerializeDelegate
{
public:
    explicit CountingPayload(const Class *c) : SerializeDelegate(c->className()) {}
    void streamObject(SharedPtr<Object>, QDataStream &stream) const override
    {
        stream << qint32(6);
    }
    void objectFromStream(SharedPtr<Object>, QDataStream &stream) const override
    {
        qint32 number = 0;
        stream >> number;
        sum += number;
    }
    QString toDebugString(SharedPtr<Object>) const override { return QString(); }
    mutable int sum = 0;
};

int numReads = 0;

/** Two classes whose objects have each other in @p numProperties properties. */
TestClass *ringOfTwo(const char *first, const char *second, int numProperties)
{
    static int data;
    auto *a = new TestClass(first);
    auto *b = new TestClass(second);
    for (int i = 0; i < numProperties; ++i) {
        a->addProperty("other", Argument(b));
        b->addProperty("other", Argument(a));
    }
    a->onGet = [b](int, void *) { return ++numReads, wrapped(b, &data); };
    b->onGet = [a](int, void *) { return ++numReads, wrapped(a, &data); };
    return a;
}

} // namespace

TEST(Stream, WritesEachRecordAsItsBytesAndReadsItBackUnlessTruncated)
{
    for (const Sample &sample : samples()) {
        EXPECT_EQ(sample.bytes.toHex(), written(*sample.record).toHex()) << sample.what;
        if (sample.file) {
            EXPECT_EQ(sample.bytes.toHex(), keptRecord(sample.file).toHex()) << sample.what;
        }
        for (const auto &read : {readFrom<Serializable>, readPiped}) {
            SCOPED_TRACE(sample.what);
            const auto copy = sample.blank();
            int unread = 0;
            EXPECT_EQ(QDataStream::Ok, read(sample.bytes + number(1), *copy, &unread));
            EXPECT_EQ(4, unread);
            EXPECT_EQ(sample.bytes.toHex(), written(*copy).toHex());
            for (int size = 0; size < sample.bytes.size(); ++size) {
                const QByteArray cut = sample.bytes.left(size);
                EXPECT_EQ(QDataStream::ReadPastEnd, read(cut, *sample.blank(), &unread)) << size;
                EXPECT_EQ(0, unread);
            }
        }
    }
}

TEST(Stream, FollowsTheByteOrderAndTheVersionOfTheStream)
{
    QByteArray bytes[2];
    for (QByteArray &target : bytes) {
        QDataStream stream(&target, QIODevice::ReadWrite);
        stream.setByteOrder(QDataStream::LittleEndian);
        stream.setVersion(QDataStream::Qt_1_0);
        if (&target == bytes) {
            stream << QString("km") << QString("int") << 0 << 0 << 0 << QString("") << QString("");
        } else {
            intArgument("km").writeObject(stream);
        }
        stream.device()->reset();
        Argument copy;
        copy.readObject(stream);
        EXPECT_EQ(intArgument("km"), copy);
        EXPECT_TRUE(stream.atEnd());
    }
    EXPECT_EQ(bytes[0].toHex(), bytes[1].toHex());
}

TEST(Stream, GivesUpOnCountsAndLengthsThatCannotBe)
{
    const qint32 most = std::numeric_limits<qint32>::max();
    const QByteArray enumHead = text("Gear") + number(3) + text("x");
    using Target = std::shared_ptr<Serializable>;
    const std::tuple<const char *, QByteArray, Target, QDataStream::Status> rows[] = {
        {"a negative number of arguments", number(-1) + intType(""), std::make_shared<Signature>(),
         QDataStream::ReadCorruptData},
        {"more arguments than there are", number(most) + intType(""), std::make_shared<Signature>(),
         QDataStream::ReadPastEnd},
        {"a negative number of items", enumHead + number(-2) + number(0), std::make_shared<Enum>(),
         QDataStream::ReadCorruptData},
        {"more items than there are", enumHead + number(most) + number(0) + text("a") + number(1),
         std::make_shared<Enum>(), QDataStream::ReadPastEnd},
        {"a text longer than the rest", number(most - 1) + QByteArray(100, 'x'),
         std::make_shared<Argument>(), QDataStream::ReadPastEnd},
        {"a text of half a character", number(3) + QByteArray(100, 'x'),
         std::make_shared<Argument>(), QDataStream::ReadCorruptData},
    };
    for (const auto &[what, bytes, target, status] : rows) {
        int unread = 0;
        EXPECT_EQ(status, readFrom(bytes, *target)) << what;
        EXPECT_EQ(status, readPiped(bytes, *target, &unread)) << what;
    }
    EXPECT_EQ(1, dynamic_cast<Enum &>(*std::get<Target>(rows[3])).count());
}

TEST(Stream, RefusesMoreArgumentsThanAListHolds)
{
    inspector()->lastError();
    Signature signature("f", {intArgument()});
    EXPECT_NE(QDataStream::Ok, readFrom(number(std::numeric_limits<qint32>::max()), signature));
    EXPECT_EQ("list<T> too long", inspector()->lastError());
    EXPECT_EQ(1, signature.numArguments());
    EXPECT_EQ(QDataStream::Ok, readFrom(number(1) + intType("km"), signature));
    EXPECT_EQ(2, signature.numArguments());
}

TEST(Stream, ReadsOverWhatADescriptorHad)
{
    const PropertyDeclaration declaration(
        train(), intArgument(), "declared",
        [](SharedPtr<Object>) { return inspector()->createPrimitive(1); },
        PropertyDeclaration::WriteFunction());
    Property property(0, train(), &declaration);
    readFrom(text("read") + intType("") + text("StreamTest_Train") + number(0) + number(7)
                 + number(Property::Static),
             property);
    EXPECT_EQ(nullptr, property.propertyDeclaration());
    EXPECT_EQ("read", property.name());
    EXPECT_TRUE(property.isStatic());
    EXPECT_FALSE(property.isReadable());

    Event event(train());
    readFrom(text("e") + text("") + number(3) + number(-2) + number(0), event);
    EXPECT_TRUE(event.isSendable()) << "any flag but 0";
}

TEST(Stream, ReadsUnknownClassesAndEnumsAsNull)
{
    Argument argument;
    readFrom(text("a") + text("StreamTest_Nowhere") + number(0) + number(0) + number(0)
                 + text("StreamTest_Train") + text("Colour"),
             argument);
    EXPECT_FALSE(argument.isValid());
    EXPECT_EQ(nullptr, argument.enumType());
    readFrom(text("a") + text("Object") + number(-1) + number(0) + number(0) + text("") + text(""), argument);
    EXPECT_FALSE(argument.isValid()) << "a class in no namespace";
    for (int nameSpaceId : {-5, 1000000}) {
        readFrom(text("a") + text("int") + number(nameSpaceId) + number(0) + number(0)
                     + text("StreamTest_Nowhere") + text("Speed"),
                 argument);
        EXPECT_FALSE(argument.isValid());
        EXPECT_EQ(nullptr, argument.enumType());
    }
}

TEST(Stream, ReadsNamespacesIntoTheTree)
{
    auto *outer = new Namespace(inspector()->globalNamespace(), "StreamTest_Outer");
    auto *inner = new Namespace;
    const int known = inspector()->numNamespaces();
    EXPECT_EQ(QDataStream::Ok,
              readFrom(number(4711) + text("StreamTest_Inner") + number(outer->id()), *inner));
    EXPECT_EQ(4711, inner->id());
    EXPECT_EQ(outer, inner->enclosingNamespace());
    EXPECT_EQ(inner, outer->getNamespace("StreamTest_Inner"));
    EXPECT_EQ(known + 1, inspector()->numNamespaces());
    EXPECT_EQ(inner, inspector()->nameSpace("StreamTest_Inner"));
    const QByteArray moved = number(4712) + text("StreamTest_Cut") + number(-1);
    for (int size = 0; size < moved.size(); ++size) {
        EXPECT_EQ(QDataStream::ReadPastEnd, readFrom(moved.left(size), *inner));
        EXPECT_EQ(outer, inner->enclosingNamespace());
        EXPECT_EQ(known + 1, inspector()->numNamespaces());
    }
    EXPECT_EQ(number(4711) + text("StreamTest_Inner") + number(outer->id()), written(*inner));

    readFrom(number(outer->id()) + text("StreamTest_Outer") + number(known), *outer);
    EXPECT_EQ(nullptr, outer->enclosingNamespace()) << "its own descendant would enclose it";
    EXPECT_EQ(QString("StreamTest_Inner"), inner->fullyQualifiedName());

    readFrom(number(4711) + text("StreamTest_Inner") + number(-1), *inner);
    EXPECT_EQ(nullptr, outer->getNamespace("StreamTest_Inner")) << "it has moved";
    EXPECT_EQ(nullptr, outer->getNamespace(0));
}

TEST(Stream, DescribesAClass)
{
    auto *base = new TestClass("StreamTest_Base");
    base->addMethod("inherited").addProperty("inherited", intArgument());
    auto *c = new TestClass("StreamTest_Wagon", base);
    c->addMethod("load", {intArgument("tons")}, Method::NoFlags, primitive(PrimitiveId::Int))
        .addMethod("lost")
        .addConstructor({intArgument("seats")})
        .addProperty("doors", intArgument())
        .addEvent("loaded")
        .addEnum("Speed", speedItems)
        .missing = {1};
    c->addNature(3);
    c->addInterface(new Interface("StreamTest_IB"));
    c->addInterface(new Interface("StreamTest_IA"));
    const QByteArray name = text("StreamTest_Wagon");
    const QByteArray expected = number(c->id()) + name + number(0) + number(8)
        + text("StreamTest_Base") + number(0) + number(1) + number(2) + number(1) + number(1)
        + number(1) //
        + text("Speed") + number(0) + name + number(2) + number(1) + text("slow") + number(1)
        + text("fast") + number(2) //
        + text("load") + name + number(1) + intType("tons") + number(1) + number(0) + nullText()
        + intType("").mid(4) + nullText() //
        + nullText() + name + number(0) + number(-1) + number(0) + written(Argument())
        + nullText() //
        + text("doors") + intType("") + name + number(0) + number(1) + number(3) //
        + name + number(0) + number(1) + intType("seats") //
        + text("loaded") + name + number(0) + number(0) + number(0) //
        + number(2) + text("StreamTest_IA") + text("StreamTest_IA") + text("StreamTest_IB")
        + text("StreamTest_IB");
    const Class *described = c;
    EXPECT_EQ(expected.toHex(), written(*described).toHex());
    QByteArray kept = written(*described);
    EXPECT_EQ(kept.replace(0, 4, number(77)).toHex(), keptRecord("class.bin").toHex());

    QDataStream stream(expected);
    c->readObject(stream);
    EXPECT_EQ(expected.size(), stream.device()->bytesAvailable());
}

TEST(Stream, DescribesWhatAClassNeverDeclared)
{
    auto *c = new TestClass("StreamTest_Bare");
    c->undeclare();
    EXPECT_EQ((headerOf(c) + text("") + number(0) + number(-1) + number(-1) + number(-1) + number(0)
               + number(-1) + number(0))
                  .toHex(),
              written(*static_cast<const Class *>(c)).toHex());
}

TEST(Stream, CountsThePropertiesOfTheDelegateAsOwnOnes)
{
    class Delegate : public StaticPropertyDelegate
    {
    public:
        explicit Delegate(const Class *c)
            : StaticPropertyDelegate(c->className()),
              declaration(c, intArgument(), "extra",
                          [](SharedPtr<Object>) { return SharedPtr<Object>(); })
        {}
        int numPropertyDeclarations() const override { return 1; }
        const PropertyDeclaration *propertyDeclaration(int) const override { return &declaration; }
        const PropertyDeclaration declaration;
    };
    auto *c = new TestClass("StreamTest_Extended");
    c->addProperty("own", intArgument());
    new Delegate(c);
    const QByteArray name = text("StreamTest_Extended");
    const QByteArray expected = headerOf(c) + text("") + number(0) + number(0) + number(0)
        + number(2) + number(0) + number(0) + text("own") + intType("") + name + number(0)
        + number(0) + number(3) + text("extra") + intType("") + name + number(0) + number(1)
        + number(1) + number(0);
    EXPECT_EQ(expected.toHex(), written(*static_cast<const Class *>(c)).toHex());

    auto *bare = new TestClass("StreamTest_ExtendedBare");
    bare->undeclare();
    new Delegate(bare);
    EXPECT_EQ((headerOf(bare) + text("") + number(0) + number(-1) + number(-1) + number(1) + number(0) + number(-1)
               + text("extra") + intType("") + text("StreamTest_ExtendedBare") + number(0) + number(0) + number(1) + number(0))
                  .toHex(),
              written(*static_cast<const Class *>(bare)).toHex());
}

TEST(Stream, WritesAnObjectByItsReadableProperties)
{
    Gauge gauge;
    Gauge other{0, 0};
    const QByteArray bytes = text("StreamTest_Gauge") + number(0) + number(3) + number(-2);
    EXPECT_EQ(bytes.toHex(), written(*wrapped(gaugeClass(), &gauge)).toHex());
    EXPECT_EQ(bytes.toHex(), keptRecord("object.bin").toHex());
    int unread = 0;
    EXPECT_EQ(QDataStream::Ok,
              readFrom(bytes + number(1), *wrapped(gaugeClass(), &other), &unread));
    EXPECT_EQ(4, unread);
    EXPECT_EQ(3, other.level);
    EXPECT_EQ(-2, other.offset);
    for (int size = 0; size < bytes.size(); ++size) {
        Gauge cut;
        testing::internal::CaptureStderr();
        EXPECT_EQ(QDataStream::ReadPastEnd,
                  readFrom(bytes.left(size), *wrapped(gaugeClass(), &cut)))
            << size;
        testing::internal::GetCapturedStderr();
    }

    static int data;
    auto *plain = new TestClass("StreamTest_Plain");
    EXPECT_EQ((text("StreamTest_Plain") + number(0) + text("<null>")).toHex(),
              written(*plain->createNull()).toHex());
    auto *twin = new TestClass("StreamTest_Twin");
    twin->addProperty("twin", Argument(twin));
    twin->onGet = [twin](int, void *) { return twin->createNull(); };
    EXPECT_EQ((text("StreamTest_Twin") + number(0) + text("<null>")).toHex(),
              written(*wrapped(twin, &data)).toHex());
}

TEST(Stream, LeavesTheStreamWhereAnObjectDoesNotMatch)
{
    Gauge gauge;
    int unread = 0;
    testing::internal::CaptureStderr();
    EXPECT_EQ(QDataStream::Ok,
              readFrom(text("StreamTest_Other") + number(0) + number(9) + number(9),
                       *wrapped(gaugeClass(), &gauge), &unread));
    EXPECT_EQ(12, unread);
    readFrom(text("StreamTest_Gauge") + number(2) + number(9) + number(9),
             *wrapped(gaugeClass(), &gauge), &unread);
    EXPECT_EQ(8, unread);
    EXPECT_EQ(3, gauge.level);
    EXPECT_EQ("Object::readObject: trying to read an object of type StreamTest_Other, but object "
              "is of type StreamTest_Gauge\n"
              "Object::readObject: number of children mismatches: have 0, read 2\n",
              testing::internal::GetCapturedStderr());
}

TEST(Stream, WritesChildrenAfterThePayload)
{
    static int data[3];
    auto *c = new TestClass("StreamTest_Parent");
    auto *family = new Family(c);
    auto *payload = new CountingPayload(c);
    family->children[&data[0]] = {wrapped(c, &data[1]), wrapped(c, &data[2])};
    const auto record = [](int numChildren) {
        return text("StreamTest_Parent") + number(numChildren) + number(6);
    };
    const SharedPtr<Object> root = wrapped(c, &data[0]);
    EXPECT_EQ((record(2) + record(0) + record(0)).toHex(), written(*root).toHex());
    EXPECT_EQ(QDataStream::Ok, readFrom(written(*root), *root));
    EXPECT_EQ(18, payload->sum);

    family->children[&data[0]][0] = {};
    EXPECT_EQ((record(2) + written(*Object::zombie()) + record(0)).toHex(), written(*root).toHex());
    EXPECT_EQ(QDataStream::Ok, readFrom(written(*root), *root));

    // The second child goes while the first one is written.
    family->children[&data[0]] = {Object::zombie(), Object::zombie()};
    family->numAsked = 0;
    family->onCount = [family] { return family->numAsked < 3 ? 2 : 1; };
    EXPECT_EQ((record(2) + written(*Object::zombie())).toHex(), written(*root).toHex());
}

TEST(Stream, EndsWithObjectsThatContainEachOther)
{
    static int data;
    const TestClass *ring = ringOfTwo("StreamTest_RingA", "StreamTest_RingB", 1);
    const SharedPtr<Object> object = wrapped(ring, &data);
    numReads = 0;
    const QByteArray bytes = written(*object);
    EXPECT_EQ(65, numReads) << "64 values by their payload, the next by its text";
    // Only the innermost value writes anything, and that is its text.
    EXPECT_EQ(text("StreamTest_RingA") + number(0) + text(""), bytes);
    int unread = 0;
    EXPECT_EQ(QDataStream::Ok, readFrom(bytes + number(1), *object, &unread));
    EXPECT_EQ(4, unread);

    const SharedPtr<Object> bush =
        wrapped(ringOfTwo("StreamTest_BushA", "StreamTest_BushB", 2), &data);
    EXPECT_EQ(QDataStream::Ok, readFrom(written(*bush) + number(1), *bush, &unread));
    EXPECT_EQ(4, unread);

    auto *own = new TestClass("StreamTest_OwnChild");
    auto *family = new Family(own);
    new CountingPayload(own);
    family->children[&data] = {wrapped(own, &data)};
    const SharedPtr<Object> parent = wrapped(own, &data);
    EXPECT_EQ(QDataStream::Ok, readFrom(written(*parent) + number(1), *parent, &unread));
    EXPECT_EQ(4, unread);
    family->children.clear();
}
