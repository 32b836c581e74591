#include "analyticscapture.h"
#include "editorsession.h"
#include "sound/sampler.h"
#include "sound/soundmanager.h"
#include "sound/soundoutput.h"
#include "surface/fretboard.h"
#include "testmain.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>

#include <memory>

namespace {

struct Responder : FretResponder {
    QList<FretPosition> touched;
    int ended = 0;
    int cancelled = 0;
    void fretTouched(int s, int f) override { touched.append({s, f}); }
    void fretTouchesEnded() override { ++ended; }
    void fretTouchesCancelled() override { ++cancelled; }
};

// A board 400 wide and 330 high: strings 280 / 6 high, numbers 50 high below them.
struct Board {
    Fretboard board;
    Responder responder;
    Board()
    {
        board.fretResponder = &responder;
        board.setFrameSize(QSizeF(400, 330));
    }
};

ColumnItemType note(qint64 fret)
{
    return ColumnItemType::note(fret);
}

} // namespace

class TestEditor : public QObject, private EditorSessions {
    Q_OBJECT

private Q_SLOTS:
    void init() { prepare(); }

    // Fretboard

    void fretSpacingByWidth_data()
    {
        QTest::addColumn<double>("width");
        QTest::addColumn<double>("spacing");
        QTest::newRow("319.9") << 319.9 << 55.0;
        QTest::newRow("320") << 320.0 << 60.0;
        QTest::newRow("379.9") << 379.9 << 60.0;
        QTest::newRow("380") << 380.0 << 65.0;
    }

    void fretSpacingByWidth()
    {
        QFETCH(double, width);
        QFETCH(double, spacing);
        Board b;
        b.board.setFrameSize(QSizeF(width, 330));
        QCOMPARE(b.board.fretSpacing, spacing);
        QCOMPARE(b.board.contentWidth(), 25 * spacing + spacing * 0.5);
        // Bars and numbers follow the new spacing: bar i stands at i × spacing.
        QCOMPARE(b.board.fretViews[11].center().x(), 12 * spacing);
        QCOMPARE(b.board.fretLabels[0].center.x(), spacing * 0.5 + 4.0);
    }

    void fretCountFromSetting_data()
    {
        QTest::addColumn<qint64>("setting");
        QTest::addColumn<int>("frets");
        QTest::newRow("unset") << qint64(0) << 25;
        QTest::newRow("1") << qint64(1) << 21;
        QTest::newRow("21") << qint64(21) << 21;
        QTest::newRow("200") << qint64(200) << 80;
    }

    void fretCountFromSetting()
    {
        QFETCH(qint64, setting);
        QFETCH(int, frets);
        Board b;
        b.board.refreshFretCount(setting);
        QCOMPARE(int(b.board.numFrets), frets);
        QCOMPARE(b.board.fretViews.size(), frets);
        QCOMPARE(b.board.fretLabels.last().text, QString::number(frets));
    }

    void touchNamesStringAndFret_data()
    {
        QTest::addColumn<QPointF>("point");
        QTest::addColumn<double>("offset");
        QTest::addColumn<int>("stringNum");
        QTest::addColumn<int>("fretNum");
        // Bands of 280 / 6 points; fret 1 ends where x - 6 reaches a spacing of 65.
        QTest::newRow("left edge") << QPointF(5, 50) << 0.0 << 2 << 1;
        QTest::newRow("fret 1 end") << QPointF(70, 50) << 0.0 << 2 << 1;
        QTest::newRow("fret 2 start") << QPointF(71, 50) << 0.0 << 2 << 2;
        QTest::newRow("scrolled") << QPointF(20, 10) << 130.0 << 1 << 3;
        QTest::newRow("lowest string") << QPointF(200, 279) << 0.0 << 6 << 3;
        QTest::newRow("past the last fret") << QPointF(399, 100) << 1257.5 << 3 << 26;
        QTest::newRow("dead band") << QPointF(100, 7) << 0.0 << 0 << 0;
        QTest::newRow("numbers") << QPointF(100, 300) << 0.0 << 0 << 0;
    }

