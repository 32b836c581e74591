#pragma once

#include "surface/fretboard.h"

#include <QElapsedTimer>
#include <QQuickPaintedItem>
#include <QTimer>

#include <memory>

// Draws the fretboard's visible stretch (wood, bars, dots, numbers, marks) and hands it the
// fingers: touches, and the mouse as one more finger. A scroll that outlives the finger runs
// on a frame timer.
class FretboardItem : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(qreal fretLabelHeight READ fretLabelHeight NOTIFY geometryChanged)
    Q_PROPERTY(qreal stringAreaHeight READ stringAreaHeight NOTIFY geometryChanged)
    Q_PROPERTY(qreal contentX READ contentX NOTIFY contentXChanged)
    Q_PROPERTY(int highlightCount READ highlightCount NOTIFY highlightsChanged)

public:
    explicit FretboardItem(QQuickItem *parent = nullptr);
    ~FretboardItem() override;

    Fretboard *board() const { return fretboard.get(); }
    qreal fretLabelHeight() const { return fretboard->fretLabelHeight; }
    qreal stringAreaHeight() const { return fretboard->stringAreaHeight(); }
    qreal contentX() const { return fretboard->contentOffset.x(); }
    int highlightCount() const { return int(fretboard->visibleHighlights().size()); }

    void paint(QPainter *painter) override;

Q_SIGNALS:
    void geometryChanged();
    void contentXChanged();
    void highlightsChanged();

protected:
    void geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry) override;
    void touchEvent(QTouchEvent *event) override;
    void touchUngrabEvent() override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseUngrabEvent() override;

private:
    double seconds() const { return clock.nsecsElapsed() / 1e9; }

    std::unique_ptr<Fretboard> fretboard;
    QTimer momentumTimer;
    QElapsedTimer clock;
    QElapsedTimer momentumClock;
    static constexpr int mouseTouchId = -1;
};
