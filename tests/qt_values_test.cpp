#include "qt/wrapper.h"

#include "objectmodel/class.h"
#include "objectmodel/containers.h"
#include "objectmodel/datetime.h"
#include "objectmodel/inspector.h"
#include "objectmodel/object.h"
#include "objectmodel/wrap.h"

#include <gtest/gtest.h>

#include <QColor>
#include <QDateTime>
#include <QFont>
#include <QIcon>
#include <QKeySequence>
#include <QLabel>
#include <QLineF>
#include <QLocale>
#include <QPixmap>
#include <QSizePolicy>
#include <QUrl>

using namespace Vantrel;
using Vantrel::QtWrapper::handleFor;

namespace {

/** Gives and takes every value as one property, and some as the types of arguments. */
class Depot : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QVariant value MEMBER value)
    Q_PROPERTY(signed char tiny MEMBER tiny)
    Q_PROPERTY(ushort half MEMBER half)
    Q_PROPERTY(uint whole MEMBER whole)
    Q_PROPERTY(quint64 large MEMBER large)
    Q_PROPERTY(float real MEMBER real)
    Q_PROPERTY(QChar letter MEMBER letter)
    Q_PROPERTY(QByteArray bytes MEMBER bytes)
    Q_PROPERTY(QStringList texts MEMBER texts)
    Q_PROPERTY(QVariantList list MEMBER list)
    Q_PROPERTY(QVariantMap map MEMBER map)
    Q_PROPERTY(QDate date MEMBER date)
    Q_PROPERTY(QTime time MEMBER time)
    Q_PROPERTY(QDateTime moment MEMBER moment)
    Q_PROPERTY(QRect rect MEMBER rect)
    Q_PROPERTY(QColor color MEMBER color)
    Q_PROPERTY(QFont font MEMBER font)
    Q_PROPERTY(QKeySequence keys MEMBER keys)
    Q_PROPERTY(QUrl url MEMBER url)
    Q_PROPERTY(Qt::Orientation orientation MEMBER orientation)
    Q_PROPERTY(QWidget *widget MEMBER widget)
    Q_PROPERTY(QList<QWidget *> widgets MEMBER widgets)
    Q_PROPERTY(QList<int> numbers MEMBER numbers)

public:
    Q_INVOKABLE QString joined(const QStringList &items) { return items.join(QLatin1Char('/')); }
    Q_INVOKABLE int counted(const QVariantList &items) { return items.size(); }

    QVariant value;
    signed char tiny = 0;
    ushort half = 0;
    uint whole = 0;
    quint64 large = 0;
    float real = 0;
    QChar letter = QLatin1Char('a');
    QByteArray bytes;
    QStringList texts;
    QVariantList list;
    QVariantMap map;
    QDate date;
    QTime time;
    QDateTime moment;
    QRect rect;
    QColor color;
    QFont font;
    QKeySequence keys;
    QUrl url;
    Qt::Orientation orientation = Qt::Horizontal;
    QWidget *widget = nullptr;
    QList<QWidget *> widgets;
    QList<int> numbers;
};

class QtValues : public ::testing::Test
{
protected:
    void SetUp() override { Inspector::self()->lastError(); }

    SharedPtr<Object> get(const char *name)
    {
        return handle->type()->property(QString::fromLatin1(name))->get(handle);
    }
    bool set(const char *name, const SharedPtr<Object> &value)
    {
        return handle->type()->property(QString::fromLatin1(name))->set(handle, value);
    }
    /** The text of a value after it has crossed. */
    QString told(const QVariant &value)
    {
        depot.value = value;
        const SharedPtr<Object> object = get("value");
        return object ? object->className() + QLatin1Char(' ') + object->toString()
                      : Inspector::self()->lastError();
    }
    static SharedPtr<Object> array(const std::vector<SharedPtr<Object>> &items)
    {
        return ArrayClass::wrapObject(items);
    }

    Depot depot;
    SharedPtr<Object> handle = handleFor(&depot);
};

} // namespace

