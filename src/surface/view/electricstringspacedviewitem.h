#pragma once

#include "surface/stringspacedview.h"

#include <QQuickPaintedItem>

// The strings drawn across the fretboard, thickest at the low strings.
class ElectricStringSpacedViewItem : public QQuickPaintedItem {
    Q_OBJECT
    QML_NAMED_ELEMENT(ElectricStringSpacedView)
    Q_PROPERTY(int numItems READ numItems WRITE setNumItems NOTIFY changed)
    Q_PROPERTY(qreal topPadding READ topPadding WRITE setTopPadding NOTIFY changed)

public:
    explicit ElectricStringSpacedViewItem(QQuickItem *parent = nullptr);

    int numItems() const { return layout.numItems; }
    void setNumItems(int count);
    qreal topPadding() const { return layout.topPadding; }
    void setTopPadding(qreal padding);

    void paint(QPainter *painter) override;

Q_SIGNALS:
    void changed();

private:
    StringSpacedView layout;
};
