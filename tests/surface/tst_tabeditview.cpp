#include "services/lgundomanager.h"
#include "surface/chordnamesdisplay.h"
#include "surface/forcelongpressgesturerecognizer.h"
#include "surface/rendergate.h"
#include "surface/stringspacedview.h"
#include "surface/tabeditcursor.h"
#include "surface/tabeditview.h"
#include "surface/tabnotemenu.h"
#include "surface/tabrowwithmarkupview.h"
#include "testmain.h"

#include <QSignalSpy>

#include <functional>

using Kind = ColumnItemType::Kind;

namespace {

// Records what the surface tells its owner.
struct Recorder : EditHighlightListener, TabRowChangeListener {
    int undoChanges = 0;
    QList<QPair<bool, bool>> highlightMoves;
    QList<double> widths;
    QList<QList<int>> positions;
    int itemChanges = 0;
    int lyricEdits = 0;
    void editHighlightMoved(bool first, bool last) override
    {
        highlightMoves.append({first, last});
    }
    void tabWidthChanged(double width) override { widths.append(width); }
    void tabRowCountChanged() override {}
    void tabRowPositionChanged(int index, int showing, int total) override
    {
        positions.append({index, showing, total});
    }
    void columnItemChanged() override { ++itemChanges; }
    void lyricsFieldEdited() override { ++lyricEdits; }
};

QList<TabRowData> makeRows(int rows, int columns, int strings = 6)
{
    QList<TabRowData> list;
    for (int r = 0; r < rows; ++r)
        list.append(TabRowData(columns, strings));
    return list;
}

// A surface for the note menu alone: one cell at every point, and the choices it is told.
struct FakeNoteMenuHost : NoteMenuHost {
    std::optional<NoteMenuPlace> place;
    QList<QPair<NoteContextMenuSource, ColumnItemType>> choices;
    std::optional<NoteMenuPlace> notePlaceAt(QPointF) const override { return place; }
    QPointF noteMenuScroll() const override { return QPointF(0, 40); }
    void noteMenuChose(const NoteContextMenuSource &source, const ColumnItemType &item) override
    {
        choices.append({source, item});
    }
};

// A surface of `rows` rows in a 400-point-high frame showing `shown` of them, editing a tab of
// its own with an undo manager that makes each registration its own step.
struct Fixture {
    LgUndoManager undo;
    TabData tab{QString(), 6};
    TabEdits edits{&tab, &undo};
    TabEditView view;
    Recorder recorder;
    Fixture(int rows = 4, int columns = 32, int shown = 2, int strings = 6)
    {
        undo.groupsByEvent = false;
        view.setTabEdits(&edits);
        QObject::connect(&undo, &LgUndoManager::changed, [this] { ++recorder.undoChanges; });
        view.editHighlightListener = &recorder;
        view.tabRowChangeListener = &recorder;
        view.stringNotes = standardStringNotes(strings);
        view.setFrameSize(QSizeF(800, 400));
        view.loadTabRows(makeRows(rows, columns, strings));
        view.setVisibleTabRowCount(shown);
    }
    // Written behind the surface's back, as a test sets a tab up.
    TabColumnData &column(int row, int col) { return tab.tabRowDatas[row].colDatas[col]; }
};

} // namespace

class TestTabEditView : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void columnLimits_data();
    void columnLimits();
    void removeColumnChecksEveryRowFirst_data();
    void removeColumnChecksEveryRowFirst();
    void insertColumnPadsOtherRowsAndUndoes();
    void fretPressSnapshotAndUndoStep();
    void cursorFrozenDuringPress();
    void cursorClampsAndNeverWraps();
    void cursorOnItsOwn();
    void touchPlacement_data();
    void touchPlacement();
    void pagingArithmetic();
    void pagingWindowAndPadding();
    void throttleFirstAndLast();
    void noteMenuEntries_data();
    void noteMenuEntries();
    void noteMenuChoiceByHold();
    void noteMenuCancelledWhenCellsMove_data();
    void noteMenuCancelledWhenCellsMove();
    void noteMenuIgnoresARowThatWent();
    void undoRedoOfEveryEditKind_data();
    void undoRedoOfEveryEditKind();
    void undoBringsRowIntoView();
    void viewsFollowTheChangeNotice();
    void chordNameRepeatRule_data();
    void chordNameRepeatRule();
    void barToggleDestroysAndUndoRestores();
    void renderGateMarksOnlyChangedColumns();
    void renderGateOneFlushPerEvent();
    void columnDrawing();
    void chordNameLabels();
    void markupRowHeights();
    void stringLetters();
    void pressRecogniser();
    void typedLyricsReachTheRowAsOneStep();
    void lyricLinesAddRemoveAndSelect();
};

void TestTabEditView::columnLimits_data()
{
    QTest::addColumn<int>("columns");
    QTest::addColumn<bool>("insert");
    QTest::addColumn<QString>("message");
    QTest::newRow("64 refuses one more") << 64 << true << u"Maximum column count 64"_qs;
    QTest::newRow("63 takes one more") << 63 << true << QString();
    QTest::newRow("14 goes down to 13") << 14 << false << QString();
    QTest::newRow("13 refuses") << 13 << false << u"Minimum column count 12"_qs;
}

void TestTabEditView::columnLimits()
{
    QFETCH(int, columns);
    QFETCH(bool, insert);
    QFETCH(QString, message);
    Fixture f(3, columns);
    const QList<TabRowData> before = f.view.tabRows;
    const auto result =
        insert ? f.view.insertColumn(1, 4, TabColumnData(6)) : f.view.removeColumn(1, 4);
    QCOMPARE(result.value_or(QString()), message);
    if (!message.isEmpty()) {
        QCOMPARE(f.view.tabRows.list(), before);
        QCOMPARE(f.view.numTabColumns, columns);
        QVERIFY(!f.undo.canUndo());
        return;
    }
    const int expected = columns + (insert ? 1 : -1);
    QCOMPARE(f.view.numTabColumns, expected);
    QCOMPARE(f.recorder.widths.last(), expected * 25.0);
    for (const TabRowData &row : std::as_const(f.view.tabRows))
        QCOMPARE(row.colDatas.size(), expected);
}

