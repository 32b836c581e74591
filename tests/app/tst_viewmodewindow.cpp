#include "../sound/audioprobe.h"
#include "model/tabfileformat.h"
#include "services/saveddata.h"
#include "viewmodescreenitem.h"

#include "appwindow.h"

#include <QProcess>
#include <QScopeGuard>
#include <QThread>

#include <cstring>

namespace {

// `rows` rows of 32 columns; every column has the open A string, so each tick sounds A2.
QByteArray tabOfRows(int rows)
{
    TabData tab(u"Reading"_qs, 6);
    for (int r = 0; r < rows; ++r) {
        TabRowData row(32, 6);
        for (int c = 0; c < 32; ++c)
            row.colDatas[c].setColumnItem(4, ColumnItemType::note(0));
        row.colDatas[0].chordName = u"Am"_qs;
        row.lyricLines = {u"la la la"_qs};
        tab.tabRowDatas.append(row);
    }
    tab.introText = u"Strum gently. Capo off."_qs;
    return documentData(tab);
}

int runProgram(const QString &program, const QStringList &arguments, QByteArray *out = nullptr)
{
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished(5000)) {
        process.kill();
        process.waitForFinished(1000);
        return -1;
    }
    if (out)
        *out = process.readAllStandardOutput();
    return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
}

} // namespace

// View mode in the real window: opened from the editor on its cursor, played with the button
// and the keys, its options dialog, and the row handed back on closing.
class TestViewModeWindow : public QObject, AppWindow {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void cleanup();

    void pressPlayAndHearTheFirstNote();
    void cursorHandedInAndRowHandedBack();
    void optionsDialogRefusesAnEmptyPage();
    void screenshotsWhilePlaying_data();
    void screenshotsWhilePlaying();

private:
    bool open(const QByteArray &bytes, QSize size)
    {
        const bool opened = openTab(u"Reading.lgrdi"_qs, bytes, size);
        QTest::qWait(400); // past the push
        return opened;
    }
    ViewModeScreenItem *openViewMode();

    QString sink;
    QString sinkModule;
};

void TestViewModeWindow::initTestCase()
{
    start(u"shots-view"_qs);
    // A sink of this test's own, chosen before the app's output opens, so the recording holds
    // only what view mode plays.
    if (runProgram(u"pactl"_qs, {u"info"_qs}) == 0) {
        sink = u"lutegrid_view_%1"_qs.arg(QCoreApplication::applicationPid());
        QByteArray out;
        if (runProgram(u"pactl"_qs, {u"load-module"_qs, u"module-null-sink"_qs,
                                     u"sink_name="_qs + sink},
                       &out) == 0) {
            sinkModule = QString::fromUtf8(out.trimmed());
            qputenv("PULSE_SINK", sink.toUtf8());
        } else {
            sink.clear();
        }
    }
}

void TestViewModeWindow::cleanupTestCase()
{
    if (!sinkModule.isEmpty())
        runProgram(u"pactl"_qs, {u"unload-module"_qs, sinkModule});
}

void TestViewModeWindow::init()
{
    resetStorage();
    AppManager::shared().viewDisplayOptionsMap.clear();
    SavedData::shared().appearanceSetting = 0;
}

void TestViewModeWindow::cleanup()
{
    closeWindow();
}

ViewModeScreenItem *TestViewModeWindow::openViewMode()
{
    QQuickItem *button = item(u"viewModeButt"_qs);
    if (!button)
        return nullptr;
    tap(button);
    ViewModeScreenItem *screen = nullptr;
    (void)QTest::qWaitFor([&] {
        screen = findItem<ViewModeScreenItem>(window->contentItem());
        return screen && screen->controller() && screen->controller()->entryCount() > 0;
    });
    QTest::qWait(400);
    return screen;
}

