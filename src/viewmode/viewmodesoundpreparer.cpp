#include "viewmodesoundpreparer.h"

#include "sound/soundmanager.h"

#include <chrono>

ViewModeSoundPreparer::ViewModeSoundPreparer(SoundManager &manager, TabData tabData,
                                             std::optional<QPoint> startPoint)
    : sound(manager), tab(std::move(tabData)), start(startPoint)
{
    std::thread([&manager, opened = outputOpened] {
        manager.output();
        *opened = true;
    }).detach();
    sampleThread = std::thread([this] { prepare(); });
}

ViewModeSoundPreparer::~ViewModeSoundPreparer()
{
    cancelled = true;
    sampleThread.join();
}

void ViewModeSoundPreparer::prepare()
{
    const QList<TabRowData> &rows = tab.tabRowDatas;
    auto warm = [this](const TabColumnData &column) {
        sound.playColumnItems(column.columnItems, tab.stringNotes, true);
    };
    // From the highlighted column on, as playback will meet them.
    int row = start ? std::max(0, start->y()) : 0;
    int col = start ? std::max(0, start->x()) : 0;
    for (int done = 0; done < firstColumnCount && row < rows.size() && !cancelled; ++done) {
        if (col < rows[row].colDatas.size())
            warm(rows[row].colDatas[col]);
        if (++col >= rows[row].colDatas.size()) {
            col = 0;
            ++row;
        }
    }
    firstDone = true;
    // Then the whole tab; what is warm already costs a look-up.
    for (const TabRowData &r : rows) {
        for (const TabColumnData &column : r.colDatas) {
            if (cancelled)
                return;
            warm(column);
        }
    }
    allDone = true;
}

bool ViewModeSoundPreparer::waitUntilReady(int ms) const
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(ms);
    while (!(firstDone && *outputOpened)) {
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}
