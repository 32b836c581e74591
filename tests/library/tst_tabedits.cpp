#include "library/tabedits.h"
#include "services/lgundomanager.h"
#include "testmain.h"

#include <QSignalSpy>

#include <functional>
#include <memory>

using Kind = ColumnItemType::Kind;
using ChangeKind = TabChange::Kind;

namespace {

// A tab of 4 rows of 20 columns on six strings with something in every row, edited with an
// undo manager that makes each registration its own step.
struct Tab {
    LgUndoManager undo;
    TabData data{u"Tab"_qs, 6};
    TabEdits edits{&data, &undo};
    QList<TabChange> changes;

    explicit Tab(int columns = 20)
    {
        undo.groupsByEvent = false;
        data.tabRowDatas = QList<TabRowData>(4, TabRowData(columns, 6));
        for (int r = 0; r < 4; ++r) {
            data.tabRowDatas[r].colDatas[3].setColumnItem(1, ColumnItemType::note(r + 2));
            data.tabRowDatas[r].colDatas[3].chordName = u"E%1"_qs.arg(r);
        }
        data.tabRowDatas[1].lyricLines = {u"one"_qs, u"two"_qs};
        QObject::connect(&edits, &TabEdits::tabChanged,
                         [this](const TabChange &change) { changes.append(change); });
    }
};

struct EditKind {
    const char *name;
    ChangeKind kind;
    int row;
    int column; // the one column the notice names; none for rows and lyrics, all for a string
    std::function<bool(TabEdits &)> edit;
};

constexpr int none = -1;
constexpr int all = -2;

QList<int> noticeColumns(int column)
{
    QList<int> columns;
    if (column == all) {
        for (int c = 0; c < 20; ++c)
            columns.append(c);
    } else if (column != none) {
        columns.append(column);
    }
    return columns;
}

using C = ColumnItemType;

// Each kind once; no-op and out-of-range variants live in refusalsChangeNothing.
const QList<EditKind> &everyEditKind()
{
    static const QList<C> chord(6, C::note(2));
    static const QList<EditKind> kinds = {
        {"item", ChangeKind::Columns, 2, 5,
         [](TabEdits &e) { return e.setColumnItem(2, 5, 0, C::note(7)); }},
        {"mark over a note", ChangeKind::Columns, 1, 3,
         [](TabEdits &e) { return e.setColumnItem(1, 3, 1, C(Kind::vibrato)); }},
        {"whole column", ChangeKind::Columns, 3, 3,
         [](TabEdits &e) { return e.replaceColumn(3, 3, TabColumnData(chord, u"G"_qs)); }},
        {"chord name cleared", ChangeKind::Columns, 2, 3,
         [](TabEdits &e) { return e.setColumnChordName(2, 3, std::nullopt); }},
        {"new chord name", ChangeKind::Columns, 0, 9,
         [](TabEdits &e) { return e.setColumnChordName(0, 9, u"Am"_qs); }},
        {"string moved", ChangeKind::Columns, 1, all,
         [](TabEdits &e) { return e.moveStringItems(1, 4, 1); }},
        {"column inserted", ChangeKind::ColumnInserted, 1, 3,
         [](TabEdits &e) { return !e.insertColumn(1, 3, TabColumnData(chord)); }},
        {"column removed", ChangeKind::ColumnRemoved, 2, 3,
         [](TabEdits &e) { return !e.removeColumn(2, 3); }},
        {"row inserted", ChangeKind::RowInserted, 2, none,
         [](TabEdits &e) { return e.insertTabRow(2, TabRowData(20, 6)); }},
        {"row removed", ChangeKind::RowRemoved, 1, none,
         [](TabEdits &e) { return e.removeTabRow(1); }},
        {"lyric typed", ChangeKind::Lyrics, 0, none,
         [](TabEdits &e) { return e.setLyricLine(0, 0, u"la"_qs); }},
        {"lyric line changed", ChangeKind::Lyrics, 1, none,
         [](TabEdits &e) { return e.setLyricLine(1, 1, u"TWO"_qs); }},
        {"lyric line added", ChangeKind::Lyrics, 1, none,
         [](TabEdits &e) { return e.insertLyricLine(1, 1, u"new"_qs); }},
        {"lyric line removed", ChangeKind::Lyrics, 1, none,
         [](TabEdits &e) { return e.removeLyricLine(1, 0); }},
    };
    return kinds;
}

} // namespace

class TestTabEdits : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void everyEditUndoesAndRedoes_data();
    void everyEditUndoesAndRedoes();
    void pressIsOneStep();
    void barUndoFollowsTheBarRule();
    void refusalsChangeNothing();
    void undoOfRemovalAtTheMaximumIsSpent();
    void stepsOutliveNoEdits();
    void tabValuesConvertAndRestore_data();
    void tabValuesConvertAndRestore();
};

