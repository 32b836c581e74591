#include "hardwarekeyboard.h"

#include "editor/tabeditviewcontroller.h"
#include "services/dialogpresenter.h"

#include <QElapsedTimer>

namespace {

double uptime()
{
    static QElapsedTimer timer;
    if (!timer.isValid())
        timer.start();
    return double(timer.nsecsElapsed()) / 1e9;
}

bool isDigit(const QString &text)
{
    return text.size() == 1 && text[0] >= u'0' && text[0] <= u'9';
}

// What a key types into a cell: a fret digit or one of the marks.
bool isTypedCharacter(const QString &text)
{
    static const QString marks = u"-hp/\\~xbr_st+*"_qs;
    return isDigit(text) || (text.size() == 1 && marks.contains(text[0]));
}

} // namespace

HardwareKeyboard::HardwareKeyboard(TabEditViewController &editor, QObject *parent)
    : QObject(parent), editor(editor), now(uptime)
{
    keyMoveTimer.setInterval(int(keyRepeatInterval * 1000));
    connect(&keyMoveTimer, &QTimer::timeout, this, &HardwareKeyboard::keyMoveTick);
}

bool HardwareKeyboard::blocked() const
{
    const DialogPresenter *dialogs = editor.dialogPresenter();
    return textBeingTyped || (dialogs && dialogs->isPresenting()) || editor.settingsDialog();
}

bool HardwareKeyboard::pressBegan(const KeyPress &press)
{
    if (blocked())
        return false;
    // The repeat is ours: the system's repeats of a held key would only run ahead of it.
    if (press.autoRepeat)
        return press.key == Qt::Key_Left || press.key == Qt::Key_Right || press.key == Qt::Key_Up ||
               press.key == Qt::Key_Down || isTypedCharacter(press.characters);
    if (shortcut(press))
        return true;
    if (editor.inMagicEditMode || !cursorKey(press))
        return false;
    lastKey = press.characters;
    lastKeyPressTime = now();
    return true;
}

bool HardwareKeyboard::cursorKey(const KeyPress &press)
{
    TabEditView &view = *editor.tabEditView();
    if (press.key == Qt::Key_Left || press.key == Qt::Key_Right) {
        const bool left = press.key == Qt::Key_Left;
        moveColumn(left ? -1 : 1);
        startRepeat(left ? DragScrollDirection::left : DragScrollDirection::right);
        return true;
    }
    if (!view.freeVerticalScroll)
        return false;
    if (press.key == Qt::Key_Up || press.key == Qt::Key_Down) {
        const int delta = press.key == Qt::Key_Up ? -1 : 1;
        if (press.modifiers & Qt::ShiftModifier)
            view.setEditPosition(view.editColIndex, view.editShowingTabRowIndex + delta);
        else
            view.moveEditItem(delta);
        return true;
    }
    // Ctrl here is the desktop's Command.
    if (!isTypedCharacter(press.characters) || (press.modifiers & Qt::ControlModifier))
        return false;
    QString text = press.characters;
    if (now() - lastKeyPressTime < twoDigitInterval && isDigit(text) && lastKey &&
        *lastKey != u"0"_qs && isDigit(*lastKey))
        text = *lastKey + text;
    bool number = false;
    if (text.toInt(&number) > maxTypedFret && number)
        text = QString::number(maxTypedFret);
    view.putItemAtCursor(text);
    return true;
}

bool HardwareKeyboard::pressEnded(const KeyPress &press)
{
    if (press.autoRepeat)
        return false;
    if (editor.inMagicEditMode) {
        stopRepeat();
        return true;
    }
    // Another key lifted leaves the held one repeating.
    if ((press.key == Qt::Key_Left && heldKeyboardDirection == DragScrollDirection::left) ||
        (press.key == Qt::Key_Right && heldKeyboardDirection == DragScrollDirection::right)) {
        stopRepeat();
        return true;
    }
    return false;
}

void HardwareKeyboard::keyMoveTick()
{
    if (!heldKeyboardDirection || now() - keyMoveStartTime < keyRepeatDelay)
        return;
    moveColumn(heldKeyboardDirection == DragScrollDirection::left ? -1 : 1);
}

