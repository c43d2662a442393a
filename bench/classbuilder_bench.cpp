// What a call and a property cost through the object model, beside Qt's own
// meta-object system in the same process.

#include "objectmodel/class.h"
#include "objectmodel/classbuilder.h"
#include "objectmodel/object.h"
#include "objectmodel/wrap.h"

#include <QMetaMethod>
#include <QObject>
#include <QVariant>

#include <benchmark/benchmark.h>

using namespace Vantrel;

namespace {

class Counter : public QObject
{
    Q_OBJECT
    Q_PROPERTY(int step READ step WRITE setStep)
    Q_PROPERTY(int value READ value WRITE setValue)
    Q_PROPERTY(QString label READ label WRITE setLabel)

public:
    int step() const { return m_step; }
    void setStep(int step) { m_step = step; }
    int value() const { return m_value; }
    void setValue(int value) { m_value = value; }
    QString label() const { return m_label; }
    void setLabel(const QString &label) { m_label = label; }

    Q_INVOKABLE void reset() { m_value = 0; }
    Q_INVOKABLE int add(int amount, int times) { return m_value += amount * times; }
    Q_INVOKABLE void touch(int amount, int times) { m_value += amount * times; }

private:
    int m_step = 1;
    int m_value = 0;
    QString m_label;
};

const Class *counterClass()
{
    static const Class *const c = ClassBuilder<Counter>("BenchCounter")
                                      .method("reset", &Counter::reset)
                                      .method("add", &Counter::add, {"amount", "times"})
                                      .method("touch", &Counter::touch, {"amount", "times"})
                                      .property("step", &Counter::step, &Counter::setStep)
                                      .property("value", &Counter::value, &Counter::setValue)
                                      .property("label", &Counter::label, &Counter::setLabel)
                                      .add();
    return c;
}

struct Subject
{
    Counter counter;
    SharedPtr<Object> object = counterClass()->wrap(&counter, ObjectAttribute::Pointer());
    ObjectList arguments{wrap(3), wrap(2)};
};

void methodOfQt(benchmark::State &state)
{
    Subject s;
    const QMetaObject *meta = s.counter.metaObject();
    const QMetaMethod method = meta->method(meta->indexOfMethod("add(int,int)"));
    for (auto _ : state) {
        int result = 0;
        method.invoke(&s.counter, Q_RETURN_ARG(int, result), Q_ARG(int, 3), Q_ARG(int, 2));
        benchmark::DoNotOptimize(result);
    }
}
BENCHMARK(methodOfQt);

void methodOfVantrel(benchmark::State &state)
{
    Subject s;
    const Method *method = counterClass()->methods(QStringLiteral("add")).at(0);
    for (auto _ : state) {
        benchmark::DoNotOptimize(method->invoke(s.object, s.arguments));
    }
}
BENCHMARK(methodOfVantrel);

void voidMethodOfQt(benchmark::State &state)
{
    Subject s;
    const QMetaObject *meta = s.counter.metaObject();
    const QMetaMethod method = meta->method(meta->indexOfMethod("touch(int,int)"));
    for (auto _ : state) {
        method.invoke(&s.counter, Q_ARG(int, 3), Q_ARG(int, 2));
    }
}
BENCHMARK(voidMethodOfQt);

void voidMethodOfVantrel(benchmark::State &state)
{
    Subject s;
    const Method *method = counterClass()->methods(QStringLiteral("touch")).at(0);
    for (auto _ : state) {
        benchmark::DoNotOptimize(method->invoke(s.object, s.arguments));
    }
}
BENCHMARK(voidMethodOfVantrel);

void callByNameOfQt(benchmark::State &state)
{
    Subject s;
    for (auto _ : state) {
        int result = 0;
        QMetaObject::invokeMethod(&s.counter, "add", Q_RETURN_ARG(int, result), Q_ARG(int, 3),
                                  Q_ARG(int, 2));
        benchmark::DoNotOptimize(result);
    }
}
BENCHMARK(callByNameOfQt);

void callByNameOfVantrel(benchmark::State &state)
{
    Subject s;
    const QString name = QStringLiteral("add");
    for (auto _ : state) {
        benchmark::DoNotOptimize(s.object->type()->methods(name).invoke(
            s.object, s.arguments, static_cast<bool *>(nullptr)));
    }
}
BENCHMARK(callByNameOfVantrel);

void getByNameOfQt(benchmark::State &state)
{
    Subject s;
    for (auto _ : state) {
        benchmark::DoNotOptimize(s.counter.property("value"));
    }
}
BENCHMARK(getByNameOfQt);

void getByNameOfVantrel(benchmark::State &state)
{
    Subject s;
    const QString name = QStringLiteral("value");
    for (auto _ : state) {
        benchmark::DoNotOptimize(s.object->type()->property(name)->get(s.object));
    }
}
BENCHMARK(getByNameOfVantrel);

void setByNameOfQt(benchmark::State &state)
{
    Subject s;
    const QVariant value(7);
    for (auto _ : state) {
        benchmark::DoNotOptimize(s.counter.setProperty("value", value));
    }
}
BENCHMARK(setByNameOfQt);

void setByNameOfVantrel(benchmark::State &state)
{
    Subject s;
    const QString name = QStringLiteral("value");
    const SharedPtr<Object> value = wrap(7);
    for (auto _ : state) {
        benchmark::DoNotOptimize(s.object->type()->property(name)->set(s.object, value));
    }
}
BENCHMARK(setByNameOfVantrel);

void textByNameOfQt(benchmark::State &state)
{
    Subject s;
    s.counter.setLabel(QStringLiteral("a label of usual length"));
    for (auto _ : state) {
        benchmark::DoNotOptimize(s.counter.property("label"));
    }
}
BENCHMARK(textByNameOfQt);

void textByNameOfVantrel(benchmark::State &state)
{
    Subject s;
    s.counter.setLabel(QStringLiteral("a label of usual length"));
    const QString name = QStringLiteral("label");
    for (auto _ : state) {
        benchmark::DoNotOptimize(s.object->type()->property(name)->get(s.object));
    }
}
BENCHMARK(textByNameOfVantrel);

} // namespace

#include "classbuilder_bench.moc"

BENCHMARK_MAIN();