void TestTabEditView::removeColumnChecksEveryRowFirst_data()
{
    QTest::addColumn<bool>("chordNameOnly");
    QTest::newRow("note") << false;
    QTest::newRow("chord name alone") << true;
}

void TestTabEditView::removeColumnChecksEveryRowFirst()
{
    QFETCH(bool, chordNameOnly);
    Fixture f(4, 20);
    if (chordNameOnly)
        f.column(2, 19).chordName = u"Am"_qs;
    else
        f.column(2, 19).setColumnItem(3, ColumnItemType::note(5));
    const QList<TabRowData> before = f.view.tabRows;
    QCOMPARE(f.view.removeColumn(0, 3).value_or(QString()),
             u"Can't remove column because of notes at end of tab row 3"_qs);
    QCOMPARE(f.view.tabRows.list(), before);

    // The cursor row may hold a note at its end: it only shifts left.
    QVERIFY(!f.view.removeColumn(2, 3));
    QCOMPARE(f.view.tabRows[2].colDatas.size(), 19);
    QCOMPARE(f.view.tabRows[2].colDatas[18], before[2].colDatas[19]);
    QCOMPARE(f.view.editColIndex, 3);
}

void TestTabEditView::insertColumnPadsOtherRowsAndUndoes()
{
    Fixture f(3, 16);
    for (int r = 0; r < 3; ++r)
        f.column(r, 5).setColumnItem(2, ColumnItemType::note(r + 1));
    const QList<TabRowData> before = f.view.tabRows;
    QVERIFY(!f.view.insertColumn(1, 5, TabColumnData(6)));
    QCOMPARE(f.view.tabRows[1].colDatas[6], before[1].colDatas[5]);
    QVERIFY(f.view.tabRows[1].colDatas[5].isAllBlank());
    for (int r : {0, 2}) {
        QCOMPARE(f.view.tabRows[r].colDatas.mid(0, 16), before[r].colDatas);
        QVERIFY(f.view.tabRows[r].colDatas[16].isAllBlank());
    }
    // The highlight narrows to a line between columns, then comes back.
    QCOMPARE(f.view.editColumnHighlight->width(), TabEditView::editColBorderWidth);
    QTRY_COMPARE(f.view.editColumnHighlight->width(), 28.0);

    f.view.undoEdit();
    QCOMPARE(f.view.tabRows.list(), before);
    QCOMPARE(f.view.numTabColumns, 16);
    f.view.redoEdit();
    QCOMPARE(f.view.numTabColumns, 17);
    QCOMPARE(f.view.tabRows[1].colDatas[6], before[1].colDatas[5]);
}

void TestTabEditView::fretPressSnapshotAndUndoStep()
{
    Fixture f;
    f.view.setEditPosition(4, 0);
    // The same fret twice on one string takes the note out again: nothing to undo.
    f.view.pressFret(2, 5);
    QCOMPARE(f.column(0, 4).columnItems[1], ColumnItemType::note(5));
    f.view.pressFret(2, 5);
    QVERIFY(f.column(0, 4).columnItems[1].isBlank());
    QVERIFY(!f.view.commitFretPress());
    QVERIFY(!f.undo.canUndo());
    QVERIFY(!f.view.preEditColumnData);

    // Two fingers in one press are one step.
    f.view.pressFret(1, 3);
    f.view.pressFret(6, 0);
    QVERIFY(f.view.commitFretPress());
    const TabColumnData chord = f.column(0, 4);
    f.view.pressFret(1, 3);
    QVERIFY(!f.view.commitFretPress()); // only took a note out
    QVERIFY(f.undo.canUndo());
    f.view.undoEdit();
    QCOMPARE(f.column(0, 4), chord);
    f.view.undoEdit();
    QVERIFY(f.column(0, 4).isAllBlank());
    QVERIFY(!f.undo.canUndo());
    // Out of range strings are ignored but still start the press.
    f.view.pressFret(9, 1);
    QVERIFY(f.view.preEditColumnData);
    QVERIFY(!f.view.commitFretPress());
    // A cancelled press puts the column back and leaves no step.
    f.view.pressFret(3, 7);
    f.view.cancelFretPress();
    QVERIFY(f.column(0, 4).isAllBlank());
    QVERIFY(!f.undo.canUndo());
    QVERIFY(!f.view.preEditColumnData);
}

void TestTabEditView::cursorFrozenDuringPress()
{
    Fixture f;
    f.view.setEditPosition(3, 1);
    f.view.setEditItem(5);
    f.view.pressFret(1, 2);
    f.view.setEditPosition(9, 0);
    QCOMPARE(f.view.editColIndex, 3);
    QCOMPARE(f.view.editShowingTabRowIndex, 1);
    f.view.setEditItem(0);
    QCOMPARE(f.view.editColItemIndex, 5);
    f.view.moveEditItem(1);
    QCOMPARE(f.view.editColItemIndex, 6); // unclamped during a press
    f.view.commitFretPress();
    f.view.moveEditItem(1);
    QCOMPARE(f.view.editColItemIndex, 5);
    f.view.moveEditItem(-9);
    QCOMPARE(f.view.editColItemIndex, 0);
}

void TestTabEditView::cursorClampsAndNeverWraps()
{
    Fixture f;
    f.view.setEditPosition(40, 7);
    QCOMPARE(f.view.editColIndex, 31);
    QCOMPARE(f.view.editShowingTabRowIndex, 1);
    QCOMPARE(f.recorder.highlightMoves.last(), qMakePair(false, true));
    f.view.setEditPosition(-3, -1);
    QCOMPARE(f.view.editColIndex, 0);
    QCOMPARE(f.view.editShowingTabRowIndex, 0);
    QCOMPARE(f.view.tabRowIndex, 0);
    QCOMPARE(f.recorder.highlightMoves.last(), qMakePair(true, false));
    const QRectF frame = f.view.editColumnFrame();
    QCOMPARE(frame, QRectF(-1.5, 79.0, 28.0, 111.0));
}

