#pragma once

#include <QList>
#include <QRectF>
#include <QString>

#include <optional>

class ChordNamesDisplay;

class ChordNamesDisplayListener {
public:
    virtual ~ChordNamesDisplayListener() = default;
    virtual void chordNameTapped(ChordNamesDisplay *display, int column) = 0;
};

// One label of the band, in the display's coordinates: the cell of its column, and the text's
// own box inside that cell, which may reach into the neighbours' cells or be turned.
struct ChordNameLabel {
    QString text;
    QRectF cell;
    double x = 0.0;
    double width = 0.0;
    double height = 0.0;
    // Radians; the turn stands about the centre of the text's box.
    double rotation = 0.0;
    bool highlighted = false;
    // False where view mode leaves a cell out.
    bool shown = true;
};

// The band of chord names over a row: which name stands where, and how long names share room.
class ChordNamesDisplay {
public:
    using Names = QList<std::optional<QString>>;
    static constexpr double fontSize = 20.0;
    // U+2219, the dot that stands for a column without a name.
    static const QString placeholder;

    ChordNamesDisplay() = default;
    ChordNamesDisplay(const Names &names, const QRectF &frame);

    Names chordNames;
    QRectF frame;
    bool renderNeeded = false;
    QList<ChordNameLabel> labels;
    QList<int> highlightIndices;
    std::optional<Names> overlayChordNames;
    std::optional<int> overlayBlanksStartIndex;
    bool viewMode = false;
    bool ensureMinimumContentScaleFactor = false;
    ChordNamesDisplayListener *listener = nullptr;
    bool forceBlack = false;
    bool hidden = false;

    void requestRender() { renderNeeded = true; }
    void render();
    void setChordNames(const Names &names);
    void setChordName(const std::optional<QString> &name, int column, bool fromRender);
    void highlight(std::optional<int> column, bool clearFirst);
    void showOverlay(int startColumn, const Names &names);
    void showOverlayBlanks(int startColumn);
    void clearOverlayBlanks();

    // The column under x, for taps; -1 when there are no columns.
    int columnAt(double x) const;
    void tap(double x);

private:
    void fitLabel(int column);
    void packLabel(int column);
    const Names &namesShown() const;
    Names shownNames;
};
