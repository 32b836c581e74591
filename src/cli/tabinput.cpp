#include "tabinput.h"

#include "model/tabfileformat.h"

#include <QFile>

#include <algorithm>

namespace {

QString tooLarge(const QString &path)
{
    return path + u": too large to be a tab (over %1 MB)"_qs.arg(maximumTabFileBytes >> 20);
}

} // namespace

std::optional<QByteArray> readTabInput(const QString &path, QString *error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = path + u": " + file.errorString();
        return std::nullopt;
    }
    if (!file.isSequential() && file.size() > maximumTabFileBytes) {
        *error = tooLarge(path);
        return std::nullopt;
    }
    // A pipe or device tells no size: read in pieces, and stop one byte past the limit.
    QByteArray bytes;
    if (!file.isSequential())
        bytes.reserve(qsizetype(file.size()) + 1);
    constexpr qsizetype piece = 1 << 20;
    while (bytes.size() <= maximumTabFileBytes) {
        const qsizetype at = bytes.size();
        const qsizetype want = std::min(piece, maximumTabFileBytes + 1 - at);
        if (bytes.capacity() < at + want)
            bytes.reserve(std::max(2 * bytes.capacity(), at + want));
        bytes.resize(at + want);
        const qint64 got = file.read(bytes.data() + at, want);
        if (got < 0) {
            *error = path + u": " + file.errorString();
            return std::nullopt;
        }
        bytes.resize(at + qsizetype(got));
        if (got == 0)
            break;
    }
    if (bytes.size() > maximumTabFileBytes) {
        *error = tooLarge(path);
        return std::nullopt;
    }
    return bytes;
}
