#include "qtbenchmarks.h"

#include "objectmodel/inspector.h"
#include "objectmodel/object.h"
#include "qt/wrapper.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QBoxLayout>
#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include <memory>

using namespace Vantrel;

namespace {

constexpr int numGroups = 1000;
const QString lastName = QStringLiteral("button999");

/** 10,000 widgets in a window, in groups of ten. What is searched for is in the last group. */
std::unique_ptr<QWidget> makeTree()
{
    auto window = std::make_unique<QWidget>();
    for (int i = 0; i < numGroups; ++i) {
        auto *group = new QGroupBox(QStringLiteral("Group %1").arg(i), window.get());
        for (int j = 0; j < 3; ++j) {
            new QLabel(QStringLiteral("Label %1").arg(j), group);
            new QLineEdit(group);
        }
        new QCheckBox(QStringLiteral("Check"), group);
        auto *frame = new QFrame(group);
        auto *button = new QPushButton(QStringLiteral("Press %1").arg(i), frame);
        button->setObjectName(QStringLiteral("button%1").arg(i));
    }
    return window;
}

/** What everybody would write: the first object below with these two properties. */
QObject *findByHand(QObject *parent, const char *a, const QString &valueOfA, const char *b,
                    const QString &valueOfB)
{
    for (QObject *child : parent->children()) {
        if (child->property(a).toString() == valueOfA
            && child->property(b).toString() == valueOfB) {
            return child;
        }
        if (QObject *found = findByHand(child, a, valueOfA, b, valueOfB)) {
            return found;
        }
    }
    return nullptr;
}

void byHand(benchmark::State &state, const char *a, const QString &valueOfA, const char *b,
            const QString &valueOfB)
{
    const auto window = makeTree();
    for (auto _ : state) {
        // As a search by name does, this one knows no window.
        QObject *found = nullptr;
        for (QWidget *topLevel : QApplication::topLevelWidgets()) {
            found = found ? found : findByHand(topLevel, a, valueOfA, b, valueOfB);
        }
        if (!found) {
            state.SkipWithError("not found");
        }
    }
}

void byName(benchmark::State &state, const QString &name)
{
    const auto window = makeTree();
    Inspector::self()->enableObjectCache(false);
    for (auto _ : state) {
        if (!Inspector::self()->findObject(name)) {
            state.SkipWithError(qPrintable(Inspector::self()->lastError()));
        }
    }
}

void registerAll()
{
    const auto hand = [](const char *title, auto... arguments) {
        benchmark::RegisterBenchmark(title, byHand, arguments...)->Unit(benchmark::kMicrosecond);
    };
    const auto name = [](const char *title, const QString &text) {
        benchmark::RegisterBenchmark(title, byName, text)->Unit(benchmark::kMicrosecond);
    };
    const QString yes = QStringLiteral("true");
    const QString press = QStringLiteral("Press 999");
    hand("objectName and enabled, by hand", "objectName", lastName, "enabled", yes);
    name("objectName and enabled, by name",
         QStringLiteral("{objectName='button999' enabled='true'}"));
    name("name and type, by name", QStringLiteral("{name='button999' type='QPushButton'}"));
    hand("enabled and text, by hand", "enabled", yes, "text", press);
    name("enabled and text, by name", QStringLiteral("{enabled='true' text='Press 999'}"));
    hand("toolTip and objectName, by hand", "toolTip", QString(), "objectName", lastName);
    name("toolTip and objectName, by name", QStringLiteral("{toolTip='' objectName='button999'}"));
    hand("checkable and text, by hand", "checkable", QStringLiteral("false"), "text", press);
    name("checkable and text, by name", QStringLiteral("{checkable='false' text='Press 999'}"));
    name("text, type and container, by name",
         QStringLiteral("{text='Check' type='QCheckBox' container={text='Group 999'}}"));
}

/** What a tree dump costs for its names: those of all objects at once. */
void nameOfOne(benchmark::State &state)
{
    const auto window = makeTree();
    const SharedPtr<Object> object =
        Inspector::self()->findObject(QStringLiteral("{name='button999' type='QPushButton'}"));
    for (auto _ : state) {
        benchmark::DoNotOptimize(object->qualifiedName());
    }
}
BENCHMARK(nameOfOne)->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char **argv)
{
    return runQtBenchmarks(argc, argv, registerAll);
}
