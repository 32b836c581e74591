#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QMap>
#include <QString>
#include <QStringList>

#include <optional>

class CloudKeyValueStore;
class SavedData;

// The folder labels: a map from a tab's plain name to its labels. Each storage location has a
// store of its own, chosen by SavedData::icloudOff at every call: the key-value store that
// travels with the synced folder, or "tabtag.plist" in the library folder, read once.
class TabTagStore {
public:
    using TagMap = QMap<QString, QStringList>;

    static inline const QString cloudKey = u"tabtags"_qs;
    static inline const QString localFileKey = u"localtgmpKey"_qs;

    TabTagStore(SavedData &savedData, CloudKeyValueStore &cloudStore);

    TagMap currentTagMap();
    void setTabTags(const QString &name, const QStringList &tags);
    void removeTabTags(const QString &name);
    void moveTabTags(const QString &oldName, const QString &newName, const QStringList &tags);
    void removeTagFromAllTabs(const std::optional<QString> &tag);
    // Every label in use, once, in plain string order.
    QStringList allTagNames();

    // The local file: reads it the first time, then keeps the map in SavedData.
    TagMap localTagMap();
    void writeLocalTagMap(const TagMap &map);

    // The local file's form: a keyed archive whose one entry is the keyed archive of the map.
    static QByteArray localFileData(const TagMap &map);
    // Nothing if the outer archive is unreadable; an inner archive that isn't a map of lists
    // of strings gives `innerError`.
    static std::optional<TagMap> tagMapFromLocalFileData(QByteArrayView bytes,
                                                         bool *innerError = nullptr);

private:
    TagMap cloudTagMap() const;
    void writeTagMap(const TagMap &map);

    SavedData &savedData;
    CloudKeyValueStore &cloudStore;
};
