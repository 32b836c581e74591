#include "letterstringspacedviewitem.h"

#include "surfacefonts.h"
#include "surfacepainter.h"
#include "surfacepalette.h"

#include <QPainter>

#include <algorithm>

LetterStringSpacedViewItem::LetterStringSpacedViewItem(QQuickItem *parent)
    : QQuickPaintedItem(parent)
{
    setAntialiasing(true);
    setAcceptedMouseButtons(Qt::LeftButton);
    layout.numItemGroups = 1;
    connect(this, &LetterStringSpacedViewItem::changed, this, [this] { update(); });
    connect(SurfacePalette::instance(), &SurfacePalette::changed, this, [this] { update(); });
}

void LetterStringSpacedViewItem::setLetters(const QStringList &letters)
{
    if (letters == letterList)
        return;
    letterList = letters;
    layout.numItems = int(letters.size());
    fretHighlights = QList<bool>(letters.size(), false);
    Q_EMIT changed();
}

void LetterStringSpacedViewItem::setNumItemGroups(int count)
{
    if (count == layout.numItemGroups)
        return;
    layout.numItemGroups = count;
    Q_EMIT changed();
}

void LetterStringSpacedViewItem::setTopPadding(qreal padding)
{
    if (padding == layout.topPadding)
        return;
    layout.topPadding = padding;
    Q_EMIT changed();
}

void LetterStringSpacedViewItem::setItemSpacing(qreal spacing)
{
    if (spacing == layout.itemSpacing)
        return;
    layout.itemSpacing = spacing;
    Q_EMIT changed();
}

void LetterStringSpacedViewItem::setCapo(int fret)
{
    if (fret == capo)
        return;
    capo = fret;
    Q_EMIT changed();
}

void LetterStringSpacedViewItem::showOpenStringHighlights(const QVariantList &stringNums)
{
    fretHighlights.fill(false);
    for (const QVariant &value : stringNums) {
        const int stringNum = value.toInt();
        if (stringNum >= 1 && stringNum <= fretHighlights.size())
            fretHighlights[stringNum - 1] = true;
    }
    update();
}

void LetterStringSpacedViewItem::mousePressEvent(QMouseEvent *event)
{
    layout.frameSize = size();
    layout.layoutItems();
    if (const auto touch = layout.stringAt(event->position().y()))
        Q_EMIT stringTouched(touch->stringNum, touch->group);
    event->accept();
}

void LetterStringSpacedViewItem::paint(QPainter *painter)
{
    layout.frameSize = size();
    const QList<QRectF> frames = layout.layoutItems();
    const SurfacePalette *palette = SurfacePalette::instance();
    const SurfacePainter::Colors colors = SurfacePainter::colors(forceBlack);
    painter->setRenderHint(QPainter::Antialiasing, true);
    const int perGroup = std::max(layout.numItems, 1);
    for (int k = 0; k < frames.size(); ++k) {
        const int i = k % perGroup;
        const QRectF &frame = frames[k];
        if (i < fretHighlights.size() && fretHighlights[i]) {
            QColor mark = palette->colorFretHighlight();
            mark.setAlphaF(mark.alphaF() *
                           StringSpacedView::openStringHighlightAlpha(palette->isDark()));
            const double d = std::min(frame.width(), frame.height()) * 0.95;
            painter->setPen(Qt::NoPen);
            painter->setBrush(mark);
            painter->drawEllipse(
                QRectF(frame.center().x() - d / 2, frame.center().y() - d / 2, d, d));
        }
        painter->setPen(colors.label);
        painter->setFont(SurfaceFonts::black(StringSpacedView::letterFontSize(frame.height())));
        painter->drawText(frame, Qt::AlignCenter, StringSpacedView::letter(letterList, i));
    }
    if (capo < 1)
        return;
    for (double top : layout.groupTops()) {
        const double firstString = top + layout.topPadding;
        StringSpacedView::CapoLabels labels = StringSpacedView::capoLabels(width(), firstString);
        // The number hangs out to the left of the letters; a strip at the window's edge has
        // nothing there. Both labels then move in just far enough to be whole, and the number
        // goes up beside "CAPO", clear of the top letter.
        const double capoLeft = labels.capoFrame.center().x() - labels.capoFrame.height() / 2;
        const double shift = std::max(0.0, -std::min(labels.numberFrame.left(), capoLeft));
        if (shift > 0) {
            labels.capoFrame.translate(shift, 0);
            labels.numberFrame.translate(shift, 0);
            labels.numberFrame.moveBottom(firstString);
        }
        painter->save();
        painter->setPen(colors.label);
        painter->setFont(SurfaceFonts::label(labels.capoFontSize));
        painter->translate(labels.capoFrame.center());
        painter->rotate(labels.capoRotation * 180.0 / M_PI);
        painter->translate(-labels.capoFrame.center());
        painter->drawText(labels.capoFrame, Qt::AlignCenter, u"CAPO"_qs);
        painter->restore();
        painter->setPen(colors.label);
        painter->setFont(SurfaceFonts::heavy(labels.numberFontSize));
        painter->drawText(labels.numberFrame, Qt::AlignCenter, QString::number(capo));
    }
}
