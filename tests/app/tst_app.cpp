#include "fretboarditem.h"
#include "library/conflictresolver.h"
#include "library/lutegriddocument.h"
#include "model/tabfileformat.h"
#include "services/lgundomanager.h"
#include "services/saveddata.h"

#include "appwindow.h"

#include <QClipboard>

namespace {

QByteArray tabWithNote(const QString &title, qint64 fret, int rows = 1)
{
    TabData tab(title, 6);
    for (int r = 0; r < rows; ++r)
        tab.tabRowDatas.append(TabRowData(32, 6));
    tab.tabRowDatas[0].colDatas[0].setColumnItem(1, ColumnItemType::note(fret));
    return documentData(tab);
}

std::optional<TabData> readTab(const QString &name)
{
    QFile file(QDir(storageFolder()).filePath(name));
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return tabDataFromDocumentData(file.readAll());
}

} // namespace

// The app as a guitarist meets it, headless: the list, a new tab, notes played in on the
// fretboard with fingers, the tools, the dialogs, a conflict, and the tab kept across windows.
class TestApp : public QObject, AppWindow {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void emptyListThenNewTab();
    void fretTouchWritesOneStepAndAdvances();
    void twoFingersInEitherOrder_data();
    void twoFingersInEitherOrder();
    void letterHeldDuringFretPress();
    void slideCancelsThePress();
    void toolsGuardedDuringPress();
    void sizeThresholds();
    void dialogsCloseByButtonOrTapOutside();
    void openFailureAndStandby();
    void conflictCopyBringsDialog_data();
    void conflictCopyBringsDialog();
    void notesSurviveClosingTheWindow();
    void rowPanAndScrollIndicator();
    void tuningAndCapoFollowAReload();
    void conflictWithoutVersionsGoesToTheRoot();
    void screenshots_data();
    void screenshots();
    void mouseOnTheRows();
    void heldPressOpensNoteMenu_data();
    void heldPressOpensNoteMenu();
    void rightClickOpensNoteMenu();
    void lyricTypingReachesTheFile();
    void sidewaysDragScrollsAWideRow_data();
    void sidewaysDragScrollsAWideRow();
    void previewFollowsADeletedRow();
    void keyboardInTheWindow();
    void keyboardHelpAndNewTab();
    void pasteATextTab();

private:
    EditorScreenItem *openListRow(int row)
    {
        tapAndSettle(u"tabRow"_qs + QString::number(row));
        return findItem<EditorScreenItem>(window->contentItem());
    }
    QPoint fretPoint(int stringNum, int fretNum) const;
    // A pen's tap as items meet it: the tablet events no item takes come back as mouse events
    // from the stylus.
    void penClick(QPoint point);
    QImage grabItem(QQuickItem *target);

    QPointingDevice *pen = nullptr;
};

void TestApp::initTestCase()
{
    start(u"editor-shots"_qs);
    pen = new QPointingDevice(
        u"pen"_qs, 1001, QInputDevice::DeviceType::Stylus, QPointingDevice::PointerType::Pen,
        QInputDevice::Capability::Position | QInputDevice::Capability::Pressure, 1, 3, QString(),
        QPointingDeviceUniqueId(), this);
}

void TestApp::init()
{
    resetStorage();
    SavedData &saved = SavedData::shared();
    saved.tabCreateCount = 0;
    saved.autoCursorAmount = 1;
    saved.playSounds = false;
    saved.freeScrollSetting = false;
    saved.disableFlashNavArrows = false;
    saved.appearanceSetting = 0;
}

void TestApp::cleanup()
{
    closeWindow();
}

QPoint TestApp::fretPoint(int stringNum, int fretNum) const
{
    auto *board = findItem<FretboardItem>(window->contentItem());
    const Fretboard *logic = board->board();
    const QPointF local((fretNum - 0.5) * logic->fretSpacing - logic->contentOffset.x(),
                        (stringNum - 0.5) * logic->stringTouchHeight);
    return board->mapToScene(local).toPoint();
}

void TestApp::emptyListThenNewTab()
{
    QVERIFY(openWindow());
    QQuickItem *empty = item(u"emptyText"_qs);
    QVERIFY(empty);
    QCOMPARE(empty->property("text").toString(), u"No tabs created yet ✍️"_qs);
    QVERIFY(openNewTab());
    QCOMPARE(scene->topKind(), MainScene::Editor);
    QCOMPARE(c->title(), u"Edit - Untitled 1"_qs);
    QVERIFY(QFile::exists(QDir(storageFolder()).filePath(u"Untitled 1.lgrdi"_qs)));
    // Back in the list, the new tab is listed, and the next one takes the next number.
    tapAndSettle(u"backButton"_qs);
    QCOMPARE(scene->topKind(), MainScene::TabsList);
    QTRY_VERIFY(item(u"tabRow0"_qs));
    QVERIFY(!item(u"emptyList"_qs));
    QVERIFY(openNewTab());
    QCOMPARE(c->title(), u"Edit - Untitled 2"_qs);
    // And one step further back, the folder screen with its fixed rows.
    tapAndSettle(u"backButton"_qs);
    tapAndSettle(u"backButton"_qs);
    QCOMPARE(scene->topKind(), MainScene::Folders);
    QVERIFY(!AppManager::shared().topTabViewController);
    const QStringList rows = scene->folders()->rows();
    QCOMPARE(rows.mid(0, 3), QStringList({u"All Tabs"_qs, u"Unlabeled"_qs, u"Deleted"_qs}));
    // The fixed folders' lists carry their own titles.
    tapAndSettle(u"folderRow1"_qs);
    QCOMPARE(scene->topList()->title(), u"Unlabeled Tabs"_qs);
    tapAndSettle(u"backButton"_qs);
    tapAndSettle(u"folderRow2"_qs);
    QCOMPARE(scene->topList()->title(), u"Deleted Tabs"_qs);
    QTRY_VERIFY(item(u"navTitle"_qs));
    QCOMPARE(item(u"navTitle"_qs)->property("text").toString(), u"Deleted Tabs"_qs);
    tapAndSettle(u"backButton"_qs);
    tapAndSettle(u"folderRow0"_qs);
    QCOMPARE(scene->topKind(), MainScene::TabsList);
    QTRY_VERIFY(item(u"tabRow1"_qs));
}

