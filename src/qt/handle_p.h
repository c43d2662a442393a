#ifndef VANTREL_QT_HANDLE_P_H
#define VANTREL_QT_HANDLE_P_H

#include "objectmodel/object.h"

#include <QObject>
#include <QPointer>

#include <memory>
#include <vector>

namespace Vantrel::QtWrapper {

struct HandleRecord;

/** The handle of a QObject. It ends, by being invalidated, with the QObject. */
class Handle : public Object
{
public:
    /** A null @p record makes a null object. */
    Handle(HandleRecord *record, const Class *c, const ObjectAttribute &attribute);
    ~Handle() override;

    bool isNull() const override;
    /** Only to a class that the QObject has. */
    SharedPtr<Object> castTo(const Class *target) override;

    /** Null for a null or invalidated handle, and from the moment the QObject is being destroyed.
     */
    QObject *object() const;
    /** For the registry: the QObject is gone. */
    void end();
    /** False for one that was made to see the QObject as a value instead of a pointer. */
    bool isCanonical() const { return m_isCanonical; }

    /** Null when @p object is not a Handle. */
    static Handle *of(const SharedPtr<Object> &object);

    /** Something that listens to a signal for this handle, and ends with it. */
    struct Listener
    {
        QString event;
        std::unique_ptr<QObject> receiver;
    };
    std::vector<Listener> listeners;

private:
    HandleRecord *m_record;
    const bool m_isCanonical;
};

/** A new handle of a class that is that of @p object or one of its super classes. */
SharedPtr<Object> newHandle(QObject *object, const Class *c, const ObjectAttribute &attribute);

} // namespace Vantrel::QtWrapper

#endif // VANTREL_QT_HANDLE_P_H