    void touchNamesStringAndFret()
    {
        QFETCH(QPointF, point);
        QFETCH(double, offset);
        QFETCH(int, stringNum);
        QFETCH(int, fretNum);
        Board b;
        b.board.setContentOffsetX(offset);
        b.board.touchBegan(1, point);
        QCOMPARE(b.board.fretTouchesInProgress.size(), 1);
        if (stringNum == 0)
            QVERIFY(b.responder.touched.isEmpty());
        else
            QCOMPARE(b.responder.touched, QList<FretPosition>({{stringNum, fretNum}}));
        // A touch that named nothing still ends the press.
        b.board.touchEnded(1);
        QCOMPARE(b.responder.ended, 1);
        QVERIFY(b.board.fretTouchesInProgress.isEmpty());
    }

    void pressEndsOnlyWithLastFinger()
    {
        Board b;
        b.board.touchBegan(1, QPointF(100, 20));
        b.board.touchBegan(2, QPointF(160, 100));
        QCOMPARE(b.responder.touched.size(), 2);
        b.board.touchEnded(1);
        QCOMPARE(b.responder.ended, 0);
        b.board.touchEnded(2);
        QCOMPARE(b.responder.ended, 1);
        // A system cancel empties the set and says so once.
        b.board.touchBegan(3, QPointF(100, 20));
        b.board.touchBegan(4, QPointF(100, 100));
        b.board.touchesCancelled();
        QCOMPARE(b.responder.cancelled, 1);
        QVERIFY(b.board.fretTouchesInProgress.isEmpty());
        b.board.touchEnded(3);
        QCOMPARE(b.responder.ended, 1);
    }

    void slideScrollsAndCancelsThePress()
    {
        Board b;
        b.board.setContentOffsetX(200);
        b.board.touchBegan(1, QPointF(300, 50));
        b.board.touchBegan(2, QPointF(100, 150));
        // A finger that stays (within the slop) keeps its note.
        b.board.touchMoved(1, QPointF(292, 58), 0.01);
        QCOMPARE(b.responder.cancelled, 0);
        QCOMPARE(b.board.contentOffset.x(), 200.0);
        b.board.touchMoved(1, QPointF(285, 50), 0.02);
        QCOMPARE(b.responder.cancelled, 1);
        QVERIFY(b.board.isScrolling());
        b.board.touchMoved(1, QPointF(185, 50), 0.04);
        QCOMPARE(b.board.contentOffset.x(), 300.0);
        // No finger of the cancelled press ends it again, and a new one plays nothing.
        b.board.touchBegan(3, QPointF(50, 50));
        QCOMPARE(b.responder.touched.size(), 2);
        b.board.touchEnded(2);
        b.board.touchEnded(3);
        b.board.touchEnded(1);
        QCOMPARE(b.responder.ended, 0);
        // The flick runs on after the finger lifts, slows, and stops inside the content.
        const double atRelease = b.board.contentOffset.x();
        int steps = 0;
        while (b.board.stepMomentum(1.0 / 60.0) && steps < 1000)
            ++steps;
        QVERIFY(steps > 5);
        QVERIFY(b.board.contentOffset.x() > atRelease);
        QVERIFY(b.board.contentOffset.x() <= b.board.maxContentOffsetX());
        // The next touch plays again.
        b.board.touchBegan(4, QPointF(50, 50));
        QCOMPARE(b.responder.touched.size(), 3);
    }

    void positionDots()
    {
        Board b;
        b.board.refreshFretCount(27);
        const double s = b.board.fretSpacing;
        auto dotsAt = [&](int fret) {
            const double c = fret * s - s * 0.5;
            int count = 0;
            for (const QRectF &dot : std::as_const(b.board.posMarkerViews)) {
                if (qAbs(dot.center().x() - c) < 0.01)
                    ++count;
            }
            return count;
        };
        const QList<int> expected = {0, 0, 1, 0, 1, 0, 1, 0, 1, 0, 0, 2, 0, 0,
                                     1, 0, 1, 0, 1, 0, 1, 0, 0, 2, 0, 0, 1};
        for (int fret = 1; fret <= 27; ++fret)
            QVERIFY2(dotsAt(fret) == expected[fret - 1], qPrintable(QString::number(fret)));
        // At 330 points high the dot is 28 across, the pair 46 from the middle.
        const QRectF single = b.board.posMarkerViews.first();
        QCOMPARE(single.width(), 28.0);
        QCOMPARE(single.center().y(), 140.0);
    }

