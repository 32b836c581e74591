#pragma once

#include <QByteArrayView>
#include <QString>
#include <QStringView>

// What stands on one string in one column: a note with its fret, or one of fifteen marks.
// Every value has exactly one text form; the files store it and equality compares it.
class ColumnItemType {
public:
    enum class Kind : quint8 {
        note,
        blank,
        hammer,
        pull,
        slideUp,
        slideDown,
        vibrato,
        muted,
        bend,
        release,
        hold,
        slap,
        tap,
        bar,
        plus,
        star,
    };
    static constexpr int kindCount = 16;

    constexpr ColumnItemType() = default;
    constexpr ColumnItemType(Kind kind) : itemKind(kind) {}

    static constexpr ColumnItemType note(qint64 fret)
    {
        ColumnItemType item(Kind::note);
        item.fretNum = fret;
        return item;
    }
    static constexpr ColumnItemType blank() { return ColumnItemType(Kind::blank); }
    static constexpr ColumnItemType bar() { return ColumnItemType(Kind::bar); }

    // Never fails: unknown text, overflow and a lone sign read as blank.
    static ColumnItemType fromText(QStringView text);
    // The same from well-formed UTF-8, with no string made on the way: file readers call it
    // once per cell.
    static ColumnItemType fromUtf8(QByteArrayView text);

    constexpr Kind kind() const { return itemKind; }
    constexpr bool isNote() const { return itemKind == Kind::note; }
    constexpr bool isMark() const { return itemKind != Kind::note; }
    constexpr bool isBlank() const { return itemKind == Kind::blank; }
    constexpr bool isBar() const { return itemKind == Kind::bar; }
    // Only meaningful for a note.
    constexpr qint64 fret() const { return fretNum; }

    QString text() const;
    // The text form of a mark as a static string; empty for a note.
    static QStringView markText(Kind kind);

    friend constexpr bool operator==(const ColumnItemType &a, const ColumnItemType &b)
    {
        // Marks have distinct text forms, so comparing kinds is comparing texts.
        return a.itemKind == b.itemKind && (a.itemKind != Kind::note || a.fretNum == b.fretNum);
    }

private:
    Kind itemKind = Kind::blank;
    qint64 fretNum = 0;
};

// The em dash that stands for a blank in files and on the tab.
inline constexpr QChar blankGlyph = QChar(0x2014);
