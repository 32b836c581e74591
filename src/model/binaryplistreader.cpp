#include "binaryplistreader.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace {

// libplist's UTF-16 conversion, code unit by code unit: a lead surrogate waits for a trail one;
// a second lead in a row cancels the wait and is dropped with the first; a trail with no lead
// waiting is dropped; anything else passes, and leaves a waiting lead waiting.
template<typename Emit>
void convertUtf16(const uchar *p, quint64 count, Emit &&emit)
{
    bool waiting = false;
    char16_t lead = 0;
    for (quint64 i = 0; i < count; ++i) {
        const char16_t unit = char16_t((p[2 * i] << 8) | p[2 * i + 1]);
        if (unit >= 0xD800 && unit <= 0xDBFF) {
            waiting = !waiting;
            lead = unit;
        } else if (unit >= 0xDC00 && unit <= 0xDFFF) {
            if (waiting) {
                waiting = false;
                emit(lead);
                emit(unit);
            }
        } else {
            emit(unit);
        }
    }
}

} // namespace

// What libplist refuses of an object on its own, beyond the bounds the walk keeps.
bool BinaryPlistReader::readable(const Object &object) const
{
    const quint64 room = tableOffset - object.body;
    switch (object.type) {
    case Type::Bool:
        return object.count == 0x8 || object.count == 0x9;
    case Type::Integer:
        return object.width != 0 && object.width <= room;
    case Type::Real:
        return (object.width == 4 || object.width == 8) && object.width <= room;
    case Type::Date:
        return object.width == 8 && object.width <= room;
    case Type::Data:
    case Type::Ascii:
        return object.count <= room;
    case Type::Utf16:
        // libplist's conversion gives nothing for no units, and the file is then unreadable.
        return object.count != 0 && object.count <= room / 2;
    case Type::Uid:
        return object.width <= room &&
               number(object.body, object.width) <= std::numeric_limits<quint32>::max();
    case Type::Array:
    case Type::Dictionary:
        return true;
    case Type::Other:
        return false;
    }
    return false;
}

bool BinaryPlistReader::isCleanKey(Index index)
{
    // Keys are shared by many dictionaries: each is looked at once.
    if (state[index] & CleanKey)
        return true;
    Object key;
    if (!header(index, key) || !key.isString())
        return false;
    const quint64 width = key.type == Type::Utf16 ? 2 : 1;
    if (key.count > (tableOffset - key.body) / width)
        return false;
    const uchar *p = data + key.body;
    if (width == 1) {
        if (std::memchr(p, 0, key.count) != nullptr)
            return false;
    } else {
        for (quint64 i = 0; i < key.count; ++i) {
            if (p[2 * i] == 0 && p[2 * i + 1] == 0)
                return false;
        }
    }
    state[index] |= CleanKey;
    return true;
}

bool BinaryPlistReader::open(QByteArrayView bytes, const PlistVariant::GraphLimits &bounds)
{
    limits = bounds;
    // Expansion is counted in 32 bits: every file we read is far below that.
    constexpr quint64 most = std::numeric_limits<quint32>::max();
    limits.expandedNodes = std::min(limits.expandedNodes, most);
    limits.expandedPayloadBytes = std::min(limits.expandedPayloadBytes, most);
    data = reinterpret_cast<const uchar *>(bytes.data());
    size = quint64(bytes.size());
    if (size < 8 + 32 || std::memcmp(data, "bplist00", 8) != 0)
        return false;
    const quint64 trailer = size - 32;
    offsetSize = data[trailer + 6];
    refSize = data[trailer + 7];
    objects = number(trailer + 8, 8);
    topIndex = number(trailer + 16, 8);
    tableOffset = number(trailer + 24, 8);
    auto validWidth = [](quint64 width) { return width >= 1 && width <= 8; };
    if (!validWidth(offsetSize) || !validWidth(refSize) || objects == 0 || topIndex >= objects ||
        tableOffset < 8 || tableOffset >= trailer ||
        objects > (trailer - tableOffset) / offsetSize)
        return false;
    state.assign(objects, Unvisited);
    nodes.assign(objects, 0);
    payload.assign(objects, 0);
    const bool ok = walk();
    // Only the visit marks are needed to read; the expansion sums were for the check.
    nodes = {};
    payload = {};
    return ok;
}

bool BinaryPlistReader::enter(Index index, std::vector<Frame> &stack)
{
    if (stack.size() > size_t(limits.depth))
        return false;
    Object object;
    if (!header(index, object) || !readable(object))
        return false;
    Frame frame;
    frame.index = index;
    frame.refs = object.body;
    frame.nodes = 1;
    if (object.type == Type::Array || object.type == Type::Dictionary) {
        const quint64 refs = object.type == Type::Dictionary ? 2 : 1;
        if (object.count > (tableOffset - object.body) / refSize / refs)
            return false;
        frame.count = object.count * refs;
        if (object.type == Type::Dictionary) {
            for (quint64 i = 0; i < object.count; ++i) {
                const quint64 key = number(object.body + i * refSize, refSize);
                if (key >= objects || !isCleanKey(key))
                    return false;
            }
        }
    } else if (object.type == Type::Data || object.isString()) {
        frame.payload = object.type == Type::Utf16 ? object.count * 2 : object.count;
        if (object.count > tableOffset || frame.payload > tableOffset - object.body)
            return false;
    }
    state[index] = quint8((state[index] & ~Visited) | InProgress);
    stack.push_back(frame);
    return true;
}

