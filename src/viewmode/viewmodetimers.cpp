#include "viewmodetimers.h"

#include <QTimer>

#include <cmath>
#include <limits>

QtViewModeTimers::~QtViewModeTimers()
{
    qDeleteAll(timers);
}

ViewModeTimers::Id QtViewModeTimers::start(double seconds, bool repeating,
                                           std::function<void()> fire)
{
    const Id id = nextId++;
    auto *timer = new QTimer;
    timer->setTimerType(Qt::PreciseTimer);
    timer->setSingleShot(!repeating);
    // An interval too long for a timer (a tempo of 0) simply never comes.
    const double ms = std::isfinite(seconds) ? std::max(seconds * 1000.0, 0.0) : -1.0;
    timers.insert(id, timer);
    if (ms < 0.0 || ms > double(std::numeric_limits<int>::max()))
        return id;
    timer->setInterval(int(std::lround(ms)));
    QObject::connect(timer, &QTimer::timeout, this, [this, id, repeating, fire] {
        if (!repeating)
            stop(id);
        fire();
    });
    timer->start();
    return id;
}

void QtViewModeTimers::stop(Id id)
{
    if (QTimer *timer = timers.take(id)) {
        timer->stop();
        timer->deleteLater();
    }
}
