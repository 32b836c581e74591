#include "archivevalue.h"

namespace {

const ArchiveArray emptyArray;
const ArchiveFields emptyFields;

} // namespace

ArchiveValue ArchiveValue::fromBool(bool value)
{
    return ArchiveValue(Type::Bool, value);
}

ArchiveValue ArchiveValue::fromInteger(qint64 value)
{
    return ArchiveValue(Type::Integer, value);
}

ArchiveValue ArchiveValue::fromReal(double value)
{
    return ArchiveValue(Type::Real, value);
}

ArchiveValue ArchiveValue::fromString(const QString &value)
{
    return ArchiveValue(Type::String, value);
}

ArchiveValue ArchiveValue::fromData(const QByteArray &value)
{
    return ArchiveValue(Type::Data, value);
}

ArchiveValue ArchiveValue::fromArray(ArchiveArray values)
{
    auto composite = std::make_shared<Composite>();
    composite->elements = std::move(values);
    return ArchiveValue(Type::Array, std::shared_ptr<const Composite>(std::move(composite)));
}

ArchiveValue ArchiveValue::fromStringList(const QStringList &values)
{
    ArchiveArray elements;
    elements.reserve(values.size());
    for (const QString &value : values)
        elements.push_back(fromString(value));
    return fromArray(std::move(elements));
}

ArchiveValue ArchiveValue::fromDictionary(ArchiveFields fields)
{
    auto composite = std::make_shared<Composite>();
    composite->fields = std::move(fields);
    return ArchiveValue(Type::Dictionary, std::shared_ptr<const Composite>(std::move(composite)));
}

ArchiveValue ArchiveValue::object(const QString &className, ArchiveFields fields,
                                  const QStringList &classes)
{
    auto composite = std::make_shared<Composite>();
    composite->className = className;
    composite->classes = classes.isEmpty() ? QStringList{className, u"NSObject"_qs} : classes;
    composite->fields = std::move(fields);
    return ArchiveValue(Type::Object, std::shared_ptr<const Composite>(std::move(composite)));
}

ArchiveValue ArchiveValue::optionalString(const std::optional<QString> &value)
{
    return value ? fromString(*value) : ArchiveValue();
}

ArchiveValue::Type ArchiveValue::type() const
{
    return kind;
}

bool ArchiveValue::isNumber() const
{
    return kind == Type::Integer || kind == Type::Real;
}

bool ArchiveValue::toBool() const
{
    switch (kind) {
    case Type::Bool:
        return std::get<bool>(storage);
    case Type::Integer:
        return std::get<qint64>(storage) != 0;
    case Type::Real:
        return std::get<double>(storage) != 0.0;
    default:
        return false;
    }
}

qint64 ArchiveValue::toInteger() const
{
    switch (kind) {
    case Type::Bool:
        return std::get<bool>(storage) ? 1 : 0;
    case Type::Integer:
        return std::get<qint64>(storage);
    case Type::Real: {
        // Out-of-range reals would be undefined behaviour to convert.
        const double real = std::get<double>(storage);
        if (!(real > -9223372036854775808.0 && real < 9223372036854775808.0))
            return 0;
        return static_cast<qint64>(real);
    }
    default:
        return 0;
    }
}

double ArchiveValue::toReal() const
{
    switch (kind) {
    case Type::Bool:
        return std::get<bool>(storage) ? 1.0 : 0.0;
    case Type::Integer:
        return double(std::get<qint64>(storage));
    case Type::Real:
        return std::get<double>(storage);
    default:
        return 0.0;
    }
}

QString ArchiveValue::toString() const
{
    return kind == Type::String ? std::get<QString>(storage) : QString();
}

QByteArray ArchiveValue::toData() const
{
    return kind == Type::Data ? std::get<QByteArray>(storage) : QByteArray();
}

const ArchiveValue::Composite *ArchiveValue::composite() const
{
    if (const auto *shared = std::get_if<std::shared_ptr<const Composite>>(&storage))
        return shared->get();
    return nullptr;
}

const ArchiveArray &ArchiveValue::toArray() const
{
    const Composite *c = kind == Type::Array ? composite() : nullptr;
    return c ? c->elements : emptyArray;
}

std::optional<QString> ArchiveValue::stringValue() const
{
    if (kind != Type::String)
        return std::nullopt;
    return std::get<QString>(storage);
}

std::optional<qint64> ArchiveValue::integerValue() const
{
    if (!isNumber())
        return std::nullopt;
    return toInteger();
}

std::optional<QStringList> ArchiveValue::stringListValue() const
{
    if (kind != Type::Array)
        return std::nullopt;
    QStringList list;
    const ArchiveArray &elements = toArray();
    list.reserve(qsizetype(elements.size()));
    for (const ArchiveValue &element : elements) {
        if (element.kind != Type::String)
            return std::nullopt;
        list.append(std::get<QString>(element.storage));
    }
    return list;
}

QString ArchiveValue::className() const
{
    const Composite *c = composite();
    return c ? c->className : QString();
}

QStringList ArchiveValue::classes() const
{
    const Composite *c = composite();
    return c ? c->classes : QStringList();
}

const ArchiveFields &ArchiveValue::fields() const
{
    const Composite *c = (kind == Type::Object || kind == Type::Dictionary) ? composite() : nullptr;
    return c ? c->fields : emptyFields;
}

bool ArchiveValue::contains(QStringView key) const
{
    for (const auto &[name, value] : fields()) {
        if (name == key)
            return true;
    }
    return false;
}

ArchiveValue ArchiveValue::value(QStringView key) const
{
    for (const auto &[name, value] : fields()) {
        if (name == key)
            return value;
    }
    return ArchiveValue();
}

bool operator==(const ArchiveValue &a, const ArchiveValue &b)
{
    if (a.kind != b.kind)
        return false;
    const ArchiveValue::Composite *ca = a.composite();
    const ArchiveValue::Composite *cb = b.composite();
    if (ca || cb) {
        if (ca == cb)
            return true;
        return ca && cb && ca->className == cb->className && ca->fields == cb->fields &&
               ca->elements == cb->elements;
    }
    return a.storage == b.storage;
}
