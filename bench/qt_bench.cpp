#include "qtbenchmarks.h"

#include "qt/wrapper.h"

#include "objectmodel/class.h"
#include "objectmodel/object.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QPushButton>

using namespace Vantrel;

// Reading a property by name: of Qt itself, and through a handle. A text of
// the class next to the last is what Qt finds fastest.

namespace {

struct Subject
{
    Subject() { button.setWindowTitle(QStringLiteral("Save as...")); }
    QPushButton button{QStringLiteral("Save as...")};
    SharedPtr<Object> handle = QtWrapper::handleFor(&button);
};

Subject &subject()
{
    static Subject subject;
    return subject;
}

void textByQt(benchmark::State &state)
{
    QObject *object = &subject().button;
    for (auto _ : state) {
        benchmark::DoNotOptimize(object->property("text").toString());
    }
}
BENCHMARK(textByQt);

void textByHandle(benchmark::State &state)
{
    const SharedPtr<Object> handle = subject().handle;
    const QString name = QStringLiteral("text");
    for (auto _ : state) {
        benchmark::DoNotOptimize(handle->type()->property(name)->get(handle)->toString());
    }
}
BENCHMARK(textByHandle);

void titleByQt(benchmark::State &state)
{
    QObject *object = &subject().button;
    for (auto _ : state) {
        benchmark::DoNotOptimize(object->property("windowTitle").toString());
    }
}
BENCHMARK(titleByQt);

void titleByHandle(benchmark::State &state)
{
    const SharedPtr<Object> handle = subject().handle;
    const QString name = QStringLiteral("windowTitle");
    for (auto _ : state) {
        benchmark::DoNotOptimize(handle->type()->property(name)->get(handle)->toString());
    }
}
BENCHMARK(titleByHandle);

void numberByQt(benchmark::State &state)
{
    QObject *object = &subject().button;
    for (auto _ : state) {
        benchmark::DoNotOptimize(object->property("width").toInt());
    }
}
BENCHMARK(numberByQt);

void numberByHandle(benchmark::State &state)
{
    const SharedPtr<Object> handle = subject().handle;
    const QString name = QStringLiteral("width");
    for (auto _ : state) {
        benchmark::DoNotOptimize(handle->type()->property(name)->get(handle)->toInteger());
    }
}
BENCHMARK(numberByHandle);

void truthByQt(benchmark::State &state)
{
    QObject *object = &subject().button;
    for (auto _ : state) {
        benchmark::DoNotOptimize(object->property("enabled").toBool());
    }
}
BENCHMARK(truthByQt);

void truthByHandle(benchmark::State &state)
{
    const SharedPtr<Object> handle = subject().handle;
    const QString name = QStringLiteral("enabled");
    for (auto _ : state) {
        benchmark::DoNotOptimize(handle->type()->property(name)->get(handle)->toBoolean());
    }
}
BENCHMARK(truthByHandle);

void handleOfNewObject(benchmark::State &state)
{
    QPushButton button;
    for (auto _ : state) {
        benchmark::DoNotOptimize(QtWrapper::handleFor(&button));
    }
}
BENCHMARK(handleOfNewObject);

void handleOfKnownObject(benchmark::State &state)
{
    QObject *object = &subject().button;
    for (auto _ : state) {
        benchmark::DoNotOptimize(QtWrapper::handleFor(object));
    }
}
BENCHMARK(handleOfKnownObject);

} // namespace

int main(int argc, char **argv)
{
    return runQtBenchmarks(argc, argv);
}
