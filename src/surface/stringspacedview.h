#pragma once

#include <QList>
#include <QRectF>
#include <QSizeF>
#include <QString>
#include <QStringList>

#include <limits>
#include <optional>

// A column of evenly spaced items, one per string, repeated for each shown row, that answers
// touches by string. The letters beside the tab and the strings across the fretboard are
// drawn on its layout.
class StringSpacedView {
public:
    int numItems = 0;
    double stringTouchHeight = 0.0;
    double contentHeight = std::numeric_limits<double>::max();
    double topPadding = 0.0;
    double itemSpacing = 0.0;
    int numItemGroups = 0;
    QSizeF frameSize;

    struct StringTouch {
        int stringNum = 0;
        int group = 0;
        friend bool operator==(const StringTouch &, const StringTouch &) = default;
    };

    // The frames of every item, group after group; also sets stringTouchHeight.
    QList<QRectF> layoutItems();
    // The top of each group.
    QList<double> groupTops() const;
    // The string under y, counted from 1 at the top, and its group; nothing in a padding.
    std::optional<StringTouch> stringAt(double y) const;

    // The letter of item i: the list runs from the lowest string, the items from the top.
    static QString letter(const QStringList &letters, int index);
    static double letterFontSize(double itemHeight);
    static double openStringHighlightAlpha(bool dark) { return dark ? 0.72 : 1.0; }

    struct CapoLabels {
        QRectF capoFrame;
        double capoFontSize = 0.0;
        double capoRotation = 0.0;
        QRectF numberFrame;
        double numberFontSize = 0.0;
    };
    // The "CAPO" label turned up the side and the fret number under it, for a group whose
    // top stands at groupTop.
    static CapoLabels capoLabels(double frameWidth, double groupTop);

    // The drawn thickness of a string across the fretboard: thickest at the low strings, extra
    // strings of seven- and eight-string tunings as thick as the low ones.
    static double electricStringThickness(int index, int numItems, double itemHeight);
};
