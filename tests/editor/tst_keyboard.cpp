#include "editorsession.h"
#include "testmain.h"

#include "editor/hardwarekeyboard.h"
#include "model/columnitemtype.h"

#include <QSignalSpy>
#include <QTest>

// The hardware keyboard against an editor without a window, on a clock the tests turn.
class TestKeyboard : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();

    void heldArrowRepeatsAfterHalfASecond();
    void directionSwitchAndRelease();
    void typedDigitsAndTheTwoDigitRule();
    void typingNeedsFreeScroll();
    void commandDigitAndMarks();
    void shiftArrowsMoveBetweenRows();
    void nothingWhileDialogOrTextField();
    void shortcuts();

private:
    Session openFree(int rows = 1);
    static QString blank() { return ColumnItemType::blank().text(); }
    static KeyPress key(int code, const QString &text = {}, Qt::KeyboardModifiers mods = {})
    {
        return KeyPress{code, text, mods, false};
    }
    void press(const KeyPress &k) { keys->pressBegan(k); }
    QString itemText(const Session &s, int row, int column, int item) const
    {
        return s.view->tab().tabRowDatas[row].colDatas[column].columnItems[item].text();
    }

    EditorSessions sessions;
    HardwareKeyboard *keys = nullptr;
    double clock = 0.0;
};

void TestKeyboard::init()
{
    sessions.prepare();
    clock = 10.0;
}

Session TestKeyboard::openFree(int rows)
{
    SavedData::shared().freeScrollSetting = true;
    Session s = sessions.open(QString::fromLatin1(QTest::currentTestFunction()), rows);
    keys = s.editor->keyboard();
    keys->setClock([this] { return clock; });
    return s;
}

void TestKeyboard::heldArrowRepeatsAfterHalfASecond()
{
    Session s = openFree();
    QCOMPARE(s.view->editColIndex, 0);
    press(key(Qt::Key_Right));
    QCOMPARE(s.view->editColIndex, 1);
    QVERIFY(keys->keyMoveTimer.isActive());
    QCOMPARE(keys->keyMoveTimer.interval(), 90);
    // The system's own repeats are swallowed.
    QVERIFY(keys->pressBegan(KeyPress{Qt::Key_Right, {}, {}, true}));
    for (double t = 0.09; t < 0.5; t += 0.09) {
        clock = 10.0 + t;
        keys->keyMoveTick();
    }
    QCOMPARE(s.view->editColIndex, 1);
    clock = 10.5;
    keys->keyMoveTick();
    QCOMPARE(s.view->editColIndex, 2);
    clock = 10.59;
    keys->keyMoveTick();
    clock = 10.68;
    keys->keyMoveTick();
    QCOMPARE(s.view->editColIndex, 4);
    QVERIFY(keys->pressEnded(key(Qt::Key_Right)));
    QVERIFY(!keys->keyMoveTimer.isActive());
    clock = 11.0;
    keys->keyMoveTick();
    QCOMPARE(s.view->editColIndex, 4);

    // The repeat stops at the row's end.
    press(key(Qt::Key_Right));
    for (int i = 0; i < 60; ++i) {
        clock += 0.09;
        keys->keyMoveTick();
    }
    QCOMPARE(s.view->editColIndex, s.view->numTabColumns - 1);
}

void TestKeyboard::directionSwitchAndRelease()
{
    Session s = openFree();
    s.view->setEditPosition(10, 0);
    press(key(Qt::Key_Right));
    QCOMPARE(s.view->editColIndex, 11);
    clock = 10.2;
    press(key(Qt::Key_Left));
    QCOMPARE(s.view->editColIndex, 10);
    QCOMPARE(keys->heldKeyboardDirection, HardwareKeyboard::DragScrollDirection::left);
    // Lifting the right arrow leaves the left one repeating.
    QVERIFY(!keys->pressEnded(key(Qt::Key_Right)));
    QVERIFY(keys->keyMoveTimer.isActive());
    clock = 10.6;
    keys->keyMoveTick();
    QCOMPARE(s.view->editColIndex, 10); // 0.4 s after the left press
    clock = 10.7;
    keys->keyMoveTick();
    QCOMPARE(s.view->editColIndex, 9);
    QVERIFY(keys->pressEnded(key(Qt::Key_Left)));
    QVERIFY(!keys->heldKeyboardDirection);
}

