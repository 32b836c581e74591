#pragma once

#include "plistvariant.h"

#include <QByteArrayView>
#include <QString>

#include <optional>
#include <string_view>
#include <vector>

// A binary property list ("bplist00") read straight from its bytes, with no tree of nodes: one
// checked pass over every object that the top object reaches, then typed reads of single
// objects by their index. The pass is PlistVariant::isSafeBinaryPlist, with its bounds (depth,
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
    Object object(Index index) const
    {
        Object result;
        if (index < objects && (state[index] & Visited) == Done)
            header(index, result);
        return result;
    }
    // The element or, for a dictionary, the key (i) and the value (count + i) of a container.
    Index reference(const Object &container, quint64 i) const
    {
        return number(container.body + i * refSize, refSize);
    }
    // The first value under `key`, compared as libplist compares keys.
    std::optional<Index> value(const Object &dictionary, std::string_view key) const;

    quint64 uid(const Object &object) const;
    // The value of the UID at `index`, read without decoding more of the object.
    std::optional<quint64> uidAt(Index index) const
    {
        if (index >= objects || (state[index] & Visited) != Done)
            return std::nullopt;
        const quint64 offset = number(tableOffset + index * offsetSize, offsetSize);
        const uchar marker = data[offset];
        if ((marker >> 4) != 0x8)
            return std::nullopt;
        return number(offset + 1, (marker & 0x0F) + 1);
    }
    // Integers as their 64-bit pattern; reals and dates as doubles; false for other types.
    quint64 integer(const Object &object) const;
    double real(const Object &object) const;
    bool boolean(const Object &object) const { return object.count == 0x9; }
    QString string(const Object &object) const;
    // Whether a string's text, up to any NUL in it, is `text`.
    bool stringEquals(const Object &object, std::string_view text) const;

private:
    // Two bits for the walk, one for a key already found clean.
    enum State : quint8 { Unvisited = 0, InProgress = 1, Done = 2, Visited = 3, CleanKey = 4 };
    struct Frame {
        quint64 index = 0;
        quint64 refs = 0;
        quint64 count = 0;
        quint64 next = 0;
        quint64 nodes = 0;
        quint64 payload = 0;
    };

    // Big-endian; past eight bytes only the last eight count, as libplist reads them.
    quint64 number(quint64 pos, quint64 width) const
    {
        const uchar *p = data + pos;
        switch (width) {
        case 1:
            return p[0];
        case 2:
            return quint64(p[0]) << 8 | p[1];
        case 4:
            return quint64(p[0]) << 24 | quint64(p[1]) << 16 | quint64(p[2]) << 8 | p[3];
        default: {
            quint64 value = 0;
            for (quint64 i = 0; i < width; ++i)
                value = (value << 8) | p[i];
            return value;
        }
        }
    }
    bool header(Index index, Object &result) const;
    bool readable(const Object &object) const;
    bool isCleanKey(Index index);
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
    std::vector<quint8> state;
    std::vector<quint32> nodes;
    std::vector<quint32> payload;
};

// Decoded on every look at an object, so kept short: tables by the marker's high nibble.
inline bool BinaryPlistReader::header(Index index, Object &result) const
{
    using T = Type;
    static constexpr T types[16] = {T::Bool,  T::Integer, T::Real,  T::Date, T::Data,  T::Ascii,
                                    T::Utf16, T::Other,   T::Uid,   T::Other, T::Array, T::Other,
                                    T::Array, T::Dictionary, T::Other, T::Other};
    // Data, text and containers carry a length, from 15 on in an integer of its own; marker
    // 0xB (an ordered set) too, though no reader takes it.
    static constexpr bool sized[16] = {false, false, false, false, true,  true,  true,  false,
                                       false, false, true,  true,  true,  true,  false, false};
    const quint64 offset = number(tableOffset + index * offsetSize, offsetSize);
    if (offset < 8 || offset >= tableOffset)
        return false;
    quint64 pos = offset;
    const uchar marker = data[pos++];
    const int type = marker >> 4;
    result.type = types[type];
    result.count = marker & 0x0F;
    if (sized[type] && result.count == 0x0F) {
        if (pos >= tableOffset || (data[pos] >> 4) != 0x1)
            return false;
        const quint64 width = quint64(1) << (data[pos] & 0x0F);
        ++pos;
        if (width > 8 || width > tableOffset - pos)
            return false;
        result.count = number(pos, width);
        pos += width;
    }
    result.body = pos;
    if (result.type == T::Uid)
        result.width = quint8(result.count + 1);
    else if (type >= 0x1 && type <= 0x3)
        result.width = quint8(result.count <= 4 ? 1 << result.count : 0);
    else
        result.width = 0;
    return true;
}
