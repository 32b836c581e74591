#pragma once

#include <QByteArrayView>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVariantMap>

#include <optional>

// A small store of keys and values that the user's sync client carries between machines: a
// binary property list in a folder. Values are property-list types as QVariant: QString,
// QByteArray, qint64, double, bool, QVariantList and QVariantMap. Every change is written at
// once; changes by other processes and sync clients, and their conflict copies, are taken in
// key by key as they appear.
class CloudKeyValueStore : public QObject
{
    Q_OBJECT

public:
    enum ChangeReason {
        ServerChange = 0,
        InitialSyncChange = 1,
        QuotaViolationChange = 2,
    };
    static constexpr qint64 maximumBytes = 1024 * 1024;
    static constexpr int maximumKeys = 1024;
    static inline const QString fileName = u"lutegrid-keyvalues.plist"_qs;

    // The process-wide store, in the library folder until a synced folder is chosen.
    static CloudKeyValueStore &shared();

    explicit CloudKeyValueStore(const QString &folder, QObject *parent = nullptr);
    ~CloudKeyValueStore() override;

    // The values of a store file, or nothing if its bytes are unreadable or pass the quota.
    static std::optional<QVariantMap> valuesFromFileData(QByteArrayView bytes);
    // The file for these values, or nothing if they pass the quota. What it writes always
    // reads back through valuesFromFileData.
    static std::optional<QByteArray> fileDataForValues(const QVariantMap &values);

    // Moves the store to another folder and loads what lies there.
    void setFolder(const QString &folder);
    QString folder() const;
    QString filePath() const;

    QVariant objectForKey(const QString &key) const;
    QVariantMap dictionaryForKey(const QString &key) const;
    QVariantList arrayForKey(const QString &key) const;
    // Stores the value as it will read back (integers as qint64, lists as QVariantList); an
    // invalid QVariant removes the key. A value that would pass the quota is not stored.
    void setObject(const QVariant &value, const QString &key);
    void removeObjectForKey(const QString &key);
    // Writes what changed and picks up outside changes; false if the file could not be written.
    bool synchronize();

Q_SIGNALS:
    // Always from the event loop. ServerChange: values changed outside (keys that differ,
    // removed ones included). InitialSyncChange: a folder's existing file was loaded.
    // QuotaViolationChange: the key whose value was refused.
    void didChangeExternally(int reason, const QStringList &changedKeys);

private:
    struct Private;
    Private *d;
};
