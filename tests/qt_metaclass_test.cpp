#include "qt/wrapper.h"

#include "objectmodel/class.h"
#include "objectmodel/inspector.h"
#include "objectmodel/object.h"
#include "objectmodel/wrap.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSlider>
#include <QThread>

using namespace Vantrel;
using Vantrel::QtWrapper::handleFor;
using Vantrel::QtWrapper::qobjectFor;

// Not in a namespace without a name, where the functions of Q_ENUM would count as unused.
class Gearbox : public QObject
{
    Q_OBJECT
    Q_PROPERTY(Gear gear MEMBER gear)
    Q_PROPERTY(QIcon icon READ picture WRITE setPicture)
    Q_PROPERTY(int serial READ serial CONSTANT)
    Q_PROPERTY(int spare MEMBER spare STORED false)

public:
    enum Gear : quint8 { Reverse = 200, Neutral = 0, First = 1 };
    Q_ENUM(Gear)

    int serial() const { return 7; }
    QIcon picture() const { return QIcon(); }
    void setPicture(const QIcon &) { decorated = true; }
    Q_INVOKABLE int sum(int a, int b = 10, int c = 100) const { return a + b + c; }
    Q_INVOKABLE QString join(const QString &a, const QStringList &rest) const
    {
        return a + rest.join(QLatin1Char('+'));
    }
    Q_INVOKABLE Gearbox::Gear shifted(Gearbox::Gear by) const
    {
        return by == First ? Reverse : First;
    }
    Q_INVOKABLE QIcon paint() { return QIcon(); }
    Q_INVOKABLE void decorate(const QIcon &) { decorated = true; }
    Q_INVOKABLE void decorate(const QString &) {}
    Q_INVOKABLE QObject *self() { return this; }
    Q_INVOKABLE void fit(QLabel *given) { label = given; }

    Gear gear = Neutral;
    int spare = 0;
    bool decorated = false;
    QLabel *label = nullptr;

signals:
    void shiftedTo(int gear);
    void shiftedTo(const QString &gear, bool fast = false);
};

namespace {

class QtMetaclass : public ::testing::Test
{
protected:
    void SetUp() override { Inspector::self()->lastError(); }

    static SharedPtr<Object> call(const SharedPtr<Object> &object, const char *name,
                                  const ObjectList &arguments = {})
    {
        return object->type()
            ->methods(QString::fromLatin1(name))
            .invoke(object, arguments, nullptr);
    }
    static SharedPtr<Object> get(const SharedPtr<Object> &object, const char *name)
    {
        const Property *property = object->type()->property(QString::fromLatin1(name));
        return property ? property->get(object) : SharedPtr<Object>();
    }
    template <class T>
    static bool set(const SharedPtr<Object> &object, const char *name, const T &value)
    {
        const Property *property = object->type()->property(QString::fromLatin1(name));
        return property && property->set(object, wrap(value));
    }
    static QString error() { return Inspector::self()->lastError(); }
};

} // namespace

TEST_F(QtMetaclass, HasTheClassesOfTheMetaObjects)
{
    QPushButton button;
    const SharedPtr<Object> handle = handleFor(&button);
    QStringList names;
    for (const Class *c = handle->type(); c; c = c->super()) {
        names << c->className();
    }
    EXPECT_EQ(QStringList({"QPushButton", "QAbstractButton", "QWidget", "QObject"}), names);
    EXPECT_EQ(handle->type(), Inspector::self()->type(QStringLiteral("QPushButton")));
    EXPECT_EQ(&button, qobjectFor(handle));
}

TEST_F(QtMetaclass, ReadsAndWritesProperties)
{
    QCheckBox box(QStringLiteral("Tea"));
    const SharedPtr<Object> handle = handleFor(&box);
    EXPECT_EQ("Tea", get(handle, "text")->toString());
    EXPECT_TRUE(set(handle, "text", QStringLiteral("Kaffee \u00fc")));
    EXPECT_EQ(QStringLiteral("Kaffee \u00fc"), box.text());
    EXPECT_TRUE(set(handle, "checked", true));
    EXPECT_TRUE(box.isChecked());
    EXPECT_FALSE(handle->type()->property(QStringLiteral("width"))->isWritable());
    EXPECT_FALSE(set(handle, "width", 3));
}

