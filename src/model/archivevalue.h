#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <memory>
#include <optional>
#include <utility>
#include <variant>
#include <vector>

class ArchiveValue;
using ArchiveFields = std::vector<std::pair<QString, ArchiveValue>>;
using ArchiveArray = std::vector<ArchiveValue>;

// One value of a keyed archive, after references are resolved: the tree that the coders of
// the tab model, the settings and the label store read and write. Copies are cheap and share
// their data; an object referenced from many places in a file is one shared value here.
class ArchiveValue {
public:
    enum class Type : quint8 { Null, Bool, Integer, Real, String, Data, Array, Dictionary, Object };

    ArchiveValue() = default;
    static ArchiveValue fromBool(bool value);
    static ArchiveValue fromInteger(qint64 value);
    static ArchiveValue fromReal(double value);
    static ArchiveValue fromString(const QString &value);
    static ArchiveValue fromData(const QByteArray &value);
    static ArchiveValue fromArray(ArchiveArray values);
    static ArchiveValue fromStringList(const QStringList &values);
    static ArchiveValue fromDictionary(ArchiveFields fields);
    // An object of a class of ours. `classes` is the class chain written beside the name;
    // empty means just the name and "NSObject".
    static ArchiveValue object(const QString &className, ArchiveFields fields,
                               const QStringList &classes = {});
    static ArchiveValue optionalString(const std::optional<QString> &value);

    Type type() const;
    bool isNull() const { return type() == Type::Null; }
    bool isString() const { return type() == Type::String; }
    bool isArray() const { return type() == Type::Array; }
    bool isObject() const { return type() == Type::Object; }
    bool isNumber() const;

    // Typed reads give a neutral value (false, 0, empty) on a type mismatch.
    bool toBool() const;
    qint64 toInteger() const;
    double toReal() const;
    QString toString() const;
    QByteArray toData() const;
    const ArchiveArray &toArray() const;

    std::optional<QString> stringValue() const;
    std::optional<qint64> integerValue() const;
    // An array whose elements are all strings.
    std::optional<QStringList> stringListValue() const;

    // Objects and dictionaries.
    QString className() const;
    QStringList classes() const;
    const ArchiveFields &fields() const;
    bool contains(QStringView key) const;
    ArchiveValue value(QStringView key) const;

    friend bool operator==(const ArchiveValue &a, const ArchiveValue &b);

private:
    struct Composite {
        QString className;
        QStringList classes;
        ArchiveFields fields;
        ArchiveArray elements;
    };
    using Storage = std::variant<std::monostate, bool, qint64, double, QString, QByteArray,
                                 std::shared_ptr<const Composite>>;
    ArchiveValue(Type type, Storage storage) : kind(type), storage(std::move(storage)) {}
    const Composite *composite() const;

    Type kind = Type::Null;
    Storage storage;
};