void TestApp::fretTouchWritesOneStepAndAdvances()
{
    QVERIFY(openEditor());
    QVERIFY(!item(u"undoButton"_qs)->isEnabled());
    const QPoint p = fretPoint(2, 3);
    touches().press(0, p, window.get());
    QVERIFY(c->fretRegTouchInProgress);
    QCOMPARE(view->tabRows[0].colDatas[0].columnItems[1], ColumnItemType::note(3));
    touches().release(0, p, window.get());
    QVERIFY(!c->pressInProgress());
    QCOMPARE(view->editColIndex, 1);
    QTRY_VERIFY(item(u"undoButton"_qs)->isEnabled());
    tap(u"undoButton"_qs);
    QVERIFY(view->tabRows[0].colDatas[0].isSameColumn(TabColumnData(6)));
    QVERIFY(!c->lgDocument->undoManager()->canUndo());
    QTRY_VERIFY(item(u"redoButt"_qs)->isEnabled());
    tap(u"redoButt"_qs);
    QCOMPARE(view->tabRows[0].colDatas[0].columnItems[1], ColumnItemType::note(3));
}

void TestApp::twoFingersInEitherOrder_data()
{
    QTest::addColumn<bool>("firstLiftsFirst");
    QTest::newRow("first lifts first") << true;
    QTest::newRow("second lifts first") << false;
}

void TestApp::twoFingersInEitherOrder()
{
    QFETCH(bool, firstLiftsFirst);
    QVERIFY(openEditor());
    c->lgDocument->undoManager()->groupsByEvent = false;
    const QPoint a = fretPoint(1, 2);
    const QPoint b = fretPoint(2, 3);
    touches().press(0, a, window.get());
    touches().stationary(0).press(1, b, window.get());
    QCOMPARE(c->fretboard()->visibleHighlights().size(), 2);
    const int first = firstLiftsFirst ? 0 : 1;
    touches().stationary(1 - first).release(first, first ? b : a, window.get());
    QVERIFY(c->fretRegTouchInProgress);
    touches().release(1 - first, first ? a : b, window.get());
    QVERIFY(!c->pressInProgress());
    QCOMPARE(view->tabRows[0].colDatas[0].columnItems[0], ColumnItemType::note(2));
    QCOMPARE(view->tabRows[0].colDatas[0].columnItems[1], ColumnItemType::note(3));
    QCOMPARE(view->editColIndex, 1);
    c->lgDocument->undoManager()->undo();
    QVERIFY(view->tabRows[0].colDatas[0].isSameColumn(TabColumnData(6)));
    QVERIFY(!c->lgDocument->undoManager()->canUndo());
}

void TestApp::letterHeldDuringFretPress()
{
    QVERIFY(openEditor());
    QQuickItem *letters = item(u"fretLettersTouch"_qs);
    QVERIFY(letters);
    const QPoint letter =
        letters->mapToScene(QPointF(letters->width() / 2, letters->height() * 11 / 12)).toPoint();
    const QPoint fret = fretPoint(1, 2);
    touches().press(0, letter, window.get());
    QVERIFY(c->fretZeroTouchInProgress);
    touches().stationary(0).press(1, fret, window.get());
    touches().stationary(0).release(1, fret, window.get());
    // The letter is still held: nothing committed, the cursor stays.
    QVERIFY(view->preEditColumnData);
    QVERIFY(!c->undoEnabled);
    QCOMPARE(view->editColIndex, 0);
    touches().release(0, letter, window.get());
    QVERIFY(!view->preEditColumnData);
    QCOMPARE(view->tabRows[0].colDatas[0].columnItems[5], ColumnItemType::note(0));
    QCOMPARE(view->tabRows[0].colDatas[0].columnItems[0], ColumnItemType::note(2));
    QCOMPARE(view->editColIndex, 1);
    QVERIFY(c->undoEnabled);
}

void TestApp::slideCancelsThePress()
{
    QVERIFY(openEditor());
    const QPoint start = fretPoint(3, 4);
    touches().press(0, start, window.get());
    QCOMPARE(view->tabRows[0].colDatas[0].columnItems[2], ColumnItemType::note(4));
    // Sliding sideways scrolls the board, which cancels the press.
    for (int dx = 10; dx <= 120; dx += 10) {
        touches().move(0, start - QPoint(dx, 0), window.get());
        QTest::qWait(20);
    }
    touches().release(0, start - QPoint(120, 0), window.get());
    QVERIFY(!c->pressInProgress());
    QVERIFY(view->tabRows[0].colDatas[0].isSameColumn(TabColumnData(6)));
    QVERIFY(!c->lgDocument->undoManager()->canUndo());
    QCOMPARE(view->editColIndex, 0);
    QVERIFY(c->fretboard()->contentOffset.x() >= 100);
}

void TestApp::toolsGuardedDuringPress()
{
    QVERIFY(openEditor());
    tap(fretPoint(1, 5));
    view->setEditPosition(0, 0);
    const QPoint fret = fretPoint(2, 4);
    touches().press(0, fret, window.get());
    QVERIFY(c->fretRegTouchInProgress);
    // A second finger taps tools while the first stays on its fret.
    auto tapHeld = [&](const QString &name) {
        const QPoint button = centerOf(item(name));
        touches().stationary(0).press(1, button, window.get());
        touches().stationary(0).release(1, button, window.get());
    };
    for (const QString &name : {u"undoButton"_qs, u"clearButt"_qs, u"addRowButt"_qs})
        tapHeld(name);
    QCOMPARE(view->tabRows.size(), 1);
    QCOMPARE(view->tabRows[0].colDatas[0].columnItems[0], ColumnItemType::note(5));
    QCOMPARE(view->tabRows[0].colDatas[0].columnItems[1], ColumnItemType::note(4));
    // Column tools act during a press (they live in the tools drawer).
    c->addTabColumn();
    QCOMPARE(view->numTabColumns, 33);
    touches().release(0, fret, window.get());
    tap(u"addRowButt"_qs);
    QCOMPARE(view->tabRows.size(), 2);
}