void TestKeyboard::typedDigitsAndTheTwoDigitRule()
{
    Session s = openFree();
    s.view->setEditPosition(3, 0);
    s.view->setEditItem(2);
    press(key(Qt::Key_1, u"1"_qs));
    QCOMPARE(itemText(s, 0, 3, 2), u"1"_qs);
    clock += 0.2;
    press(key(Qt::Key_2, u"2"_qs));
    QCOMPARE(itemText(s, 0, 3, 2), u"12"_qs);
    // Only the last key counts: a third quick digit pairs with the second.
    clock += 0.2;
    press(key(Qt::Key_3, u"3"_qs));
    QCOMPARE(itemText(s, 0, 3, 2), u"23"_qs);
    // Slowly, the second digit stands alone.
    clock += 1.0;
    press(key(Qt::Key_1, u"1"_qs));
    clock += 0.5;
    press(key(Qt::Key_2, u"2"_qs));
    QCOMPARE(itemText(s, 0, 3, 2), u"2"_qs);
    // Above 80 is 80.
    clock += 1.0;
    press(key(Qt::Key_9, u"9"_qs));
    clock += 0.1;
    press(key(Qt::Key_9, u"9"_qs));
    QCOMPARE(itemText(s, 0, 3, 2), u"80"_qs);
    // After a 0 the next digit is its own.
    clock += 1.0;
    press(key(Qt::Key_0, u"0"_qs));
    QCOMPARE(itemText(s, 0, 3, 2), u"0"_qs);
    clock += 0.1;
    press(key(Qt::Key_5, u"5"_qs));
    QCOMPARE(itemText(s, 0, 3, 2), u"5"_qs);
    // Each key is one undo step.
    s.undo->undo();
    QCOMPARE(itemText(s, 0, 3, 2), u"0"_qs);
}

void TestKeyboard::typingNeedsFreeScroll()
{
    Session s = sessions.open(u"paging"_qs);
    keys = s.editor->keyboard();
    keys->setClock([this] { return clock; });
    QVERIFY(!s.view->freeVerticalScroll);
    QVERIFY(!keys->pressBegan(key(Qt::Key_5, u"5"_qs)));
    QVERIFY(!keys->pressBegan(key(Qt::Key_Down)));
    QCOMPARE(itemText(s, 0, 0, 0), blank());
    QCOMPARE(s.undo->canUndo(), false);
    // Sideways arrows work in either layout.
    QVERIFY(keys->pressBegan(key(Qt::Key_Right)));
    QCOMPARE(s.view->editColIndex, 1);
}

void TestKeyboard::commandDigitAndMarks()
{
    Session s = openFree();
    s.view->setEditItem(1);
    QVERIFY(!keys->pressBegan(key(Qt::Key_1, u"1"_qs, Qt::ControlModifier)));
    QCOMPARE(itemText(s, 0, 0, 1), blank());
    QVERIFY(!s.undo->canUndo());
    QVERIFY(keys->pressBegan(key(Qt::Key_H, u"h"_qs)));
    QCOMPARE(s.view->tab().tabRowDatas[0].colDatas[0].columnItems[1],
             ColumnItemType::fromText(u"h"_qs));
    clock += 0.1;
    QVERIFY(keys->pressBegan(key(Qt::Key_Plus, u"+"_qs, Qt::ShiftModifier)));
    QCOMPARE(s.view->tab().tabRowDatas[0].colDatas[0].columnItems[1],
             ColumnItemType::fromText(u"+"_qs));
    // A letter that is no mark is left to others.
    QVERIFY(!keys->pressBegan(key(Qt::Key_Q, u"q"_qs)));
    // A mark then a quick digit: the digit is typed alone.
    clock += 0.1;
    press(key(Qt::Key_7, u"7"_qs));
    QCOMPARE(itemText(s, 0, 0, 1), u"7"_qs);
}

void TestKeyboard::shiftArrowsMoveBetweenRows()
{
    Session s = openFree(3);
    QVERIFY(s.view->showingCount() >= 2);
    const int last = s.view->showingCount() - 1;
    press(key(Qt::Key_Down, {}, Qt::ShiftModifier));
    QCOMPARE(s.view->editShowingTabRowIndex, 1);
    s.view->setEditPosition(0, last);
    press(key(Qt::Key_Down, {}, Qt::ShiftModifier));
    QCOMPARE(s.view->editShowingTabRowIndex, last);
    press(key(Qt::Key_Up, {}, Qt::ShiftModifier));
    QCOMPARE(s.view->editShowingTabRowIndex, last - 1);
    // Without Shift the cursor goes along the strings.
    s.view->setEditItem(2);
    press(key(Qt::Key_Down));
    QCOMPARE(s.view->editColItemIndex, 3);
    press(key(Qt::Key_Up));
    press(key(Qt::Key_Up));
    QCOMPARE(s.view->editColItemIndex, 1);
    QCOMPARE(s.view->editShowingTabRowIndex, last - 1);
}

