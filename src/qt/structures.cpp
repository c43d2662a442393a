#include "qt/structures_p.h"

#include "objectmodel/class.h"
#include "objectmodel/classbuilder.h"
#include "objectmodel/datetime.h"
#include "objectmodel/delegates.h"
#include "objectmodel/object.h"
#include "objectmodel/primitiveids.h"
#include "objectmodel/wrap.h"

#include <QColor>
#include <QDateTime>
#include <QFont>
#include <QHash>
#include <QLineF>
#include <QLocale>
#include <QMarginsF>
#include <QMetaEnum>
#include <QRectF>
#include <QSizePolicy>

#include <cmath>

Q_DECLARE_METATYPE(QMargins)
Q_DECLARE_METATYPE(QMarginsF)

namespace Vantrel::QtWrapper {

namespace {

struct Structure
{
    const Class *type;
    SharedPtr<Object> (*wrap)(const QVariant &value);
    QVariant (*unwrap)(const SharedPtr<Object> &object);
};

QHash<int, Structure> &structures()
{
    static auto *const table = new QHash<int, Structure>;
    return *table;
}

/** The text of a value, where scripts want one. */
class StructureText : public ConversionDelegate
{
public:
    StructureText(const QString &className, int metaType)
        : ConversionDelegate(className), m_metaType(metaType)
    {}

