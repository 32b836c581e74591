#include "keyedarchive.h"

#include "binaryplistwriter.h"
#include "modellog.h"
#include "plistvariant.h"

#include <QHash>

#include <plist/plist.h>

#include <cstring>
#include <memory>

namespace {

const QString nsObjectsKey = u"NS.objects"_qs;
const QString classKey = u"$class"_qs;

struct PlistFree {
    void operator()(plist_t node) const { plist_free(node); }
};
using PlistPtr = std::unique_ptr<void, PlistFree>;

bool isKeyedArchiveArray(const QString &className)
{
    return className == u"NSArray" || className == u"NSMutableArray" || className == u"NSSet" ||
           className == u"NSMutableSet" || className == u"NSOrderedSet" ||
           className == u"NSMutableOrderedSet";
}

bool isKeyedArchiveDictionary(const QString &className)
{
    return className == u"NSDictionary" || className == u"NSMutableDictionary";
}

// ---- Writing -------------------------------------------------------------------------------

class Writer {
public:
    Writer() { objects.push_back(plist.string(u"$null"_qs)); }

    QByteArray finish(BinaryPlistWriter::Ref top)
    {
        const auto root = plist.dictionary({
            {plist.string(u"$version"_qs), plist.integer(100000)},
            {plist.string(u"$archiver"_qs), plist.string(u"NSKeyedArchiver"_qs)},
            {plist.string(u"$top"_qs), top},
            {plist.string(u"$objects"_qs), plist.array(objects)},
        });
        return plist.finish(root);
    }

    // A value as it stands in an object's fields: numbers and booleans inline, the rest by UID.
    BinaryPlistWriter::Ref fieldNode(const ArchiveValue &value)
    {
        switch (value.type()) {
        case ArchiveValue::Type::Bool:
            return plist.boolean(value.toBool());
        case ArchiveValue::Type::Integer:
            return plist.integer(value.toInteger());
        case ArchiveValue::Type::Real:
            return plist.real(value.toReal());
        default:
            return plist.uid(reference(value));
        }
    }

    BinaryPlistWriter::Ref fieldsNode(const ArchiveFields &fields)
    {
        std::vector<std::pair<BinaryPlistWriter::Ref, BinaryPlistWriter::Ref>> entries;
        entries.reserve(fields.size());
        for (const auto &[key, field] : fields)
            entries.emplace_back(plist.string(key), fieldNode(field));
        return plist.dictionary(entries);
    }

    quint64 reference(const ArchiveValue &value)
    {
        switch (value.type()) {
        case ArchiveValue::Type::Null:
            return 0;
        case ArchiveValue::Type::String: {
            // Equal strings share one object: a tab repeats "—" thousands of times.
            const QString text = value.toString();
            const auto found = strings.constFind(text);
            if (found != strings.constEnd())
                return *found;
            const quint64 uid = append(plist.string(text));
            strings.insert(text, uid);
            return uid;
        }
        case ArchiveValue::Type::Bool:
            return append(plist.boolean(value.toBool()));
        case ArchiveValue::Type::Integer:
            return append(plist.integer(value.toInteger()));
        case ArchiveValue::Type::Real:
            return append(plist.real(value.toReal()));
        case ArchiveValue::Type::Data:
            return append(plist.data(value.toData()));
        case ArchiveValue::Type::Array: {
            // The archive numbers a container before its contents, as the platform's does.
            const quint64 uid = reserve();
            std::vector<BinaryPlistWriter::Ref> elements;
            elements.reserve(value.toArray().size());
            for (const ArchiveValue &element : value.toArray())
                elements.push_back(plist.uid(reference(element)));
            objects[uid] = plist.dictionary(
                {{plist.string(nsObjectsKey), plist.array(elements)},
                 {plist.string(classKey), classReference({u"NSArray"_qs, u"NSObject"_qs})}});
            return uid;
        }
        case ArchiveValue::Type::Dictionary: {
            const quint64 uid = reserve();
            std::vector<BinaryPlistWriter::Ref> keys;
            std::vector<BinaryPlistWriter::Ref> values;
            for (const auto &[key, element] : value.fields()) {
                keys.push_back(plist.uid(reference(ArchiveValue::fromString(key))));
                values.push_back(plist.uid(reference(element)));
            }
            objects[uid] = plist.dictionary(
                {{plist.string(u"NS.keys"_qs), plist.array(keys)},
                 {plist.string(nsObjectsKey), plist.array(values)},
                 {plist.string(classKey), classReference({u"NSDictionary"_qs, u"NSObject"_qs})}});
            return uid;
        }
        case ArchiveValue::Type::Object: {
            const quint64 uid = reserve();
            std::vector<std::pair<BinaryPlistWriter::Ref, BinaryPlistWriter::Ref>> entries;
            entries.reserve(value.fields().size() + 1);
            for (const auto &[key, field] : value.fields())
                entries.emplace_back(plist.string(key), fieldNode(field));
            entries.emplace_back(plist.string(classKey), classReference(value.classes()));
            objects[uid] = plist.dictionary(entries);
            return uid;
        }
        }
        return 0;
    }

