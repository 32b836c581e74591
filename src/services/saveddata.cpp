#include "saveddata.h"

#include "apppaths.h"
#include "services/cloudkeyvaluestore.h"
#include "model/keyedarchive.h"
#include "model/plistvariant.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>

#include <memory>

namespace {

const QString recentChordClass = u"Lutegrid.RecentChord"_qs;
const QString customChordsKey = u"custchords"_qs;

std::unique_ptr<SavedData> &sharedInstance()
{
    static std::unique_ptr<SavedData> instance;
    return instance;
}

// Every custom chord shows the user's mark, wherever it was loaded from.
QList<ChordShortcut> markedCustom(QList<ChordShortcut> chords)
{
    for (ChordShortcut &chord : chords)
        chord.isCustom = true;
    return chords;
}

} // namespace

ArchiveValue RecentChord::toArchiveValue() const
{
    return ArchiveValue::object(recentChordClass,
                                {{u"nmkey"_qs, ArchiveValue::fromString(name)},
                                 {u"customkey"_qs, ArchiveValue::fromBool(isCustom)}});
}

std::optional<RecentChord> RecentChord::fromArchiveValue(const ArchiveValue &value)
{
    const auto name = value.value(u"nmkey").stringValue();
    if (!value.isObject() || !name)
        return std::nullopt;
    return RecentChord{*name, value.value(u"customkey").toBool()};
}

SavedData &SavedData::shared()
{
    auto &instance = sharedInstance();
    if (!instance) {
        const QString folder = AppPaths::libraryDirectory();
        instance = std::make_unique<SavedData>(QDir(folder).filePath(u"data.plist"_qs),
                                               &CloudKeyValueStore::shared());
    }
    return *instance;
}

void SavedData::resetShared()
{
    // Read again in place: whoever holds the shared settings keeps a valid reference.
    auto &instance = sharedInstance();
    if (instance)
        *instance = SavedData(instance->filePath, instance->cloudStore);
}

SavedData::SavedData(const QString &path, CloudKeyValueStore *store)
    : filePath(path),
      tabTagFileURL(QDir(QFileInfo(path).absolutePath()).filePath(u"tabtag.plist"_qs)),
      cloudStore(store)
{
    load();
}

void SavedData::load()
{
    QFile file(filePath);
    // A settings file is small: anything this large is damage, and counts as no file.
    if (file.open(QIODevice::ReadOnly) && file.size() <= PlistVariant::maximumFileBytes)
        readFileData(file.read(PlistVariant::maximumFileBytes + 1));

    const QList<ChordShortcut> cloudChords = loadCloudCustomChords();
    if (!cloudChords.isEmpty()) {
        customChordShortcuts = markedCustom(cloudChords);
        saveCustomChordsLocally = false;
    } else if (customChordShortcuts && !customChordShortcuts->isEmpty()) {
        storeCloudCustomChords(*customChordShortcuts);
    }
}

