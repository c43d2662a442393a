#include "qt/wrapper.h"

#include "objectmodel/class.h"
#include "objectmodel/eventhandlers.h"
#include "objectmodel/inspector.h"
#include "objectmodel/object.h"
#include "objectmodel/wrap.h"

#include <gtest/gtest.h>

#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QThread>
#include <QTreeWidget>

#include <functional>
#include <memory>

using namespace Vantrel;
using Vantrel::QtWrapper::handleFor;
using Vantrel::QtWrapper::qobjectFor;

class LifetimeFirst : public QObject
{
    Q_OBJECT
};

class LifetimeSecond : public QObject
{
    Q_OBJECT
};

namespace {

class Listener : public EventHandler
{
public:
    void handleEvent(SharedPtr<Object> object, const QString &event,
                     const ObjectList &arguments) override
    {
        QString text = event;
        for (const SharedPtr<Object> &argument : arguments) {
            text += QLatin1Char(' ') + argument->toString();
        }
        heard << text;
        if (act) {
            act(object);
        }
    }

    QStringList heard;
    std::function<void(const SharedPtr<Object> &)> act;
};

/** Tells how many listen to its signal. */
class Watched : public QPushButton
{
public:
    int numReceivers() const { return receivers(SIGNAL(clicked(bool))); }
};

const Class *classNamed(const char *name)
{
    return Inspector::self()->type(QString::fromLatin1(name));
}

bool install(const SharedPtr<Object> &object, const char *event, EventHandler *handler)
{
    return Inspector::self()->installObjectEventHandler(object, QString::fromLatin1(event),
                                                        handler);
}

bool uninstall(const SharedPtr<Object> &object, const char *event, EventHandler *handler)
{
    return Inspector::self()->uninstallObjectEventHandler(object, QString::fromLatin1(event),
                                                          handler);
}

} // namespace

TEST(QtLifetime, InvalidatesAllHandlesOfADestroyedObject)
{
    auto button = std::make_unique<QPushButton>();
    const SharedPtr<Object> handle = handleFor(button.get());
    const SharedPtr<Object> asWidget =
        handle->type()->convertTo(handle, classNamed("QWidget"), true);
    ASSERT_TRUE(asWidget);
    const Property *text = handle->type()->property(QStringLiteral("text"));
    button.reset();
    for (const SharedPtr<Object> &gone : {handle, asWidget}) {
        EXPECT_FALSE(gone->isValid());
        EXPECT_EQ("Dead", gone->className());
        EXPECT_EQ(nullptr, qobjectFor(gone));
    }
    Inspector::self()->lastError();
    EXPECT_EQ(nullptr, text->get(handle));
    EXPECT_EQ("Cannot access property text on invalidated object reference",
              Inspector::self()->lastError());
}

TEST(QtLifetime, NoticesTheEndOfAnObjectWhoseConnectionsWereCut)
{
    auto label = std::make_unique<QLabel>();
    const SharedPtr<Object> handle = handleFor(label.get());
    const Property *text = handle->type()->property(QStringLiteral("text"));
    label->disconnect();
    label.reset();
    EXPECT_EQ(nullptr, text->get(handle));
    EXPECT_TRUE(handle->isNull());
    EXPECT_FALSE(handle->isValid());
}

TEST(QtLifetime, HasOneHandleForEachObjectAndClassWhileItIsHeld)
{
    QPushButton button;
    SharedPtr<Object> handle = handleFor(&button);
    EXPECT_EQ(handle, handleFor(&button));
    EXPECT_EQ(1u, handle->referenceCount());
    const SharedPtr<Object> asWidget =
        handle->type()->convertTo(handle, classNamed("QWidget"), true);
    EXPECT_NE(handle, asWidget);
    EXPECT_EQ(asWidget, handle->type()->convertTo(handle, classNamed("QWidget"), true));
    EXPECT_TRUE(handle->sameAs(asWidget));
    EXPECT_TRUE(handle->compare(asWidget));
    QPushButton twin;
    EXPECT_FALSE(handle->sameAs(handleFor(&twin)));
    EXPECT_FALSE(handle->compare(handleFor(&twin)));

    const quint32 index = handle->index();
    handle.reset();
    EXPECT_NE(index, handleFor(&button)->index()) << "nobody held it";
}

TEST(QtLifetime, CastsByWhatAnObjectReallyIs)
{
    QPushButton button;
    const SharedPtr<Object> handle = handleFor(&button);
    const Class *buttonClass = handle->type();
    const Class *widgetClass = classNamed("QWidget");
    QLabel label;
    const Class *labelClass = handleFor(&label)->type();

    const SharedPtr<Object> widget = buttonClass->convertTo(handle, widgetClass, true);
    EXPECT_EQ(widgetClass, widget->type());
    EXPECT_EQ(handle, widgetClass->convertTo(widget, buttonClass, true));
    EXPECT_EQ(nullptr, widgetClass->convertTo(widget, labelClass, true));
    EXPECT_EQ("Cannot cast an object of class QPushButton to QLabel",
              Inspector::self()->lastError());
    EXPECT_EQ(widgetClass, widget->castTo(labelClass)->type()) << "left as it was";
    EXPECT_EQ(buttonClass, widget->castTo(buttonClass)->type());

    EXPECT_EQ(handle, handle->castTo(widgetClass));
    EXPECT_EQ(widgetClass, handle->type());
    EXPECT_EQ(widget, handleFor(&button)) << "the one that is of that class now";
}