    BinaryPlistWriter::Ref rootTop(quint64 root)
    {
        return plist.dictionary({{plist.string(u"root"_qs), plist.uid(root)}});
    }

    quint64 append(BinaryPlistWriter::Ref ref)
    {
        objects.push_back(ref);
        return objects.size() - 1;
    }

    quint64 reserve() { return append(0); }

    // Keys given as literals are looked up by address: the same few, thousands of times.
    BinaryPlistWriter::Ref keyReference(const char *key)
    {
        for (const auto &[literal, ref] : keys) {
            if (literal == key)
                return ref;
        }
        const BinaryPlistWriter::Ref ref = plist.string(QString::fromUtf8(key));
        keys.emplace_back(key, ref);
        return ref;
    }

    // One class description per class, however many objects use it.
    BinaryPlistWriter::Ref classReference(const QStringList &chain)
    {
        auto found = classes.constFind(chain.first());
        if (found != classes.constEnd())
            return plist.uid(*found);
        std::vector<BinaryPlistWriter::Ref> names;
        for (const QString &name : chain)
            names.push_back(plist.string(name));
        const quint64 uid = append(
            plist.dictionary({{plist.string(u"$classes"_qs), plist.array(names)},
                              {plist.string(u"$classname"_qs), plist.string(chain.first())}}));
        classes.insert(chain.first(), uid);
        return plist.uid(uid);
    }

    BinaryPlistWriter plist;
    std::vector<BinaryPlistWriter::Ref> objects;
    QHash<QString, quint64> strings;
    QHash<QString, quint64> classes;
    std::vector<std::pair<const char *, BinaryPlistWriter::Ref>> keys;
};

// ---- Reading -------------------------------------------------------------------------------

class Reader {
public:
    bool open(QByteArrayView bytes)
    {
        if (const auto refusal = KeyedUnarchiver::refusalUnread(bytes))
            return fail(*refusal);
        // libplist copies an object for each reference to it and stops the program on some
        // damaged keys, so the file's structure is checked before libplist sees it.
        if (!PlistVariant::isSafeBinaryPlist(bytes, KeyedUnarchiver::graphLimits(bytes.size())))
            return fail(u"damaged property list"_qs);
        plist_t parsed = nullptr;
        plist_from_bin(bytes.data(), uint32_t(bytes.size()), &parsed);
        root.reset(parsed);
        if (!root || plist_get_node_type(root.get()) != PLIST_DICT)
            return fail(u"not a readable property list"_qs);
        plist_t archiver = plist_dict_get_item(root.get(), "$archiver");
        if (!archiver || plist_get_node_type(archiver) != PLIST_STRING ||
            plist_string_val_compare(archiver, "NSKeyedArchiver") != 0)
            return fail(u"not a keyed archive"_qs);
        plist_t objectList = plist_dict_get_item(root.get(), "$objects");
        top = plist_dict_get_item(root.get(), "$top");
        if (!objectList || plist_get_node_type(objectList) != PLIST_ARRAY || !top ||
            plist_get_node_type(top) != PLIST_DICT)
            return fail(u"keyed archive without $objects or $top"_qs);

        const uint32_t count = plist_array_get_size(objectList);
        objects.reserve(count);
        plist_array_iter iter = nullptr;
        plist_array_new_iter(objectList, &iter);
        for (uint32_t i = 0; i < count; ++i) {
            plist_t item = nullptr;
            plist_array_next_item(objectList, iter, &item);
            if (!item)
                break;
            objects.push_back(item);
        }
        free(iter);
        return true;
    }