TEST_F(QtValues, TellsEveryValueThatCanCross)
{
    const struct
    {
        QVariant value;
        const char *told;
    } rows[] = {
        {true, "bool true"},
        {-7, "int -7"},
        {QVariant::fromValue(short(-3)), "short -3"},
        {QVariant::fromValue<signed char>(-5), "int -5"},
        {QVariant::fromValue<uchar>(250), "int 250"},
        {4000000000u, "int64 4000000000"},
        {QVariant::fromValue(-5L), "int64 -5"},
        {Q_INT64_C(-9223372036854775807), "int64 -9223372036854775807"},
        {Q_UINT64_C(18446744073709551615),
         "Property 'value' of Depot cannot be read: The number 18446744073709551615 is greater "
         "than "
         "64 bits with a sign can hold"},
        {2.5, "double 2.5"},
        {2.5f, "double 2.5"},
        {QStringLiteral("\u00e9t\u00e9"), "char \u00e9t\u00e9"},
        {QByteArray("\xc3\xa9"), "char \u00e9"},
        {QChar(0xe9), "char \u00e9"},
        {QKeySequence(Qt::CTRL | Qt::Key_S), "char Ctrl+S"},
        {QUrl(QStringLiteral("http://a/b")), "char http://a/b"},
        {QLocale(QStringLiteral("de_AT")), "char de_AT"},
        {QStringList({"a", "b"}), "char [ a, b ]"},
        {QVariantList({1, "x", QVariantList({true})}), "Vantrel_Array [ 1, x, [ true ] ]"},
        {QVariantMap({{"k", 1}, {"l", "m"}}), "Vantrel_Map { k: 1, l: m }"},
        {QVariantHash({{"k", 1}}), "Vantrel_Map { k: 1 }"},
        {QVariant::fromValue(QList<int>({3, 4})), "Vantrel_Array [ 3, 4 ]"},
        {QDate(2024, 3, 5), "DateTime 2024/03/5/-1/-1/-1"},
        {QTime(9, 7), "DateTime 00-1/-1/-1/9/7/0"},
        {QDateTime(QDate(2024, 3, 5), QTime(9, 7, 1)), "DateTime 2024/03/5/9/7/1"},
        {QDate(), "DateTime 00-1/-1/-1/-1/-1/-1"},
        {QPoint(3, -4), "QPoint 3,-4"},
        {QPointF(0.5, 2), "QPointF 0.5,2"},
        {QSize(3, 4), "QSize 3x4"},
        {QSizeF(1.5, 4), "QSizeF 1.5x4"},
        {QRect(1, 2, 3, 4), "QRect 1,2 3x4"},
        {QRectF(1, 2.5, 3, 4), "QRectF 1,2.5 3x4"},
        {QLine(1, 2, 3, 4), "QLine 1,2 3,4"},
        {QLineF(1, 2, 3, 4.5), "QLineF 1,2 3,4.5"},
        {QColor(255, 0, 16), "QColor #ff0010"},
        {QColor(255, 0, 16, 32), "QColor #20ff0010"},
        {QColor(), "QColor invalid"},
        {QFont(QStringLiteral("Face"), 9, QFont::Bold, true), "QFont Face 9pt bold italic"},
        {QVariant::fromValue(QSizePolicy(QSizePolicy::Fixed, QSizePolicy::Expanding)),
         "QSizePolicy Fixed,Expanding"},
        {QVariant::fromValue(Qt::Vertical), "int 2"},
        {QVariant::fromValue(Qt::Alignment(Qt::AlignRight)), "int 2"},
        {QVariant::fromValue<QObject *>(nullptr), "QObject <null>"},
        {QVariant(),
         "Property 'value' of Depot cannot be read: There is no value (an invalid "
         "QVariant)"},
        {QVariant::fromValue(QIcon()),
         "Property 'value' of Depot cannot be read: A value of the "
         "type QIcon cannot cross to scripts"},
        {QVariantList({1, QPixmap()}),
         "Property 'value' of Depot cannot be read: Item 1: A value "
         "of the type QPixmap cannot cross to scripts"},
        {QVariant::fromValue<void *>(nullptr),
         "Property 'value' of Depot cannot be read: A value "
         "of the type void* cannot cross to scripts"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.value.typeName() ? row.value.typeName() : "invalid");
        EXPECT_EQ(QString::fromUtf8(row.told), told(row.value));
    }
}

