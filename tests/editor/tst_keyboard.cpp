#include "editorsession.h"
#include "testmain.h"

#include "editor/hardwarekeyboard.h"
#include "model/columnitemtype.h"

#include <QSignalSpy>
#include <QTest>

// The hardware keyboard against an editor without a window, on a clock the tests turn.
class TestKeyboard : public QObject {
    Q_OBJECT

private:
    // An editor on the tests' clock, in free scroll unless told otherwise.
    Session openFree(int rows = 1, bool freeScroll = true)
    {
        SavedData::shared().freeScrollSetting = freeScroll;
        Session s = sessions.open(QString::fromLatin1(QTest::currentTestFunction()), rows);
        keys = s.editor->keyboard();
        keys->setClock([this] { return clock; });
        return s;
    }
    static QString blank() { return ColumnItemType::blank().text(); }
    static KeyPress key(int code, const QString &text = {}, Qt::KeyboardModifiers mods = {})
    {
        return KeyPress{code, text, mods, false};
    }
    void press(const KeyPress &k) { keys->pressBegan(k); }
    void tickAt(double t)
    {
        clock = t;
        keys->keyMoveTick();
    }
    // Types `digit` `after` seconds past the last key.
    void type(double after, char digit)
    {
        clock += after;
        press(key(Qt::Key_0 + (digit - '0'), QString(QChar::fromLatin1(digit))));
    }
    void refuses(std::initializer_list<KeyPress> presses)
    {
        for (const KeyPress &k : presses)
            QVERIFY2(!keys->pressBegan(k), qPrintable(QString::number(k.key, 16)));
    }
    QString itemText(const Session &s, int row, int column, int item) const
    {
        return s.view->tab().tabRowDatas[row].colDatas[column].columnItems[item].text();
    }

    EditorSessions sessions;
    HardwareKeyboard *keys = nullptr;
    double clock = 0.0;

private Q_SLOTS:
    void init()
    {
        sessions.prepare();
        clock = 10.0;
    }

    void heldArrowRepeatsAfterHalfASecond()
    {
        Session s = openFree();
        QCOMPARE(s.view->editColIndex, 0);
        press(key(Qt::Key_Right));
        QCOMPARE(s.view->editColIndex, 1);
        QVERIFY(keys->keyMoveTimer.isActive());
        QCOMPARE(keys->keyMoveTimer.interval(), 90);
        // The system's own repeats are swallowed.
        QVERIFY(keys->pressBegan(KeyPress{Qt::Key_Right, {}, {}, true}));
        for (double t = 0.09; t < 0.5; t += 0.09)
            tickAt(10.0 + t);
        QCOMPARE(s.view->editColIndex, 1);
        tickAt(10.5);
        QCOMPARE(s.view->editColIndex, 2);
        tickAt(10.59);
        tickAt(10.68);
        QCOMPARE(s.view->editColIndex, 4);
        QVERIFY(keys->pressEnded(key(Qt::Key_Right)));
        QVERIFY(!keys->keyMoveTimer.isActive());
        tickAt(11.0);
        QCOMPARE(s.view->editColIndex, 4);

        // The repeat stops at the row's end.
        press(key(Qt::Key_Right));
        for (int i = 0; i < 60; ++i)
            tickAt(clock + 0.09);
        QCOMPARE(s.view->editColIndex, s.view->numTabColumns - 1);
    }