    std::optional<ArchiveValue> rootObject()
    {
        plist_t rootRef = plist_dict_get_item(top, "root");
        if (!rootRef || plist_get_node_type(rootRef) != PLIST_UID) {
            fail(u"keyed archive without a root object"_qs);
            return std::nullopt;
        }
        prepareTree();
        ArchiveValue value = inlineValue(rootRef, 0);
        if (failed)
            return std::nullopt;
        return value;
    }

    std::optional<ArchiveValue> topLevel()
    {
        prepareTree();
        ArchiveValue value = ArchiveValue::fromDictionary(fieldsOf(top, 0));
        if (failed)
            return std::nullopt;
        return value;
    }

    // ---- In place, for readers that walk a known shape --------------------------------------

    quint64 objectCount() const { return objects.size(); }

    std::optional<quint64> rootUid() const
    {
        plist_t rootRef = plist_dict_get_item(top, "root");
        if (!rootRef || plist_get_node_type(rootRef) != PLIST_UID)
            return std::nullopt;
        uint64_t uid = 0;
        plist_get_uid_val(rootRef, &uid);
        return uid;
    }

    // The dictionary at `uid`; whether it is an object of some class is className's to say.
    // Each look into a dictionary walks its entries, so the walkers ask as few as they can.
    plist_t objectNode(quint64 uid) const
    {
        if (uid >= objects.size())
            return nullptr;
        plist_t node = objects[uid];
        return plist_get_node_type(node) == PLIST_DICT ? node : nullptr;
    }

    QString classNameOf(quint64 uid)
    {
        plist_t node = objectNode(uid);
        const auto *klass = node ? classOf(node, false) : nullptr;
        return klass ? klass->first : QString();
    }

    static std::optional<quint64> uidOf(plist_t node)
    {
        if (!node || plist_get_node_type(node) != PLIST_UID)
            return std::nullopt;
        uint64_t uid = 0;
        plist_get_uid_val(node, &uid);
        return uid;
    }

    plist_t fieldNode(quint64 uid, const char *key) const
    {
        plist_t node = objectNode(uid);
        return node ? plist_dict_get_item(node, key) : nullptr;
    }

    std::optional<qint64> numberOf(plist_t node) const
    {
        if (const auto uid = uidOf(node))
            node = *uid < objects.size() ? objects[*uid] : nullptr;
        if (!node)
            return std::nullopt;
        switch (plist_get_node_type(node)) {
        case PLIST_UINT: {
            uint64_t value = 0;
            plist_get_uint_val(node, &value);
            return static_cast<qint64>(value);
        }
        case PLIST_BOOLEAN: {
            uint8_t value = 0;
            plist_get_bool_val(node, &value);
            return value ? 1 : 0;
        }
        case PLIST_REAL: {
            double value = 0;
            plist_get_real_val(node, &value);
            return ArchiveValue::fromReal(value).toInteger();
        }
        default:
            return std::nullopt;
        }
    }

    std::optional<QString> stringAt(quint64 uid)
    {
        if (uid == 0 || uid >= objects.size())
            return std::nullopt;
        plist_t node = objects[uid];
        if (plist_get_node_type(node) == PLIST_STRING)
            return stringOf(node);
        const QString className = classNameOf(uid);
        if (className != u"NSString" && className != u"NSMutableString")
            return std::nullopt;
        plist_t text = plist_dict_get_item(node, "NS.string");
        if (!text || plist_get_node_type(text) != PLIST_STRING)
            return std::nullopt;
        return stringOf(text);
    }

