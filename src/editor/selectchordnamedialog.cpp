#include "selectchordnamedialog.h"

#include "surface/chordnamesdisplay.h"
#include "surface/tabeditview.h"

const QStringList SelectChordNameDialog::presetOptions{
    u"Select preset..."_qs, u"Ab"_qs, u"A"_qs,  u"A#"_qs, u"Bb"_qs, u"B"_qs,  u"C"_qs, u"C#"_qs,
    u"Db"_qs,               u"D"_qs,  u"D#"_qs, u"Eb"_qs, u"E"_qs,  u"F"_qs,  u"F#"_qs, u"Gb"_qs,
    u"G"_qs,                u"G#"_qs, u"Am"_qs, u"Bm"_qs, u"Cm"_qs, u"Dm"_qs, u"Em"_qs, u"Fm"_qs,
    u"Gm"_qs,               u"PM"_qs, u"TH"_qs, u"TP"_qs, u"--"_qs, u"|"_qs};

SelectChordNameDialog::SelectChordNameDialog(TabEditView *surfaceView, QObject *parent)
    : QObject(parent), surface(surfaceView)
{
}

void SelectChordNameDialog::open(int tabRow, int tabColumn)
{
    const auto &rows = surface->tabRows;
    if (tabRow < 0 || tabRow >= rows.size() || tabColumn < 0 ||
        tabColumn >= rows[tabRow].colDatas.size())
        return;
    row = tabRow;
    column = tabColumn;
    initialName = rows[tabRow].colDatas[tabColumn].chordName;
    isShown = true;
    Q_EMIT shownChanged();
}

QString SelectChordNameDialog::presetText(int index) const
{
    if (index <= 0 || index >= presetOptions.size())
        return {};
    return presetOptions[index];
}

void SelectChordNameDialog::done(const QString &text)
{
    if (!isShown)
        return;
    const QString trimmed = text.trimmed();
    std::optional<QString> name;
    // The band's dot stands for no name: typing it clears the header.
    if (!trimmed.isEmpty() && trimmed != ChordNamesDisplay::placeholder)
        name = trimmed.left(charLimit);
    const auto &rows = surface->tabRows;
    if (name != initialName && row < rows.size() && column < rows[row].colDatas.size())
        surface->setColumnChordName(row, column, name);
    dismiss();
}

void SelectChordNameDialog::dismiss()
{
    if (!isShown)
        return;
    isShown = false;
    Q_EMIT shownChanged();
}
