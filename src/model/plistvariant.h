#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QVariant>
#include <QVariantMap>

#include <optional>

// Property lists as QVariant, for stores that other programs and machines write: every input
// is treated as hostile, so reading never crashes or runs away on any bytes.
namespace PlistVariant {

// Deepest nesting of arrays and dictionaries that is read or written.
inline constexpr int maximumDepth = 64;
// Files larger than this are not read at all.
inline constexpr qsizetype maximumFileBytes = 16 * 1024 * 1024;

// The value as it reads back from a file (qint64 for every integer, double for every real,
// QVariantList for every list, QVariantMap for every map), or nothing if it is made of more than
// property-list types (QString, QByteArray, integers, reals, bool, QDateTime, lists and
// string-keyed maps) or nests deeper than the limit.
std::optional<QVariant> normalized(const QVariant &value);

// A binary property list of the dictionary, or nothing if a value is of no property-list
// type. Integers are stored as their 64-bit pattern, so negative numbers come back intact.
std::optional<QByteArray> binaryData(const QVariantMap &dictionary);

// How large the tree that a parser builds from a file may grow. The parser copies an object
// for every reference to it, so a small file that shares objects cleverly could otherwise
// expand into billions of nodes.
struct GraphLimits {
    int depth = maximumDepth;
    quint64 expandedNodes = 1'000'000;
    quint64 expandedPayloadBytes = 64 * 1024 * 1024;
};

// Checks the object graph of a binary property list before it is parsed: references in
// range, no cycles, dictionary keys the parser can hold, nesting and expansion within the
// limits.
bool isSafeBinaryPlist(QByteArrayView bytes, const GraphLimits &limits = GraphLimits());

// The dictionary at the root of a binary property list, or nothing if the bytes are no binary
// property list, the root is no dictionary, or the structure is deeper or expands larger than
// the limits. Entries of types that have no QVariant form (UIDs) are left out, and so are dates
// that no property list of ours can hold (not finite, or past 32-bit seconds).
std::optional<QVariantMap> dictionaryFromData(QByteArrayView bytes,
                                              const GraphLimits &limits = GraphLimits());

} // namespace PlistVariant
