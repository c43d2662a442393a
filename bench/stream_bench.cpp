#include "objectmodel/class.h"
#include "objectmodel/inspector.h"
#include "objectmodel/remote.h"

#include <benchmark/benchmark.h>

#include <QDataStream>

#include <vector>

using namespace Vantrel;

namespace {

constexpr int methodCount = 100;
constexpr int argumentCount = 3; // of each method

/** 100 methods with 300 arguments altogether. */
class WideClass : public Class
{
public:
    WideClass() : Class("StreamBench_Wide", true) { setNumMethods(methodCount); }

private:
    Method *createMethod(int methodId) const override
    {
        Signature signature(QStringLiteral("method%1").arg(methodId));
        for (int i = 0; i < argumentCount; ++i) {
            signature.addArgument(
                Argument(QStringLiteral("argument%1").arg(i), Inspector::self()->type(1)));
        }
        return new Method(methodId, this, Argument(Inspector::self()->type(1)), signature);
    }
};

// One field after the other, as a program without record helpers would do it.

struct PlainArgument
{
    QString name, className, enumClassName, enumName;
    qint32 nameSpaceId, flags, arrayLength;
};

void writePlain(QDataStream &out, const Argument &a)
{
    out << a.name() << a.type()->className() << qint32(0) << a.attribute().getFlags()
        << a.attribute().arrayLength() << QString(QLatin1String("")) << QString(QLatin1String(""));
}

void readPlain(QDataStream &in, PlainArgument &a)
{
    in >> a.name >> a.className >> a.nameSpaceId >> a.flags >> a.arrayLength >> a.enumClassName
        >> a.enumName;
}

void writePlain(QDataStream &out, const Class *c)
{
    out << qint32(c->id()) << c->className() << qint32(0) << qint32(c->natures())
        << QString(QLatin1String("")) << qint32(0) << qint32(-1) << qint32(methodCount)
        << qint32(-1) << qint32(0) << qint32(-1);
    for (int i = 0; i < methodCount; ++i) {
        const Method *m = c->method(i);
        out << m->name() << c->className() << qint32(m->signature().numArguments());
        for (const Argument &argument : m->signature().arguments()) {
            writePlain(out, argument);
        }
        out << qint32(m->id()) << qint32(m->isStatic());
        writePlain(out, m->returnType());
        out << m->deprecationMessage();
    }
    out << qint32(0);
}

struct PlainMethod
{
    QString name, className, deprecationMessage;
    std::vector<PlainArgument> arguments;
    qint32 id, isStatic;
    PlainArgument returnType;
};

struct PlainClass
{
    QString name, superName;
    qint32 numbers[9];
    std::vector<PlainMethod> methods;
    qint32 numInterfaces;
};

void readPlain(QDataStream &in, PlainClass &c)
{
    in >> c.numbers[0] >> c.name >> c.numbers[1] >> c.numbers[2] >> c.superName;
    for (int i = 3; i < 9; ++i) {
        in >> c.numbers[i];
    }
    c.methods.resize(std::size_t(c.numbers[5]));
    for (PlainMethod &m : c.methods) {
        qint32 count = 0;
        in >> m.name >> m.className >> count;
        m.arguments.resize(std::size_t(count));
        for (PlainArgument &a : m.arguments) {
            readPlain(in, a);
        }
        in >> m.id >> m.isStatic;
        readPlain(in, m.returnType);
        in >> m.deprecationMessage;
    }
    in >> c.numInterfaces;
}

const Class *wideClass()
{
    static const Class *const c = new WideClass;
    return c;
}

template <class Write>
QByteArray written(Write write)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream.setVersion(QDataStream::Qt_5_15);
    write(stream);
    return bytes;
}

void reportBytes(benchmark::State &state, const QByteArray &bytes)
{
    state.SetBytesProcessed(state.iterations() * bytes.size());
}

void writeDescription(benchmark::State &state)
{
    const Class *c = wideClass();
    QByteArray bytes;
    for (auto _ : state) {
        bytes = written([c](QDataStream &stream) { c->writeObject(stream); });
        benchmark::DoNotOptimize(bytes);
    }
    if (bytes != written([c](QDataStream &stream) { writePlain(stream, c); })) {
        state.SkipWithError("the bytes differ");
    }
    reportBytes(state, bytes);
}
BENCHMARK(writeDescription);

void writeFields(benchmark::State &state)
{
    const Class *c = wideClass();
    QByteArray bytes;
    for (auto _ : state) {
        bytes = written([c](QDataStream &stream) { writePlain(stream, c); });
        benchmark::DoNotOptimize(bytes);
    }
    reportBytes(state, bytes);
}
BENCHMARK(writeFields);

void readDescription(benchmark::State &state)
{
    const QByteArray bytes = written([](QDataStream &stream) { wideClass()->writeObject(stream); });
    for (auto _ : state) {
        QDataStream stream(bytes);
        RemoteClass c(1, nullptr);
        c.readObject(stream);
        benchmark::ClobberMemory();
    }
    reportBytes(state, bytes);
}
BENCHMARK(readDescription);

void readFields(benchmark::State &state)
{
    const QByteArray bytes = written([](QDataStream &stream) { wideClass()->writeObject(stream); });
    for (auto _ : state) {
        QDataStream stream(bytes);
        PlainClass c;
        readPlain(stream, c);
        benchmark::DoNotOptimize(c);
    }
    reportBytes(state, bytes);
}
BENCHMARK(readFields);

} // namespace
