#ifndef QTBENCHMARKS_H
#define QTBENCHMARKS_H

#include "qt/wrapper.h"

#include <QApplication>

#include <benchmark/benchmark.h>

/** What main() of a benchmark of the wrapper does; @p prepare is called in the application. */
inline int runQtBenchmarks(int argc, char **argv, void (*prepare)() = nullptr)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    if (!Vantrel::QtWrapper::install()) {
        return 1;
    }
    if (prepare) {
        prepare();
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}

#endif // QTBENCHMARKS_H