    void highlightPool()
    {
        Board b;
        b.board.setFrameSize(QSizeF(400, 380));
        QCOMPARE(b.board.stringTouchHeight, 55.0);
        b.board.setHighlights({{1, 3}, {2, 5}, {3, 0}});
        QCOMPARE(b.board.visibleHighlights().size(), 2);
        const QRectF frame = b.board.visibleHighlights().first().frame;
        QCOMPARE(frame.width(), 81.0);
        QCOMPARE(frame.height(), 57.0 * 1.1);
        QCOMPARE(frame.x(), 65.0 * 3 - (81.0 + 65.0) * 0.5 + 6.5);
        QCOMPARE(frame.center().y(), 27.5);
        b.board.setHighlights({{2, 5}});
        QCOMPARE(b.board.visibleHighlights().size(), 1);
        QCOMPARE(b.board.fretHighlights.size(), 2);
        // A new width moves the shown marks with the frets.
        b.board.setFrameSize(QSizeF(300, 380));
        QCOMPARE(b.board.visibleHighlights().first().frame.width(), 55.0 * 81.0 / 65.0);
    }

    // Fret input through the controller

    void fretPressCommitsAndAdvances_data()
    {
        QTest::addColumn<qint64>("amount");
        QTest::addColumn<int>("startColumn");
        QTest::addColumn<bool>("alreadyThere");
        QTest::addColumn<int>("endColumn");
        QTest::newRow("advance 1") << qint64(1) << 0 << false << 1;
        QTest::newRow("advance capped at 3") << qint64(7) << 4 << false << 7;
        QTest::newRow("no advance at 0") << qint64(0) << 4 << false << 4;
        QTest::newRow("stops at row end") << qint64(2) << 31 << false << 31;
        QTest::newRow("same note clears") << qint64(1) << 5 << true << 5;
    }

    void fretPressCommitsAndAdvances()
    {
        QFETCH(qint64, amount);
        QFETCH(int, startColumn);
        QFETCH(bool, alreadyThere);
        QFETCH(int, endColumn);
        // Two rows: the cursor never wraps into the next one.
        auto [document, editor, view, undo] = open(u"Song"_qs, 2);
        view->setEditPosition(startColumn, 0);
        if (alreadyThere) {
            editor->fretTouched(2, 3);
            editor->fretTouchesEnded();
            view->setEditPosition(startColumn, 0);
        }
        SavedData::shared().autoCursorAmount = amount;
        const bool hadUndo = undo->canUndo();

        editor->fretTouched(2, 3);
        QVERIFY(editor->pressInProgress());
        QVERIFY(view->preEditColumnData);
        editor->fretTouchesEnded();
        QVERIFY(!editor->pressInProgress());
        QVERIFY(undo->canUndo());
        QVERIFY(editor->undoEnabled);
        QCOMPARE(view->editColIndex, endColumn);
        QCOMPARE(view->tabRowIndex + view->editShowingTabRowIndex, 0);
        const ColumnItemType expected = alreadyThere ? ColumnItemType::blank() : note(3);
        QCOMPARE(view->tabRows[0].colDatas[startColumn].columnItems[1], expected);
        // The highlights follow the cursor: the new column's marks.
        const bool cursorOnNote = view->editColIndex == startColumn && !alreadyThere;
        QCOMPARE(editor->fretboard()->visibleHighlights().size(), cursorOnNote ? 1 : 0);
        // One step: undone, the column is what it was.
        undo->undo();
        QCOMPARE(view->tabRows[0].colDatas[startColumn].columnItems[1],
                 alreadyThere ? note(3) : ColumnItemType::blank());
        QCOMPARE(undo->canUndo(), hadUndo);
        // The buttons follow the undo manager's signal, whoever undid the step.
        QCOMPARE(editor->undoEnabled, hadUndo);
        QVERIFY(editor->redoEnabled);
    }

