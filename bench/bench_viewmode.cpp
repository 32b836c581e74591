// View mode: how soon pressing play is heard, and how soon a tick shows on screen.
#include "benchtab.h"
#include "benchutil.h"
#include "library/lutegriddocument.h"
#include "lutegridqmlimports.h"
#include "sound/sampler.h"
#include "sound/soundmanager.h"
#include "sound/soundoutput.h"
#include "viewmode/tabviewcontroller.h"
#include "viewmode/viewmodesoundpreparer.h"
#include "iconprovider.h"
#include "viewmodescreenitem.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

double median(std::vector<double> values)
{
    if (values.empty())
        return -1;
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

// From setPlaying(true) to the first frame of the first note leaving the mixer, plus the
// output's own latency: the time until it reaches the sink. `waitForReady` lets the screen get
// the sound ready first, as it does while the user reads; without it play is pressed at once.
struct PlayFigures {
    double call = 0;   // setPlaying(true) until the note is queued for the mixer
    double mixer = 0;  // queued until its first frame has left the mixer
    double output = 0; // the output's own latency to the sink
    double settle = 0; // opening until the stream has played 100 ms
    double total() const { return call + mixer + output; }
};

PlayFigures playToSink(const TabData &tab, bool waitForReady)
{
    SoundManager sound;
    TabViewController view(tab, QPointF(0, 0));
    view.columnPlayer = [&sound](const QList<ColumnItemType> &items, const QStringList &notes,
                                 bool silent) { sound.playColumnItems(items, notes, silent); };
    view.load(std::nullopt, SurfaceSettings{});
    QElapsedTimer opened;
    opened.start();
    ViewModeSoundPreparer preparer(sound, tab, QPoint(0, 0));
    double settle = 0;
    if (waitForReady) {
        preparer.waitUntilReady(10000);
        // The stream settles while the user reads the page: a new stream pulls at its steady
        // pace only once it has played a little.
        QElapsedTimer settling;
        settling.start();
        while (sound.sampler().framesRendered() < quint64(sound.sampler().sampleRate() / 10) &&
               settling.elapsed() < 5000)
            QThread::usleep(500);
        settle = double(opened.nsecsElapsed()) / 1e6;
        QThread::msleep(200);
    }
    const qint64 before = sound.sampler().lastNoteDelayNs();
    QElapsedTimer pressed;
    pressed.start();
    view.setPlaying(true);
    const double call = double(pressed.nsecsElapsed()) / 1e6;
    while (sound.sampler().lastNoteDelayNs() == before && pressed.elapsed() < 5000)
        QThread::usleep(100);
    view.setPlaying(false);
    // The output opens on a thread of its own: it must be done before the manager goes.
    preparer.waitUntilReady(10000);
    return {call, double(sound.sampler().lastNoteDelayNs()) / 1e6,
            std::max(0.0, sound.output().outputLatency()) * 1e3, settle};
}

void measurePlay(const char *label, int rows)
{
    const TabData tab = makeBenchmarkTab(rows);
    std::vector<double> ready, call, mixer, output, settle, atOnce, atOnceCall;
    for (int i = 0; i < 7; ++i) {
        const PlayFigures r = playToSink(tab, true);
        ready.push_back(r.total());
        call.push_back(r.call);
        mixer.push_back(r.mixer);
        output.push_back(r.output);
        settle.push_back(r.settle);
        const PlayFigures o = playToSink(tab, false);
        atOnce.push_back(o.total());
        atOnceCall.push_back(o.call);
    }
    std::printf("%s:\n", label);
    printFigure("  play to sink, sound ready", median(ready), "ms median");
    printFigure("", *std::max_element(ready.begin(), ready.end()), "ms worst");
    printFigure("    of which setPlaying call", median(call), "ms median");
    printFigure("    of which mixer pickup", median(mixer), "ms median");
    printFigure("    of which output latency", median(output), "ms median");
    printFigure("  opening until the stream runs", median(settle), "ms median");
    printFigure("  play to sink, pressed on opening", median(atOnce), "ms median");
    printFigure("    of which setPlaying call", median(atOnceCall), "ms median");
}

// From a tick to the frame that shows the moved highlight, in the real screen.
void measureTickToFrame(int rows)
{
    QTemporaryDir dir;
    LutegridDocument document(dir.filePath(u"Bench.lgrdi"_qs), makeBenchmarkTab(rows));
    QQmlEngine engine;
    engine.addImageProvider(u"icon"_qs, new IconProvider);
    QQuickWindow window;
    window.resize(390, 844);
    engine.addImportPath(u"qrc:/"_qs);
    QQmlComponent component(&engine, QUrl(u"qrc:/Lutegrid/ViewMode/TabViewScreen.qml"_qs));
    auto *screen = qobject_cast<ViewModeScreenItem *>(
        component.createWithInitialProperties({{u"document"_qs, QVariant::fromValue<QObject *>(&document)},
                                                {u"startRow"_qs, 0}}));
    if (!screen) {
        std::printf("tick to frame: the screen did not load: %s\n",
                    qPrintable(component.errorString()));
        return;
    }
    screen->setParentItem(window.contentItem());
    screen->setSize(QSizeF(390, 844));
    window.show();
    if (!QTest::qWaitForWindowExposed(&window))
        std::fprintf(stderr, "the window was never shown\n");
    QTest::qWait(500);
    TabViewController *view = screen->controller();
    view->columnPlayer = nullptr; // the picture only
    std::vector<double> times;
    std::vector<double> frames;
    for (int i = 0; i < 60; ++i) {
        bool swapped = false;
        qint64 syncAt = -1;
        QElapsedTimer timer;
        auto sync = QObject::connect(&window, &QQuickWindow::beforeSynchronizing, &window,
                                     [&] { if (syncAt < 0) syncAt = timer.nsecsElapsed(); },
                                     Qt::DirectConnection);
        auto connection = QObject::connect(&window, &QQuickWindow::frameSwapped,
                                           [&swapped] { swapped = true; });
        timer.start();
        view->moveHighlightColumn(+1);
        while (!swapped && timer.elapsed() < 1000)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 1);
        const qint64 end = timer.nsecsElapsed();
        times.push_back(double(end) / 1e6);
        if (syncAt >= 0)
            frames.push_back(double(end - syncAt) / 1e6);
        QObject::disconnect(connection);
        QObject::disconnect(sync);
        QTest::qWait(20);
    }
    std::printf("tick to repainted highlight (%d rows, software renderer):\n", rows);
    printFigure("  tick to frame shown", median(times), "ms median");
    printFigure("", *std::max_element(times.begin(), times.end()), "ms worst");
    printFigure("  of which the frame's own work", median(frames), "ms median");
    printFigure("", frames.empty() ? -1 : *std::max_element(frames.begin(), frames.end()),
                "ms worst");
    delete screen;
}

} // namespace

int main(int argc, char *argv[])
{
    QTemporaryDir home;
    qputenv("LUTEGRID_HOME", home.path().toLocal8Bit());
    QGuiApplication app(argc, argv);
    measurePlay("10-row tab", 10);
    measurePlay("1,000-row tab", 1000);
    measureTickToFrame(1000);
    return 0;
}
