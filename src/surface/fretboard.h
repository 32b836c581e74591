#pragma once

#include "fretposition.h"

#include <QList>
#include <QMap>
#include <QObject>
#include <QPointF>
#include <QRectF>
#include <QSizeF>
#include <QString>

#include <optional>

// Who hears the fretboard's touches: the editor.
class FretResponder {
public:
    virtual ~FretResponder() = default;
    virtual void fretTouched(int stringNum, int fretNum) = 0;
    virtual void fretTouchesEnded() = 0;
    virtual void fretTouchesCancelled() = 0;
};

// A mark on a fret the cursor column holds. A pool entry is free while hidden.
struct FretHighlight {
    FretPosition fretPos;
    QRectF frame;
    bool hidden = true;
};

struct FretLabel {
    QString text;
    // The middle of the label: the middle of the fret's space, a little towards its bar.
    QPointF center;
    double fontSize = 22.0;
};

// The fretboard as logic: evenly spaced frets across a strip that scrolls sideways, the touch
// bookkeeping that turns fingers into string and fret, and the marks of the cursor column.
// Geometry is in content coordinates; contentOffset scrolls over it. It draws nothing.
class Fretboard : public QObject {
    Q_OBJECT

public:
    explicit Fretboard(QObject *parent = nullptr);

    FretResponder *fretResponder = nullptr;
    double fretSpacing = 65.0;
    double stringTouchHeight = 0.0;
    static constexpr double fretWidth = 6.0;
    // Fingers down, by touch id.
    QMap<int, QPointF> fretTouchesInProgress;
    double numFrets = 25.0;
    double numStrings = 6.0;
    static constexpr double posMarkerWidth = 28.0;
    static constexpr double octSpacing = 46.0;
    double fretLabelHeight = 50.0;
    static constexpr double scrollBuffer = 1000.0;
    QList<QRectF> fretViews;
    QList<QRectF> posMarkerViews;
    QList<FretLabel> fretLabels;
    QList<FretHighlight> fretHighlights;
    std::optional<QSizeF> prevFrameSize;

    QSizeF frameSize;
    QPointF contentOffset;
    // A finger that travels this far sideways scrolls the board instead of playing.
    static constexpr double scrollSlop = 10.0;
    // Points per second of the scroll still running after the finger left.
    double momentumVelocity = 0.0;

    // The fret count that the setting `lastFretCount` asks for: 25 while it is unset.
    static int fretCountFor(qint64 lastFretCount);
    static double spacingForWidth(double width);

    double contentWidth() const { return numFrets * fretSpacing + fretSpacing * 0.5; }
    double stringAreaHeight() const { return frameSize.height() - fretLabelHeight; }
    QRectF fretLabelBg() const;

    void setFrameSize(const QSizeF &size);
    void setFretLabelHeight(double height);
    void setNumStrings(int count);
    void layoutSubviews();
    void refreshFretCount(qint64 lastFretCount);
    void setHighlights(const QList<FretPosition> &positions);
    QList<FretHighlight> visibleHighlights() const;
    QRectF highlightFrame(const FretPosition &position) const;

    // Touches in the fretboard's own coordinates (not scrolled).
    void touchBegan(int id, const QPointF &position);
    void touchMoved(int id, const QPointF &position, double timestampSeconds);
    void touchEnded(int id);
    void touchesCancelled();
    bool isScrolling() const { return scrollTouchId.has_value(); }

    void setContentOffsetX(double x);
    double maxContentOffsetX() const;
    // Runs the scroll's momentum on by dt seconds; false once it has come to rest.
    bool stepMomentum(double dt);

Q_SIGNALS:
    void geometryChanged();
    void highlightsChanged();
    void contentOffsetChanged();

private:
    void buildFrets();
    void placeDots(int fret, double center);
    void cancelForScroll(int id, const QPointF &position);

    std::optional<int> scrollTouchId;
    QPointF scrollStartPos;
    double scrollStartOffset = 0.0;
    QPointF lastScrollPos;
    double lastScrollTime = -1.0;
    // Fingers that began before a scroll took over: they count for nothing until they lift.
    QMap<int, QPointF> ignoredTouches;
    QMap<int, QPointF> touchStarts;
};
