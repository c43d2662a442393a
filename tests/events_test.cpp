#include "objectmodel/eventhandlers.h"

#include "objectmodel/class.h"
#include "objectmodel/delegates.h"
#include "objectmodel/eventdata.h"
#include "objectmodel/inspector.h"
#include "objectmodel/object.h"

#include <gtest/gtest.h>

#include <QStringList>

#include <functional>
#include <memory>

using namespace Vantrel;

namespace {

class EventClass : public Class
{
public:
    explicit EventClass(const char *name, const Class *superClass = nullptr) : Class(name, true)
    {
        setSuperClass(superClass);
        setNumEvents(1);
    }

private:
    Event *createEvent(int id) const override
    {
        return new Event(id, this, Signature("declared"), Event::Sendable);
    }
};

const Class *baseClass()
{
    static const Class *const c = new EventClass("EventsTestBase");
    return c;
}

const Class *widgetClass()
{
    static const Class *const c = new EventClass("EventsTestWidget", baseClass());
    return c;
}

/** Writes its name into a log, and then does what the case needs. */
class Listener : public EventHandler
{
public:
    Listener(const char *name, QStringList *log, std::function<void()> action = {})
        : m_name(name), m_log(log), m_action(std::move(action))
    {}
    void handleEvent(SharedPtr<Object> object, const QString &event,
                     const ObjectList &arguments) override
    {
        m_log->append(m_name);
        lastObject = object;
        lastEvent = event;
        numArguments = arguments.size();
        if (m_action) {
            const auto action = m_action; // the listener may be gone afterwards
            action();
        }
    }

    SharedPtr<Object> lastObject;
    QString lastEvent;
    std::size_t numArguments = 0;

private:
    QString m_name;
    QStringList *m_log;
    std::function<void()> m_action;
};

class Connections : public DynamicEventDelegate
{
public:
    Connections() : DynamicEventDelegate("EventsTestBase") {}
    bool connectEvent(SharedPtr<Object> object, const QString &event) override
    {
        log << QStringLiteral("connect %1 %2").arg(QString::number(object->index()), event);
        return known;
    }
    bool disconnectEvent(SharedPtr<Object> object, const QString &event) override
    {
        log << QStringLiteral("disconnect %1 %2").arg(QString::number(object->index()), event);
        object->get(&disconnectedFrom);
        return true;
    }

    QStringList log;
    bool known = true;
    void *disconnectedFrom = nullptr;
};

class Events : public testing::Test
{
protected:
    void SetUp() override { inspector->lastError(); }

    bool install(const SharedPtr<Object> &object, EventHandler *handler)
    {
        return inspector->installObjectEventHandler(object, "clicked", handler);
    }

    SharedPtr<Object> widget()
    {
        return SharedPtr<Object>(new Object(&m_data, widgetClass(), ObjectAttribute()));
    }

    QStringList dispatch(const SharedPtr<Object> &object, const QString &event = "clicked")
    {
        log.clear();
        const int called = inspector->dispatchEvent(object, event, {});
        EXPECT_EQ(log.size(), called);
        return log;
    }

    Inspector *const inspector = Inspector::self();
    QStringList log;
    int m_data = 0;
};

} // namespace

