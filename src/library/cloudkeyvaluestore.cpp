#include "cloudkeyvaluestore.h"

#include "shell/apppaths.h"

#include <QDir>
#include <QVariantMap>

struct CloudKeyValueStore::Private {
    QString folder;
    QVariantMap values;
};

CloudKeyValueStore &CloudKeyValueStore::shared()
{
    static CloudKeyValueStore store(AppPaths::libraryDirectory());
    return store;
}

CloudKeyValueStore::CloudKeyValueStore(const QString &folder, QObject *parent)
    : QObject(parent), d(new Private{folder, {}})
{
}

CloudKeyValueStore::~CloudKeyValueStore()
{
    delete d;
}

void CloudKeyValueStore::setFolder(const QString &folder)
{
    d->folder = folder;
}

QString CloudKeyValueStore::folder() const
{
    return d->folder;
}

QString CloudKeyValueStore::filePath() const
{
    return QDir(d->folder).filePath(fileName);
}

QVariant CloudKeyValueStore::objectForKey(const QString &key) const
{
    return d->values.value(key);
}

QVariantMap CloudKeyValueStore::dictionaryForKey(const QString &key) const
{
    return d->values.value(key).toMap();
}

QVariantList CloudKeyValueStore::arrayForKey(const QString &key) const
{
    return d->values.value(key).toList();
}

void CloudKeyValueStore::setObject(const QVariant &value, const QString &key)
{
    d->values.insert(key, value);
}

void CloudKeyValueStore::removeObjectForKey(const QString &key)
{
    d->values.remove(key);
}

bool CloudKeyValueStore::synchronize()
{
    return true;
}
