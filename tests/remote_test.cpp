#include "streambytes.h"
#include "testclass.h"

#include "objectmodel/namespace.h"
#include "objectmodel/remote.h"

#include <gtest/gtest.h>

using namespace Vantrel;
using namespace VantrelTest;

namespace {

/** Notes what arrives, and answers with a number or not at all. */
struct NotingTransport : RemoteTransport
{
    SharedPtr<Object> access(const RemoteClass *c, const RemoteMember &member, quint32 objectId,
                             const ObjectList &arguments) override
    {
        notes << QStringLiteral("%1 %2 %3 %4 @%5(%6)")
                     .arg(c->className(), QString::number(member.kind), QString::number(member.id),
                          member.name, QString::number(objectId),
                          QString::number(arguments.size()));
        return answers ? inspector()->createPrimitive(42) : SharedPtr<Object>();
    }
    QStringList takeNotes() { return std::exchange(notes, QStringList()); }

    bool answers = true;
    QStringList notes;
};

NotingTransport *transport()
{
    static NotingTransport instance;
    return &instance;
}

/** Remote classes live as long as the process, like all classes. */
RemoteClass *read(const QByteArray &bytes, QDataStream::Status status = QDataStream::Ok)
{
    static auto *const kept = new std::vector<RemoteClass *>;
    kept->push_back(new RemoteClass(5, transport()));
    EXPECT_EQ(status, readFrom(bytes, *kept->back()));
    return kept->back();
}

RemoteClass *registered(const QByteArray &bytes)
{
    RemoteClass *c = read(bytes);
    c->registerClass();
    return c;
}

QByteArray argumentOf(const char *className, const char *enumClass = "", const char *e = "")
{
    return text("a") + text(className) + number(0) + number(0) + number(0) + text(enumClass)
        + text(e);
}

QByteArray method(const char *name, const char *owner, int id, const QByteArray &arguments,
                  int isStatic = 0)
{
    return text(name) + text(owner) + arguments + number(id) + number(isStatic) + argumentOf("int")
        + text("");
}

/** A class without members but for @p numMethods methods, described in @p methods. */
QByteArray classNamed(const char *name, const char *superName, int numMethods = 0,
                      const QByteArray &methods = QByteArray())
{
    return number(900) + text(name) + number(0) + number(0) + text(superName) + number(0)
        + number(0) + number(numMethods) + number(0) + number(0) + number(0) + methods + number(0);
}

/** One member of each kind, with a static method and property beside the plain ones. */
QByteArray pump(const char *name)
{
    const QByteArray owner = text(name);
    return number(321) + owner + number(0) + number(-8) + text("") + number(0) + number(1)
        + number(2) + number(2) + number(1) + number(1) + text("Mode") + number(0) + owner
        + number(1) + number(0) + text("off") + number(7)
        + method("start", name, 0, number(1) + argumentOf("int", name, "Mode"))
        + method("total", name, 1, number(0), 5) + text("rate") + argumentOf("int") + owner
        + number(0) + number(0) + number(3) + text("count") + argumentOf("int") + owner + number(0)
        + number(1) + number(9) + owner + number(0) + number(1) + argumentOf("int") + text("done")
        + owner + number(0) + number(1) + number(0) + number(2) + text("Liquid")
        + text("RemoteTest_Liquid") + text("Liquid") + text("RemoteTest_Other");
}

} // namespace

