#include "plistvariant.h"

#include "binaryplistwriter.h"
#include "modellog.h"

#include <QDateTime>
#include <QTimeZone>

#include <plist/plist.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

namespace PlistVariant {

namespace {

struct PlistFree {
    void operator()(plist_t node) const { plist_free(node); }
};
using PlistPtr = std::unique_ptr<void, PlistFree>;

// Property-list dates count seconds from the start of 2001, UTC.
const QDateTime &referenceDate()
{
    static const QDateTime date(QDate(2001, 1, 1), QTime(0, 0), QTimeZone::utc());
    return date;
}

// The seconds a date node holds, if the writer can write them back: libplist hands dates out
// only as 32-bit whole seconds, and converting NaN, an infinity or 1e20 into those is undefined,
// so the stored double is taken from the node written out on its own.
std::optional<double> dateSeconds(plist_t node)
{
    char *bytes = nullptr;
    uint32_t length = 0;
    plist_to_bin(node, &bytes, &length);
    std::optional<double> seconds;
    // "bplist00", then the date object: its marker and a big-endian double.
    if (bytes && length >= 17 && uchar(bytes[8]) == 0x33) {
        quint64 pattern = 0;
        for (int i = 0; i < 8; ++i)
            pattern = (pattern << 8) | uchar(bytes[9 + i]);
        double value = 0;
        std::memcpy(&value, &pattern, sizeof value);
        if (std::isfinite(value) && value >= double(INT32_MIN) && value <= double(INT32_MAX))
            seconds = value;
    }
    if (bytes)
        plist_to_bin_free(bytes);
    return seconds;
}

// Written with our own writer: libplist takes text as C strings and would end it at a NUL.
std::optional<BinaryPlistWriter::Ref> encode(BinaryPlistWriter &plist, const QVariant &value,
                                             int depth)
{
    if (depth > maximumDepth)
        return std::nullopt;
    switch (value.typeId()) {
    case QMetaType::Bool:
        return plist.boolean(value.toBool());
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Long:
    case QMetaType::LongLong:
        return plist.integer(value.toLongLong());
    case QMetaType::ULong:
    case QMetaType::ULongLong:
        // The 64-bit pattern, as the reader gives every integer back as qint64.
        return plist.integer(qint64(value.toULongLong()));
    case QMetaType::Double:
    case QMetaType::Float:
        return plist.real(value.toDouble());
    case QMetaType::QString:
        return plist.string(value.toString());
    case QMetaType::QByteArray:
        return plist.data(value.toByteArray());
    case QMetaType::QDateTime: {
        const QDateTime date = value.toDateTime();
        if (!date.isValid())
            return std::nullopt;
        const qint64 ms = referenceDate().msecsTo(date);
        const qint64 seconds = ms >= 0 ? ms / 1000 : -((-ms + 999) / 1000);
        if (seconds < INT32_MIN || seconds > INT32_MAX)
            return std::nullopt;
        return plist.date(double(ms) / 1000.0);
    }
    case QMetaType::QStringList:
    case QMetaType::QVariantList: {
        std::vector<BinaryPlistWriter::Ref> elements;
        for (const QVariant &element : value.toList()) {
            const auto ref = encode(plist, element, depth + 1);
            if (!ref)
                return std::nullopt;
            elements.push_back(*ref);
        }
        return plist.array(elements);
    }
    case QMetaType::QVariantMap:
    case QMetaType::QVariantHash: {
        std::vector<std::pair<BinaryPlistWriter::Ref, BinaryPlistWriter::Ref>> entries;
        const QVariantMap map = value.toMap();
        for (auto it = map.cbegin(); it != map.cend(); ++it) {
            // A key with a NUL is refused by every reader of the file.
            if (it.key().contains(QChar(0)))
                return std::nullopt;
            const auto ref = encode(plist, it.value(), depth + 1);
            if (!ref)
                return std::nullopt;
            entries.emplace_back(plist.string(it.key()), *ref);
        }
        return plist.dictionary(entries);
    }
    default:
        return std::nullopt;
    }
}

QVariant fromNode(plist_t node, int depth)
{
    if (!node || depth > maximumDepth)
        return {};
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
        uint8_t flag = 0;
        plist_get_bool_val(node, &flag);
        return bool(flag);
    }
    case PLIST_UINT: {
        uint64_t number = 0;
        plist_get_uint_val(node, &number);
        return static_cast<qint64>(number);
    }
    case PLIST_REAL: {
        double number = 0;
        plist_get_real_val(node, &number);
        return number;
    }
    case PLIST_STRING: {
        uint64_t length = 0;
        const char *text = plist_get_string_ptr(node, &length);
        return text ? QString::fromUtf8(text, qsizetype(length)) : QString();
    }
    case PLIST_DATA: {
        uint64_t length = 0;
        const char *bytes = plist_get_data_ptr(node, &length);
        return bytes ? QByteArray(bytes, qsizetype(length)) : QByteArray("");
    }
    case PLIST_DATE: {
        // A date no file of ours can hold is left out like any value of no known type, so
        // that one such value cannot make every later write of the whole dictionary fail.
        const std::optional<double> seconds = dateSeconds(node);
        if (!seconds) {
            qCWarning(lcModel) << "a date out of range was left out of a property list";
            return {};
        }
        return referenceDate().addMSecs(std::llround(*seconds * 1000.0));
    }
    case PLIST_ARRAY: {
        QVariantList list;
        const uint32_t count = plist_array_get_size(node);
        list.reserve(count);
        for (uint32_t i = 0; i < count; ++i) {
            const QVariant element = fromNode(plist_array_get_item(node, i), depth + 1);
            if (element.isValid())
                list.append(element);
        }
        return list;
    }
    case PLIST_DICT: {
        QVariantMap map;
        plist_dict_iter iter = nullptr;
        plist_dict_new_iter(node, &iter);
        if (!iter)
            return map;
        for (;;) {
            char *key = nullptr;
            plist_t item = nullptr;
            plist_dict_next_item(node, iter, &key, &item);
            if (!item) {
                std::free(key);
                break;
            }
            const QVariant element = fromNode(item, depth + 1);
            if (key && element.isValid())
                map.insert(QString::fromUtf8(key), element);
            std::free(key);
        }
        std::free(iter);
        return map;
    }
    default:
        return {};
    }
}

