#include "fretboarditem.h"

#include "surfacefonts.h"
#include "surfacepalette.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>

#include <cmath>

FretboardItem::FretboardItem(QQuickItem *parent)
    : QQuickPaintedItem(parent), fretboard(std::make_unique<Fretboard>())
{
    SurfaceFonts::load();
    setAntialiasing(true);
    setOpaquePainting(true);
    setAcceptTouchEvents(true);
    setAcceptedMouseButtons(Qt::LeftButton);
    clock.start();
    momentumTimer.setInterval(16);
    connect(&momentumTimer, &QTimer::timeout, this, [this] {
        const double dt = std::max(momentumClock.restart(), qint64(1)) / 1000.0;
        if (!fretboard->stepMomentum(dt))
            momentumTimer.stop();
    });
    connect(fretboard.get(), &Fretboard::geometryChanged, this, [this] {
        Q_EMIT geometryChanged();
        update();
    });
    connect(fretboard.get(), &Fretboard::contentOffsetChanged, this, [this] {
        Q_EMIT contentXChanged();
        update();
    });
    connect(fretboard.get(), &Fretboard::highlightsChanged, this, [this] {
        Q_EMIT highlightsChanged();
        update();
    });
    connect(SurfacePalette::instance(), &SurfacePalette::changed, this, [this] { update(); });
}

FretboardItem::~FretboardItem() = default;

void FretboardItem::geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry)
{
    QQuickPaintedItem::geometryChange(newGeometry, oldGeometry);
    if (newGeometry.size() != oldGeometry.size() && !newGeometry.isEmpty())
        fretboard->setFrameSize(newGeometry.size());
}

void FretboardItem::paint(QPainter *painter)
{
    const Fretboard &b = *fretboard;
    const bool dark = SurfacePalette::instance()->isDark();
    const double h = std::max(b.stringAreaHeight(), 0.0);
    const double left = b.contentOffset.x();
    painter->setRenderHint(QPainter::Antialiasing, true);

    // Wood under the strings, the label strip under the numbers.
    QLinearGradient wood(0, 0, 0, h);
    wood.setColorAt(0, dark ? QColor(0x2b1e16) : QColor(0x4a3526));
    wood.setColorAt(1, dark ? QColor(0x21170f) : QColor(0x3a291d));
    painter->fillRect(QRectF(0, 0, width(), h), wood);
    painter->fillRect(QRectF(0, h, width(), b.fretLabelHeight),
                      SurfacePalette::instance()->colorSystemBg());

    painter->translate(-left, 0);
    const double visibleRight = left + width();

    painter->setPen(Qt::NoPen);
    painter->setBrush(QColor::fromRgbF(0.725, 0.725, 0.725, dark ? 0.55 : 0.8));
    for (const QRectF &dot : b.posMarkerViews) {
        if (dot.right() >= left && dot.left() <= visibleRight)
            painter->drawEllipse(dot);
    }

    for (const QRectF &bar : b.fretViews) {
        if (bar.right() < left || bar.left() > visibleRight)
            continue;
        QLinearGradient metal(bar.left(), 0, bar.right(), 0);
        metal.setColorAt(0.0, QColor::fromRgbF(0.67, 0.67, 0.67));
        metal.setColorAt(0.5, QColor::fromRgbF(0.78, 0.78, 0.78));
        metal.setColorAt(1.0, QColor::fromRgbF(0.67, 0.67, 0.67));
        painter->fillRect(bar, metal);
    }

    // The marks of the cursor column: a soft glowing lozenge on the fret's space.
    for (const FretHighlight &mark : b.fretHighlights) {
        if (mark.hidden)
            continue;
        const QRectF r = mark.frame.adjusted(4, 4, -4, -4);
        QColor glow = SurfacePalette::instance()->colorFretHighlight();
        glow.setAlpha(255);
        QRadialGradient fill(r.center(), std::max(r.width(), r.height()) * 0.6);
        fill.setColorAt(0.0, glow.lighter(125));
        fill.setColorAt(1.0, glow);
        painter->setBrush(fill);
        painter->setPen(QPen(glow.lighter(150), 2));
        painter->drawRoundedRect(r, r.height() * 0.45, r.height() * 0.45);
    }

    painter->setPen(SurfacePalette::instance()->colorSecondaryLabel());
    for (const FretLabel &label : b.fretLabels) {
        if (label.center.x() + 30 < left || label.center.x() - 30 > visibleRight)
            continue;
        painter->setFont(SurfaceFonts::black(label.fontSize * 0.75));
        const QRectF box(label.center.x() - 30, h, 60, b.fretLabelHeight);
        painter->drawText(box, Qt::AlignCenter, label.text);
    }
}

void FretboardItem::touchEvent(QTouchEvent *event)
{
    if (event->type() == QEvent::TouchCancel) {
        fretboard->touchesCancelled();
        return;
    }
    momentumTimer.stop();
    for (qsizetype i = 0; i < event->pointCount(); ++i) {
        QEventPoint &point = event->point(i);
        switch (point.state()) {
        case QEventPoint::Pressed:
            // A finger that lands elsewhere while this board holds one belongs to what it
            // landed on.
            if (!contains(point.position())) {
                point.setAccepted(false);
                continue;
            }
            fretboard->touchBegan(point.id(), point.position());
            break;
        case QEventPoint::Updated:
            fretboard->touchMoved(point.id(), point.position(), seconds());
            break;
        case QEventPoint::Released: {
            const bool wasScrolling = fretboard->isScrolling();
            fretboard->touchEnded(point.id());
            if (wasScrolling && !fretboard->isScrolling()) {
                momentumClock.start();
                momentumTimer.start();
            }
            break;
        }
        default:
            break;
        }
        point.setAccepted(true);
    }
}

void FretboardItem::touchUngrabEvent()
{
    fretboard->touchesCancelled();
}

void FretboardItem::mousePressEvent(QMouseEvent *event)
{
    momentumTimer.stop();
    fretboard->touchBegan(mouseTouchId, event->position());
    event->accept();
}

void FretboardItem::mouseMoveEvent(QMouseEvent *event)
{
    fretboard->touchMoved(mouseTouchId, event->position(), seconds());
}

void FretboardItem::mouseReleaseEvent(QMouseEvent *event)
{
    Q_UNUSED(event);
    const bool wasScrolling = fretboard->isScrolling();
    fretboard->touchEnded(mouseTouchId);
    if (wasScrolling) {
        momentumClock.start();
        momentumTimer.start();
    }
}

void FretboardItem::mouseUngrabEvent()
{
    fretboard->touchesCancelled();
}
