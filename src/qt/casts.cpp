#include "qt/casts_p.h"

#include "qt/handles_p.h"
#include "qt/metaclass_p.h"

#include "objectmodel/class.h"
#include "objectmodel/delegates.h"
#include "objectmodel/inspector.h"
#include "objectmodel/object.h"

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

} // namespace

void registerCasts()
{
    // Handles and classes keep what they find, to the end of the process.
    new ObjectCast;
    new ObjectComparison;
}

} // namespace Vantrel::QtWrapper