TEST_F(QtMetaclass, TellsTheFlagsOfProperties)
{
    Gearbox box;
    const Class *c = handleFor(&box)->type();
    EXPECT_EQ(Property::Readable | Property::Stored,
              c->property(QStringLiteral("serial"))->flags());
    EXPECT_EQ(Property::Readable | Property::Writable,
              c->property(QStringLiteral("spare"))->flags());
}

TEST_F(QtMetaclass, RefusesWhatItCannotReadOrWrite)
{
    Gearbox box;
    const SharedPtr<Object> handle = handleFor(&box);
    EXPECT_EQ(nullptr, get(handle, "icon"));
    EXPECT_EQ("Property 'icon' of Gearbox has the type QIcon, which cannot cross to scripts",
              error());
    EXPECT_FALSE(set(handle, "icon", QStringLiteral("x")));
    EXPECT_TRUE(error().contains("the type QIcon, which cannot cross"));
    EXPECT_EQ("QIcon", handle->type()->property(QStringLiteral("icon"))->type()->className());
    EXPECT_FALSE(set(handle, "serial", 8));
    EXPECT_FALSE(set(handle, "gear", QStringLiteral("Fifth")));
    EXPECT_TRUE(error().contains("'Fifth' is no key of Gear"));
    EXPECT_EQ(Gearbox::Neutral, box.gear);
    EXPECT_FALSE(set(handle, "spare", qint64(1) << 40));
    EXPECT_EQ(0, box.spare);
    EXPECT_FALSE(box.decorated);
}

TEST_F(QtMetaclass, ReadsAndWritesEnumsByNumberAndKey)
{
    Gearbox box;
    const SharedPtr<Object> handle = handleFor(&box);
    EXPECT_TRUE(set(handle, "gear", QStringLiteral("First")));
    EXPECT_EQ(Gearbox::First, box.gear);
    EXPECT_TRUE(set(handle, "gear", 200));
    EXPECT_EQ(Gearbox::Reverse, box.gear);
    EXPECT_EQ(200, get(handle, "gear")->toInteger());
    const Enum *gears = handle->type()->property(QStringLiteral("gear"))->argument().enumType();
    ASSERT_TRUE(gears);
    EXPECT_EQ("Reverse", gears->valueToKey(200, nullptr));

    QLabel label;
    const SharedPtr<Object> text = handleFor(&label);
    EXPECT_TRUE(set(text, "alignment", QStringLiteral("AlignRight|AlignBottom")));
    EXPECT_EQ(Qt::AlignRight | Qt::AlignBottom, label.alignment());
    EXPECT_EQ(int(label.alignment()), get(text, "alignment")->toInteger());
    const Enum *flags = text->type()->property(QStringLiteral("alignment"))->argument().enumType();
    ASSERT_TRUE(flags);
    EXPECT_TRUE(flags->isMask());
    EXPECT_EQ("Qt", flags->enumClass()->className());
}

TEST_F(QtMetaclass, CallsOverloadsWithDefaultArguments)
{
    Gearbox box;
    const SharedPtr<Object> handle = handleFor(&box);
    EXPECT_EQ(111, call(handle, "sum", {wrap(1)})->toInteger());
    EXPECT_EQ(103, call(handle, "sum", {wrap(1), wrap(2)})->toInteger());
    EXPECT_EQ(6, call(handle, "sum", {wrap(1), wrap(2), wrap(3)})->toInteger());
    EXPECT_EQ(nullptr, call(handle, "sum"));
    EXPECT_EQ("ab+c", call(handle, "join", {wrap("a"), wrap(QStringList{"b", "c"})})->toString());
    EXPECT_EQ(200, call(handle, "shifted", {wrap("First")})->toInteger());
    EXPECT_EQ(handle, call(handle, "self"));

    QLabel label;
    const SharedPtr<Object> labelHandle = handleFor(&label);
    EXPECT_EQ(Inspector::self()->voidObject(), call(labelHandle, "setNum", {wrap(2.5)}));
    EXPECT_EQ("2.5", label.text());
    EXPECT_TRUE(call(handle, "fit", {labelHandle}));
    EXPECT_EQ(&label, box.label);
    EXPECT_FALSE(call(handle, "fit", {handle}));
    EXPECT_EQ(&label, box.label);
    EXPECT_TRUE(call(handle, "fit", {labelHandle->type()->createNull()}));
    EXPECT_EQ(nullptr, box.label);
}