TEST_F(Events, ReachObjectThenClassesThenGlobalHandlers)
{
    Listener forAll("all", &log);
    Listener forBase("base", &log);
    Listener forWidget("widget", &log);
    Listener own("own", &log);
    Listener later("later", &log);
    const SharedPtr<Object> object = widget();
    EXPECT_TRUE(inspector->installGlobalEventHandler("clicked", &forAll));
    EXPECT_TRUE(inspector->installClassEventHandler("EventsTestBase", "clicked", &forBase));
    EXPECT_TRUE(inspector->installClassEventHandler("EventsTestWidget", "clicked", &forWidget));
    EXPECT_TRUE(install(object, &own));
    EXPECT_TRUE(install(object, &later));
    EXPECT_TRUE(inspector->installObjectEventHandler(object, "typed", &forAll));

    EXPECT_EQ(QStringList({"own", "later", "widget", "base", "all"}), dispatch(object));
    EXPECT_EQ(QStringList({"widget", "base", "all"}), dispatch(widget()));
    EXPECT_EQ(QStringList("all"), dispatch({}));
    EXPECT_EQ(QStringList("all"), dispatch(object, "typed"));
    EXPECT_EQ(QStringList(), dispatch(object, "Clicked"));

    inspector->dispatchEvent(object, "clicked", {object, object});
    EXPECT_EQ(object, own.lastObject);
    EXPECT_EQ("clicked", own.lastEvent);
    EXPECT_EQ(2u, own.numArguments);

    for (const bool isThere : {true, false}) {
        EXPECT_EQ(isThere,
                  inspector->uninstallClassEventHandler("EventsTestBase", "clicked", &forBase));
        EXPECT_EQ(isThere, inspector->uninstallObjectEventHandler(object, "clicked", &own));
        EXPECT_EQ(isThere, inspector->uninstallGlobalEventHandler("clicked", &forAll));
    }
    EXPECT_EQ(QStringList({"later", "widget"}), dispatch(object));
    EXPECT_EQ(QString(), inspector->lastError());
}

TEST_F(Events, RefuseInstallationsThatMakeNoSense)
{
    Listener handler("handler", &log);
    const SharedPtr<Object> object = widget();
    const SharedPtr<Object> gone = widget();
    gone->invalidate();
    ASSERT_TRUE(install(object, &handler));
    ASSERT_TRUE(inspector->installClassEventHandler("EventsTestBase", "clicked", &handler));
    ASSERT_TRUE(inspector->installGlobalEventHandler("clicked", &handler));

    const QString prefix = QStringLiteral("Cannot install handler for event '%1': %2");
    const auto refused = [&](bool installed, const char *event, const char *reason) {
        EXPECT_FALSE(installed);
        EXPECT_EQ(prefix.arg(event, reason), inspector->lastError());
    };
    const char *const known = "it is installed already";
    const char *const null = "no handler given";
    const char *const noObject = "the object is null or invalidated";
    refused(install(object, &handler), "clicked", known);
    refused(inspector->installClassEventHandler("EventsTestBase", "clicked", &handler), "clicked",
            known);
    refused(inspector->installGlobalEventHandler("clicked", &handler), "clicked", known);
    refused(inspector->installObjectEventHandler(object, "a", nullptr), "a", null);
    refused(inspector->installClassEventHandler("EventsTestBase", "a", nullptr), "a", null);
    refused(inspector->installGlobalEventHandler("a", nullptr), "a", null);
    refused(inspector->installGlobalEventHandler("", &handler), "", "the event has no name");
    refused(inspector->installClassEventHandler("", "a", &handler), "a", "the class has no name");
    for (const auto &none : {SharedPtr<Object>(), widgetClass()->createNull(), gone}) {
        refused(install(none, &handler), "clicked", noObject);
        EXPECT_FALSE(inspector->uninstallObjectEventHandler(none, "clicked", &handler));
    }
    EXPECT_EQ(3, dispatch(object).size());
}

TEST_F(Events, HandlersMayChangeTheRegistryUnderWay)
{
    const SharedPtr<Object> object = widget();
    std::unique_ptr<Listener> self;
    Listener victim("victim", &log);
    Listener late("late", &log);
    self = std::make_unique<Listener>("self", &log, [&] {
        inspector->uninstallObjectEventHandler(object, "clicked", self.get());
        inspector->uninstallGlobalEventHandler("clicked", &victim);
        inspector->installGlobalEventHandler("clicked", &late);
        // Put back, it has a new place and waits for the next event like the other.
        install(object, self.get());
        inspector->uninstallObjectEventHandler(object, "clicked", self.get());
    });
    Listener witness("witness", &log);
    install(object, self.get());
    install(object, &witness);
    inspector->installGlobalEventHandler("clicked", &victim);
    EXPECT_EQ(QStringList({"self", "witness"}), dispatch(object));
    EXPECT_EQ(QStringList({"witness", "late"}), dispatch(object));
}

