#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>

#include <utility>
#include <vector>

// Writes a binary property list ("bplist00") from a flat table of objects, in one linear pass.
// Keyed archives of large tabs hold about a million objects, where a general tree writer spends
// most of its time looking up what it has already written; here every object is written once,
// and strings, numbers and references that repeat share one object.
class BinaryPlistWriter {
public:
    using Ref = quint32;

    Ref string(const QString &value);
    Ref integer(qint64 value);
    Ref real(double value);
    // A date as seconds from the start of 2001, UTC.
    Ref date(double seconds);
    Ref boolean(bool value);
    Ref data(const QByteArray &value);
    Ref uid(quint64 value);
    Ref array(const std::vector<Ref> &elements);
    Ref dictionary(const std::vector<std::pair<Ref, Ref>> &entries);

    QByteArray finish(Ref topObject) const;

private:
    enum class Kind : quint8 { Scalar, Array, Dictionary };
    struct Entry {
        Kind kind;
        quint32 start;
        quint32 count;
    };

    Ref addScalar(const QByteArray &encoded);

    std::vector<Entry> entries;
    QByteArray scalarBytes;
    std::vector<Ref> containerRefs;
    QHash<QString, Ref> strings;
    QHash<qint64, Ref> integers;
    std::vector<Ref> uids;
    Ref booleans[2] = {0, 0};
    bool haveBoolean[2] = {false, false};
};