TEST(RemoteClass, WritesTheDescriptionThatItRead)
{
    auto *local = new TestClass("RemoteTest_Undeclared");
    local->undeclare();
    const std::pair<const char *, QByteArray> rows[] = {
        {"a class of all members", pump("RemoteTest_Pump")},
        {"a class whose types are unknown here",
         classNamed("RemoteTest_Strange", "RemoteTest_Unknown", 1,
                    method("f", "Elsewhere", -3,
                           number(1) + argumentOf("RemoteTest_Unknown", "X", "Y"), 77))},
        {"a class that declared nothing", written(*static_cast<const Class *>(local))},
        {"a class as it was written first", keptRecord("class.bin")},
    };
    for (const auto &[what, bytes] : rows) {
        SCOPED_TRACE(what);
        ASSERT_FALSE(bytes.isEmpty());
        RemoteClass c(5, transport());
        EXPECT_EQ(QDataStream::Ok, readFrom(bytes, c));
        EXPECT_EQ(bytes.toHex(), written(c).toHex());
        c.method(0);
        c.constructor(0);
        c.property("rate");
        c.event("done");
        c.enumerator("Mode");
        EXPECT_EQ(bytes.toHex(), written(c).toHex());
        for (int size = 0; size < bytes.size(); ++size) {
            RemoteClass cut(5, transport());
            EXPECT_EQ(QDataStream::ReadPastEnd, readFrom(bytes.left(size), cut)) << size;
            EXPECT_TRUE(cut.className().isEmpty());
            EXPECT_EQ(-1, cut.numMethods());
        }
    }
}

TEST(RemoteClass, HasTheMembersOfItsDescription)
{
    RemoteClass *remote = read(pump("RemoteTest_Members"));
    const Class *c = remote;
    EXPECT_EQ(321, remote->remoteId());
    EXPECT_EQ(-1, c->id());
    EXPECT_EQ(5, remote->applicationContextId());
    EXPECT_EQ(inspector()->globalNamespace(), c->nameSpace());
    EXPECT_TRUE(c->hasNature(31));
    EXPECT_EQ(nullptr, c->super());

    EXPECT_EQ("int start(RemoteTest_Members::Mode a)", c->method(0)->toString());
    EXPECT_EQ(c->enumerator("Mode"), c->method(0)->signature().arguments().first().enumType())
        << "known to itself before it is registered";
    EXPECT_FALSE(c->method(1)->isDeprecated());
    EXPECT_EQ(7, c->enumerator("Mode")->value("off", nullptr));
    EXPECT_EQ(3, c->property("rate")->flags());
    EXPECT_TRUE(c->event("done")->isSendable());

    const QByteArray namesake = number(1) + text("a") + text("RemoteTest_Namesake")
        + number(inspector()->nameSpace("UiTypes")->id()) + number(0) + number(0) + text("")
        + text("");
    c = read(
        classNamed("RemoteTest_Namesake", "", 1, method("f", "RemoteTest_Namesake", 0, namesake)));
    EXPECT_EQ(nullptr, c->method(0)->signature().arguments().first().type());
    c = read(classNamed("RemoteTest_Taker", "", 1,
                        method("f", "RemoteTest_Taker", 0, number(1) + written(Argument::AnyObject()))));
    EXPECT_TRUE(c->method(0)->signature().arguments().first().takesAnyObject());
    c = remote;

    inspector()->lastError();
    readFrom(pump("RemoteTest_Twice"), *remote);
    EXPECT_EQ("RemoteTest_Members", c->className());
    EXPECT_FALSE(inspector()->lastError().isEmpty());
}

TEST(RemoteClass, AsksTheTransportForEverything)
{
    RemoteClass *remote = read(pump("RemoteTest_Asked"));
    const Class *c = remote;
    const SharedPtr<Object> object = remote->object(77);
    const SharedPtr<Object> five = inspector()->createPrimitive(5);
    const Property *rate = c->property("rate");
    bool ok = false;
    EXPECT_EQ(42, c->methods("start").invoke(object, {five}, &ok)->toInteger());
    EXPECT_EQ(42, c->method(1)->invoke(nullptr, {})->toInteger());
    EXPECT_EQ(42, rate->get(object)->toInteger());
    EXPECT_EQ(42, c->getProperty(object, rate)->toInteger());
    EXPECT_TRUE(rate->set(object, five));
    EXPECT_TRUE(c->setProperty(object, rate, nullptr));
    EXPECT_EQ(42, c->property("count")->get(nullptr)->toInteger());
    EXPECT_EQ(42, c->construct({five})->toInteger());
    EXPECT_EQ((QStringList{"RemoteTest_Asked 0 0 start @77(1)", "RemoteTest_Asked 0 1 total @0(0)",
                           "RemoteTest_Asked 2 0 rate @77(0)", "RemoteTest_Asked 2 0 rate @77(0)",
                           "RemoteTest_Asked 3 0 rate @77(1)", "RemoteTest_Asked 3 0 rate @77(1)",
                           "RemoteTest_Asked 2 1 count @0(0)", "RemoteTest_Asked 1 0  @0(1)"}),
              transport()->takeNotes());

    transport()->answers = false;
    EXPECT_FALSE(rate->set(object, five));
    EXPECT_TRUE(rate->get(object).isNull());
    transport()->answers = true;
    transport()->takeNotes();
}