    // The letter held while the fret lifts is driven through the window; here the other order.
    void openStringLetterWaitsForTheFret()
    {
        auto [document, editor, view, undo] = open(u"Open"_qs);
        editor->fretLetterPressed(5);
        QCOMPARE(editor->openStringMarks(), QVariantList({5}));
        editor->fretTouched(2, 7);
        editor->fretLetterReleased();
        QVERIFY(view->preEditColumnData);
        QVERIFY(!undo->canUndo());
        editor->fretTouchesEnded();
        QVERIFY(!view->preEditColumnData);
        QCOMPARE(view->tabRows[0].colDatas[0].columnItems[4], note(0));
        QCOMPARE(view->tabRows[0].colDatas[0].columnItems[1], note(7));
        QCOMPARE(view->editColIndex, 1);
        undo->undo();
        QVERIFY(view->tabRows[0].colDatas[0].isSameColumn(TabColumnData(6)));
    }

    void aPressSoundsTheNoteItWrote()
    {
        SoundManager sound(SoundManager::defaultSampleDirectory());
        // An output that never pulls: the test renders the mixer itself.
        struct OfflineOutput : SoundOutput {
            QString name() const override { return u"offline"_qs; }
            double outputLatency() const override { return 0.0; }
        };
        QVERIFY(sound.useOutput(std::make_unique<OfflineOutput>()));
        SavedData::shared().playSounds = true;
        Session s = open(u"Sound"_qs);
        s.editor->setSoundManager(&sound);
        auto voicesAfter = [&](auto press) {
            press();
            sound.sampler().renderOffline(64);
            return sound.sampler().activeVoiceCount();
        };
        QCOMPARE(voicesAfter([&] { s.editor->fretTouched(1, 3); }), 1);
        // Pressed off again, the note is gone from the tab and nothing new sounds.
        QCOMPARE(voicesAfter([&] { s.editor->fretTouched(1, 3); }), 1);
        QVERIFY(s.view->currentColumnItems().first().isBlank());
        // The open-string letters sound their string too.
        QCOMPARE(voicesAfter([&] { s.editor->fretLetterPressed(6); }), 2);
        s.editor->fretTouchesCancelled();
        SavedData::shared().playSounds = false;
    }

    void cancelledPressLeavesNoTrace()
    {
        auto [document, editor, view, undo] = open(u"Cancel"_qs);
        editor->fretLetterPressed(3);
        editor->fretTouched(2, 3);
        QCOMPARE(view->tabRows[0].colDatas[0].columnItems[1], note(3));
        editor->fretTouchesCancelled();
        QVERIFY(!editor->pressInProgress());
        QVERIFY(view->tabRows[0].colDatas[0].isSameColumn(TabColumnData(6)));
        QVERIFY(!undo->canUndo());
        QCOMPARE(view->editColIndex, 0);
        // The letter's lift after the cancel commits nothing.
        editor->fretLetterReleased();
        QVERIFY(!undo->canUndo());
    }

    void toolsAreGuardedDuringPress()
    {
        auto [document, editor, view, undo] = open(u"Guard"_qs, 2);
        editor->fretTouched(1, 5);
        editor->fretTouchesEnded();
        view->setEditPosition(0, 0);
        QVERIFY(undo->canUndo());

        editor->fretTouched(2, 3);
        editor->tabClear();
        editor->undoEdit();
        editor->redoEdit();
        editor->addTabRow();
        editor->insertTabRow();
        editor->deleteTabRow();
        QCOMPARE(view->tabRows.size(), 2);
        QCOMPARE(view->tabRows[0].colDatas[0].columnItems[0], note(5));
        QCOMPARE(view->tabRows[0].colDatas[0].columnItems[1], note(3));
        // Column tools are not guarded.
        editor->addTabColumn();
        QCOMPARE(view->numTabColumns, 33);
        editor->fretTouchesEnded();
        // Once released, the same tools act.
        editor->deleteTabRow();
        QCOMPARE(view->tabRows.size(), 1);
        editor->undoEdit();
        QCOMPARE(view->tabRows.size(), 2);
    }

