#pragma once

#include "documentmanager.h"
#include "surface/tabrowwithmarkupview.h"

#include <QList>
#include <QRectF>
#include <QString>

#include <optional>

// Measures the page's free text. The drawing side answers with real font metrics; tests with
// fixed heights, so page breaks can be worked out by hand.
class PrintTextMeasurer {
public:
    virtual ~PrintTextMeasurer() = default;
    // The title's height on one unwrapped line.
    virtual double titleHeight(const QString &title) const = 0;
    // The intro's height when wrapped at `width`.
    virtual double introHeight(const QString &intro, double width) const = 0;
};

// Lays a tab out on US Letter pages for PDF: the rows as view mode builds them, the title and
// intro at the head of the first page, "Lutegrid" at the foot of every page. It decides where
// things stand; the painting is done by whoever holds a QPainter (src/export/print).
class TabViewPrintRenderer {
public:
    static constexpr QRectF paperRect{0, 0, 612, 792};
    static constexpr QRectF printableRect{48, 40, 516, 700};
    // Rows stand a little inside the printable width.
    static constexpr double contentWidth = 516 - 8;
    static constexpr QRectF footerRect{612 / 2.0 - 75, 792 - 40, 150, 16};

    TabViewPrintRenderer(TabExportConfiguration tabExportConfig, const PrintTextMeasurer &measurer);

    const TabExportConfiguration tabExportConfig;
    double titleHeight = 36;
    double introHeight = 36;
    const double titleContentGap = 14;
    double tabRowSpacing = 10;
    int numPages = -1;
    QList<int> pageStartTabRowIndices;

    // Paginates on the first call only.
    int numberOfPages();

    // One printed row, or a pair of rows side by side: each row view with its frame inside
    // the block, and the block's height.
    struct PrintRow {
        QList<TabRowWithMarkupView> views;
        QList<QRectF> frames;
        double height = 0.0;
    };
    // The row (or pair) starting at tab row `index`, laid out `width` wide.
    PrintRow printRow(int index, double width = contentWidth) const;

    struct PlacedRow {
        PrintRow row;
        QRectF frame;
    };
    struct PageLayout {
        std::optional<QRectF> titleRect;
        std::optional<QRectF> introRect;
        QList<PlacedRow> rows;
        QRectF footerRect;
    };
    // Where everything on page `page` stands, in page coordinates; paginates first if needed.
    PageLayout pageLayout(int page);

    bool hasIntro() const;
    int rowCount() const { return int(tabExportConfig.tabData.tabRowDatas.size()); }
    int rowsPerStep() const { return tabExportConfig.twoColumns ? 2 : 1; }

private:
    void paginate();
    TabRowWithMarkupView rowView(int index, int minLyricLines, bool emptyChordNames) const;
    bool rowHasChordNames(int index) const;

    const PrintTextMeasurer &measurer;
};