TEST_F(QtValues, TakesValuesInTheirNaturalForm)
{
    const struct
    {
        const char *what;
        QVariant value;
    } rows[] = {
        {"truth", true},
        {"number", 5},
        {"long number", Q_INT64_C(5000000000)},
        {"real", 0.25},
        {"text", "\u00fc"},
        {"texts", QStringList({"a", "b"})},
        {"point", QPoint(1, 2)},
        {"color", QColor(1, 2, 3)},
        {"date and time", QDateTime(QDate(2024, 3, 5), QTime(9, 7, 1))},
        {"list", QVariantList({1, "a", QVariantList()})},
        {"map", QVariantMap({{"a", 1}})},
        {"object", QVariant::fromValue<QObject *>(&depot)},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        depot.value = row.value;
        const SharedPtr<Object> object = get("value");
        ASSERT_TRUE(object);
        depot.value = QVariant();
        ASSERT_TRUE(set("value", object));
        EXPECT_EQ(row.value, depot.value);
    }
    EXPECT_TRUE(set("value", handle->type()->createNull()));
    EXPECT_FALSE(depot.value.isValid());
}

TEST_F(QtValues, WritesWhatFitsAndRefusesTheRest)
{
    QLabel label;
    QObject plain;
    const struct
    {
        const char *property;
        SharedPtr<Object> value;
        bool accepted;
        QString now;
    } rows[] = {
        {"tiny", wrap(-128), true, "-128"},
        {"tiny", wrap(128), false, "-128"},
        {"half", wrap(65535), true, "65535"},
        {"half", wrap(-1), false, "65535"},
        {"whole", wrap(qint64(4000000000)), true, "4000000000"},
        {"whole", wrap(-1), false, "4000000000"},
        {"large", wrap(qint64(-1)), false, "0"},
        {"real", wrap("0.5"), true, "0.5"},
        {"letter", wrap(QStringLiteral("\u00e9")), true, QStringLiteral("\u00e9")},
        {"letter", wrap("ab"), false, QStringLiteral("\u00e9")},
        {"bytes", wrap("raw"), true, "raw"},
        {"texts", wrap(QStringList({"a", "b"})), true, "[ a, b ]"},
        {"texts", array({wrap("x"), wrap(2)}), true, "[ x, 2 ]"},
        {"list", wrap(QStringList({"a"})), true, "[ a ]"},
        {"list", wrap(3), false, "[ a ]"},
        {"map", MapClass::wrapObject({{"k", wrap(1)}}), true, "{ k: 1 }"},
        {"map", array({}), false, "{ k: 1 }"},
        {"rect", wrap(QRect(1, 2, 3, 4)), true, "1,2 3x4"},
        {"rect", wrap("1,2 3x4"), false, "1,2 3x4"},
        {"color", wrap("red"), true, "#ff0000"},
        {"color", wrap("reddish"), false, "#ff0000"},
        {"keys", wrap("Ctrl+X"), true, "Ctrl+X"},
        {"keys", wrap("Ctrl+Nonsense"), false, "Ctrl+X"},
        {"url", wrap("http://a"), true, "http://a"},
        {"orientation", wrap("Vertical"), true, "2"},
        {"orientation", wrap("Qt::Horizontal"), true, "1"},
        {"orientation", wrap("Diagonal"), false, "1"},
        {"widget", handleFor(&label), true, "QLabel"},
        {"widget", handleFor(&plain), false, "QLabel"},
        {"widget", wrap(1), false, "QLabel"},
        {"numbers", array({wrap(1), wrap(2)}), true, "[ 1, 2 ]"},
        {"numbers", SharedPtr<Object>(), false, "[ 1, 2 ]"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.property);
        EXPECT_EQ(row.accepted, set(row.property, row.value));
        EXPECT_EQ(row.accepted, Inspector::self()->lastError().isEmpty());
        if (!row.now.isEmpty()) {
            EXPECT_EQ(row.now, get(row.property)->toString());
        }
    }
    EXPECT_EQ(&label, depot.widget);
    EXPECT_TRUE(set("widget", handleFor(&label)->type()->createNull()));
    EXPECT_EQ(nullptr, depot.widget);
}

