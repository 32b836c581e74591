#pragma once

#include <QList>
#include <QObject>

#include <map>
#include <set>

// Many changes in one event give one redraw: the columns and chord-name bands queued by shown
// row are flushed together once the event is done, each row once, its columns in order.
class RenderGate : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    void queueColumn(int shownRow, int column);
    void queueChordNames(int shownRow);
    bool isColumnQueued(int shownRow, int column) const;
    bool isChordNamesQueued(int shownRow) const;
    // A flush is posted and has not run yet.
    bool flushQueued() const { return posted; }
    // Tells what is queued, row by row; what is queued meanwhile waits for the next flush.
    void flushRenders();

Q_SIGNALS:
    void columnsNeedRender(int shownRow, const QList<int> &columns);
    void chordNamesNeedRender(int shownRow);

private:
    void queueFlush();

    std::map<int, std::set<int>> columns;
    std::set<int> chordNames;
    bool posted = false;
};
