#pragma once

#include <QObject>
#include <QString>
#include <QTimer>

#include <functional>
#include <optional>

class TabEditViewController;

// One key as the editor reads it: the key code (Qt::Key), the characters it types and the
// modifiers, taken from the screen's key event.
struct KeyPress {
    int key = 0;
    QString characters;
    Qt::KeyboardModifiers modifiers;
    bool autoRepeat = false;
};

// What a hardware keyboard means to the editor: arrows move the cursor and repeat while held,
// digits and marks are typed into the cursor item in free scroll, and the desktop shortcuts.
// It needs no window; the screen hands it key presses and releases and says whether a text
// field has the keys. Time comes from `clock`, so tests can drive it.
class HardwareKeyboard : public QObject {
    Q_OBJECT

public:
    enum class DragScrollDirection { up, down, left, right };
    using Clock = std::function<double()>;

    explicit HardwareKeyboard(TabEditViewController &editor, QObject *parent = nullptr);

    static constexpr double keyRepeatDelay = 0.5;
    static constexpr double keyRepeatInterval = 0.09;
    static constexpr double twoDigitInterval = 0.45;
    static constexpr int maxTypedFret = 80;

    std::optional<DragScrollDirection> heldKeyboardDirection;
    double keyMoveStartTime = -1.0;
    QTimer keyMoveTimer;
    std::optional<QString> lastKey;
    double lastKeyPressTime = -1.0;
    // A lyric field (or any text field) has the keys: everything goes to it.
    bool textBeingTyped = false;

    // Seconds of uptime; the default is a monotonic clock.
    void setClock(Clock clock) { now = std::move(clock); }

    // Each answers whether the key was handled; unhandled keys go on to the screen's parent.
    bool pressBegan(const KeyPress &press);
    bool pressEnded(const KeyPress &press);
    // The repeat timer's tick.
    void keyMoveTick();

    // The shortcuts shown in the help overlay, as pairs of keys and what they do.
    static QStringList shortcutList();

Q_SIGNALS:
    void backRequested();
    void fullScreenRequested();
    void helpRequested();
    void newTabRequested();
    // Ctrl+V: the screen reads the clipboard and pastes a plain-text tab at the cursor.
    void pasteRequested();

private:
    bool blocked() const;
    bool shortcut(const KeyPress &press);
    bool cursorKey(const KeyPress &press);
    void startRepeat(DragScrollDirection direction);
    void stopRepeat();
    void moveColumn(int delta);

    TabEditViewController &editor;
    Clock now;
};