void SavedData::readFileData(QByteArrayView bytes)
{
    if (bytes.size() > PlistVariant::maximumFileBytes)
        return;
    const std::optional<ArchiveValue> top = KeyedUnarchiver::unarchivedTopLevel(bytes);
    if (top) {
        createdFirstTab = top->value(u"firsttabkey").toBool();
        tabCreateCount = top->value(u"tabcreatecountkey").toInteger();
        icloudOff = top->value(u"icloudakey").toBool();
        notesOnTab = top->value(u"notk").toBool();
        hasTurnedICloudOff = top->value(u"hasturnedicloudoff").toBool();
        const ArchiveValue recents = top->value(u"rcsck");
        // Only as many entries as the lists keep are read: a damaged file could repeat one
        // entry without end.
        if (recents.isArray()) {
            QList<RecentChord> list;
            for (const ArchiveValue &entry : recents.toArray()) {
                if (list.size() == recentChordLimit)
                    break;
                if (const auto recent = RecentChord::fromArchiveValue(entry))
                    list.append(*recent);
            }
            recentChords = list;
        }
        const ArchiveValue customs = top->value(u"ccsck");
        if (customs.isArray()) {
            QList<ChordShortcut> list;
            for (const ArchiveValue &entry : customs.toArray()) {
                if (list.size() == customChordLimit)
                    break;
                if (const auto chord = ChordShortcut::fromArchiveValue(entry))
                    list.append(*chord);
            }
            customChordShortcuts = markedCustom(list);
        }
        const double reviewDate = top->value(u"lastrrtKey").toReal();
        if (reviewDate != 0.0)
            lastReviewRequestDate = reviewDate;
        lastFretCount = top->value(u"lastfretcountkey").toInteger();
        autoCursorAmount = top->value(u"autocursoramntkey").toInteger();
        playSounds = top->value(u"playsoundskey").toBool();
        defaultStringCount = top->value(u"defaultstringcountkey").toInteger();
        disableFlashNavArrows = top->value(u"flashnavkey").toBool();
        hideColHeaders = top->value(u"showcolheaderskey").toBool();
        freeScrollSetting = top->value(u"freescrollkey").toBool();
        appearanceSetting = top->value(u"appearancekey").toInteger();
        toolsMarkedSeen = top->value(u"toolsseenkey").toBool();
        cloudFolder = top->value(u"cloudfolderkey").stringValue();
    }
}

QByteArray SavedData::fileData() const
{
    ArchiveFields fields{
        {u"firsttabkey"_qs, ArchiveValue::fromBool(createdFirstTab)},
        {u"tabcreatecountkey"_qs, ArchiveValue::fromInteger(tabCreateCount)},
        {u"icloudakey"_qs, ArchiveValue::fromBool(icloudOff)},
        {u"notk"_qs, ArchiveValue::fromBool(notesOnTab)},
        {u"hasturnedicloudoff"_qs, ArchiveValue::fromBool(hasTurnedICloudOff)},
        {u"lastfretcountkey"_qs, ArchiveValue::fromInteger(lastFretCount)},
        {u"autocursoramntkey"_qs, ArchiveValue::fromInteger(autoCursorAmount)},
        {u"playsoundskey"_qs, ArchiveValue::fromBool(playSounds)},
        {u"defaultstringcountkey"_qs, ArchiveValue::fromInteger(defaultStringCount)},
        {u"flashnavkey"_qs, ArchiveValue::fromBool(disableFlashNavArrows)},
        {u"showcolheaderskey"_qs, ArchiveValue::fromBool(hideColHeaders)},
        {u"freescrollkey"_qs, ArchiveValue::fromBool(freeScrollSetting)},
        {u"appearancekey"_qs, ArchiveValue::fromInteger(appearanceSetting)},
        {u"toolsseenkey"_qs, ArchiveValue::fromBool(toolsMarkedSeen)},
    };
    if (recentChords && !recentChords->isEmpty()) {
        ArchiveArray entries;
        for (const RecentChord &recent : *recentChords)
            entries.push_back(recent.toArchiveValue());
        fields.emplace_back(u"rcsck"_qs, ArchiveValue::fromArray(std::move(entries)));
    }
    if (customChordShortcuts && !customChordShortcuts->isEmpty() && saveCustomChordsLocally) {
        ArchiveArray entries;
        for (const ChordShortcut &chord : *customChordShortcuts)
            entries.push_back(chord.toArchiveValue());
        fields.emplace_back(u"ccsck"_qs, ArchiveValue::fromArray(std::move(entries)));
    }
    if (lastReviewRequestDate)
        fields.emplace_back(u"lastrrtKey"_qs, ArchiveValue::fromReal(*lastReviewRequestDate));
    if (cloudFolder)
        fields.emplace_back(u"cloudfolderkey"_qs, ArchiveValue::fromString(*cloudFolder));

    return KeyedArchiver::archivedDataKeyedDirectly(fields);
}