void HardwareKeyboard::startRepeat(DragScrollDirection direction)
{
    stopRepeat();
    heldKeyboardDirection = direction;
    keyMoveStartTime = now();
    keyMoveTimer.start();
}

void HardwareKeyboard::stopRepeat()
{
    keyMoveStartTime = -1.0;
    keyMoveTimer.stop();
    heldKeyboardDirection.reset();
}

void HardwareKeyboard::moveColumn(int delta)
{
    TabEditView &view = *editor.tabEditView();
    view.setEditPosition(view.editColIndex + delta, view.editShowingTabRowIndex);
}

bool HardwareKeyboard::shortcut(const KeyPress &press)
{
    const Qt::KeyboardModifiers mods =
        press.modifiers & (Qt::ControlModifier | Qt::ShiftModifier | Qt::AltModifier);
    const bool ctrl = mods & Qt::ControlModifier;
    const bool shift = mods & Qt::ShiftModifier;
    if (ctrl && press.key == Qt::Key_Z) {
        if (shift)
            editor.redoEdit();
        else
            editor.undoEdit();
        return true;
    }
    if (ctrl && press.key == Qt::Key_Y) {
        editor.redoEdit();
        return true;
    }
    if ((press.key == Qt::Key_Delete || press.key == Qt::Key_Backspace) && !ctrl) {
        if (editor.inMagicEditMode)
            editor.tabClear();
        else
            editor.tabEditView()->putItemAtCursor(QString());
        return true;
    }
    // Escape leaves magic edit first, as it leaves any mode; a short window keeps it on.
    if (press.key == Qt::Key_Escape && editor.inMagicEditMode && !editor.shortLayout) {
        editor.toggleMagicEditMode();
        return true;
    }
    if (press.key == Qt::Key_Escape || (ctrl && press.key == Qt::Key_W)) {
        Q_EMIT backRequested();
        return true;
    }
    if (ctrl && press.key == Qt::Key_V) {
        if (!editor.pressInProgress())
            Q_EMIT pasteRequested();
        return true;
    }
    if (ctrl && press.key == Qt::Key_N) {
        Q_EMIT newTabRequested();
        return true;
    }
    if (ctrl && press.key == Qt::Key_Comma) {
        editor.openSettingsMenu();
        return true;
    }
    if (press.key == Qt::Key_F11) {
        Q_EMIT fullScreenRequested();
        return true;
    }
    if (press.key == Qt::Key_F1 || press.characters == u"?"_qs) {
        Q_EMIT helpRequested();
        return true;
    }
    return false;
}

QStringList HardwareKeyboard::shortcutList()
{
    return {
        u"← →"_qs,
        u"Move the cursor (hold to repeat)"_qs,
        u"↑ ↓"_qs,
        u"Move between strings (free scroll)"_qs,
        u"Shift+↑ ↓"_qs,
        u"Move between rows (free scroll)"_qs,
        u"0–9"_qs,
        u"Type a fret; two quick digits make 10–80"_qs,
        u"- h p / \\ ~ x b r _ s t + *"_qs,
        u"Type a mark"_qs,
        u"Delete, Backspace"_qs,
        u"Clear the cursor item, or the selection in magic edit"_qs,
        u"Ctrl+Z"_qs,
        u"Undo"_qs,
        u"Ctrl+Shift+Z, Ctrl+Y"_qs,
        u"Redo"_qs,
        u"Ctrl+V"_qs,
        u"Paste a plain-text tab at the cursor"_qs,
        u"Ctrl+N"_qs,
        u"New tab"_qs,
        u"Ctrl+W, Esc"_qs,
        u"Back to the list; Esc leaves magic edit first"_qs,
        u"Drag the selection with Ctrl or Alt"_qs,
        u"Drop a copy instead of moving it"_qs,
        u"Ctrl+,"_qs,
        u"Tab settings"_qs,
        u"F11"_qs,
        u"Full screen"_qs,
        u"?, F1"_qs,
        u"This help"_qs,
    };
}