    void layoutByWidth_data()
    {
        QTest::addColumn<double>("width");
        QTest::addColumn<bool>("compact");
        QTest::addColumn<bool>("compacted");
        QTest::addColumn<bool>("canShow");
        QTest::addColumn<double>("lettersWidth");
        QTest::newRow("339") << 339.0 << true << true << false << 35.0;
        QTest::newRow("340") << 340.0 << false << true << true << 44.0;
        QTest::newRow("474") << 474.0 << false << true << true << 44.0;
        QTest::newRow("475") << 475.0 << false << false << false << 44.0;
    }

    void layoutByWidth()
    {
        QFETCH(double, width);
        QFETCH(bool, compact);
        QFETCH(bool, compacted);
        QFETCH(bool, canShow);
        QFETCH(double, lettersWidth);
        auto [document, editor, view, undo] = open(u"Wide"_qs);
        editor->applyViewSize(width, 844);
        QCOMPARE(editor->compactToolbar, compact);
        QCOMPARE(editor->editMoveButtsCompacted, compacted);
        QCOMPARE(editor->editMoveButtsCanShow, canShow);
        QCOMPARE(editor->fretLettersWidth, lettersWidth);
        QCOMPARE(editor->buttonWidths().value(u"undo"_qs).toInt(), compact ? 29 : 44);
        QCOMPARE(editor->fretboard()->frameSize.width(), width - lettersWidth);
    }

    void layoutByHeight_data()
    {
        QTest::addColumn<QSizeF>("size");
        QTest::addColumn<int>("rowsInTab");
        QTest::addColumn<bool>("freeScroll");
        QTest::addColumn<bool>("shortLayout");
        QTest::addColumn<double>("fretboardHeight");
        QTest::addColumn<double>("labelHeight");
        QTest::addColumn<int>("rows");
        QTest::addColumn<double>("rowsHeight");
        // h × 0.7 under 330 is too short for the fretboard.
        QTest::newRow("short") << QSizeF(800, 471) << 3 << false << true << 0.0 << 50.0 << 1
                               << 279.0;
        QTest::newRow("just tall enough")
            << QSizeF(800, 472) << 3 << false << false << 37.0 << 20.0 << 1 << 279.0;
        QTest::newRow("narrow fretboard")
            << QSizeF(390, 700) << 3 << false << false << 265.0 << 20.0 << 1 << 279.0;
        QTest::newRow("phone") << QSizeF(390, 844) << 3 << false << false << 330.0 << 50.0 << 1
                               << 279.0;
        QTest::newRow("tablet") << QSizeF(820, 1180) << 3 << false << false << 330.0 << 50.0 << 2
                                << 578.0;
        QTest::newRow("tablet, one row tab")
            << QSizeF(820, 1180) << 1 << false << false << 330.0 << 50.0 << 1 << 279.0;
        QTest::newRow("free scroll")
            << QSizeF(1280, 1400) << 3 << true << false << 330.0 << 50.0 << 3 << 877.0;
        QTest::newRow("free scroll, short of room")
            << QSizeF(1280, 800) << 3 << true << false << 330.0 << 50.0 << 3 << 349.0;
    }