void TestApp::sizeThresholds()
{
    QVERIFY(openEditor());
    struct Case {
        QSize size;
        bool compact;
        bool arrowsOwn;
        bool fretboard;
    };
    const QList<Case> cases = {{{339, 844}, true, false, true},
                               {{340, 844}, false, false, true},
                               {{475, 844}, false, true, true},
                               {{800, 460}, false, true, false},
                               {{1280, 800}, false, true, true}};
    for (const Case &test : cases) {
        window->resize(test.size);
        QTRY_COMPARE(c->prevViewSize, std::optional<QSizeF>(QSizeF(test.size)));
        QCOMPARE(c->compactToolbar, test.compact);
        QCOMPARE(bool(item(u"fretboard"_qs)), test.fretboard);
        QCOMPARE(bool(item(u"toolbar"_qs)), test.fretboard);
        if (test.fretboard)
            QCOMPARE(bool(item(u"editLeftButt"_qs)), test.arrowsOwn);
        // Every toolbar button keeps its full height as a touch target.
        if (QQuickItem *undo = item(u"undoButton"_qs))
            QVERIFY(undo->height() >= 44);
    }
    // Narrow screens flash the arrows after a cursor move.
    window->resize(400, 844);
    QTRY_COMPARE(c->prevViewSize, std::optional<QSizeF>(QSizeF(400, 844)));
    tap(fretPoint(1, 1));
    QVERIFY(c->editMoveButtsShown);
    QTRY_VERIFY(item(u"flashRightButt"_qs));
    // They flash over the mode buttons, never over the row buttons: a late tap where › was
    // switches a mode at worst and never deletes a row.
    auto sceneRect = [](QQuickItem *it) {
        return it->mapRectToScene(QRectF(0, 0, it->width(), it->height()));
    };
    const QRectF right = sceneRect(item(u"flashRightButt"_qs));
    for (const QString &name : {u"addRowButt"_qs, u"deleteRowButt"_qs})
        QVERIFY2(!right.intersects(sceneRect(item(name))), qPrintable(name));
    QVERIFY(right.intersects(sceneRect(item(u"moreToolsButt"_qs))) ||
            right.intersects(sceneRect(item(u"magicEditButt"_qs))));
    const qsizetype rows = view->tabRows.size();
    QTRY_VERIFY(!c->editMoveButtsShown);
    QTRY_VERIFY(!item(u"modeButtsCoverView"_qs));
    tap(right.center().toPoint());
    QCOMPARE(view->tabRows.size(), rows);
}

void TestApp::dialogsCloseByButtonOrTapOutside()
{
    QVERIFY(openWindow());
    DialogHost *host = scene->dialogs();
    // A tap on the message itself keeps it up.
    host->showMessage(u"Maximum column count 64"_qs);
    tap(u"messageLabel"_qs);
    QVERIFY(host->isPresenting());

    // Each dialog closes on a tap outside, a finger on a button or a click on it.
    enum By { Outside, Finger, Mouse };
    auto answer = [&](auto show, const QString &button, By by) {
        show();
        QTRY_VERIFY(item(button));
        if (by == Outside)
            tap(QPoint(10, 10));
        else if (by == Finger)
            tap(centerOf(item(button)));
        else
            click(centerOf(item(button)));
        QVERIFY(!host->isPresenting());
    };
    auto message = [&] { host->showMessage(u"Unable to open tab."_qs); };
    answer([] {}, u"messageLabel"_qs, Outside);
    message();
    QTRY_VERIFY(item(u"messageOk"_qs));
    saveShot(u"message-dialog"_qs);
    answer([] {}, u"messageOk"_qs, Finger);
    answer(message, u"messageOk"_qs, Mouse);

    int chosen = 0;
    auto twoOption = [&] {
        host->showTwoOption(u"Sort By Modified"_qs, u"Sort Alphabetically"_qs, u"sort"_qs,
                            [&](int option, const QString &) { chosen = option; });
    };
    answer(twoOption, u"optionTwoButt"_qs, Outside);
    QCOMPARE(chosen, 0);
    answer(twoOption, u"optionTwoButt"_qs, Finger);
    QCOMPARE(chosen, 2);
    answer(twoOption, u"optionOneButt"_qs, Mouse);
    QCOMPARE(chosen, 1);

    QString confirmed;
    auto confirm = [&] {
        host->showConfirm(u"Restore this tab?"_qs, u"Restore"_qs, u"restoreDeleted"_qs,
                          [&](const QString &tag) { confirmed = tag; });
    };
    answer(confirm, u"confirmButt"_qs, Outside);
    QVERIFY(confirmed.isEmpty());
    answer(confirm, u"confirmButt"_qs, Mouse);
    QCOMPARE(confirmed, u"restoreDeleted"_qs);

    // Waiting is cancelled either way.
    int cancelled = 0;
    auto standby = [&] { host->showLoadingStandby([&] { ++cancelled; }); };
    answer(standby, u"standbyCancel"_qs, Outside);
    QCOMPARE(cancelled, 1);
    answer(standby, u"standbyCancel"_qs, Mouse);
    QCOMPARE(cancelled, 2);
}

