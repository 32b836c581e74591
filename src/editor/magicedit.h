#pragma once

#include <QList>
#include <QObject>
#include <QPointF>
#include <QRectF>

#include <functional>
#include <optional>

class TabEditView;

// The editor's side of magic edit: which finger draws the band or drags the selection, the
// band and the dragged block as frames for the screen to draw, the copy toggle, the semitone
// buttons and row reorder mode. Points are in the coordinates of the surface's frame. The
// surface decides what a band selects and where a block lands.
class MagicEdit : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool active READ active NOTIFY changed)
    Q_PROPERTY(bool magicShiftOn READ shiftOn NOTIFY changed)
    Q_PROPERTY(bool semitoneButtsShown READ semitoneButtsShown NOTIFY changed)
    Q_PROPERTY(bool rowReorderOn READ rowReorderOn NOTIFY changed)
    Q_PROPERTY(bool bandShown READ bandShown NOTIFY framesChanged)
    Q_PROPERTY(QRectF bandRect READ bandRect NOTIFY framesChanged)
    Q_PROPERTY(bool dragShown READ dragShown NOTIFY framesChanged)
    Q_PROPERTY(QRectF dragRect READ dragRect NOTIFY framesChanged)

public:
    explicit MagicEdit(TabEditView &surface, QObject *parent = nullptr);

    // The lowest y a band may reach, in the surface's frame: above the fretboard.
    std::function<double()> bandBottom;

    bool inMagicEditMode = false;
    bool magicShiftOn = false;
    bool semitoneButtsVisible = false;
    bool rowReorderMode = false;
    std::optional<int> magicEditSelectionTouch;
    QPointF magicEditSelectionLoc;
    std::optional<QRectF> magicSelectionBox;
    std::optional<int> magicEditDragTouch;
    QPointF magicEditDragOffset;
    std::optional<QRectF> magicEditDragView;

    bool active() const { return inMagicEditMode; }
    bool shiftOn() const { return magicShiftOn; }
    bool semitoneButtsShown() const { return semitoneButtsVisible; }
    bool rowReorderOn() const { return rowReorderMode; }
    bool bandShown() const { return magicSelectionBox.has_value(); }
    QRectF bandRect() const { return magicSelectionBox.value_or(QRectF()); }
    bool dragShown() const { return magicEditDragView.has_value(); }
    QRectF dragRect() const { return magicEditDragView.value_or(QRectF()); }

    void setMode(bool on);
    // A finger or the mouse. `copy` on lifting: a modifier held asks for a copy as the toggle
    // does. Each answers whether the point was taken.
    Q_INVOKABLE bool touchBegan(int id, double x, double y);
    Q_INVOKABLE void touchMoved(int id, double x, double y);
    Q_INVOKABLE void touchEnded(int id, double x, double y, bool copy = false);
    Q_INVOKABLE void touchCancelled(int id);
    Q_INVOKABLE void toggleMagicShift();
    Q_INVOKABLE void toggleRowReorderMode();
    Q_INVOKABLE void semiShiftUp();
    Q_INVOKABLE void semiShiftDown();
    Q_INVOKABLE void clearSelection();
    // A row of the reorder mode moved a string from one place to another.
    Q_INVOKABLE void rowMoved(int from, int to, int shownRow);
    // A tap on a string letter beside the tab.
    Q_INVOKABLE void stringLetterTapped(int stringNumber, int shownRow);
    // The shown rows moved under a running drag: the source is marked again.
    void rowsMoved();

Q_SIGNALS:
    void changed();
    void framesChanged();
    // A drag began, snapped to a new place, or a toggle flipped: for the haptics of a device.
    void feedback();

private:
    QPointF limited(QPointF point) const;
    QPointF toContent(QPointF point) const;
    void dragPosition(QPointF origin);
    void dropTouches();
    void setRowReorderMode(bool on);

    TabEditView &surface;
};
