// Containers of script values next to the plain copy of the same vector.

#include "objectmodel/class.h"
#include "objectmodel/containerclasses.h"
#include "objectmodel/containers.h"
#include "objectmodel/inspector.h"
#include "objectmodel/object.h"

#include <benchmark/benchmark.h>

using namespace Vantrel;

namespace {

using Array = std::vector<SharedPtr<Object>>;

constexpr int numItems = 100000;

const Array &items()
{
    static const Array list = [] {
        registerContainerClasses();
        Array numbers;
        for (int i = 0; i < numItems; ++i) {
            numbers.push_back(Inspector::self()->createPrimitive(i));
        }
        return numbers;
    }();
    return list;
}

void copyPlainVector(benchmark::State &state)
{
    items();
    for (auto _ : state) {
        Array copy(items());
        benchmark::DoNotOptimize(copy.data());
    }
}
BENCHMARK(copyPlainVector);

void wrapArray(benchmark::State &state)
{
    items();
    for (auto _ : state) {
        benchmark::DoNotOptimize(ArrayClass::wrapObject(items()));
    }
}
BENCHMARK(wrapArray);

void unwrapArray(benchmark::State &state)
{
    items();
    const SharedPtr<Object> array = ArrayClass::wrapObject(items());
    for (auto _ : state) {
        benchmark::DoNotOptimize(ArrayClass::unwrapObject(array));
    }
}
BENCHMARK(unwrapArray);

/** One handle for each int, which is what making the items costs. */
void createInts(benchmark::State &state)
{
    items();
    for (auto _ : state) {
        Array list;
        list.reserve(numItems);
        for (int i = 0; i < numItems; ++i) {
            list.push_back(Inspector::self()->createPrimitive(i));
        }
        benchmark::DoNotOptimize(list.data());
    }
}
BENCHMARK(createInts);

/** The members of the class, called in the same process. */
void throughMembers(benchmark::State &state)
{
    items();
    for (auto _ : state) {
        const SharedPtr<Object> array = ArrayClass::createRemoteObject(items());
        benchmark::DoNotOptimize(ArrayClass::unwrapRemoteObject(array));
    }
}
BENCHMARK(throughMembers)->Unit(benchmark::kMillisecond);

} // namespace
