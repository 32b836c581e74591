#pragma once

#include <QObject>
#include <QPointer>
#include <QString>
#include <QtQml/qqmlregistration.h>

class DialogHost;
class SceneWindow;

// The Menu dialog of the folder screen: the "Sync folder" switch (tabs in the folder a sync
// client keeps in step, or on this machine only), the choice of that folder, the appearance
// (system, light, dark), the guide and the back-up. The storage location changes when the
// dialog closes, not while the switch moves.
class MenuDialogViewController : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the folder screen")
    Q_PROPERTY(bool iCloudSwitch READ switchOn NOTIFY changed)
    Q_PROPERTY(int appearanceControl READ appearanceControl NOTIFY changed)
    Q_PROPERTY(QString syncFolder READ syncFolder NOTIFY changed)
    Q_PROPERTY(QString storageText READ storageText NOTIFY changed)

public:
    static inline const QString turnedOffWarning =
        u"You have turned off the use of the sync folder for storing your tabs. This means that "
        "tabs will be stored locally, on your device.\n\nPlease note that any tabs stored "
        "locally will be lost if you delete this app, so you may want to export back-ups every "
        "once in a while if you continue to keep the sync folder off."_qs;
    static inline const QString unavailableMessage =
        u"The sync folder is unavailable. Choose a sync folder below, or check that it is "
        "there."_qs;

    MenuDialogViewController(DialogHost *dialogs, SceneWindow *window, QObject *parent = nullptr);

    bool switchOn() const { return iCloudSwitch; }
    int appearanceControl() const;
    QString syncFolder() const;
    // Where the tabs are now.
    QString storageText() const;

    Q_INVOKABLE void setSwitch(bool on);
    Q_INVOKABLE void setAppearance(int segment);
    // The folder that the sync client keeps in step; tabs go in its "Documents".
    Q_INVOKABLE void chooseSyncFolder(const QString &path);
    // Settles the location; the warning about local tabs comes once in the app's life.
    Q_INVOKABLE void close();

Q_SIGNALS:
    void changed();
    void finished();

private:
    bool iCloudSwitch = false;
    QPointer<DialogHost> dialogs;
    SceneWindow *window;
};
