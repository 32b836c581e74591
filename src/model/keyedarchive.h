#pragma once

#include "archivevalue.h"
#include "plistvariant.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <memory>
#include <optional>
#include <span>
#include <vector>

// The keyed-archive layout over a binary property list: "$archiver", "$version", "$top" and
// "$objects", with objects referenced by UID and classes described by "$classname" and
// "$classes". Tab documents, the settings file and the label file all use it.
class KeyedArchiver {
public:
    // The archive of one root object, under "$top" / "root".
    static QByteArray archivedData(const ArchiveValue &rootObject);
    // An archive written key by key straight into "$top", as the settings file is.
    static QByteArray archivedDataKeyedDirectly(const ArchiveFields &topLevel);
};

// Builds an archive object by object, for writers of a known shape that would rather not
// make a tree of values first: a tab's document has hundreds of thousands of cells.
class KeyedArchiveBuilder {
public:
    using Uid = quint64;
    // An object's field: a reference to another object, or an integer stored inline. Keys
    // are string literals; the builder knows them by their address.
    struct Field {
        enum class Kind { Reference, Integer };
        const char *key;
        Kind kind;
        qint64 value;
        static Field reference(const char *key, Uid uid)
        {
            return {key, Kind::Reference, qint64(uid)};
        }
        static Field integer(const char *key, qint64 value) { return {key, Kind::Integer, value}; }
    };

    KeyedArchiveBuilder();
    ~KeyedArchiveBuilder();

    // A place for an object whose contents come later, so that it is numbered before them.
    Uid reserve();
    // Equal strings share one object. The null object is 0.
    Uid string(const QString &text);
    Uid optionalString(const std::optional<QString> &text);
    Uid array(const std::vector<Uid> &elements);
    void setObject(Uid object, const QString &className, std::span<const Field> fields);
    QByteArray finish(Uid rootObject);

private:
    struct Private;
    std::unique_ptr<Private> d;
};

class KeyedUnarchiver {
public:
    // Deepest chain of references that an archive may hold before it counts as unreadable.
    static constexpr int maximumDepth = 200;
    // Larger archives are refused unread. Far beyond any tab a person writes: a 1,000-row tab
    // takes 7 MB.
    static constexpr qsizetype maximumBytes = 256 * 1024 * 1024;
    // Why the bytes are refused before any object is read (no binary property list, too
    // large), or nothing.
    static std::optional<QString> refusalUnread(QByteArrayView bytes);
    // The bounds on the object graph of an archive of `size` bytes, the same for every reader
    // so that all of them take the same files.
    static PlistVariant::GraphLimits graphLimits(qsizetype size);

    // Gives the root object, or nothing with the reason in `error`.
    static std::optional<ArchiveValue> unarchivedRootObject(QByteArrayView bytes,
                                                            QString *error = nullptr);
    // Gives all of "$top" as a dictionary.
    static std::optional<ArchiveValue> unarchivedTopLevel(QByteArrayView bytes,
                                                          QString *error = nullptr);
};

// An archive read in place, object by object, without a tree of values: for readers that
// walk a shape they know, such as a tab with its hundreds of thousands of cells. Objects are
// named by their UID; anything missing or of another kind reads as nothing.
class KeyedArchiveView {
public:
    using Uid = quint64;

    KeyedArchiveView();
    ~KeyedArchiveView();

    bool open(QByteArrayView bytes, QString *error = nullptr);

    std::optional<Uid> rootObject() const;
    // The class of an object; empty for anything that is no object.
    QString className(Uid object) const;
    bool contains(Uid object, const char *key) const;
    // A field that refers to another object.
    std::optional<Uid> reference(Uid object, const char *key) const;
    // A field holding a number, inline or referred to.
    std::optional<qint64> integer(Uid object, const char *key) const;
    // A string, plain or as a string object.
    std::optional<QString> string(Uid object) const;
    std::optional<QString> stringField(Uid object, const char *key) const;
    // The elements of an array object, each by UID.
    std::optional<std::vector<Uid>> array(Uid object) const;
    bool isArray(Uid object) const;
    quint64 objectCount() const;
    // The elements of an array object given to `each` until it returns false; false when
    // the object is no array, an element is no reference, or `each` stops.
    template<typename Each, typename Reserve = void (*)(quint64)>
    bool forEachElement(Uid object, Each &&each, Reserve &&reserve = [](quint64) {}) const
    {
        const auto elements = array(object);
        if (!elements)
            return false;
        reserve(elements->size());
        for (const Uid element : *elements) {
            if (!each(element))
                return false;
        }
        return true;
    }

private:
    struct Private;
    std::unique_ptr<Private> d;
};
