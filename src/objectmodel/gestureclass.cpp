#include "objectmodel/gestureclass.h"

#include "objectmodel/arguments_p.h"
#include "objectmodel/checkednumbers_p.h"
#include "objectmodel/inspector.h"
#include "objectmodel/object.h"
#include "objectmodel/primitiveids.h"
#include "objectmodel/touchbuilder.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace Vantrel {

namespace {

constexpr int sampleInterval = 20; // milliseconds

const Class *primitive(int id)
{
    return Inspector::self()->type(id);
}

/** Always false. */
bool refused(const QString &error)
{
    Inspector::self()->setError(error);
    return false;
}

// What a method takes.

template <class T>
struct Native;

template <>
struct Native<int>
{
    static Argument type(const QString &name)
    {
        return Argument::Unconverted(name, primitive(PrimitiveId::Int));
    }
    static int read(const void *data) { return *static_cast<const int *>(data); }
};

template <>
struct Native<double>
{
    static Argument type(const QString &name)
    {
        return Argument::Unconverted(name, primitive(PrimitiveId::Double));
    }
    static double read(const void *data) { return *static_cast<const double *>(data); }
};

template <>
struct Native<const char *>
{
    static Argument type(const QString &name)
    {
        return {name, primitive(PrimitiveId::Char),
                ObjectAttribute(ObjectAttribute::PointerFlag | ObjectAttribute::Const1Flag)};
    }
    static const char *read(const void *data) { return static_cast<const char *>(data); }
};

/** @p argument as @p declared; null when that is a number and the argument is none. */
SharedPtr<Object> checked(const SharedPtr<Object> &argument, const Argument &declared)
{
    Inspector *inspector = Inspector::self();
    if (!declared.takesAnyObject()) {
        return argument;
    }
    if (declared.type() == primitive(PrimitiveId::Int)) {
        const std::optional<int> number = checkedInteger(argument);
        return number ? inspector->createPrimitive(*number) : SharedPtr<Object>();
    }
    const std::optional<double> number = checkedNumber(argument);
    return number ? inspector->createPrimitive(*number) : SharedPtr<Object>();
}

/** Puts what native code can read into @p list; false, with the error set, when there is nothing.
 */
bool checkArguments(const Signature &signature, const ObjectList &arguments, ObjectList *list)
{
    for (const Argument &declared : signature.arguments()) {
        const std::size_t index = list->size();
        list->push_back(checked(arguments[index], declared));
        if (!list->back() && declared.takesAnyObject()) {
            return refused(QStringLiteral("%1: argument %2 is not a number")
                               .arg(signature.name(), QString::number(index + 1)));
        }
    }
    return true;
}

// What a method gives. A plain bool says whether a command was accepted; its error is set if not.

struct Truth
{
    bool value;
};

template <class T>
struct Result;

template <>
struct Result<bool>
{
    static Argument type() { return Argument(primitive(PrimitiveId::Void)); }
    static SharedPtr<Object> wrap(bool accepted)
    {
        return accepted ? Inspector::self()->voidObject() : SharedPtr<Object>();
    }
};

template <>
struct Result<Truth>
{
    static Argument type() { return Argument(primitive(PrimitiveId::Bool)); }
    static SharedPtr<Object> wrap(Truth truth)
    {
        return Inspector::self()->createPrimitive(truth.value);
    }
};

template <>
struct Result<std::string>
{
    static Argument type()
    {
        return Argument(primitive(PrimitiveId::Char), ObjectAttribute::Pointer());
    }
    static SharedPtr<Object> wrap(const std::string &text)
    {
        return Inspector::self()->createPrimitive(text.c_str());
    }
};

struct MethodRow
{
    QString name;
    Argument result;
    FList<Argument> arguments;
    std::function<SharedPtr<Object>(TouchBuilder &, void **)> call;
};

/** When the last argument, an int, has no name, the method does without and it is @p missing. */
template <class Function, class R, class... A, std::size_t... I>
MethodRow makeRow(const char *name, const char *argumentNames, Function function, int missing,
                  R (*)(A...), std::index_sequence<I...>)
{
    const QStringList names = QString::fromLatin1(argumentNames).split(u' ', Qt::SkipEmptyParts);
    const std::size_t given = std::size_t(names.size());
    Q_ASSERT(given + (missing > 0 ? 1 : 0) == sizeof...(A));
    MethodRow row{QString::fromLatin1(name), Result<R>::type(), {}, {}};
    ((I < given ? row.arguments.append(Native<A>::type(names[int(I)])) : void()), ...);
    row.call = [=](TouchBuilder &builder, [[maybe_unused]] void **arguments) {
        const std::tuple<A...> values{Native<A>::read(I < given ? arguments[I] : &missing)...};
        return Result<R>::wrap(std::invoke(function, builder, std::get<I>(values)...));
    };
    return row;
}

/** A method that is an operation of TouchBuilder. The names of its arguments are one text. */
template <class... A>
MethodRow method(const char *name, const char *argumentNames, bool (TouchBuilder::*operation)(A...),
                 int missing = 0)
{
    using Shape = bool (*)(A...);
    return makeRow(name, argumentNames, operation, missing, Shape(),
                   std::index_sequence_for<A...>());
}

/** A method that needs some code of its own. */
template <class R, class... A>
MethodRow method(const char *name, const char *argumentNames, R (*function)(TouchBuilder &, A...))
{
    using Shape = R (*)(A...);
    return makeRow(name, argumentNames, function, 0, Shape(), std::index_sequence_for<A...>());
}

std::string toXml(TouchBuilder &builder)
{
    return builder.toXml();
}

Truth fromXml(TouchBuilder &builder, const char *xml)
{
    std::string error;
    if (builder.fromXml(xml, &error)) {
        return {true};
    }
    Inspector::self()->setError(QString::fromStdString(error));
    return {false};
}

bool rotate(TouchBuilder &builder, double angle)
{
    return builder.rotate(angle, 0, 0, true);
}

bool rotateAbout(TouchBuilder &builder, double angle, double x, double y)
{
    return builder.rotate(angle, x, y, false);
}

bool scale(TouchBuilder &builder, double sx, double sy)
{
    return builder.scale(sx, sy, 0, 0, true);
}

bool scaleAbout(TouchBuilder &builder, double sx, double sy, double x, double y)
{
    return builder.scale(sx, sy, x, y, false);
}

bool accelerate(TouchBuilder &builder, double factor)
{
    builder.accelerate(factor);
    return true;
}

bool build(TouchBuilder &builder)
{
    std::string error;
    return builder.generateSamples(sampleInterval, &error)
        || refused(QString::fromStdString(error));
}

std::string toSvg(TouchBuilder &builder)
{
    return builder.toSvg();
}

/** The order is the order of the method ids. */
const std::vector<MethodRow> &methodRows()
{
    using Builder = TouchBuilder;
    static const std::vector<MethodRow> rows = {
        method("toXml", "", toXml),
        method("fromXml", "xml", fromXml),
        method("translate", "dx dy", &Builder::translate),
        method("rotate", "angle", rotate),
        method("rotate", "angle x y", rotateAbout),
        method("scale", "sx sy", scale),
        method("scale", "sx sy x y", scaleAbout),
        method("accelerate", "factor", accelerate),
        method<int, double, double>("addStroke", "time x y", &Builder::addStroke),
        method<int, double, double, double>("addStroke", "time x y pressure", &Builder::addStroke),
        method<int, double, double, double, double>("addStroke", "time x y pressure size",
                                                    &Builder::addStroke),
        method("lineTo", "duration x y", &Builder::lineTo),
        method<int, double, double, double, double>("curveTo", "duration cx cy x y",
                                                    &Builder::curveTo),
        method<int, double, double, double, double, double, double>(
            "curveTo", "duration c1x c1y c2x c2y x y", &Builder::curveTo),
        method("build", "", build),
        method("tap", "x y", &Builder::tap, 1),
        method("tap", "x y fingers", &Builder::tap),
        method("doubleTap", "x y", &Builder::doubleTap, 1),
        method("doubleTap", "x y fingers", &Builder::doubleTap),
        method("longPress", "x y duration", &Builder::longPress, 1),
        method("longPress", "x y duration fingers", &Builder::longPress),
        method("swipe", "x y dx dy duration", &Builder::swipe, 1),
        method("swipe", "x y dx dy duration fingers", &Builder::swipe),
        method("pinch", "x y startDistance endDistance duration", &Builder::pinch, 2),
        method("pinch", "x y startDistance endDistance duration fingers", &Builder::pinch),
        method("spread", "x y startDistance endDistance duration", &Builder::spread, 2),
        method("spread", "x y startDistance endDistance duration fingers", &Builder::spread),
        method<double, double, double, double, int, int>("rotateBy", "x y distance angle duration",
                                                         &Builder::rotateBy, 2),
        method<double, double, double, double, int, int>(
            "rotateBy", "x y distance angle duration fingers", &Builder::rotateBy),
        method<double, double, double, double, double, int, int>(
            "rotateBy", "x y startDistance endDistance angle duration fingers", &Builder::rotateBy),
        method("toSvg", "", toSvg),
    };
    return rows;
}

const struct
{
    const char *name;
    float TouchBuilder::MultiTouchInfo::*value;
} propertyRows[] = {
    {"areaWidth", &TouchBuilder::MultiTouchInfo::areaWidth},
    {"areaHeight", &TouchBuilder::MultiTouchInfo::areaHeight},
};

const Enum::Item unitItems[] = {
    {"Pixel", TouchBuilder::Pixel},
    {"MilliMeter", TouchBuilder::MilliMeter},
    {"LogicalPoint", TouchBuilder::LogicalPoint},
    {nullptr, 0},
};

constexpr int numConstructorArguments = 3;

/** Whether every argument has data; a direct call may hand over null objects. */
bool areGiven(void **arguments, int count)
{
    return count == 0 || (arguments && std::all_of(arguments, arguments + count, [](void *a) {
                              return a != nullptr;
                          }));
}

} // namespace

