#include "qt/casts_p.h"

#include "qt/handles_p.h"
#include "qt/metaclass_p.h"
#include "qt/values_p.h"

#include "objectmodel/class.h"
#include "objectmodel/containers.h"
#include "objectmodel/delegates.h"
#include "objectmodel/inspector.h"
#include "objectmodel/object.h"
#include "objectmodel/primitiveids.h"

#include <QObject>

namespace Vantrel::QtWrapper {

namespace {

/**
 * Up and down the classes of QObjects. A class alone does not tell what its
 * objects really are, so what can be tried is refused when it is done.
 */
class ObjectCast : public CastDelegate
{
public:
    ObjectCast() : CastDelegate(QStringLiteral("QObject")) {}

    bool canConvertTo(const Class *target, bool, bool) const override
    {
        return metaObjectOf(target) != nullptr;
    }

    SharedPtr<Object> convertTo(SharedPtr<Object> object, const Class *target, bool) const override
    {
        if (object && object->isValid() && object->isNull()) {
            return target->createNull();
        }
        QObject *o = qobjectOf(object);
        if (!o) {
            return {};
        }
        if (!Class::isSubClass(classOf(o->metaObject()), target)) {
            Inspector::self()->setError(
                QStringLiteral("Cannot cast an object of class %1 to %2")
                    .arg(QString::fromUtf8(o->metaObject()->className()), target->className()));
            return {};
        }
        return handleOf(o, target);
    }

    bool canConvertFrom(const Class *, bool, bool) const override { return false; }
    SharedPtr<Object> convertFrom(SharedPtr<Object>, const Class *, bool) const override
    {
        return {};
    }
};

/** QObjects have no values that could be equal: each equals itself. */
class ObjectComparison : public ComparisonDelegate
{
public:
    ObjectComparison() : ComparisonDelegate(QStringLiteral("QObject")) {}

    bool compare(SharedPtr<Object> a, SharedPtr<Object> b) const override
    {
        return sameObjects(a, b) || (isNullObject(a) && isNullObject(b));
    }
    bool sameObjects(SharedPtr<Object> a, SharedPtr<Object> b) const override
    {
        const QObject *object = qobjectOf(a);
        return object && object == qobjectOf(b);
    }

private:
    static bool isNullObject(const SharedPtr<Object> &object)
    {
        return object && object->isValid() && object->isNull();
    }
};

/**
 * Between arrays and lists of texts, which are different things to the object
 * model and the same to Qt. The class of lists is that of single texts too, so
 * what can be tried is refused here as well when it is done.
 */
class ArrayCast : public CastDelegate
{
public:
    ArrayCast() : CastDelegate(ArrayClass::registeredClass()->className()) {}

    bool canConvertTo(const Class *target, bool, bool targetIsPointer) const override
    {
        return targetIsPointer && target && target->id() == PrimitiveId::Char;
    }
    SharedPtr<Object> convertTo(SharedPtr<Object> object, const Class *, bool) const override
    {
        return converted(object, QMetaType::QStringList);
    }
    bool canConvertFrom(const Class *source, bool sourceIsPointer, bool) const override
    {
        return sourceIsPointer && source && source->id() == PrimitiveId::Char;
    }
    SharedPtr<Object> convertFrom(SharedPtr<Object> object, const Class *, bool) const override
    {
        return converted(object, QMetaType::QVariantList);
    }

private:
    static SharedPtr<Object> converted(const SharedPtr<Object> &object, int metaType)
    {
        QString error;
        const QVariant value = variantOf(object, metaType, QMetaEnum(), &error);
        return error.isEmpty() ? objectOf(value, &error) : SharedPtr<Object>();
    }
};

} // namespace

void registerCasts()
{
    // Handles and classes keep what they find, to the end of the process.
    new ObjectCast;
    new ObjectComparison;
    new ArrayCast;
}

} // namespace Vantrel::QtWrapper
