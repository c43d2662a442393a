// A program of its own: the step into forwarding mode cannot be taken back.

#include "objectmodel/class.h"
#include "objectmodel/globalfunctions.h"
#include "objectmodel/inspector.h"
#include "objectmodel/namespace.h"
#include "objectmodel/object.h"
#include "objectmodel/remote.h"

#include <gtest/gtest.h>

using namespace Vantrel;

namespace {

/** Records the name of every operation that reaches it. */
class Recorder : public InspectorInterface
{
public:
    mutable QStringList calls;
    const Class *aClass = nullptr;
    Namespace *aNamespace = nullptr;
    SharedPtr<Object> anObject;

    int numObjects() const override { return note("numObjects", 11); }
    SharedPtr<Object> object(const QString &) override { return note("object(name)", anObject); }
    SharedPtr<Object> object(int) override { return note("object(int)", anObject); }
    ObjectList objects() override { return note("objects", ObjectList {anObject, anObject}); }
    SharedPtr<Object> findObject(const QString &) override { return note("findObject", anObject); }
    int numClasses() const override { return note("numClasses", 12); }
    const Class *type(const QString &) const override { return note("type(name)", aClass); }
    const Class *type(int) const override { return note("type(int)", aClass); }
    int registerClass(const Class *) const override { return note("registerClass", 13); }
    int numNamespaces() const override { return note("numNamespaces", 14); }
    Namespace *nameSpace(const QString &) const override { return note("nameSpace(name)", aNamespace); }
    Namespace *nameSpace(int) const override { return note("nameSpace(int)", aNamespace); }
    Namespace *nameSpaceFromFullyQualifiedName(const QString &) const override
    {
        return note("fullyQualified", aNamespace);
    }
    int registerNamespace(Namespace *) const override { return note("registerNamespace", 15); }
    SharedPtr<Object> createPrimitive(const QStringList &) override { return note("list", anObject); }
    SharedPtr<Object> createPrimitive(const char *) override { return note("text", anObject); }
    SharedPtr<Object> createPrimitive(double) override { return note("double", anObject); }
    SharedPtr<Object> createPrimitive(bool) override { return note("bool", anObject); }
    SharedPtr<Object> createPrimitive(long) override { return note("long", anObject); }
    SharedPtr<Object> createPrimitive(long long) override { return note("int64", anObject); }
    SharedPtr<Object> createPrimitive(int) override { return note("int", anObject); }
    SharedPtr<Object> createNull(const Class *) override { return note("createNull", anObject); }
    SharedPtr<Object> voidObject() override { return note("voidObject", anObject); }
    bool sendEvent(const Event *, SharedPtr<Object>, const ObjectList &) override
    {
        return note("sendEvent", true);
    }
    void setUniqueProperty(const QString &, const QString &) override { calls << "setUniqueProperty"; }
    void setMouseTracking(const QString &, bool) override { calls << "setMouseTracking"; }
    void setRecorderFilter(const QString &, const QString &) override { calls << "setRecorderFilter"; }
    void setError(const QString &text) override { calls << "setError " + text; }
    QString lastError() override { return note("lastError", QStringLiteral("remote error")); }
    bool installGlobalEventHandler(const QString &, EventHandler *) override
    {
        return note("installGlobal", true);
    }
    bool uninstallGlobalEventHandler(const QString &, EventHandler *) override
    {
        return note("uninstallGlobal", true);
    }
    QVariant call(const QString &, const FList<QVariant> &arguments) override
    {
        return note("call", arguments.first());
    }
    QMap<QString, QStringList> unmatchedProperties() override
    {
        return note("unmatched", QMap<QString, QStringList>());
    }

    QStringList taken() { return std::exchange(calls, QStringList()); }

private:
    template <class T>
    T note(const char *operation, T result) const
    {
        calls << QString::fromLatin1(operation);
        return result;
    }
};

/** The global class of the other process. */
class RemoteGlobal : public RemoteClassBase
{
public:
    RemoteGlobal() : RemoteClassBase(7, 9) { setNumEnums(1); }

private:
    Enum *createEnum(int enumId) const override
    {
        static const Enum::Item items[] = {{"A", 1}, {nullptr, 0}};
        return new Enum(enumId, this, QStringLiteral("Kind"), items);
    }
};

} // namespace