TEST(RemoteClass, KeepsCallsThatCannotBeFromTheTransport)
{
    RemoteClass *remote = read(pump("RemoteTest_Refusing"));
    const Class *c = remote;
    const SharedPtr<Object> local = inspector()->createPrimitive(5);
    const SharedPtr<Object> gone = remote->object(1);
    gone->invalidate();
    const Property *rate = c->property("rate");
    const Method *start = c->method(0);
    const SharedPtr<Object> nothing;
    transport()->takeNotes();
    testing::internal::CaptureStderr();
    const std::pair<const char *, std::function<SharedPtr<Object>()>> rows[] = {
        {"Cannot access non-static property rate without object reference",
         [&] { return rate->get(nothing); }},
        {"Cannot access property rate on invalidated object reference",
         [&] { return rate->get(gone); }},
        {"Cannot use rate of class RemoteTest_Refusing on an object of class int",
         [&] { return rate->get(local); }},
        {"Cannot invoke non-static function start() without a object reference",
         [&] { return start->invoke(nothing, {local}); }},
        {"Cannot use start() of class RemoteTest_Refusing on an object of class int",
         [&] { return start->invoke(local, {local}); }},
        {"Class::invoke RemoteTest_Refusing::0: 1 arguments expected, 0 given",
         [&] { return start->invoke(remote->object(2), {}); }},
    };
    for (const auto &[error, call] : rows) {
        inspector()->lastError();
        EXPECT_TRUE(call().isNull());
        EXPECT_EQ(error, inspector()->lastError());
    }
    EXPECT_FALSE(start->invoke(gone, {local}));
    EXPECT_FALSE(rate->set(gone, local));
    EXPECT_FALSE(c->constructor(0)->construct({}));
    testing::internal::GetCapturedStderr();
    EXPECT_TRUE(transport()->takeNotes().isEmpty());
}

TEST(RemoteClass, FindsSuperClassAndTypesThatComeLater)
{
    const RemoteClass *derived = registered(classNamed(
        "RemoteTest_Derived", "RemoteTest_Base", 1,
        method("make", "RemoteTest_Derived", 1, number(1) + argumentOf("RemoteTest_Late"))));
    EXPECT_EQ(nullptr, derived->super());
    const RemoteClass *base = registered(
        classNamed("RemoteTest_Base", "", 1, method("run", "RemoteTest_Base", 0, number(0))));
    const RemoteClass *late = registered(classNamed("RemoteTest_Late", "RemoteTest_Derived"));
    EXPECT_EQ(base, derived->super());
    EXPECT_EQ(2, late->inheritanceDepth(base));
    EXPECT_EQ("run", late->method(0)->name());
    EXPECT_EQ(late, derived->method(1)->signature().arguments().first().type());

    bool ok = false;
    transport()->takeNotes();
    static_cast<const Class *>(late)->methods("run").invoke(late->object(3), {}, &ok);
    EXPECT_EQ(QStringList("RemoteTest_Base 0 0 run @3(0)"), transport()->takeNotes());
}