void TestApp::openFailureAndStandby()
{
    QVERIFY(writeFile(u"Broken.lgrdi"_qs, "not a tab at all"));
    QVERIFY(writeFile(u"Busy.lgrdi"_qs, tabWithNote(u"Busy"_qs, 4),
                      QDateTime::currentDateTime().addSecs(-3600)));
    QVERIFY(openWindow());
    QTRY_VERIFY(item(u"tabRow1"_qs));
    TabsListViewController *list = scene->topList();
    QCOMPARE(list->rowNames(), QStringList({u"Broken"_qs, u"Busy"_qs}));
    QVERIFY(!openListRow(0));
    QCOMPARE(scene->dialogs()->kind(), DialogHost::Kind::Message);
    QCOMPARE(scene->dialogs()->messageString, u"Unable to open tab."_qs);
    tap(QPoint(5, 5));
    // A second touch tries again and says so again, rather than waiting on the first try.
    QVERIFY(!openListRow(0));
    QVERIFY(!list->tabOpenFlow.waiting());
    QCOMPARE(scene->dialogs()->kind(), DialogHost::Kind::Message);
    QCOMPARE(scene->dialogs()->messageString, u"Unable to open tab."_qs);
    click(u"messageOk"_qs);
    QVERIFY(!scene->dialogs()->isPresenting());

    // A document still open elsewhere is waited for, in rounds, with the standby dialog from
    // the 18th on; cancelling it stops the waiting.
    const QString busyPath = QDir(storageFolder()).filePath(u"Busy.lgrdi"_qs);
    LutegridDocument *busy = AppManager::shared().documentFor(busyPath);
    QVERIFY(busy->open());
    list->tabOpenFlow.roundInterval = 5;
    // A person's pause, so the touches land while the dialogs fade in and out.
    QTest::qWait(60);
    tap(u"tabRow1"_qs);
    QVERIFY(list->tabOpenFlow.waiting());
    QTRY_COMPARE(scene->dialogs()->kind(), DialogHost::Kind::LoadingStandby);
    QVERIFY(list->tabOpenFlow.tabOpenStatusCheckerCount >= 18);
    tap(QPoint(5, 5));
    QVERIFY(!list->tabOpenFlow.waiting());
    QVERIFY(!list->tabOpenFlow.standbyShown());
    QCOMPARE(scene->topKind(), MainScene::TabsList);
    // A later wait shows the dialog again; its Cancel button ends that wait too.
    QTest::qWait(60);
    tap(u"tabRow1"_qs);
    QTRY_COMPARE(scene->dialogs()->kind(), DialogHost::Kind::LoadingStandby);
    QVERIFY(list->tabOpenFlow.standbyShown());
    click(u"standbyCancel"_qs);
    QVERIFY(!list->tabOpenFlow.waiting());
    QVERIFY(!list->tabOpenFlow.standbyShown());
    QVERIFY(!scene->dialogs()->isPresenting());
    // Once it has closed, the same touch opens it.
    busy->close();
    tapAndSettle(u"tabRow1"_qs);
    QCOMPARE(scene->topKind(), MainScene::Editor);
    QCOMPARE(editor()->tabEditView()->tabRows[0].colDatas[0].columnItems[1],
             ColumnItemType::note(4));
}

void TestApp::conflictCopyBringsDialog_data()
{
    QTest::addColumn<int>("choice");
    QTest::newRow("current") << 0;
    QTest::newRow("version") << 1;
    QTest::newRow("all") << 2;
}

void TestApp::conflictCopyBringsDialog()
{
    QFETCH(int, choice);
    QVERIFY(openTab(u"Song.lgrdi"_qs, tabWithNote(u"Song"_qs, 1)));
    const QDateTime copyDate(QDate(2026, 11, 21), QTime(10, 15, 30));
    const QString copyName = u"Song.sync-conflict-20261121-101530-ABCDEFG.lgrdi"_qs;
    QVERIFY(writeFile(copyName, tabWithNote(u"Song"_qs, 2), copyDate));
    DialogHost *host = scene->dialogs();
    QTRY_COMPARE_WITH_TIMEOUT(host->kind(), DialogHost::Kind::Conflict, 5000);
    QCOMPARE(host->conflictRows.size(), 3);
    QCOMPARE(host->conflictRows.first(), u"Current"_qs);
    QCOMPARE(host->conflictRows.last(), u"All"_qs);
    // There is no way out but a choice.
    tap(QPoint(5, 5));
    QCOMPARE(host->kind(), DialogHost::Kind::Conflict);
    if (choice == 0)
        saveShot(u"conflict-dialog"_qs);
    QTRY_VERIFY(item(u"version"_qs + QString::number(choice)));
    tap(centerOf(item(u"version"_qs + QString::number(choice))));
    tap(u"confirmSelection"_qs);
    QVERIFY(!host->isPresenting());
    QVERIFY(!QFile::exists(QDir(storageFolder()).filePath(copyName)));
    const qint64 expected = choice == 1 ? 2 : 1;
    QTRY_COMPARE(c->tabEditView()->tabRows[0].colDatas[0].columnItems[1],
                 ColumnItemType::note(expected));
    QCOMPARE(readTab(u"Song.lgrdi"_qs)->tabRowDatas[0].colDatas[0].columnItems[1],
             ColumnItemType::note(expected));
    if (choice == 2) {
        const QString kept =
            u"Song "_qs + ConflictResolver::fileNameDateText(copyDate) + u".lgrdi"_qs;
        const auto version = readTab(kept);
        QVERIFY2(version, qPrintable(kept));
        QCOMPARE(version->tabRowDatas[0].colDatas[0].columnItems[1], ColumnItemType::note(2));
    }
}

void TestApp::notesSurviveClosingTheWindow()
{
    QVERIFY(openEditor());
    tap(fretPoint(1, 3));
    tap(fretPoint(2, 5));
    tap(fretPoint(6, 4));
    QCOMPARE(view->editColIndex, 3);
    closeWindow();

    QVERIFY(openWindow());
    QTRY_VERIFY(item(u"tabRow0"_qs));
    QCOMPARE(scene->topList()->rowNames(), QStringList({u"Untitled 1"_qs}));
    QVERIFY(openListRow(0));
    const QList<TabColumnData> columns = editor()->tabEditView()->tabRows[0].colDatas;
    QCOMPARE(columns[0].columnItems[0], ColumnItemType::note(3));
    QCOMPARE(columns[1].columnItems[1], ColumnItemType::note(5));
    QCOMPARE(columns[2].columnItems[5], ColumnItemType::note(4));
}

