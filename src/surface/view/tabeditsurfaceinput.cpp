#include "tabeditsurface.h"

#include <QHoverEvent>
#include <QLineF>
#include <QMouseEvent>
#include <QQuickWindow>
#include <QTouchEvent>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>
#include <utility>

// A finger, a mouse button and a pen (which reaches items as a mouse) all press, hold and drag
// alike: a press places the cursor, holding still opens the note menu, a drag scrolls what is
// wider than the view. A right click opens the note menu at once, for a mouse that has no
// reason to wait.

namespace {

using State = ForceLongPressGestureRecognizer::State;

// Past this a press is a drag, as the held-note recogniser sees it too.
constexpr double dragDistance = ForceLongPressGestureRecognizer::allowableMovement;

// One notch of a wheel scrolls two columns.
constexpr double wheelNotchDistance = 2 * TabEditView::tabColumnWidth;

} // namespace

void TabEditSurface::setUpInput()
{
    setAcceptTouchEvents(true);
    setAcceptedMouseButtons(Qt::LeftButton | Qt::RightButton);
    connect(editView, &TabEditView::menuChanged, this, [this] {
        if (noteMenuOpen()) {
            // Sliding to an entry must not turn into a row pan.
            claimPointer(true);
        } else {
            clickMenu = false;
            setAcceptHoverEvents(false);
            setFiltersChildMouseEvents(false);
        }
    });
}

bool TabEditSurface::noteMenuOpen() const
{
    return editView->noteContextMenu && !editView->noteContextMenu->finished;
}

QPointF TabEditSurface::toContent(const QPointF &position) const
{
    return position + editView->contentOffset;
}

void TabEditSurface::claimPointer(bool claim)
{
    setKeepMouseGrab(claim);
    setKeepTouchGrab(claim);
}

void TabEditSurface::leaveLyricsField()
{
    // A press on the rows leaves a lyric field as a tap outside it would: the field loses the
    // keyboard and hands its text over.
    QQuickItem *focused = window() ? window()->activeFocusItem() : nullptr;
    if (focused && focused != this && isAncestorOf(focused))
        forceActiveFocus(Qt::MouseFocusReason);
    editView->commitLyricsField();
}

void TabEditSurface::lyricsFieldTextChanged(int shownRow, const QString &text, qreal caretMinX,
                                            qreal caretMaxX)
{
    if (shownRow < 0 || shownRow >= editView->showingCount())
        return;
    editView->scrollToShowX(caretMinX - 10.0, caretMaxX + 10.0);
    editView->lyricsFieldTextChanged(shownRow, text);
}

void TabEditSurface::commitLyricsField()
{
    editView->commitLyricsField();
}

void TabEditSurface::pointerPressed(const QPointF &position)
{
    swallowRelease = false;
    leaveLyricsField();
    pressPosition = position;
    pressOffset = editView->contentOffset;
    dragging = false;
    editView->touchesBegan({toContent(position)});
    editView->forceGestureRecognizer.touchBegan(toContent(position));
}

void TabEditSurface::pointerMoved(const QPointF &position)
{
    editView->forceGestureRecognizer.touchMoved(toContent(position));
    if (noteMenuOpen())
        return;
    const QPointF delta = pressPosition - position;
    if (!dragging) {
        if (QLineF(position, pressPosition).length() <= dragDistance)
            return;
        dragging = true;
        // Sideways is always the surface's; up and down is the editor's row pan unless the
        // rows scroll freely.
        if (std::abs(delta.x()) >= std::abs(delta.y()) || editView->freeVerticalScroll)
            claimPointer(true);
    }
    // A drag scrolls what is larger than the view.
    const double maxX = std::max(0.0, contentWidth() - width());
    const double maxY = std::max(0.0, editView->contentSize.height() - height());
    editView->setContentOffset(QPointF(std::clamp(pressOffset.x() + delta.x(), 0.0, maxX),
                                       std::clamp(pressOffset.y() + delta.y(), 0.0, maxY)));
}

void TabEditSurface::pointerReleased(const QPointF &position)
{
    editView->forceGestureRecognizer.touchEnded(toContent(position));
    dragging = false;
    claimPointer(false);
}

void TabEditSurface::pointerCancelled()
{
    editView->forceGestureRecognizer.touchCancelled();
    dragging = false;
    claimPointer(false);
}

void TabEditSurface::openMenuByClick(const QPointF &position)
{
    leaveLyricsField();
    pressPosition = position;
    editView->touchesBegan({toContent(position)});
    editView->handleForceTouch(State::began, toContent(position));
    clickMenu = noteMenuOpen();
    setAcceptHoverEvents(clickMenu);
    // The ring stands over lyric fields and chord names: the next click is the menu's.
    setFiltersChildMouseEvents(clickMenu);
}

void TabEditSurface::endMenuByClick(const QPointF &position)
{
    clickMenu = false;
    setAcceptHoverEvents(false);
    setFiltersChildMouseEvents(false);
    editView->handleForceTouch(State::ended, toContent(position));
}