    std::optional<std::vector<quint64>> arrayAt(quint64 uid)
    {
        if (!isKeyedArchiveArray(classNameOf(uid)))
            return std::nullopt;
        plist_t list = plist_dict_get_item(objects[uid], "NS.objects");
        if (!list || plist_get_node_type(list) != PLIST_ARRAY)
            return std::nullopt;
        const uint32_t count = plist_array_get_size(list);
        std::vector<quint64> elements;
        elements.reserve(count);
        plist_array_iter iter = nullptr;
        plist_array_new_iter(list, &iter);
        for (uint32_t i = 0; i < count; ++i) {
            plist_t item = nullptr;
            plist_array_next_item(list, iter, &item);
            const auto element = uidOf(item);
            if (!element) {
                free(iter);
                return std::nullopt;
            }
            elements.push_back(*element);
        }
        free(iter);
        return elements;
    }

    QString error;

private:
    enum class State : quint8 { Untouched, InProgress, Done };

    // The whole-tree decoding remembers every object it has decoded; readers that walk in
    // place never pay for that table.
    void prepareTree()
    {
        resolved.resize(objects.size());
        state.assign(objects.size(), State::Untouched);
    }

    bool fail(const QString &message)
    {
        if (!failed) {
            failed = true;
            error = message;
        }
        return false;
    }

    static QString stringOf(plist_t node)
    {
        uint64_t length = 0;
        const char *text = plist_get_string_ptr(node, &length);
        return text ? QString::fromUtf8(text, qsizetype(length)) : QString();
    }

    // A value where it stands inside an object or a raw container.
    ArchiveValue inlineValue(plist_t node, int depth)
    {
        if (failed)
            return {};
        if (depth > KeyedUnarchiver::maximumDepth) {
            fail(u"nesting too deep"_qs);
            return {};
        }
        switch (plist_get_node_type(node)) {
        case PLIST_UID: {
            uint64_t uid = 0;
            plist_get_uid_val(node, &uid);
            return object(uid, depth + 1);
        }
        case PLIST_BOOLEAN: {
            uint8_t value = 0;
            plist_get_bool_val(node, &value);
            return ArchiveValue::fromBool(value != 0);
        }
        case PLIST_UINT: {
            uint64_t value = 0;
            plist_get_uint_val(node, &value);
            return ArchiveValue::fromInteger(static_cast<qint64>(value));
        }
        case PLIST_REAL: {
            double value = 0;
            plist_get_real_val(node, &value);
            return ArchiveValue::fromReal(value);
        }
        case PLIST_DATE: {
            int32_t seconds = 0, microseconds = 0;
            plist_get_date_val(node, &seconds, &microseconds);
            return ArchiveValue::fromReal(seconds + microseconds / 1e6);
        }
        case PLIST_STRING:
            return ArchiveValue::fromString(stringOf(node));
        case PLIST_DATA: {
            uint64_t length = 0;
            const char *data = plist_get_data_ptr(node, &length);
            return ArchiveValue::fromData(QByteArray(data, qsizetype(length)));
        }
        case PLIST_ARRAY: {
            ArchiveArray elements;
            const uint32_t count = plist_array_get_size(node);
            elements.reserve(count);
            for (uint32_t i = 0; i < count && !failed; ++i)
                elements.push_back(inlineValue(plist_array_get_item(node, i), depth + 1));
            return ArchiveValue::fromArray(std::move(elements));
        }
        case PLIST_DICT:
            return ArchiveValue::fromDictionary(fieldsOf(node, depth + 1));
        default:
            fail(u"unexpected value in archive"_qs);
            return {};
        }
    }

    // An archive uses a handful of keys over and over: each becomes one shared QString.
    QString keyString(const char *key)
    {
        for (const auto &[bytes, text] : keyStrings) {
            if (bytes == key)
                return text;
        }
        QString text = QString::fromUtf8(key);
        if (keyStrings.size() < 64)
            keyStrings.emplace_back(key, text);
        return text;
    }