GestureClass::GestureClass() : Class("GestureBuilder", true)
{
    setNumConstructors(1);
    setNumMethods(int(methodRows().size()));
    setNumProperties(int(std::size(propertyRows)));
    setNumEvents(0);
    setNumEnums(1);
}

GestureClass::~GestureClass() = default;

SharedPtr<Object> GestureClass::invoke(int, SharedPtr<Object> object, const ObjectList &arguments,
                                       const Method *method)
{
    ObjectList list;
    if (!verifyCall(this, object, arguments, method)
        || !checkArguments(method->signature(), arguments, &list)) {
        return {};
    }
    NativeArguments native(list);
    return Class::invoke(object, method, native.data());
}

SharedPtr<Object> GestureClass::invoke(int methodId, void *data, void **arguments, const Class *)
{
    if (!data || methodId < 0 || methodId >= int(methodRows().size())) {
        return {};
    }
    const MethodRow &row = methodRows()[std::size_t(methodId)];
    if (!areGiven(arguments, row.arguments.size())) {
        refused(QStringLiteral("%1 does not take null").arg(row.name));
        return {};
    }
    return row.call(*static_cast<TouchBuilder *>(data), arguments);
}

SharedPtr<Object> GestureClass::getProperty(int propertyId, void *data, const Class *)
{
    if (!data || propertyId < 0 || propertyId >= int(std::size(propertyRows))) {
        return {};
    }
    const auto *builder = static_cast<const TouchBuilder *>(data);
    const int last = builder->numGestures() - 1;
    const double value = last < 0 ? 0 : builder->gesture(last).*propertyRows[propertyId].value;
    return Inspector::self()->createPrimitive(value);
}

