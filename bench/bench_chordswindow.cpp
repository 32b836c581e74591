// Prints the time from a typed search character to the chord results shown on screen, in the
// editor window of an eight-string tab (the largest table, fitted) with 50 custom chords: the
// search itself, the buttons made and the frame rendered. The search's delay is not counted.
// Run with QT_QPA_PLATFORM=offscreen and QT_QUICK_BACKEND=software.

#include "editorscreenitem.h"
#include "library/icloudmanager.h"
#include "tabslistviewcontroller.h"
#include "lutegridqmlimports.h"
#include "mainscene.h"
#include "services/saveddata.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <cstdio>
#include <memory>

namespace {

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

double median(QList<double> values)
{
    std::sort(values.begin(), values.end());
    return values.isEmpty() ? 0.0 : values[values.size() / 2];
}

void benchSearch(const QSize &size, const char *name)
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
    scene.topList()->newTab();
    QTest::qWait(600);
    auto *screen = findType<EditorScreenItem>(window->contentItem());
    if (!screen || !screen->controller()) {
        std::printf("%s: editor not shown\n", name);
        return;
    }
    TabEditViewController *editor = screen->controller();
    ChordShortcutMode &mode = *editor->chordShortcuts();
    editor->toggleChordShortcutMode();
    QTest::qWait(200);

    QElapsedTimer clock;
    bool waiting = false;
    qint64 syncStarted = -1;
    qint64 swapped = -1;
    QObject::connect(
        window.get(), &QQuickWindow::beforeSynchronizing, window.get(),
        [&] {
            if (waiting && syncStarted < 0)
                syncStarted = clock.nsecsElapsed();
        },
        Qt::DirectConnection);
    QObject::connect(
        window.get(), &QQuickWindow::frameSwapped, window.get(),
        [&] {
            if (waiting && swapped < 0)
                swapped = clock.nsecsElapsed();
        },
        Qt::DirectConnection);

    const QStringList typed{u"a"_qs, u"am"_qs, u"a minor"_qs, u"custom"_qs, u"mine4"_qs};
    QList<double> work;
    qsizetype shown = 0;
    for (int i = 0; i < 40; ++i) {
        mode.searchChords(QString());
        QTest::qWait(30);
        syncStarted = swapped = -1;
        clock.start();
        waiting = true;
        mode.searchChords(typed[i % typed.size()]);
        const qint64 handled = clock.nsecsElapsed();
        if (!QTest::qWaitFor([&] { return swapped >= 0; }, 1000))
            qWarning("no frame after the search");
        waiting = false;
        shown = std::max(shown, mode.searchResultButtons.size());
        if (swapped >= 0 && syncStarted >= 0)
            work.append((handled + (swapped - syncStarted)) / 1e6);
    }
    std::printf("%-8s %lld chords, up to %lld results shown: typed character to results on "
                "screen, work median %.2f ms (target < 8 ms), %lld samples\n",
                name, static_cast<long long>(mode.chords().size()),
                static_cast<long long>(shown), median(work),
                static_cast<long long>(work.size()));
}

} // namespace

int main(int argc, char *argv[])
{
    QTemporaryDir home;
    qputenv("LUTEGRID_HOME", home.path().toLocal8Bit());
    QGuiApplication app(argc, argv);
    SavedData &saved = SavedData::shared();
    saved.defaultStringCount = 8;
    for (int i = 0; i < saved.customChordLimit; ++i) {
        saved.saveCustomChord(ChordShortcut{
            u"Mine%1"_qs.arg(i), QList<ColumnItemType>(8, ColumnItemType::note(i % 12)), true});
    }
    iCloudManager::shared().findCloudContainer();
    if (!QTest::qWaitFor([] { return iCloudManager::shared().iCloudContainerUrl.has_value(); }))
        qWarning("no storage folder");
    benchSearch(QSize(390, 844), "phone");
    benchSearch(QSize(1280, 800), "desktop");
    return 0;
}