void TestTabEditView::cursorOnItsOwn()
{
    // Clamping within a tab is checked through the surface in cursorClampsAndNeverWraps.
    TabEditCursor cursor;
    // Nothing shown: the cursor rests at the start rather than at -1.
    cursor.moveTo(5, 3, 0, 0);
    QCOMPARE(cursor.editColIndex, 0);
    QCOMPARE(cursor.editShowingTabRowIndex, 0);

    // Centred rows (free scroll) start at an inset.
    const CursorGeometry geometry{10.0, 79.0, 25.0, 210.0, 111.0, 6};
    cursor.moveTo(2, 1, 32, 2);
    QCOMPARE(cursor.columnFrame(geometry), QRectF(58.5, 289.0, 28.0, 111.0));
    // A removed highlight stays removed wherever the cursor goes.
    cursor.placeHighlight(geometry);
    QVERIFY(!cursor.editColumnHighlight);
    cursor.editColumnHighlight = QRectF();
    cursor.placeHighlight(geometry);
    QCOMPARE(*cursor.editColumnHighlight, QRectF(58.5, 289.0, 28.0, 111.0));

    QSignalSpy shown(&cursor, &TabEditCursor::columnChangeShown);
    cursor.flashColumnChange(4, geometry);
    QCOMPARE(cursor.editColIndex, 4);
    QCOMPARE(*cursor.editColumnHighlight, QRectF(108.5, 289.0, 3.0, 111.0));
    QTRY_COMPARE(shown.size(), 1);

    // The item clamps to the strings and the indicator, where there is one, follows it.
    cursor.setItem(9, geometry);
    QCOMPARE(cursor.editColItemIndex, 5);
    QVERIFY(!cursor.editColumnItemIndicator);
    cursor.editColumnItemIndicator = QRectF();
    cursor.setItem(2, geometry);
    QCOMPARE(*cursor.editColumnItemIndicator, QRectF(0.0, 111.0 * 3 / 6 - 3.0, 28.0, 3.0));
}

void TestTabEditView::touchPlacement_data()
{
    QTest::addColumn<QPointF>("point");
    QTest::addColumn<int>("column");
    QTest::addColumn<int>("row");
    QTest::addColumn<int>("item");
    // Rows are 111 high under bands of 79, at a pitch of 210.
    QTest::newRow("lyric band ignored") << QPointF(100, 20) << 0 << 0 << 0;
    QTest::newRow("chord band of row 2 ignored") << QPointF(100, 250) << 0 << 0 << 0;
    QTest::newRow("first string") << QPointF(60, 80) << 2 << 0 << 0;
    QTest::newRow("fourth string row 2") << QPointF(130, 210 + 79 + 60) << 5 << 1 << 3;
    QTest::newRow("gap picks last string") << QPointF(30, 79 + 111 + 10) << 1 << 0 << 5;
}

void TestTabEditView::touchPlacement()
{
    QFETCH(QPointF, point);
    QFETCH(int, column);
    QFETCH(int, row);
    QFETCH(int, item);
    Fixture f;
    f.view.touchesBegan({point});
    QCOMPARE(f.view.editColIndex, column);
    QCOMPARE(f.view.editShowingTabRowIndex, row);
    QCOMPARE(f.view.editColItemIndex, item);
    // Magic mode leaves the cursor alone.
    f.view.setMagicEditMode(true);
    f.view.touchesBegan({QPointF(300, 100)});
    QCOMPARE(f.view.editColIndex, column);
}

void TestTabEditView::pagingArithmetic()
{
    Fixture f(4, 32, 2);
    QCOMPARE(f.view.tabRowHeight, 111.0);
    QCOMPARE(f.view.tabRowPitch(), 210.0);
    QCOMPARE(f.view.showingTabRows[1].tabRowFrame, QRectF(0, 289, 800, 111));
    QCOMPARE(f.view.showingTabRows[1].chordNamesDisplay.frame.top(), 210.0 + 49.0);
    const int positions = int(f.recorder.positions.size());
    f.view.setVisibleTabRowCount(2);
    QCOMPARE(f.recorder.positions.size(), positions); // unchanged: nothing happens
    f.view.settings.hideColHeaders = true;
    f.view.setVisibleTabRowCount(2);
    QCOMPARE(f.view.tabRowHeight, 136.0);
    QVERIFY(f.view.showingTabRows[0].chordNamesDisplay.hidden);
}

void TestTabEditView::pagingWindowAndPadding()
{
    Fixture f(6, 16, 1);
    f.view.moveToTabRow(5, false, false);
    QCOMPARE(f.view.tabRowIndex, 5);
    f.view.setVisibleTabRowCount(3);
    QCOMPARE(f.view.tabRowIndex, 3);
    QCOMPARE(f.view.tabRows.size(), 6);
    f.view.setEditPosition(0, 2);
    f.view.setVisibleTabRowCount(1);
    QCOMPARE(f.view.editShowingTabRowIndex, 0);
    // Showing more rows than the tab holds pads it with blank rows, without undo.
    Fixture shortTab(1, 16, 1);
    shortTab.view.setVisibleTabRowCount(3);
    QCOMPARE(shortTab.view.tabRows.size(), 3);
    QVERIFY(!shortTab.undo.canUndo());
    QCOMPARE(shortTab.recorder.positions.last(), QList<int>({0, 3, 3}));
    // An empty list keeps the column count.
    TabEditView bare;
    bare.loadTabRows({});
    QCOMPARE(bare.numTabColumns, 32);
}

void TestTabEditView::throttleFirstAndLast()
{
    Fixture f(20, 16, 1);
    f.view.moveToTabRowThrottled(4);
    QCOMPARE(f.view.tabRowIndex, 4); // the first moves at once
    f.view.moveToTabRowThrottled(8);
    f.view.moveToTabRowThrottled(12);
    QCOMPARE(f.view.tabRowIndex, 4);
    QList<int> seen;
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < 400) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        if (seen.isEmpty() || seen.last() != f.view.tabRowIndex)
            seen.append(f.view.tabRowIndex);
    }
    QCOMPARE(seen, QList<int>({4, 12})); // never the middle one
    // Once the timer has run out, the next call moves at once again.
    f.view.moveToTabRowThrottled(2);
    QCOMPARE(f.view.tabRowIndex, 2);
}