    ArchiveFields fieldsOf(plist_t dict, int depth)
    {
        ArchiveFields fields;
        fields.reserve(plist_dict_get_size(dict));
        plist_dict_iter iter = nullptr;
        plist_dict_new_iter(dict, &iter);
        for (;;) {
            char *key = nullptr;
            plist_t value = nullptr;
            plist_dict_next_item(dict, iter, &key, &value);
            if (!value) {
                free(key);
                break;
            }
            if (std::strcmp(key, "$class") != 0 && !failed)
                fields.emplace_back(keyString(key), inlineValue(value, depth));
            free(key);
        }
        free(iter);
        return fields;
    }

    // Class chains are shared by many objects, so each is read once.
    const std::pair<QString, QStringList> *classOf(plist_t dict, bool required = true)
    {
        plist_t classRef = plist_dict_get_item(dict, "$class");
        if (!classRef || plist_get_node_type(classRef) != PLIST_UID) {
            if (required)
                fail(u"object without a class"_qs);
            return nullptr;
        }
        uint64_t uid = 0;
        plist_get_uid_val(classRef, &uid);
        auto found = classCache.constFind(uid);
        if (found != classCache.constEnd())
            return &*found;
        if (uid >= objects.size()) {
            fail(u"class reference past the end of the archive"_qs);
            return nullptr;
        }
        plist_t classDict = objects[uid];
        plist_t name = plist_get_node_type(classDict) == PLIST_DICT
                           ? plist_dict_get_item(classDict, "$classname")
                           : nullptr;
        if (!name || plist_get_node_type(name) != PLIST_STRING) {
            fail(u"class without a name"_qs);
            return nullptr;
        }
        QStringList chain;
        plist_t names = plist_dict_get_item(classDict, "$classes");
        if (names && plist_get_node_type(names) == PLIST_ARRAY) {
            const uint32_t count = plist_array_get_size(names);
            for (uint32_t i = 0; i < count; ++i) {
                plist_t item = plist_array_get_item(names, i);
                if (plist_get_node_type(item) == PLIST_STRING)
                    chain.append(stringOf(item));
            }
        }
        return &*classCache.insert(uid, {stringOf(name), chain});
    }

    // The elements of an archived collection, each by UID.
    ArchiveArray referencedElements(plist_t list, int depth)
    {
        ArchiveArray elements;
        if (!list || plist_get_node_type(list) != PLIST_ARRAY) {
            fail(u"collection without its elements"_qs);
            return elements;
        }
        const uint32_t count = plist_array_get_size(list);
        elements.reserve(count);
        plist_array_iter iter = nullptr;
        plist_array_new_iter(list, &iter);
        for (uint32_t i = 0; i < count && !failed; ++i) {
            plist_t item = nullptr;
            plist_array_next_item(list, iter, &item);
            if (!item)
                break;
            elements.push_back(inlineValue(item, depth));
        }
        free(iter);
        return elements;
    }

    ArchiveValue object(uint64_t uid, int depth)
    {
        if (uid >= objects.size()) {
            fail(u"reference past the end of the archive"_qs);
            return {};
        }
        const size_t index = size_t(uid);
        if (state[index] == State::Done)
            return resolved[index];
        if (state[index] == State::InProgress) {
            fail(u"reference cycle in archive"_qs);
            return {};
        }
        state[index] = State::InProgress;
        ArchiveValue value = decode(objects[index], index, depth);
        if (failed)
            return {};
        resolved[index] = value;
        state[index] = State::Done;
        return value;
    }