void TestKeyboard::nothingWhileDialogOrTextField()
{
    Session s = openFree();
    sessions.dialogs.presenting = true;
    QSignalSpy back(keys, &HardwareKeyboard::backRequested);
    QVERIFY(!keys->pressBegan(key(Qt::Key_Right)));
    QVERIFY(!keys->pressBegan(key(Qt::Key_5, u"5"_qs)));
    QVERIFY(!keys->pressBegan(key(Qt::Key_Escape)));
    QCOMPARE(s.view->editColIndex, 0);
    QCOMPARE(itemText(s, 0, 0, 0), blank());
    QCOMPARE(back.size(), 0);
    sessions.dialogs.presenting = false;

    keys->textBeingTyped = true;
    QVERIFY(!keys->pressBegan(key(Qt::Key_Right)));
    QVERIFY(!keys->pressBegan(key(Qt::Key_Z, {}, Qt::ControlModifier)));
    QVERIFY(!keys->pressBegan(key(Qt::Key_Backspace)));
    QVERIFY(!keys->pressBegan(key(Qt::Key_Escape)));
    QCOMPARE(s.view->editColIndex, 0);
    QCOMPARE(back.size(), 0);
    keys->textBeingTyped = false;
    QVERIFY(keys->pressBegan(key(Qt::Key_Right)));
    QCOMPARE(s.view->editColIndex, 1);

    // In magic edit arrows and digits are not ours.
    s.editor->inMagicEditMode = true;
    QVERIFY(!keys->pressBegan(key(Qt::Key_Right, {})));
    QCOMPARE(s.view->editColIndex, 1);
}

void TestKeyboard::shortcuts()
{
    Session s = openFree();
    press(key(Qt::Key_4, u"4"_qs));
    QCOMPARE(itemText(s, 0, 0, 0), u"4"_qs);
    QVERIFY(keys->pressBegan(key(Qt::Key_Z, {}, Qt::ControlModifier)));
    QCOMPARE(itemText(s, 0, 0, 0), blank());
    QVERIFY(keys->pressBegan(key(Qt::Key_Z, {}, Qt::ControlModifier | Qt::ShiftModifier)));
    QCOMPARE(itemText(s, 0, 0, 0), u"4"_qs);
    press(key(Qt::Key_Z, {}, Qt::ControlModifier));
    QVERIFY(keys->pressBegan(key(Qt::Key_Y, {}, Qt::ControlModifier)));
    QCOMPARE(itemText(s, 0, 0, 0), u"4"_qs);
    // Delete and Backspace clear the item, one step each.
    QVERIFY(keys->pressBegan(key(Qt::Key_Delete)));
    QCOMPARE(itemText(s, 0, 0, 0), blank());
    s.undo->undo();
    QCOMPARE(itemText(s, 0, 0, 0), u"4"_qs);
    QVERIFY(keys->pressBegan(key(Qt::Key_Backspace)));
    QCOMPARE(itemText(s, 0, 0, 0), blank());

    QSignalSpy back(keys, &HardwareKeyboard::backRequested);
    QSignalSpy help(keys, &HardwareKeyboard::helpRequested);
    QSignalSpy full(keys, &HardwareKeyboard::fullScreenRequested);
    QSignalSpy newTab(keys, &HardwareKeyboard::newTabRequested);
    press(key(Qt::Key_Escape));
    press(key(Qt::Key_W, u"\x17"_qs, Qt::ControlModifier));
    QCOMPARE(back.size(), 2);
    press(key(Qt::Key_Question, u"?"_qs, Qt::ShiftModifier));
    press(key(Qt::Key_F1));
    QCOMPARE(help.size(), 2);
    press(key(Qt::Key_F11));
    QCOMPARE(full.size(), 1);
    press(key(Qt::Key_N, {}, Qt::ControlModifier));
    QCOMPARE(newTab.size(), 1);
    QCOMPARE(HardwareKeyboard::shortcutList().size() % 2, 0);
}

LUTEGRID_TEST_MAIN(TestKeyboard)
#include "tst_keyboard.moc"
