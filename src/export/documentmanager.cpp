#include "documentmanager.h"

#include "exportlog.h"
#include "midiwriter.h"
#include "musicxml.h"
#include "model/tabfileformat.h"
#include "music/notefromfretshelper.h"
#include "services/apppaths.h"

#include <QDir>
#include <QHash>
#include <QSaveFile>
#include <QTextBoundaryFinder>

Q_LOGGING_CATEGORY(lcExport, "lutegrid.export")

namespace {

const QString margin = u"   "_qs;

bool hasContent(const TabColumnData &column)
{
    if (column.chordName && !column.chordName->trimmed().isEmpty())
        return true;
    for (const ColumnItemType &item : column.columnItems) {
        if (!item.isBlank())
            return true;
    }
    return false;
}

// Three characters, dashes from the left.
QString tabCell(const ColumnItemType &item, int stringIndex, const QStringList &tuning,
                bool notesOnTab)
{
    QString text;
    if (item.isBlank())
        text = u"-"_qs;
    else if (item.isBar())
        text = u"|"_qs;
    else
        text = displayText(item, stringIndex, &tuning, notesOnTab);
    return text.size() < 2 ? u"--"_qs + text : u"-"_qs + text;
}

QString headerCells(const QList<TabColumnData> &columns)
{
    QString line;
    for (qsizetype i = 0; i < columns.size(); ++i) {
        const std::optional<QString> &name = columns[i].chordName;
        if (!name) {
            line += margin;
            continue;
        }
        if (name->size() <= 3) {
            line += name->leftJustified(3, u' ');
            continue;
        }
        if (i + 1 < columns.size()) {
            const QString next = columns[i + 1].chordName.value_or(QString()).trimmed();
            if (next.size() == 1) {
                // Both names stay readable: the long one gives up a character for the gap.
                line += name->leftJustified(4, u' ', true) + u' ' + next;
                ++i;
                continue;
            }
            if (next.isEmpty()) {
                line += name->leftJustified(6, u' ', true);
                ++i;
                continue;
            }
        }
        line += name->left(3);
    }
    return line;
}

// Letters that have no decomposition but a plain form every reader knows.
const QHash<char32_t, QString> &plainForms()
{
    static const QHash<char32_t, QString> forms{
        {U'ß', u"ss"_qs},  {U'æ', u"ae"_qs},  {U'Æ', u"AE"_qs},  {U'œ', u"oe"_qs},
        {U'Œ', u"OE"_qs},  {U'ø', u"o"_qs},   {U'Ø', u"O"_qs},   {U'đ', u"d"_qs},
        {U'Đ', u"D"_qs},   {U'ł', u"l"_qs},   {U'Ł', u"L"_qs},   {U'ð', u"d"_qs},
        {U'þ', u"th"_qs},  {U'Þ', u"Th"_qs},  {U'ı', u"i"_qs},   {U'‘', u"'"_qs},
        {U'’', u"'"_qs},   {U'‚', u","_qs},   {U'“', u"\""_qs},  {U'”', u"\""_qs},
        {U'„', u"\""_qs},  {U'–', u"-"_qs},   {U'—', u"-"_qs},   {U'−', u"-"_qs},
    };
    return forms;
}

} // namespace

QString DocumentManager::fileExtension(ExportType type)
{
    switch (type) {
    case ExportType::LGRD:
        return u"lgrd"_qs;
    case ExportType::RTF:
        return u"rtf"_qs;
    case ExportType::PDF:
        return u"pdf"_qs;
    case ExportType::TXT:
        return u"txt"_qs;
    case ExportType::MUSICXML:
    case ExportType::MXL:
        return MusicXml::fileExtension(type == ExportType::MXL);
    case ExportType::MIDI:
        return MidiWriter::fileExtension();
    }
    return {};
}

QString DocumentManager::tabText(const TabExportConfiguration &configuration)
{
    const TabData &tab = configuration.tabData;
    QString text = tab.title;
    if (tab.introText)
        text += u"\n\n"_qs + *tab.introText;
    if (tab.capoFret > 0)
        text += u"\n\ncapo on fret "_qs + QString::number(tab.capoFret);

    QStringList labels;
    for (qsizetype i = tab.stringNotes.size() - 1; i >= 0; --i) {
        const QString &note = tab.stringNotes[i];
        labels.append(note.size() == 1 ? note + u' ' : note);
    }

    for (const TabRowData &row : tab.tabRowDatas) {
        text += u"\n\n"_qs;
        if (configuration.showLyrics && !row.lyricLines.isEmpty()) {
            for (const QString &line : row.lyricLines)
                text += margin + line + u'\n';
        } else {
            text += margin + u'\n';
        }
        if (std::none_of(row.colDatas.cbegin(), row.colDatas.cend(), hasContent))
            continue;
        if (configuration.showColumnHeaders)
            text += margin + headerCells(row.colDatas) + u'\n';
        if (!configuration.showTabContent)
            continue;
        // A tuning that disagrees with the columns must not hide items or index past them.
        qsizetype lines = labels.size();
        for (const TabColumnData &column : row.colDatas)
            lines = std::max(lines, column.columnItems.size());
        for (qsizetype s = 0; s < lines; ++s) {
            text += (s < labels.size() ? labels[s] : QString()) + u'|';
            for (const TabColumnData &column : row.colDatas) {
                const ColumnItemType item =
                    s < column.columnItems.size() ? column.columnItems[s] : ColumnItemType::blank();
                text += tabCell(item, int(s), tab.stringNotes, configuration.notesOnTab);
            }
            text += u'|';
            if (s + 1 < lines)
                text += u'\n';
        }
    }
    text += u"\n\n"_qs;
    return text;
}

