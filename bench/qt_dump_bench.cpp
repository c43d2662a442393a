// What a dump costs beside reading the same properties without it, in one process.
#include "qtbenchmarks.h"

#include "objectmodel/inspector.h"
#include "objectmodel/object.h"

#include "qt/treedump.h"
#include "qt/wrapper.h"

#include <QApplication>
#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMetaProperty>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

#include <benchmark/benchmark.h>

using namespace Vantrel;

namespace {

/** Adds @p number widgets in groups of ten: what forms are made of. */
void fill(QWidget *window, int number)
{
    auto *layout = new QVBoxLayout(window);
    QVBoxLayout *group = nullptr;
    for (int i = 0; i < number; ++i) {
        const QString text = QStringLiteral("Widget %1").arg(i);
        QWidget *widget = nullptr;
        switch (i % 10) {
        case 0: {
            auto *box = new QGroupBox(text);
            group = new QVBoxLayout(box);
            layout->addWidget(box);
            continue;
        }
        case 1:
        case 4:
            widget = new QPushButton(text);
            break;
        case 2:
        case 5:
        case 8:
            widget = new QLineEdit(text);
            break;
        case 3:
        case 6:
            widget = new QLabel(text);
            break;
        default:
            widget = new QCheckBox(text);
        }
        if (i % 3 != 0) {
            widget->setObjectName(QStringLiteral("widget%1").arg(i));
        }
        group->addWidget(widget);
    }
}

/** A form with that many widgets, as the only window. */
class Form
{
public:
    explicit Form(int numWidgets)
    {
        window.setObjectName(QStringLiteral("form"));
        fill(&window, numWidgets - 1);
        window.show();
        QApplication::processEvents();
        handle = Inspector::self()->findObject(QStringLiteral("{name='form'}"));
    }

    QWidget window;
    SharedPtr<Object> handle;
};

/** The properties alone, as variants, by hand. */
void readByHand(benchmark::State &state)
{
    const Form form(int(state.range(0)));
    QWidgetList widgets = form.window.findChildren<QWidget *>();
    int number = 0;
    for (auto _ : state) {
        number = 0;
        for (const QWidget *widget : qAsConst(widgets)) {
            const QMetaObject *metaObject = widget->metaObject();
            for (int i = 0; i < metaObject->propertyCount(); ++i) {
                benchmark::DoNotOptimize(metaObject->property(i).read(widget));
                ++number;
            }
        }
    }
    state.counters["widgets"] = widgets.size() + 1;
    state.counters["properties"] = number;
}

void dumpObjects(benchmark::State &state, bool withProperties)
{
    const Form form(int(state.range(0)));
    QtWrapper::DumpOptions options;
    options.withProperties = withProperties;
    for (auto _ : state) {
        benchmark::DoNotOptimize(QtWrapper::dumpTree(form.handle, options));
    }
}

void dumpNames(benchmark::State &state)
{
    dumpObjects(state, false);
}

void dumpAll(benchmark::State &state)
{
    dumpObjects(state, true);
}

template <QByteArray (*write)(const UiElement &)>
void dumpAndWrite(benchmark::State &state)
{
    const Form form(int(state.range(0)));
    QByteArray text;
    for (auto _ : state) {
        text = write(*QtWrapper::dumpTree(form.handle));
    }
    state.counters["bytes"] = text.size();
}

void picture(benchmark::State &state)
{
    const Form form(int(state.range(0)));
    for (auto _ : state) {
        benchmark::DoNotOptimize(QtWrapper::annotatedPicture(form.handle));
    }
}

BENCHMARK(readByHand)->Arg(100)->Arg(1000)->Unit(benchmark::kMillisecond);
BENCHMARK(dumpNames)->Arg(100)->Arg(1000)->Unit(benchmark::kMillisecond);
BENCHMARK(dumpAll)->Arg(100)->Arg(1000)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(dumpAndWrite, QtWrapper::toXml)->Arg(100)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(dumpAndWrite, QtWrapper::toJson)->Arg(100)->Unit(benchmark::kMillisecond);
BENCHMARK(picture)->Arg(100)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    return runQtBenchmarks(argc, argv);
}
