#ifndef VANTREL_EVENTHANDLERS_H
#define VANTREL_EVENTHANDLERS_H

#include "objectmodel/export.h"
#include "objectmodel/shared.h"

#include <QtGlobal>

class QString;

namespace Vantrel {

class Object;
class ObjectList;

/**
 * Hears of events: of one object, of all objects of a class, or of all. It is
 * installed with the Inspector, which does not own it, and uninstalls itself
 * everywhere when it is destroyed.
 */
class VANTREL_EXPORT EventHandler
{
public:
    EventHandler();
    virtual ~EventHandler();

    /**
     * Called by Inspector::dispatchEvent(). It may install and uninstall
     * handlers, this one too, destroy or invalidate @p object, and dispatch
     * events itself. @p object is null for an event that belongs to none, and
     * invalidated when an earlier handler did so.
     */
    virtual void handleEvent(SharedPtr<Object> object, const QString &event,
                             const ObjectList &arguments) = 0;

private:
    Q_DISABLE_COPY(EventHandler)
};

} // namespace Vantrel

#endif // VANTREL_EVENTHANDLERS_H