    int capabilities() const override { return StringCapability; }
    QString toString(SharedPtr<Object> object) override
    {
        void *data = nullptr;
        object->get(&data);
        return structureText(QVariant(m_metaType, data));
    }

private:
    int m_metaType;
};

template <class T>
void add(ClassBuilder<T> &builder)
{
    const Class *c = builder.add();
    if (!c) {
        return;
    }
    structures().insert(qMetaTypeId<T>(),
                        {c, [](const QVariant &value) { return wrap(value.value<T>()); },
                         [](const SharedPtr<Object> &object) {
                             return QVariant::fromValue(NativeTypes::take<T>(object));
                         }});
    new StructureText(c->className(), qMetaTypeId<T>());
}

template <class Point>
void addPoint(const char *name)
{
    using Number = decltype(Point().x());
    add(ClassBuilder<Point>(name)
            .template constructor<>()
            .template constructor<Number, Number>({"x", "y"})
            .property("x", &Point::x, &Point::setX)
            .property("y", &Point::y, &Point::setY));
}

template <class Size>
void addSize(const char *name)
{
    using Number = decltype(Size().width());
    add(ClassBuilder<Size>(name)
            .template constructor<>()
            .template constructor<Number, Number>({"width", "height"})
            .property("width", &Size::width, &Size::setWidth)
            .property("height", &Size::height, &Size::setHeight));
}

/** Writing x or y moves the rectangle, so that the four numbers are independent. */
template <class Rect>
void addRect(const char *name)
{
    using Number = decltype(Rect().x());
    add(ClassBuilder<Rect>(name)
            .template constructor<>()
            .template constructor<Number, Number, Number, Number>({"x", "y", "width", "height"})
            .property("x", &Rect::x, &Rect::moveLeft)
            .property("y", &Rect::y, &Rect::moveTop)
            .property("width", &Rect::width, &Rect::setWidth)
            .property("height", &Rect::height, &Rect::setHeight));
}

template <class Line>
void addLine(const char *name)
{
    using Number = decltype(Line().x1());
    add(ClassBuilder<Line>(name)
            .template constructor<>()
            .template constructor<Number, Number, Number, Number>({"x1", "y1", "x2", "y2"})
            .property("x1", &Line::x1)
            .property("y1", &Line::y1)
            .property("x2", &Line::x2)
            .property("y2", &Line::y2));
}

template <class Margins>
void addMargins(const char *name)
{
    using Number = decltype(Margins().left());
    add(ClassBuilder<Margins>(name)
            .template constructor<>()
            .template constructor<Number, Number, Number, Number>(
                {"left", "top", "right", "bottom"})
            .property("left", &Margins::left, &Margins::setLeft)
            .property("top", &Margins::top, &Margins::setTop)
            .property("right", &Margins::right, &Margins::setRight)
            .property("bottom", &Margins::bottom, &Margins::setBottom));
}

template <void (QColor::*set)(int)>
bool setPart(QColor &color, int value)
{
    const bool isPossible = value >= 0 && value <= 255;
    if (isPossible) {
        (color.*set)(value);
    }
    return isPossible;
}

bool setColorName(QColor &color, const QString &name)
{
    const bool isColor = QColor::isValidColor(name);
    if (isColor) {
        color.setNamedColor(name);
    }
    return isColor;
}

void addColor()
{
    add(ClassBuilder<QColor>("QColor")
            .constructor<>()
            .constructor<int, int, int>({"red", "green", "blue"})
            .constructor<int, int, int, int>({"red", "green", "blue", "alpha"})
            .constructor<QString>({"name"})
            .property(
                "name", [](const QColor &color) { return color.name(); }, &setColorName)
            .property("red", &QColor::red, &setPart<&QColor::setRed>)
            .property("green", &QColor::green, &setPart<&QColor::setGreen>)
            .property("blue", &QColor::blue, &setPart<&QColor::setBlue>)
            .property("alpha", &QColor::alpha, &setPart<&QColor::setAlpha>)
            .property("hue", &QColor::hue)
            .property("saturation", &QColor::saturation)
            .property("value", &QColor::value)
            .property("lightness", &QColor::lightness)
            .property("valid", &QColor::isValid));
}

template <void (QFont::*set)(int)>
bool setFontSize(QFont &font, int size)
{
    if (size > 0) {
        (font.*set)(size);
    }
    return size > 0;
}

bool setWeight(QFont &font, int weight)
{
    const bool isPossible = weight >= 0 && weight <= 99;
    if (isPossible) {
        font.setWeight(weight);
    }
    return isPossible;
}

void addFont()
{
    add(ClassBuilder<QFont>("QFont")
            .constructor<>()
            .constructor<QString>({"family"})
            .constructor<QString, int>({"family", "pointSize"})
            .property("family", &QFont::family, &QFont::setFamily)
            .property("pointSize", &QFont::pointSize, &setFontSize<&QFont::setPointSize>)
            .property("pixelSize", &QFont::pixelSize, &setFontSize<&QFont::setPixelSize>)
            .property("weight", &QFont::weight, &setWeight)
            .property("bold", &QFont::bold, &QFont::setBold)
            .property("italic", &QFont::italic, &QFont::setItalic)
            .property("underline", &QFont::underline, &QFont::setUnderline)
            .property("strikeOut", &QFont::strikeOut, &QFont::setStrikeOut)
            .property("fixedPitch", &QFont::fixedPitch, &QFont::setFixedPitch));
}

void addSizePolicy()
{
    using Policy = QSizePolicy::Policy;
    add(ClassBuilder<QSizePolicy>("QSizePolicy")
            .constructor<>()
            .enumeration<Policy>("Policy",
                                 {{"Fixed", Policy::Fixed},
                                  {"Minimum", Policy::Minimum},
                                  {"Maximum", Policy::Maximum},
                                  {"Preferred", Policy::Preferred},
                                  {"MinimumExpanding", Policy::MinimumExpanding},
                                  {"Expanding", Policy::Expanding},
                                  {"Ignored", Policy::Ignored}})
            .property("horizontalPolicy", &QSizePolicy::horizontalPolicy,
                      &QSizePolicy::setHorizontalPolicy)
            .property("verticalPolicy", &QSizePolicy::verticalPolicy,
                      &QSizePolicy::setVerticalPolicy)
            .property("horizontalStretch", &QSizePolicy::horizontalStretch,
                      &QSizePolicy::setHorizontalStretch)
            .property("verticalStretch", &QSizePolicy::verticalStretch,
                      &QSizePolicy::setVerticalStretch));
}

void setDate(const QDate &date, DateTime *parts)
{
    if (date.isValid()) {
        date.getDate(&parts->year, &parts->month, &parts->day);
    }
}

void setTime(const QTime &time, DateTime *parts)
{
    if (time.isValid()) {
        parts->hour = time.hour();
        parts->minute = time.minute();
        parts->second = time.second();
    }
}

DateTime dateTimeOf(const QVariant &value)
{
    DateTime parts;
    if (value.userType() != QMetaType::QTime) {
        setDate(value.toDate(), &parts);
    }
    if (value.userType() != QMetaType::QDate) {
        setTime(value.toTime(), &parts);
    }
    return parts;
}

bool isUnknown(std::initializer_list<int> parts)
{
    for (const int part : parts) {
        if (part != -1) {
            return false;
        }
    }
    return true;
}

/** Nothing known is no date; what is known must be one. */
QDate dateOf(const DateTime &parts)
{
    const QDate date(parts.year, parts.month, parts.day);
    if (!date.isValid() && !isUnknown({parts.year, parts.month, parts.day})) {
        NativeTypes::refuse(QString(), QStringLiteral("there is no such date"));
    }
    return date;
}

QTime timeOf(const DateTime &parts)
{
    const QTime time(parts.hour, parts.minute, parts.second == -1 ? 0 : parts.second);
    if (!time.isValid() && !isUnknown({parts.hour, parts.minute, parts.second})) {
        NativeTypes::refuse(QString(), QStringLiteral("there is no such time"));
    }
    return time;
}

QVariant dateVariant(const DateTime &parts, int metaType)
{
    if (metaType == QMetaType::QDate) {
        return dateOf(parts);
    }
    if (metaType == QMetaType::QTime) {
        return timeOf(parts);
    }
    const QDate date = dateOf(parts);
    const QTime time = timeOf(parts);
    if (!date.isValid()) {
        return QDateTime();
    }
    return QDateTime(date, time.isValid() ? time : QTime(0, 0));
}

bool isDate(int metaType)
{
    return metaType == QMetaType::QDate || metaType == QMetaType::QTime
        || metaType == QMetaType::QDateTime;
}

QString number(double value)
{
    // The exponents of the general form are hard to read in sizes.
    const char form = std::abs(value) < 1e15 ? 'f' : 'g';
    return QString::number(value, form, QLocale::FloatingPointShortest);
}

QString pair(double first, const char *separator, double second)
{
    return number(first) + QLatin1String(separator) + number(second);
}

QString rectText(const QRectF &rect)
{
    return pair(rect.x(), ",", rect.y()) + u' ' + pair(rect.width(), "x", rect.height());
}

QString marginsText(const QMarginsF &margins)
{
    return pair(margins.left(), ",", margins.top()) + u','
        + pair(margins.right(), ",", margins.bottom());
}

QString lineText(const QLineF &line)
{
    return pair(line.x1(), ",", line.y1()) + u' ' + pair(line.x2(), ",", line.y2());
}

QString colorText(const QColor &color)
{
    if (!color.isValid()) {
        return QStringLiteral("invalid");
    }
    return color.name(color.alpha() == 255 ? QColor::HexRgb : QColor::HexArgb);
}

QString fontText(const QFont &font)
{
    QStringList parts{font.family()};
    parts << (font.pixelSize() > 0 ? QString::number(font.pixelSize()) + QLatin1String("px")
                                   : number(font.pointSizeF()) + QLatin1String("pt"));
    const struct
    {
        bool isSet;
        const char *text;
    } styles[] = {{font.bold(), "bold"},
                  {font.italic(), "italic"},
                  {font.underline(), "underline"},
                  {font.strikeOut(), "strikeout"}};
    for (const auto &style : styles) {
        if (style.isSet) {
            parts << QLatin1String(style.text);
        }
    }
    return parts.join(u' ');
}

QString policyText(const QSizePolicy &policy)
{
    const auto keys = QMetaEnum::fromType<QSizePolicy::Policy>();
    return QLatin1String(keys.valueToKey(policy.horizontalPolicy())) + u','
        + QLatin1String(keys.valueToKey(policy.verticalPolicy()));
}

} // namespace

void registerStructures()
{
    addPoint<QPoint>("QPoint");
    addPoint<QPointF>("QPointF");
    addSize<QSize>("QSize");
    addSize<QSizeF>("QSizeF");
    addRect<QRect>("QRect");
    addRect<QRectF>("QRectF");
    addLine<QLine>("QLine");
    addLine<QLineF>("QLineF");
    addMargins<QMargins>("QMargins");
    addMargins<QMarginsF>("QMarginsF");
    addColor();
    addFont();
    addSizePolicy();
}

bool isStructure(int metaType)
{
    return structures().contains(metaType);
}

const Class *classOfStructure(int metaType)
{
    if (isDate(metaType)) {
        return objectModelDateTimeClass();
    }
    const auto found = structures().constFind(metaType);
    return found == structures().constEnd() ? nullptr : found->type;
}

SharedPtr<Object> structureObject(const QVariant &value)
{
    if (isDate(value.userType())) {
        return wrapDateTime(dateTimeOf(value));
    }
    const auto found = structures().constFind(value.userType());
    return found == structures().constEnd() ? SharedPtr<Object>() : found->wrap(value);
}

QVariant structureOf(const SharedPtr<Object> &object, int metaType)
{
    if (isDate(metaType)) {
        if (!object || !object->isA(objectModelDateTimeClass()) || object->isNull()) {
            NativeTypes::refuse(QString(), QStringLiteral("a DateTime was expected"));
        }
        return dateVariant(unwrapDateTime(object), metaType);
    }
    const auto found = structures().constFind(metaType);
    if (found == structures().constEnd()) {
        return QVariant();
    }
    const QVariant value = found->unwrap(object);
    const bool isText = object->type()->id() == PrimitiveId::Char;
    if (isText && metaType == QMetaType::QColor && !value.value<QColor>().isValid()) {
        NativeTypes::refuse(QString(), QStringLiteral("'%1' is no colour").arg(object->toString()));
    }
    return value;
}

int structureType(const Class *c)
{
    for (auto it = structures().constBegin(); it != structures().constEnd(); ++it) {
        if (Class::isSubClass(c, it->type)) {
            return it.key();
        }
    }
    return QMetaType::UnknownType;
}

QString structureText(const QVariant &value)
{
    switch (value.userType()) {
    case QMetaType::QDate:
        return value.toDate().toString(Qt::ISODate);
    case QMetaType::QTime:
        return value.toTime().toString(Qt::ISODate);
    case QMetaType::QDateTime:
        return value.toDateTime().toString(Qt::ISODate);
    case QMetaType::QPoint:
    case QMetaType::QPointF:
        return pair(value.toPointF().x(), ",", value.toPointF().y());
    case QMetaType::QSize:
    case QMetaType::QSizeF:
        return pair(value.toSizeF().width(), "x", value.toSizeF().height());
    case QMetaType::QRect:
    case QMetaType::QRectF:
        return rectText(value.toRectF());
    case QMetaType::QLine:
    case QMetaType::QLineF:
        return lineText(value.toLineF());
    case QMetaType::QColor:
        return colorText(value.value<QColor>());
    case QMetaType::QFont:
        return fontText(value.value<QFont>());
    case QMetaType::QSizePolicy:
        return policyText(value.value<QSizePolicy>());
    default:
        break;
    }
    if (value.userType() == qMetaTypeId<QMargins>()) {
        return marginsText(value.value<QMargins>());
    }
    return value.userType() == qMetaTypeId<QMarginsF>() ? marginsText(value.value<QMarginsF>())
                                                        : QString();
}

} // namespace Vantrel::QtWrapper