void TestApp::rowPanAndScrollIndicator()
{
    QVERIFY(openTab(u"Rows.lgrdi"_qs, tabWithNote(u"Rows"_qs, 2, 3)));
    QCOMPARE(view->showingCount(), 1);
    // A finger drags the rows up by most of a row: the next row comes into the window.
    QQuickItem *surface = item(u"surface"_qs);
    const QPoint start = surface->mapToScene(QPointF(surface->width() / 2, 150)).toPoint();
    const int pitch = int(view->tabRowPitch());
    touches().press(0, start, window.get());
    for (int dy = 20; dy <= pitch * 7 / 10; dy += 20) {
        touches().move(0, start - QPoint(0, dy), window.get());
        QTest::qWait(16);
    }
    touches().release(0, start - QPoint(0, pitch * 7 / 10), window.get());
    QTRY_VERIFY(!c->rowPan()->panSettling);
    QCOMPARE(view->tabRowIndex, 1);
    // The mouse drags the scroll indicator to its end: the last row.
    QQuickItem *indicator = item(u"tabScrollIndicator"_qs);
    QVERIFY(indicator);
    const QPoint grip =
        indicator
            ->mapToScene(QPointF(indicator->width() / 2, c->scrollIndicator()->scrubberY() + 5))
            .toPoint();
    QTest::mousePress(window.get(), Qt::LeftButton, {}, grip);
    QVERIFY(c->scrollIndicator()->indicatorDragging());
    QTest::mouseMove(window.get(), grip + QPoint(0, int(indicator->height())));
    QTest::mouseRelease(window.get(), Qt::LeftButton, {},
                        grip + QPoint(0, int(indicator->height())));
    QCOMPARE(view->tabRowIndex, 2);
    // A mouse drag that starts on a row pans the rows back down; it is no sideways scroll.
    QTRY_VERIFY(!c->rowPan()->panSettling);
    const QPoint onRow = rowPoint(0, 4.5, 2.5);
    press(onRow, true);
    for (int step = 1; step <= 10; ++step)
        move(onRow + QPoint(0, pitch * step / 10), true);
    release(onRow + QPoint(0, pitch), true);
    QTRY_COMPARE(view->tabRowIndex, 1);
    QCOMPARE(view->contentOffset.x(), 0.0);
}

void TestApp::tuningAndCapoFollowAReload()
{
    const QStringList dropD = {u"D"_qs, u"A"_qs, u"D"_qs, u"G"_qs, u"B"_qs, u"E"_qs};
    const QStringList openG = {u"D"_qs, u"G"_qs, u"D"_qs, u"G"_qs, u"B"_qs, u"D"_qs};
    TabData tab(u"Capo"_qs, {TabRowData(32, 6)}, dropD, 3, std::nullopt);
    QVERIFY(openTab(u"Capo.lgrdi"_qs, documentData(tab)));
    QQuickItem *tabLetters = item(u"tabLetters"_qs);
    QQuickItem *fretLetters = item(u"fretLetters"_qs);
    QVERIFY(tabLetters && fretLetters);
    QCOMPARE(tabLetters->property("capoNum").toInt(), 3);
    QCOMPARE(tabLetters->property("letters").toStringList(), dropD);
    saveShot(u"editor-capo"_qs);
    // Another device retunes the tab and takes the capo off; the file comes back changed.
    tab.stringNotes = openG;
    tab.capoFret = 0;
    QVERIFY(writeFile(u"Capo.lgrdi"_qs, documentData(tab)));
    QTRY_COMPARE_WITH_TIMEOUT(tabLetters->property("letters").toStringList(), openG, 5000);
    QCOMPARE(fretLetters->property("letters").toStringList(), openG);
    QCOMPARE(tabLetters->property("capoNum").toInt(), 0);
    QCOMPARE(c->tabEditView()->stringNotes, openG);
}

void TestApp::conflictWithoutVersionsGoesToTheRoot()
{
    QVERIFY(openEditor());
    QPointer<LutegridDocument> document = c->lgDocument.data();
    c->documentConflictDetected(std::nullopt);
    // The editor is gone (and with it the controller), the document closed with the rows.
    c = nullptr;
    view = nullptr;
    QTRY_COMPARE(scene->topKind(), MainScene::Folders);
    QCOMPARE(scene->depth(), 1);
    QTRY_VERIFY(item(u"folderRow0"_qs));
    QTRY_VERIFY(!findItem<EditorScreenItem>(window->contentItem()));
    QVERIFY(document);
    QTRY_VERIFY(document->documentState().testFlag(LutegridDocument::Closed));
}

void TestApp::screenshots_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<bool>("dark");
    for (const auto &[name, size] :
         {std::pair{"phone", QSize(390, 844)}, std::pair{"tablet", QSize(820, 1180)},
          std::pair{"desktop", QSize(1280, 800)}}) {
        QTest::newRow(QByteArray(QByteArray(name) + "-light").constData()) << size << false;
        QTest::newRow(QByteArray(QByteArray(name) + "-dark").constData()) << size << true;
    }
}

void TestApp::screenshots()
{
    QFETCH(QSize, size);
    QFETCH(bool, dark);
    const QString tag = QString::fromLatin1(QTest::currentDataTag());
    SavedData::shared().appearanceSetting = dark ? 2 : 1;
    QVERIFY(writeFile(u"Wish You Were Here.lgrdi"_qs, tabWithNote(u"Wish You Were Here"_qs, 3, 3),
                      QDateTime::currentDateTime().addDays(-2)));
    QVERIFY(writeFile(u"Blackbird.lgrdi"_qs, tabWithNote(u"Blackbird"_qs, 7),
                      QDateTime::currentDateTime().addDays(-1)));
    QVERIFY(openWindow(size));
    QTRY_VERIFY(item(u"tabRow1"_qs));
    saveShot(tag + u"-list"_qs);
    QVERIFY(openListRow(1));
    c = editor();
    for (const auto &[s, f] : {std::pair{2, 3}, {3, 2}, {1, 1}, {3, 5}, {2, 5}, {4, 4}})
        tap(fretPoint(s, f));
    c->tabEditView()->setEditPosition(1, 0);
    QVERIFY(c->fretboard()->visibleHighlights().size() >= 1);
    saveShot(tag + u"-editor"_qs);
}

