#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

// The bytes of a tab file, or nothing with one line in `error` that names the file. A file
// past the size either reader takes is refused before it is read whole, and a device without
// end is read only that far.
std::optional<QByteArray> readTabInput(const QString &path, QString *error);
