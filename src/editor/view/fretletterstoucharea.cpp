#include "fretletterstoucharea.h"

#include "editor/tabeditviewcontroller.h"

#include <cmath>

FretLettersTouchArea::FretLettersTouchArea(QQuickItem *parent) : QQuickItem(parent)
{
    setAcceptTouchEvents(true);
    setAcceptedMouseButtons(Qt::LeftButton);
}

QObject *FretLettersTouchArea::controllerObject() const
{
    return controller;
}

void FretLettersTouchArea::setController(QObject *object)
{
    auto *editor = qobject_cast<TabEditViewController *>(object);
    if (editor == controller)
        return;
    cancel();
    controller = editor;
    Q_EMIT controllerChanged();
}

int FretLettersTouchArea::stringAt(double y) const
{
    if (numStrings < 1 || height() <= 0 || y < 0 || y >= height())
        return 0;
    return int(std::trunc(y / (height() / numStrings))) + 1;
}

void FretLettersTouchArea::press(int id, double y)
{
    const int stringNum = stringAt(y);
    if (heldId != -2 || stringNum < 1 || !controller)
        return;
    heldId = id;
    controller->fretLetterPressed(stringNum);
}

void FretLettersTouchArea::release(int id)
{
    if (id != heldId)
        return;
    heldId = -2;
    if (controller)
        controller->fretLetterReleased();
}

void FretLettersTouchArea::cancel()
{
    if (heldId == -2)
        return;
    heldId = -2;
    if (controller)
        controller->fretLetterCancelled();
}

void FretLettersTouchArea::touchEvent(QTouchEvent *event)
{
    if (event->type() == QEvent::TouchCancel) {
        cancel();
        return;
    }
    for (qsizetype i = 0; i < event->pointCount(); ++i) {
        QEventPoint &point = event->point(i);
        if (point.state() == QEventPoint::Pressed) {
            // Only the finger that holds a letter is ours; any other goes where it landed.
            const bool taken = heldId == -2 && contains(point.position());
            if (taken)
                press(point.id(), point.position().y());
            point.setAccepted(taken);
        } else {
            if (point.state() == QEventPoint::Released)
                release(point.id());
            point.setAccepted(point.id() == heldId || point.state() == QEventPoint::Released);
        }
    }
}

void FretLettersTouchArea::touchUngrabEvent()
{
    cancel();
}

void FretLettersTouchArea::mousePressEvent(QMouseEvent *event)
{
    press(-1, event->position().y());
    event->accept();
}

void FretLettersTouchArea::mouseReleaseEvent(QMouseEvent *)
{
    release(-1);
}

void FretLettersTouchArea::mouseUngrabEvent()
{
    cancel();
}