TEST_F(Events, HandlersMayDestroyHandlers)
{
    const SharedPtr<Object> object = widget();
    std::unique_ptr<Listener> first;
    auto second = std::make_unique<Listener>("second", &log);
    first = std::make_unique<Listener>("first", &log, [&] {
        first.reset();
        second.reset();
    });
    inspector->installClassEventHandler("EventsTestWidget", "clicked", first.get());
    install(object, first.get());
    inspector->installGlobalEventHandler("clicked", second.get());
    EXPECT_EQ(QStringList("first"), dispatch(object));
    EXPECT_EQ(QStringList(), dispatch(object));
}

TEST_F(Events, NestedDispatchEndsBeforeTheOuterOneGoesOn)
{
    const SharedPtr<Object> object = widget();
    int depth = 0;
    Listener outer("outer", &log, [&] {
        if (++depth < 3) {
            inspector->dispatchEvent(object, "clicked", {});
        }
    });
    Listener last("last", &log);
    install(object, &outer);
    inspector->installGlobalEventHandler("clicked", &last);
    inspector->dispatchEvent(object, "clicked", {});
    EXPECT_EQ(QStringList({"outer", "outer", "outer", "last", "last", "last"}), log);
}

TEST_F(Events, AnObjectThatGoesUnderWayHasNoHandlersAnyMore)
{
    SharedPtr<Object> object = widget();
    Listener closer("closer", &log, [&] {
        object->invalidate();
        object.reset();
    });
    Listener own("own", &log);
    Listener forClass("class", &log);
    install(object, &closer);
    install(object, &own);
    inspector->installClassEventHandler("EventsTestBase", "clicked", &forClass);
    EXPECT_EQ(QStringList({"closer", "class"}), dispatch(object));
    EXPECT_FALSE(forClass.lastObject->isValid());
    EXPECT_FALSE(inspector->uninstallObjectEventHandler(forClass.lastObject, "clicked", &own));
}

TEST_F(Events, ConnectWithTheFirstHandlerAndDisconnectWithTheLast)
{
    Connections connections;
    Listener first("first", &log);
    Listener second("second", &log);
    const SharedPtr<Object> object = widget();
    const QString index = QString::number(object->index());
    inspector->installClassEventHandler("EventsTestWidget", "clicked", &first);
    EXPECT_EQ(QStringList(), connections.log);
    install(object, &first);
    install(object, &second);
    inspector->installObjectEventHandler(object, "typed", &second);
    EXPECT_EQ(QStringList({"connect " + index + " clicked", "connect " + index + " typed"}),
              connections.log);
    connections.log.clear();
    inspector->uninstallObjectEventHandler(object, "clicked", &first);
    EXPECT_EQ(QStringList(), connections.log);
    inspector->uninstallObjectEventHandler(object, "clicked", &second);
    EXPECT_EQ(QStringList("disconnect " + index + " clicked"), connections.log);

    connections.known = false;
    EXPECT_FALSE(inspector->installObjectEventHandler(object, "unheard", &first));
    EXPECT_EQ("Cannot install handler for event 'unheard': objects of type EventsTestWidget do "
              "not have it",
              inspector->lastError());
    EXPECT_TRUE(inspector->installObjectEventHandler(object, "declared", &first));
    connections.log.clear();
    inspector->uninstallObjectEventHandler(object, "declared", &first);
    EXPECT_EQ(QStringList(), connections.log);
}

