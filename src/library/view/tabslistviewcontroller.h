#pragma once

#include "library/taburlinfo.h"
#include "shell/screenregistry.h"
#include "shell/tabopenflow.h"

#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QTimer>
#include <QtQml/qqmlregistration.h>

#include <optional>

#include "dialoghost.h"
#include "library/lutegriddocument.h"

// One list of tabs: all of them, one label's, the unlabeled ones or the Deleted folder's, as
// the last scan found them, newest first. A touch on a row opens the tab through the open
// flow; the new-tab button makes "Untitled n".
class TabsListViewController : public QObject, public TabsListScreen, public TabOpenFlowScreen {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the window")
    Q_PROPERTY(QString title READ title CONSTANT)
    Q_PROPERTY(QStringList rowNames READ rowNames NOTIFY changed)
    Q_PROPERTY(QString emptyText READ emptyText NOTIFY changed)
    Q_PROPERTY(bool busy MEMBER busy NOTIFY changed)
    Q_PROPERTY(bool canMakeTabs READ canMakeTabs CONSTANT)

public:
    static inline const QString supportAddress = u"support@lutegrid.org"_qs;

    TabsListViewController(std::optional<QString> tagName, bool isUnlabeledList,
                           bool isDeletedFolder, DialogHost *dialogs, QObject *parent = nullptr);

    const std::optional<QString> tagName;
    const bool isUnlabeledList;
    const bool deletedFolder;
    QList<TabUrlInfo> existingTabUrls;
    std::optional<QString> pendingMsgToShow;
    bool busy = false;
    bool listReceived = false;
    TabOpenFlow tabOpenFlow;

    QString title() const;
    QStringList rowNames() const;
    QString emptyText() const;
    bool canMakeTabs() const { return !deletedFolder; }

    Q_INVOKABLE void openRow(int row);
    Q_INVOKABLE void newTab();

    // TabsListScreen.
    void refreshList(const std::optional<QList<TabUrlInfo>> &tabs) override;
    bool isDeletedFolder() const override { return deletedFolder; }
    void showMessage(const QString &text) override;
    // TabOpenFlowScreen.
    std::optional<QString> docsUrl() const override;
    void setActivity(bool on) override;
    void showStandbyDialog() override;
    void dismissStandbyDialog() override;
    void presentEditor(LutegridDocument *document) override;

Q_SIGNALS:
    void changed();
    void editorRequested(LutegridDocument *document);

private:
    QPointer<DialogHost> dialogs;
    QTimer pendingMessageTimer;
};