QByteArray DocumentManager::asciiBytes(const QString &text)
{
    const QString decomposed = text.normalized(QString::NormalizationForm_KD);
    QByteArray bytes;
    bytes.reserve(decomposed.size());
    for (const char32_t c : decomposed.toUcs4()) {
        if (c < 0x80) {
            bytes.append(char(c));
            continue;
        }
        const QChar::Category category = QChar::category(c);
        if (category == QChar::Mark_NonSpacing || category == QChar::Mark_SpacingCombining
            || category == QChar::Mark_Enclosing)
            continue;
        const auto plain = plainForms().constFind(c);
        bytes.append(plain != plainForms().cend() ? plain->toLatin1() : QByteArray("?"));
    }
    return bytes;
}

std::optional<QByteArray> DocumentManager::exportData(ExportType type,
                                                      const TabExportConfiguration &configuration)
{
    switch (type) {
    case ExportType::LGRD:
        return exchangeData(configuration.tabData);
    case ExportType::TXT:
        return asciiBytes(tabText(configuration));
    case ExportType::MUSICXML:
    case ExportType::MXL:
        return MusicXml::write(configuration.tabData, type == ExportType::MXL);
    case ExportType::MIDI:
        return MidiWriter::write(configuration.tabData);
    case ExportType::RTF:
    case ExportType::PDF:
        break;
    }
    return std::nullopt;
}

std::optional<QString> DocumentManager::exportFile(ExportType type,
                                                   const TabExportConfiguration &configuration,
                                                   const QString &fileName)
{
    const QString folder = AppPaths::exportsDirectory();
    if (!AppPaths::ensureDirectory(folder)) {
        qCWarning(lcExport).noquote() << u"error creating exports dir "_qs + folder;
        return std::nullopt;
    }
    QString name = fileName.isEmpty() ? configuration.tabData.title : fileName;
    // A title is free text; a slash in it must not lead the file into another folder.
    name.replace(u'/', u'-');
    name.replace(QChar(u'\0'), u'-');
    return exportToPath(type, configuration,
                        QDir(folder).filePath(name + u'.' + fileExtension(type)));
}

std::optional<QString> DocumentManager::exportToPath(ExportType type,
                                                     const TabExportConfiguration &configuration,
                                                     const QString &path)
{
    const auto bytes = exportData(type, configuration);
    if (!bytes)
        return std::nullopt;
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(*bytes) != bytes->size()
        || !file.commit()) {
        qCWarning(lcExport) << "cannot write export" << path << file.errorString();
        return std::nullopt;
    }
    return path;
}

QString DocumentManager::exportUrl(const QString &fileName)
{
    const QString folder = QDir(AppPaths::documentDirectory()).filePath(u"Exports"_qs);
    if (!AppPaths::ensureDirectory(folder))
        qCWarning(lcExport).noquote() << u"error creating exports dir "_qs + folder;
    return QDir(folder).filePath(fileName);
}

std::optional<QString> DocumentManager::validateTabName(const QString &name)
{
    if (name.isEmpty())
        return u"Name cannot be empty"_qs;
    const QString lower = name.toLower();
    if (lower.contains(u'/'))
        return u"Cannot contain '/'"_qs;
    if (lower.contains(u".lgrd"_qs))
        return u"Cannot contain '.lgrd'"_qs;
    if (lower.contains(u".icloud"_qs))
        return u"Cannot contain '.icloud'"_qs;
    // Counted as a reader sees them: an accented letter or an emoji is one character.
    int characters = 0;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, name);
    while (finder.toNextBoundary() != -1)
        ++characters;
    if (characters > 50)
        return u"Name too long. "_qs + QString::number(characters) + u"/50 characters."_qs;
    return std::nullopt;
}

QString DocumentManager::trimmedTabName(const QString &name)
{
    qsizetype start = 0;
    qsizetype end = name.size();
    const auto blank = [](QChar c) {
        return c == u' ' || c == u'\t' || c.category() == QChar::Separator_Space;
    };
    while (start < end && blank(name.at(start)))
        ++start;
    while (end > start && blank(name.at(end - 1)))
        --end;
    return name.mid(start, end - start);
}
