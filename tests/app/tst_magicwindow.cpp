#include "model/tabfileformat.h"
#include "services/saveddata.h"

#include "appwindow.h"

namespace {

// Two rows with a phrase in row 0: frets 3 to 6 on the top string in columns 2 to 5, a 7 on the
// second string in column 3, chord names over columns 2 and 4.
QByteArray phraseTab()
{
    TabData tab(u"Phrase"_qs, 6);
    for (int r = 0; r < 2; ++r)
        tab.tabRowDatas.append(TabRowData(40, 6));
    QList<TabColumnData> &cols = tab.tabRowDatas[0].colDatas;
    for (int c = 2; c <= 5; ++c)
        cols[c].setColumnItem(0, ColumnItemType::note(c + 1));
    cols[3].setColumnItem(1, ColumnItemType::note(7));
    cols[2].chordName = u"Am"_qs;
    cols[4].chordName = u"C"_qs;
    return documentData(tab);
}

} // namespace

// Magic edit in the real window, with fingers and with the mouse: drawing the band, dragging
// the block, copying with the toggle or a modifier, the edge scroll, and how it looks.
class TestMagicWindow : public QObject, AppWindow {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { start(u"shots-sel"_qs); }
    void init()
    {
        resetStorage();
        SavedData &saved = SavedData::shared();
        saved.playSounds = false;
        saved.freeScrollSetting = false;
        saved.appearanceSetting = 1;
    }
    void cleanup() { closeWindow(); }

    void bandDragAndDrop_data()
    {
        QTest::addColumn<bool>("mouse");
        QTest::newRow("finger") << false;
        QTest::newRow("mouse") << true;
    }
    void bandDragAndDrop()
    {
        QFETCH(bool, mouse);
        QVERIFY(openPhrase(QSize(390, 844)));
        tapItem(u"magicEditButt"_qs);
        QVERIFY(c->inMagicEditMode);
        QVERIFY(item(u"fretboardCover"_qs));
        // A band from above the lines of column 1 to the second string of column 6.
        drag(rowPoint(0, 1.2, -1.0), rowPoint(0, 6.2, 1.5), mouse);
        const TabEditView *view = c->tabEditView();
        QVERIFY(view->magicSelectionBox);
        QCOMPARE(view->magicSelectionBox->colIndexStart, 2);
        QCOMPARE(view->magicSelectionBox->colIndexEnd, 5);
        QCOMPARE(view->magicSelectionBox->colHeaderStart, 2);
        QVERIFY(item(u"semiUpButt"_qs));
        // Dragged three columns on and a string down: a move.
        drag(rowPoint(0, 2.5, 0.5), rowPoint(0, 5.5, 1.5), mouse);
        const QList<TabColumnData> &cols = view->tabRows[0].colDatas;
        QCOMPARE(cols[2].columnItems[0], ColumnItemType::blank());
        QCOMPARE(cols[5].columnItems[1], ColumnItemType::note(3));
        QCOMPARE(cols[6].columnItems[2], ColumnItemType::note(7));
        QCOMPARE(cols[5].chordName, u"Am"_qs);
        QCOMPARE(cols[2].chordName, std::nullopt);
        QCOMPARE(view->magicSelectionBox->colIndexStart, 5);
        // Undo puts it all back.
        tapItem(u"undoButton"_qs);
        QCOMPARE(cols[2].columnItems[0], ColumnItemType::note(3));
        QCOMPARE(cols[5].columnItems[1], ColumnItemType::blank());
        QCOMPARE(cols[2].chordName, u"Am"_qs);
    }

    void copyWithToggleOrModifier()
    {
        QVERIFY(openPhrase(QSize(1280, 800)));
        tapItem(u"magicEditButt"_qs);
        drag(rowPoint(0, 1.2, 0.2), rowPoint(0, 6.2, 1.5), true);
        QVERIFY(c->tabEditView()->magicSelectionBox);
        // The mouse with Ctrl held at the drop copies.
        dragWith(rowPoint(0, 2.5, 0.5), rowPoint(0, 10.5, 0.5), Qt::ControlModifier);
        const QList<TabColumnData> &cols = c->tabEditView()->tabRows[0].colDatas;
        QCOMPARE(cols[2].columnItems[0], ColumnItemType::note(3));
        QCOMPARE(cols[10].columnItems[0], ColumnItemType::note(3));
        // A finger with the toggle on copies too: to the next row.
        tapItem(u"magicShiftButt"_qs);
        QVERIFY(c->magicEdit()->magicShiftOn);
        const TabEditView *view = c->tabEditView();
        const int shown = view->showingCount();
        if (shown > 1) {
            drag(rowPoint(0, 10.5, 0.5), rowPoint(1, 10.5, 0.5), false);
            QCOMPARE(view->tabRows[1].colDatas[10].columnItems[0], ColumnItemType::note(3));
            QCOMPARE(cols[10].columnItems[0], ColumnItemType::note(3));
        }
        // Escape leaves magic edit, and with it the selection and the toggle.
        QTest::keyClick(window.get(), Qt::Key_Escape);
        QVERIFY(!c->inMagicEditMode);
        QVERIFY(!c->magicEdit()->magicShiftOn);
        QVERIFY(!view->magicSelectionBox);
    }