void TestTabEdits::everyEditUndoesAndRedoes_data()
{
    QTest::addColumn<int>("index");
    for (int i = 0; i < everyEditKind().size(); ++i)
        QTest::newRow(everyEditKind()[i].name) << i;
}

// Do, undo, compare with the snapshot, redo, compare again; the notice names the place.
void TestTabEdits::everyEditUndoesAndRedoes()
{
    QFETCH(int, index);
    const EditKind &kind = everyEditKind()[index];
    Tab tab;
    const TabData before = tab.data;

    QVERIFY(kind.edit(tab.edits));
    const TabData after = tab.data;
    QVERIFY(after != before);
    QCOMPARE(tab.changes.size(), 1);
    QCOMPARE(tab.changes[0].kind, kind.kind);
    QCOMPARE(tab.changes[0].row, kind.row);
    QCOMPARE(tab.changes[0].columns, noticeColumns(kind.column));
    QVERIFY(!tab.changes[0].undoing);
    QCOMPARE(tab.changes[0].rowsInserted(), kind.kind == ChangeKind::RowInserted);
    QCOMPARE(tab.changes[0].rowsRemoved(), kind.kind == ChangeKind::RowRemoved);

    QVERIFY(tab.undo.canUndo());
    tab.undo.undo();
    QCOMPARE(tab.data, before);
    QVERIFY(!tab.undo.canUndo());
    QVERIFY(tab.changes.last().undoing);
    QCOMPARE(tab.changes.last().row, kind.row);

    tab.undo.redo();
    QCOMPARE(tab.data, after);
    QVERIFY(!tab.undo.canRedo());
    QVERIFY(tab.changes.last().undoing);
    tab.undo.undo();
    QCOMPARE(tab.data, before);
    // Every rows' count of columns stays even.
    for (const TabRowData &row : std::as_const(tab.data.tabRowDatas))
        QCOMPARE(row.colDatas.size(), before.tabRowDatas.first().colDatas.size());
}

void TestTabEdits::pressIsOneStep()
{
    Tab tab;
    const TabData before = tab.data;
    const TabColumnData snapshot = tab.data.tabRowDatas[0].colDatas[5];
    TabColumnData pressed = snapshot;
    pressed.setColumnItem(0, ColumnItemType::note(3));
    QVERIFY(tab.edits.previewColumn(0, 5, pressed));
    pressed.setColumnItem(5, ColumnItemType::note(0));
    QVERIFY(tab.edits.previewColumn(0, 5, pressed));
    // Written live with no step until the press ends.
    QVERIFY(!tab.undo.canUndo());
    QCOMPARE(tab.changes.size(), 2);
    QVERIFY(tab.edits.commitColumn(0, 5, snapshot));
    const TabData after = tab.data;
    tab.undo.undo();
    QCOMPARE(tab.data, before);
    QVERIFY(!tab.undo.canUndo());
    tab.undo.redo();
    QCOMPARE(tab.data, after);
    // A press that ends where it began is checked through the surface's fret press.
}

void TestTabEdits::barUndoFollowsTheBarRule()
{
    // The undo writes the one cell typed on back, through the bar rule: the cells that the bar
    // filled stay blank, whatever they held. Undoing a write into a bar column fills it again.
    Tab tab;
    QVERIFY(tab.edits.setColumnItem(0, 3, 4, ColumnItemType::bar()));
    QVERIFY(tab.data.tabRowDatas[0].colDatas[3].hasBar());
    QVERIFY(tab.edits.setColumnItem(0, 3, 0, ColumnItemType::note(1)));
    QVERIFY(!tab.data.tabRowDatas[0].colDatas[3].hasBar());
    tab.undo.undo();
    QCOMPARE(tab.data.tabRowDatas[0].colDatas[3].columnItems,
             QList<ColumnItemType>(6, ColumnItemType::bar()));
    tab.undo.undo();
    QVERIFY(tab.data.tabRowDatas[0].colDatas[3].isAllBlank());
}