void TestTabEditView::noteMenuEntries_data()
{
    QTest::addColumn<ColumnItemType>("item");
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("startIndex");
    QTest::addColumn<QString>("first");
    QTest::addColumn<QString>("last");
    QTest::newRow("open string") << ColumnItemType::note(0) << 15 << 0 << u"0"_qs << u"1"_qs;
    QTest::newRow("fret 24") << ColumnItemType::note(24) << 16 << 1 << u"23"_qs << u"25"_qs;
    QTest::newRow("fret 25") << ColumnItemType::note(25) << 15 << 1 << u"24"_qs << u"*"_qs;
    QTest::newRow("hammer") << ColumnItemType(Kind::hammer) << 13 << 0 << u"h"_qs << u"*"_qs;
    QTest::newRow("blank") << ColumnItemType::blank() << 14 << 0 << QString(blankGlyph) << u"*"_qs;
}

void TestTabEditView::noteMenuEntries()
{
    QFETCH(ColumnItemType, item);
    QFETCH(int, count);
    QFETCH(int, startIndex);
    QFETCH(QString, first);
    QFETCH(QString, last);
    const NoteMenuEntries entries =
        NoteMenuEntries::forItem(item, 0, standardStringNotes(6), false);
    QCOMPARE(entries.results.size(), count);
    QCOMPARE(entries.labels.size(), count);
    QCOMPARE(entries.startIndex, startIndex);
    QCOMPARE(entries.labels.first(), first);
    QCOMPARE(entries.labels.last(), last);
    QCOMPARE(entries.results[startIndex], item);
    QVERIFY(!entries.results.contains(ColumnItemType::bar()));
    QCOMPARE(entries.results.count(ColumnItemType::blank()), item.isBlank() ? 1 : 0);
    // Note names follow the string's tuning: the top line of standard tuning is E.
    const NoteMenuEntries named =
        NoteMenuEntries::forItem(ColumnItemType::note(1), 0, standardStringNotes(6), true);
    QCOMPARE(named.labels.mid(0, 2), QStringList({u"E"_qs, u"F"_qs}));
}

void TestTabEditView::noteMenuChoiceByHold()
{
    Fixture f;
    f.column(1, 6).setColumnItem(2, ColumnItemType::note(5));
    f.view.loadTabRows(f.view.tabRows);
    f.view.setEditPosition(1, 0);
    // Row 2, column 6, third string: x 150..175, strings from 289 at 18.5 apart.
    const QPointF hold(162, 289 + 18.5 * 2 + 9);
    f.view.forceGestureRecognizer.touchBegan(hold);
    QTRY_VERIFY(f.view.noteContextMenu);
    QCOMPARE(f.view.noteContextMenu->labels.size(), 16);
    QCOMPARE(f.view.noteContextMenuSource->colIndex, 6);
    QCOMPARE(f.view.noteContextMenuSource->itemIndex, 2);
    // Slide to the fret above (the last entry) and lift.
    const ForceContextMenu &menu = *f.view.noteContextMenu;
    const QPointF target = menu.entryCenter(15) + f.view.contentOffset;
    f.view.forceGestureRecognizer.touchMoved(target);
    f.view.forceGestureRecognizer.touchEnded(target);
    QCOMPARE(f.column(1, 6).columnItems[2], ColumnItemType::note(6));
    QCOMPARE(f.recorder.itemChanges, 1);
    QCOMPARE(f.view.editColIndex, 1); // the cursor stays
    QVERIFY(!f.view.noteContextMenuSource);

    // Lifting in the middle chooses nothing.
    f.view.forceGestureRecognizer.touchBegan(hold);
    QTRY_VERIFY(f.view.noteContextMenu);
    f.view.forceGestureRecognizer.touchEnded(hold + QPointF(0, 1));
    QCOMPARE(f.column(1, 6).columnItems[2], ColumnItemType::note(6));
    QCOMPARE(f.recorder.itemChanges, 1);
    // Above a row's lines and in the right margin no menu opens.
    f.view.openNoteContextMenu(QPointF(100, 20));
    f.view.openNoteContextMenu(QPointF(801, 100));
    QVERIFY(!f.view.noteContextMenuSource);
}

void TestTabEditView::noteMenuCancelledWhenCellsMove_data()
{
    using Change = TabChange::Kind;
    QTest::addColumn<TabChange>("change");
    QTest::addColumn<bool>("cancels");
    QTest::newRow("row removed") << TabChange{Change::RowRemoved, 0, {}} << true;
    QTest::newRow("row inserted") << TabChange{Change::RowInserted, 1, {}} << true;
    QTest::newRow("column inserted") << TabChange{Change::ColumnInserted, 3, {2}} << true;
    QTest::newRow("column removed") << TabChange{Change::ColumnRemoved, 0, {7}} << true;
    QTest::newRow("rows replaced") << TabChange{Change::Rows, -1, {}} << true;
    QTest::newRow("its own column") << TabChange{Change::Columns, 3, {7}} << false;
    QTest::newRow("lyrics") << TabChange{Change::Lyrics, 3, {}} << false;
    QTest::newRow("rows padded") << TabChange{Change::RowsAppended, 9, {}} << false;
}

void TestTabEditView::noteMenuCancelledWhenCellsMove()
{
    QFETCH(TabChange, change);
    QFETCH(bool, cancels);
    FakeNoteMenuHost host;
    host.place = NoteMenuPlace{NoteContextMenuSource{3, 7, 1, 0},
                               ColumnItemType::note(5),
                               standardStringNotes(6),
                               false,
                               QPointF(100, 60),
                               QRectF(0, 0, 400, 300)};
    TabNoteMenu menu(host);
    menu.openAt(QPointF(100, 100));
    menu.tabChanged(change);
    QCOMPARE(!menu.source(), cancels);
    QCOMPARE(!menu.menu(), cancels);
    // Lifting on an entry now writes only where the menu still stands.
    menu.forceContextMenuFinished(0);
    QCOMPARE(host.choices.size(), cancels ? 0 : 1);
}