TEST_F(QtMetaclass, RefusesCallsWithTypesThatCannotCross)
{
    Gearbox box;
    const SharedPtr<Object> handle = handleFor(&box);
    EXPECT_EQ(nullptr, call(handle, "paint"));
    EXPECT_TRUE(error().contains("its result has the type QIcon, which cannot cross"));
    EXPECT_TRUE(call(handle, "decorate", {wrap("a text")})) << "the overload with a text";
    EXPECT_FALSE(box.decorated);
    QComboBox combo;
    EXPECT_EQ(nullptr, call(handleFor(&combo), "setPalette", {wrap(1)}));
}

TEST_F(QtMetaclass, ChecksTheObjectOfAMember)
{
    QSlider slider;
    QLabel label;
    const SharedPtr<Object> handle = handleFor(&label);
    const Class *c = handleFor(&slider)->type();
    const Property *value = c->property(QStringLiteral("value"));
    EXPECT_EQ(nullptr, value->get(handle));
    EXPECT_EQ("Cannot use value of class QAbstractSlider on an object of class QLabel", error());
    EXPECT_FALSE(value->set(handle, wrap(3)));
    EXPECT_EQ(nullptr, value->get(c->createNull()));
    EXPECT_EQ("Cannot access property value on null object reference", error());
    const Method *setValue = c->methods(QStringLiteral("setValue")).at(0);
    EXPECT_EQ(nullptr, setValue->invoke(handle, {wrap(3)}));
    EXPECT_EQ("Cannot use setValue() of class QAbstractSlider on an object of class QLabel",
              error());
    EXPECT_EQ(nullptr, setValue->invoke(nullptr, {wrap(3)}));
    EXPECT_EQ(nullptr, setValue->invoke(handleFor(&slider), {}));
    EXPECT_EQ(nullptr, setValue->invoke(handleFor(&slider), {SharedPtr<Object>()}));
    EXPECT_EQ(0, slider.value());
}

TEST_F(QtMetaclass, NamesEventsAfterSignals)
{
    Gearbox box;
    const Class *c = handleFor(&box)->type();
    const Event *number = c->event(QStringLiteral("shiftedTo"));
    ASSERT_TRUE(number);
    EXPECT_EQ("(int gear)", number->signature().toString());
    EXPECT_TRUE(c->event(QStringLiteral("shiftedTo(QString,bool)")));
    EXPECT_FALSE(c->event(QStringLiteral("shiftedTo(QString)"))) << "a default argument";
    EXPECT_TRUE(c->event(QStringLiteral("destroyed")));
}

TEST_F(QtMetaclass, FindsDynamicPropertiesOfTheSingleObject)
{
    QLabel label;
    const SharedPtr<Object> handle = handleFor(&label);
    EXPECT_TRUE(call(handle, "setProperty", {wrap("speed"), wrap(88)}));
    EXPECT_EQ(88, label.property("speed").toInt());
    EXPECT_EQ(88, call(handle, "property", {wrap("speed")})->toInteger());
    EXPECT_EQ("speed", call(handle, "dynamicPropertyNames")->toString());
    EXPECT_TRUE(call(handle, "setProperty", {wrap("text"), wrap("declared")}));
    EXPECT_EQ("declared", call(handle, "property", {wrap("text")})->toString());
    EXPECT_TRUE(call(handle, "setProperty", {wrap("speed"), handle->type()->createNull()}));
    EXPECT_TRUE(label.dynamicPropertyNames().isEmpty());
    EXPECT_EQ(nullptr, call(handle, "property", {wrap("speed")}));
    EXPECT_EQ("Property 'speed' of QLabel: there is no such property", error());
}

#include "qt_metaclass_test.moc"
