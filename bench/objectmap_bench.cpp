#include "objectmodel/objectmap.h"

#include <benchmark/benchmark.h>

#include <QStringList>

using namespace Vantrel;

namespace {

const int numEntries = 100000;

QString realName(int i)
{
    return QString("{container=':Window%1.Page_QWidget' occurrence='%2' text='Item \\'%3\\'' "
                   "type='QPushButton' visible='1'}")
        .arg(QString::number(i % 97), QString::number(i % 7 + 1),
             QString::number((i * 7919LL) % numEntries));
}

/** A map file as the library writes it. */
QString mapText()
{
    ObjectMap map(false);
    for (int i = 0; i < numEntries; ++i) {
        map.add(ObjectName(realName(i)), QString(":Window.Item%1_QPushButton").arg(i));
    }
    return map.toString();
}

/** What loading cannot do without: the lines, the fields and two maps of plain texts. */
void splitAndFill(benchmark::State &state)
{
    const QString text = mapText();
    for (auto _ : state) {
        QMap<QString, QString> realNames;
        QMap<QString, QString> symbolicNames;
        for (const QString &line : text.split('\n')) {
            const int tab = line.indexOf('\t');
            if (tab != -1) {
                const QString symbolicName = line.left(tab);
                const QString real = line.mid(tab + 1);
                symbolicNames.insert(symbolicName, real);
                realNames.insert(real, symbolicName);
            }
        }
        benchmark::DoNotOptimize(realNames);
    }
}
BENCHMARK(splitAndFill)->Unit(benchmark::kMillisecond);

void load(benchmark::State &state)
{
    const QString text = mapText();
    for (auto _ : state) {
        ObjectMap map(false);
        map.loadFromString(text);
        benchmark::DoNotOptimize(map.symbolicNames());
    }
}
BENCHMARK(load)->Unit(benchmark::kMillisecond);

void findSymbol(benchmark::State &state)
{
    ObjectMap map(false);
    map.loadFromString(mapText());
    int i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(map.symbolicName(realName(i++ % numEntries), false));
    }
}
BENCHMARK(findSymbol)->Unit(benchmark::kMicrosecond);

void parseDeepName(benchmark::State &state)
{
    const int depth = int(state.range(0));
    const QString name = QString("{a=").repeated(depth) + "{}" + QString('}').repeated(depth);
    for (auto _ : state) {
        benchmark::DoNotOptimize(parseNameByProperties(name));
    }
    state.SetComplexityN(depth);
}
BENCHMARK(parseDeepName)->Range(1000, 256000)->Complexity()->Unit(benchmark::kMicrosecond);

} // namespace
