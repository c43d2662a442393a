// What values, calls and properties cost through the object model, beside other
// ways to the same end, measured in one process: a table of ratios of medians.
// The exit code is 1 when a gate does not hold.

#include "objectmodel/class.h"
#include "objectmodel/classbuilder.h"
#include "objectmodel/inspector.h"
#include "objectmodel/object.h"
#include "objectmodel/wrap.h"

#include <QElapsedTimer>
#include <QMetaMethod>
#include <QObject>
#include <QVariant>

#ifdef VANTREL_WITH_RTTR
#include <rttr/type>
// Only the registration names what it declares in this way.
#include <rttr/registration>
#endif

#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

using namespace Vantrel;

namespace {

constexpr int numRepetitions = 9;
constexpr qint64 repetitionTime = 20'000'000; // ns

/** Keeps the compiler from leaving out what nobody uses. */
template <class T>
void use(const T &value)
{
    asm volatile("" : : "g"(&value) : "memory");
}

class Counter : public QObject
{
    Q_OBJECT
    Q_PROPERTY(int value READ value WRITE setValue)
    Q_PROPERTY(QString label READ label WRITE setLabel)

public:
    int value() const { return m_value; }
    void setValue(int value) { m_value = value; }
    QString label() const { return m_label; }
    void setLabel(const QString &label) { m_label = label; }
    Q_INVOKABLE int add(int amount, int times) { return m_value += amount * times; }

private:
    int m_value = 0;
    QString m_label = QStringLiteral("a label of usual length");
};

const Class *counterClass()
{
    static const Class *const c = ClassBuilder<Counter>("BenchCounter")
                                      .method("add", &Counter::add, {"amount", "times"})
                                      .property("value", &Counter::value, &Counter::setValue)
                                      .property("label", &Counter::label, &Counter::setLabel)
                                      .add();
    return c;
}

/** One run of something measured, @p count times. */
using Work = std::function<void(int count)>;

/** @p once is inlined in the loop, so that only it is measured. */
template <class Once>
Work repeated(Once once)
{
    return [once](int count) {
        for (int i = 0; i < count; ++i) {
            once();
        }
    };
}

struct Row
{
    const char *figure;
    double gate;
    double aim;
    Work ours;
    Work peer;
};

qint64 timed(const Work &work, int count)
{
    QElapsedTimer timer;
    timer.start();
    work(count);
    return timer.nsecsElapsed();
}

/** How often @p work has to run for a repetition. */
int calibrated(const Work &work)
{
    int count = 16;
    while (timed(work, count) < repetitionTime / 4) {
        count *= 2;
    }
    return count * 4;
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

/** Both in turn, so that what else the machine does falls on both. @return whether the gate holds.
 */
bool report(const Row &row)
{
    const int ourCount = calibrated(row.ours);
    const int peerCount = calibrated(row.peer);
    std::vector<double> ours;
    std::vector<double> peers;
    for (int i = 0; i < numRepetitions; ++i) {
        ours.push_back(double(timed(row.ours, ourCount)) / ourCount);
        peers.push_back(double(timed(row.peer, peerCount)) / peerCount);
    }
    const double ratio = median(ours) / median(peers);
    const bool holds = ratio <= row.gate;
    std::printf("%-52s %8.1f %8.1f %7.2f %6.2f %6.2f  %s\n", row.figure, median(ours),
                median(peers), ratio, row.gate, row.aim,
                !holds                ? "MISSED"
                    : ratio > row.aim ? "gate"
                                      : "aim");
    return holds;
}

struct Block
{
    char bytes[64];
};

#ifdef VANTREL_WITH_RTTR
struct Plain
{
    int add(int amount, int times) { return value += amount * times; }
    int value = 0;
};
#endif

std::vector<Row> rows()
{
    static Counter counter;
    static const SharedPtr<Object> object =
        counterClass()->wrap(&counter, ObjectAttribute::Pointer());
    static const ObjectList arguments{wrap(3), wrap(2)};
    static const QString add = QStringLiteral("add");
    static const QString value = QStringLiteral("value");
    static const SharedPtr<Object> seven = wrap(7);
    static const QVariant sevenOfQt(7);
    static const QString label = QStringLiteral("label");
    static const Method *const known = counterClass()->methods(add).at(0);
    const QMetaObject *meta = counter.metaObject();
    static const QMetaMethod knownOfQt = meta->method(meta->indexOfMethod("add(int,int)"));

    const Work byNameOfQt = repeated([] {
        int result = 0;
        QMetaObject::invokeMethod(&counter, "add", Q_RETURN_ARG(int, result), Q_ARG(int, 3),
                                  Q_ARG(int, 2));
        use(result);
    });
    const Work knownMethod = repeated([] { use(known->invoke(object, arguments)); });
    std::vector<Row> table{
        {"value made and released / new+delete of 64 bytes", 1.5, 0.6,
         repeated([] { use(wrap(7)); }), repeated([] {
             Block *block = new Block;
             use(*block);
             delete block;
         })},
        {"known method int(int,int) / QMetaMethod::invoke", 1.5, 1.0, knownMethod, repeated([] {
             int result = 0;
             knownOfQt.invoke(&counter, Q_RETURN_ARG(int, result), Q_ARG(int, 3), Q_ARG(int, 2));
             use(result);
         })},
        {"by name, arguments ready / QMetaObject::invokeMethod", 0.5, 0.25,
         repeated([] { use(object->type()->methods(add).invoke(object, arguments)); }), byNameOfQt},
        {"by name, fresh arguments / QMetaObject::invokeMethod", 1.0, 0.5, repeated([] {
             use(object->type()->methods(add).invoke(object, ObjectList{wrap(3), wrap(2)}));
         }),
         byNameOfQt},
        {"get int by name / QObject::property", 0.9, 0.75,
         repeated([] { use(object->type()->property(value)->get(object)); }),
         repeated([] { use(counter.property("value")); })},
        {"set int by name / QObject::setProperty", 0.9, 0.5,
         repeated([] { use(object->type()->property(value)->set(object, seven)); }),
         repeated([] { use(counter.setProperty("value", sevenOfQt)); })},
        {"get text by name / QObject::property", 1.0, 0.75,
         repeated([] { use(object->type()->property(label)->get(object)); }),
         repeated([] { use(counter.property("label")); })},
    };
#ifdef VANTREL_WITH_RTTR
    static Plain plain;
    rttr::registration::class_<Plain>("Plain").method("add", &Plain::add);
    static const rttr::type type = rttr::type::get<Plain>();
    table.push_back({"known method / RTTR's by name", 2.0, 1.0, knownMethod, repeated([] {
                         use(type.invoke("add", plain, {3, 2}));
                     })});
#endif
    return table;
}

} // namespace

int main()
{
    std::printf("%-52s %8s %8s %7s %6s %6s\n", "figure", "ns", "peer ns", "ratio", "gate", "aim");
    bool hold = true;
    for (const Row &row : rows()) {
        hold &= report(row);
    }
    const bool isSmall = sizeof(Object) <= 96;
    std::printf("%-52s %8s %8s %7zu %6d %6d  %s\n", "sizeof(Object)", "", "", sizeof(Object), 96,
                80,
                !isSmall                  ? "MISSED"
                    : sizeof(Object) > 80 ? "gate"
                                          : "aim");
    return hold && isSmall ? 0 : 1;
}

#include "compare.moc"
