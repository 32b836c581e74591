#pragma once

#include <QHash>
#include <QObject>

#include <functional>

class QTimer;

// The timers of view mode behind one small interface, so tests drive playback, the batches of
// rows and the scroll lock with a clock of their own instead of waiting in real time.
class ViewModeTimers {
public:
    using Id = int;
    virtual ~ViewModeTimers() = default;
    // Calls `fire` after `seconds`, and every `seconds` after that when repeating. Ids are above 0.
    virtual Id start(double seconds, bool repeating, std::function<void()> fire) = 0;
    // Stopping an id that is unknown or done is harmless.
    virtual void stop(Id id) = 0;
};

// The real clock: precise Qt timers on the thread that made them. A timer held here keeps
// firing while the page is dragged, as the event loop has no modes that would hold it back.
class QtViewModeTimers : public QObject, public ViewModeTimers {
public:
    explicit QtViewModeTimers(QObject *parent = nullptr) : QObject(parent) {}
    ~QtViewModeTimers() override;

    Id start(double seconds, bool repeating, std::function<void()> fire) override;
    void stop(Id id) override;

private:
    QHash<Id, QTimer *> timers;
    Id nextId = 1;
};
