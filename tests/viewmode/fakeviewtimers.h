#pragma once

#include "viewmode/viewmodetimers.h"

#include <algorithm>
#include <functional>
#include <map>

// A clock that moves only when the test says so; due timers fire in time order.
class FakeViewTimers : public ViewModeTimers {
public:
    struct Timer {
        double due = 0.0;
        double interval = 0.0;
        bool repeating = false;
        std::function<void()> fire;
    };

    double now = 0.0;
    std::map<Id, Timer> timers;
    // The interval of every timer started, in order.
    QList<double> started;

    Id start(double seconds, bool repeating, std::function<void()> fire) override
    {
        const Id id = nextId++;
        timers[id] = Timer{now + seconds, seconds, repeating, std::move(fire)};
        started.append(seconds);
        return id;
    }
    void stop(Id id) override { timers.erase(id); }

    void advance(double seconds)
    {
        const double end = now + seconds + 1e-9;
        while (true) {
            auto next = std::min_element(timers.begin(), timers.end(), [](auto &a, auto &b) {
                return a.second.due < b.second.due ||
                       (a.second.due == b.second.due && a.first < b.first);
            });
            if (next == timers.end() || next->second.due > end)
                break;
            now = std::max(now, next->second.due);
            std::function<void()> fire = next->second.fire;
            if (next->second.repeating)
                next->second.due += std::max(next->second.interval, 1e-6);
            else
                timers.erase(next);
            fire();
        }
        now = std::max(now, end - 1e-9);
    }
    // Runs everything that waits no longer than `limit`.
    void settle(double limit = 5.0) { advance(limit); }

private:
    Id nextId = 1;
};