    void layoutByHeight()
    {
        QFETCH(QSizeF, size);
        QFETCH(int, rowsInTab);
        QFETCH(bool, freeScroll);
        QFETCH(bool, shortLayout);
        QFETCH(double, fretboardHeight);
        QFETCH(double, labelHeight);
        QFETCH(int, rows);
        QFETCH(double, rowsHeight);
        SavedData::shared().freeScrollSetting = freeScroll;
        auto document = makeDocument(u"Tall"_qs, rowsInTab);
        auto editor = std::make_unique<TabEditViewController>(document.get());
        editor->applyViewSize(size.width(), size.height());
        QCOMPARE(editor->shortLayout, shortLayout);
        QCOMPARE(editor->fretboardHeight, fretboardHeight);
        QCOMPARE(editor->fretLabelHeight, labelHeight);
        QCOMPARE(editor->freeScroll(), freeScroll);
        QCOMPARE(editor->visibleRows, rows);
        QCOMPARE(editor->tabEditViewHeight, rowsHeight);
        QCOMPARE(editor->tabEditView()->showingCount(), rows);
        QCOMPARE(editor->tabEditView()->frameSize.height(), rowsHeight);
        if (!freeScroll)
            QCOMPARE(editor->tabEditView()->tabRowPitch(), 299.0);
        // The preview shows the row after the window, where there is one and a fretboard.
        const bool preview = !freeScroll && !shortLayout && rows < rowsInTab;
        QCOMPARE(editor->nextRowPreviewRow, preview ? rows : -1);
        // Once settled, the scroll style stays through later sizes.
        SavedData::shared().freeScrollSetting = !freeScroll;
        editor->applyViewSize(size.width() + 1, size.height());
        QCOMPARE(editor->freeScroll(), freeScroll);
    }

    void compactArrowsFlash()
    {
        auto [document, editor, view, undo] = open(u"Arrows"_qs);
        editor->applyViewSize(400, 844);
        editor->editRightPress();
        QVERIFY(editor->editMoveButtsShown);
        QVERIFY(editor->editLeftEnabled);
        QCOMPARE(editor->editMoveButtsTimer.interval(), 1700);
        QVERIFY(editor->editMoveButtsTimer.isActive());
        editor->editMoveButtsTimer.setInterval(10);
        editor->editRightPress();
        QTRY_VERIFY(!editor->editMoveButtsShown);
        // Wide enough for arrows of their own: nothing flashes; a setting turns it off as well.
        editor->applyViewSize(600, 844);
        editor->editRightPress();
        QVERIFY(!editor->editMoveButtsShown);
        editor->applyViewSize(400, 844);
        SavedData::shared().disableFlashNavArrows = true;
        editor->editLeftPress();
        QVERIFY(!editor->editMoveButtsShown);
    }

    void rowsAddAndDelete()
    {
        auto [document, editor, view, undo] = open(u"Rows"_qs, 1, 13);
        // Refusals reach the dialog presenter and change nothing.
        editor->deleteTabColumn();
        QCOMPARE(dialogs.messages, QStringList({u"Minimum column count 12"_qs}));
        QCOMPARE(view->numTabColumns, 13);
        // A tab's only row stays.
        editor->deleteTabRow();
        QCOMPARE(view->tabRows.size(), 1);
        QVERIFY(!undo->canUndo());
        editor->addTabRow();
        QCOMPARE(view->tabRows.size(), 2);
        // The window of one row can't grow: the rows slide in from one row lower.
        QVERIFY(editor->rowPan()->panSettling);
        QCOMPARE(view->tabRowIndex, 1);
        QVERIFY(SavedData::shared().toolsMarkedSeen);
        QTRY_VERIFY(!editor->rowPan()->panSettling);
        QCOMPARE(editor->rowPan()->panOffsetY, 0.0);
        editor->fretTouched(1, 9);
        editor->fretTouchesEnded();
        QCOMPARE(view->tabRows[1].colDatas[0].columnItems[0], note(9));
        editor->insertTabRow();
        QCOMPARE(view->tabRows.size(), 3);
        QVERIFY(view->tabRows[1].colDatas[0].isSameColumn(TabColumnData(6)));
        QCOMPARE(view->tabRows[2].colDatas[0].columnItems[0], note(9));
        // With a row waiting below, the rows under the cursor's come up over the deleted one.
        editor->deleteTabRow();
        QCOMPARE(view->tabRows.size(), 2);
        QCOMPARE(editor->rowPan()->rowSlideFrom, view->editShowingTabRowIndex);
        QCOMPARE(editor->rowPan()->rowSlideOffset, view->tabRowPitch());
        QTRY_COMPARE(editor->rowPan()->rowSlideFrom, -1);
        QCOMPARE(editor->rowPan()->rowSlideOffset, 0.0);
        // The last row shown, nothing below: no slide.
        editor->deleteTabRow();
        QCOMPARE(view->tabRows.size(), 1);
        QCOMPARE(editor->rowPan()->rowSlideFrom, -1);
    }

