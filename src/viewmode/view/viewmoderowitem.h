#pragma once

#include "viewmode/tabviewcontroller.h"

#include <QPointer>
#include <QQuickPaintedItem>

// One entry of the page painted whole: a reading row, or a pair side by side.
class ViewModeRowItem : public QQuickPaintedItem {
    Q_OBJECT
    QML_NAMED_ELEMENT(ViewModeRow)
    Q_PROPERTY(TabViewController *controller MEMBER controller NOTIFY changed)
    Q_PROPERTY(int entry MEMBER entry NOTIFY changed)

public:
    explicit ViewModeRowItem(QQuickItem *parent = nullptr);

    QPointer<TabViewController> controller;
    int entry = -1;

    void paint(QPainter *painter) override;

Q_SIGNALS:
    void changed();
};