// ---- The pre-parse check of a binary property list ------------------------------------------

class BinaryGraph {
public:
    BinaryGraph(QByteArrayView bytes, const GraphLimits &limits)
        : limits(limits), data(reinterpret_cast<const uchar *>(bytes.data())),
          size(quint64(bytes.size()))
    {
    }

    bool check()
    {
        if (size < 8 + 32 || std::memcmp(data, "bplist00", 8) != 0)
            return false;
        const uchar *trailer = data + size - 32;
        offsetSize = trailer[6];
        refSize = trailer[7];
        objectCount = readNumber(trailer + 8, 8);
        const quint64 top = readNumber(trailer + 16, 8);
        tableOffset = readNumber(trailer + 24, 8);
        if (!validWidth(offsetSize) || !validWidth(refSize) || objectCount == 0 ||
            top >= objectCount || tableOffset < 8 || tableOffset >= size - 32 ||
            objectCount > (size - 32 - tableOffset) / offsetSize)
            return false;
        state.assign(objectCount, Unvisited);
        nodes.assign(objectCount, 0);
        payload.assign(objectCount, 0);
        return walk(top);
    }

private:
    enum State : quint8 { Unvisited, InProgress, Done };
    struct Frame {
        quint64 index = 0;
        quint64 refs = 0; // where the object's references start
        quint64 count = 0;
        quint64 next = 0;
        quint64 nodes = 0;
        quint64 payload = 0;
    };

    static bool validWidth(quint64 width) { return width >= 1 && width <= 8; }

    static quint64 readNumber(const uchar *p, quint64 width)
    {
        quint64 value = 0;
        for (quint64 i = 0; i < width; ++i)
            value = (value << 8) | p[i];
        return value;
    }

    struct Header {
        int type = 0;
        quint64 count = 0;
        quint64 pos = 0; // where the object's body starts
    };

    // The marker of an object and its count, which may follow in an integer of its own.
    bool header(quint64 index, Header &result) const
    {
        const quint64 offset = readNumber(data + tableOffset + index * offsetSize, offsetSize);
        if (offset < 8 || offset >= tableOffset)
            return false;
        quint64 pos = offset;
        const uchar marker = data[pos++];
        result.type = marker >> 4;
        result.count = marker & 0x0F;
        if (hasCount(result.type) && result.count == 0x0F) {
            if (pos >= tableOffset || (data[pos] >> 4) != 0x1)
                return false;
            const quint64 width = quint64(1) << (data[pos] & 0x0F);
            ++pos;
            if (width > 8 || width > tableOffset - pos)
                return false;
            result.count = readNumber(data + pos, width);
            pos += width;
        }
        result.pos = pos;
        return true;
    }

    static bool hasCount(int type)
    {
        return type == 0x4 || type == 0x5 || type == 0x6 || type == 0xA || type == 0xB ||
               type == 0xC || type == 0xD;
    }
    static bool isContainer(int type) { return type >= 0xA && type <= 0xD; }

