#include "forcecontextmenu.h"

#include <QLineF>

#include <algorithm>
#include <cmath>
#include <numbers>

ForceContextMenu::ForceContextMenu(QPointF origin, const QRectF &area,
                                   ForceContextMenuResponder *responder)
    : origin(origin), area(area), menuResponder(responder), center(origin)
{
}

void ForceContextMenu::setItems(const QStringList &entryLabels, int firstInView)
{
    labels = entryLabels;
    startIndex = std::clamp(firstInView, 0, std::max(int(labels.size()) - 1, 0));
    // Room for every entry on the ring, with a little air between them.
    radius = std::max(minimumRadius, labels.size() * (entrySize + 4.0) / (2.0 * std::numbers::pi));
    // The ring stays inside the area where it can, so no entry is out of reach.
    const double reach = radius + entrySize * 0.5;
    center = origin;
    if (area.width() >= 2 * reach)
        center.setX(std::clamp(center.x(), area.left() + reach, area.right() - reach));
    if (area.height() >= 2 * reach)
        center.setY(std::clamp(center.y(), area.top() + reach, area.bottom() - reach));
    else
        center.setY(std::max(center.y(), area.top() + reach));
}

QPointF ForceContextMenu::entryCenter(int index) const
{
    if (labels.isEmpty())
        return center;
    // The entry first in view stands straight above the finger; the others follow clockwise.
    const double step = 2.0 * std::numbers::pi / labels.size();
    const double angle = -std::numbers::pi / 2 + (index - startIndex) * step;
    return center + QPointF(std::cos(angle), std::sin(angle)) * radius;
}

int ForceContextMenu::indexAt(QPointF point) const
{
    if (labels.isEmpty())
        return -1;
    const double distance = QLineF(center, point).length();
    // Where the finger started chooses nothing, even when the ring had to move off it.
    if (distance < radius * 0.45 || distance > radius + entrySize ||
        QLineF(origin, point).length() < entrySize * 0.5)
        return -1;
    int best = -1;
    double bestDistance = 0.0;
    for (int i = 0; i < labels.size(); ++i) {
        const double d = QLineF(entryCenter(i), point).length();
        if (best == -1 || d < bestDistance) {
            best = i;
            bestDistance = d;
        }
    }
    return best;
}

void ForceContextMenu::moved(QPointF point)
{
    selectedIndex = indexAt(point);
}

void ForceContextMenu::ended(QPointF point)
{
    if (finished)
        return;
    finished = true;
    selectedIndex = indexAt(point);
    if (menuResponder)
        menuResponder->forceContextMenuFinished(selectedIndex);
}

void ForceContextMenu::cancelled()
{
    if (finished)
        return;
    finished = true;
    selectedIndex = -1;
    if (menuResponder)
        menuResponder->forceContextMenuFinished(-1);
}