    void unseenToolsDot_data()
    {
        QTest::addColumn<int>("rows");
        QTest::addColumn<int>("columns");
        QTest::addColumn<int>("column");
        QTest::addColumn<bool>("shown");
        QTest::newRow("one row, last 8") << 1 << 32 << 24 << true;
        QTest::newRow("one row, before last 8") << 1 << 32 << 23 << false;
        QTest::newRow("two rows") << 2 << 32 << 30 << false;
        QTest::newRow("10 columns") << 1 << 10 << 9 << false;
    }

    void unseenToolsDot()
    {
        QFETCH(int, rows);
        QFETCH(int, columns);
        QFETCH(int, column);
        QFETCH(bool, shown);
        auto [document, editor, view, undo] = open(u"Beginner"_qs, rows, columns);
        view->setEditPosition(column, 0);
        editor->fretTouched(3, 2);
        editor->fretTouchesEnded();
        QCOMPARE(editor->moreToolsUnseenDotShown, shown);
        if (shown) {
            // Adding a column counts as having found the tools.
            editor->addTabColumn();
            QVERIFY(!editor->moreToolsUnseenDotShown);
            QVERIFY(SavedData::shared().toolsMarkedSeen);
        }
    }

    void closingLogsWhatWentAmiss_data()
    {
        QTest::addColumn<bool>("modelLost");
        QTest::addColumn<bool>("renamed");
        QTest::addColumn<bool>("saveFails");
        QTest::addColumn<QStringList>("events");
        QTest::newRow("plain close") << false << false << false << QStringList();
        QTest::newRow("document lost its model")
            << true << false << false << QStringList({u"Tdata_save_diff"_qs, u"Save_fail"_qs});
        QTest::newRow("renamed while edited") << false << true << false << QStringList();
        QTest::newRow("save fails") << false << false << true << QStringList({u"Save_fail"_qs});
    }

    void closingLogsWhatWentAmiss()
    {
        QFETCH(bool, modelLost);
        QFETCH(bool, renamed);
        QFETCH(bool, saveFails);
        QFETCH(QStringList, events);
        auto [document, editor, view, undo] = open(u"Close"_qs);
        const QString path = document->fileURL();
        QCOMPARE(editor->title(), u"Edit - Close"_qs);
        QSignalSpy finished(editor.get(), &TabEditViewController::finished);
        editor->fretTouched(4, 12);
        editor->fretTouchesEnded();
        // Saved with the editor open: the edit is in the document's own rows already.
        QVERIFY(document->hasUnsavedChanges());
        QVERIFY(document->autosave());
        {
            LutegridDocument saved(path, std::nullopt);
            QVERIFY(saved.open());
            QCOMPARE(saved.tabData->tabRowDatas[0].colDatas[0].columnItems[3], note(12));
            saved.close();
        }
        editor->fretTouched(5, 7);
        editor->fretTouchesEnded();
        // A reload of contents that can't be read leaves the document with no model.
        if (modelLost)
            document->tabData.reset();
        // A rename from outside with changes unsaved: the document's title follows the new name.
        if (renamed)
            document->tabData->title = u"Renamed"_qs;
        // A folder where the file was: nothing can be written there.
        if (saveFails)
            QVERIFY(QFile::remove(path) && QDir().mkdir(path));
        analyticsEvents.clear();
        previousHandler = qInstallMessageHandler(captureAnalytics);
        editor->finishEditing();
        qInstallMessageHandler(previousHandler);
        QCOMPARE(finished.size(), 1);
        // The document logs its own saving-error state, at each state notice (with no model there
        // is nothing it can write); the rest is the editor's.
        QCOMPARE(analyticsEvents.contains(u"Gt_saving_error"_qs), saveFails || modelLost);
        analyticsEvents.removeAll(u"Gt_saving_error"_qs);
        QCOMPARE(analyticsEvents, events);
        if (modelLost)
            return;
        // The document keeps the rows that were edited.
        QVERIFY(document->tabData);
        QCOMPARE(document->tabData->tabRowDatas[0].colDatas[0].columnItems[3], note(12));
        QCOMPARE(document->tabData->title, renamed ? u"Renamed"_qs : u"Close"_qs);
        if (!saveFails) {
            QVERIFY(document->documentState().testFlag(LutegridDocument::Closed));
            QVERIFY(!document->changeListener);
            LutegridDocument reopened(path, std::nullopt);
            QVERIFY(reopened.open());
            QVERIFY(reopened.tabData);
            QCOMPARE(reopened.tabData->tabRowDatas[0].colDatas[0].columnItems[3], note(12));
            QCOMPARE(reopened.tabData->tabRowDatas[0].colDatas[1].columnItems[4], note(7));
        }
    }

