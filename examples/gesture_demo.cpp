// Builds the gesture of two fingers that turn and pinch, and writes it as XML
// and as a picture: gesture_demo DIRECTORY. Everything goes by reflection, as a
// script would do it.

#include "objectmodel/class.h"
#include "objectmodel/inspector.h"
#include "objectmodel/object.h"

#include <QFile>

#include <cstdio>

using namespace Vantrel;

namespace {

SharedPtr<Object> call(const SharedPtr<Object> &object, const char *name,
                       const ObjectList &arguments)
{
    const MethodList methods = object->type()->methods(QString::fromUtf8(name));
    SharedPtr<Object> result;
    if (!methods.invoke(object, arguments, &result)) {
        std::fprintf(stderr, "%s: %s\n", name, qUtf8Printable(Inspector::self()->lastError()));
        for (const QString &line : methods.explain(arguments)) {
            std::fprintf(stderr, "  %s\n", qUtf8Printable(line));
        }
    }
    return result;
}

bool save(const SharedPtr<Object> &text, const QString &fileName)
{
    QFile file(fileName);
    if (!text || !file.open(QIODevice::WriteOnly) || file.write(text->toString().toUtf8()) < 0) {
        std::fprintf(stderr, "cannot write %s\n", qUtf8Printable(fileName));
        return false;
    }
    std::printf("  wrote %s, %lld bytes\n", qUtf8Printable(fileName), file.size());
    return true;
}

template <class... Values>
ObjectList list(Values... values)
{
    ObjectList result;
    (result << ... << Inspector::self()->createPrimitive(values));
    return result;
}

} // namespace

int main(int argc, char *argv[])
{
    const QString directory = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral(".");
    const Class *builder = Inspector::self()->type(QStringLiteral("GestureBuilder"));
    const SharedPtr<Object> gesture = builder->construct(list(90.0, 160.0, "MilliMeter"));
    if (!gesture) {
        return 1;
    }
    std::printf("Two fingers turn by 135 degrees and come closer, in %d x %d mm:\n",
                builder->property(QStringLiteral("areaWidth"))->get(gesture)->toInteger(),
                builder->property(QStringLiteral("areaHeight"))->get(gesture)->toInteger());
    const bool isBuilt = call(gesture, "rotateBy", list(45.0, 80.0, 35.0, 12.0, 135.0, 600, 2))
        && call(gesture, "build", ObjectList());
    return isBuilt && save(call(gesture, "toSvg", {}), directory + QStringLiteral("/gesture.svg"))
            && save(call(gesture, "toXml", {}), directory + QStringLiteral("/gesture.xml"))
        ? 0
        : 1;
}
