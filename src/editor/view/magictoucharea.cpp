#include "magictoucharea.h"

#include "editor/tabeditviewcontroller.h"

namespace {
constexpr int mouseId = -1;

bool copyModifier(Qt::KeyboardModifiers modifiers)
{
    return modifiers & (Qt::AltModifier | Qt::ControlModifier | Qt::MetaModifier);
}
} // namespace

MagicTouchArea::MagicTouchArea(QQuickItem *parent) : QQuickItem(parent)
{
    setAcceptTouchEvents(true);
    setAcceptedMouseButtons(Qt::LeftButton);
}

QObject *MagicTouchArea::controllerObject() const
{
    return controller;
}

void MagicTouchArea::setController(QObject *object)
{
    auto *editor = qobject_cast<TabEditViewController *>(object);
    if (editor == controller)
        return;
    cancelAll();
    controller = editor;
    Q_EMIT controllerChanged();
}

QPointF MagicTouchArea::inSurface(const QPointF &position) const
{
    return surface ? mapToItem(surface, position) : position;
}

bool MagicTouchArea::press(int id, const QPointF &position)
{
    if (!controller || !controller->inMagicEditMode)
        return false;
    const QPointF point = inSurface(position);
    if (point.x() < 0) {
        // The string letters beside the rows.
        controller->tabLetterTapped(point.y());
        return false;
    }
    if (!controller->magicEdit()->touchBegan(id, point.x(), point.y()))
        return false;
    heldIds.append(id);
    return true;
}

void MagicTouchArea::cancelAll()
{
    if (controller) {
        for (int id : std::as_const(heldIds))
            controller->magicEdit()->touchCancelled(id);
    }
    heldIds.clear();
}

void MagicTouchArea::touchEvent(QTouchEvent *event)
{
    if (event->type() == QEvent::TouchCancel) {
        cancelAll();
        return;
    }
    bool any = false;
    for (qsizetype i = 0; i < event->pointCount(); ++i) {
        QEventPoint &point = event->point(i);
        const int id = point.id();
        if (point.state() == QEventPoint::Pressed) {
            const bool taken = press(id, point.position());
            point.setAccepted(taken);
            any = any || taken;
            continue;
        }
        if (!heldIds.contains(id)) {
            point.setAccepted(false);
            continue;
        }
        any = true;
        const QPointF p = inSurface(point.position());
        if (point.state() == QEventPoint::Released) {
            heldIds.removeAll(id);
            controller->magicEdit()->touchEnded(id, p.x(), p.y(), copyModifier(event->modifiers()));
        } else if (point.state() == QEventPoint::Updated) {
            controller->magicEdit()->touchMoved(id, p.x(), p.y());
        }
    }
    event->setAccepted(any);
}

void MagicTouchArea::touchUngrabEvent()
{
    cancelAll();
}

void MagicTouchArea::mousePressEvent(QMouseEvent *event)
{
    event->setAccepted(press(mouseId, event->position()));
}

void MagicTouchArea::mouseMoveEvent(QMouseEvent *event)
{
    if (!heldIds.contains(mouseId) || !controller)
        return;
    const QPointF p = inSurface(event->position());
    controller->magicEdit()->touchMoved(mouseId, p.x(), p.y());
}

void MagicTouchArea::mouseReleaseEvent(QMouseEvent *event)
{
    if (!heldIds.contains(mouseId) || !controller)
        return;
    heldIds.removeAll(mouseId);
    const QPointF p = inSurface(event->position());
    controller->magicEdit()->touchEnded(mouseId, p.x(), p.y(), copyModifier(event->modifiers()));
}

void MagicTouchArea::mouseUngrabEvent()
{
    if (heldIds.contains(mouseId) && controller)
        controller->magicEdit()->touchCancelled(mouseId);
    heldIds.removeAll(mouseId);
}
