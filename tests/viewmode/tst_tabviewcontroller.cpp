#include "fakeviewtimers.h"
#include "sound/sampler.h"
#include "sound/soundmanager.h"
#include "sound/soundoutput.h"
#include "testmain.h"
#include "viewmode/tabviewcontroller.h"
#include "viewmode/viewmodedialogviewcontroller.h"

#include <QSignalSpy>

#include <cmath>

namespace {

// `rows` rows of `columns` columns, each with a note on the top string; `barEvery` puts a bar
// column after that many notes.
TabData tabOf(int rows, int columns, int barEvery = 0)
{
    TabData tab(u"Play"_qs, 6);
    for (int r = 0; r < rows; ++r) {
        TabRowData row(columns, 6);
        for (int c = 0; c < columns; ++c) {
            if (barEvery > 0 && c % (barEvery + 1) == barEvery)
                row.colDatas[c].setColumnItem(0, ColumnItemType::bar());
            else
                row.colDatas[c].setColumnItem(0, ColumnItemType::note((r + c) % 12));
        }
        tab.tabRowDatas.append(row);
    }
    return tab;
}

struct Session {
    FakeViewTimers clock;
    std::unique_ptr<TabViewController> view;
    QList<QPoint> played; // x column, y row

    Session(TabData tab, std::optional<QPointF> start, QSizeF size = {390, 700},
            std::optional<ViewModeDisplayOptions> display = std::nullopt)
    {
        view = std::make_unique<TabViewController>(std::move(tab), start, &clock);
        QObject::connect(view.get(), &TabViewController::columnPlayed, view.get(),
                         [this](int row, int col) { played.append(QPoint(col, row)); });
        view->load(display, SurfaceSettings{});
        view->setViewSize(size.width(), size.height());
        clock.settle(2.0);
    }
    QPoint highlight() const { return QPoint(view->highlightColumn(), view->highlightRow()); }
};

class OfflineOutput : public SoundOutput {
public:
    QString name() const override { return u"offline"_qs; }
    double outputLatency() const override { return 0.0; }
};

} // namespace