void SavedData::save()
{
    AppPaths::ensureDirectory(QFileInfo(filePath).absolutePath());
    QSaveFile file(filePath);
    if (!file.open(QIODevice::WriteOnly))
        return;
    file.write(fileData());
    file.commit();
}

bool SavedData::addRecentChord(const ChordShortcut &chord)
{
    QList<ChordShortcut> list;
    for (const RecentChord &recent : recentChords.value_or(QList<RecentChord>()))
        list.append(ChordShortcut{recent.name, {}, recent.isCustom});
    if (!moveToFront(list, ChordShortcut{chord.name, {}, chord.isCustom}, recentChordLimit).changed)
        return false;
    QList<RecentChord> recents;
    for (const ChordShortcut &entry : list)
        recents.append(RecentChord{entry.name, entry.isCustom});
    recentChords = recents;
    return true;
}

void SavedData::saveCustomChord(const ChordShortcut &chord)
{
    QList<ChordShortcut> list = customChordShortcuts.value_or(QList<ChordShortcut>());
    ChordShortcut stored = chord;
    stored.isCustom = true;
    const auto result = moveToFront(list, stored, customChordLimit);
    // The newest chord saved again with the same shape: nothing to write.
    if (!result.changed && list.first().colItems == stored.colItems)
        return;
    // The new object stands first, so an edit of a chord of the same name takes its items.
    list.first() = stored;
    bool recentChanged = false;
    if (recentChords) {
        // A recent chord of that name now leads to the user's chord.
        for (RecentChord &recent : *recentChords) {
            if (recent.name == stored.name && !recent.isCustom) {
                recent.isCustom = true;
                recentChanged = true;
            }
        }
        // Two entries of one name may now be equal: the newer stays.
        QList<RecentChord> unique;
        for (const RecentChord &recent : std::as_const(*recentChords)) {
            if (!unique.contains(recent))
                unique.append(recent);
        }
        *recentChords = unique;
        if (result.dropped) {
            const RecentChord gone{result.dropped->name, result.dropped->isCustom};
            recentChanged = recentChords->removeAll(gone) > 0 || recentChanged;
        }
    }
    customChordShortcuts = list;
    storeCustomChords(recentChanged);
}

void SavedData::deleteCustomChord(const ChordShortcut &chord)
{
    if (customChordShortcuts)
        customChordShortcuts->removeAll(chord);
    bool recentChanged = false;
    if (recentChords)
        recentChanged = recentChords->removeAll(RecentChord{chord.name, chord.isCustom}) > 0;
    storeCustomChords(recentChanged);
}

void SavedData::storeCustomChords(bool recentChanged)
{
    storeCloudCustomChords(customChordShortcuts.value_or(QList<ChordShortcut>()));
    if (saveCustomChordsLocally || recentChanged)
        save();
}

QList<ChordShortcut> SavedData::currentCustomChords()
{
    QList<ChordShortcut> cloudChords = loadCloudCustomChords();
    if (!cloudChords.isEmpty())
        customChordShortcuts = markedCustom(cloudChords);
    return customChordShortcuts.value_or(QList<ChordShortcut>{});
}

QList<ChordShortcut> SavedData::loadCloudCustomChords() const
{
    if (!cloudStore)
        return {};
    QList<ChordShortcut> chords;
    for (const QVariant &entry : cloudStore->arrayForKey(customChordsKey)) {
        if (entry.typeId() != QMetaType::QByteArray)
            return {};
        const auto chord = ChordShortcut::fromArchivedData(entry.toByteArray());
        if (!chord)
            return {};
        chords.append(*chord);
    }
    return chords;
}

void SavedData::storeCloudCustomChords(const QList<ChordShortcut> &chords)
{
    if (!cloudStore)
        return;
    QVariantList entries;
    for (const ChordShortcut &chord : chords)
        entries.append(chord.archivedData());
    cloudStore->setObject(entries, customChordsKey);
}
