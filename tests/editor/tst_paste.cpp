#include "editor/tabpaste.h"

#include "editorsession.h"
#include "testmain.h"

#include <QSignalSpy>

namespace {

TabColumnData notes(QList<ColumnItemType> items, std::optional<QString> chord = std::nullopt)
{
    return TabColumnData(std::move(items), std::move(chord));
}

// Six lines: the pasted text's shape before it meets the tab.
TabRowData pastedRow(int columns, QStringList lyrics = {})
{
    QList<TabColumnData> data;
    for (int c = 0; c < columns; ++c) {
        QList<ColumnItemType> items(6, ColumnItemType::blank());
        items[c % 6] = ColumnItemType::note(c);
        data.append(notes(items, c == 0 ? std::optional(u"Am"_qs) : std::nullopt));
    }
    // The padding a reader adds is no part of the paste.
    for (int c = 0; c < 5; ++c)
        data.append(TabColumnData(6));
    return TabRowData(data, lyrics);
}

} // namespace

class TestPaste : public QObject {
    Q_OBJECT

    EditorSessions sessions;

private Q_SLOTS:
    void init() { sessions.prepare(); }

    void aPieceThatFitsOverwritesAtTheCursorInOneStep()
    {
        Session s = sessions.open(u"fits"_qs, 2, 16);
        TabEdits &edits = *s.view->tabEdits();
        const QList<TabRowData> before = edits.rows();
        QVERIFY(!TabPaste::pasteRows(edits, 1, 4, {pastedRow(3)}));
        const TabRowData &row = edits.rows()[1];
        QCOMPARE(row.colDatas.size(), 16);
        QCOMPARE(row.colDatas[4].chordName, u"Am"_qs);
        QCOMPARE(row.colDatas[4].columnItems[0], ColumnItemType::note(0));
        QCOMPARE(row.colDatas[6].columnItems[2], ColumnItemType::note(2));
        QVERIFY(row.colDatas[7].isAllBlank());
        QCOMPARE(edits.rows()[0], before[0]);
        QVERIFY(s.undo->canUndo());
        s.undo->undo();
        QCOMPARE(edits.rows(), before);
        QVERIFY(!s.undo->canUndo());
    }

    void largerPastesComeInAsRowsBelowInOneStep()
    {
        Session s = sessions.open(u"rows"_qs, 2, 12);
        TabEdits &edits = *s.view->tabEdits();
        const QList<TabRowData> before = edits.rows();
        // 20 columns over a tab 12 wide: two rows; then a row with lyrics.
        QVERIFY(!TabPaste::pasteRows(edits, 0, 5, {pastedRow(20), pastedRow(2, {u"la la"_qs})}));
        QCOMPARE(edits.rows().size(), 5);
        QCOMPARE(edits.rows()[1].colDatas[0].chordName, u"Am"_qs);
        QCOMPARE(edits.rows()[2].colDatas[0].columnItems[0], ColumnItemType::note(12));
        QCOMPARE(edits.rows()[3].lyricLines, QStringList{u"la la"_qs});
        for (const TabRowData &row : edits.rows())
            QCOMPARE(row.colDatas.size(), 12);
        QCOMPARE(edits.rows()[4], before[1]);
        s.undo->undo();
        QCOMPARE(edits.rows(), before);
    }

    void otherStringCountsKeepTheTopLines()
    {
        Session s = sessions.open(u"strings"_qs, 1, 12);
        TabEdits &edits = *s.view->tabEdits();
        const TabRowData bass({notes({ColumnItemType::note(1), ColumnItemType::note(2),
                                      ColumnItemType::note(3), ColumnItemType::note(4)}),
                               TabColumnData(QList<ColumnItemType>(4, ColumnItemType::bar()))},
                              {});
        QVERIFY(!TabPaste::pasteRows(edits, 0, 0, {bass}));
        const TabRowData &row = edits.rows()[0];
        QCOMPARE(row.colDatas[0].columnItems,
                 (QList<ColumnItemType>{ColumnItemType::note(1), ColumnItemType::note(2),
                                        ColumnItemType::note(3), ColumnItemType::note(4),
                                        ColumnItemType::blank(), ColumnItemType::blank()}));
        QVERIFY(row.colDatas[1].columnItems.size() == 6 && row.colDatas[1].hasBar());
        QVERIFY(std::all_of(row.colDatas[1].columnItems.cbegin(), row.colDatas[1].columnItems.cend(),
                            [](const ColumnItemType &item) { return item.isBar(); }));
    }

    void nothingToPasteChangesNothing()
    {
        Session s = sessions.open(u"nothing"_qs, 1, 12);
        TabEdits &edits = *s.view->tabEdits();
        const QList<TabRowData> before = edits.rows();
        QVERIFY(TabPaste::pasteRows(edits, 0, 0, {TabRowData(12, 6)}));
        QVERIFY(TabPaste::pasteRows(edits, 7, 0, {pastedRow(2)}));
        QCOMPARE(edits.rows(), before);
        QVERIFY(!s.undo->canUndo());
    }

    void controlVAsksThePasteAndNothingElse()
    {
        Session s = sessions.open(u"keys"_qs, 1, 12);
        HardwareKeyboard &keys = *s.editor->keyboard();
        QSignalSpy paste(&keys, &HardwareKeyboard::pasteRequested);
        QVERIFY(keys.pressBegan({Qt::Key_V, u"\x16"_qs, Qt::ControlModifier}));
        QCOMPARE(paste.size(), 1);
        // A lyric field takes its own paste.
        keys.textBeingTyped = true;
        QVERIFY(!keys.pressBegan({Qt::Key_V, u"\x16"_qs, Qt::ControlModifier}));
        QCOMPARE(paste.size(), 1);
        QVERIFY(!s.undo->canUndo());
    }
};

LUTEGRID_TEST_MAIN(TestPaste)
#include "tst_paste.moc"
