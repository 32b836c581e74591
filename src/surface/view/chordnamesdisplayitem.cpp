#include "chordnamesdisplayitem.h"

#include "surfacepainter.h"
#include "surfacepalette.h"

#include <QPainter>

ChordNamesDisplayItem::ChordNamesDisplayItem(QQuickItem *parent) : QQuickPaintedItem(parent)
{
    setAntialiasing(true);
    setAcceptedMouseButtons(Qt::LeftButton);
    setAcceptTouchEvents(true);
    connect(SurfacePalette::instance(), &SurfacePalette::changed, this, [this] { update(); });
}

void ChordNamesDisplayItem::setSurface(TabEditSurface *surface)
{
    if (host == surface)
        return;
    if (host)
        disconnect(host->view(), nullptr, this, nullptr);
    host = surface;
    if (host) {
        connect(host->view(), &TabEditView::chordNamesNeedRender, this, [this](int shown) {
            if (shown == row)
                update();
        });
        connect(host->view(), &TabEditView::layoutChanged, this, [this] { update(); });
    }
    Q_EMIT surfaceChanged();
    update();
}

void ChordNamesDisplayItem::setShownRow(int shownRow)
{
    if (row == shownRow)
        return;
    row = shownRow;
    Q_EMIT shownRowChanged();
    update();
}

void ChordNamesDisplayItem::paint(QPainter *painter)
{
    if (!host || row < 0 || row >= host->view()->showingCount())
        return;
    const ChordNamesDisplay &display = host->view()->showingTabRows[row].chordNamesDisplay;
    if (display.hidden)
        return;
    SurfacePainter::paintChordNames(*painter, display, QPointF(0, 0),
                                    SurfacePainter::colors(false));
}

void ChordNamesDisplayItem::mousePressEvent(QMouseEvent *event)
{
    if (!host || !host->tabRowTouchesEnabled()) {
        event->ignore();
        return;
    }
    host->selectChordColumn(row, event->position().x());
    event->accept();
}

void ChordNamesDisplayItem::touchEvent(QTouchEvent *event)
{
    if (!host || !host->tabRowTouchesEnabled()) {
        event->ignore();
        return;
    }
    for (const QEventPoint &point : event->points()) {
        if (point.state() == QEventPoint::Pressed)
            host->selectChordColumn(row, point.position().x());
    }
    event->accept();
}