class TestTabViewController : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void tickFollowsTempoSpeedAndMeasures()
    {
        // The tab's tempo when it has no record; one column a beat.
        TabData tab = tabOf(1, 8);
        tab.tempo = 80;
        Session s(tab, QPointF(0, 0));
        s.clock.started.clear();
        s.view->setPlaying(true);
        QCOMPARE(s.clock.started.value(0), 0.75);

        for (const auto &[speed, tick] : {std::pair{25, 2.4}, std::pair{400, 0.15}}) {
            ViewModeOptions options = s.view->viewConfigState;
            options.playbackOptions.playbackSpeed = speed;
            s.view->viewOptionsOpening();
            s.view->applyViewOptions(options, {});
            QVERIFY(s.view->isPlaying);
            QVERIFY(qFuzzyCompare(s.clock.started.last(), tick));
        }

        // Measures of 2 and 3 columns even to 6 ticks: 4 beats a measure gives 1 tick a beat.
        TabData measures(u"M"_qs, 6);
        TabRowData row(7, 6);
        for (int c : {0, 1, 3, 4, 5})
            row.colDatas[c].setColumnItem(0, ColumnItemType::note(c));
        row.colDatas[2].setColumnItem(0, ColumnItemType::bar());
        row.colDatas[6].setColumnItem(0, ColumnItemType::bar());
        measures.tabRowDatas = {row};
        measures.playbackOptions = ViewModePlaybackOptions{60, 1, true, 2, false};
        Session m(measures, QPointF(-1, 0));
        QCOMPARE(m.view->sequence.evenMeasureLength, 6);
        m.clock.started.clear();
        m.view->setPlaying(true);
        QCOMPARE(m.clock.started.value(0), 1.0 / 3.0);
        // Before the first column the first one sounds at once; then two rests of the
        // evened measure pass with the highlight standing still.
        QCOMPARE(m.played, QList<QPoint>{QPoint(0, 0)});
        m.clock.advance(2.0 / 3.0);
        QCOMPARE(m.played.size(), 1);
        QCOMPARE(m.highlight(), QPoint(0, 0));
        m.clock.advance(1.0 / 3.0);
        QCOMPARE(m.played.last(), QPoint(1, 0));
        QCOMPARE(m.highlight(), QPoint(1, 0));
        // The second measure of three columns: one rest before each.
        m.clock.advance(2.0 / 3.0);
        QCOMPARE(m.played.last(), QPoint(3, 0));
    }

    void highlightMovesAndPageScrollsWithTicks()
    {
        Session s(tabOf(12, 16), QPointF(0, 0), {390, 500});
        QCOMPARE(s.view->entryCount(), 12);
        QSignalSpy scrolls(s.view.get(), &TabViewController::scrollRequested);
        s.view->setPlaying(true);
        // The highlighted column is the last one played: the next column sounds first.
        QCOMPARE(s.played, QList<QPoint>{QPoint(1, 0)});
        const double tick = s.view->tickLength();
        s.clock.advance(tick * 20);
        QVERIFY(scrolls.isEmpty());
        QCOMPARE(s.played.size(), 21);
        QCOMPARE(s.highlight(), QPoint(5, 1));
        QCOMPARE(s.played.last(), QPoint(5, 1));
        const QRectF box = s.view->highlightRect();
        QVERIFY(box.width() > 0 && box.height() > 0);
        QVERIFY(s.view->entryFrame(1).contains(box.center()));

        // Play on until the box leaves the page: one animated scroll brings its row up to
        // 20 points over the bottom edge, then nothing for the second that follows.
        while (scrolls.isEmpty() && s.played.size() < 200)
            s.clock.advance(tick);
        QVERIFY(!scrolls.isEmpty());
        const int row = s.highlight().y();
        const double expected = s.view->entryFrame(row).bottom() - 500 + 20;
        QCOMPARE(scrolls.last().at(0).toDouble(), expected);
        QCOMPARE(scrolls.last().at(1).toBool(), true);
        QVERIFY(s.view->highlightScrollInProgress);
        s.view->setScrollState(0, false); // as if the user had dragged back up meanwhile
        s.clock.advance(0.5);
        QCOMPARE(scrolls.size(), 1);
        s.clock.advance(0.6);
        QVERIFY(!s.view->highlightScrollInProgress);
        s.clock.advance(tick);
        QCOMPARE(scrolls.size(), 2);
        // A drag of the user's holds the automatic scroll back but not playback.
        s.view->setScrollState(0, true);
        s.clock.advance(3.0);
        QCOMPARE(scrolls.size(), 2);
        QVERIFY(s.view->isPlaying);
    }

    void endOfTabStopsOrLoops()
    {
        Session s(tabOf(2, 4), QPointF(2, 1));
        s.view->setPlaying(true);
        QCOMPARE(s.played, QList<QPoint>{QPoint(3, 1)});
        s.clock.advance(s.view->tickLength());
        // The last event is shown again, silently, and playback stops.
        QVERIFY(!s.view->isPlaying);
        QCOMPARE(s.played.size(), 1);
        QCOMPARE(s.highlight(), QPoint(3, 1));
        s.clock.advance(5.0);
        QCOMPARE(s.played.size(), 1);

        TabData looping = tabOf(2, 4);
        looping.playbackOptions = ViewModePlaybackOptions{80, 1, false, 4, true};
        Session l(looping, QPointF(2, 1));
        l.view->setPlaying(true);
        l.clock.advance(l.view->tickLength() * 2);
        QVERIFY(l.view->isPlaying);
        QCOMPARE(l.played, (QList<QPoint>{QPoint(3, 1), QPoint(0, 0), QPoint(1, 0)}));
    }

    void optionsDialogPausesAndResumes()
    {
        TabData tab = tabOf(3, 8, 3);
        tab.tempo = 120;
        Session s(tab, QPointF(0, 0));
        QList<ViewModePlaybackOptions> saved;
        QStringList messages;
        QList<QPair<QString, ViewModeDisplayOptions>> stored;
        s.view->savePlaybackOptions = [&](const ViewModePlaybackOptions &o) { saved.append(o); };
        s.view->showMessage = [&](const QString &m) { messages.append(m); };
        s.view->storeDisplayOptions = [&](const QString &path, const ViewModeDisplayOptions &d) {
            stored.append({path, d});
        };
        s.view->tabPath = u"Play.lgrdi"_qs;
        QCOMPARE(s.view->viewConfigState.playbackOptions.playbackSpeed, 120);

        s.view->setPlaying(true);
        s.view->viewOptionsOpening();
        QVERIFY(!s.view->isPlaying);
        QVERIFY(s.view->wasImplicitlyPaused);
        const int heard = int(s.played.size());
        s.clock.advance(5.0);
        QCOMPARE(s.played.size(), heard);

        // Only the display half: nothing saved, rows rebuilt in pairs, playback goes on.
        ViewModeOptions options = s.view->viewConfigState;
        options.displayOptions.twoColumns = true;
        s.view->applyViewOptions(options, {});
        QVERIFY(s.view->isPlaying);
        QVERIFY(saved.isEmpty());
        QCOMPARE(stored.size(), 1);
        QCOMPARE(stored[0].first, u"Play.lgrdi"_qs);
        s.clock.settle(1.0);
        QCOMPARE(s.view->entryCount(), 2);

        // By measure on a tab whose measures even: saved in the tab.
        s.view->viewOptionsOpening();
        options.playbackOptions.playbackByMeasure = true;
        s.view->applyViewOptions(options, {});
        QCOMPARE(saved.size(), 1);
        QVERIFY(saved[0].playbackByMeasure);
        QVERIFY(messages.isEmpty());

        // Turning off the tab content drops the highlight and stops.
        options.displayOptions.showTabContent = false;
        s.view->applyViewOptions(options, {});
        QVERIFY(!s.view->isPlaying);
        QVERIFY(!s.view->highlightVisible());
        QCOMPARE(s.view->highlightRow(), -1);

        // One measure can't be played by measure: the message, nothing saved.
        Session one(tabOf(1, 6), QPointF(0, 0));
        bool savedOne = false;
        QString message;
        one.view->savePlaybackOptions = [&](const ViewModePlaybackOptions &) { savedOne = true; };
        one.view->showMessage = [&](const QString &m) { message = m; };
        ViewModeOptions byMeasure = one.view->viewConfigState;
        byMeasure.playbackOptions.playbackByMeasure = true;
        one.view->applyViewOptions(byMeasure, {});
        QVERIFY(!savedOne);
        QVERIFY(message.startsWith(u"Unable to turn on Use Measures for Playback."));
        QVERIFY(!one.view->tabData.playbackOptions);
    }

    void keysAndTapsMoveTheHighlight()
    {
        Session s(tabOf(3, 6), QPointF(0, 1));
        QVERIFY(s.view->pressKey(Qt::Key_Left, {}));
        QCOMPARE(s.highlight(), QPoint(-1, 1));
        s.view->pressKey(Qt::Key_Left, {});
        QCOMPARE(s.highlight(), QPoint(5, 0));
        s.view->pressKey(Qt::Key_Right, {});
        QCOMPARE(s.highlight(), QPoint(0, 1));
        s.view->pressKey(Qt::Key_Down, {});
        QCOMPARE(s.highlight(), QPoint(0, 2));
        QVERIFY(s.played.isEmpty());
        // Space plays from there: the next column sounds.
        s.view->pressKey(0, u" "_qs);
        QVERIFY(s.view->isPlaying);
        QCOMPARE(s.played, QList<QPoint>{QPoint(1, 2)});
        s.view->pressKey(Qt::Key_Space, u" "_qs);
        QVERIFY(!s.view->isPlaying);
        QVERIFY(!s.view->pressKey(Qt::Key_A, u"a"_qs));

        // A tap in the middle of the second row's tab lines lands on one of its columns.
        const QRectF second = s.view->entryFrame(1);
        s.view->handleTap(second.center().x(), second.bottom() - second.height() * 0.2);
        QCOMPARE(s.highlight().y(), 1);
        QVERIFY(s.highlight().x() >= 2 && s.highlight().x() <= 3);
        // A tap far below the rows changes nothing.
        s.view->handleTap(10, second.bottom() + 2000);
        QCOMPARE(s.highlight().y(), 1);
    }

    void cursorHandedInAndRowHandedBack()
    {
        Session s(tabOf(10, 16), QPointF(10, 3), {390, 300});
        s.view->initialTabRowIndex = 3;
        QCOMPARE(s.highlight(), QPoint(10, 3));
        QVERIFY(s.view->entryFrame(3).contains(s.view->highlightRect().center()));
        for (int i = 0; i < 4; ++i)
            s.view->moveHighlightRow(+1);
        QSignalSpy back(s.view.get(), &TabViewController::handBack);
        s.view->viewWillDisappear();
        QCOMPARE(back.size(), 1);
        QCOMPARE(back[0].at(0).toInt(), 7);
        QCOMPARE(back[0].at(1).toInt(), 10);
    }

    void firstJumpLandsOnTheStartRowOfALongTab()
    {
        FakeViewTimers clock;
        TabViewController view(tabOf(60, 16), QPointF(0, 40), &clock);
        view.initialTabRowIndex = 40;
        QSignalSpy scrolls(&view, &TabViewController::scrollRequested);
        view.load(std::nullopt, SurfaceSettings{});
        view.setViewSize(390, 600);
        // Only a screenful before the first paint; the rest follow in batches.
        QVERIFY(view.entryCount() < 10);
        clock.advance(TabViewController::batchDelay * 30);
        QVERIFY(!scrolls.isEmpty());
        QCOMPARE(scrolls.last().at(0).toDouble(), view.entryFrame(40).top() - 25);
        clock.settle(3.0);
        QCOMPARE(view.entryCount(), 60);
    }

    void layoutInOneAndTwoColumns_data()
    {
        QTest::addColumn<double>("width");
        QTest::addColumn<bool>("two");
        for (const double w : {390.0, 820.0, 1366.0}) {
            QTest::addRow("one %d", int(w)) << w << false;
            QTest::addRow("two %d", int(w)) << w << true;
        }
    }
    void layoutInOneAndTwoColumns()
    {
        QFETCH(double, width);
        QFETCH(bool, two);
        ViewModeDisplayOptions display;
        display.twoColumns = two;
        Session s(tabOf(7, 16), QPointF(0, 0), {width, 700}, display);
        const double stack = width - 2 * TabViewController::sideMargin;
        QCOMPARE(s.view->stackWidth(), stack);
        QCOMPARE(s.view->entryCount(), two ? 4 : 7);
        QCOMPARE(s.view->entryRowCount(3), two ? 1 : 1);
        const double spacing = ViewModeLayout::spacingFor(stack, two);
        QVERIFY(qFuzzyCompare(spacing, two ? stack * 0.031 * 0.49 : stack * 0.031));
        for (int i = 1; i < s.view->entryCount(); ++i) {
            const QRectF a = s.view->entryFrame(i - 1);
            const QRectF b = s.view->entryFrame(i);
            QVERIFY(qFuzzyCompare(b.top() - a.bottom(), spacing));
            QCOMPARE(b.width(), stack);
            QVERIFY(a.height() > 0);
        }
        // The rows keep their proportions: a wider page makes taller rows.
        QVERIFY(s.view->entryFrame(0).height() > stack * (two ? 0.49 : 1.0) * 0.1);
        if (two) {
            // A pair's right half holds the odd row.
            QCOMPARE(s.view->entryChildFrame(0, 1).left() > stack * 0.5, true);
            s.view->moveHighlightRow(+1);
            QVERIFY(s.view->highlightRect().left() > s.view->stackX() + stack * 0.5);
        }
        // Narrower after a rotation: the rows follow.
        const double before = s.view->entryFrame(0).height();
        s.view->setViewSize(width * 0.6, 700);
        QVERIFY(s.view->entryFrame(0).height() < before);
    }

    void renderedNotesStartOnTheTicks()
    {
        TabData tab = tabOf(1, 8);
        tab.playbackOptions = ViewModePlaybackOptions{240, 1, false, 4, false};
        // Renders six ticks of playback, with the mixer pulled one tick at a time after the
        // tick has handed its notes over, as the output thread would; column `skip` is left
        // out, so the difference of two renders is that column's note alone.
        auto render = [&](int skip, qsizetype *tickFrames) {
            SoundManager sound;
            sound.useOutput(std::make_unique<OfflineOutput>());
            Session s(tab, QPointF(-1, 0));
            s.view->columnPlayer = [&](const QList<ColumnItemType> &items,
                                       const QStringList &notes, bool silent) {
                if (s.played.size() != skip)
                    sound.playColumnItems(items, notes, silent);
            };
            const double tick = s.view->tickLength();
            *tickFrames = qsizetype(std::lround(tick * sound.sampler().sampleRate()));
            std::vector<float> out;
            s.view->setPlaying(true);
            for (int k = 0; k < 6; ++k) {
                const std::vector<float> part = sound.sampler().renderOffline(*tickFrames);
                out.insert(out.end(), part.begin(), part.end());
                s.clock.advance(tick);
            }
            return out;
        };
        qsizetype tickFrames = 0;
        const std::vector<float> all = render(-1, &tickFrames);
        QCOMPARE(tickFrames, qsizetype(44100 / 4));
        for (const int k : {0, 2, 5}) {
            const std::vector<float> without = render(k, &tickFrames);
            qsizetype onset = -1;
            for (size_t i = 0; i < all.size() && onset < 0; ++i) {
                if (std::abs(all[i] - without[i]) > 1e-6f)
                    onset = qsizetype(i);
            }
            // The note starts within a few frames of its tick (the sample's own lead-in).
            QVERIFY2(onset >= k * tickFrames && onset < k * tickFrames + 64,
                     qPrintable(QString::number(onset)));
        }
    }

    void optionsDialogSliderResetAndRefusal()
    {
        ViewModeOptions initial;
        initial.playbackOptions.playbackSpeed = 90;
        ViewModeDialogViewController dialog(120, initial, {});
        QCOMPARE(dialog.defaultBpmText(), u"default bpm of this tab is 120"_qs);
        QCOMPARE(dialog.sliderValue(), (90.0 - 25.0) / 375.0);
        dialog.setSliderValue(0.0);
        QCOMPARE(dialog.playbackSpeedValue, 25);
        dialog.setSliderValue(1.0);
        QCOMPARE(dialog.playbackSpeedValue, 400);
        dialog.setSliderValue(0.5);
        QCOMPARE(dialog.playbackSpeedValue, 213); // 25 + 187.5, rounded
        dialog.resetPlaybackSpeed();
        QCOMPARE(dialog.playbackSpeedValue, 120);
        QCOMPARE(dialog.options().playbackOptions.playbackSpeed, 120);

        // Nothing left to show: refused, Done hidden until a switch moves.
        QSignalSpy finished(&dialog, &ViewModeDialogViewController::finished);
        dialog.setShowLyrics(false);
        dialog.setShowColumnHeaders(false);
        dialog.setShowTabContent(false);
        QVERIFY(!dialog.done());
        QVERIFY(dialog.errorShown && !dialog.doneShown);
        dialog.setTwoColumns(true);
        QVERIFY(!dialog.errorShown && dialog.doneShown);
        QVERIFY(!dialog.done());
        dialog.setShowColumnHeaders(true);
        QVERIFY(dialog.done());
        QCOMPARE(finished.size(), 1);
        const ViewModeOptions result = dialog.options();
        QVERIFY(result.displayOptions.twoColumns && result.displayOptions.showColumnHeaders);
        QVERIFY(!result.displayOptions.showLyrics);
    }

    void countInAndMetronomeClickOnTheBeats()
    {
        TabData tab = tabOf(1, 16);
        tab.playbackOptions = ViewModePlaybackOptions{60, 2, false, 4, false};
        Session s(tab, QPointF(-1, 0));
        QList<QPair<double, bool>> clicks;
        s.view->clickPlayer = [&](bool accent) { clicks.append({s.clock.now, accent}); };
        s.view->applyViewOptions(s.view->viewConfigState, ViewModeExtraOptions{true, true});
        const double t0 = s.clock.now;
        s.view->setPlaying(true);
        // Four clicks of the count-in a second apart, then the first column with a click.
        QVERIFY(s.played.isEmpty());
        s.clock.advance(3.0);
        QCOMPARE(clicks.size(), 4);
        QVERIFY(s.played.isEmpty());
        s.clock.advance(1.0);
        QCOMPARE(s.played.size(), 1);
        QCOMPARE(clicks.size(), 5);
        QVERIFY(clicks[0].second && !clicks[1].second && clicks[4].second);
        // Two columns a beat: a click on every other column.
        s.clock.advance(2.0);
        QCOMPARE(s.played.size(), 5);
        QCOMPARE(clicks.size(), 7);
        QCOMPARE(clicks.last().first - t0, 6.0);
    }
};

LUTEGRID_TEST_MAIN(TestTabViewController)
#include "tst_tabviewcontroller.moc"
