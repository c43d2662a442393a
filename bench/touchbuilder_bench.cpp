// Sampling, writing and reading a long gesture of ten fingers, and the text of the same samples
// through a string stream for comparison.

#include "objectmodel/touchbuilder.h"

#include <benchmark/benchmark.h>

#include <sstream>

using namespace Vantrel;

namespace {

constexpr int numFingers = 10;
constexpr int halfDuration = 5000; // milliseconds

void draw(TouchBuilder *builder)
{
    builder->addGesture(1080, 1920, TouchBuilder::Pixel);
    for (int i = 0; i < numFingers; ++i) {
        builder->addStroke(0, 100 + 80 * i, 200.25, 0.5, 0.25);
        builder->curveTo(halfDuration, 300 + i, 1900, 900, 100.7 * i);
        builder->curveTo(halfDuration, 1, 2, 3, 1000, 500, 60 * i);
    }
}

std::string throughStream(const TouchBuilder::MultiTouchInfo &gesture)
{
    static const char *const states[] = {"unknown", "down", "move", "up"};
    std::ostringstream out;
    out.setf(std::ios::fixed);
    out.precision(2);
    out << "<gestures version='1.0'>\n  <multi-point area-width='" << gesture.areaWidth
        << "' area-height='" << gesture.areaHeight << "' unit='px'>\n";
    for (const TouchBuilder::Sample &sample : gesture.samples) {
        out << "    <sample timestamp='" << sample.timestamp << "'>\n";
        for (const TouchBuilder::Point &point : sample.points) {
            out << "      <point pointer='" << point.pointer << "' x='" << point.x << "' y='"
                << point.y << "' pressure='" << point.pressure << "' size='" << point.size
                << "' state='" << states[point.state] << "'/>\n";
        }
        out << "    </sample>\n";
    }
    out << "  </multi-point>\n</gestures>\n";
    return out.str();
}

void sampleAndWrite(benchmark::State &state)
{
    TouchBuilder builder;
    draw(&builder);
    for (auto _ : state) {
        builder.generateSamples(1);
        benchmark::DoNotOptimize(builder.toXml());
    }
}
BENCHMARK(sampleAndWrite)->Unit(benchmark::kMillisecond);

void writeThroughStream(benchmark::State &state)
{
    TouchBuilder builder;
    draw(&builder);
    builder.generateSamples(1);
    if (throughStream(builder.gesture(0)) != builder.toXml()) {
        state.SkipWithError("the texts differ");
        return;
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(throughStream(builder.gesture(0)));
    }
}
BENCHMARK(writeThroughStream)->Unit(benchmark::kMillisecond);

void readBack(benchmark::State &state)
{
    TouchBuilder builder;
    draw(&builder);
    builder.generateSamples(1);
    const std::string text = builder.toXml();
    for (auto _ : state) {
        if (!builder.fromXml(text)) {
            state.SkipWithError("the text cannot be read");
        }
    }
}
BENCHMARK(readBack)->Unit(benchmark::kMillisecond);

} // namespace
