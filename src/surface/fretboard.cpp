#include "fretboard.h"

#include "surfacelog.h"

#include <algorithm>
#include <cmath>

Fretboard::Fretboard(QObject *parent) : QObject(parent)
{
    numFrets = fretCountFor(0);
    buildFrets();
}

int Fretboard::fretCountFor(qint64 count)
{
    if (count <= 0)
        return 25;
    if (count <= 20)
        return 21;
    return int(std::min<qint64>(count, 80));
}

double Fretboard::spacingForWidth(double width)
{
    if (width < 320.0)
        return 55.0;
    if (width < 380.0)
        return 60.0;
    return 65.0;
}

QRectF Fretboard::fretLabelBg() const
{
    return QRectF(scrollBuffer * -0.5, stringAreaHeight(), contentWidth() + scrollBuffer,
                  fretLabelHeight);
}

void Fretboard::setFrameSize(const QSizeF &size)
{
    frameSize = size;
    layoutSubviews();
}

void Fretboard::setFretLabelHeight(double height)
{
    if (height == fretLabelHeight)
        return;
    fretLabelHeight = height;
    prevFrameSize.reset();
    layoutSubviews();
}

void Fretboard::setNumStrings(int count)
{
    if (count < 1 || count == numStrings)
        return;
    numStrings = count;
    prevFrameSize.reset();
    layoutSubviews();
}

void Fretboard::buildFrets()
{
    fretViews.clear();
    fretLabels.clear();
    const double h = std::max(stringAreaHeight(), 0.0);
    stringTouchHeight = numStrings > 0 ? h / numStrings : 0.0;
    double x = fretSpacing - fretWidth * 0.5;
    for (int i = 1; i <= int(numFrets); ++i, x += fretSpacing) {
        fretViews.append(QRectF(x, 0, fretWidth, h));
        const double c = x + fretWidth * 0.5 - fretSpacing * 0.5;
        fretLabels.append({QString::number(i), QPointF(c + 4.0, h + fretLabelHeight * 0.5),
                           fretLabelHeight < 40.0 ? 16.0 : 22.0});
    }
}

void Fretboard::layoutSubviews()
{
    if (prevFrameSize == frameSize)
        return;
    prevFrameSize = frameSize;
    fretSpacing = spacingForWidth(frameSize.width());
    const double h = std::max(stringAreaHeight(), 0.0);
    stringTouchHeight = numStrings > 0 ? h / numStrings : 0.0;
    posMarkerViews.clear();
    // Bars and labels keep their order; the spacing moves them all.
    double x = fretSpacing - fretWidth * 0.5;
    const double fontSize = fretLabelHeight < 40.0 ? 16.0 : 22.0;
    for (int i = 0; i < fretViews.size(); ++i, x += fretSpacing) {
        fretViews[i] = QRectF(x, 0, fretWidth, h);
        const double c = x + fretWidth * 0.5 - fretSpacing * 0.5;
        placeDots(i + 1, c);
        if (i < fretLabels.size()) {
            fretLabels[i].center = QPointF(c + 4.0, h + fretLabelHeight * 0.5);
            fretLabels[i].fontSize = fontSize;
        }
    }
    for (FretHighlight &highlight : fretHighlights) {
        if (!highlight.hidden)
            highlight.frame = highlightFrame(highlight.fretPos);
    }
    setContentOffsetX(contentOffset.x());
    Q_EMIT geometryChanged();
}

void Fretboard::placeDots(int fret, double center)
{
    const double frameH = frameSize.height();
    const double d = posMarkerWidth * frameH / 330.0;
    const double y = (stringAreaHeight() - d) * 0.5;
    const int m = fret % 12;
    if (m == 3 || m == 5 || m == 7 || m == 9) {
        posMarkerViews.append(QRectF(center - d * 0.5, y, d, d));
    } else if (m == 0) {
        const double o = octSpacing * frameH / 330.0;
        posMarkerViews.append(QRectF(center - d * 0.5, y - o, d, d));
        posMarkerViews.append(QRectF(center - d * 0.5, y + o, d, d));
    }
}

void Fretboard::refreshFretCount(qint64 lastFretCount)
{
    const int count = fretCountFor(lastFretCount);
    if (count == numFrets)
        return;
    numFrets = count;
    buildFrets();
    prevFrameSize.reset();
    layoutSubviews();
}

QRectF Fretboard::highlightFrame(const FretPosition &position) const
{
    const double s = fretSpacing;
    const double t = stringTouchHeight;
    const double w = s * 81.0 / 65.0;
    const double v = t * 57.0 / 55.0 * 1.1;
    return QRectF(s * position.fretNum - (w + s) * 0.5 + s * 0.1,
                  t * position.stringNum - (v + t) * 0.5, w, v);
}

