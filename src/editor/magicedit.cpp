#include "magicedit.h"

#include "surface/tabeditview.h"

#include <algorithm>
#include <cmath>

MagicEdit::MagicEdit(TabEditView &surfaceView, QObject *parent)
    : QObject(parent), surface(surfaceView)
{
    bandBottom = [this] { return surface.frameSize.height() + 20.0; };
}

void MagicEdit::setMode(bool on)
{
    if (on == inMagicEditMode)
        return;
    inMagicEditMode = on;
    surface.setMagicEditMode(on);
    if (!on) {
        dropTouches();
        surface.clearMagicSelection();
        magicShiftOn = false;
        semitoneButtsVisible = false;
        rowReorderMode = false;
    }
    Q_EMIT changed();
    Q_EMIT framesChanged();
}

QPointF MagicEdit::toContent(QPointF point) const
{
    return point + surface.contentOffset;
}

QPointF MagicEdit::limited(QPointF point) const
{
    const double left = surface.tabLeftInset();
    const double right = std::max(left, surface.frameSize.width() - surface.trailingContentGap());
    const double bottom = std::max(0.0, bandBottom());
    return QPointF(std::clamp(point.x(), left, right), std::clamp(point.y(), 0.0, bottom));
}

bool MagicEdit::touchBegan(int id, double x, double y)
{
    // One finger draws or drags at a time; reorder mode takes the rows' touches itself.
    if (!inMagicEditMode || rowReorderMode || magicEditSelectionTouch || magicEditDragTouch)
        return false;
    const QPointF point(x, y);
    if (const std::optional<QRectF> frame = surface.makeSelectionDragView(point)) {
        magicEditDragTouch = id;
        magicEditDragView = *frame;
        magicEditDragOffset = frame->topLeft() - point;
        dragPosition(frame->topLeft());
        surface.makeSelectionCover(*magicEditDragView);
        surface.showSelectionCover(!magicShiftOn);
        semitoneButtsVisible = false;
        Q_EMIT changed();
        Q_EMIT framesChanged();
        Q_EMIT feedback();
        return true;
    }
    // A touch outside the rows, or on a lyric field, starts nothing.
    const QPointF content = toContent(point);
    const QPointF clamped =
        surface.clampToRowBand(content.x(), content.y(), true, toContent(limited(point)).x(),
                               toContent(limited(point)).y());
    if (std::abs(clamped.x() - content.x()) >= 0.01 || std::abs(clamped.y() - content.y()) >= 0.01)
        return false;
    surface.clearMagicSelection();
    semitoneButtsVisible = false;
    magicEditSelectionTouch = id;
    magicEditSelectionLoc = point;
    magicSelectionBox = QRectF(point, QSizeF(10.0, 10.0));
    Q_EMIT changed();
    Q_EMIT framesChanged();
    return true;
}

void MagicEdit::touchMoved(int id, double x, double y)
{
    const QPointF point(x, y);
    if (inMagicEditMode && magicEditSelectionTouch == id) {
        const QPointF start = toContent(magicEditSelectionLoc);
        const QPointF now = toContent(limited(point));
        const QPointF clamped =
            surface.clampToRowBand(start.x(), start.y(), false, now.x(), now.y()) -
            surface.contentOffset;
        magicSelectionBox = QRectF(magicEditSelectionLoc, clamped).normalized();
        surface.edgeScrollForPoint(toContent(point).x());
        Q_EMIT framesChanged();
    } else if (magicEditDragTouch == id && magicEditDragView) {
        const QPointF before = magicEditDragView->topLeft();
        dragPosition(point + magicEditDragOffset);
        if (magicEditDragView->topLeft() != before)
            Q_EMIT feedback();
    }
}

void MagicEdit::dragPosition(QPointF origin)
{
    QRectF &frame = *magicEditDragView;
    const QPointF snapped =
        surface.dragSelectionMoved(origin.x(), origin.y(), frame.width(), frame.height());
    frame.moveTopLeft(snapped);
    Q_EMIT framesChanged();
}

void MagicEdit::touchEnded(int id, double x, double y, bool copy)
{
    if (magicEditSelectionTouch == id) {
        touchMoved(id, x, y);
        const QRectF band = magicSelectionBox.value_or(QRectF());
        magicEditSelectionTouch.reset();
        magicSelectionBox.reset();
        semitoneButtsVisible = surface.selectRect(band.x(), band.y(), band.width(), band.height());
        Q_EMIT changed();
        Q_EMIT framesChanged();
    } else if (magicEditDragTouch == id && magicEditDragView) {
        const QRectF frame = *magicEditDragView;
        magicEditDragTouch.reset();
        magicEditDragView.reset();
        surface.dropSelection(magicShiftOn || copy, frame.x(), frame.y(), frame.width(),
                              frame.height());
        semitoneButtsVisible = surface.magicSelectionBox.has_value();
        Q_EMIT changed();
        Q_EMIT framesChanged();
    }
}

void MagicEdit::touchCancelled(int id)
{
    if (magicEditSelectionTouch != id && magicEditDragTouch != id)
        return;
    // No edit is made: the band goes, and a dragged block springs back.
    dropTouches();
    if (surface.magicSelectionBox)
        surface.showSelection(*surface.magicSelectionBox);
    Q_EMIT framesChanged();
}

void MagicEdit::dropTouches()
{
    magicEditSelectionTouch.reset();
    magicSelectionBox.reset();
    magicEditDragTouch.reset();
    magicEditDragView.reset();
    surface.removeSelectionCover();
    surface.stopDragScroll();
}

void MagicEdit::toggleMagicShift()
{
    magicShiftOn = !magicShiftOn;
    if (magicEditDragView)
        surface.showSelectionCover(!magicShiftOn);
    Q_EMIT changed();
    Q_EMIT feedback();
}

void MagicEdit::rowsMoved()
{
    if (!inMagicEditMode || !magicEditDragView || !surface.magicSelectionBox)
        return;
    surface.showSelection(*surface.magicSelectionBox);
    surface.showSelectionCover(!magicShiftOn);
}

void MagicEdit::semiShiftUp()
{
    surface.shiftSelection(1);
}

void MagicEdit::semiShiftDown()
{
    surface.shiftSelection(-1);
}

void MagicEdit::clearSelection()
{
    surface.clearSelectedItems();
    semitoneButtsVisible = false;
    Q_EMIT changed();
}

void MagicEdit::toggleRowReorderMode()
{
    if (!inMagicEditMode || magicEditDragTouch)
        return;
    setRowReorderMode(!rowReorderMode);
    Q_EMIT feedback();
}

void MagicEdit::setRowReorderMode(bool on)
{
    if (on == rowReorderMode)
        return;
    rowReorderMode = on;
    if (on) {
        dropTouches();
        surface.clearMagicSelection();
        semitoneButtsVisible = false;
    }
    Q_EMIT changed();
    Q_EMIT framesChanged();
}

void MagicEdit::rowMoved(int from, int to, int shownRow)
{
    if (!rowReorderMode || from == to)
        return;
    // One table stands over each shown row, in free scroll as when paged.
    const int row = surface.tabRowIndex + shownRow;
    if (row < 0 || row >= surface.tabRows.size())
        return;
    surface.moveStringItems(from, to, row);
}

void MagicEdit::stringLetterTapped(int stringNumber, int shownRow)
{
    if (!inMagicEditMode || rowReorderMode)
        return;
    surface.selectWholeString(stringNumber, shownRow);
    semitoneButtsVisible = surface.magicSelectionBox.has_value();
    Q_EMIT changed();
}