void TestApp::penClick(QPoint point)
{
    const QPointF global = window->mapToGlobal(QPointF(point));
    for (QEvent::Type type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
        const Qt::MouseButtons buttons =
            type == QEvent::MouseButtonPress ? Qt::LeftButton : Qt::NoButton;
        QMouseEvent event(type, QPointF(point), QPointF(point), global, Qt::LeftButton, buttons,
                          Qt::NoModifier, Qt::MouseEventSynthesizedByQt, pen);
        QCoreApplication::sendEvent(window.get(), &event);
    }
    QCoreApplication::processEvents();
}

QImage TestApp::grabItem(QQuickItem *target)
{
    QCoreApplication::processEvents();
    const QImage shot = window->grabWindow();
    const QRectF box = target->mapRectToScene(target->boundingRect())
                           .intersected(QRectF(QPointF(0, 0), QSizeF(window->size())));
    const qreal scale = shot.devicePixelRatio();
    return shot.copy(QRectF(box.topLeft() * scale, box.size() * scale).toAlignedRect());
}

void TestApp::mouseOnTheRows()
{
    QVERIFY(openTab(u"Song.lgrdi"_qs, tabWithNote(u"Song"_qs, 3, 3), QSize(820, 1180)));
    QVERIFY(view->showingCount() >= 2);

    // A click on a column moves the cursor there, to the string under the pointer.
    click(rowPoint(0, 7.5, 2.5));
    QCOMPARE(view->editColIndex, 7);
    QCOMPARE(view->editColItemIndex, 2);
    click(rowPoint(1, 12.5, 4.5));
    QCOMPARE(view->editShowingTabRowIndex, 1);
    QCOMPARE(view->editColIndex, 12);
    QCOMPARE(view->editColItemIndex, 4);
    saveShot(u"editor-after-click"_qs);
    // The lyric band is no place for the cursor.
    click(rowPoint(0, 20.5, -3.5) - QPoint(0, int(TabEditView::chordNamesDisplaySpacing)));
    QCOMPARE(view->editColIndex, 12);

    // A chord-name dot chooses its column.
    QQuickItem *chords = item(u"chordNames0"_qs);
    QVERIFY(chords);
    click(chords->mapToScene(QPointF(5 * 25 + 12, chords->height() / 2)).toPoint());
    QCOMPARE(view->editShowingTabRowIndex, 0);
    QCOMPARE(view->editColIndex, 5);
    // It opens the dialog for the column's name too; a click outside leaves the name as it was.
    QTRY_VERIFY(item(u"chordNameDialog"_qs));
    click(QPoint(5, 5));
    QTRY_VERIFY(!item(u"chordNameDialog"_qs));
    QVERIFY(!view->tabRows[0].colDatas[5].chordName);

    // A pen taps like a finger.
    penClick(rowPoint(1, 9.5, 0.5));
    QCOMPARE(view->editShowingTabRowIndex, 1);
    QCOMPARE(view->editColIndex, 9);
    QCOMPARE(view->editColItemIndex, 0);
    // And a click writes where the cursor went.
    tap(fretPoint(1, 5));
    QCOMPARE(view->tabRows[1].colDatas[9].columnItems[0], ColumnItemType::note(5));
}

void TestApp::heldPressOpensNoteMenu_data()
{
    QTest::addColumn<bool>("mouse");
    QTest::newRow("finger") << false;
    QTest::newRow("mouse") << true;
}

void TestApp::heldPressOpensNoteMenu()
{
    QFETCH(bool, mouse);
    QVERIFY(openTab(u"Song.lgrdi"_qs, tabWithNote(u"Song"_qs, 3, 3)));
    auto *surface = findItem<TabEditSurface>(window->contentItem());
    // Row 1, column 0, string 2 holds fret 3.
    const QPoint point = rowPoint(0, 0.5, 1.5);
    press(point, mouse);
    QTRY_VERIFY(surface->noteMenuOpen());
    QVERIFY(item(u"noteMenu"_qs));
    QCOMPARE(view->noteContextMenu->labels.size(), 16);
    if (mouse)
        saveShot(u"note-menu-mouse"_qs);
    // Slide to "h", in steps as a hand would, and let go.
    const int hammer = int(view->noteContextMenu->labels.indexOf(u"h"_qs));
    const QPoint target = surface->mapToScene(view->noteContextMenu->entryCenter(hammer)).toPoint();
    for (int step = 1; step <= 4; ++step)
        move(point + (target - point) * step / 4, mouse);
    QVERIFY(surface->noteMenuOpen());
    release(target, mouse);
    QCOMPARE(view->tabRows[0].colDatas[0].columnItems[1],
             ColumnItemType(ColumnItemType::Kind::hammer));
    QVERIFY(!surface->noteMenuOpen());
    // Nothing panned on the way.
    QCOMPARE(view->tabRowIndex, 0);
    QTRY_VERIFY(!item(u"noteMenu"_qs));
    // One undo step, on the document.
    QVERIFY(c->lgDocument->undoManager()->canUndo());
    c->lgDocument->undoManager()->undo();
    QCOMPARE(view->tabRows[0].colDatas[0].columnItems[1], ColumnItemType::note(3));
}

void TestApp::rightClickOpensNoteMenu()
{
    QVERIFY(openTab(u"Song.lgrdi"_qs, tabWithNote(u"Song"_qs, 3, 3)));
    auto *surface = findItem<TabEditSurface>(window->contentItem());
    // A right click opens the menu at once and leaves it open for the next click.
    const QPoint point = rowPoint(0, 0.5, 1.5);
    click(point, Qt::RightButton);
    QVERIFY(surface->noteMenuOpen());
    const int up = int(view->noteContextMenu->labels.indexOf(u"4"_qs));
    QVERIFY(up >= 0);
    const QPoint target = surface->mapToScene(view->noteContextMenu->entryCenter(up)).toPoint();
    QTest::mouseMove(window.get(), target);
    click(target);
    QVERIFY(!surface->noteMenuOpen());
    QCOMPARE(view->tabRows[0].colDatas[0].columnItems[1], ColumnItemType::note(4));
    // A click away from every entry closes it and changes nothing.
    click(point, Qt::RightButton);
    QVERIFY(surface->noteMenuOpen());
    click(point);
    QVERIFY(!surface->noteMenuOpen());
    QCOMPARE(view->tabRows[0].colDatas[0].columnItems[1], ColumnItemType::note(4));
    // A quick click opens nothing.
    click(point);
    QTest::qWait(350);
    QVERIFY(!surface->noteMenuOpen());
}

