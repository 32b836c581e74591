#include "stringspacedview.h"

#include <algorithm>
#include <cmath>
#include <numbers>

QList<QRectF> StringSpacedView::layoutItems()
{
    QList<QRectF> frames;
    const double h = std::min(frameSize.height(), contentHeight);
    if (numItemGroups <= 0 || numItems <= 0)
        return frames;
    const double g = (h - itemSpacing * (numItemGroups - 1)) / numItemGroups;
    const double itemH = (g - topPadding) / numItems;
    stringTouchHeight = itemH;
    double y = topPadding;
    for (int group = 0; group < numItemGroups; ++group) {
        for (int i = 0; i < numItems; ++i)
            frames.append(QRectF(0, y + i * itemH, frameSize.width(), itemH));
        y += g + itemSpacing;
    }
    return frames;
}

QList<double> StringSpacedView::groupTops() const
{
    QList<double> tops;
    const double h = std::min(frameSize.height(), contentHeight);
    if (numItemGroups <= 0)
        return tops;
    const double g = (h - itemSpacing * (numItemGroups - 1)) / numItemGroups;
    for (int group = 0; group < numItemGroups; ++group)
        tops.append(group * (g + itemSpacing));
    return tops;
}

std::optional<StringSpacedView::StringTouch> StringSpacedView::stringAt(double y) const
{
    const double h = std::min(frameSize.height(), contentHeight);
    if (numItemGroups <= 0 || stringTouchHeight <= 0)
        return std::nullopt;
    const double band = h / numItemGroups;
    const int group = int(std::floor(y / band));
    double rest = y - band * group - topPadding;
    if (band * group > 0)
        rest -= itemSpacing * 0.5;
    if (rest < 0 || group < 0 || group >= numItemGroups)
        return std::nullopt;
    const int stringNum = int(std::trunc(rest / stringTouchHeight)) + 1;
    if (stringNum > numItems)
        return std::nullopt;
    return StringTouch{stringNum, group};
}

QString StringSpacedView::letter(const QStringList &letters, int index)
{
    const qsizetype k = letters.size() - index - 1;
    return k >= 0 && k < letters.size() ? letters[k] : QString();
}

double StringSpacedView::letterFontSize(double itemHeight)
{
    return std::min(itemHeight / 1.4, 26.0);
}

StringSpacedView::CapoLabels StringSpacedView::capoLabels(double frameWidth, double groupTop)
{
    const double u = frameWidth / 40.0;
    CapoLabels labels;
    labels.capoFontSize = u * 8.0;
    labels.capoFrame = QRectF((frameWidth - u * 38.0) * 0.5 + u * -7.0, groupTop + u * -32.0,
                              u * 38.0, u * 38.0 * 0.5);
    labels.capoRotation = -std::numbers::pi / 2;
    labels.numberFontSize = u * 17.0;
    labels.numberFrame =
        QRectF(u * -12.0, groupTop + frameWidth * -0.067, u * 25.0, u * 17.0 * 1.2);
    return labels;
}

double StringSpacedView::electricStringThickness(int index, int numItems, double itemHeight)
{
    const double t = itemHeight < 5.0 ? 0.0 : (itemHeight > 30.0 ? 3.0 : 2.0);
    const int n = numItems >= 7 ? 6 - index : numItems - index;
    switch (n) {
    case 2:
        return t * 2;
    case 3:
        return t * 5 / 3;
    case 4:
        return t * 1.5;
    case 5:
        return t * 4 / 3;
    case 6:
        return t;
    default:
        return t * 7 / 3;
    }
}
