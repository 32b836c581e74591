#pragma once

#include <QObject>
#include <QPointF>
#include <QTimer>

// Recognises a finger held still on one spot: it begins after the press duration if the
// finger has not moved further than the allowance, then reports moves and the lift.
class ForceLongPressGestureRecognizer : public QObject {
    Q_OBJECT

public:
    enum class State { possible, began, changed, ended, cancelled, failed };
    Q_ENUM(State)

    // A press of 0.2 s plus 0.1 s of holding.
    static constexpr int pressDurationMs = 200 + 100;
    static constexpr double allowableMovement = 12.0;

    explicit ForceLongPressGestureRecognizer(QObject *parent = nullptr);

    State state = State::possible;
    QPointF location;

    void touchBegan(QPointF point);
    void touchMoved(QPointF point);
    void touchEnded(QPointF point);
    void touchCancelled();
    bool isTracking() const { return tracking; }

Q_SIGNALS:
    void stateChanged(ForceLongPressGestureRecognizer::State state, QPointF location);

private:
    void fire();
    void setState(State next);

    QTimer holdTimer;
    QPointF start;
    bool tracking = false;
};