void TestTabEditView::noteMenuIgnoresARowThatWent()
{
    Fixture f;
    f.column(1, 6).setColumnItem(2, ColumnItemType::note(5));
    f.column(2, 6).setColumnItem(2, ColumnItemType::note(7));
    f.view.loadTabRows(f.view.tabRows);
    QSignalSpy menuChanges(&f.view, &TabEditView::menuChanged);
    // Row 2, column 6, third string, as in noteMenuChoiceByHold.
    f.view.openNoteContextMenu(QPointF(162, 289 + 18.5 * 2 + 9));
    QCOMPARE(f.view.noteContextMenuSource->tRowIndex, 1);
    const int fretAbove = int(f.view.noteContextMenu->labels.size()) - 1;
    // The first row goes, as an undo or another view of the document removes it: the menu's
    // row is now row 0 and row 1 is the one below it.
    QVERIFY(f.edits.removeTabRow(0));
    QVERIFY(!f.view.noteContextMenuSource);
    QVERIFY(menuChanges.size() >= 2);
    f.view.forceContextMenuFinished(fretAbove);
    QCOMPARE(f.column(0, 6).columnItems[2], ColumnItemType::note(5));
    QCOMPARE(f.column(1, 6).columnItems[2], ColumnItemType::note(7));
    QCOMPARE(f.recorder.itemChanges, 0);
}

// Every edit the surface makes from its cursor, made on a 5 × 20 tab with the cursor on row 1,
// column 3, string 3. The data-level kinds are round-tripped in tst_tabedits.
static const QList<std::pair<const char *, std::function<void(TabEditView &)>>> &everyEditKind()
{
    static const QList<ColumnItemType> chord(6, ColumnItemType::note(2));
    static const QList<std::pair<const char *, std::function<void(TabEditView &)>>> edits = {
        {"fret press",
         [](TabEditView &v) {
             v.pressFret(2, 9);
             v.pressFret(4, 0);
             QVERIFY(v.commitFretPress());
         }},
        {"typed item", [](TabEditView &v) { v.putItemAtCursor(u"h"_qs); }},
        {"chord at cursor", [](TabEditView &v) { v.putColumnAtCursor(u"A"_qs, chord); }},
        {"clear column", [](TabEditView &v) { v.clearCursorColumn(); }},
        {"bar", [](TabEditView &v) { v.toggleBarColumn(); }},
        {"insert column", [](TabEditView &v) { QVERIFY(!v.addColumnAtCursor()); }},
        {"remove row", [](TabEditView &v) { v.removeTabRow(1); }},
        {"edit off screen",
         [](TabEditView &v) { v.setColumnItemAt(4, 3, 0, ColumnItemType::note(1), false); }},
    };
    return edits;
}

void TestTabEditView::undoRedoOfEveryEditKind_data()
{
    QTest::addColumn<int>("kind");
    for (int i = 0; i < everyEditKind().size(); ++i)
        QTest::newRow(everyEditKind()[i].first) << i;
}

void TestTabEditView::undoRedoOfEveryEditKind()
{
    QFETCH(int, kind);
    Fixture f(5, 20, 2);
    for (int r = 0; r < 5; ++r) {
        f.column(r, 3).setColumnItem(1, ColumnItemType::note(r + 2));
        f.column(r, 3).chordName = u"E%1"_qs.arg(r);
    }
    f.view.loadTabRows(f.view.tabRows);
    f.view.setEditPosition(3, 1);
    f.view.setEditItem(2);
    const QList<TabRowData> before = f.view.tabRows;
    everyEditKind()[kind].second(f.view);
    const QList<TabRowData> after = f.view.tabRows;
    QVERIFY(after != before);
    QVERIFY(f.undo.canUndo());
    f.view.undoEdit();
    QCOMPARE(f.view.tabRows.list(), before);
    QVERIFY(!f.undo.canUndo());
    f.view.redoEdit();
    QCOMPARE(f.view.tabRows.list(), after);
    QVERIFY(!f.undo.canRedo());
    f.view.undoEdit();
    QCOMPARE(f.view.tabRows.list(), before);
    // The shown views follow the model.
    for (int i = 0; i < f.view.showingCount(); ++i) {
        for (int j = 0; j < 20; ++j)
            QCOMPARE(f.view.showingTabRows[i].tabColumnViews[j].tabColData,
                     f.view.tabRows[f.view.tabRowIndex + i].colDatas[j]);
    }
    QVERIFY(f.recorder.undoChanges >= 4);
}

void TestTabEditView::undoBringsRowIntoView()
{
    Fixture f(10, 16, 2);
    f.view.setColumnItemAt(8, 2, 0, ColumnItemType::note(3), false);
    QCOMPARE(f.view.tabRowIndex, 8);
    f.view.moveToTabRow(0, false, false);
    f.view.undoEdit();
    QCOMPARE(f.view.tabRowIndex, 8);
    QVERIFY(f.view.tabRows[8].colDatas[2].isAllBlank());
}

void TestTabEditView::viewsFollowTheChangeNotice()
{
    Fixture f(4, 16, 2);
    QSignalSpy spy(&f.view, &TabEditView::columnsNeedRender);
    QCoreApplication::processEvents();
    spy.clear();
    // Edits made on the tab itself, as another view of the same document makes them.
    QVERIFY(f.edits.setColumnItem(1, 5, 2, ColumnItemType::note(9)));
    QCOMPARE(f.view.showingTabRows[1].tabColumnViews[5].tabColData,
             f.tab.tabRowDatas[1].colDatas[5]);
    QVERIFY(f.edits.setColumnChordName(0, 4, u"Dm"_qs));
    QCOMPARE(f.view.showingTabRows[0].chordNamesDisplay.chordNames[4],
             std::optional<QString>(u"Dm"_qs));
    QVERIFY(f.edits.insertLyricLine(1, 0, u"la la"_qs));
    QCOMPARE(f.view.showingTabRows[1].lyricsField.text, u"la la"_qs);
    QCoreApplication::processEvents();
    // One render per changed column, a name being part of its column.
    QCOMPARE(spy.size(), 2);
    QCOMPARE(spy[0].at(0).toInt(), 0);
    QCOMPARE(spy[0].at(1).value<QList<int>>(), QList<int>({4}));
    QCOMPARE(spy[1].at(0).toInt(), 1);
    QCOMPARE(spy[1].at(1).value<QList<int>>(), QList<int>({5}));

    // A second surface on the same tab shows the first one's edits, and shares its steps.
    TabEditView other;
    other.setTabEdits(&f.edits);
    other.stringNotes = standardStringNotes(6);
    other.setFrameSize(QSizeF(800, 400));
    other.loadTabRows();
    other.setVisibleTabRowCount(2);
    f.view.setColumnItemAt(0, 2, 0, ColumnItemType::note(4), false);
    QCOMPARE(other.showingTabRows[0].tabColumnViews[2].tabColData.columnItems[0],
             ColumnItemType::note(4));
    other.undoEdit();
    QVERIFY(f.view.showingTabRows[0].tabColumnViews[2].tabColData.isAllBlank());
    QVERIFY(other.showingTabRows[0].tabColumnViews[2].tabColData.isAllBlank());
}