bool TabEditSurface::childMouseEventFilter(QQuickItem *item, QEvent *event)
{
    if (!clickMenu || !noteMenuOpen())
        return QQuickItem::childMouseEventFilter(item, event);
    if (event->type() == QEvent::MouseButtonPress || event->type() == QEvent::TouchBegin) {
        auto *pointerEvent = static_cast<QPointerEvent *>(event);
        if (pointerEvent->pointCount() > 0) {
            QEventPoint &point = pointerEvent->point(0);
            endMenuByClick(mapFromScene(point.scenePosition()));
            // The rest of this press is the surface's, so that nothing under the ring reacts.
            if (event->type() == QEvent::MouseButtonPress) {
                pointerEvent->setExclusiveGrabber(point, this);
                swallowRelease = true;
            }
        }
    }
    // Until the menu is done with, nothing under it is touched.
    return true;
}

void TabEditSurface::touchEvent(QTouchEvent *event)
{
    if (!editView->tabRowTouchesEnabled) {
        event->ignore();
        return;
    }
    if (event->type() == QEvent::TouchCancel) {
        trackedTouchId = -1;
        pointerCancelled();
        return;
    }
    QList<QPointF> began;
    for (const QEventPoint &point : event->points()) {
        if (point.state() == QEventPoint::Pressed) {
            if (clickMenu && noteMenuOpen()) {
                // A finger ends a menu that a click opened, like the next click would.
                endMenuByClick(point.position());
                continue;
            }
            began.append(toContent(point.position()));
            if (trackedTouchId == -1) {
                trackedTouchId = point.id();
                leaveLyricsField();
                pressPosition = point.position();
                pressOffset = editView->contentOffset;
                dragging = false;
                editView->forceGestureRecognizer.touchBegan(toContent(point.position()));
            }
        } else if (point.id() == trackedTouchId) {
            if (point.state() == QEventPoint::Released) {
                trackedTouchId = -1;
                pointerReleased(point.position());
            } else if (point.state() == QEventPoint::Updated) {
                pointerMoved(point.position());
            }
        }
    }
    if (!began.isEmpty())
        editView->touchesBegan(began);
    event->accept();
}

void TabEditSurface::touchUngrabEvent()
{
    trackedTouchId = -1;
    pointerCancelled();
}

void TabEditSurface::mousePressEvent(QMouseEvent *event)
{
    if (!editView->tabRowTouchesEnabled) {
        event->ignore();
        return;
    }
    if (clickMenu && noteMenuOpen()) {
        // The click after a right click chooses the entry under it, or nothing.
        endMenuByClick(event->position());
        swallowRelease = true;
    } else if (event->button() == Qt::RightButton) {
        openMenuByClick(event->position());
    } else {
        pointerPressed(event->position());
    }
    event->accept();
}

void TabEditSurface::mouseMoveEvent(QMouseEvent *event)
{
    if (clickMenu) {
        editView->handleForceTouch(State::changed, toContent(event->position()));
        return;
    }
    if (!swallowRelease)
        pointerMoved(event->position());
}

void TabEditSurface::mouseReleaseEvent(QMouseEvent *event)
{
    if (std::exchange(swallowRelease, false))
        return;
    if (clickMenu && noteMenuOpen()) {
        // Pressed, slid to an entry and let go: that is a choice too. A plain right click
        // leaves the menu open for the next click.
        const bool moved = QLineF(event->position(), pressPosition).length() > dragDistance;
        const ForceContextMenu &menu = *editView->noteContextMenu;
        if (moved && menu.indexAt(event->position()) >= 0)
            endMenuByClick(event->position());
        claimPointer(false);
        return;
    }
    pointerReleased(event->position());
}

void TabEditSurface::mouseUngrabEvent()
{
    // A click menu outlives the grab of the click that opened it.
    if (!clickMenu)
        pointerCancelled();
}

void TabEditSurface::hoverMoveEvent(QHoverEvent *event)
{
    if (clickMenu && noteMenuOpen())
        editView->handleForceTouch(State::changed, toContent(event->position()));
}

void TabEditSurface::wheelEvent(QWheelEvent *event)
{
    // A touchpad gives pixels; a wheel gives notches of 120, and with Shift turns sideways.
    QPointF delta = event->pixelDelta();
    if (delta.isNull())
        delta = QPointF(event->angleDelta()) / 120.0 * wheelNotchDistance;
    if (delta.x() == 0 && event->modifiers().testFlag(Qt::ShiftModifier))
        delta = QPointF(delta.y(), 0);
    // Up and down belong to the editor while it pages through rows.
    if (!editView->freeVerticalScroll)
        delta.setY(0);
    const double maxX = std::max(0.0, contentWidth() - width());
    const double maxY = std::max(0.0, editView->contentSize.height() - height());
    const QPointF from = editView->contentOffset;
    const QPointF to(std::clamp(from.x() - delta.x(), std::min(from.x(), 0.0), maxX),
                     std::clamp(from.y() - delta.y(), std::min(from.y(), 0.0), maxY));
    if (delta.isNull() || to == from) {
        event->ignore();
        return;
    }
    editView->setContentOffset(to);
    event->accept();
}