void TestViewModeWindow::pressPlayAndHearTheFirstNote()
{
    if (sink.isEmpty())
        QSKIP("no PulseAudio server answers; scripts/test starts a private one with a null sink");
    const QString recordingPath = QDir::temp().filePath(u"lutegrid-view-%1.raw"_qs.arg(
        QCoreApplication::applicationPid()));
    auto removeRecording = qScopeGuard([&] { QFile::remove(recordingPath); });
    QProcess recorder;
    recorder.setStandardOutputFile(recordingPath);
    recorder.start(u"parec"_qs, {u"--device="_qs + sink + u".monitor"_qs,
                                 u"--format=float32le"_qs, u"--rate=44100"_qs,
                                 u"--channels=1"_qs, u"--raw"_qs, u"--latency-msec=20"_qs});
    QVERIFY(recorder.waitForStarted(3000));
    QTRY_VERIFY_WITH_TIMEOUT(QFileInfo(recordingPath).size() > qint64(44100 * 4 / 2), 5000);

    QVERIFY(open(tabOfRows(3), QSize(390, 844)));
    ViewModeScreenItem *screen = openViewMode();
    QVERIFY(screen);
    // The output is open and the first columns are ready before anyone presses play.
    QTRY_VERIFY_WITH_TIMEOUT(screen->soundReady(), 5000);
    tap(u"playPauseButt"_qs);
    QVERIFY(screen->controller()->isPlaying);
    QTest::qWait(1200);
    tap(u"playPauseButt"_qs);
    QVERIFY(!screen->controller()->isPlaying);
    QTest::qWait(300);
    recorder.terminate();
    QVERIFY(recorder.waitForFinished(3000));

    QFile file(recordingPath);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray raw = file.readAll();
    std::vector<float> audio(std::size_t(raw.size()) / sizeof(float));
    std::memcpy(audio.data(), raw.constData(), audio.size() * sizeof(float));
    const qsizetype start = AudioProbe::firstFrameAbove(audio, 0.02f);
    QVERIFY2(start >= 0, "nothing was heard");
    // The first note is the open A string, A2: well within a quarter tone of it. The samples'
    // own tuning is checked elsewhere; a loaded machine may put a dropout in this recording.
    const auto off = AudioProbe::centsOffNear(audio.data() + start + 4410, 44100 * 3 / 10, 44100,
                                              AudioProbe::hzOfPosition(24));
    QVERIFY2(off && std::abs(*off) <= 50.0, qPrintable(QString::number(off.value_or(1000))));
}

void TestViewModeWindow::cursorHandedInAndRowHandedBack()
{
    QVERIFY(open(tabOfRows(12), QSize(390, 844)));
    c->showRowFromViewMode(3, 10);
    QCOMPARE(c->tabEditView()->cursorTabRow(), 3);
    QCOMPARE(c->tabEditView()->editColIndex, 10);
    ViewModeScreenItem *screen = openViewMode();
    QVERIFY(screen);
    TabViewController *view = screen->controller();
    QCOMPARE(view->highlightRow(), 3);
    QCOMPARE(view->highlightColumn(), 10);
    // The page opened on the cursor's row.
    QTRY_VERIFY(item(u"viewPage"_qs)->property("contentY").toDouble() > 0);
    QVERIFY(screen->hasActiveFocus());
    for (int i = 0; i < 4; ++i)
        QTest::keyClick(window.get(), Qt::Key_Down);
    QTest::keyClick(window.get(), Qt::Key_Right);
    QCOMPARE(view->highlightRow(), 7);
    QCOMPARE(view->highlightColumn(), 11);
    // Space plays and pauses.
    QTest::keyClick(window.get(), Qt::Key_Space);
    QVERIFY(view->isPlaying);
    QTest::keyClick(window.get(), Qt::Key_Space);
    QVERIFY(!view->isPlaying);
    // A touch on the highlighted row's tab lines, a third of the way in, moves the highlight
    // to the column there.
    auto *content = item(u"viewPage"_qs)->property("contentItem").value<QQuickItem *>();
    QVERIFY(content);
    const QRectF frame = view->entryFrame(7);
    const QPoint point =
        content->mapToScene(QPointF(frame.left() + frame.width() / 3, frame.bottom() - frame.height() / 5))
            .toPoint();
    QVERIFY(window->contentItem()->contains(point));
    touches().press(0, point, window.get());
    touches().release(0, point, window.get());
    QTRY_VERIFY(view->highlightColumn() != 11);
    QCOMPARE(view->highlightRow(), 7);
    QVERIFY(view->highlightColumn() > 5 && view->highlightColumn() < 12);
    const int column = view->highlightColumn();

    QQuickItem *back = item(u"backButton"_qs);
    QVERIFY(back);
    // The view screen's bar is the top one.
    auto *bar = findItem<QQuickItem>(screen, u"backButton"_qs);
    tap(bar ? bar : back);
    QTRY_VERIFY(findItem<ViewModeScreenItem>(window->contentItem()) == nullptr);
    QCOMPARE(c->tabEditView()->cursorTabRow(), 7);
    QCOMPARE(c->tabEditView()->editColIndex, column);
}

