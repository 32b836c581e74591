#pragma once

#include "model/tabdata.h"
#include "model/viewmodeoptions.h"
#include "surface/surfacesettings.h"
#include "surface/tabrowwithmarkupview.h"

#include <QList>
#include <QPoint>
#include <QRectF>

#include <optional>

// One entry of the page's stack: a row, or with two columns a pair of rows side by side.
struct ViewModeRowEntry {
    int firstRow = 0;
    int rowCount = 1;
    // In stack coordinates.
    QRectF frame;
    // Each row's frame inside the entry.
    QList<QRectF> childFrames;
};

// Where the rows of a tab stand on the reading page: sizes follow the stack's width, and
// every rectangle here is in stack coordinates (the stack's top left is 0, 0).
class ViewModeLayout {
public:
    static constexpr double pairRowFraction = 0.49;

    ViewModeLayout(const TabData *tab, SurfaceSettings settings) : tab(tab), settings(settings) {}

    ViewModeDisplayOptions display;
    double stackWidth = 0.0;
    // The intro text, if any, stands over the rows: the rows start below it.
    double introHeight = 0.0;
    QList<ViewModeRowEntry> entries;

    double spacing() const { return spacingFor(stackWidth, display.twoColumns); }
    static double spacingFor(double width, bool twoColumns);
    // The row as view mode shows it, laid out to `width`.
    TabRowWithMarkupView rowView(int row, double width, int minLyricLines = 0) const;
    int rowCount() const { return tab ? int(tab->tabRowDatas.size()) : 0; }

    // The entry that starts at `firstRow`, sized to the stack, placed under the last one.
    ViewModeRowEntry makeEntry(int firstRow) const;
    void append(const ViewModeRowEntry &entry);
    void clear() { entries.clear(); }
    // Every entry sized anew to `width`; true if any height changed.
    bool relayout(double width);
    double stackHeight() const;

    // Which entry shows a tab row, and which row within it.
    int entryIndexOfRow(int row) const { return display.twoColumns ? row / 2 : row; }
    // The band of column x of row y, or nothing while its entry isn't made yet.
    std::optional<QRectF> columnRect(QPoint position) const;
    struct Hit {
        QPoint position; // x column (never below -1), y row
        QRectF rect;
    };
    // The column under a point, in frames grown a little so a near miss still counts.
    std::optional<Hit> hitTest(QPointF point) const;

private:
    // The row's frame in stack coordinates, with the row view that fills it.
    std::optional<std::pair<QRectF, TabRowWithMarkupView>> placedRow(int row) const;

    const TabData *tab;
    SurfaceSettings settings;
};
