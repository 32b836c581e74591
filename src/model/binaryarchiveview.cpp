#include "binaryarchiveview.h"

#include "archivevalue.h"
#include "keyedarchive.h"

#include <cstring>

namespace {

using Type = BinaryPlistReader::Type;

bool isArrayClass(const QString &name)
{
    return name == u"NSArray" || name == u"NSMutableArray" || name == u"NSSet" ||
           name == u"NSMutableSet" || name == u"NSOrderedSet" || name == u"NSMutableOrderedSet";
}

} // namespace

bool BinaryArchiveView::open(QByteArrayView bytes, QString *error)
{
    auto fail = [error](const QString &message) {
        if (error)
            *error = message;
        return false;
    };
    reader = BinaryPlistReader();
    objectList = top = Object();
    classes.clear();
    if (const auto refusal = KeyedUnarchiver::refusalUnread(bytes))
        return fail(*refusal);
    if (!reader.open(bytes, KeyedUnarchiver::graphLimits(bytes.size())))
        return fail(u"damaged property list"_qs);
    const Object root = reader.object(reader.top());
    if (root.type != Type::Dictionary)
        return fail(u"not a readable property list"_qs);
    const auto archiver = reader.value(root, "$archiver");
    const Object archiverName = archiver ? reader.object(*archiver) : Object();
    if (!archiverName.isString() || !reader.stringEquals(archiverName, "NSKeyedArchiver"))
        return fail(u"not a keyed archive"_qs);
    const auto list = reader.value(root, "$objects");
    const auto topLevel = reader.value(root, "$top");
    const Object listObject = list ? reader.object(*list) : Object();
    const Object topObject = topLevel ? reader.object(*topLevel) : Object();
    if (listObject.type != Type::Array || topObject.type != Type::Dictionary)
        return fail(u"keyed archive without $objects or $top"_qs);
    objectList = listObject;
    top = topObject;
    return true;
}

BinaryArchiveView::Object BinaryArchiveView::objectAt(Uid uid) const
{
    if (uid >= objectList.count)
        return {};
    return reader.object(reader.reference(objectList, uid));
}

BinaryArchiveView::Object BinaryArchiveView::dictionaryAt(Uid uid) const
{
    const Object object = objectAt(uid);
    return object.type == Type::Dictionary ? object : Object();
}

BinaryArchiveView::Object BinaryArchiveView::field(Uid uid, const char *key) const
{
    const Object object = dictionaryAt(uid);
    const auto value = reader.value(object, key);
    return value ? reader.object(*value) : Object();
}

std::optional<BinaryArchiveView::Uid> BinaryArchiveView::rootObject() const
{
    const auto root = reader.value(top, "root");
    const Object object = root ? reader.object(*root) : Object();
    if (object.type != Type::Uid)
        return std::nullopt;
    return reader.uid(object);
}

// Class descriptions are shared by many objects, so each is read once.
const BinaryArchiveView::ClassInfo *BinaryArchiveView::classOf(Uid uid) const
{
    const Object classRef = field(uid, "$class");
    if (classRef.type != Type::Uid)
        return nullptr;
    const Uid classUid = reader.uid(classRef);
    const auto found = classes.constFind(classUid);
    if (found != classes.constEnd())
        return &*found;
    const Object description = dictionaryAt(classUid);
    const auto name = reader.value(description, "$classname");
    const Object nameObject = name ? reader.object(*name) : Object();
    if (!nameObject.isString())
        return nullptr;
    ClassInfo info;
    info.name = reader.string(nameObject);
    info.isArray = isArrayClass(info.name);
    info.isString = info.name == u"NSString" || info.name == u"NSMutableString";
    return &*classes.insert(classUid, info);
}

QString BinaryArchiveView::className(Uid object) const
{
    const ClassInfo *info = classOf(object);
    return info ? info->name : QString();
}

bool BinaryArchiveView::isArray(Uid object) const
{
    const ClassInfo *info = classOf(object);
    return info && info->isArray;
}

bool BinaryArchiveView::contains(Uid object, const char *key) const
{
    return reader.value(dictionaryAt(object), key).has_value();
}

std::optional<BinaryArchiveView::Uid> BinaryArchiveView::reference(Uid object,
                                                                   const char *key) const
{
    const Object value = field(object, key);
    if (value.type != Type::Uid)
        return std::nullopt;
    return reader.uid(value);
}

std::optional<qint64> BinaryArchiveView::integer(Uid object, const char *key) const
{
    Object value = field(object, key);
    if (value.type == Type::Uid)
        value = objectAt(reader.uid(value));
    switch (value.type) {
    case Type::Integer:
        return qint64(reader.integer(value));
    case Type::Bool:
        return reader.boolean(value) ? 1 : 0;
    case Type::Real:
        return ArchiveValue::fromReal(reader.real(value)).toInteger();
    default:
        return std::nullopt;
    }
}

std::optional<QString> BinaryArchiveView::string(Uid object) const
{
    if (object == 0)
        return std::nullopt;
    const Object value = objectAt(object);
    if (value.isString())
        return reader.string(value);
    const ClassInfo *info = value.type == Type::Dictionary ? classOf(object) : nullptr;
    if (!info || !info->isString)
        return std::nullopt;
    const auto text = reader.value(value, "NS.string");
    const Object textObject = text ? reader.object(*text) : Object();
    if (!textObject.isString())
        return std::nullopt;
    return reader.string(textObject);
}

std::optional<QString> BinaryArchiveView::stringField(Uid object, const char *key) const
{
    const auto uid = reference(object, key);
    return uid ? string(*uid) : std::nullopt;
}

std::optional<BinaryArchiveView::Object> BinaryArchiveView::elementList(Uid uid) const
{
    if (!isArray(uid))
        return std::nullopt;
    const Object list = field(uid, "NS.objects");
    if (list.type != Type::Array)
        return std::nullopt;
    return list;
}