void TestTabEdits::refusalsChangeNothing()
{
    // The column-count and notes-at-the-end refusals are checked through the surface.
    Tab tab;
    const TabData before = tab.data;
    // The same item, name or column again is no edit.
    QVERIFY(!tab.edits.setColumnItem(1, 3, 1, ColumnItemType::note(3)));
    QVERIFY(!tab.edits.setColumnChordName(1, 3, u"E1"_qs));
    QVERIFY(!tab.edits.replaceColumn(1, 3, tab.data.tabRowDatas[1].colDatas[3]));
    QVERIFY(!tab.edits.setLyricLine(1, 0, u"one"_qs));
    // Out of range is no edit either.
    QVERIFY(!tab.edits.setColumnItem(9, 0, 0, ColumnItemType::note(1)));
    QVERIFY(!tab.edits.setColumnItem(0, 0, 6, ColumnItemType::note(1)));
    QVERIFY(!tab.edits.insertTabRow(5, TabRowData(20, 6)));
    QVERIFY(!tab.edits.removeTabRow(4));
    QVERIFY(!tab.edits.moveStringItems(0, 6, 0));
    QVERIFY(!tab.edits.removeLyricLine(1, 2));
    QCOMPARE(tab.data, before);
    QVERIFY(!tab.undo.canUndo());
    QVERIFY(tab.changes.isEmpty());

    // Choosing a lyric line is told but is no step; neither are loading and padding.
    QVERIFY(tab.edits.selectLyricLine(1, 1));
    QCOMPARE(tab.data.tabRowDatas[1].lyricText(), u"two"_qs);
    tab.edits.appendBlankRows(2, 20, 6);
    QCOMPARE(tab.data.tabRowDatas.size(), 6);
    QCOMPARE(tab.changes.last().kind, ChangeKind::RowsAppended);
    QCOMPARE(tab.changes.last().row, 4);
    tab.edits.replaceRows({TabRowData(16, 6)});
    QCOMPARE(tab.edits.columnCount(), 16);
    QVERIFY(!tab.undo.canUndo());
}

// How an insert pads the other rows is checked through the surface (tst_tabeditview).
void TestTabEdits::undoOfRemovalAtTheMaximumIsSpent()
{
    Tab full(64);
    QVERIFY(!full.edits.removeColumn(0, 0));
    // Rows of 64 columns arrive from outside the undo stack, as from a reload.
    full.edits.replaceRows(QList<TabRowData>(2, TabRowData(64, 6)));
    full.undo.undo();
    QCOMPARE(full.edits.columnCount(), 64);
    QVERIFY(!full.undo.canUndo());
}

void TestTabEdits::stepsOutliveNoEdits()
{
    // The steps hold the edits, not a view: once the edits are gone they do nothing.
    LgUndoManager undo;
    undo.groupsByEvent = false;
    TabData data(u"Tab"_qs, 6);
    data.tabRowDatas = {TabRowData(16, 6)};
    auto edits = std::make_unique<TabEdits>(&data, &undo);
    QVERIFY(edits->setColumnItem(0, 0, 0, ColumnItemType::note(1)));
    edits.reset();
    undo.undo();
    QCOMPARE(data.tabRowDatas[0].colDatas[0].columnItems[0], ColumnItemType::note(1));
}


void TestTabEdits::tabValuesConvertAndRestore_data()
{
    QTest::addColumn<int>("strings");
    QTest::newRow("4") << 4;
    QTest::newRow("5") << 5;
    QTest::newRow("7") << 7;
    QTest::newRow("8") << 8;
}

void TestTabEdits::tabValuesConvertAndRestore()
{
    QFETCH(int, strings);
    Tab tab;
    // Every string holds a note in column 5, and column 8 is a bar.
    for (int r = 0; r < 4; ++r) {
        for (int i = 0; i < 6; ++i)
            tab.data.tabRowDatas[r].colDatas[5].setColumnItem(i, ColumnItemType::note(i + r));
        tab.data.tabRowDatas[r].colDatas[8].columnItems = QList<C>(6, C::bar());
    }
    const TabData before = tab.data;
    QSignalSpy values(&tab.edits, &TabEdits::tabValuesChanged);
    TabValues next{standardStringNotes(strings), 2, 110, u"Intro"_qs};
    QVERIFY(tab.edits.setTabValues(next));
    QCOMPARE(tab.edits.tabValues(), next);
    QCOMPARE(values.count(), 1);
    QCOMPARE(values.last().first().toBool(), true);
    for (const TabRowData &row : tab.data.tabRowDatas) {
        QCOMPARE(row.stringCount, strings);
        QCOMPARE(row.colDatas[5].columnItems.size(), strings);
        // A bar stays a bar on every string.
        QCOMPARE(row.colDatas[8].columnItems, QList<C>(strings, C::bar()));
    }
    const QList<C> &items = tab.data.tabRowDatas[2].colDatas[5].columnItems;
    const QList<C> &old = before.tabRowDatas[2].colDatas[5].columnItems;
    // Fewer strings drop the highest; more add blanks at the low end.
    if (strings < 6)
        QCOMPARE(items, old.mid(6 - strings));
    else
        QCOMPARE(items.mid(0, 6), old);
    const TabData after = tab.data;

    tab.undo.undo();
    QCOMPARE(tab.data, before);
    tab.undo.redo();
    QCOMPARE(tab.data, after);
    tab.undo.undo();
    QCOMPARE(tab.data, before);
    // The same values again are no step.
    QVERIFY(!tab.edits.setTabValues(tab.edits.tabValues()));
    QVERIFY(!tab.undo.canUndo());
}

LUTEGRID_TEST_MAIN(TestTabEdits)
#include "tst_tabedits.moc"