    void directionSwitchAndRelease()
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
        tickAt(10.6);
        QCOMPARE(s.view->editColIndex, 10); // 0.4 s after the left press
        tickAt(10.7);
        QCOMPARE(s.view->editColIndex, 9);
        QVERIFY(keys->pressEnded(key(Qt::Key_Left)));
        QVERIFY(!keys->heldKeyboardDirection);
    }

    void typedDigitsAndTheTwoDigitRule()
    {
        Session s = openFree();
        s.view->setEditPosition(3, 0);
        s.view->setEditItem(2);
        type(0, '1');
        QCOMPARE(itemText(s, 0, 3, 2), u"1"_qs);
        type(0.2, '2');
        QCOMPARE(itemText(s, 0, 3, 2), u"12"_qs);
        // Only the last key counts: a third quick digit pairs with the second.
        type(0.2, '3');
        QCOMPARE(itemText(s, 0, 3, 2), u"23"_qs);
        // Slowly, the second digit stands alone.
        type(1.0, '1');
        type(0.5, '2');
        QCOMPARE(itemText(s, 0, 3, 2), u"2"_qs);
        // Above 80 is 80.
        type(1.0, '9');
        type(0.1, '9');
        QCOMPARE(itemText(s, 0, 3, 2), u"80"_qs);
        // After a 0 the next digit is its own.
        type(1.0, '0');
        QCOMPARE(itemText(s, 0, 3, 2), u"0"_qs);
        type(0.1, '5');
        QCOMPARE(itemText(s, 0, 3, 2), u"5"_qs);
        // Each key is one undo step.
        s.undo->undo();
        QCOMPARE(itemText(s, 0, 3, 2), u"0"_qs);
    }

    void typingNeedsFreeScroll()
    {
        Session s = openFree(1, false);
        QVERIFY(!s.view->freeVerticalScroll);
        refuses({key(Qt::Key_5, u"5"_qs), key(Qt::Key_Down)});
        QCOMPARE(itemText(s, 0, 0, 0), blank());
        QCOMPARE(s.undo->canUndo(), false);
        // Sideways arrows work in either layout.
        QVERIFY(keys->pressBegan(key(Qt::Key_Right)));
        QCOMPARE(s.view->editColIndex, 1);
    }

    void commandDigitAndMarks()
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
        type(0.1, '7');
        QCOMPARE(itemText(s, 0, 0, 1), u"7"_qs);
    }

    void shiftArrowsMoveBetweenRows()
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

    void nothingWhileDialogOrTextField()
    {
        Session s = openFree();
        sessions.dialogs.presenting = true;
        QSignalSpy back(keys, &HardwareKeyboard::backRequested);
        refuses({key(Qt::Key_Right), key(Qt::Key_5, u"5"_qs), key(Qt::Key_Escape)});
        QCOMPARE(s.view->editColIndex, 0);
        QCOMPARE(itemText(s, 0, 0, 0), blank());
        QCOMPARE(back.size(), 0);
        sessions.dialogs.presenting = false;

        keys->textBeingTyped = true;
        refuses({key(Qt::Key_Right), key(Qt::Key_Backspace)});
        QCOMPARE(s.view->editColIndex, 0);
        keys->textBeingTyped = false;
        QVERIFY(keys->pressBegan(key(Qt::Key_Right)));
        QCOMPARE(s.view->editColIndex, 1);

        // In magic edit arrows and digits are not ours.
        s.editor->inMagicEditMode = true;
        QVERIFY(!keys->pressBegan(key(Qt::Key_Right, {})));
        QCOMPARE(s.view->editColIndex, 1);
    }

    void shortcuts()
    {
        Session s = openFree();
        press(key(Qt::Key_4, u"4"_qs));
        QCOMPARE(itemText(s, 0, 0, 0), u"4"_qs);
        press(key(Qt::Key_Z, {}, Qt::ControlModifier));
        QCOMPARE(itemText(s, 0, 0, 0), blank());
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
        QSignalSpy full(keys, &HardwareKeyboard::fullScreenRequested);
        // Ctrl+W comes with a control character for its text.
        press(key(Qt::Key_W, u"\x17"_qs, Qt::ControlModifier));
        QCOMPARE(back.size(), 1);
        press(key(Qt::Key_F11));
        QCOMPARE(full.size(), 1);
        QCOMPARE(HardwareKeyboard::shortcutList().size() % 2, 0);
    }
};

LUTEGRID_TEST_MAIN(TestKeyboard)
#include "tst_keyboard.moc"
