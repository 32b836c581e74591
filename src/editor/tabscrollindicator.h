#pragma once

#include <QObject>
#include <QTimer>

#include <optional>

class TabEditView;

// The scroll indicator beside the rows: where the window of shown rows stands in the tab, a
// scrubber a finger can drag to another row, and the fade after a move. Geometry is in the
// surface's coordinates; the rows' height comes from the editor's layout.
class TabScrollIndicator : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool visible READ indicatorVisible NOTIFY indicatorChanged)
    Q_PROPERTY(bool shown MEMBER indicatorShown NOTIFY indicatorChanged)
    Q_PROPERTY(bool dragging READ indicatorDragging NOTIFY indicatorChanged)
    Q_PROPERTY(double scrubberY READ scrubberY NOTIFY indicatorChanged)
    Q_PROPERTY(double scrubberHeight READ scrubberHeight NOTIFY indicatorChanged)

public:
    explicit TabScrollIndicator(TabEditView *surface, QObject *parent = nullptr);

    bool indicatorShown = false;
    QTimer indicatorFadeTimer;
    std::optional<double> touchScrollStartLoc;
    double lastStaticPosY = 0.0;
    // The scrubber's place while a finger or a pan moves it; -1.0 when it follows the rows.
    double dragScrubberY = -1.0;
    // The height of the shown rows, which the indicator spans.
    double viewHeight = 0.0;

    // Only a tab with more rows than the window has anything to scroll.
    bool indicatorVisible() const;
    bool indicatorDragging() const { return touchScrollStartLoc.has_value(); }
    double scrubberY() const;
    double scrubberHeight() const;
    double singlePositionHeight() const;

    // A finger on the indicator, y in the surface's coordinates.
    Q_INVOKABLE void indicatorTouchBegan(double y);
    Q_INVOKABLE void indicatorTouchMoved(double y);
    Q_INVOKABLE void indicatorTouchEnded();
    Q_INVOKABLE void indicatorTouchCancelled();

    // The row pan moves the scrubber with the rows: held at full strength from the pan's
    // start, following the drag, then back to the rows' place and fading.
    void holdForPan();
    void followPan(double translationY, double rowPitch);
    void releaseAfterPan();
    // The window of rows moved: the resting place follows unless a finger holds the scrubber.
    void rowPositionChanged();
    void showIndicatorThenFade();

Q_SIGNALS:
    void indicatorChanged();

private:
    TabEditView *surface;
};
