#include "forcelongpressgesturerecognizer.h"

#include <QLineF>

ForceLongPressGestureRecognizer::ForceLongPressGestureRecognizer(QObject *parent) : QObject(parent)
{
    holdTimer.setSingleShot(true);
    holdTimer.setInterval(pressDurationMs);
    connect(&holdTimer, &QTimer::timeout, this, &ForceLongPressGestureRecognizer::fire);
}

void ForceLongPressGestureRecognizer::setState(State next)
{
    state = next;
    Q_EMIT stateChanged(state, location);
}

void ForceLongPressGestureRecognizer::touchBegan(QPointF point)
{
    if (tracking)
        return;
    tracking = true;
    start = point;
    location = point;
    state = State::possible;
    holdTimer.start();
}

void ForceLongPressGestureRecognizer::touchMoved(QPointF point)
{
    if (!tracking)
        return;
    location = point;
    if (state == State::possible) {
        if (QLineF(start, point).length() > allowableMovement) {
            holdTimer.stop();
            state = State::failed;
        }
        return;
    }
    if (state == State::began || state == State::changed)
        setState(State::changed);
}

void ForceLongPressGestureRecognizer::touchEnded(QPointF point)
{
    if (!tracking)
        return;
    tracking = false;
    holdTimer.stop();
    location = point;
    if (state == State::began || state == State::changed)
        setState(State::ended);
    else
        state = State::failed;
}

void ForceLongPressGestureRecognizer::touchCancelled()
{
    if (!tracking)
        return;
    tracking = false;
    holdTimer.stop();
    if (state == State::began || state == State::changed)
        setState(State::cancelled);
    else
        state = State::failed;
}

void ForceLongPressGestureRecognizer::fire()
{
    if (tracking && state == State::possible)
        setState(State::began);
}
