#pragma once

#include "editorscreenitem.h"
#include "library/icloudmanager.h"
#include "lutegridqmlimports.h"
#include "mainscene.h"
#include "shell/appmanager.h"
#include "surfacepalette.h"
#include "tabeditsurface.h"
#include "windowdriver.h"

#include <QDateTime>
#include <QFile>
#include <QQmlEngine>
#include <QRegularExpression>

#include <memory>

// The folder the tabs are listed from.
inline QString storageFolder()
{
    return iCloudManager::shared().iCloudContainerUrl.value_or(QString());
}

// The main window as a user drives it: a test class derives from this and QObject, calls
// start() in initTestCase, resetStorage() in init and closeWindow() in cleanup.
class AppWindow : public WindowDriver {
protected:
    std::unique_ptr<QQmlEngine> engine;
    std::unique_ptr<MainScene> scene;
    std::unique_ptr<QQuickWindow> window;
    // The editor an open call left on top, and its rows.
    TabEditViewController *c = nullptr;
    TabEditView *view = nullptr;

    QQuickWindow *drivenWindow() const override { return window.get(); }
    using WindowDriver::click;
    using WindowDriver::tap;

    // The touch device, the screenshot folder build/<shotFolder>, and the storage folder.
    void start(const QString &shotFolder)
    {
        startDriving(shotFolder);
        iCloudManager::shared().findCloudContainer();
        QTRY_VERIFY(iCloudManager::shared().iCloudContainerUrl);
    }

    // An empty storage folder, no open documents, the light look; and a QML handler that calls
    // what does not exist fails the test rather than silently doing nothing on screen.
    void resetStorage()
    {
        QDir(storageFolder()).removeRecursively();
        QDir().mkpath(storageFolder());
        AppManager::shared().activeDocUrls.clear();
        AppManager::shared().existingTabPaths.clear();
        SurfacePalette::instance()->setDark(false);
        QTest::failOnWarning(QRegularExpression(u"TypeError|ReferenceError|is not a function"_qs));
    }

    // The window on the tabs list.
    bool openWindow(QSize size = QSize(390, 844))
    {
        engine = std::make_unique<QQmlEngine>();
        scene = std::make_unique<MainScene>();
        window.reset(scene->loadWindow(*engine));
        if (!window)
            return false;
        window->resize(size);
        window->show();
        return QTest::qWaitForWindowExposed(window.get()) && stackIdle() &&
               QTest::qWaitFor([this] { return scene->topKind() == MainScene::TabsList; });
    }

    void closeWindow()
    {
        c = nullptr;
        view = nullptr;
        window.reset();
        scene.reset();
        engine.reset();
    }

    bool writeFile(const QString &name, const QByteArray &bytes, const QDateTime &modified = {})
    {
        QFile file(QDir(storageFolder()).filePath(name));
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) ||
            file.write(bytes) != bytes.size() || !file.flush())
            return false;
        return !modified.isValid() || file.setFileTime(modified, QFileDevice::FileModificationTime);
    }

    // The window on a list holding just this file, and the file opened: sets `c` and `view`.
    bool openTab(const QString &name, const QByteArray &bytes, QSize size = QSize(390, 844))
    {
        if (!writeFile(name, bytes, QDateTime::currentDateTime().addSecs(-60)) ||
            !openWindow(size) ||
            !QTest::qWaitFor([this] { return item(u"tabRow0"_qs) != nullptr; }))
            return false;
        tap(u"tabRow0"_qs);
        return editorOnTop();
    }

    // The window on the empty list and a new tab from it: sets `c` and `view`.
    bool openEditor(QSize size = QSize(390, 844)) { return openWindow(size) && openNewTab(); }

    // A new tab from the list's button: sets `c` and `view`.
    bool openNewTab()
    {
        tap(u"newTabButt"_qs);
        return editorOnTop();
    }

    // Sets `c` and `view` to the editor on top once the push is over.
    bool editorOnTop()
    {
        c = nullptr;
        view = nullptr;
        if (!QTest::qWaitFor([this] { return editor() != nullptr; }) || !stackIdle() ||
            !(c = editor()))
            return false;
        view = c->tabEditView();
        return true;
    }

    TabEditViewController *editor() const
    {
        auto *screen = findItem<EditorScreenItem>(window->contentItem());
        return screen ? screen->controller() : nullptr;
    }

    QQuickItem *item(const QString &name) const { return findItem(window->contentItem(), name); }

    bool stackIdle()
    {
        QQuickItem *stack = item(u"stack"_qs);
        return stack && QTest::qWaitFor([stack] { return !stack->property("busy").toBool(); });
    }
    void waitForStack() { QVERIFY(stackIdle()); }
    // The stack still, and past the layout pass after it.
    void settle()
    {
        waitForStack();
        QTest::qWait(50);
    }

    // Waits for the item to show (dialogs fade in), then taps its centre.
    void tap(const QString &name)
    {
        QTRY_VERIFY2(item(name), qPrintable(name));
        tap(centerOf(item(name)));
    }
    // A tap, and the screens still after it.
    void tapAndSettle(const QString &name)
    {
        tap(name);
        waitForStack();
    }

    void click(const QString &name)
    {
        QTRY_VERIFY2(item(name), qPrintable(name));
        click(centerOf(item(name)));
    }

    // The scene point of a spot in the rows: a shown row, a column, and a height in items below
    // the top of that row's lines.
    QPoint rowPoint(int shownRow, double column, double items) const
    {
        auto *surface = findItem<TabEditSurface>(window->contentItem());
        const TabEditView *v = surface->view();
        const QPointF content(v->tabLeftInset() + column * TabEditView::tabColumnWidth,
                              v->headerBandHeight() + shownRow * v->tabRowPitch() +
                                  items * v->itemHeight());
        return surface->mapToScene(content - v->contentOffset).toPoint();
    }
};
