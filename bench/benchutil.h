#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <functional>

// Every benchmark runs in a fresh LUTEGRID_HOME, away from a user's tabs and settings.
struct BenchEnvironment {
    BenchEnvironment(int &argc, char **argv)
    {
        qputenv("LUTEGRID_HOME", home.path().toLocal8Bit());
        app = std::make_unique<QCoreApplication>(argc, argv);
    }
    QTemporaryDir home;
    std::unique_ptr<QCoreApplication> app;
};

// The best of a few runs, in milliseconds: the figure least disturbed by the rest of the machine.
inline double bestOf(const std::function<void()> &work, int runs = 5)
{
    double best = 1e300;
    for (int i = 0; i < runs; ++i) {
        QElapsedTimer timer;
        timer.start();
        work();
        best = std::min(best, double(timer.nsecsElapsed()) / 1e6);
    }
    return best;
}

inline void printFigure(const char *what, double value, const char *unit)
{
    std::printf("%-34s %12.3f %s\n", what, value, unit);
    std::fflush(stdout);
}