void TestApp::lyricTypingReachesTheFile()
{
    QVERIFY(openEditor());
    c->lgDocument->autosaveDelay = 50;
    LgUndoManager *undo = c->lgDocument->undoManager();
    QQuickItem *field = item(u"lyricsField0"_qs);
    QVERIFY(field);
    const QPoint inField = field->mapToScene(QPointF(60, field->height() / 2)).toPoint();
    click(inField);
    QTRY_VERIFY(field->hasActiveFocus());
    typeText(u"la la"_qs);
    QCOMPARE(field->property("text").toString(), u"la la"_qs);
    // The row follows a second after the last key, as one step.
    QTRY_COMPARE_WITH_TIMEOUT(view->tabRows[0].lyricText(), std::optional<QString>(u"la la"_qs),
                              5000);
    QVERIFY(undo->canUndo());
    undo->undo();
    QVERIFY(!view->tabRows[0].lyricText().value_or(QString()).size());
    QVERIFY(!undo->canUndo());
    QCOMPARE(field->property("text").toString(), QString());
    undo->redo();
    QCOMPARE(field->property("text").toString(), u"la la"_qs);

    // Enter leaves the field and writes at once; so does a click on the rows.
    click(inField);
    QTRY_VERIFY(field->hasActiveFocus());
    QTest::keyClick(window.get(), Qt::Key_End);
    typeText(u" la"_qs);
    QTest::keyClick(window.get(), Qt::Key_Return);
    QCOMPARE(view->tabRows[0].lyricText(), std::optional<QString>(u"la la la"_qs));
    typeText(u"!"_qs);
    click(rowPoint(0, 3.5, 0.5));
    QCOMPARE(view->tabRows[0].lyricText(), std::optional<QString>(u"la la la!"_qs));
    QVERIFY(!field->hasActiveFocus());
    // A finger types as well.
    tap(inField);
    QTRY_VERIFY(field->hasActiveFocus());
    QTest::keyClick(window.get(), Qt::Key_End);
    QTest::keyClick(window.get(), Qt::Key_Backspace);
    QTest::keyClick(window.get(), Qt::Key_Return);
    QCOMPARE(view->tabRows[0].lyricText(), std::optional<QString>(u"la la la"_qs));

    // The document saves it on its own, and again as the editor closes.
    auto savedLyric = [] {
        const auto saved = readTab(u"Untitled 1.lgrdi"_qs);
        return saved && !saved->tabRowDatas.isEmpty() ? saved->tabRowDatas[0].lyricText()
                                                      : std::nullopt;
    };
    QTRY_COMPARE_WITH_TIMEOUT(savedLyric(), std::optional<QString>(u"la la la"_qs), 5000);
    tapAndSettle(u"backButton"_qs);
    const auto saved = readTab(u"Untitled 1.lgrdi"_qs);
    QVERIFY(saved);
    QCOMPARE(saved->tabRowDatas[0].lyricText(), std::optional<QString>(u"la la la"_qs));
}

void TestApp::sidewaysDragScrollsAWideRow_data()
{
    QTest::addColumn<bool>("mouse");
    QTest::newRow("finger") << false;
    QTest::newRow("mouse") << true;
}

void TestApp::sidewaysDragScrollsAWideRow()
{
    QFETCH(bool, mouse);
    TabData tab(u"Wide"_qs, 6);
    tab.tabRowDatas = {TabRowData(64, 6), TabRowData(64, 6)};
    QVERIFY(openTab(u"Wide.lgrdi"_qs, documentData(tab)));
    QCOMPARE(view->numTabColumns, 64);
    QCOMPARE(view->contentOffset.x(), 0.0);
    const QPoint start = rowPoint(0, 10.5, 2.5);
    auto drag = [&](QPoint from, int dx) {
        press(from, mouse);
        for (int step = 1; step <= 10; ++step)
            move(from + QPoint(dx * step / 10, step % 2), mouse);
        release(from + QPoint(dx, 0), mouse);
    };
    drag(start, -200);
    QCOMPARE(view->contentOffset.x(), 200.0);
    QCOMPARE(view->tabRowIndex, 0);
    // The far end stops at the last column.
    const QPoint right(window->width() - 40, start.y());
    for (int i = 0; i < 5; ++i)
        drag(right, -300);
    auto *surface = findItem<TabEditSurface>(window->contentItem());
    const double end = surface->contentWidth() - surface->width();
    QVERIFY(end > 1000);
    QCOMPARE(view->contentOffset.x(), end);
    drag(QPoint(40, start.y()), 300);
    QCOMPARE(view->contentOffset.x(), end - 300);
    QCOMPARE(view->tabRowIndex, 0);
}

void TestApp::previewFollowsADeletedRow()
{
    TabData tab(u"Verses"_qs, 6);
    for (int r = 0; r < 6; ++r) {
        TabRowData row(32, 6);
        row.lyricLines = {u"verse line %1 with words"_qs.arg(r + 1)};
        for (int column = 0; column < 32; column += 4)
            row.colDatas[column].chordName = r % 2 ? u"Am"_qs : u"G7"_qs;
        tab.tabRowDatas.append(row);
    }
    QVERIFY(openTab(u"Verses.lgrdi"_qs, documentData(tab)));
    QQuickItem *preview = item(u"nextRowPreview"_qs);
    QVERIFY(preview);
    const int previewRow = c->nextRowPreviewRow;
    QCOMPARE(previewRow, view->showingCount());
    const QImage before = grabItem(preview);
    view->setEditPosition(0, 0);
    tap(u"deleteRowButt"_qs);
    QCOMPARE(view->tabRows.size(), 5);
    QTRY_VERIFY(c->rowPan()->rowSlideFrom < 0);
    QCOMPARE(c->nextRowPreviewRow, previewRow);
    // What the preview shows now is what a fresh paint of its row shows.
    const QImage shown = grabItem(preview);
    QVERIFY(shown != before);
    preview->update();
    QCOMPARE(grabItem(preview), shown);
}

