#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

// A file of tests/data, made by the scripts there.
inline QByteArray testDataFile(const char *name)
{
    QFile file(QStringLiteral(LUTEGRID_TEST_DATA "/") + QString::fromLatin1(name));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("missing test data %s", name);
    return file.readAll();
}
