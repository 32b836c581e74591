#pragma once

#include "library/taburlinfo.h"

#include <QList>
#include <QtGlobal>
#include <QString>
#include <QStringList>

#include <optional>

// What the application manager asks of a tab list screen.
class TabsListScreen {
public:
    virtual ~TabsListScreen() = default;
    // A scan's result, or nothing when the storage folder isn't known or can't be had.
    virtual void refreshList(const std::optional<QList<TabUrlInfo>> &tabs) = 0;
    virtual bool isDeletedFolder() const = 0;
    virtual void showMessage(const QString &text) = 0;
    // A file handed over from outside: the import dialog for it. A screen that only shows a
    // scan, as a benchmark's, takes none.
    virtual void startImport(const QString &path) { Q_UNUSED(path) }
    // Opens a tab of the storage folder by its file name, as a touch on its row does.
    virtual void openTabNamed(const QString &fileName) { Q_UNUSED(fileName) }
};

// One window, as the application manager sees it. Windows join the registry of AppManager when
// they are made and leave it when they go, in the platform's window order.
class SceneWindow {
public:
    enum class TopScreen { Other, TabsList, Folders };

    virtual ~SceneWindow() = default;
    // The file of the editor at the root of the window's navigation stack, if there is one.
    virtual std::optional<QString> rootEditorFileURL() const = 0;
    virtual TopScreen topScreen() const = 0;
    virtual TabsListScreen *topTabsList() const = 0;
    // Puts a list of all tabs on top of the folder screen, without animation.
    virtual TabsListScreen *pushAllTabsList() = 0;
    virtual void requestSceneSessionActivation() = 0;
    // The tuning of the tab this window shows: its own tab for a tab window, else the first
    // editor's in its navigation stack.
    virtual std::optional<QStringList> shownTabStringNotes() const = 0;
    // 0 follows the system, 1 light, 2 dark.
    virtual void setOverrideUserInterfaceStyle(int style) = 0;
};
