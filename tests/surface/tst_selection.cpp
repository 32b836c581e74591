#include "music/notefromfretshelper.h"
#include "services/lgundomanager.h"
#include "surface/tabeditview.h"
#include "testmain.h"

#include <algorithm>

namespace {

// A paged surface of 800 by 400 points showing two rows of six strings: rows are 111 points
// high, strings 18.5 apart, and row r's string lines start at y = 79 + 210 r.
struct Fixture {
    LgUndoManager undo;
    TabData tab{QString(), 6};
    TabEdits edits{&tab, &undo};
    TabEditView view;
    double now = 0.0;
    // Steps done, not counting undo and redo.
    int steps = 0;
    explicit Fixture(int columns = 32, int rows = 3)
    {
        undo.groupsByEvent = false;
        QObject::connect(&undo, &LgUndoManager::changed, [this](LgUndoManager::Change change) {
            steps += change == LgUndoManager::Change::Done ? 1 : 0;
        });
        view.setTabEdits(&edits);
        view.uptime = [this] { return now; };
        view.stringNotes = standardStringNotes(6);
        view.setFrameSize(QSizeF(800, 400));
        QList<TabRowData> list;
        for (int r = 0; r < rows; ++r)
            list.append(TabRowData(columns, 6));
        view.loadTabRows(list);
        view.setVisibleTabRowCount(2);
        view.setMagicEditMode(true);
    }
    TabColumnData &column(int row, int col) { return tab.tabRowDatas[row].colDatas[col]; }
    void put(int row, int col, int item, qint64 fret)
    {
        column(row, col).columnItems[item] = ColumnItemType::note(fret);
    }
    static double lineY(int shownRow) { return 79.0 + 210.0 * shownRow; }
    // Drops the selection with its top left on a cell, as a snapped drag view stands.
    void dropAt(bool copy, int shownRow, int col, int item)
    {
        const SelectionBox &box = *view.magicSelectionBox;
        view.dropSelection(copy, 25.0 * col, lineY(shownRow) + 18.5 * item,
                           25.0 * box.columnCount() + 3.0, 18.5 * box.itemCount());
    }
};

SelectionBox box(int c0, int c1, int i0, int i1, int row, int h0 = -1, int h1 = -1)
{
    SelectionBox b(c0, c1 - c0 + 1, i0, i1 - i0 + 1, row);
    b.colHeaderStart = h0;
    b.colHeaderEnd = h1;
    return b;
}

// The name of every note in the rows, as a sorted list, raised by `semitones`.
QStringList noteNames(const TabData &tab, int semitones)
{
    static const QStringList order{u"A"_qs,  u"A#"_qs, u"B"_qs, u"C"_qs,  u"C#"_qs, u"D"_qs,
                                   u"D#"_qs, u"E"_qs,  u"F"_qs, u"F#"_qs, u"G"_qs,  u"G#"_qs};
    QStringList names;
    for (const TabRowData &row : tab.tabRowDatas) {
        for (const TabColumnData &column : row.colDatas) {
            for (int i = 0; i < column.columnItems.size(); ++i) {
                const ColumnItemType &item = column.columnItems[i];
                if (!item.isNote())
                    continue;
                const QString open = tab.stringNotes[tab.stringCount() - 1 - i];
                const QString name =
                    NoteFromFretsHelper::shared().noteName(item.fret(), open).value_or(QString());
                names.append(order[(order.indexOf(name) + semitones + 12) % 12]);
            }
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace

class TestSelection : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void bandShrinksToWhatStandsInIt()
    {
        Fixture f;
        f.put(0, 3, 1, 5);
        f.put(0, 7, 4, 7);
        f.column(0, 5).chordName = u"Am"_qs;
        // Columns 1 to 10 over every string: the box holds columns 3 to 7, strings 2 to 5.
        QVERIFY(f.view.selectRect(30, Fixture::lineY(0) + 2, 240, 100));
        QCOMPARE(*f.view.magicSelectionBox, box(3, 7, 1, 4, 0));
        QVERIFY(f.view.showingTabRows[0].tabColumnViews[5].selectedColItems[2]);
        QVERIFY(!f.view.showingTabRows[0].tabColumnViews[8].selectedColItems[2]);
        // Blanks only: no selection, and the old box stays.
        QVERIFY(!f.view.selectRect(30, Fixture::lineY(1) + 2, 240, 100));
        QCOMPARE(*f.view.magicSelectionBox, box(3, 7, 1, 4, 0));
        // Starting 17 points above the lines takes chord names; ending above them, only names.
        QVERIFY(f.view.selectRect(30, Fixture::lineY(0) - 17, 240, 60));
        QCOMPARE(*f.view.magicSelectionBox, box(3, 3, 1, 1, 0, 5, 5));
        QVERIFY(f.view.selectRect(30, Fixture::lineY(0) - 17, 240, 10));
        SelectionBox namesOnly = box(0, 0, 0, 0, 0, 5, 5);
        namesOnly.colIndexStart = namesOnly.colIndexEnd = -1;
        namesOnly.itemIndexStart = namesOnly.itemIndexEnd = -1;
        QCOMPARE(*f.view.magicSelectionBox, namesOnly);
        QCOMPARE(f.view.showingTabRows[0].chordNamesDisplay.highlightIndices, QList<int>{5});
    }

    void moveAndCopyWithUndo_data()
    {
        QTest::addColumn<bool>("copy");
        QTest::addColumn<int>("toShownRow");
        QTest::newRow("move in the row") << false << 0;
        QTest::newRow("copy in the row") << true << 0;
        QTest::newRow("move to the next row") << false << 1;
        QTest::newRow("copy to the next row") << true << 1;
    }
    void moveAndCopyWithUndo()
    {
        QFETCH(bool, copy);
        QFETCH(int, toShownRow);
        Fixture f;
        for (int c = 2; c <= 5; ++c)
            f.put(0, c, 0, c);
        f.put(0, 6, 0, 9);
        f.put(1, 6, 0, 11);
        f.column(0, 2).chordName = u"Am"_qs;
        f.column(0, 4).chordName = u"C"_qs;
        const TabData before = f.tab;
        QVERIFY(f.view.selectRect(55, Fixture::lineY(0) - 20, 90, 30));
        QCOMPARE(*f.view.magicSelectionBox, box(2, 5, 0, 0, 0, 2, 4));
        // One column to the right, onto the 9 (and the 11 of the next row).
        f.dropAt(copy, toShownRow, 3, 0);
        const TabRowData &target = f.tab.tabRowDatas[toShownRow];
        for (int c = 3; c <= 6; ++c)
            QCOMPARE(target.colDatas[c].columnItems[0], ColumnItemType::note(c - 1));
        QCOMPARE(target.colDatas[3].chordName, u"Am"_qs);
        QCOMPARE(target.colDatas[5].chordName, u"C"_qs);
        QCOMPARE(target.colDatas[4].chordName, std::nullopt);
        const TabRowData &source = f.tab.tabRowDatas[0];
        if (copy) {
            QCOMPARE(source.colDatas[2].columnItems[0], ColumnItemType::note(2));
        } else {
            QCOMPARE(source.colDatas[2].columnItems[0], ColumnItemType::blank());
            QCOMPARE(source.colDatas[2].chordName, std::nullopt);
        }
        // The selection went with the block.
        QCOMPARE(*f.view.magicSelectionBox, box(3, 6, 0, 0, toShownRow, 3, 5));
        const TabData after = f.tab;
        QCOMPARE(f.steps, 1);
        f.view.undoEdit();
        QCOMPARE(f.tab, before);
        // An undone move takes the selection back to the source; a copy's stays on its place.
        if (!copy)
            QCOMPARE(*f.view.magicSelectionBox, box(2, 5, 0, 0, 0, 2, 4));
        f.view.redoEdit();
        QCOMPARE(f.tab, after);
    }

    void refusedDropsChangeNothing_data()
    {
        QTest::addColumn<int>("shownRow");
        QTest::addColumn<int>("col");
        QTest::addColumn<double>("dy");
        QTest::newRow("onto itself") << 0 << 2 << 0.0;
        QTest::newRow("past the row's end") << 0 << 30 << 0.0;
        QTest::newRow("below the row") << 0 << 4 << 100.0;
        QTest::newRow("over the lyric band") << 1 << 4 << -60.0;
    }
    void refusedDropsChangeNothing()
    {
        QFETCH(int, shownRow);
        QFETCH(int, col);
        QFETCH(double, dy);
        Fixture f;
        f.put(0, 2, 0, 1);
        f.put(0, 4, 1, 3);
        const TabData before = f.tab;
        QVERIFY(f.view.selectRect(55, Fixture::lineY(0) + 2, 60, 30));
        const SelectionBox selected = *f.view.magicSelectionBox;
        f.view.dropSelection(false, 25.0 * col, Fixture::lineY(shownRow) + dy, 78, 37);
        QCOMPARE(f.tab, before);
        QCOMPARE(f.steps, 0);
        QCOMPARE(*f.view.magicSelectionBox, selected);
    }

    void semitoneShiftAcrossStrings_data()
    {
        QTest::addColumn<int>("semitones");
        QTest::newRow("down") << -1;
        QTest::newRow("up") << 1;
    }
    void semitoneShiftAcrossStrings()
    {
        QFETCH(int, semitones);
        Fixture f;
        // An open B and a fret-25 B: one of them leaves its string whichever way it goes.
        f.put(0, 0, 1, 0);
        f.put(0, 2, 1, 25);
        f.put(0, 4, 2, 5);
        f.put(0, 6, 1, 3);
        const TabData before = f.tab;
        const QStringList wanted = noteNames(f.tab, semitones);
        QVERIFY(f.view.selectRect(2, Fixture::lineY(0) + 20, 170, 30));
        QCOMPARE(*f.view.magicSelectionBox, box(0, 6, 1, 2, 0));
        f.view.shiftSelection(semitones);
        QCOMPARE(noteNames(f.tab, 0), wanted);
        QVERIFY(f.tab != before);
        const ColumnItemType moved = f.column(0, semitones < 0 ? 0 : 2).columnItems[1];
        QCOMPARE(moved, ColumnItemType::blank());
        const TabData after = f.tab;
        QCOMPARE(f.steps, 1);
        f.view.undoEdit();
        QCOMPARE(f.tab, before);
        f.view.redoEdit();
        QCOMPARE(f.tab, after);
        // Nothing to shift on an empty string: no step.
        f.view.selectWholeString(6, 1);
        f.view.shiftSelection(semitones);
        QCOMPARE(f.steps, 1);
    }

    void clearAndWholeString()
    {
        Fixture f;
        f.put(0, 3, 2, 7);
        f.column(0, 3).chordName = u"G"_qs;
        const TabData before = f.tab;
        QVERIFY(f.view.selectRect(70, Fixture::lineY(0) - 20, 20, 60));
        f.view.clearSelectedItems();
        QVERIFY(!f.view.magicSelectionBox);
        QCOMPARE(f.column(0, 3).columnItems[2], ColumnItemType::blank());
        QCOMPARE(f.column(0, 3).chordName, std::nullopt);
        f.view.undoEdit();
        QCOMPARE(f.tab, before);
        // A whole empty string is selected unshrunk, and it can be dragged.
        f.view.selectWholeString(4, 1);
        QCOMPARE(*f.view.magicSelectionBox, box(0, 31, 3, 3, 1));
        const auto drag = f.view.makeSelectionDragView(QPointF(400, Fixture::lineY(1) + 60));
        QVERIFY(drag);
        QCOMPARE(drag->width(), 25.0 * 32 + 3.0);
        QVERIFY(!f.view.makeSelectionDragView(QPointF(400, Fixture::lineY(1) + 2)));
        // It can't move sideways, so it starts no sideways scroll at the edge.
        f.view.dragSelectionMoved(-10, drag->y(), drag->width(), drag->height());
        QVERIFY(!f.view.dragDir);
    }

    void edgeScrollWaitsThenMovesOneColumn()
    {
        Fixture f(64);
        f.put(0, 3, 0, 1);
        QVERIFY(f.view.selectRect(70, Fixture::lineY(0) + 2, 20, 10));
        // Held at the right edge: a column after 0.9 s of hovering, not before.
        f.view.edgeScrollForPoint(810);
        QVERIFY(f.view.dragDir == DragScrollDirection::right);
        QCOMPARE(f.view.dragScrollTimer.interval(), 300);
        f.now = 0.8;
        f.view.dragScrollTick();
        QCOMPARE(f.view.contentOffset.x(), 0.0);
        f.now = 0.9;
        f.view.dragScrollTick();
        QCOMPARE(f.view.contentOffset.x(), 25.0);
        // A dragged block at the left edge turns the running scroll round.
        const auto drag = f.view.makeSelectionDragView(QPointF(60, Fixture::lineY(0) + 5));
        QVERIFY(drag);
        f.view.dragSelectionMoved(-5, drag->y(), drag->width(), drag->height());
        QVERIFY(f.view.dragDir == DragScrollDirection::left);
        f.now = 1.0;
        f.view.dragScrollTick();
        QCOMPARE(f.view.contentOffset.x(), 0.0);
        QVERIFY(!f.view.dragDir);
        // Snapped to the cells while over a row.
        const QPointF snapped = f.view.dragSelectionMoved(137, Fixture::lineY(1) + 21, 28, 18.5);
        QCOMPARE(snapped, QPointF(125, Fixture::lineY(1) + 18.5));
        // Off the rows at the bottom: the paged rows move down after the wait.
        f.view.dragSelectionMoved(100, 395, 28, 18.5);
        QVERIFY(f.view.dragDir == DragScrollDirection::down);
        f.now = 3.0;
        f.view.dragScrollTick();
        QCOMPARE(f.view.tabRowIndex, 1);
    }
};

LUTEGRID_TEST_MAIN(TestSelection)
#include "tst_selection.moc"