TEST_F(Events, DisconnectWhenHandleOrHandlerGoes)
{
    Connections connections;
    const SharedPtr<Object> object = widget();
    const QString disconnected = "disconnect " + QString::number(object->index()) + " clicked";
    auto handler = std::make_unique<Listener>("handler", &log);
    install(object, handler.get());
    handler.reset();
    EXPECT_EQ(disconnected, connections.log.last());
    EXPECT_EQ(QStringList(), dispatch(object));

    Listener other("other", &log);
    SharedPtr<Object> handle = widget();
    const quint32 index = handle->index();
    install(handle, &other);
    EXPECT_EQ(1u, handle->referenceCount());
    {
        const Object copy(*handle); // its end must not be taken for that of the handle
    }
    EXPECT_EQ(QStringList("other"), dispatch(handle));
    connections.disconnectedFrom = nullptr;
    other.lastObject.reset();
    handle.reset();
    EXPECT_EQ("disconnect " + QString::number(index) + " clicked", connections.log.last());
    EXPECT_EQ(&m_data, connections.disconnectedFrom);

    const SharedPtr<Object> invalid = widget();
    install(invalid, &other);
    const int size = connections.log.size();
    invalid->invalidate();
    EXPECT_EQ(size, connections.log.size());
    EXPECT_EQ(QStringList(), dispatch(invalid));
}

TEST_F(Events, AHandleThatIsAssignedToKeepsTheOtherOnesHandlers)
{
    Listener first("first", &log);
    Listener second("second", &log);
    SharedPtr<Object> target = widget();
    const SharedPtr<Object> source = widget();
    install(target, &first);
    install(source, &second);
    Object plain(*source);
    *target = plain; // takes over the count, so the handle goes with its only holder
    EXPECT_EQ(QStringList("second"), dispatch(target));
    second.lastObject.reset();
    target.reset();
    EXPECT_EQ(QStringList("second"), dispatch(source));
}

TEST_F(Events, AHandleThatIsAssignedToEndsUnderBothIndexes)
{
    Connections connections;
    Listener first("first", &log);
    Listener second("second", &log);
    SharedPtr<Object> target = widget();
    const SharedPtr<Object> source = widget();
    QStringList disconnected;
    for (const quint32 index : {target->index(), source->index()}) {
        disconnected << QStringLiteral("disconnect %1 clicked").arg(index);
    }
    install(target, &first);
    const Object plain(*source);
    *target = plain;
    install(target, &second);
    EXPECT_EQ(QStringList("second"), dispatch(target));
    second.lastObject.reset();
    target.reset();
    EXPECT_EQ(disconnected, connections.log.filter("disconnect"));
}

namespace {

class Sender : public SendEventDelegate
{
public:
    explicit Sender(bool accepts) : m_accepts(accepts)
    {
        Inspector::self()->addSendEventDelegate(this);
    }
    bool sendEvent(const Event *, SharedPtr<Object>, const ObjectList &) override
    {
        ++asked;
        if (action) {
            action();
        }
        return m_accepts;
    }
    int asked = 0;
    std::function<void()> action;

private:
    bool m_accepts;
};

} // namespace

TEST_F(Events, AreSentByTheFirstDelegateThatDoes)
{
    const Event *event = widgetClass()->event("declared");
    ASSERT_TRUE(event);
    const QString error = "Cannot send event 'declared'";
    EXPECT_FALSE(event->sendEvent(widget(), {}));
    EXPECT_EQ(error, inspector->lastError());

    Sender first(false);
    EXPECT_FALSE(event->sendEvent(widget(), {}));
    EXPECT_EQ(error, inspector->lastError());
    Sender second(true);
    Sender third(true);
    EXPECT_TRUE(event->sendEvent(widget(), {}));
    EXPECT_EQ(QString(), inspector->lastError());

    const Event received(0, widgetClass(), Signature("received"));
    EXPECT_FALSE(received.sendEvent(widget(), {}));
    EXPECT_EQ("Cannot send event 'received'", inspector->lastError());
    EXPECT_FALSE(inspector->sendEvent(nullptr, widget(), {}));
    EXPECT_EQ("Cannot send event ''", inspector->lastError());
    EXPECT_EQ(2, first.asked);
    EXPECT_EQ(1, second.asked);
    EXPECT_EQ(0, third.asked);

    first.action = [&] {
        inspector->removeSendEventDelegate(&second);
        inspector->removeSendEventDelegate(&third);
    };
    EXPECT_FALSE(event->sendEvent(widget(), {}));
    EXPECT_EQ(error, inspector->lastError());
    EXPECT_EQ(1, second.asked) << "it left while the first one was asked";
}