void TestTabEditView::chordNameRepeatRule_data()
{
    QTest::addColumn<int>("namedColumn");
    QTest::addColumn<bool>("stored");
    QTest::newRow("one to the left") << 4 << false;
    QTest::newRow("two to the left") << 3 << false;
    QTest::newRow("three to the left") << 2 << true;
}

void TestTabEditView::chordNameRepeatRule()
{
    QFETCH(int, namedColumn);
    QFETCH(bool, stored);
    Fixture f;
    f.view.setColumnChordName(0, namedColumn, u"Am"_qs);
    f.view.setEditPosition(5, 0);
    f.view.putColumnAtCursor(u"Am"_qs, QList<ColumnItemType>(6, ColumnItemType::note(0)));
    QCOMPARE(f.column(0, 5).chordName.has_value(), stored);
}

void TestTabEditView::barToggleDestroysAndUndoRestores()
{
    Fixture f;
    f.view.setEditPosition(2, 0);
    f.view.setColumnChordName(0, 2, u"D"_qs);
    f.view.pressFret(1, 2);
    f.view.pressFret(2, 3);
    f.view.commitFretPress();
    const TabColumnData notes = f.column(0, 2);
    f.view.toggleBarColumn();
    QVERIFY(f.column(0, 2).hasBar());
    QVERIFY(!f.column(0, 2).chordName);
    QVERIFY(f.view.currentFretPositions().isEmpty());
    f.view.toggleBarColumn();
    QVERIFY(f.column(0, 2).isAllBlank());
    QVERIFY(f.view.currentColumnIsBlank());
    f.view.undoEdit();
    f.view.undoEdit();
    QCOMPARE(f.column(0, 2), notes);
    QCOMPARE(f.view.currentFretPositions(),
             QList<FretPosition>({FretPosition{1, 2}, FretPosition{2, 3}}));
}

void TestTabEditView::renderGateMarksOnlyChangedColumns()
{
    Fixture f(3, 16, 2);
    QSignalSpy spy(&f.view, &TabEditView::columnsNeedRender);
    QCoreApplication::processEvents();
    spy.clear();
    QList<TabRowData> rows = f.view.tabRows;
    rows[1].colDatas[7].setColumnItem(0, ColumnItemType::note(4));
    rows[1].colDatas[9].chordName = u"F"_qs;
    f.tab.tabRowDatas = rows;
    f.view.refreshShowingRows(false);
    f.view.refreshShowingRows(false);
    QVERIFY(spy.isEmpty()); // queued: one render for many changes
    QCoreApplication::processEvents();
    QCOMPARE(spy.size(), 1);
    QCOMPARE(spy.first().at(0).toInt(), 1);
    QCOMPARE(spy.first().at(1).value<QList<int>>(), QList<int>({7, 9}));
}

void TestTabEditView::renderGateOneFlushPerEvent()
{
    RenderGate gate;
    QList<QPair<int, QList<int>>> columns;
    QList<int> names;
    QObject::connect(&gate, &RenderGate::columnsNeedRender, [&](int row, const QList<int> &cols) {
        columns.append({row, cols});
    });
    QObject::connect(&gate, &RenderGate::chordNamesNeedRender, [&](int row) { names.append(row); });
    // The edits of one event, some touching a column twice.
    gate.queueColumn(2, 9);
    gate.queueColumn(0, 4);
    gate.queueColumn(2, 1);
    gate.queueColumn(2, 9);
    gate.queueChordNames(1);
    gate.queueChordNames(1);
    QVERIFY(gate.flushQueued());
    QVERIFY(gate.isColumnQueued(2, 9));
    QVERIFY(!gate.isColumnQueued(1, 9));
    QVERIFY(columns.isEmpty());
    QCoreApplication::processEvents();
    using Row = QPair<int, QList<int>>;
    QCOMPARE(columns, QList<Row>({Row{0, {4}}, Row{2, {1, 9}}}));
    QCOMPARE(names, QList<int>({1}));
    QVERIFY(!gate.flushQueued());
    QVERIFY(!gate.isColumnQueued(2, 9));
    // Nothing is sent twice.
    QCoreApplication::processEvents();
    QCOMPARE(columns.size(), 2);
    QCOMPARE(names.size(), 1);

    // What a listener queues while it redraws waits for a flush of its own.
    QObject::connect(&gate, &RenderGate::chordNamesNeedRender, [&](int row) {
        if (row == 0)
            gate.queueColumn(0, 1);
    });
    gate.queueChordNames(0);
    QCoreApplication::processEvents();
    QCOMPARE(names.size(), 2);
    QCOMPARE(columns.size(), 2);
    QVERIFY(gate.flushQueued());
    QCoreApplication::processEvents();
    QCOMPARE(columns.last(), Row(0, {1}));
}

