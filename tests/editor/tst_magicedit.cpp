#include "editorsession.h"
#include "testmain.h"

// Magic edit as the editor routes it, without a window: fingers by id in the surface's frame,
// the copy toggle, the tools drawer and its dot, and the short layout.
class TestMagicEdit : public QObject {
    Q_OBJECT

    EditorSessions sessions;

    // Row 0's string lines start 79 points down; strings are 18.5 apart at phone size.
    static double lineY(const Session &s) { return s.view->headerBandHeight(); }
    static void put(Session &s, int col, int item, qint64 fret)
    {
        s.document->tabData->tabRowDatas[0].colDatas[col].columnItems[item] =
            ColumnItemType::note(fret);
        s.view->refreshShowingRows(false);
    }

private Q_SLOTS:
    void init() { sessions.prepare(); }

    void routingOfFingers()
    {
        Session s = sessions.open(u"routing"_qs);
        MagicEdit &magic = *s.editor->magicEdit();
        QVERIFY(!magic.touchBegan(0, 60, lineY(s) + 5));
        s.editor->toggleMagicEditMode();
        QVERIFY(s.editor->inMagicEditMode && magic.active());
        QVERIFY(!s.view->tabRowTouchesEnabled);
        put(s, 2, 0, 5);
        put(s, 3, 1, 7);
        const double ih = s.view->itemHeight();
        // A band over columns 1 to 4 of the top two strings.
        QVERIFY(magic.touchBegan(0, 30, lineY(s) + 2));
        QVERIFY(!magic.touchBegan(1, 200, lineY(s) + 2));
        magic.touchMoved(0, 110, lineY(s) + ih * 1.5);
        QVERIFY(magic.bandShown());
        magic.touchEnded(0, 110, lineY(s) + ih * 1.5);
        QVERIFY(!magic.bandShown());
        QVERIFY(magic.semitoneButtsShown());
        QCOMPARE(s.view->magicSelectionBox->colIndexStart, 2);
        QCOMPARE(s.view->magicSelectionBox->colIndexEnd, 3);
        // A finger on the box drags it; a second finger meanwhile is ignored.
        QVERIFY(magic.touchBegan(3, 55, lineY(s) + 4));
        QVERIFY(magic.dragShown());
        QVERIFY(s.view->magicSelectionMoveCoverShown);
        QVERIFY(!magic.touchBegan(4, 300, lineY(s) + 4));
        // Cancelled: nothing changes.
        magic.touchCancelled(3);
        QVERIFY(!magic.dragShown());
        QVERIFY(!s.undo->canUndo());
        // Dragged four columns on, with the copy toggle on: the source stays.
        magic.toggleMagicShift();
        QVERIFY(magic.touchBegan(3, 55, lineY(s) + 4));
        QVERIFY(!s.view->magicSelectionMoveCoverShown);
        magic.touchMoved(3, 155, lineY(s) + 4);
        QCOMPARE(magic.dragRect().x(), 150.0);
        magic.touchEnded(3, 155, lineY(s) + 4);
        const QList<TabColumnData> &cols = s.view->tabRows[0].colDatas;
        QCOMPARE(cols[2].columnItems[0], ColumnItemType::note(5));
        QCOMPARE(cols[6].columnItems[0], ColumnItemType::note(5));
        QCOMPARE(cols[7].columnItems[1], ColumnItemType::note(7));
        // A touch beside the selection clears it and starts a band.
        QVERIFY(magic.touchBegan(0, 300, lineY(s) + 80));
        QVERIFY(!s.view->magicSelectionBox);
        magic.touchCancelled(0);
        // Outside the rows nothing starts.
        QVERIFY(!magic.touchBegan(0, 60, s.view->frameSize.height() + 60));
        // Leaving the mode clears the selection and turns the toggle off.
        magic.stringLetterTapped(1, 0);
        QVERIFY(s.view->magicSelectionBox);
        s.editor->toggleMagicEditMode();
        QVERIFY(!s.view->magicSelectionBox);
        QVERIFY(!magic.magicShiftOn);
        QVERIFY(s.view->tabRowTouchesEnabled);
    }

    void rowReorderMovesStrings()
    {
        Session s = sessions.open(u"reorder"_qs);
        put(s, 0, 0, 3);
        s.editor->toggleMagicEditMode();
        MagicEdit &magic = *s.editor->magicEdit();
        magic.toggleRowReorderMode();
        QVERIFY(magic.rowReorderOn());
        QVERIFY(!magic.touchBegan(0, 30, lineY(s) + 2));
        magic.rowMoved(0, 2, 0);
        QCOMPARE(s.view->tabRows[0].colDatas[0].columnItems[2], ColumnItemType::note(3));
        s.editor->undoEdit();
        QCOMPARE(s.view->tabRows[0].colDatas[0].columnItems[0], ColumnItemType::note(3));
    }

    void drawerAndModesExclude()
    {
        Session s = sessions.open(u"drawer"_qs);
        s.editor->moreToolsUnseenDotShown = true;
        s.editor->toggleMagicEditMode();
        s.editor->toggleMoreToolsView();
        QVERIFY(s.editor->moreToolsViewShowing);
        QVERIFY(!s.editor->inMagicEditMode);
        // Opening the drawer hides the dot for this run only.
        QVERIFY(!s.editor->moreToolsUnseenDotShown);
        QVERIFY(SavedData::shared().toolsMarkedSeenTemporary);
        QVERIFY(!SavedData::shared().toolsMarkedSeen);
        s.editor->toggleMagicEditMode();
        QVERIFY(!s.editor->moreToolsViewShowing);
        // Clear in magic edit clears the selection, not the cursor column.
        put(s, 0, 0, 3);
        put(s, 4, 0, 9);
        s.view->selectWholeString(1, 0);
        s.editor->tabClear();
        QCOMPARE(s.view->tabRows[0].colDatas[4].columnItems[0], ColumnItemType::blank());
        QCOMPARE(s.view->tabRows[0].colDatas[0].columnItems[0], ColumnItemType::blank());
    }

    void shortLayoutForcesMagicEdit()
    {
        Session s = sessions.open(u"short"_qs);
        s.editor->applyViewSize(844, 390);
        QVERIFY(s.editor->shortLayout);
        QVERIFY(s.editor->inMagicEditMode);
        // Escape doesn't leave it while the window stays short.
        KeyPress escape;
        escape.key = Qt::Key_Escape;
        s.editor->keyboard()->pressBegan(escape);
        QVERIFY(s.editor->inMagicEditMode);
        s.editor->applyViewSize(390, 844);
        QVERIFY(!s.editor->inMagicEditMode);
        s.editor->toggleMagicEditMode();
        QVERIFY(s.editor->keyboard()->pressBegan(escape));
        QVERIFY(!s.editor->inMagicEditMode);
    }
};

LUTEGRID_TEST_MAIN(TestMagicEdit)
#include "tst_magicedit.moc"
