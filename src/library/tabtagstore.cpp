#include "tabtagstore.h"

#include "services/cloudkeyvaluestore.h"
#include "librarylog.h"
#include "model/keyedarchive.h"
#include "services/apppaths.h"
#include "services/saveddata.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QSet>

#include <algorithm>

TabTagStore::TabTagStore(SavedData &savedData, CloudKeyValueStore &cloudStore)
    : savedData(savedData), cloudStore(cloudStore)
{
}

QByteArray TabTagStore::localFileData(const TagMap &map)
{
    ArchiveFields entries;
    for (auto it = map.cbegin(); it != map.cend(); ++it)
        entries.emplace_back(it.key(), ArchiveValue::fromStringList(it.value()));
    const QByteArray inner = KeyedArchiver::archivedData(ArchiveValue::fromDictionary(entries));
    return KeyedArchiver::archivedDataKeyedDirectly(
        {{localFileKey, ArchiveValue::fromData(inner)}});
}

std::optional<TabTagStore::TagMap> TabTagStore::tagMapFromLocalFileData(QByteArrayView bytes,
                                                                        bool *innerError)
{
    if (innerError)
        *innerError = false;
    const auto top = KeyedUnarchiver::unarchivedTopLevel(bytes);
    if (!top)
        return std::nullopt;
    auto fail = [&]() -> std::optional<TagMap> {
        if (innerError)
            *innerError = true;
        return TagMap();
    };
    const ArchiveValue inner = top->value(localFileKey);
    if (inner.type() != ArchiveValue::Type::Data)
        return fail();
    const auto root = KeyedUnarchiver::unarchivedRootObject(inner.toData());
    if (!root || root->type() != ArchiveValue::Type::Dictionary)
        return fail();
    TagMap map;
    // An archive may point every tab at one huge label list; past any real library's size
    // the file counts as damaged instead of being copied out without end.
    constexpr qsizetype maximumLabels = 1'000'000;
    qsizetype labels = 0;
    for (const auto &[name, value] : root->fields()) {
        const auto tags = value.stringListValue();
        if (!tags)
            return fail();
        labels += tags->size();
        if (labels > maximumLabels)
            return fail();
        map.insert(name, *tags);
    }
    return map;
}

TabTagStore::TagMap TabTagStore::localTagMap()
{
    if (!savedData.tagMapLoaded) {
        QFile file(savedData.tabTagFileURL);
        std::optional<TagMap> read;
        bool innerError = false;
        // A file larger than the reader takes is refused before it is read.
        if (file.open(QIODevice::ReadOnly) && file.size() <= KeyedUnarchiver::maximumBytes)
            read = tagMapFromLocalFileData(file.read(KeyedUnarchiver::maximumBytes + 1),
                                           &innerError);
        if (innerError)
            qCWarning(lcLibrary) << "folder labels unreadable, starting over"
                                 << savedData.tabTagFileURL;
        else
            savedData.localTagMap = read.value_or(TagMap());
        savedData.tagMapLoaded = true;
    }
    return savedData.localTagMap.value_or(TagMap());
}

void TabTagStore::writeLocalTagMap(const TagMap &map)
{
    if (!savedData.tagMapLoaded && !savedData.localTagMap)
        return;
    savedData.localTagMap = map;
    AppPaths::ensureDirectory(QFileInfo(savedData.tabTagFileURL).absolutePath());
    // Failures leave the map in memory ahead of the file until the next write.
    QSaveFile file(savedData.tabTagFileURL);
    if (file.open(QIODevice::WriteOnly)) {
        file.write(localFileData(map));
        file.commit();
    }
}

TabTagStore::TagMap TabTagStore::cloudTagMap() const
{
    TagMap map;
    const QVariantMap stored = cloudStore.dictionaryForKey(cloudKey);
    for (auto it = stored.cbegin(); it != stored.cend(); ++it) {
        if (it.value().typeId() != QMetaType::QVariantList)
            return {};
        QStringList tags;
        for (const QVariant &tag : it.value().toList()) {
            if (tag.typeId() != QMetaType::QString)
                return {};
            tags.append(tag.toString());
        }
        map.insert(it.key(), tags);
    }
    return map;
}

TabTagStore::TagMap TabTagStore::currentTagMap()
{
    return savedData.icloudOff ? localTagMap() : cloudTagMap();
}

void TabTagStore::writeTagMap(const TagMap &map)
{
    if (savedData.icloudOff) {
        writeLocalTagMap(map);
        return;
    }
    QVariantMap stored;
    for (auto it = map.cbegin(); it != map.cend(); ++it) {
        QVariantList tags;
        for (const QString &tag : it.value())
            tags.append(tag);
        stored.insert(it.key(), tags);
    }
    cloudStore.setObject(stored, cloudKey);
}

void TabTagStore::setTabTags(const QString &name, const QStringList &tags)
{
    TagMap map = currentTagMap();
    const QStringList present = map.value(name);
    const bool same = present.size() == tags.size() &&
                      std::all_of(tags.cbegin(), tags.cend(),
                                  [&](const QString &tag) { return present.contains(tag); });
    if (same)
        return;
    map.insert(name, tags);
    writeTagMap(map);
}

void TabTagStore::removeTabTags(const QString &name)
{
    TagMap map = currentTagMap();
    if (map.remove(name) > 0)
        writeTagMap(map);
}

void TabTagStore::moveTabTags(const QString &oldName, const QString &newName,
                              const QStringList &tags)
{
    TagMap map = currentTagMap();
    map.remove(oldName);
    map.insert(newName, tags);
    writeTagMap(map);
}

void TabTagStore::removeTagFromAllTabs(const std::optional<QString> &tag)
{
    if (!tag)
        return;
    TagMap map = currentTagMap();
    bool changed = false;
    for (auto it = map.begin(); it != map.end();) {
        if (it.value().removeAll(*tag) > 0) {
            changed = true;
            if (it.value().isEmpty()) {
                it = map.erase(it);
                continue;
            }
        }
        ++it;
    }
    if (changed)
        writeTagMap(map);
}

QStringList TabTagStore::allTagNames()
{
    QSet<QString> names;
    const TagMap map = currentTagMap();
    for (const QStringList &tags : map)
        names.unite(QSet<QString>(tags.cbegin(), tags.cend()));
    QStringList sorted(names.cbegin(), names.cend());
    std::sort(sorted.begin(), sorted.end());
    return sorted;
}