    void reloadWithOtherStringsTuningAndCapo()
    {
        auto [document, editor, view, undo] = open(u"Bass"_qs, 2);
        QCOMPARE(editor->capoFret(), 0);
        TabData bass(u"Bass"_qs, {TabRowData(20, 4), TabRowData(20, 4), TabRowData(20, 4)},
                     standardStringNotes(4), std::nullopt, std::nullopt);
        editor->documentReloaded(bass);
        QCOMPARE(view->stringCount(), 4);
        QCOMPARE(view->tabRows.size(), 3);
        QCOMPARE(view->numTabColumns, 20);
        QCOMPARE(editor->fretboard()->numStrings, 4.0);
        // Four strings take 40 points less of both the rows and the fretboard.
        QCOMPARE(editor->tabEditViewHeight, 239.0);
        QCOMPARE(editor->fretboardHeight, 290.0);
        QCOMPARE(editor->stringNotes().size(), 4);

        const QStringList dropD = {u"D"_qs, u"A"_qs, u"D"_qs, u"G"_qs, u"B"_qs, u"E"_qs};
        TabData reloaded(u"Bass"_qs, {TabRowData(32, 6), TabRowData(32, 6)}, dropD, 3,
                         std::nullopt);
        reloaded.tabRowDatas[1].colDatas[0].setColumnItem(5, note(0));
        QSignalSpy layout(editor.get(), &TabEditViewController::layoutChanged);
        editor->documentReloaded(reloaded);
        // The rows, the letters beside the tab and the fretboard, and what a press sounds (the
        // surface's notes), all take the new tuning; the capo goes to the letters.
        QCOMPARE(view->tabRows.size(), 2);
        QCOMPARE(view->tabRows[1].colDatas[0].columnItems[5], note(0));
        QCOMPARE(view->stringNotes, dropD);
        QCOMPARE(editor->stringNotes(), dropD);
        QCOMPARE(editor->capoFret(), 3);
        QVERIFY(layout.size() >= 1);
        // Back to no capo: the label goes.
        reloaded.capoFret = 0;
        editor->documentReloaded(reloaded);
        QCOMPARE(editor->capoFret(), 0);
    }

    void conflictWithoutVersionsGoesBackToTheRoot()
    {
        auto [document, editor, view, undo] = open(u"Conflict"_qs);
        QSignalSpy back(editor.get(), &TabEditViewController::returnToRootRequested);
        // A dialog already up: nothing happens, whatever came.
        dialogs.presenting = true;
        editor->documentConflictDetected(std::nullopt);
        QCOMPARE(back.size(), 0);
        dialogs.presenting = false;
        // With versions, the choice is offered and the editor stays.
        FileVersion version;
        version.url = document->fileURL() + u".copy"_qs;
        version.originalUrl = document->fileURL();
        editor->documentConflictDetected(QList<FileVersion>{version});
        QCOMPARE(dialogs.conflicts.size(), 1);
        QCOMPARE(back.size(), 0);
        // Without a list there is nothing to choose from: back to the root.
        editor->documentConflictDetected(std::nullopt);
        QCOMPARE(back.size(), 1);
        QCOMPARE(dialogs.conflicts.size(), 1);
    }
};

LUTEGRID_TEST_MAIN(TestEditor)
#include "tst_editor.moc"
