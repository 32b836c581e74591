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

// The dictionary at the root of a binary property list, or nothing if the bytes are no binary
// property list, the root is no dictionary, or the structure is too deep or too large.
// Entries of types that have no QVariant form (UIDs) are left out.
std::optional<QVariantMap> dictionaryFromData(QByteArrayView bytes);

// Checks the object graph of a binary property list before it is parsed: references in
// range, no cycles, nesting within maximumDepth, and no sharing that would expand the tree
// far beyond the file's own size.
bool isSafeBinaryPlist(QByteArrayView bytes);

} // namespace PlistVariant
