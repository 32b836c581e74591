#include "plistvariant.h"

#include "binaryplistreader.h"
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
    // The reader's checked pass is the check: one walk of the graph serves every reader.
    return BinaryPlistReader().open(bytes, limits);
}

} // namespace PlistVariant