void TestApp::keyboardInTheWindow()
{
    SavedData::shared().freeScrollSetting = true;
    QVERIFY(openEditor());
    QVERIFY(view->freeVerticalScroll);
    auto *screen = findItem<EditorScreenItem>(window->contentItem());
    // Nobody clicked anything: the editor has the keys.
    QTRY_VERIFY(screen->hasActiveFocus());
    const int column = view->editColIndex;
    QTest::keyClick(window.get(), Qt::Key_Right);
    QCOMPARE(view->editColIndex, column + 1);
    const int itemIndex = view->editColItemIndex;
    QTest::keyClick(window.get(), Qt::Key_5);
    const auto itemAt = [this, column, itemIndex] {
        return view->tab().tabRowDatas[0].colDatas[column + 1].columnItems[itemIndex];
    };
    QCOMPARE(itemAt(), ColumnItemType::note(5));
    QTest::keyClick(window.get(), Qt::Key_Z, Qt::ControlModifier);
    QCOMPARE(itemAt(), ColumnItemType::blank());
    QTest::keyClick(window.get(), Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    QCOMPARE(itemAt(), ColumnItemType::note(5));
    QTest::keyClick(window.get(), Qt::Key_Delete);
    QCOMPARE(itemAt(), ColumnItemType::blank());

    // Typing in a lyric field keeps every key there, Escape and Ctrl+Z included.
    QQuickItem *field = item(u"lyricsField0"_qs);
    QVERIFY(field);
    field->forceActiveFocus();
    QTest::keyClick(window.get(), Qt::Key_7);
    QVERIFY(field->property("text").toString().endsWith(u'7'));
    QTest::keyClick(window.get(), Qt::Key_Escape);
    QTest::keyClick(window.get(), Qt::Key_Z, Qt::ControlModifier);
    QCOMPARE(scene->topKind(), MainScene::Editor);
    QCOMPARE(itemAt(), ColumnItemType::blank());
    // The field let go, the keys come back to the editor.
    field->setFocus(false);
    QTRY_VERIFY(screen->hasActiveFocus());

    QTest::keyClick(window.get(), Qt::Key_Escape);
    waitForStack();
    QCOMPARE(scene->topKind(), MainScene::TabsList);
}

void TestApp::keyboardHelpAndNewTab()
{
    QVERIFY(openEditor());
    auto *screen = findItem<EditorScreenItem>(window->contentItem());
    QTRY_VERIFY(screen->hasActiveFocus());
    QQuickItem *help = findItem(window->contentItem(), u"keyboardHelp"_qs);
    QVERIFY(!help);
    QTest::keyClick(window.get(), Qt::Key_F1);
    help = item(u"keyboardHelp"_qs);
    QVERIFY(help);
    saveShot(u"keyboard-help"_qs);
    // Any key closes it and does nothing else.
    QTest::keyClick(window.get(), Qt::Key_Escape);
    QVERIFY(!item(u"keyboardHelp"_qs));
    QCOMPARE(scene->topKind(), MainScene::Editor);
    QTRY_VERIFY(screen->hasActiveFocus());

    // Ctrl+N leaves this tab for a new one.
    QTest::keyClick(window.get(), Qt::Key_N, Qt::ControlModifier);
    waitForStack();
    QCOMPARE(scene->topKind(), MainScene::Editor);
    QTRY_COMPARE(editor()->title(), u"Edit - Untitled 2"_qs);

    // On a desktop-sized window.
    window->resize(1280, 800);
    QTRY_VERIFY(findItem<EditorScreenItem>(window->contentItem())->hasActiveFocus());
    QTest::keyClick(window.get(), Qt::Key_Question, Qt::ShiftModifier);
    QVERIFY(item(u"keyboardHelp"_qs));
    saveShot(u"keyboard-help-desktop"_qs);
}

// Ctrl+V with a forum tab on the clipboard writes it at the cursor as one step; text with no
// tab says so and changes nothing.
void TestApp::pasteATextTab()
{
    QVERIFY(openEditor());
    auto *screen = findItem<EditorScreenItem>(window->contentItem());
    QTRY_VERIFY(screen->hasActiveFocus());
    const QList<TabRowData> before = view->tab().tabRowDatas;
    const int column = view->editColIndex;
    QGuiApplication::clipboard()->setText(u"  Am     G\n"
                                          "e|--0----3--|\nB|--1----0--|\nG|--2----0--|\n"
                                          "D|--2----0--|\nA|--0----2--|\nE|-------3--|\n"_qs);
    QTest::keyClick(window.get(), Qt::Key_V, Qt::ControlModifier);
    const QList<TabColumnData> &columns = view->tab().tabRowDatas[0].colDatas;
    QCOMPARE(columns[column].chordName, u"Am"_qs);
    QCOMPARE(columns[column].columnItems[1], ColumnItemType::note(1));
    QCOMPARE(columns[column + 1].chordName, u"G"_qs);
    QCOMPARE(columns[column + 1].columnItems[5], ColumnItemType::note(3));
    shots = QDir(QString::fromUtf8(LUTEGRID_SOURCE_DIR)).filePath(u"build/shots-ascii"_qs);
    QDir().mkpath(shots);
    saveShot(u"pasted-tab"_qs);
    QTest::keyClick(window.get(), Qt::Key_Z, Qt::ControlModifier);
    QCOMPARE(view->tab().tabRowDatas, before);

    QGuiApplication::clipboard()->setText(u"just some words"_qs);
    QTest::keyClick(window.get(), Qt::Key_V, Qt::ControlModifier);
    QTRY_VERIFY(item(u"messageLabel"_qs));
    QVERIFY(item(u"messageLabel"_qs)->property("text").toString().startsWith(u"No tab found"_qs));
    saveShot(u"paste-no-tab"_qs);
    QCOMPARE(view->tab().tabRowDatas, before);
}

LUTEGRID_WINDOW_TEST_MAIN(TestApp)
#include "tst_app.moc"
