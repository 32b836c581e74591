#pragma once

#include "binaryplistreader.h"

#include <QByteArrayView>
#include <QHash>
#include <QString>

#include <optional>
#include <vector>

// A keyed archive read in place from the bytes of its binary property list, as
// KeyedArchiveView reads it through libplist's tree, and giving the same answers: the same
// files open, and every question about an object has the same reply. Objects are named by
// their UID; anything missing or of another kind reads as nothing.
class BinaryArchiveView {
public:
    using Uid = quint64;

    // The bytes must outlive the view.
    bool open(QByteArrayView bytes, QString *error = nullptr);

    quint64 objectCount() const { return objectList.count; }
    std::optional<Uid> rootObject() const;
    // The class of an object; empty for anything that is no object.
    QString className(Uid object) const;
    bool isArray(Uid object) const;
    bool contains(Uid object, const char *key) const;
    std::optional<Uid> reference(Uid object, const char *key) const;
    std::optional<qint64> integer(Uid object, const char *key) const;
    std::optional<QString> string(Uid object) const;
    std::optional<QString> stringField(Uid object, const char *key) const;
    // The elements of an array object without a list of them, each given to `each` until it
    // returns false. False, having called `each` for none, when the object is no array or an
    // element is no reference; false too when `each` stops.
    // `reserve` hears the count first.
    template<typename Each, typename Reserve = void (*)(quint64)>
    bool forEachElement(Uid object, Each &&each, Reserve &&reserve = [](quint64) {}) const
    {
        const auto list = elementList(object);
        if (!list)
            return false;
        for (quint64 i = 0; i < list->count; ++i) {
            if (!reader.uidAt(reader.reference(*list, i)))
                return false;
        }
        reserve(list->count);
        for (quint64 i = 0; i < list->count; ++i) {
            if (!each(*reader.uidAt(reader.reference(*list, i))))
                return false;
        }
        return true;
    }

private:
    struct ClassInfo {
        QString name;
        bool isArray = false;
        bool isString = false;
    };
    using Object = BinaryPlistReader::Object;

    Object objectAt(Uid uid) const;
    Object dictionaryAt(Uid uid) const;
    Object field(Uid uid, const char *key) const;
    const ClassInfo *classOf(Uid uid) const;
    std::optional<Object> elementList(Uid uid) const;

    BinaryPlistReader reader;
    Object objectList;
    Object top;
    mutable QHash<Uid, ClassInfo> classes;
};
