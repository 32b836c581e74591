#pragma once

#include "tabeditsurface.h"

#include <QPointer>
#include <QQuickPaintedItem>

// The string lines and items of one shown row, painted whole in one item. Only the columns
// the surface marks for rendering are painted again.
class TabRowViewItem : public QQuickPaintedItem {
    Q_OBJECT
    QML_NAMED_ELEMENT(TabRowView)
    Q_PROPERTY(TabEditSurface *surface READ surface WRITE setSurface NOTIFY surfaceChanged)
    Q_PROPERTY(int shownRow READ shownRow WRITE setShownRow NOTIFY shownRowChanged)

public:
    explicit TabRowViewItem(QQuickItem *parent = nullptr);

    TabEditSurface *surface() const { return host; }
    void setSurface(TabEditSurface *surface);
    int shownRow() const { return row; }
    void setShownRow(int shownRow);

    void paint(QPainter *painter) override;
    // Columns painted since construction, for checking that a change repaints only its own.
    int paintedColumnCount = 0;

Q_SIGNALS:
    void surfaceChanged();
    void shownRowChanged();

private:
    void columnsNeedRender(int shownRow, const QList<int> &columns);

    QPointer<TabEditSurface> host;
    int row = -1;
};
