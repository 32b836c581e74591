// Prints the time from a fret touch to the repainted column on screen, and the app's cold
// start to the first shown frame of the tab list. Run with QT_QPA_PLATFORM=offscreen and
// QT_QUICK_BACKEND=software for figures comparable between machines.

#include "editorscreenitem.h"
#include "fretboarditem.h"
#include "library/icloudmanager.h"
#include "lutegridqmlimports.h"
#include "mainscene.h"
#include "model/tabfileformat.h"
#include "shell/appmanager.h"
#include "services/saveddata.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QPointingDevice>
#include <QProcess>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <cstdio>
#include <memory>

namespace {

double median(QList<double> values)
{
    std::sort(values.begin(), values.end());
    return values.isEmpty() ? 0.0 : values[values.size() / 2];
}

double percentile(QList<double> values, double p)
{
    std::sort(values.begin(), values.end());
    return values.isEmpty() ? 0.0 : values[qsizetype((values.size() - 1) * p)];
}

template <typename T> T *findType(QQuickItem *item)
{
    if (auto *found = qobject_cast<T *>(item))
        return found;
    const QList<QQuickItem *> children = item->childItems();
    for (QQuickItem *child : children) {
        if (T *found = findType<T>(child))
            return found;
    }
    return nullptr;
}

void fillLibrary(const QString &folder, int count)
{
    QDir().mkpath(folder);
    for (int i = 0; i < count; ++i) {
        TabData tab(u"Song "_qs + QString::number(i), 6);
        for (int r = 0; r < 8; ++r)
            tab.tabRowDatas.append(TabRowData(32, 6));
        QFile file(QDir(folder).filePath(tab.title + u".lgrdi"_qs));
        if (file.open(QIODevice::WriteOnly))
            file.write(documentData(tab));
    }
}

void benchFretTouch(const QSize &size, const char *name)
{
    QQmlEngine engine;
    MainScene scene;
    std::unique_ptr<QQuickWindow> window(scene.loadWindow(engine));
    if (!window)
        return;
    window->resize(size);
    window->show();
    if (!QTest::qWaitForWindowExposed(window.get()))
        qWarning("the window was not exposed");
    QTest::qWait(400);
    TabsListViewController *list = scene.topList();
    list->newTab();
    QTest::qWait(600);
    auto *screen = findType<EditorScreenItem>(window->contentItem());
    auto *board = findType<FretboardItem>(window->contentItem());
    if (!screen || !board || !screen->controller()) {
        std::printf("%s: editor not shown\n", name);
        return;
    }
    TabEditViewController *editor = screen->controller();
    QPointingDevice *touch = QTest::createTouchDevice();

    QElapsedTimer clock;
    qint64 touched = 0;
    qint64 handled = 0;
    qint64 syncStarted = -1;
    qint64 swapped = -1;
    QObject::connect(
        window.get(), &QQuickWindow::beforeSynchronizing, window.get(),
        [&] {
            if (touched > 0 && syncStarted < 0)
                syncStarted = clock.nsecsElapsed();
        },
        Qt::DirectConnection);
    QObject::connect(
        window.get(), &QQuickWindow::frameSwapped, window.get(),
        [&] {
            if (touched > 0 && swapped < 0)
                swapped = clock.nsecsElapsed();
        },
        Qt::DirectConnection);

    QList<double> work;
    QList<double> latency;
    const Fretboard *logic = board->board();
    for (int i = 0; i < 60; ++i) {
        const int stringNum = 1 + i % 6;
        const int fretNum = 1 + i % 4;
        const QPoint point = board
                                 ->mapToScene(QPointF((fretNum - 0.5) * logic->fretSpacing,
                                                      (stringNum - 0.5) * logic->stringTouchHeight))
                                 .toPoint();
        editor->tabEditView()->setEditPosition(i % 30, 0);
        QTest::qWait(30);
        syncStarted = swapped = -1;
        clock.start();
        touched = 1;
        QTest::touchEvent(window.get(), touch).press(0, point, window.get());
        handled = clock.nsecsElapsed();
        if (!QTest::qWaitFor([&] { return swapped >= 0; }, 1000))
            qWarning("no frame after the touch");
        touched = 0;
        QTest::touchEvent(window.get(), touch).release(0, point, window.get());
        if (swapped < 0 || syncStarted < 0)
            continue;
        // The work of the frame: the touch's handling, then the scene's sync and render;
        // between them the platform's frame timer waits for the next vertical blank.
        work.append((handled + (swapped - syncStarted)) / 1e6);
        latency.append(swapped / 1e6);
    }
    std::printf("%-8s fret touch to repainted column: work median %.2f ms, p90 %.2f ms "
                "(target < 8 ms); touch to frame shown median %.2f ms including the frame "
                "timer, %lld samples\n",
                name, median(work), percentile(work, 0.9), median(latency),
                static_cast<long long>(work.size()));
}

void benchColdStart(const QString &program)
{
    QTemporaryDir home;
    fillLibrary(QDir(home.path()).filePath(u"Documents/Local"_qs), 200);
    QList<double> wall;
    QList<double> inside;
    for (int run = 0; run < 7; ++run) {
        QProcess process;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(u"LUTEGRID_HOME"_qs, home.path());
        env.insert(u"LUTEGRID_FIRST_FRAME_EXIT"_qs, u"1"_qs);
        if (!env.contains(u"QT_QPA_PLATFORM"_qs))
            env.insert(u"QT_QPA_PLATFORM"_qs, u"offscreen"_qs);
        if (!env.contains(u"QT_QUICK_BACKEND"_qs))
            env.insert(u"QT_QUICK_BACKEND"_qs, u"software"_qs);
        process.setProcessEnvironment(env);
        QElapsedTimer clock;
        clock.start();
        process.start(program, {});
        double firstFrame = -1;
        while (process.state() != QProcess::NotRunning || process.canReadLine()) {
            if (!process.canReadLine() && !process.waitForReadyRead(5000))
                break;
            while (process.canReadLine()) {
                const QByteArray line = process.readLine().trimmed();
                if (line.startsWith("first-frame-ms ")) {
                    firstFrame = line.mid(15).toDouble();
                    wall.append(clock.nsecsElapsed() / 1e6);
                }
            }
            if (firstFrame >= 0)
                break;
        }
        process.waitForFinished(5000);
        if (firstFrame >= 0 && run > 0)
            inside.append(firstFrame);
    }
    if (wall.size() > 1)
        wall.removeFirst();
    std::printf("cold start to the list's first frame (200 tabs): median %.1f ms from spawn, "
                "%.1f ms from main() (target < 500 ms), %lld runs\n",
                median(wall), median(inside), static_cast<long long>(inside.size()));
}

} // namespace

int main(int argc, char *argv[])
{
    QTemporaryDir home;
    qputenv("LUTEGRID_HOME", home.path().toLocal8Bit());
    QGuiApplication app(argc, argv);
    SavedData::shared().autoCursorAmount = 1;
    SavedData::shared().playSounds = false;
    iCloudManager::shared().findCloudContainer();
    if (!QTest::qWaitFor([] { return iCloudManager::shared().iCloudContainerUrl.has_value(); }))
        qWarning("no storage folder");

    benchFretTouch(QSize(390, 844), "phone");
    benchFretTouch(QSize(1280, 800), "desktop");
    benchColdStart(QString::fromUtf8(LUTEGRID_APP_PROGRAM));
    return 0;
}