SharedPtr<Object> GestureClass::construct(int index, const ObjectList &arguments,
                                          const Constructor *constructor)
{
    ObjectList list;
    if (!verifyConstruction(this, arguments, constructor)
        || !checkArguments(constructor->signature(), arguments, &list)) {
        return {};
    }
    NativeArguments native(list);
    return construct(index, native.data());
}

SharedPtr<Object> GestureClass::construct(int index, void **arguments)
{
    if (index != 0 || !areGiven(arguments, numConstructorArguments)) {
        return {};
    }
    const double width = Native<double>::read(arguments[0]);
    const double height = Native<double>::read(arguments[1]);
    const auto unit = TouchBuilder::Unit(Native<int>::read(arguments[2]));
    auto builder = std::make_unique<TouchBuilder>();
    if (!builder->addGesture(width, height, unit)) {
        return {};
    }
    SharedPtr<Object> object = wrap(builder.release(), ObjectAttribute());
    object->setAutoDelete(true);
    return object;
}

void GestureClass::deleteObjectData(void *data, const ObjectAttribute &) const
{
    delete static_cast<TouchBuilder *>(data);
}

bool GestureClass::compare(SharedPtr<Object> a, SharedPtr<Object> b) const
{
    return sameObjects(a, b);
}

// Members that are added late count before there is a table to keep them in, so
// that ids beyond the rows are asked for.

Constructor *GestureClass::createConstructor(int index) const
{
    if (index != 0) {
        return nullptr;
    }
    const Argument width = Native<double>::type(QStringLiteral("width"));
    const Argument height = Native<double>::type(QStringLiteral("height"));
    const Argument unit(QStringLiteral("unit"), primitive(PrimitiveId::Int), ObjectAttribute(),
                        enumerator(0));
    return new Constructor(index, this, Signature(className(), {width, height, unit}));
}

Method *GestureClass::createMethod(int methodId) const
{
    if (methodId < 0 || methodId >= int(methodRows().size())) {
        return nullptr;
    }
    const MethodRow &row = methodRows()[std::size_t(methodId)];
    return new Method(methodId, this, row.result, Signature(row.name, row.arguments));
}

Property *GestureClass::createProperty(int propertyId) const
{
    if (propertyId < 0 || propertyId >= int(std::size(propertyRows))) {
        return nullptr;
    }
    return new Property(propertyId, this, Argument(primitive(PrimitiveId::Double)),
                        QString::fromLatin1(propertyRows[propertyId].name),
                        PropertyDeclaration::Readable);
}

Enum *GestureClass::createEnum(int enumId) const
{
    return enumId == 0 ? new Enum(enumId, this, QStringLiteral("Unit"), unitItems) : nullptr;
}

} // namespace Vantrel
