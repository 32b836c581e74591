#pragma once

#include "plistvariant.h"

#include <QByteArrayView>
#include <QString>

#include <optional>
#include <string_view>
#include <vector>

// A binary property list ("bplist00") read straight from its bytes, with no tree of nodes: one
// checked pass over every object that the top object reaches, then typed reads of single
// objects by their index. The pass holds every bound of PlistVariant::isSafeBinaryPlist (depth,
// expansion, references in range, no cycles, no NUL in keys) and refuses every object that
// libplist refuses, so that a file reads alike here and through libplist's tree. Reads give
// what libplist gives too: ASCII text ends at a NUL, and UTF-16 text loses its unpaired
// surrogates as libplist's conversion drops them.
class BinaryPlistReader {
public:
    using Index = quint64;
    enum class Type : quint8 {
        Other,
        Bool,
        Integer,
        Real,
        Date,
        Data,
        Ascii,
        Utf16,
        Uid,
        Array, // sets read as arrays
        Dictionary,
    };

    // One object's marker decoded: its type, its length (bytes, UTF-16 units or entries) and
    // where its body starts.
    struct Object {
        Type type = Type::Other;
        quint8 width = 0; // bytes of an integer, real, date or UID
        quint64 count = 0;
        quint64 body = 0;
        bool isString() const { return type == Type::Ascii || type == Type::Utf16; }
    };

    // Checks the bytes; false if any bound is broken or any reachable object is unreadable.
    // The bytes must outlive the reader.
    bool open(QByteArrayView bytes, const PlistVariant::GraphLimits &limits);

    Index top() const { return topIndex; }
    quint64 objectCount() const { return objects; }

    // Only objects that the top object reaches are read: the indices that top() and the
    // containers hand out.
    Object object(Index index) const;
    // The element or, for a dictionary, the key (i) and the value (count + i) of a container.
    Index reference(const Object &container, quint64 i) const;
    // The first value under `key`, compared as libplist compares keys.
    std::optional<Index> value(const Object &dictionary, std::string_view key) const;

    quint64 uid(const Object &object) const;
    // Integers as their 64-bit pattern; reals and dates as doubles; false for other types.
    quint64 integer(const Object &object) const;
    double real(const Object &object) const;
    bool boolean(const Object &object) const { return object.count == 0x9; }
    QString string(const Object &object) const;
    // Whether a string's text, up to any NUL in it, is `text`.
    bool stringEquals(const Object &object, std::string_view text) const;

private:
    enum State : quint8 { Unvisited, InProgress, Done };
    struct Frame {
        quint64 index = 0;
        quint64 refs = 0;
        quint64 count = 0;
        quint64 next = 0;
        quint64 nodes = 0;
        quint64 payload = 0;
    };

    quint64 number(quint64 pos, quint64 width) const;
    bool header(Index index, Object &result) const;
    bool readable(const Object &object) const;
    bool isCleanKey(Index index) const;
    bool enter(Index index, std::vector<Frame> &stack);
    bool walk();
    QByteArray utf8(const Object &object) const;

    PlistVariant::GraphLimits limits;
    const uchar *data = nullptr;
    quint64 size = 0;
    quint64 offsetSize = 0;
    quint64 refSize = 0;
    quint64 objects = 0;
    quint64 tableOffset = 0;
    Index topIndex = 0;
    std::vector<State> state;
    std::vector<quint32> nodes;
    std::vector<quint32> payload;
};