TEST(QtLifetime, RefusesObjectsOfOtherThreads)
{
    QThread thread;
    QObject object;
    const SharedPtr<Object> handle = handleFor(&object);
    object.moveToThread(&thread);
    Inspector::self()->lastError();
    EXPECT_EQ(nullptr, handleFor(&object));
    EXPECT_EQ("Cannot access an object of class QObject: it belongs to another thread",
              Inspector::self()->lastError());
    EXPECT_EQ(nullptr, handle->type()->property(QStringLiteral("objectName"))->get(handle));
    EXPECT_TRUE(Inspector::self()->lastError().contains("another thread"));
}

TEST(QtLifetime, SurvivesASlotThatDeletesItsObject)
{
    auto *button = new QPushButton;
    QObject::connect(button, &QPushButton::clicked, [button] { delete button; });
    const SharedPtr<Object> handle = handleFor(button);
    EXPECT_TRUE(handle->type()
                    ->methods(QStringLiteral("click"))
                    .invoke(handle, {}, nullptr));
    EXPECT_FALSE(handle->isValid());
}

TEST(QtLifetime, HasANewClassForANewMetaObjectInTheSamePlace)
{
    static QMetaObject place;
    struct Dynamic : QObject
    {
        const QMetaObject *metaObject() const override { return &place; }
    };
    const auto classNameWith = [](const QMetaObject &metaObject) {
        place = metaObject;
        Dynamic object;
        return handleFor(&object)->className();
    };
    EXPECT_EQ("LifetimeFirst", classNameWith(LifetimeFirst::staticMetaObject));
    EXPECT_EQ("LifetimeSecond", classNameWith(LifetimeSecond::staticMetaObject));
    EXPECT_EQ("LifetimeFirst#2", classNameWith(LifetimeFirst::staticMetaObject));
    EXPECT_EQ("LifetimeFirst#2", classNameWith(LifetimeFirst::staticMetaObject));
}

TEST(QtEvents, ConnectsWhileSomebodyListens)
{
    Watched button;
    Listener first;
    Listener second;
    const SharedPtr<Object> handle = handleFor(&button);
    EXPECT_TRUE(install(handle, "clicked", &first));
    EXPECT_TRUE(install(handle, "clicked", &second));
    EXPECT_EQ(1, button.numReceivers());
    button.click();
    EXPECT_EQ(QStringList("clicked false"), first.heard);
    EXPECT_TRUE(uninstall(handle, "clicked", &first));
    EXPECT_EQ(1, button.numReceivers());
    EXPECT_TRUE(uninstall(handle, "clicked", &second));
    EXPECT_EQ(0, button.numReceivers());
    button.click();
    EXPECT_EQ(1, first.heard.size());
    EXPECT_FALSE(install(handle, "clickd", &first));
}

TEST(QtEvents, EndsWithTheHandle)
{
    Watched button;
    Listener listener;
    SharedPtr<Object> handle = handleFor(&button);
    EXPECT_TRUE(install(handle, "clicked", &listener));
    handle.reset();
    EXPECT_EQ(0, button.numReceivers());
    handle = handleFor(&button);
    EXPECT_TRUE(install(handle, "clicked", &listener));
    handle->invalidate();
    button.click();
    handle.reset();
    button.click();
    EXPECT_TRUE(listener.heard.isEmpty());
}

TEST(QtEvents, TellsOverloadsApart)
{
    QComboBox box;
    box.addItems({QStringLiteral("a"), QStringLiteral("b")});
    Listener listener;
    const SharedPtr<Object> handle = handleFor(&box);
    EXPECT_TRUE(install(handle, "currentIndexChanged", &listener));
    EXPECT_TRUE(install(handle, "currentIndexChanged(QString)", &listener));
    box.setCurrentIndex(1);
    listener.heard.sort();
    EXPECT_EQ(QStringList({"currentIndexChanged 1", "currentIndexChanged(QString) b"}),
              listener.heard);
}

TEST(QtEvents, GivesANullObjectForWhatCannotCross)
{
    QTreeWidget tree;
    tree.addTopLevelItem(new QTreeWidgetItem);
    Listener listener;
    const SharedPtr<Object> handle = handleFor(&tree);
    EXPECT_TRUE(install(handle, "itemExpanded", &listener));
    testing::internal::CaptureStderr();
    emit tree.itemExpanded(tree.topLevelItem(0));
    emit tree.itemExpanded(tree.topLevelItem(0));
    EXPECT_EQ("Event itemExpanded: an argument has the type QTreeWidgetItem*, which cannot cross "
              "to scripts; handlers get a null object\n",
              testing::internal::GetCapturedStderr());
    EXPECT_EQ(QStringList({"itemExpanded <null>", "itemExpanded <null>"}), listener.heard);
}

TEST(QtEvents, SurvivesHandlersThatEndTheSender)
{
    auto *button = new QPushButton;
    Listener listener;
    SharedPtr<Object> handle = handleFor(button);
    EXPECT_TRUE(install(handle, "pressed", &listener));
    EXPECT_TRUE(install(handle, "clicked", &listener));
    listener.act = [&](const SharedPtr<Object> &) {
        delete std::exchange(button, nullptr);
        handle.reset();
    };
    button->click();
    EXPECT_EQ(QStringList("pressed"), listener.heard);

    Watched other;
    handle = handleFor(&other);
    EXPECT_TRUE(install(handle, "clicked", &listener));
    listener.act = [&](const SharedPtr<Object> &object) {
        uninstall(object, "clicked", &listener);
        handle.reset();
    };
    other.click();
    other.click();
    EXPECT_EQ(QStringList({"pressed", "clicked false"}), listener.heard);
}

#include "qt_lifetime_test.moc"
