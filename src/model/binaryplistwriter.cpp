#include "binaryplistwriter.h"

#include <QtEndian>

#include <cstring>

namespace {

constexpr quint32 noRef = 0xFFFFFFFF;

void appendBigEndian(QByteArray &out, quint64 value, int size)
{
    for (int shift = (size - 1) * 8; shift >= 0; shift -= 8)
        out.append(char((value >> shift) & 0xFF));
}

int bytesNeeded(quint64 value)
{
    if (value <= 0xFF)
        return 1;
    if (value <= 0xFFFF)
        return 2;
    if (value <= 0xFFFFFFFFull)
        return 4;
    return 8;
}

// The marker of a sized object, with its length inline or as a following integer.
void appendMarker(QByteArray &out, quint8 type, quint64 length)
{
    if (length < 15) {
        out.append(char(type | quint8(length)));
        return;
    }
    out.append(char(type | 0x0F));
    const int size = bytesNeeded(length);
    out.append(char(0x10 | (size == 1 ? 0 : size == 2 ? 1 : size == 4 ? 2 : 3)));
    appendBigEndian(out, length, size);
}

} // namespace

BinaryPlistWriter::Ref BinaryPlistWriter::addScalar(const QByteArray &encoded)
{
    entries.push_back({Kind::Scalar, quint32(scalarBytes.size()), quint32(encoded.size())});
    scalarBytes.append(encoded);
    return Ref(entries.size() - 1);
}

BinaryPlistWriter::Ref BinaryPlistWriter::string(const QString &value)
{
    const auto found = strings.constFind(value);
    if (found != strings.constEnd())
        return *found;
    QByteArray encoded;
    bool ascii = true;
    for (QChar c : value) {
        if (c.unicode() >= 0x80) {
            ascii = false;
            break;
        }
    }
    if (ascii) {
        appendMarker(encoded, 0x50, quint64(value.size()));
        encoded.append(value.toLatin1());
    } else {
        appendMarker(encoded, 0x60, quint64(value.size()));
        for (QChar c : value)
            appendBigEndian(encoded, c.unicode(), 2);
    }
    const Ref ref = addScalar(encoded);
    strings.insert(value, ref);
    return ref;
}

BinaryPlistWriter::Ref BinaryPlistWriter::integer(qint64 value)
{
    const auto found = integers.constFind(value);
    if (found != integers.constEnd())
        return *found;
    QByteArray encoded;
    // One, two and four byte integers are unsigned; negative values take all eight bytes.
    const int size = value < 0 ? 8 : bytesNeeded(quint64(value));
    encoded.append(char(0x10 | (size == 1 ? 0 : size == 2 ? 1 : size == 4 ? 2 : 3)));
    appendBigEndian(encoded, quint64(value), size);
    const Ref ref = addScalar(encoded);
    integers.insert(value, ref);
    return ref;
}

BinaryPlistWriter::Ref BinaryPlistWriter::real(double value)
{
    QByteArray encoded;
    encoded.append(char(0x23));
    quint64 bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    appendBigEndian(encoded, bits, 8);
    return addScalar(encoded);
}

BinaryPlistWriter::Ref BinaryPlistWriter::boolean(bool value)
{
    if (!haveBoolean[value]) {
        booleans[value] = addScalar(QByteArray(1, char(value ? 0x09 : 0x08)));
        haveBoolean[value] = true;
    }
    return booleans[value];
}

BinaryPlistWriter::Ref BinaryPlistWriter::data(const QByteArray &value)
{
    QByteArray encoded;
    appendMarker(encoded, 0x40, quint64(value.size()));
    encoded.append(value);
    return addScalar(encoded);
}

BinaryPlistWriter::Ref BinaryPlistWriter::uid(quint64 value)
{
    if (value < 0x10000000) {
        if (value >= uids.size())
            uids.resize(size_t(value) + 1, noRef);
        if (uids[size_t(value)] != noRef)
            return uids[size_t(value)];
    }
    QByteArray encoded;
    const int size = bytesNeeded(value);
    encoded.append(char(0x80 | (size - 1)));
    appendBigEndian(encoded, value, size);
    const Ref ref = addScalar(encoded);
    if (value < uids.size())
        uids[size_t(value)] = ref;
    return ref;
}

BinaryPlistWriter::Ref BinaryPlistWriter::array(const std::vector<Ref> &elements)
{
    entries.push_back({Kind::Array, quint32(containerRefs.size()), quint32(elements.size())});
    containerRefs.insert(containerRefs.end(), elements.begin(), elements.end());
    return Ref(entries.size() - 1);
}

BinaryPlistWriter::Ref BinaryPlistWriter::dictionary(const std::vector<std::pair<Ref, Ref>> &pairs)
{
    entries.push_back({Kind::Dictionary, quint32(containerRefs.size()), quint32(pairs.size())});
    for (const auto &pair : pairs)
        containerRefs.push_back(pair.first);
    for (const auto &pair : pairs)
        containerRefs.push_back(pair.second);
    return Ref(entries.size() - 1);
}

QByteArray BinaryPlistWriter::finish(Ref topObject) const
{
    const quint64 objectCount = entries.size();
    const int refSize = bytesNeeded(objectCount ? objectCount - 1 : 0);

    QByteArray out;
    out.reserve(qsizetype(8 + scalarBytes.size() + containerRefs.size() * size_t(refSize)
                          + entries.size() * 6 + 32));
    out.append("bplist00", 8);
    std::vector<quint64> offsets;
    offsets.reserve(entries.size());
    for (const Entry &entry : entries) {
        offsets.push_back(quint64(out.size()));
        switch (entry.kind) {
        case Kind::Scalar:
            out.append(scalarBytes.constData() + entry.start, entry.count);
            break;
        case Kind::Array:
            appendMarker(out, 0xA0, entry.count);
            for (quint32 i = 0; i < entry.count; ++i)
                appendBigEndian(out, containerRefs[entry.start + i], refSize);
            break;
        case Kind::Dictionary:
            appendMarker(out, 0xD0, entry.count);
            for (quint32 i = 0; i < entry.count * 2; ++i)
                appendBigEndian(out, containerRefs[entry.start + i], refSize);
            break;
        }
    }
    const quint64 offsetTableStart = quint64(out.size());
    const int offsetSize = bytesNeeded(offsetTableStart);
    for (quint64 offset : offsets)
        appendBigEndian(out, offset, offsetSize);

    out.append(QByteArray(6, '\0'));
    out.append(char(offsetSize));
    out.append(char(refSize));
    appendBigEndian(out, objectCount, 8);
    appendBigEndian(out, topObject, 8);
    appendBigEndian(out, offsetTableStart, 8);
    return out;
}
