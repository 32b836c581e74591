#pragma once

#include "tabeditsurface.h"

#include <QPointer>
#include <QQuickPaintedItem>

// The chord names over one shown row. A tap names the column under the finger to the surface.
class ChordNamesDisplayItem : public QQuickPaintedItem {
    Q_OBJECT
    QML_NAMED_ELEMENT(ChordNamesDisplay)
    Q_PROPERTY(TabEditSurface *surface READ surface WRITE setSurface NOTIFY surfaceChanged)
    Q_PROPERTY(int shownRow READ shownRow WRITE setShownRow NOTIFY shownRowChanged)

public:
    explicit ChordNamesDisplayItem(QQuickItem *parent = nullptr);

    TabEditSurface *surface() const { return host; }
    void setSurface(TabEditSurface *surface);
    int shownRow() const { return row; }
    void setShownRow(int shownRow);

    void paint(QPainter *painter) override;

Q_SIGNALS:
    void surfaceChanged();
    void shownRowChanged();

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void touchEvent(QTouchEvent *event) override;

private:
    QPointer<TabEditSurface> host;
    int row = -1;
};