    ArchiveValue decode(plist_t node, size_t index, int depth)
    {
        const plist_type type = plist_get_node_type(node);
        if (type == PLIST_STRING && index == 0 && plist_string_val_compare(node, "$null") == 0)
            return {};
        if (type == PLIST_UID) {
            fail(u"reference where an object belongs"_qs);
            return {};
        }
        if (type != PLIST_DICT || !plist_dict_get_item(node, "$class"))
            return inlineValue(node, depth);

        const auto *klass = classOf(node);
        if (!klass)
            return {};
        const QString &className = klass->first;
        if (isKeyedArchiveArray(className))
            return ArchiveValue::fromArray(
                referencedElements(plist_dict_get_item(node, "NS.objects"), depth));
        if (isKeyedArchiveDictionary(className)) {
            ArchiveArray keys = referencedElements(plist_dict_get_item(node, "NS.keys"), depth);
            ArchiveArray values =
                referencedElements(plist_dict_get_item(node, "NS.objects"), depth);
            if (keys.size() != values.size()) {
                fail(u"dictionary with unequal keys and values"_qs);
                return {};
            }
            ArchiveFields fields;
            fields.reserve(keys.size());
            for (size_t i = 0; i < keys.size(); ++i) {
                if (!keys[i].isString()) {
                    fail(u"dictionary key that is not a string"_qs);
                    return {};
                }
                fields.emplace_back(keys[i].toString(), values[i]);
            }
            return ArchiveValue::fromDictionary(std::move(fields));
        }
        if (className == u"NSString" || className == u"NSMutableString") {
            plist_t text = plist_dict_get_item(node, "NS.string");
            if (!text || plist_get_node_type(text) != PLIST_STRING) {
                fail(u"string object without its text"_qs);
                return {};
            }
            return ArchiveValue::fromString(stringOf(text));
        }
        if (className == u"NSData" || className == u"NSMutableData") {
            plist_t data = plist_dict_get_item(node, "NS.data");
            if (!data || plist_get_node_type(data) != PLIST_DATA) {
                fail(u"data object without its bytes"_qs);
                return {};
            }
            return inlineValue(data, depth);
        }
        if (className == u"NSDate") {
            plist_t time = plist_dict_get_item(node, "NS.time");
            return time ? inlineValue(time, depth) : ArchiveValue();
        }
        return ArchiveValue::object(className, fieldsOf(node, depth), klass->second);
    }

    PlistPtr root;
    plist_t top = nullptr;
    std::vector<plist_t> objects;
    std::vector<ArchiveValue> resolved;
    std::vector<State> state;
    QHash<uint64_t, std::pair<QString, QStringList>> classCache;
    std::vector<std::pair<std::string, QString>> keyStrings;
    bool failed = false;
};

} // namespace

struct KeyedArchiveBuilder::Private {
    Writer writer;
};

KeyedArchiveBuilder::KeyedArchiveBuilder() : d(std::make_unique<Private>()) {}

KeyedArchiveBuilder::~KeyedArchiveBuilder() = default;

KeyedArchiveBuilder::Uid KeyedArchiveBuilder::reserve()
{
    return d->writer.reserve();
}

KeyedArchiveBuilder::Uid KeyedArchiveBuilder::string(const QString &text)
{
    return d->writer.reference(ArchiveValue::fromString(text));
}

KeyedArchiveBuilder::Uid KeyedArchiveBuilder::optionalString(const std::optional<QString> &text)
{
    return text ? string(*text) : 0;
}

KeyedArchiveBuilder::Uid KeyedArchiveBuilder::array(const std::vector<Uid> &elements)
{
    Writer &w = d->writer;
    std::vector<BinaryPlistWriter::Ref> refs;
    refs.reserve(elements.size());
    for (const Uid element : elements)
        refs.push_back(w.plist.uid(element));
    return w.append(w.plist.dictionary(
        {{w.keyReference("NS.objects"), w.plist.array(refs)},
         {w.keyReference("$class"), w.classReference({u"NSArray"_qs, u"NSObject"_qs})}}));
}

void KeyedArchiveBuilder::setObject(Uid object, const QString &className,
                                    std::span<const Field> fields)
{
    Writer &w = d->writer;
    std::vector<std::pair<BinaryPlistWriter::Ref, BinaryPlistWriter::Ref>> entries;
    entries.reserve(fields.size() + 1);
    for (const Field &field : fields) {
        const BinaryPlistWriter::Ref value = field.kind == Field::Kind::Reference
                                                 ? w.plist.uid(quint64(field.value))
                                                 : w.plist.integer(field.value);
        entries.emplace_back(w.keyReference(field.key), value);
    }
    entries.emplace_back(w.keyReference("$class"), w.classReference({className, u"NSObject"_qs}));
    w.objects[size_t(object)] = w.plist.dictionary(entries);
}

