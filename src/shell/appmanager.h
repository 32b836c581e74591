#pragma once

#include "library/tabtagstore.h"
#include "library/taburlinfo.h"
#include "screenregistry.h"
#include "model/viewmodeoptions.h"

#include <QList>
#include <QMap>
#include <QObject>
#include <QString>
#include <QStringList>

#include <optional>

class LutegridDocument;

// The one process-wide coordinator: which tabs exist in the storage folder, which documents
// are alive, which list screen hears of changes, and how a new tab is named and made.
class AppManager : public QObject {
    Q_OBJECT

public:
    static AppManager &shared();

    TabsListScreen *topTabViewController = nullptr;
    bool openedEditorThisSession = false;
    bool rateRequestShownThisSession = false;
    // File names with extension, without folder, from the last scan, in list order.
    QStringList existingTabPaths;
    // Live documents by file name, so that two routes to one file share one document.
    QMap<QString, LutegridDocument *> activeDocUrls;
    int overrideLightDarkSetting = 0;
    QMap<QString, ViewModeDisplayOptions> viewDisplayOptionsMap;
    // Review requests made in this run. The platform offers none, so making one is a count.
    int reviewRequestsMade = 0;

    void refreshTabs();
    void refreshDeletedTabs();
    // The "Deleted" folder inside the storage folder, made if it is missing.
    std::optional<QString> deletedFolderUrl();
    std::optional<QString> newTabUrl(const QString &name) const;
    QString nextUntitledName() const;

    LutegridDocument *documentFor(const QString &url);
    // Follows the document's file wherever it goes.
    void track(LutegridDocument *document);
    void documentMoved(const std::optional<QString> &oldUrl, const QString &newUrl,
                       LutegridDocument *document);
    void pruneActiveDocs(const QStringList &urls);
    // A new tab, saved at once, labelled when made in a label's list. Nothing without a
    // storage folder. The caller makes the editor and sets the document's changeListener.
    LutegridDocument *makeNewTab(const std::optional<QString> &tagName = std::nullopt);

    // A scan of one folder, newest first. `withTags` takes each tab's labels.
    QList<TabUrlInfo> scanFolder(const QString &folder, bool withTags);

    void applyAppearance(int style, SceneWindow *window = nullptr);
    QStringList stringNotesFor(const SceneWindow *window) const;

    void registerWindow(SceneWindow *window);
    void unregisterWindow(SceneWindow *window);
    bool isOpenInEditor(const QString &fileName) const;
    bool activateEditorScene(const QString &url);
    // With `window`, the window of the list found is put there.
    TabsListScreen *foremostTabsList(SceneWindow **window = nullptr);
    // Files handed over from outside; only the first counts. A tab of the storage folder opens
    // in the foremost list, any other file goes to that list's import.
    void openUrlContexts(const QStringList &urls);

    TabTagStore::TagMap currentTagMap();
    void setTabTags(const QString &name, const QStringList &tags);
    void removeTabTags(const QString &name);
    void moveTabTags(const QString &oldName, const QString &newName, const QStringList &tags);
    void removeTagFromAllTabs(const std::optional<QString> &tag);
    QStringList allTagNames();

    // The review-request rule, asked by a list screen after it has shown a scan.
    void requestReviewIfDue();

    void ubiquitousKeyValueStoreDidChange(int reason);

Q_SIGNALS:
    void tabsRefreshed();
    void reviewRequested();

private:
    AppManager();
    TabTagStore tagStore() const;

    QList<SceneWindow *> windows;
};
