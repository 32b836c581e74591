#pragma once

#include <QList>
#include <QPointF>
#include <QRectF>
#include <QString>
#include <QStringList>

class ForceContextMenuResponder {
public:
    virtual ~ForceContextMenuResponder() = default;
    // The chosen entry, or -1 when the finger lifted away from every entry.
    virtual void forceContextMenuFinished(int selectedIndex) = 0;
};

// A ring of entries around the finger that held a note. Sliding picks the entry in the
// finger's direction; lifting there chooses it, lifting near the centre or far outside
// chooses nothing.
class ForceContextMenu {
public:
    static constexpr double entrySize = 40.0;
    static constexpr double minimumRadius = 64.0;

    // `area` is where the ring may stand; its top is the surface's top edge.
    ForceContextMenu(QPointF origin, const QRectF &area, ForceContextMenuResponder *responder);

    QPointF origin;
    QRectF area;
    ForceContextMenuResponder *menuResponder = nullptr;
    QStringList labels;
    int startIndex = 0;
    QPointF center;
    double radius = minimumRadius;
    int selectedIndex = -1;
    bool finished = false;

    void setItems(const QStringList &entryLabels, int firstInView);
    QPointF entryCenter(int index) const;
    int indexAt(QPointF point) const;

    void moved(QPointF point);
    void ended(QPointF point);
    void cancelled();
};
