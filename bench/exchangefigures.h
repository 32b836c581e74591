#pragma once

#include "benchutil.h"

#include "model/exchangereader.h"

#include <QJsonDocument>

#include <vector>

// The median of a few runs, in milliseconds: a fairer figure than the best for a ratio of two
// readers measured while the machine does other work.
inline double medianOf(const std::function<void()> &work, int runs = 9)
{
    std::vector<double> times;
    for (int i = 0; i < runs; ++i) {
        QElapsedTimer timer;
        timer.start();
        work();
        times.push_back(double(timer.nsecsElapsed()) / 1e6);
    }
    std::nth_element(times.begin(), times.begin() + runs / 2, times.end());
    return times[size_t(runs / 2)];
}

// The exchange reader straight from the bytes, beside the JSON tree reader it replaced and the
// bare QJsonDocument parse of the same bytes.
inline void printExchangeReaderFigures(const TabData &tab)
{
    const QByteArray json = exchangeData(tab).value();
    const double direct = medianOf([&] { tabDataFromExchangeData(json).value(); });
    const double tree = medianOf([&] { ExchangeReader::readTree(json, nullptr, 6).value(); });
    const double parse = medianOf([&] { QJsonDocument::fromJson(json); });
    printFigure("exchange read, median", direct, "ms");
    printFigure("  through the JSON tree, median", tree, "ms");
    printFigure("  QJsonDocument parse, median", parse, "ms");
    printFigure("  direct / QJsonDocument parse", direct / parse, "x");
    printFigure("  tree / QJsonDocument parse", tree / parse, "x");
}