void TestTabEditView::columnDrawing()
{
    TabColumnView column(TabColumnData(6));
    const QRectF frame(0, 0, 25, 120);
    QList<ColumnDrawOp> ops = column.drawOps(frame, standardStringNotes(6), false);
    QCOMPARE(ops.size(), 6);
    // The dashes make the string line: three quarters of the column, gaps between columns.
    QCOMPARE(ops[0].kind, ColumnDrawOp::Kind::dash);
    QCOMPARE(ops[0].rect, QRectF(3.125, 10 - 1.375, 18.75, 2.75));

    column.tabColData.setColumnItem(0, ColumnItemType::note(12));
    column.tabColData.setColumnItem(1, ColumnItemType::note(3));
    column.tabColData.setColumnItem(2, ColumnItemType(Kind::hammer));
    ops = column.drawOps(frame, standardStringNotes(6), false);
    QCOMPARE(ops[0].text, u"12"_qs);
    QVERIFY(ops[0].black);
    QCOMPARE(ops[0].fontSize, 25 * 1.32 / 1.95);
    QVERIFY(!ops[1].black);
    QCOMPARE(ops[1].fontSize, 25 * 1.32 / 1.515);
    QCOMPARE(ops[2].text, u"h"_qs);
    ops = column.drawOps(frame, standardStringNotes(6), true);
    QCOMPARE(ops[0].text, u"E"_qs); // twelve above the top E
    QCOMPARE(ops[1].text, u"D"_qs);
    QCOMPARE(ops[1].fontSize, 25 * 1.32 / 1.82);
    QVERIFY(ops[1].black);

    // A bar column shows the bar only; a selected cell keeps its background.
    column.tabColData.setColumnItem(0, ColumnItemType::bar());
    column.selectedColItems[4] = true;
    ops = column.drawOps(frame, standardStringNotes(6), false);
    QCOMPARE(ops.size(), 2);
    QCOMPARE(ops[0].kind, ColumnDrawOp::Kind::selectedBackground);
    QCOMPARE(ops[0].rect, QRectF(0, 80, 25, 20));
    QCOMPARE(ops[1].kind, ColumnDrawOp::Kind::bar);
    QCOMPARE(ops[1].rect, QRectF(12.5 - 1.375, 0, 2.75, 120));
    // A bad tuning never breaks a paint.
    column.tabColData = TabColumnData({ColumnItemType::note(2)});
    QCOMPARE(column.drawOps(frame, {}, true).first().text, u"2"_qs);
    QCOMPARE(TabColumnView::contentScale(1, 2, true), 3.0);
}

void TestTabEditView::chordNameLabels()
{
    using Names = ChordNamesDisplay::Names;
    auto fit = [](const Names &names) {
        ChordNamesDisplay display(names, QRectF(0, 0, 25.0 * names.size(), 25));
        display.render();
        return display.labels;
    };
    QList<ChordNameLabel> labels = fit({std::nullopt, u"Am7"_qs, std::nullopt});
    QCOMPARE(labels[1].x, -8.0);
    QCOMPARE(labels[1].width, 41.0);
    QCOMPARE(labels[0].text, ChordNamesDisplay::placeholder);
    QVERIFY(labels[0].shown);
    labels = fit({u"C"_qs, u"Am7"_qs, std::nullopt});
    QCOMPARE(labels[1].x, -2.0);
    QCOMPARE(labels[0].x, 0.0); // one character is not moved
    labels = fit({u"Am7"_qs, u"C#m7"_qs, u"G"_qs});
    for (int i : {0, 1}) {
        QCOMPARE(labels[i].x, 2.0);
        QCOMPARE(labels[i].width, 21.0);
        QCOMPARE(labels[i].rotation, -0.3141592653589793);
    }
    QCOMPARE(labels[2].rotation, 0.0);

    ChordNamesDisplay view({std::nullopt, u"G"_qs}, QRectF(0, 0, 50, 19));
    view.viewMode = true;
    view.render();
    QVERIFY(!view.labels[0].shown);
    QVERIFY(view.labels[1].shown);
    QCOMPARE(view.labels[1].height, 19 * 1.1);
    QCOMPARE(view.columnAt(49), 1);

    ChordNamesDisplay display({u"A"_qs, u"B"_qs, u"C"_qs, u"D"_qs}, QRectF(0, 0, 100, 25));
    display.showOverlay(2, {std::nullopt, u"E"_qs, u"F"_qs});
    QCOMPARE(display.highlightIndices, QList<int>({2, 3, 4}));
    display.showOverlayBlanks(0);
    display.render();
    QStringList texts;
    for (const ChordNameLabel &label : std::as_const(display.labels))
        texts.append(label.text);
    const QString dot = ChordNamesDisplay::placeholder;
    QCOMPARE(texts, QStringList({dot, dot, dot, u"E"_qs}));
    QVERIFY(display.labels[2].highlighted && !display.labels[1].highlighted);
    display.highlight(std::nullopt, true);
    QVERIFY(display.highlightIndices.isEmpty());
}

void TestTabEditView::markupRowHeights()
{
    TabRowWithMarkupView::Options options;
    TabRowWithMarkupView six(TabRowData(30, 6), standardStringNotes(6), 0, 100, options);
    six.setWidth(1000);
    QVERIFY(qAbs(six.requestedHeight - 0.318 * 279.0 / (279.0 - 19.0) * 1000) < 1e-9);
    // Lyric band aside, a five-string row is 20/279 lower.
    options.showLyrics = false;
    TabRowWithMarkupView sixBare(TabRowData(30, 6), standardStringNotes(6), 0, 100, options);
    TabRowWithMarkupView fiveBare(TabRowData(30, 5), standardStringNotes(5), 0, 100, options);
    sixBare.setWidth(1000);
    fiveBare.setWidth(1000);
    QVERIFY(qAbs(fiveBare.requestedHeight / sixBare.requestedHeight - (1 - 20.0 / 279.0)) < 1e-9);
    // Half the columns, twice the height.
    TabRowWithMarkupView wide(TabRowData(60, 6), standardStringNotes(6), 0, 100, options);
    wide.setWidth(1000);
    QVERIFY(qAbs(wide.requestedHeight * 2 - sixBare.requestedHeight) < 1e-9);
    const auto parts = sixBare.layout(QSizeF(1000, sixBare.requestedHeight));
    QCOMPARE(parts.notesTopPadding, parts.tabRowView.top());
    QVERIFY(parts.tabRowView.bottom() <= sixBare.requestedHeight + 1e-9);
    const QRectF highlight = sixBare.columnHighlightRect(40, QSizeF(1000, 300));
    QCOMPARE(highlight.left(), parts.tabRowView.left() + parts.tabRowView.width() / 30 * 29 -
                                   parts.tabRowView.width() / 30 * 3.0 / 25.0 * 0.5);
    QCOMPARE(TabRowSideBySideWithMarkupView::childFrames(400, {100, 120})[1].left(), 204.0);
    QCOMPARE(TabRowSideBySideWithMarkupView::rowAt(QPointF(-19, 0), 400, {QRectF(0, 0, 196, 100)}),
             0);
}

