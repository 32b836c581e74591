#include "tabeditcursor.h"

#include "surfacemath.h"

using SurfaceMath::clampIndex;

TabEditCursor::TabEditCursor(QObject *parent) : QObject(parent)
{
    colChangeVisualTimer.setSingleShot(true);
    colChangeVisualTimer.setInterval(200);
    connect(&colChangeVisualTimer, &QTimer::timeout, this, &TabEditCursor::columnChangeShown);
}

void TabEditCursor::moveTo(int column, int shownRow, int columns, int shownRows)
{
    editColIndex = clampIndex(column, 0, columns - 1);
    editShowingTabRowIndex = clampIndex(shownRow, 0, shownRows - 1);
}

void TabEditCursor::setItem(int index, const CursorGeometry &geometry)
{
    editColItemIndex = clampIndex(index, 0, geometry.itemCount - 1);
    if (editColumnItemIndicator)
        editColumnItemIndicator = itemIndicatorFrame(geometry);
}

QRectF TabEditCursor::columnFrame(const CursorGeometry &geometry) const
{
    return QRectF(geometry.left + geometry.columnWidth * editColIndex - editColBorderWidth * 0.5,
                  geometry.top + geometry.rowPitch * editShowingTabRowIndex,
                  editColBorderWidth + geometry.columnWidth, geometry.rowHeight);
}

QRectF TabEditCursor::itemIndicatorFrame(const CursorGeometry &geometry) const
{
    if (geometry.rowHeight == 0)
        return QRectF();
    if (geometry.itemCount == 0)
        return QRectF(0, 0, 0, 0);
    return QRectF(
        0, geometry.rowHeight * (editColItemIndex + 1) / geometry.itemCount - editColBorderWidth,
        editColBorderWidth + geometry.columnWidth, editColBorderWidth);
}

void TabEditCursor::placeHighlight(const CursorGeometry &geometry)
{
    if (editColumnHighlight)
        editColumnHighlight = columnFrame(geometry);
}

void TabEditCursor::flashColumnChange(int column, const CursorGeometry &geometry)
{
    colChangeVisualTimer.stop();
    editColIndex = column;
    placeHighlight(geometry);
    if (editColumnHighlight)
        editColumnHighlight->setWidth(editColBorderWidth);
    colChangeVisualTimer.start();
}
