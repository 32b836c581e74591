#include "rendergate.h"

#include <utility>

void RenderGate::queueColumn(int shownRow, int column)
{
    if (columns[shownRow].insert(column).second)
        queueFlush();
}

void RenderGate::queueChordNames(int shownRow)
{
    chordNames.insert(shownRow);
    queueFlush();
}

bool RenderGate::isColumnQueued(int shownRow, int column) const
{
    const auto row = columns.find(shownRow);
    return row != columns.end() && row->second.count(column) > 0;
}

bool RenderGate::isChordNamesQueued(int shownRow) const
{
    return chordNames.count(shownRow) > 0;
}

void RenderGate::queueFlush()
{
    if (posted)
        return;
    posted = true;
    QMetaObject::invokeMethod(this, &RenderGate::flushRenders, Qt::QueuedConnection);
}

void RenderGate::flushRenders()
{
    posted = false;
    // Taken first: a listener that queues more while it redraws gets a flush of its own.
    const std::map<int, std::set<int>> dueColumns = std::exchange(columns, {});
    const std::set<int> dueNames = std::exchange(chordNames, {});
    std::set<int> rows = dueNames;
    for (const auto &[row, cols] : dueColumns)
        rows.insert(row);
    for (int row : rows) {
        const auto cols = dueColumns.find(row);
        if (cols != dueColumns.end() && !cols->second.empty())
            Q_EMIT columnsNeedRender(row, QList<int>(cols->second.cbegin(), cols->second.cend()));
        if (dueNames.count(row))
            Q_EMIT chordNamesNeedRender(row);
    }
}
