#pragma once

#include "surface/tabrowwithmarkupview.h"
#include "tabeditsurface.h"

#include <QPointer>
#include <QQuickPaintedItem>

// A reading row painted whole: letters, lyric lines, chord names and strings. Its height
// follows its width by the row's ratios.
class TabRowWithMarkupViewItem : public QQuickPaintedItem {
    Q_OBJECT
    QML_NAMED_ELEMENT(TabRowWithMarkupView)
    Q_PROPERTY(TabEditSurface *surface MEMBER host NOTIFY changed)
    Q_PROPERTY(int modelRow MEMBER modelRow NOTIFY changed)
    Q_PROPERTY(int capoFret MEMBER capoFret NOTIFY changed)
    Q_PROPERTY(bool editMode MEMBER editMode NOTIFY changed)
    Q_PROPERTY(bool showLyrics MEMBER showLyrics NOTIFY changed)
    Q_PROPERTY(bool showChordNames MEMBER showChordNames NOTIFY changed)
    Q_PROPERTY(bool lyricsBelow MEMBER lyricsBelow NOTIFY changed)
    Q_PROPERTY(bool forceBlack MEMBER forceBlack NOTIFY changed)
    Q_PROPERTY(int highlightColumn MEMBER highlightColumn NOTIFY changed)

public:
    explicit TabRowWithMarkupViewItem(QQuickItem *parent = nullptr);

    QPointer<TabEditSurface> host;
    int modelRow = 0;
    int capoFret = 0;
    bool editMode = false;
    bool showLyrics = true;
    bool showChordNames = true;
    bool lyricsBelow = false;
    bool forceBlack = false;
    int highlightColumn = -1;

    // The row as laid out for the surface's model row, or nothing if there is none.
    std::optional<TabRowWithMarkupView> rowView() const;
    void paint(QPainter *painter) override;
    // Paints one reading row into `rect`; shared with the side-by-side pair.
    static void paintRow(QPainter &painter, const TabRowWithMarkupView &row, const QRectF &rect,
                         bool forceBlack, int highlightColumn);

Q_SIGNALS:
    void changed();

protected:
    void geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry) override;

private:
    void relayout();
    // The row behind modelRow changes without the number changing (a row deleted above it,
    // an edit, an undo): every change of the surface's rows repaints it.
    void watchSurface();

    QPointer<TabEditSurface> watched;
};