void TestTabEditView::stringLetters()
{
    const QStringList standard = standardStringNotes(6);
    QCOMPARE(StringSpacedView::letter(standard, 0), u"E"_qs);
    QCOMPARE(StringSpacedView::letter(standard, 5), u"E"_qs);
    QCOMPARE(StringSpacedView::letter(standard, 1), u"B"_qs);
    QCOMPARE(StringSpacedView::letter(standard, 9), QString());
    StringSpacedView view;
    view.numItems = 6;
    view.numItemGroups = 3;
    view.topPadding = 12;
    view.frameSize = QSizeF(30, 300);
    QCOMPARE(view.layoutItems().size(), 18);
    QVERIFY(!view.stringAt(5)); // the top padding is no string
    QCOMPARE(view.stringAt(100 + 12 + 1)->group, 1);
    QCOMPARE(view.stringAt(100 + 12 + 1)->stringNum, 1);
    QCOMPARE(view.stringAt(99)->stringNum, 6);
    QCOMPARE(StringSpacedView::electricStringThickness(0, 6, 4.0), 0.0);
    QCOMPARE(StringSpacedView::electricStringThickness(5, 6, 40.0), 7.0);
    QCOMPARE(StringSpacedView::electricStringThickness(0, 8, 20.0), 2.0);
    QCOMPARE(StringSpacedView::letterFontSize(70), 26.0);
}

void TestTabEditView::pressRecogniser()
{
    ForceLongPressGestureRecognizer recogniser;
    QSignalSpy spy(&recogniser, &ForceLongPressGestureRecognizer::stateChanged);
    recogniser.touchBegan(QPointF(10, 10));
    recogniser.touchMoved(QPointF(18, 18)); // within 12 points
    QTest::qWait(150);
    QVERIFY(spy.isEmpty());
    QTRY_COMPARE(spy.size(), 1);
    QCOMPARE(recogniser.state, ForceLongPressGestureRecognizer::State::began);
    recogniser.touchEnded(QPointF(40, 40));
    QCOMPARE(recogniser.state, ForceLongPressGestureRecognizer::State::ended);

    spy.clear();
    recogniser.touchBegan(QPointF(10, 10));
    recogniser.touchMoved(QPointF(10, 23)); // beyond the allowance
    QTest::qWait(400);
    QVERIFY(spy.isEmpty());
    recogniser.touchEnded(QPointF(10, 23));
    QCOMPARE(recogniser.state, ForceLongPressGestureRecognizer::State::failed);
}

void TestTabEditView::typedLyricsReachTheRowAsOneStep()
{
    Fixture f;
    f.view.lyricChangeTimer.setInterval(50);
    f.view.lyricsFieldTextChanged(1, u"h"_qs);
    f.view.lyricsFieldTextChanged(1, u"hello"_qs);
    QCOMPARE(f.recorder.lyricEdits, 2);
    // The model lags the field until the typing pauses.
    QVERIFY(!f.view.tabRows[1].lyricText());
    QTRY_COMPARE(f.view.tabRows[1].lyricText(), u"hello"_qs);
    QCOMPARE(f.view.tabRows[1].lyricLines, QStringList{u"hello"_qs});
    QCOMPARE(f.view.showingTabRows[1].lyricsField.text, u"hello"_qs);

    f.undo.undo();
    QCOMPARE(f.view.tabRows[1].lyricText().value_or(QString()), QString());
    QCOMPARE(f.view.showingTabRows[1].lyricsField.text, QString());
    f.undo.redo();
    QCOMPARE(f.view.tabRows[1].lyricText(), u"hello"_qs);

    // Moving to another row's field writes the first row's text at once.
    f.view.lyricsFieldTextChanged(0, u"one"_qs);
    f.view.lyricsFieldTextChanged(1, u"two"_qs);
    QCOMPARE(f.view.tabRows[0].lyricText(), u"one"_qs);
    f.view.commitLyricsField();
    QCOMPARE(f.view.tabRows[1].lyricText(), u"two"_qs);
    QVERIFY(!f.view.lyricChangeTimer.isActive());

    // The rows page before the second is up: the text reaches the row it was typed in.
    Fixture g(8);
    g.view.lyricsFieldTextChanged(1, u"paged"_qs);
    g.view.moveToTabRow(4, true, false);
    QCOMPARE(g.view.tabRowIndex, 4);
    QCOMPARE(g.view.tabRows[1].lyricText(), u"paged"_qs);
    QCOMPARE(g.view.showingTabRows[0].lyricsField.text, QString());
    QVERIFY(!g.view.lyricChangeTimer.isActive());
}

void TestTabEditView::lyricLinesAddRemoveAndSelect()
{
    Fixture f;
    f.view.setLyricLine(0, 0, u"verse one"_qs);
    f.view.insertLyricLine(0, 1, u"verse two"_qs);
    QCOMPARE(f.view.tabRows[0].lyricLines, (QStringList{u"verse one"_qs, u"verse two"_qs}));
    // Adding a line leaves the field on the line it showed; choosing shows the other.
    QCOMPARE(f.view.showingTabRows[0].lyricsField.text, u"verse one"_qs);
    f.view.selectLyricLine(0, 1);
    QCOMPARE(f.view.showingTabRows[0].lyricsField.text, u"verse two"_qs);
    f.view.insertLyricLine(0, 0, u"prelude"_qs);
    QCOMPARE(f.view.showingTabRows[0].lyricsField.text, u"verse two"_qs);
    f.undo.undo();
    f.view.selectLyricLine(0, 0);
    QCOMPARE(f.view.showingTabRows[0].lyricsField.text, u"verse one"_qs);

    // Their undo round trips are checked on the data in tst_tabedits.
    f.view.removeLyricLine(0, 0);
    QCOMPARE(f.view.tabRows[0].lyricLines, QStringList{u"verse two"_qs});
    QCOMPARE(f.view.showingTabRows[0].lyricsField.text, u"verse two"_qs);
    f.undo.undo();
    // Out of range does nothing.
    f.view.removeLyricLine(0, 7);
    f.view.selectLyricLine(5, 0);
    QCOMPARE(f.view.tabRows[0].lyricLines.size(), 2);
}

LUTEGRID_TEST_MAIN(TestTabEditView)
#include "tst_tabeditview.moc"
