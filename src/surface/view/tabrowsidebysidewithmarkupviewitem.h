#pragma once

#include "tabrowwithmarkupviewitem.h"

// Two reading rows next to each other, the second after a small gap, painted in one item.
class TabRowSideBySideWithMarkupViewItem : public TabRowWithMarkupViewItem {
    Q_OBJECT
    QML_NAMED_ELEMENT(TabRowSideBySideWithMarkupView)

public:
    explicit TabRowSideBySideWithMarkupViewItem(QQuickItem *parent = nullptr);

    QList<QRectF> childFrames() const;
    void paint(QPainter *painter) override;

protected:
    void geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry) override;

private:
    std::optional<TabRowWithMarkupView> rowAt(int offset) const;
    void relayoutPair();
};
