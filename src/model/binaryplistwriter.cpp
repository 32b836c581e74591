#include "binaryplistwriter.h"

#include "wellformedtext.h"

#include <QtEndian>

#include <cstring>

namespace {

constexpr quint32 noRef = 0xFFFFFFFF;

void appendBigEndian(QByteArray &out, quint64 value, int size)
{
    for (int shift = (size - 1) * 8; shift >= 0; shift -= 8)
        out.append(char((value >> shift) & 0xFF));
}

// A real and a date are the same eight big-endian bytes of a double behind their own marker.
QByteArray encodedDouble(char marker, double value)
{
    QByteArray encoded;
    encoded.append(marker);
    quint64 bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    appendBigEndian(encoded, bits, 8);
    return encoded;
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

uchar *writeBigEndian(uchar *p, quint64 value, int size)
{
    for (int shift = (size - 1) * 8; shift >= 0; shift -= 8)
        *p++ = uchar((value >> shift) & 0xFF);
    return p;
}

// Bytes taken by a container's marker and, past 14 elements, its length.
quint64 markerSize(quint64 length)
{
    return length < 15 ? 1 : 2 + quint64(bytesNeeded(length));
}

uchar *writeMarker(uchar *p, quint8 type, quint64 length)
{
    if (length < 15) {
        *p++ = uchar(type | quint8(length));
        return p;
    }
    *p++ = uchar(type | 0x0F);
    const int size = bytesNeeded(length);
    *p++ = uchar(0x10 | (size == 1 ? 0 : size == 2 ? 1 : size == 4 ? 2 : 3));
    return writeBigEndian(p, length, size);
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
    // A NUL goes in UTF-16, which readers take by its length: an ASCII string is read as a C
    // string and would end there.
    bool ascii = true;
    bool surrogates = false;
    for (QChar c : value) {
        ascii = ascii && c.unicode() < 0x80 && !c.isNull();
        surrogates = surrogates || c.isSurrogate();
    }
    if (ascii) {
        appendMarker(encoded, 0x50, quint64(value.size()));
        encoded.append(value.toLatin1());
    } else {
        const QString text = surrogates && hasUnpairedSurrogate(value)
                                 ? withUnpairedSurrogatesReplaced(value)
                                 : value;
        appendMarker(encoded, 0x60, quint64(text.size()));
        for (QChar c : text)
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
    return addScalar(encodedDouble(char(0x23), value));
}

BinaryPlistWriter::Ref BinaryPlistWriter::date(double seconds)
{
    return addScalar(encodedDouble(char(0x33), seconds));
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

    // Sizes first, so that the whole file is written into one buffer of the right length.
    quint64 objectsEnd = 8;
    std::vector<quint64> offsets;
    offsets.reserve(entries.size());
    for (const Entry &entry : entries) {
        offsets.push_back(objectsEnd);
        if (entry.kind == Kind::Scalar) {
            objectsEnd += entry.count;
            continue;
        }
        const quint64 refs =
            entry.kind == Kind::Dictionary ? 2 * quint64(entry.count) : entry.count;
        objectsEnd += markerSize(entry.count) + refs * quint64(refSize);
    }
    const int offsetSize = bytesNeeded(objectsEnd);
    const quint64 total = objectsEnd + objectCount * quint64(offsetSize) + 32;

    QByteArray out(qsizetype(total), Qt::Uninitialized);
    uchar *p = reinterpret_cast<uchar *>(out.data());
    std::memcpy(p, "bplist00", 8);
    p += 8;
    for (const Entry &entry : entries) {
        if (entry.kind == Kind::Scalar) {
            std::memcpy(p, scalarBytes.constData() + entry.start, entry.count);
            p += entry.count;
            continue;
        }
        const bool dictionary = entry.kind == Kind::Dictionary;
        p = writeMarker(p, dictionary ? 0xD0 : 0xA0, entry.count);
        const quint32 refs = dictionary ? 2 * entry.count : entry.count;
        for (quint32 i = 0; i < refs; ++i)
            p = writeBigEndian(p, containerRefs[entry.start + i], refSize);
    }
    for (quint64 offset : offsets)
        p = writeBigEndian(p, offset, offsetSize);
    std::memset(p, 0, 6);
    p += 6;
    *p++ = uchar(offsetSize);
    *p++ = uchar(refSize);
    p = writeBigEndian(p, objectCount, 8);
    p = writeBigEndian(p, topObject, 8);
    writeBigEndian(p, objectsEnd, 8);
    return out;
}
