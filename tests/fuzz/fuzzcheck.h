#pragma once

#include <QtGlobal>

#include <cstdio>
#include <cstdlib>

// A broken promise of a reader: say which and abort, so libFuzzer keeps the input as a crash
// and the replay fails on it.
#define FUZZ_CHECK(condition, promise)                                                         \
    do {                                                                                       \
        if (!(condition)) {                                                                    \
            std::fprintf(stderr, "fuzz: %s (%s failed)\n", promise, #condition);               \
            std::abort();                                                                      \
        }                                                                                      \
    } while (0)

// The readers warn about every bad file they meet; a fuzzer shows them millions.
inline void quietFuzzing()
{
    static const bool quiet = [] {
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
        return true;
    }();
    Q_UNUSED(quiet);
}