TEST_F(QtValues, CrossesListsOfObjects)
{
    QLabel label;
    depot.widgets = {&label, nullptr};
    const auto items = ArrayClass::unwrapObject(get("widgets"));
    ASSERT_EQ(2u, items.size());
    EXPECT_EQ(handleFor(&label), items[0]);
    EXPECT_TRUE(items[1]->isNull());
    depot.widgets.clear();
    EXPECT_TRUE(set("widgets", array(items)));
    EXPECT_EQ(QList<QWidget *>({&label, nullptr}), depot.widgets);
    EXPECT_FALSE(set("widgets", array({handle}))) << "no widget";
}

TEST_F(QtValues, CrossesDatesWithUnknownParts)
{
    depot.date = QDate(2024, 2, 29);
    depot.time = QTime(23, 59, 1);
    EXPECT_TRUE(set("moment", get("date")));
    EXPECT_EQ(QDateTime(QDate(2024, 2, 29), QTime(0, 0)), depot.moment);
    EXPECT_TRUE(set("moment", wrapDateTime(DateTime())));
    EXPECT_FALSE(depot.moment.isValid());
    EXPECT_FALSE(set("date", wrapDateTime(DateTime(2023, 2, 29))));
    EXPECT_FALSE(set("time", wrapDateTime(DateTime(2023, 2, 2, 24, 0, 0))));
    EXPECT_FALSE(set("date", wrap("2024-01-01")));
    EXPECT_EQ(QDate(2024, 2, 29), depot.date);
    EXPECT_EQ(QTime(23, 59, 1), depot.time);
}

TEST_F(QtValues, HasMembersForStructures)
{
    depot.font = QFont(QStringLiteral("Face"), 9);
    const SharedPtr<Object> font = get("font");
    const auto property = [&](const char *name) {
        return font->type()->property(QString::fromLatin1(name));
    };
    EXPECT_EQ("Face", property("family")->get(font)->toString());
    EXPECT_TRUE(property("bold")->set(font, wrap(true)));
    EXPECT_FALSE(property("pointSize")->set(font, wrap(0)));
    EXPECT_TRUE(set("font", font));
    EXPECT_EQ(QFont(QStringLiteral("Face"), 9, QFont::Bold), depot.font);

    const Class *rectClass = Inspector::self()->type(QStringLiteral("QRect"));
    const SharedPtr<Object> rect = rectClass->construct({wrap(1), wrap(2), wrap(3), wrap(4)});
    EXPECT_TRUE(rectClass->property(QStringLiteral("x"))->set(rect, wrap(10)));
    EXPECT_TRUE(set("rect", rect));
    EXPECT_EQ(QRect(10, 2, 3, 4), depot.rect) << "moved, not resized";
    EXPECT_TRUE(rect->compare(get("rect")));
}

TEST_F(QtValues, TakesArraysAsListsOfTextsInCalls)
{
    const auto call = [&](const char *name, const SharedPtr<Object> &argument) {
        return handle->type()
            ->methods(QString::fromLatin1(name))
            .invoke(handle, {argument}, nullptr);
    };
    const SharedPtr<Object> joined = call("joined", array({wrap("a"), wrap("b")}));
    ASSERT_TRUE(joined);
    EXPECT_EQ("a/b", joined->toString());
    const SharedPtr<Object> counted = call("counted", wrap(QStringList({"a", "b", "c"})));
    ASSERT_TRUE(counted);
    EXPECT_EQ(3, counted->toInteger());
    EXPECT_EQ(nullptr, call("joined", array({handle})));
    EXPECT_EQ(nullptr, call("counted", wrap("a")));
}

TEST_F(QtValues, EndsWithArraysThatContainThemselves)
{
    const SharedPtr<Object> circle = array({});
    circle->type()
        ->methods(QStringLiteral("push"))
        .invoke(circle, {circle}, nullptr);
    EXPECT_FALSE(set("list", circle));
    EXPECT_TRUE(Inspector::self()->lastError().contains("nested too deep"));
    EXPECT_FALSE(set("texts", circle));
    void *data = nullptr;
    circle->get(&data);
    static_cast<std::vector<SharedPtr<Object>> *>(data)->clear(); // the circle would be a leak
}

#include "qt_values_test.moc"
