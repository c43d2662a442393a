// A script library that does what its first argument says.

#include "qt/scriptlibrary.h"

#include "objectmodel/inspector.h"
#include "objectmodel/object.h"
#include "qt/treedump.h"
#include "qt/waiting.h"

#include <QCoreApplication>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

using namespace Vantrel;

namespace {

QString valueOf(const UiElement &element, const QString &property)
{
    const auto &properties = element.properties();
    const auto found = std::find_if(properties.begin(), properties.end(),
                                    [&](const auto &pair) { return pair.first == property; });
    return found == properties.end() ? QString() : found->second;
}

struct Count
{
    int elements = 0;
    int lost = 0;
};

/** Whether every object of a dump is found by its name, and has that name and class then. */
void findAgain(const UiElement &element, Count *count)
{
    const QString name = valueOf(element, "realName");
    const auto object = Inspector::self()->findObject(name);
    ++count->elements;
    const bool isFound =
        object && object->qualifiedName() == name && object->className() == element.type;
    if (!isFound) {
        ++count->lost;
        std::printf("lost %s %s (%s)\n", qPrintable(element.type), qPrintable(name),
                    object ? qPrintable(object->className()) : "nothing");
    }
    for (const auto &child : element.children()) {
        findAgain(*child, count);
    }
}

int findAllAgain()
{
    const auto tree = QtWrapper::dumpTree({});
    Count count;
    for (const auto &child : tree->children()) {
        findAgain(*child, &count);
    }
    std::printf("%d of %d objects found again\n", count.elements - count.lost, count.elements);
    std::fflush(stdout);
    return count.lost == 0 && count.elements > 0 ? 0 : 1;
}

} // namespace

int vantrel_main(Inspector *inspector, int argc, char **argv)
{
    const char *mode = argc > 1 ? argv[1] : "";
    if (!std::strcmp(mode, "names")) {
        return findAllAgain();
    }
    if (!std::strcmp(mode, "throw")) {
        throw std::runtime_error("no more ink");
    }
    if (!std::strcmp(mode, "error")) {
        inspector->setError("The printer is on fire");
        return 7;
    }
    if (!std::strcmp(mode, "quit")) {
        QCoreApplication::quit();
        QtWrapper::snooze(100);
        return argc > 2 ? std::atoi(argv[2]) : 0;
    }
    return QtWrapper::waitForObject(QString::fromUtf8(mode)) ? 0 : 9;
}
