#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QtEndian>

// A binary property list assembled by hand, to make shapes that no writer would produce
// (cycles, runaway nesting, keys holding NUL).
// Objects are given as their encoded bytes; references and offsets are four bytes wide.
class HandMadePlist {
public:
    int add(const QByteArray &object)
    {
        objects.append(object);
        return int(objects.size() - 1);
    }
    static QByteArray ref(int index)
    {
        const quint32 bigEndian = qToBigEndian(quint32(index));
        return QByteArray(reinterpret_cast<const char *>(&bigEndian), 4);
    }
    // A marker with its count, which from 15 on follows in an integer of its own.
    static QByteArray marker(int type, qsizetype count)
    {
        QByteArray bytes(1, char((type << 4) | (count < 15 ? count : 15)));
        if (count >= 15) {
            bytes.append(char(0x11));
            bytes.append(char((count >> 8) & 0xFF));
            bytes.append(char(count & 0xFF));
        }
        return bytes;
    }
    static QByteArray array(const QList<int> &elements)
    {
        QByteArray bytes = marker(0xA, elements.size());
        for (int element : elements)
            bytes += ref(element);
        return bytes;
    }
    static QByteArray dict(const QList<int> &keys, const QList<int> &values)
    {
        QByteArray bytes = marker(0xD, keys.size());
        for (int object : keys + values)
            bytes += ref(object);
        return bytes;
    }
    static QByteArray ascii(const QByteArray &text) { return marker(0x5, text.size()) + text; }
    static QByteArray utf16(const QString &text)
    {
        QByteArray bytes = marker(0x6, text.size());
        for (const QChar c : text) {
            bytes.append(char(c.unicode() >> 8));
            bytes.append(char(c.unicode() & 0xFF));
        }
        return bytes;
    }
    static QByteArray uid(int index) { return QByteArray(1, char(0x80)) + char(index); }
    static QByteArray yes() { return QByteArray(1, char(0x09)); }

    QByteArray data(int top) const
    {
        QByteArray bytes("bplist00");
        QList<quint32> offsets;
        for (const QByteArray &object : objects) {
            offsets.append(quint32(bytes.size()));
            bytes += object;
        }
        const quint32 tableOffset = quint32(bytes.size());
        for (quint32 offset : offsets)
            bytes += ref(int(offset));
        QByteArray trailer(32, '\0');
        trailer[6] = 4;
        trailer[7] = 4;
        trailer.replace(12, 4, ref(int(objects.size())));
        trailer.replace(20, 4, ref(top));
        trailer.replace(28, 4, ref(int(tableOffset)));
        return bytes + trailer;
    }

private:
    QList<QByteArray> objects;
};
