#include "qt/types_p.h"

#include "qt/metaclass_p.h"
#include "qt/structures_p.h"

#include "objectmodel/class.h"
#include "objectmodel/containers.h"
#include "objectmodel/delegates.h"
#include "objectmodel/inspector.h"
#include "objectmodel/namespace.h"
#include "objectmodel/object.h"
#include "objectmodel/primitiveids.h"

#include <QHash>
#include <QObject>
#include <QVariant>

namespace Vantrel::QtWrapper {

namespace {

const Class *primitive(int id)
{
    return Inspector::self()->type(id);
}

/** The name under which the delegate of all foreign types is registered. */
QString foreignClassName()
{
    return QStringLiteral("Vantrel::ForeignQtType");
}

/** Stands for an argument of a type that cannot cross, until the call is refused. */
class ForeignCast : public CastDelegate
{
public:
    ForeignCast() : CastDelegate(foreignClassName()) {}

    bool canConvertTo(const Class *, bool, bool) const override { return false; }
    SharedPtr<Object> convertTo(SharedPtr<Object>, const Class *, bool) const override
    {
        return {};
    }
    /** Everything converts, so that the call arrives and can tell which type is in its way. */
    bool canConvertFrom(const Class *, bool, bool) const override { return true; }
    SharedPtr<Object> convertFrom(SharedPtr<Object> object, const Class *target,
                                  bool) const override
    {
        void *data = nullptr;
        object->get(&data);
        return SharedPtr<Object>(new Object(data, target, ObjectAttribute()));
    }
};

/**
 * The class of a type that cannot cross. In no namespace and not registered, so
 * that nothing finds it by its name and others can register the real one.
 */
class ForeignClass : public Class
{
public:
    ForeignClass(const QByteArray &name, const Class *superClass)
        : Class(name.constData(), static_cast<Namespace *>(nullptr), false)
    {
        setSuperClass(superClass);
        setNumMethods(0);
        setNumConstructors(0);
        setNumProperties(0);
        setNumEvents(0);
        setNumEnums(0);
    }
};

const Class *foreignClass(const QByteArray &name)
{
    static const auto *const base = [] {
        new ForeignCast;
        return new ForeignClass(foreignClassName().toUtf8(), nullptr);
    }();
    static auto *const classes = new QHash<QByteArray, const Class *>;
    const Class *&found = (*classes)[name];
    if (!found) {
        found = new ForeignClass(name, base);
    }
    return found;
}

/** The meta object in the chain that itself declares the enumerator. */
const QMetaObject *declaring(const QMetaObject *metaObject, int enumIndex)
{
    while (metaObject->enumeratorOffset() > enumIndex) {
        metaObject = metaObject->superClass();
    }
    return metaObject;
}

/** The meta object with a class name that can be meant by a type name used in @p scope. */
const QMetaObject *scopeNamed(const QByteArray &name, const QMetaObject *scope)
{
    if (name == "Qt") {
        return qt_getQtMetaObject();
    }
    for (const QMetaObject *m = scope; m; m = m->superClass()) {
        if (name == m->className()) {
            return m;
        }
    }
    return metaObjectOf(Inspector::self()->type(QString::fromUtf8(name)));
}

bool findEnumerator(const QMetaObject *scope, const QByteArray &name, Type *type)
{
    const int index = scope ? scope->indexOfEnumerator(name.constData()) : -1;
    if (index < 0) {
        return false;
    }
    type->enumScope = declaring(scope, index);
    type->enumerator = scope->enumerator(index);
    return true;
}

/** By the name without its qualification, in what the qualification names. */
void findEnumerator(const QMetaObject *scope, Type *type)
{
    QByteArray name = type->name;
    if (name.startsWith("QFlags<")) {
        name = name.mid(7, name.size() - 8);
    }
    const int separator = name.lastIndexOf("::");
    const QByteArray bare = separator < 0 ? name : name.mid(separator + 2);
    const QMetaObject *named = separator < 0 ? scope : scopeNamed(name.left(separator), scope);
    if (findEnumerator(named, bare, type)) {
        return;
    }
    if (type->metaType != QMetaType::UnknownType) {
        findEnumerator(QMetaType::metaObjectForType(type->metaType), bare, type);
    }
}

bool isEnumeration(int metaType)
{
    if (QMetaType::typeFlags(metaType) & QMetaType::IsEnumeration) {
        return true;
    }
    // Flags are a class to QMetaType, under the name of the class or an alias.
    const QByteArray name = QMetaType::typeName(metaType);
    if (QMetaType::sizeOf(metaType) != sizeof(int)) {
        return false;
    }
    Type type;
    type.name = name;
    type.metaType = metaType;
    findEnumerator(nullptr, &type);
    return type.enumerator.isValid() || name.startsWith("QFlags<");
}

Form formOfUserType(int metaType)
{
    if (isStructure(metaType)) {
        return Form::Structure;
    }
    if (QMetaType::typeFlags(metaType) & QMetaType::PointerToQObject) {
        return Form::Object;
    }
    if (!QMetaType::isRegistered(metaType)) {
        return Form::None;
    }
    if (isEnumeration(metaType)) {
        return Form::Enumeration;
    }
    return metaType >= QMetaType::User && QVariant(metaType, nullptr).canConvert<QVariantList>()
        ? Form::List
        : Form::None;
}

/** Prefers a class with members of its own to one that has only the enums. */
const Enum *descriptorOf(const Type &type)
{
    const QString name = QString::fromUtf8(type.enumerator.name());
    const Class *named = Inspector::self()->type(QString::fromUtf8(type.enumScope->className()));
    const Enum *found = named ? named->enumerator(name) : nullptr;
    return found ? found : classOf(type.enumScope)->enumerator(name);
}

int integerClassId(int metaType)
{
    switch (metaType) {
    case QMetaType::Short:
        return PrimitiveId::Short;
    case QMetaType::SChar:
    case QMetaType::UChar:
    case QMetaType::UShort:
    case QMetaType::Int:
        return PrimitiveId::Int;
    default:
        return PrimitiveId::Int64;
    }
}

} // namespace

Form formOf(int metaType)
{
    switch (metaType) {
    case QMetaType::UnknownType:
        return Form::None;
    case QMetaType::Void:
        return Form::Void;
    case QMetaType::QVariant:
        return Form::Any;
    case QMetaType::Bool:
        return Form::Bool;
    case QMetaType::Char:
        return Form::Character;
    case QMetaType::SChar:
    case QMetaType::UChar:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
        return Form::Integer;
    case QMetaType::Float:
    case QMetaType::Double:
        return Form::Real;
    case QMetaType::QString:
    case QMetaType::QByteArray:
    case QMetaType::QChar:
    case QMetaType::QKeySequence:
    case QMetaType::QUrl:
    case QMetaType::QLocale:
        return Form::Text;
    case QMetaType::QStringList:
        return Form::Texts;
    case QMetaType::QDate:
    case QMetaType::QTime:
    case QMetaType::QDateTime:
        return Form::Date;
    case QMetaType::QVariantList:
        return Form::List;
    case QMetaType::QVariantMap:
    case QMetaType::QVariantHash:
        return Form::Map;
    case QMetaType::QObjectStar:
        return Form::Object;
    default:
        return formOfUserType(metaType);
    }
}

QMetaEnum enumeratorOf(int metaType)
{
    if (metaType < QMetaType::User || !QMetaType::isRegistered(metaType)
        || !isEnumeration(metaType)) {
        return QMetaEnum();
    }
    return Type(QMetaType::typeName(metaType), metaType, nullptr).enumerator;
}

Type::Type(const QByteArray &typeName, int typeId, const QMetaObject *scope)
    : name(typeName), metaType(typeId), form(formOf(typeId))
{
    const bool mayBeEnum = form == Form::None || form == Form::Enumeration
        || (metaType == QMetaType::Int && name != "int");
    if (mayBeEnum) {
        findEnumerator(scope, this);
    }
    if (enumerator.isValid()) {
        form = Form::Enumeration;
    }
}

bool Type::crosses() const
{
    return form != Form::None || pointee();
}

const Class *Type::pointee() const
{
    if (form == Form::Object) {
        const QMetaObject *metaObject = QMetaType::metaObjectForType(metaType);
        return classOf(metaObject ? metaObject : &QObject::staticMetaObject);
    }
    if (form != Form::None || !name.endsWith('*')) {
        return nullptr;
    }
    // Not known to QMetaType, but perhaps such an object was seen.
    const int begin = name.startsWith("const ") ? 6 : 0;
    const Class *c =
        Inspector::self()->type(QString::fromUtf8(name.mid(begin, name.size() - 1 - begin)));
    return Class::isSubClass(c, classOf(&QObject::staticMetaObject)) ? c : nullptr;
}

Argument Type::argument(const QString &argumentName) const
{
    constexpr int textFlags = ObjectAttribute::PointerFlag | ObjectAttribute::Const1Flag;
    constexpr int listFlags = ObjectAttribute::PointerFlag | ObjectAttribute::ArrayFlag;
    switch (form) {
    case Form::Void:
        return Argument(argumentName, primitive(PrimitiveId::Void));
    case Form::Any:
        return Argument::AnyObject(argumentName);
    case Form::Bool:
        return Argument(argumentName, primitive(PrimitiveId::Bool));
    case Form::Character:
        return Argument(argumentName, primitive(PrimitiveId::Char));
    case Form::Integer:
        return Argument(argumentName, primitive(integerClassId(metaType)));
    case Form::Real:
        return Argument(argumentName, primitive(PrimitiveId::Double));
    case Form::Text:
        return Argument(argumentName, primitive(PrimitiveId::Char), textFlags, 0);
    case Form::Texts:
        return Argument(argumentName, primitive(PrimitiveId::Char), listFlags, 0);
    case Form::Enumeration:
        return Argument(argumentName, primitive(PrimitiveId::Int), ObjectAttribute(),
                        enumerator.isValid() ? descriptorOf(*this) : nullptr);
    case Form::Date:
    case Form::Structure:
        return Argument(argumentName, classOfStructure(metaType));
    case Form::List:
        return Argument(argumentName, ArrayClass::registeredClass());
    case Form::Map:
        return Argument(argumentName, MapClass::registeredClass());
    case Form::Object:
    case Form::None:
        break;
    }
    const Class *c = pointee();
    return c ? Argument(argumentName, c, ObjectAttribute::Pointer())
             : Argument(argumentName, foreignClass(name));
}

} // namespace Vantrel::QtWrapper