// Depth-first with an explicit stack, so that no input can exhaust the call stack; each
// object's expanded size is worked out once, as the structural check works it out.
bool BinaryPlistReader::walk()
{
    std::vector<Frame> stack;
    stack.reserve(size_t(limits.depth) + 1);
    if (!enter(topIndex, stack))
        return false;
    while (!stack.empty()) {
        Frame &frame = stack.back();
        if (frame.next < frame.count) {
            const quint64 child = number(frame.refs + frame.next * refSize, refSize);
            ++frame.next;
            if (child >= objects || (state[child] & Visited) == InProgress)
                return false;
            if ((state[child] & Visited) == Done) {
                frame.nodes += nodes[child];
                frame.payload += payload[child];
            } else if (!enter(child, stack)) {
                return false;
            }
            continue;
        }
        if (frame.nodes > limits.expandedNodes || frame.payload > limits.expandedPayloadBytes)
            return false;
        const quint64 index = frame.index;
        nodes[index] = quint32(frame.nodes);
        payload[index] = quint32(frame.payload);
        state[index] = quint8((state[index] & ~Visited) | Done);
        stack.pop_back();
        if (!stack.empty()) {
            stack.back().nodes += nodes[index];
            stack.back().payload += payload[index];
        }
    }
    return true;
}

std::optional<BinaryPlistReader::Index> BinaryPlistReader::value(const Object &dictionary,
                                                                 std::string_view key) const
{
    if (dictionary.type != Type::Dictionary)
        return std::nullopt;
    for (quint64 i = 0; i < dictionary.count; ++i) {
        const Index keyIndex = reference(dictionary, i);
        // The common case first: a short ASCII key, told by its marker and bytes alone.
        const quint64 offset = number(tableOffset + keyIndex * offsetSize, offsetSize);
        const uchar marker = data[offset];
        if (key.size() < 15 && marker == (0x50 | key.size())) {
            if (std::memcmp(data + offset + 1, key.data(), key.size()) == 0)
                return reference(dictionary, dictionary.count + i);
            continue;
        }
        if ((marker >> 4) == 0x5 && (marker & 0x0F) != 0x0F)
            continue;
        const Object candidate = object(keyIndex);
        if (candidate.type == Type::Ascii) {
            // Keys hold no NUL: the walk saw to that.
            if (candidate.count == key.size() &&
                std::memcmp(data + candidate.body, key.data(), key.size()) == 0)
                return reference(dictionary, dictionary.count + i);
        } else if (candidate.type == Type::Utf16 && stringEquals(candidate, key)) {
            return reference(dictionary, dictionary.count + i);
        }
    }
    return std::nullopt;
}

quint64 BinaryPlistReader::uid(const Object &object) const
{
    return object.type == Type::Uid ? number(object.body, object.width) : 0;
}

quint64 BinaryPlistReader::integer(const Object &object) const
{
    return object.type == Type::Integer ? number(object.body, object.width) : 0;
}

double BinaryPlistReader::real(const Object &object) const
{
    if (object.type != Type::Real && object.type != Type::Date)
        return 0;
    if (object.width == 4) {
        const quint32 bits = quint32(number(object.body, 4));
        float value = 0;
        std::memcpy(&value, &bits, sizeof value);
        return value;
    }
    const quint64 bits = number(object.body, 8);
    double value = 0;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

QByteArray BinaryPlistReader::utf8(const Object &object) const
{
    const uchar *p = data + object.body;
    if (object.type == Type::Ascii) {
        const void *nul = std::memchr(p, 0, object.count);
        const quint64 length = nul ? quint64(static_cast<const uchar *>(nul) - p) : object.count;
        return QByteArray(reinterpret_cast<const char *>(p), qsizetype(length));
    }
    if (object.type != Type::Utf16)
        return {};
    return string(object).toUtf8();
}

QString BinaryPlistReader::string(const Object &object) const
{
    const uchar *p = data + object.body;
    if (object.type == Type::Ascii) {
        const void *nul = std::memchr(p, 0, object.count);
        const quint64 length = nul ? quint64(static_cast<const uchar *>(nul) - p) : object.count;
        return QString::fromUtf8(reinterpret_cast<const char *>(p), qsizetype(length));
    }
    if (object.type != Type::Utf16)
        return {};
    // libplist hands the text on as UTF-8, where a leading byte order mark is taken as one and
    // dropped on the way back to UTF-16.
    QString text(qsizetype(object.count), Qt::Uninitialized);
    char16_t *out = reinterpret_cast<char16_t *>(text.data());
    qsizetype length = 0;
    convertUtf16(p, object.count, [&](char16_t unit) { out[length++] = unit; });
    text.truncate(length);
    if (length > 0 && out[0] == 0xFEFF)
        text.remove(0, 1);
    return text;
}

bool BinaryPlistReader::stringEquals(const Object &object, std::string_view text) const
{
    const QByteArray bytes = utf8(object);
    const qsizetype nul = bytes.indexOf('\0');
    return QByteArrayView(bytes).first(nul < 0 ? bytes.size() : nul) ==
           QByteArrayView(text.data(), qsizetype(text.size()));
}