TEST(RemoteClass, LeavesOutSuperClassesThatMakeARing)
{
    const RemoteClass *a = registered(classNamed("RemoteTest_RingA", "RemoteTest_RingC"));
    registered(classNamed("RemoteTest_RingB", "RemoteTest_RingA"));
    const RemoteClass *c = registered(classNamed("RemoteTest_RingC", "RemoteTest_RingB"));
    const RemoteClass *self = registered(classNamed("RemoteTest_Self", "RemoteTest_Self"));
    testing::internal::CaptureStderr();
    EXPECT_EQ(nullptr, a->super());
    EXPECT_EQ(2, c->inheritanceDepth(a));
    EXPECT_EQ(nullptr, self->super());
    EXPECT_EQ(0, self->numMethods());
    EXPECT_EQ("RemoteClass: class RemoteTest_RingA cannot have the super class RemoteTest_RingC\n"
              "RemoteClass: class RemoteTest_Self cannot have the super class RemoteTest_Self\n",
              testing::internal::GetCapturedStderr());

    const auto addLine = [](int i) {
        const QByteArray name = "RemoteTest_Line" + QByteArray::number(i);
        const QByteArray superName = "RemoteTest_Line" + QByteArray::number(i + 1);
        return registered(classNamed(name.constData(), superName.constData()));
    };
    const RemoteClass *last = addLine(0);
    for (int i = 1; i < 5000; ++i) {
        addLine(i);
    }
    testing::internal::CaptureStderr();
    EXPECT_EQ(0, last->numMethods());
    EXPECT_FALSE(last->isSubClassOf(a));
    testing::internal::GetCapturedStderr();
}

TEST(RemoteClass, OffersItsInterfaces)
{
    const RemoteClass *remote = read(pump("RemoteTest_Offering"));
    registered(
        classNamed("RemoteTest_Other", "", 1, method("flow", "RemoteTest_Other", 0, number(0))));
    const Class *c = remote;
    const SharedPtr<Object> view = c->convertToInterface(remote->object(8), "Liquid");
    ASSERT_TRUE(view);
    EXPECT_EQ("RemoteTest_Other", view->className()) << "the last of two of one name";
    EXPECT_EQ(8u, dynamic_cast<const RemoteObject &>(*view).objectId());
    EXPECT_FALSE(view->isNull());
    EXPECT_TRUE(c->convertToInterface(remote->object(8), "Gas").isNull());
    EXPECT_TRUE(c->convertToInterface(inspector()->createPrimitive(1), "Liquid").isNull());

    bool ok = false;
    transport()->takeNotes();
    view->type()->methods("flow").invoke(view, {}, &ok);
    EXPECT_EQ(QStringList("RemoteTest_Other 0 0 flow @8(0)"), transport()->takeNotes());
}

TEST(RemoteClass, GivesUpOnCountsThatCannotBe)
{
    const QByteArray good = classNamed("RemoteTest_Count", "");
    const int firstCount = good.size() - 6 * 4;
    for (int i = 0; i < 6; ++i) {
        SCOPED_TRACE(i);
        QByteArray bytes = good + QByteArray(40, '\0');
        bytes.replace(firstCount + 4 * i, 4, number(-2));
        read(bytes, QDataStream::ReadCorruptData);
        bytes.replace(firstCount + 4 * i, 4, number(0x7fffffff));
        read(bytes, QDataStream::ReadPastEnd);
    }
}

TEST(RemoteObject, IsNullToTheClassesOfThisProcess)
{
    TestClass *local = new TestClass("RemoteTest_LocalBase");
    local->addMethod("here");
    bool called = false;
    local->onInvoke = [&](int, void *, void **, const Class *) {
        called = true;
        return SharedPtr<Object>();
    };
    const RemoteClass *remote = registered(classNamed("RemoteTest_Mixed", "RemoteTest_LocalBase"));
    const SharedPtr<Object> object = remote->object(4);
    EXPECT_TRUE(object->isNull());
    bool ok = false;
    static_cast<const Class *>(remote)->methods("here").invoke(object, {}, &ok);
    EXPECT_FALSE(called);
    inspector()->lastError();
}

TEST(RemoteObject, CopiesTheObjectId)
{
    const RemoteClass *remote = read(pump("RemoteTest_Copied"));
    const RemoteClass *second = read(classNamed("RemoteTest_CopiedTo", ""));
    RemoteObject object(remote, 9);
    RemoteObject target(second, 1);
    target = object;
    EXPECT_EQ(9u, target.objectId());
    EXPECT_EQ(remote, target.type());
    EXPECT_EQ(9u, RemoteObject(target).objectId());
}
