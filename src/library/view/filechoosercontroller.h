#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantList>
#include <QtQml/qqmlregistration.h>

// A file or folder chooser drawn like the rest of the app, so it works the same with touch,
// mouse and keyboard and in either theme: one folder's entries, folders first, a way up.
class FileChooserController : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString folder READ folder NOTIFY changed)
    Q_PROPERTY(QVariantList entries READ entries NOTIFY changed)
    Q_PROPERTY(bool choosingFolder MEMBER choosingFolder NOTIFY changed)
    Q_PROPERTY(QStringList suffixes MEMBER suffixes NOTIFY changed)

public:
    explicit FileChooserController(QObject *parent = nullptr);

    // Choosing a folder lists folders only; else files with one of `suffixes` (any, if empty).
    bool choosingFolder = false;
    QStringList suffixes;

    QString folder() const { return current; }
    // Per entry: "name", "isDir".
    QVariantList entries() const;

    Q_INVOKABLE void setFolder(const QString &path);
    Q_INVOKABLE void up();
    // A folder is entered; a file is chosen.
    Q_INVOKABLE void activate(int index);
    Q_INVOKABLE void chooseCurrentFolder();

Q_SIGNALS:
    void changed();
    void chosen(const QString &path);

private:
    struct Entry {
        QString name;
        bool isDir;
    };
    void list();

    QString current;
    QList<Entry> listed;
};