void Fretboard::setHighlights(const QList<FretPosition> &positions)
{
    for (FretHighlight &highlight : fretHighlights)
        highlight.hidden = true;
    for (const FretPosition &position : positions) {
        if (position.fretNum < 1)
            continue;
        auto free = std::find_if(fretHighlights.begin(), fretHighlights.end(),
                                 [](const FretHighlight &h) { return h.hidden; });
        if (free == fretHighlights.end()) {
            fretHighlights.append(FretHighlight());
            free = fretHighlights.end() - 1;
        }
        free->hidden = false;
        free->fretPos = position;
        free->frame = highlightFrame(position);
    }
    Q_EMIT highlightsChanged();
}

QList<FretHighlight> Fretboard::visibleHighlights() const
{
    QList<FretHighlight> shown;
    for (const FretHighlight &highlight : fretHighlights) {
        if (!highlight.hidden)
            shown.append(highlight);
    }
    return shown;
}

void Fretboard::touchBegan(int id, const QPointF &position)
{
    // A finger already down is not a new note, however often its press is delivered.
    if (fretTouchesInProgress.contains(id) || ignoredTouches.contains(id) || scrollTouchId == id)
        return;
    if (scrollTouchId || !ignoredTouches.isEmpty()) {
        // The board is being scrolled: a further finger plays nothing.
        ignoredTouches.insert(id, position);
        return;
    }
    momentumVelocity = 0.0;
    fretTouchesInProgress.insert(id, position);
    touchStarts.insert(id, position);
    const double x = position.x() + contentOffset.x();
    const double y = position.y();
    if (y < 8.0 || stringTouchHeight <= 0.0)
        return;
    const int stringNum = int(std::trunc(y / stringTouchHeight)) + 1;
    const int fretNum = int(std::trunc(std::max(x - fretWidth, 0.0) / fretSpacing)) + 1;
    if (stringNum > numStrings)
        return;
    if (fretResponder)
        fretResponder->fretTouched(stringNum, fretNum);
}

void Fretboard::touchMoved(int id, const QPointF &position, double timestampSeconds)
{
    if (scrollTouchId == id) {
        const double dt = timestampSeconds - lastScrollTime;
        if (dt > 0.0005) {
            const double v = (lastScrollPos.x() - position.x()) / dt;
            // Smoothed, so one late event doesn't decide the flick.
            momentumVelocity = momentumVelocity * 0.3 + v * 0.7;
        }
        lastScrollPos = position;
        lastScrollTime = timestampSeconds;
        setContentOffsetX(scrollStartOffset + scrollStartPos.x() - position.x());
        return;
    }
    if (!fretTouchesInProgress.contains(id))
        return;
    const QPointF start = touchStarts.value(id, position);
    if (std::abs(position.x() - start.x()) > scrollSlop) {
        cancelForScroll(id, position);
        lastScrollTime = timestampSeconds;
    }
}

void Fretboard::cancelForScroll(int id, const QPointF &position)
{
    scrollTouchId = id;
    scrollStartPos = position;
    lastScrollPos = position;
    scrollStartOffset = contentOffset.x();
    momentumVelocity = 0.0;
    QMap<int, QPointF> others = fretTouchesInProgress;
    others.remove(id);
    touchesCancelled();
    ignoredTouches = others;
    scrollTouchId = id;
}

void Fretboard::touchEnded(int id)
{
    touchStarts.remove(id);
    if (scrollTouchId == id) {
        scrollTouchId.reset();
        return;
    }
    if (ignoredTouches.remove(id))
        return;
    if (!fretTouchesInProgress.remove(id))
        return;
    if (fretTouchesInProgress.isEmpty() && fretResponder)
        fretResponder->fretTouchesEnded();
}

void Fretboard::touchesCancelled()
{
    const bool hadTouches = !fretTouchesInProgress.isEmpty();
    fretTouchesInProgress.clear();
    touchStarts.clear();
    ignoredTouches.clear();
    scrollTouchId.reset();
    if (hadTouches && fretResponder)
        fretResponder->fretTouchesCancelled();
}

double Fretboard::maxContentOffsetX() const
{
    return std::max(0.0, contentWidth() - frameSize.width());
}

void Fretboard::setContentOffsetX(double x)
{
    const double clamped = std::clamp(x, 0.0, maxContentOffsetX());
    if (clamped == contentOffset.x())
        return;
    contentOffset.setX(clamped);
    Q_EMIT contentOffsetChanged();
}

bool Fretboard::stepMomentum(double dt)
{
    if (scrollTouchId || std::abs(momentumVelocity) < 20.0) {
        momentumVelocity = 0.0;
        return false;
    }
    const double before = contentOffset.x();
    setContentOffsetX(before + momentumVelocity * dt);
    // The usual deceleration of a scroll view: about 0.998 per millisecond.
    momentumVelocity *= std::pow(0.998, dt * 1000.0);
    if (contentOffset.x() == before) {
        momentumVelocity = 0.0;
        return false;
    }
    return true;
}
