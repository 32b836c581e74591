#pragma once

#include "columnitemtype.h"
#include "model/viewmodeoptions.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

// One column: exactly one item per string, highest string first, and an optional chord name.
// A column holds either no bar at all or nothing but bars; setColumnItem keeps it so.
class TabColumnData {
public:
    TabColumnData() = default;
    explicit TabColumnData(int stringCount);
    explicit TabColumnData(QList<ColumnItemType> items,
                           std::optional<QString> chordName = std::nullopt);

    std::optional<QString> chordName;
    QList<ColumnItemType> columnItems;

    // Writes one item, then applies the bar rule. Writing an equal item does nothing at all.
    void setColumnItem(qsizetype index, ColumnItemType item);
    // Items leave from the front (the highest string) and arrive at the end (the lowest).
    void setStringCount(int count);
    bool isSameColumn(const TabColumnData &other) const;
    // Columns are values here, so a copy is already deep; the name keeps call sites honest
    // about taking a snapshot.
    TabColumnData deepCopy() const { return *this; }

    bool hasBar() const;
    bool isAllBlank() const;

    friend bool operator==(const TabColumnData &a, const TabColumnData &b)
    {
        return a.isSameColumn(b);
    }
};

class TabRowData {
public:
    TabRowData() = default;
    TabRowData(int columnCount, int stringCount);
    TabRowData(QList<TabColumnData> colDatas, QStringList lyricLines);

    int stringCount = 0;
    QList<TabColumnData> colDatas;
    QStringList lyricLines;
    int selectedLyricLineIndex = 0;

    std::optional<QString> lyricText() const;
    void setLyricText(const std::optional<QString> &text);

    friend bool operator==(const TabRowData &, const TabRowData &) = default;
};

// The tunings of a new tab, lowest string first.
QStringList standardStringNotes(int stringCount);

class TabData {
public:
    // A new tab in the standard tuning of `stringCount` strings.
    TabData(const QString &title, int stringCount);
    TabData(const QString &title, QList<TabRowData> tabRowDatas, QStringList stringNotes,
            std::optional<qint64> capoFret, std::optional<QString> introText);

    QString title;
    QList<TabRowData> tabRowDatas;
    QStringList stringNotes;
    qint64 capoFret = 0;
    qint64 lyricSize = 100;
    std::optional<QString> introText;
    qint64 tempo = 80;
    std::optional<ViewModePlaybackOptions> playbackOptions;

    int stringCount() const { return int(stringNotes.size()); }

    friend bool operator==(const TabData &, const TabData &) = default;
};