QByteArray KeyedArchiveBuilder::finish(Uid rootObject)
{
    return d->writer.finish(d->writer.rootTop(rootObject));
}

struct KeyedArchiveView::Private {
    Reader reader;
};

KeyedArchiveView::KeyedArchiveView() : d(std::make_unique<Private>()) {}

KeyedArchiveView::~KeyedArchiveView() = default;

bool KeyedArchiveView::open(QByteArrayView bytes, QString *error)
{
    d = std::make_unique<Private>();
    if (d->reader.open(bytes))
        return true;
    if (error)
        *error = d->reader.error;
    return false;
}

std::optional<KeyedArchiveView::Uid> KeyedArchiveView::rootObject() const
{
    return d->reader.rootUid();
}

QString KeyedArchiveView::className(Uid object) const
{
    return d->reader.classNameOf(object);
}

bool KeyedArchiveView::contains(Uid object, const char *key) const
{
    return d->reader.fieldNode(object, key) != nullptr;
}

std::optional<KeyedArchiveView::Uid> KeyedArchiveView::reference(Uid object, const char *key) const
{
    return Reader::uidOf(d->reader.fieldNode(object, key));
}

std::optional<qint64> KeyedArchiveView::integer(Uid object, const char *key) const
{
    return d->reader.numberOf(d->reader.fieldNode(object, key));
}

std::optional<QString> KeyedArchiveView::string(Uid object) const
{
    return d->reader.stringAt(object);
}

std::optional<QString> KeyedArchiveView::stringField(Uid object, const char *key) const
{
    const auto uid = reference(object, key);
    return uid ? string(*uid) : std::nullopt;
}

std::optional<std::vector<KeyedArchiveView::Uid>> KeyedArchiveView::array(Uid object) const
{
    return d->reader.arrayAt(object);
}

bool KeyedArchiveView::isArray(Uid object) const
{
    return isKeyedArchiveArray(d->reader.classNameOf(object));
}

quint64 KeyedArchiveView::objectCount() const
{
    return d->reader.objectCount();
}

std::optional<QString> KeyedUnarchiver::refusalUnread(QByteArrayView bytes)
{
    if (bytes.size() < 8 || std::memcmp(bytes.data(), "bplist00", 8) != 0)
        return u"not a binary property list"_qs;
    if (bytes.size() > maximumBytes)
        return u"file too large"_qs;
    return std::nullopt;
}

PlistVariant::GraphLimits KeyedUnarchiver::graphLimits(qsizetype size)
{
    // A tab's archive expands to about one node for every four bytes of file.
    PlistVariant::GraphLimits limits;
    limits.expandedNodes = 1'000'000 + quint64(size);
    limits.expandedPayloadBytes = 64 * 1024 * 1024 + 4 * quint64(size);
    return limits;
}

QByteArray KeyedArchiver::archivedData(const ArchiveValue &rootObject)
{
    Writer writer;
    const quint64 root = writer.reference(rootObject);
    return writer.finish(writer.rootTop(root));
}

QByteArray KeyedArchiver::archivedDataKeyedDirectly(const ArchiveFields &topLevel)
{
    Writer writer;
    return writer.finish(writer.fieldsNode(topLevel));
}

std::optional<ArchiveValue> KeyedUnarchiver::unarchivedRootObject(QByteArrayView bytes,
                                                                  QString *error)
{
    Reader reader;
    std::optional<ArchiveValue> value;
    if (reader.open(bytes))
        value = reader.rootObject();
    if (!value && error)
        *error = reader.error;
    return value;
}

std::optional<ArchiveValue> KeyedUnarchiver::unarchivedTopLevel(QByteArrayView bytes,
                                                                QString *error)
{
    Reader reader;
    std::optional<ArchiveValue> value;
    if (reader.open(bytes))
        value = reader.topLevel();
    if (!value && error)
        *error = reader.error;
    return value;
}