void TestViewModeWindow::optionsDialogRefusesAnEmptyPage()
{
    QVERIFY(open(tabOfRows(4), QSize(390, 844)));
    ViewModeScreenItem *screen = openViewMode();
    QVERIFY(screen);
    tap(u"viewMenuButt"_qs);
    QTRY_VERIFY(screen->optionsDialog());
    QCOMPARE(item(u"defaultBpmLabel"_qs)->property("text").toString(),
             u"default bpm of this tab is 80"_qs);
    ViewModeDialogViewController *dialog = screen->optionsDialog();
    tap(u"colsPerBeatPlus"_qs);
    QCOMPARE(dialog->colsPerBeat, 2);
    QCOMPARE(item(u"colsPerBeatValue"_qs)->property("text").toString(), u"2"_qs);
    dialog->setShowLyrics(false);
    dialog->setShowColumnHeaders(false);
    dialog->setShowTabContent(false);
    tap(u"doneButton"_qs);
    QVERIFY(screen->optionsDialog());
    QVERIFY(item(u"errorLabel"_qs));
    QVERIFY(!item(u"doneButton"_qs));
    // Any switch brings Done back.
    dialog->setTwoColumns(true);
    QVERIFY(item(u"doneButton"_qs));
    dialog->setShowLyrics(true);
    tap(u"doneButton"_qs);
    QTRY_VERIFY(!screen->optionsDialog());
    QVERIFY(screen->controller()->twoColumns());
    QVERIFY(!screen->controller()->viewConfigState.displayOptions.showTabContent);
    QVERIFY(AppManager::shared().viewDisplayOptionsMap.contains(u"Reading.lgrdi"_qs));
    // The playback half goes into the tab, and the document has a change to save.
    LutegridDocument *document = screen->document();
    QVERIFY(document->tabData->playbackOptions);
    QCOMPARE(document->tabData->playbackOptions->playbackColumnsInBeat, 2);
    QVERIFY(document->hasUnsavedChanges());
}

void TestViewModeWindow::screenshotsWhilePlaying_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<bool>("two");
    QTest::addColumn<bool>("dark");
    QTest::newRow("phone-light") << QSize(390, 844) << false << false;
    QTest::newRow("phone-dark") << QSize(390, 844) << false << true;
    QTest::newRow("tablet-two-light") << QSize(1024, 768) << true << false;
    QTest::newRow("tablet-two-dark") << QSize(1024, 768) << true << true;
    QTest::newRow("desktop-one-light") << QSize(1280, 800) << false << false;
}

void TestViewModeWindow::screenshotsWhilePlaying()
{
    QFETCH(QSize, size);
    QFETCH(bool, two);
    QFETCH(bool, dark);
    SavedData::shared().appearanceSetting = dark ? 2 : 1;
    QVERIFY(open(tabOfRows(9), size));
    ViewModeScreenItem *screen = openViewMode();
    QVERIFY(screen);
    if (two) {
        tap(u"viewMenuButt"_qs);
        QTRY_VERIFY(screen->optionsDialog());
        saveShot(QString::fromUtf8(QTest::currentDataTag()) + u"-options"_qs);
        screen->optionsDialog()->setTwoColumns(true);
        tap(u"doneButton"_qs);
        QTRY_VERIFY(!screen->optionsDialog());
        QVERIFY(screen->controller()->twoColumns());
    }
    tap(u"playPauseButt"_qs);
    QVERIFY(screen->controller()->isPlaying);
    QTRY_VERIFY(screen->controller()->highlightColumn() >= 2);
    saveShot(QString::fromUtf8(QTest::currentDataTag()));
    QQuickItem *box = item(u"columnHighlight"_qs);
    QVERIFY(box);
    QVERIFY(box->width() > 0);
    saveShot(QString::fromUtf8(QTest::currentDataTag()));
    screen->controller()->setPlaying(false);
}

LUTEGRID_WINDOW_TEST_MAIN(TestViewModeWindow)
#include "tst_viewmodewindow.moc"
