#pragma once

#include "model/tabdata.h"

#include <QPoint>

#include <atomic>
#include <memory>
#include <optional>
#include <thread>

class SoundManager;

// Gets the sound ready while the user reads: the output opens at once (a new stream takes a
// while to settle), the columns from the highlight on are decoded and shifted first, and the
// rest of the tab after them, all off the main thread, so pressing play never waits for a file.
class ViewModeSoundPreparer {
public:
    // Columns prepared first, from the start point on.
    static constexpr int firstColumnCount = 48;

    // The output opens on a thread of its own that nobody waits for, so closing the screen
    // never stalls on the sound server: `sound` must outlive that opening (the shared manager
    // lives as long as the process; others wait for outputReady()).
    ViewModeSoundPreparer(SoundManager &sound, TabData tab, std::optional<QPoint> start);
    // Stops after the column in hand.
    ~ViewModeSoundPreparer();
    ViewModeSoundPreparer(const ViewModeSoundPreparer &) = delete;
    ViewModeSoundPreparer &operator=(const ViewModeSoundPreparer &) = delete;

    bool outputReady() const { return outputOpened->load(); }
    bool firstColumnsReady() const { return firstDone.load(); }
    bool allReady() const { return allDone.load(); }
    // For tests and the benchmark: blocks up to `ms` for the first columns and the output.
    bool waitUntilReady(int ms) const;

private:
    void prepare();

    SoundManager &sound;
    TabData tab;
    std::optional<QPoint> start;
    std::atomic<bool> cancelled{false};
    std::shared_ptr<std::atomic<bool>> outputOpened = std::make_shared<std::atomic<bool>>(false);
    std::atomic<bool> firstDone{false};
    std::atomic<bool> allDone{false};
    std::thread sampleThread;
};
