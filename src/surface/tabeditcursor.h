#pragma once

#include <QObject>
#include <QRectF>
#include <QTimer>

#include <optional>

// Where the viewport's geometry puts the cursor, in content coordinates.
struct CursorGeometry {
    // The left edge of the first column and the top of the first shown row's lines.
    double left = 0.0;
    double top = 0.0;
    double columnWidth = 0.0;
    // From one shown row's lines to the next's, and the height of the lines.
    double rowPitch = 0.0;
    double rowHeight = 0.0;
    int itemCount = 0;
};

// The edit cursor: the column and shown row of the highlight, the item within the column,
// and the highlight's frame, which a column insert or removal turns into a thin line for a
// moment. It knows no rows; the surface gives the counts it is clamped to and the geometry.
class TabEditCursor : public QObject {
    Q_OBJECT

public:
    static constexpr double editColBorderWidth = 3.0;

    explicit TabEditCursor(QObject *parent = nullptr);

    int editShowingTabRowIndex = 0;
    int editColIndex = 0;
    int editColItemIndex = 0;
    // The highlight's frame; absent once it is removed. Hidden in magic mode.
    std::optional<QRectF> editColumnHighlight;
    bool editColumnHighlightHidden = false;
    // Declared and kept in step, but never made: the item cursor is invisible on purpose.
    std::optional<QRectF> editColumnItemIndicator;
    // Ends the thin line of a column change.
    QTimer colChangeVisualTimer;

    // Clamped to `columns` columns and `shownRows` shown rows; it never wraps.
    void moveTo(int column, int shownRow, int columns, int shownRows);
    // Clamped to the geometry's items; the indicator follows.
    void setItem(int index, const CursorGeometry &geometry);
    QRectF columnFrame(const CursorGeometry &geometry) const;
    QRectF itemIndicatorFrame(const CursorGeometry &geometry) const;
    // The highlight, where there is one, goes over the cursor's column.
    void placeHighlight(const CursorGeometry &geometry);
    // The highlight becomes a thin line at `column` until colChangeVisualTimer runs out.
    void flashColumnChange(int column, const CursorGeometry &geometry);
    bool atFirstColumn() const { return editColIndex < 1; }
    bool atLastColumn(int columns) const { return editColIndex >= columns - 1; }

Q_SIGNALS:
    // The thin line is over: the highlight goes back over the whole column.
    void columnChangeShown();
};