    // Dictionary keys must be strings without a NUL: the parser keeps keys as C strings and
    // stops the program on one whose length disagrees with its text.
    bool isCleanKey(quint64 index) const
    {
        Header key;
        if (!header(index, key) || (key.type != 0x5 && key.type != 0x6))
            return false;
        const quint64 width = key.type == 0x6 ? 2 : 1;
        if (key.count > (tableOffset - key.pos) / width)
            return false;
        for (quint64 i = 0; i < key.count; ++i) {
            const uchar *unit = data + key.pos + i * width;
            if (unit[0] == 0 && (width == 1 || unit[1] == 0))
                return false;
        }
        return true;
    }

    // Reads an object's header: where its references start and how many (for containers),
    // and its payload length. Dictionary keys are checked here, once per dictionary.
    bool describe(quint64 index, Frame &frame, quint64 &payloadBytes) const
    {
        Header object;
        if (!header(index, object))
            return false;
        payloadBytes = 0;
        frame.index = index;
        frame.refs = object.pos;
        frame.count = 0;
        frame.next = 0;
        if (isContainer(object.type)) {
            const quint64 refs = object.type == 0xD ? 2 : 1;
            if (object.count > (tableOffset - object.pos) / refSize / refs)
                return false;
            frame.count = object.count * refs;
            if (object.type == 0xD) {
                for (quint64 i = 0; i < object.count; ++i) {
                    const quint64 key = readNumber(data + object.pos + i * refSize, refSize);
                    if (key >= objectCount || !isCleanKey(key))
                        return false;
                }
            }
        } else if (hasCount(object.type)) {
            payloadBytes = object.type == 0x6 ? object.count * 2 : object.count;
            if (object.count > tableOffset || payloadBytes > tableOffset - object.pos)
                return false;
        }
        return true;
    }

    // Depth-first over the graph with an explicit stack, so that no input can exhaust the
    // call stack; each object's expanded size is worked out once.
    bool walk(quint64 top)
    {
        std::vector<Frame> stack;
        stack.reserve(size_t(limits.depth) + 1);
        if (!enter(top, stack))
            return false;
        while (!stack.empty()) {
            Frame &frame = stack.back();
            if (frame.next < frame.count) {
                const quint64 child = readNumber(data + frame.refs + frame.next * refSize, refSize);
                ++frame.next;
                if (child >= objectCount || state[child] == InProgress)
                    return false;
                if (state[child] == Done) {
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
            nodes[index] = frame.nodes;
            payload[index] = frame.payload;
            state[index] = Done;
            stack.pop_back();
            if (!stack.empty()) {
                stack.back().nodes += nodes[index];
                stack.back().payload += payload[index];
            }
        }
        return true;
    }

    bool enter(quint64 index, std::vector<Frame> &stack)
    {
        if (stack.size() > size_t(limits.depth))
            return false;
        Frame frame;
        quint64 bytes = 0;
        if (!describe(index, frame, bytes))
            return false;
        frame.nodes = 1;
        frame.payload = bytes;
        state[index] = InProgress;
        stack.push_back(frame);
        return true;
    }

    GraphLimits limits;
    const uchar *data;
    quint64 size;
    quint64 offsetSize = 0;
    quint64 refSize = 0;
    quint64 objectCount = 0;
    quint64 tableOffset = 0;
    std::vector<State> state;
    std::vector<quint64> nodes;
    std::vector<quint64> payload;
};

} // namespace

std::optional<QVariant> normalized(const QVariant &value)
{
    // Written and read back, so that it is exactly what a reload gives.
    BinaryPlistWriter plist;
    const auto ref = encode(plist, value, 0);
    if (!ref)
        return std::nullopt;
    const QByteArray bytes = plist.finish(plist.array({*ref}));
    plist_t parsed = nullptr;
    plist_from_bin(bytes.constData(), uint32_t(bytes.size()), &parsed);
    PlistPtr root(parsed);
    if (!root || plist_get_node_type(root.get()) != PLIST_ARRAY ||
        plist_array_get_size(root.get()) != 1)
        return std::nullopt;
    return fromNode(plist_array_get_item(root.get(), 0), 0);
}

std::optional<QByteArray> binaryData(const QVariantMap &dictionary)
{
    BinaryPlistWriter plist;
    const auto root = encode(plist, dictionary, 0);
    if (!root)
        return std::nullopt;
    return plist.finish(*root);
}

std::optional<QVariantMap> dictionaryFromData(QByteArrayView bytes, const GraphLimits &limits)
{
    if (bytes.size() > maximumFileBytes || !isSafeBinaryPlist(bytes, limits))
        return std::nullopt;
    plist_t parsed = nullptr;
    plist_from_bin(bytes.data(), uint32_t(bytes.size()), &parsed);
    PlistPtr root(parsed);
    if (!root || plist_get_node_type(root.get()) != PLIST_DICT)
        return std::nullopt;
    return fromNode(root.get(), 0).toMap();
}

bool isSafeBinaryPlist(QByteArrayView bytes, const GraphLimits &limits)
{
    return BinaryGraph(bytes, limits).check();
}

} // namespace PlistVariant