TEST_F(Events, AreRecordedWhileThatIsEnabledAndSomebodyListens)
{
    class Recorder : public EventNotifyDelegate
    {
    public:
        void notifyEvent(const EventData &event) override { names << event.eventName; }
        QStringList names;
    };
    auto recorder = std::make_unique<Recorder>();
    EventData event;
    event.eventName = "clicked";
    inspector->setEventRecordingEnabled(true);
    EXPECT_FALSE(inspector->isEventRecordingEnabled());
    inspector->recordEvent(event);
    inspector->setEventNotifyDelegate(recorder.get());
    EXPECT_TRUE(inspector->isEventRecordingEnabled());
    inspector->recordEvent(event);
    inspector->setEventRecordingEnabled(false);
    inspector->recordEvent(event);
    EXPECT_EQ(QStringList("clicked"), recorder->names);
    inspector->setEventRecordingEnabled(true);
    recorder.reset();
    EXPECT_FALSE(inspector->isEventRecordingEnabled()) << "it left with its destruction";
    inspector->setEventRecordingEnabled(false);
}

TEST_F(Events, RecorderSettingsAreReadByTheirNames)
{
    // Each setting has a table of its own, though the names are the same.
    inspector->setUniqueProperty("EventsTestWidget", "id");
    inspector->setExtensionCode("EventsTestWidget", "code");
    inspector->setRecorderFilter("EventsTestWidget", "filter");
    EXPECT_EQ("id", inspector->uniqueProperty("EventsTestWidget"));
    EXPECT_EQ("code", inspector->extensionCode("EventsTestWidget"));
    EXPECT_EQ("filter", inspector->recorderFilter("EventsTestWidget"));
    EXPECT_EQ(QString(), inspector->uniqueProperty("EventsTestBase"));
    for (const bool odd : {true, false}) {
        inspector->setMouseTracking("EventsTestWidget", odd);
        inspector->setRecordMouseDrag("EventsTestWidget", !odd);
        inspector->setAllowKeyEventCompression("EventsTestWidget", odd);
        inspector->enableEventCompression("EventsTestWidget", !odd);
        EXPECT_EQ(odd, inspector->mouseTracking("EventsTestWidget"));
        EXPECT_EQ(!odd, inspector->recordMouseDrag("EventsTestWidget"));
        EXPECT_EQ(odd, inspector->allowKeyEventCompression("EventsTestWidget"));
        EXPECT_EQ(!odd, inspector->isEventCompressionEnabled("EventsTestWidget"));
    }
}

TEST_F(Events, ALaterPropertyDelegateReplacesTheEarlierOne)
{
    class NoProperties : public StaticPropertyDelegate
    {
    public:
        using StaticPropertyDelegate::StaticPropertyDelegate;
        int numPropertyDeclarations() const override { return 0; }
        const PropertyDeclaration *propertyDeclaration(int) const override { return nullptr; }
    };
    NoProperties second("EventsTestWithProperties");
    NoProperties first("EventsTestWithProperties");
    inspector->addPropertyDelegate(&second);
    inspector->addPropertyDelegate(nullptr);
    EXPECT_EQ(
        &second,
        DelegateFactory::self()->delegate("EventsTestWithProperties", Delegate::StaticProperty));
}
