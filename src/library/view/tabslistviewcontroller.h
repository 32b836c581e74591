#pragma once

#include "library/taburlinfo.h"
#include "model/tabdata.h"
#include "shell/screenregistry.h"
#include "shell/tabopenflow.h"

#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QTimer>
#include <QVariantList>
#include <QtQml/qqmlregistration.h>

#include <optional>

#include "dialoghost.h"
#include "library/lutegriddocument.h"

class ImportDialogViewController;
class TabInfoViewController;
Q_MOC_INCLUDE("importdialogviewcontroller.h")
Q_MOC_INCLUDE("tabinfoviewcontroller.h")

// One list of tabs: all of them, one label's, the unlabeled ones or the Deleted folder's, as
// the last scan found them, newest first or by name, narrowed by the search text. A touch on
// a row opens the tab through the open flow (in Deleted: asks to restore it); the row's
// swipe deletes it, its info button opens the tab info dialog for rename, copy and labels.
class TabsListViewController : public QObject, public TabsListScreen, public TabOpenFlowScreen {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the window")
    Q_PROPERTY(QString title READ title CONSTANT)
    Q_PROPERTY(QStringList importSuffixes READ importSuffixes CONSTANT)
    Q_PROPERTY(QStringList rowNames READ rowNames NOTIFY changed)
    Q_PROPERTY(QVariantList rows READ rows NOTIFY changed)
    Q_PROPERTY(QString emptyText READ emptyText NOTIFY changed)
    Q_PROPERTY(bool emptyHasHelp READ emptyHasHelp NOTIFY changed)
    Q_PROPERTY(bool busy MEMBER busy NOTIFY changed)
    Q_PROPERTY(bool canMakeTabs READ canMakeTabs CONSTANT)
    Q_PROPERTY(bool deletedList READ isDeletedFolder CONSTANT)
    Q_PROPERTY(bool canEditRows READ canEditRows NOTIFY changed)
    Q_PROPERTY(QString searchText READ searchText WRITE setSearchText NOTIFY changed)
    Q_PROPERTY(bool sortAlphabeticalOn MEMBER sortAlphabeticalOn NOTIFY changed)

public:
    static inline const QString supportAddress = u"support@lutegrid.org"_qs;

    TabsListViewController(std::optional<QString> tagName, bool isUnlabeledList,
                           bool isDeletedFolder, DialogHost *dialogs, QObject *parent = nullptr);

    const std::optional<QString> tagName;
    const bool isUnlabeledList;
    const bool deletedFolder;
    QList<TabUrlInfo> existingTabUrls;
    // The search result; while present it stands for the list in every row operation.
    std::optional<QList<TabUrlInfo>> filteredTabUrls;
    std::optional<TabUrlInfo> deleteTabUrlInfo;
    std::optional<TabUrlInfo> restoreTabUrlInfo;
    std::optional<QString> pendingMsgToShow;
    bool sortAlphabeticalOn = false;
    bool openImportUponAppear = false;
    bool busy = false;
    bool listReceived = false;
    TabOpenFlow tabOpenFlow;

    QString title() const;
    static QStringList importSuffixes();
    QStringList rowNames() const;
    // Per row: "name", "detail" (when it was changed, its labels), "tags".
    QVariantList rows() const;
    QString emptyText() const;
    bool emptyHasHelp() const;
    bool canMakeTabs() const { return !deletedFolder; }
    bool canEditRows() const;
    const QList<TabUrlInfo> &shownTabUrls() const;
    QString searchText() const { return search; }
    void setSearchText(const QString &text);

    Q_INVOKABLE void openRow(int row);
    // The new-tab button; in the Deleted list it is "Clear".
    Q_INVOKABLE void newTab();
    Q_INVOKABLE void deleteRow(int row);
    Q_INVOKABLE void showSortDialog();
    Q_INVOKABLE void showHelp();
    // Pull to refresh.
    Q_INVOKABLE void refreshTriggered();
    // The tab info dialog for a row, made for the page to show.
    Q_INVOKABLE TabInfoViewController *tabInfoFor(int row);
    // The import dialog for a file chosen or handed over.
    Q_INVOKABLE void startImport(const QString &path) override;
    // The row's tab in a window of its own; a window already editing it comes forward instead.
    Q_INVOKABLE void openRowInNewWindow(int row);
    // The import picker, now if the folder is known, else once it is.
    void showImportPicker();

    // Called by the tab info dialog: a message for its error label, or nothing.
    std::optional<QString> updateTabInfo(const QString &fileName,
                                         const std::optional<QString> &newName, bool makeCopy,
                                         const QStringList &tags);
    // Called by the import dialog.
    std::optional<QString> importTabData(const TabData &tabData);

    // TabsListScreen.
    void refreshList(const std::optional<QList<TabUrlInfo>> &tabs) override;
    bool isDeletedFolder() const override { return deletedFolder; }
    void showMessage(const QString &text) override;
    void openTabNamed(const QString &fileName) override;
    // TabOpenFlowScreen.
    std::optional<QString> docsUrl() const override;
    void setActivity(bool on) override;
    void showStandbyDialog() override;
    void dismissStandbyDialog() override;
    void presentEditor(LutegridDocument *document) override;
    void dismissSearchKeyboard() override { Q_EMIT searchKeyboardDismissed(); }

Q_SIGNALS:
    void changed();
    void editorRequested(LutegridDocument *document);
    // The screen goes: its folder label was removed.
    void popRequested();
    void importRequested(ImportDialogViewController *dialog);
    void importPickerRequested();
    // A tab window for the tab at this path.
    void newWindowRequested(const QString &path);
    void searchKeyboardDismissed();

private:
    void runSearch();
    static QVariant rowFor(const TabUrlInfo &info);
    void askDelete();
    void confirmedDelete();
    void restoreConfirmed();
    void emptyDeleted();

    QPointer<DialogHost> dialogs;
    QTimer pendingMessageTimer;
    QString search;
    QVariantList existingRows;
    // The plain names in lower case, as the search compares them.
    QStringList existingNames;
    QVariantList filteredRows;
};
