#pragma once

#include <QCoreApplication>
#include <QTemporaryDir>
#include <QTest>

// Every test runs in a fresh LUTEGRID_HOME, set before anything asks for a path.
#define LUTEGRID_TEST_MAIN(TestObject)                                                             \
    int main(int argc, char *argv[])                                                               \
    {                                                                                              \
        QTemporaryDir home;                                                                        \
        qputenv("LUTEGRID_HOME", home.path().toLocal8Bit());                                       \
        QCoreApplication app(argc, argv);                                                          \
        TestObject test;                                                                           \
        return QTest::qExec(&test, argc, argv);                                                    \
    }