    void edgeScrollWhileDragging()
    {
        QVERIFY(openPhrase(QSize(390, 844)));
        TabEditView *view = c->tabEditView();
        double now = 0.0;
        view->uptime = [&now] { return now; };
        tapItem(u"magicEditButt"_qs);
        drag(rowPoint(0, 1.2, 0.2), rowPoint(0, 6.2, 1.5), false);
        QVERIFY(view->magicSelectionBox);
        // Held against the right edge: after the wait the rows scroll a column at a time.
        touches().press(0, rowPoint(0, 2.5, 0.5), window.get());
        auto *surface = findItem<TabEditSurface>(window->contentItem());
        const QPoint edge = surface->mapToScene(QPointF(surface->width() - 2, 0)).toPoint();
        const QPoint at(edge.x(), rowPoint(0, 2.5, 0.5).y());
        touches().move(0, at, window.get());
        // Touch moves reach the items with the next frame.
        QTRY_VERIFY(view->dragDir == DragScrollDirection::right);
        now = 1.0;
        QTRY_VERIFY(view->contentOffset.x() >= 25.0);
        touches().release(0, at, window.get());
        QVERIFY(!view->dragDir);
    }

    void drawerToolsAndRowReorder()
    {
        QVERIFY(openPhrase(QSize(390, 844)));
        c->moreToolsUnseenDotShown = true;
        Q_EMIT c->toolsChanged();
        QVERIFY(item(u"moreToolsUnseenDot"_qs));
        tapItem(u"moreToolsButt"_qs);
        QVERIFY(item(u"moreToolsScrollView"_qs));
        QVERIFY(!item(u"moreToolsUnseenDot"_qs));
        tapItem(u"addColumnButt"_qs);
        QCOMPARE(c->tabEditView()->numTabColumns, 41);
        tapItem(u"putBarButt"_qs);
        QVERIFY(c->tabEditView()->tabRows[0].colDatas[0].hasBar());
        // Magic edit closes the drawer; its reorder strips move a string by its handle. The
        // arrows that flashed over the mode buttons after the bar have gone first.
        QTRY_VERIFY(!item(u"modeButtsCoverView"_qs));
        tapItem(u"magicEditButt"_qs);
        QVERIFY(!item(u"moreToolsScrollView"_qs));
        tapItem(u"rowReorderButt"_qs);
        QQuickItem *strip = item(u"reorderStrip0_0"_qs);
        QVERIFY(strip);
        const QPoint from =
            strip->mapToScene(QPointF(strip->width() / 2, strip->height() / 2)).toPoint();
        const QPoint to = from + QPoint(0, int(strip->height() * 2));
        touches().press(0, from, window.get());
        for (int step = 1; step <= 6; ++step) {
            touches().move(0, from + (to - from) * step / 6, window.get());
            QTest::qWait(20);
        }
        saveShot(u"phone-light-reorder-drag"_qs);
        touches().release(0, to, window.get());
        QTRY_COMPARE(c->tabEditView()->tabRows[0].colDatas[3].columnItems[2],
                     ColumnItemType::note(3));
        saveShot(u"phone-light-reorder"_qs);
    }

    void screenshots_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<bool>("dark");
        QTest::newRow("phone-light") << QSize(390, 844) << false;
        QTest::newRow("phone-dark") << QSize(390, 844) << true;
        QTest::newRow("desktop-light") << QSize(1280, 800) << false;
        QTest::newRow("desktop-dark") << QSize(1280, 800) << true;
        QTest::newRow("short-light") << QSize(844, 390) << false;
    }
    void screenshots()
    {
        QFETCH(QSize, size);
        QFETCH(bool, dark);
        const QString tag = QString::fromLatin1(QTest::currentDataTag());
        SavedData::shared().appearanceSetting = dark ? 2 : 1;
        QVERIFY(openPhrase(size));
        if (!c->inMagicEditMode)
            tapItem(u"magicEditButt"_qs);
        drag(rowPoint(0, 1.2, -1.0), rowPoint(0, 6.2, 1.5), false);
        QVERIFY(c->tabEditView()->magicSelectionBox);
        saveShot(tag + u"-selection"_qs);
        // Mid-drag: the block under the finger, the source covered.
        touches().press(0, rowPoint(0, 2.5, 0.5), window.get());
        touches().move(0, rowPoint(0, 4.5, 1.5), window.get());
        saveShot(tag + u"-dragging"_qs);
        touches().release(0, rowPoint(0, 4.5, 1.5), window.get());
        if (!c->shortLayout) {
            tapItem(u"magicEditButt"_qs);
            tapItem(u"moreToolsButt"_qs);
            QVERIFY(item(u"moreToolsScrollView"_qs));
            saveShot(tag + u"-tools"_qs);
        }
    }

private:
    bool openPhrase(QSize size)
    {
        return openTab(u"Phrase.lgrdi"_qs, phraseTab(), size) && QTest::qWaitFor([this] {
                   return item(u"magicEditButt"_qs) != nullptr ||
                          item(u"magicEditOnLabel"_qs) != nullptr;
               });
    }
    // A tap, and past what it sets moving.
    void tapItem(const QString &name)
    {
        tap(name);
        QTest::qWait(350);
    }
    void dragWith(QPoint from, QPoint to, Qt::KeyboardModifiers modifiers)
    {
        QTest::mousePress(window.get(), Qt::LeftButton, {}, from);
        QTest::mouseMove(window.get(), (from + to) / 2);
        QTest::mouseMove(window.get(), to);
        QTest::mouseRelease(window.get(), Qt::LeftButton, modifiers, to);
        QCoreApplication::processEvents();
    }
};

LUTEGRID_WINDOW_TEST_MAIN(TestMagicWindow)
#include "tst_magicwindow.moc"