TEST(Forwarding, PassesExactlyTheForwardedOperations)
{
    Inspector *inspector = Inspector::self();
    Recorder recorder;
    recorder.aClass = inspector->type(1);
    recorder.anObject = inspector->createPrimitive(5);
    recorder.aNamespace = new Namespace;
    auto *child = new Namespace(recorder.aNamespace, QStringLiteral("Child"));

    inspector->setInspectorInterfaceImpl(inspector); // ignored
    EXPECT_EQ(QStringLiteral("int"), inspector->type(1)->className());
    inspector->setError(QStringLiteral("before"));
    inspector->setInspectorInterfaceImpl(&recorder);

    EXPECT_EQ(11, inspector->numObjects());
    inspector->object(QStringLiteral("n"));
    inspector->object(0);
    EXPECT_EQ(2u, inspector->objects().size());
    EXPECT_EQ(recorder.anObject, inspector->findObject(QStringLiteral("anything")));
    EXPECT_EQ(12, inspector->numClasses());
    EXPECT_EQ(recorder.aClass, inspector->type(QStringLiteral("x")));
    EXPECT_EQ(recorder.aClass, inspector->type(-7));
    EXPECT_EQ(13, inspector->registerClass(recorder.aClass));
    EXPECT_EQ(14, inspector->numNamespaces());
    inspector->nameSpace(QStringLiteral("x"));
    EXPECT_EQ(recorder.aNamespace, inspector->nameSpace(99));
    EXPECT_EQ(15, inspector->registerNamespace(child));
    EXPECT_EQ((QStringList {"numObjects", "object(name)", "object(int)", "objects", "findObject",
                            "numClasses", "type(name)", "type(int)", "registerClass",
                            "numNamespaces", "nameSpace(name)", "nameSpace(int)",
                            "registerNamespace"}),
              recorder.taken());

    // Resolved here, from the global namespace that the implementation gives.
    EXPECT_EQ(child, inspector->nameSpaceFromFullyQualifiedName(QStringLiteral("Child")));
    EXPECT_EQ(recorder.aNamespace, inspector->globalNamespace());
    EXPECT_EQ((QStringList {"nameSpace(int)", "nameSpace(int)"}), recorder.taken());

    inspector->createPrimitive(QStringList());
    inspector->createPrimitive("x");
    inspector->createPrimitive(QStringLiteral("x"));
    inspector->createPrimitive(1.0);
    inspector->createPrimitive(true);
    inspector->createPrimitive(1L);
    inspector->createPrimitive(1LL);
    inspector->createPrimitive(1);
    inspector->createNull(recorder.aClass);
    EXPECT_EQ(recorder.anObject, inspector->voidObject());
    EXPECT_EQ((QStringList {"list", "text", "text", "double", "bool", "long", "int64", "int",
                            "createNull", "voidObject"}),
              recorder.taken());

    EXPECT_EQ(QVariant(3), inspector->call(QStringLiteral("f"), {QVariant(3)}));
    inspector->setError(QStringLiteral("text"));
    EXPECT_EQ(QStringLiteral("remote error"), inspector->lastError());
    EXPECT_EQ((QStringList {"call", "setError text", "lastError"}), recorder.taken());

    // Enums without a class are those of the global class over there, in texts too.
    static const RemoteGlobal &global = *new RemoteGlobal; // classes keep what they hand out
    recorder.aClass = &global;
    const Enum *found = inspector->enumerator(QStringLiteral("Kind"));
    ASSERT_NE(nullptr, found);
    EXPECT_EQ(QStringLiteral("(Kind)"),
              Signature(QString(), {Argument(&global, ObjectAttribute(), found)}).toString());
    EXPECT_EQ(nullptr, addFunction("half", [](int value) { return value / 2; }));
    EXPECT_EQ(nullptr, addProperty("pi", [] { return 3; }));
    EXPECT_EQ(nullptr, addEnum("Kind", {Enum::Item{"Own", 1}}));
    EXPECT_EQ((QStringList{"function 'half'", "property 'pi'", "enum 'Kind'"}),
              recorder.taken()
                  .replaceInStrings(QRegExp("^setError Cannot add global (.*): the .*"), "\\1")
                  .filter(QStringLiteral("'")));

    // What stays with the process it runs in.
    const Event event(0, recorder.aClass, Signature(QStringLiteral("e")), Event::Sendable);
    inspector->sendEvent(&event, recorder.anObject, {});
    inspector->setUniqueProperty(QStringLiteral("n"), QStringLiteral("v"));
    inspector->setMouseTracking(QStringLiteral("n"), true);
    inspector->setRecorderFilter(QStringLiteral("n"), QStringLiteral("v"));
    inspector->installGlobalEventHandler(QStringLiteral("e"), nullptr);
    inspector->uninstallGlobalEventHandler(QStringLiteral("e"), nullptr);
    inspector->unmatchedProperties();
    EXPECT_EQ(QStringList(), recorder.taken().filter(QRegExp(QStringLiteral(
                                 "^(sendEvent|set(Unique|Mouse|Recorder)|(un)?install|unmatched)"))));

    // Errors are kept here as well; the tables are not.
    inspector->setError(QStringLiteral("kept"));
    inspector->setInspectorInterfaceImpl(nullptr);
    EXPECT_EQ(QStringLiteral("kept"), inspector->lastError());
    EXPECT_EQ(0, inspector->numClasses());
    EXPECT_EQ(nullptr, inspector->type(1));
}

TEST(Forwarding, DefaultsAreNeutral)
{
    InspectorInterface plain;
    EXPECT_EQ(-1, plain.registerClass(nullptr));
    EXPECT_TRUE(plain.createPrimitive(QStringLiteral("x")).isNull());
    EXPECT_FALSE(plain.isEventRecordingEnabled());
    plain.setEventRecordingEnabled(true);
    EXPECT_FALSE(plain.isEventRecordingEnabled()) << "nobody to notify";
}
