// A toolkit author's program, built against the installed package alone: one
// class with one method, registered, found by its name and called.

#include "objectmodel/class.h"
#include "objectmodel/inspector.h"
#include "objectmodel/object.h"

#include <cstdio>

using namespace Vantrel;

namespace {

struct Lamp
{
    int brightness = 3;
};

class LampClass : public Class
{
public:
    LampClass() : Class("Consumer_Lamp", true) { setNumMethods(1); }

    SharedPtr<Object> invoke(int, void *data, void **arguments, const Class *) override
    {
        auto *lamp = static_cast<Lamp *>(data);
        lamp->brightness += *static_cast<int *>(arguments[0]);
        return Inspector::self()->createPrimitive(lamp->brightness);
    }

private:
    Method *createMethod(int methodId) const override
    {
        const Class *integer = Inspector::self()->type(QStringLiteral("int"));
        Signature signature(QStringLiteral("brighten"));
        signature.addArgument(Argument(QStringLiteral("steps"), integer));
        return new Method(methodId, this, Argument(integer), signature);
    }
};

} // namespace

int main()
{
    new LampClass; // the Inspector keeps it for the life of the process
    Inspector *inspector = Inspector::self();
    const Class *lampClass = inspector->type(QStringLiteral("Consumer_Lamp"));
    if (!lampClass) {
        std::puts("the registered class is not found by its name");
        return 1;
    }

    Lamp lamp;
    SharedPtr<Object> handle = lampClass->wrap(&lamp, ObjectAttribute());
    bool ok = false;
    const SharedPtr<Object> result = lampClass->methods(QStringLiteral("brighten"))
                                         .invoke(handle, {inspector->createPrimitive(4)}, &ok);
    if (!ok || result.isNull() || result->toInteger() != 7 || lamp.brightness != 7) {
        std::printf("the call failed: %s\n", qPrintable(inspector->lastError()));
        return 1;
    }
    std::printf("%s: brightness %d\n", qPrintable(handle->className()), result->toInteger());
    return 0;
}
