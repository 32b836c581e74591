#include "tabfileformat.h"

#include "jsoninteger.h"
#include "keyedarchive.h"
#include "modellog.h"
#include "wellformedtext.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <array>
#include <unordered_map>

Q_LOGGING_CATEGORY(lcModel, "lutegrid.model")

namespace {

const QString tabDataClass = u"Lutegrid.TabData"_qs;
const QString tabRowDataClass = u"Lutegrid.TabRowData"_qs;
const QString tabColumnDataClass = u"Lutegrid.TabColumnData"_qs;

bool isBlankOrTab(QChar c)
{
    return c == u' ' || c == u'\t';
}

QString trimmedOfBlanksAndTabs(const QString &text)
{
    qsizetype start = 0;
    qsizetype end = text.size();
    while (start < end && isBlankOrTab(text[start]))
        ++start;
    while (end > start && isBlankOrTab(text[end - 1]))
        --end;
    return text.mid(start, end - start);
}

// Files from before rows held several lyric lines carry just the one, under "lkey".
void adoptSingleLyric(const std::optional<QString> &single, QStringList &lines)
{
    if (single && lines.isEmpty() && !trimmedOfBlanksAndTabs(*single).isEmpty())
        lines.append(*single);
}

// Cut to the first two user-visible characters: "F#3" becomes "F#".
QString cutTuningEntry(const QString &entry)
{
    if (entry.size() < 3)
        return entry;
    QString result;
    int characters = 0;
    for (qsizetype i = 0; i < entry.size() && characters < 2; ++characters) {
        qsizetype next = i + 1;
        if (entry[i].isHighSurrogate() && next < entry.size() && entry[next].isLowSurrogate())
            ++next;
        // Combining marks belong to the character before them.
        while (next < entry.size() &&
               (entry[next].category() == QChar::Mark_NonSpacing ||
                entry[next].category() == QChar::Mark_Enclosing ||
                entry[next].category() == QChar::Mark_SpacingCombining ||
                entry[next].unicode() == 0xFE0F || entry[next].unicode() == 0x200D))
            ++next;
        result.append(QStringView(entry).mid(i, next - i));
        i = next;
    }
    return result;
}

// Reads a tab out of its archive in place. Every row, column and cell text is decoded once
// however many places refer to it, so an archive that points at one object a million times
// costs a million references, not a million decodings.
class TabDocumentReader {
public:
    explicit TabDocumentReader(const KeyedArchiveView &view) : view(view) {}

    std::optional<TabRowData> row(KeyedArchiveView::Uid uid)
    {
        if (const auto found = rows.find(uid); found != rows.end()) {
            cells += found->second.cells;
            if (cells > maximumCells)
                return std::nullopt;
            return found->second.row;
        }
        if (view.className(uid).isEmpty())
            return std::nullopt;
        const auto columnUids = arrayField(uid, "cdkey");
        if (!columnUids)
            return std::nullopt;
        QList<TabColumnData> columns;
        columns.reserve(qsizetype(columnUids->size()));
        quint64 rowCells = 0;
        for (const KeyedArchiveView::Uid columnUid : *columnUids) {
            auto decoded = column(columnUid);
            if (!decoded)
                return std::nullopt;
            rowCells += quint64(decoded->columnItems.size());
            cells += quint64(decoded->columnItems.size());
            if (cells > maximumCells)
                return std::nullopt;
            columns.append(std::move(*decoded));
        }
        QStringList lines = stringList(view.reference(uid, "lmkey")).value_or(QStringList());
        adoptSingleLyric(view.stringField(uid, "lkey"), lines);
        TabRowData decoded(std::move(columns), std::move(lines));
        rows.emplace(uid, DecodedRow{decoded, rowCells});
        return decoded;
    }

    std::optional<QStringList> stringList(std::optional<KeyedArchiveView::Uid> uid)
    {
        const auto elements = uid ? view.array(*uid) : std::nullopt;
        if (!elements)
            return std::nullopt;
        QStringList texts;
        texts.reserve(qsizetype(elements->size()));
        for (const KeyedArchiveView::Uid element : *elements) {
            auto text = view.string(element);
            if (!text)
                return std::nullopt;
            texts.append(std::move(*text));
        }
        return texts;
    }

    std::optional<std::vector<KeyedArchiveView::Uid>> arrayField(KeyedArchiveView::Uid uid,
                                                                 const char *key)
    {
        const auto list = view.reference(uid, key);
        return list ? view.array(*list) : std::nullopt;
    }

    // More cells than any tab a person writes: the mark of an archive built to exhaust memory.
    static constexpr quint64 maximumCells = 16'000'000;
    bool tooLarge() const { return cells > maximumCells; }

private:
    std::optional<TabColumnData> column(KeyedArchiveView::Uid uid)
    {
        if (const auto found = columns.find(uid); found != columns.end())
            return found->second;
        if (view.className(uid).isEmpty())
            return std::nullopt;
        const auto itemUids = arrayField(uid, "colikey");
        if (!itemUids)
            return std::nullopt;
        TabColumnData decoded;
        decoded.columnItems.reserve(qsizetype(itemUids->size()));
        for (const KeyedArchiveView::Uid itemUid : *itemUids) {
            const auto found = items.find(itemUid);
            if (found != items.end()) {
                decoded.columnItems.append(found->second);
                continue;
            }
            const auto text = view.string(itemUid);
            if (!text)
                return std::nullopt;
            const ColumnItemType item = ColumnItemType::fromText(*text);
            items.emplace(itemUid, item);
            decoded.columnItems.append(item);
        }
        decoded.chordName = view.stringField(uid, "chnmkey");
        columns.emplace(uid, decoded);
        return decoded;
    }

    struct DecodedRow {
        TabRowData row;
        quint64 cells;
    };

    const KeyedArchiveView &view;
    std::unordered_map<KeyedArchiveView::Uid, DecodedRow> rows;
    std::unordered_map<KeyedArchiveView::Uid, TabColumnData> columns;
    std::unordered_map<KeyedArchiveView::Uid, ColumnItemType> items;
    quint64 cells = 0;
};

// ---- JSON text ------------------------------------------------------------------------------

void appendJsonString(QByteArray &out, QStringView text)
{
    static const char hex[] = "0123456789abcdef";
    out.append('"');
    const QByteArray utf8 =
        hasUnpairedSurrogate(text) ? withUnpairedSurrogatesReplaced(text).toUtf8() : text.toUtf8();
    for (const char byte : utf8) {
        const auto c = static_cast<unsigned char>(byte);
        switch (c) {
        case '"':
            out.append("\\\"");
            break;
        case '\\':
            out.append("\\\\");
            break;
        case '\b':
            out.append("\\b");
            break;
        case '\f':
            out.append("\\f");
            break;
        case '\n':
            out.append("\\n");
            break;
        case '\r':
            out.append("\\r");
            break;
        case '\t':
            out.append("\\t");
            break;
        default:
            if (c < 0x20) {
                out.append("\\u00");
                out.append(hex[c >> 4]);
                out.append(hex[c & 0xF]);
            } else {
                out.append(byte);
            }
        }
    }
    out.append('"');
}

void appendJsonStrings(QByteArray &out, const QStringList &texts)
{
    out.append('[');
    for (qsizetype i = 0; i < texts.size(); ++i) {
        if (i)
            out.append(',');
        appendJsonString(out, texts[i]);
    }
    out.append(']');
}

// A cell as a JSON string, from texts escaped once.
void appendJsonItem(QByteArray &out, const ColumnItemType &item)
{
    static const std::array<QByteArray, ColumnItemType::kindCount> marks = [] {
        std::array<QByteArray, ColumnItemType::kindCount> texts;
        for (int k = 1; k < ColumnItemType::kindCount; ++k)
            appendJsonString(texts[k], ColumnItemType::markText(ColumnItemType::Kind(k)));
        return texts;
    }();
    if (item.isMark()) {
        out.append(marks[static_cast<int>(item.kind())]);
        return;
    }
    out.append('"');
    out.append(QByteArray::number(item.fret()));
    out.append('"');
}

std::optional<TabData> importFailure(ImportError *error, const QString &message)
{
    if (error)
        error->message = message;
    return std::nullopt;
}

} // namespace

QByteArray documentData(const TabData &tabData)
{
    using Uid = KeyedArchiveBuilder::Uid;
    using Field = KeyedArchiveBuilder::Field;
    KeyedArchiveBuilder archive;
    const Uid root = archive.reserve();

    // Every cell is the text of its item, and equal texts are one object.
    std::array<Uid, ColumnItemType::kindCount> markUids{};
    std::unordered_map<qint64, Uid> noteUids;
    auto cellUid = [&](const ColumnItemType &item) {
        if (item.isMark()) {
            Uid &uid = markUids[size_t(item.kind())];
            if (!uid)
                uid = archive.string(item.text());
            return uid;
        }
        const auto found = noteUids.find(item.fret());
        if (found != noteUids.end())
            return found->second;
        return noteUids.emplace(item.fret(), archive.string(item.text())).first->second;
    };
    auto stringArray = [&](const QStringList &texts) {
        std::vector<Uid> uids;
        uids.reserve(size_t(texts.size()));
        for (const QString &text : texts)
            uids.push_back(archive.string(text));
        return archive.array(uids);
    };

    std::vector<Uid> rowUids;
    rowUids.reserve(size_t(tabData.tabRowDatas.size()));
    std::vector<Uid> columnUids;
    std::vector<Uid> itemUids;
    for (const TabRowData &row : tabData.tabRowDatas) {
        const Uid rowUid = archive.reserve();
        columnUids.clear();
        for (const TabColumnData &column : row.colDatas) {
            const Uid columnUid = archive.reserve();
            itemUids.clear();
            for (const ColumnItemType &item : column.columnItems)
                itemUids.push_back(cellUid(item));
            const Field fields[] = {
                Field::reference("colikey", archive.array(itemUids)),
                Field::reference("chnmkey", archive.optionalString(column.chordName)),
            };
            archive.setObject(columnUid, tabColumnDataClass, fields);
            columnUids.push_back(columnUid);
        }
        const std::optional<QString> firstLine =
            row.lyricLines.isEmpty() ? std::nullopt : std::optional(row.lyricLines.first());
        const Field fields[] = {
            Field::reference("cdkey", archive.array(columnUids)),
            Field::reference("lkey", archive.optionalString(firstLine)),
            Field::reference("lmkey", stringArray(row.lyricLines)),
        };
        archive.setObject(rowUid, tabRowDataClass, fields);
        rowUids.push_back(rowUid);
    }

    std::vector<Field> fields{
        Field::reference("trk", archive.array(rowUids)),
        Field::reference("snkey", stringArray(tabData.stringNotes)),
        Field::integer("cftkey", tabData.capoFret),
        Field::integer("lcszkey", tabData.lyricSize),
        Field::reference("introkey", archive.optionalString(tabData.introText)),
        Field::integer("tempokey", tabData.tempo),
    };
    if (tabData.playbackOptions) {
        fields.push_back(
            Field::reference("plbkoptionskey",
                             archive.string(QString::fromUtf8(tabData.playbackOptions->toJson()))));
    }
    archive.setObject(root, tabDataClass, fields);
    return archive.finish(root);
}

std::optional<TabData> tabDataFromDocumentData(QByteArrayView bytes, QString *error)
{
    auto fail = [error](const QString &message) -> std::optional<TabData> {
        if (error)
            *error = message;
        return std::nullopt;
    };
    KeyedArchiveView view;
    if (!view.open(bytes, error))
        return std::nullopt;
    const auto root = view.rootObject();
    if (!root || view.className(*root) != tabDataClass)
        return fail(u"the archive holds no tab"_qs);

    TabDocumentReader reader(view);
    const auto rowUids = reader.arrayField(*root, "trk");
    if (!rowUids)
        return fail(u"the tab has no rows"_qs);
    QList<TabRowData> rows;
    rows.reserve(qsizetype(rowUids->size()));
    for (const KeyedArchiveView::Uid rowUid : *rowUids) {
        auto row = reader.row(rowUid);
        if (!row)
            return fail(reader.tooLarge() ? u"the tab is too large"_qs
                                          : u"a row of the tab is damaged"_qs);
        rows.append(std::move(*row));
    }

    QStringList stringNotes =
        reader.stringList(view.reference(*root, "snkey")).value_or(standardStringNotes(6));
    const qint64 capoFret = view.integer(*root, "cftkey").value_or(0);
    const qint64 storedLyricSize = view.integer(*root, "lcszkey").value_or(0);
    const std::optional<QString> introText = view.stringField(*root, "introkey");
    for (QString &entry : stringNotes)
        entry = cutTuningEntry(entry);
    const bool hasTempo = view.contains(*root, "tempokey");
    const std::optional<QString> playbackJson = view.stringField(*root, "plbkoptionskey");

    TabData tab(u"?"_qs, std::move(rows), std::move(stringNotes), capoFret, introText);
    tab.lyricSize = storedLyricSize <= 0 ? 100 : std::clamp<qint64>(storedLyricSize, 25, 120);
    if (hasTempo)
        tab.tempo = view.integer(*root, "tempokey").value_or(0);
    if (playbackJson) {
        QString jsonError;
        tab.playbackOptions = ViewModePlaybackOptions::fromJson(playbackJson->toUtf8(), &jsonError);
        if (!tab.playbackOptions)
            qCWarning(lcModel) << "playback options unreadable:" << jsonError;
    }
    return tab;
}

std::optional<QByteArray> exchangeData(const TabData &tabData)
{
    // Written by hand rather than through a JSON tree: a large tab has hundreds of thousands
    // of cells, and a tree of them costs far more than the text. Members stand in the order
    // of their names, as a JSON object sorts them.
    QByteArray out;
    out.reserve(64 + tabData.tabRowDatas.size() * 1024);
    out.append("{\"cFret\":");
    out.append(QByteArray::number(tabData.capoFret));
    if (tabData.introText) {
        out.append(",\"intro\":");
        appendJsonString(out, *tabData.introText);
    }
    out.append(",\"stringNotes\":");
    appendJsonStrings(out, tabData.stringNotes);
    out.append(",\"tabRows\":[");
    for (qsizetype r = 0; r < tabData.tabRowDatas.size(); ++r) {
        const TabRowData &row = tabData.tabRowDatas[r];
        out.append(r ? ",{\"columnHeaders\":[" : "{\"columnHeaders\":[");
        for (qsizetype c = 0; c < row.colDatas.size(); ++c) {
            if (c)
                out.append(',');
            const auto &name = row.colDatas[c].chordName;
            if (name)
                appendJsonString(out, *name);
            else
                out.append("null");
        }
        out.append("],\"columns\":[");
        for (qsizetype c = 0; c < row.colDatas.size(); ++c) {
            out.append(c ? ",[" : "[");
            const QList<ColumnItemType> &items = row.colDatas[c].columnItems;
            for (qsizetype i = 0; i < items.size(); ++i) {
                if (i)
                    out.append(',');
                appendJsonItem(out, items[i]);
            }
            out.append(']');
        }
        out.append("],\"lyricLines\":");
        appendJsonStrings(out, row.lyricLines);
        out.append(",\"lyrics\":");
        appendJsonString(out, row.lyricLines.isEmpty() ? QString() : row.lyricLines[0]);
        out.append('}');
    }
    out.append("],\"tempo\":");
    out.append(QByteArray::number(tabData.tempo));
    out.append(",\"title\":");
    appendJsonString(out, tabData.title);
    out.append('}');
    return out;
}

std::optional<TabData> tabDataFromExchangeData(const QByteArray &bytes, ImportError *error,
                                               int defaultStringCount)
{
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(bytes, &parseError);
    if (parseError.error != QJsonParseError::NoError)
        return importFailure(error, parseError.errorString());
    if (!document.isObject())
        return importFailure(error, u"Unable to parse document JSON."_qs);
    const QJsonObject object = document.object();

    const QJsonValue title = object.value(u"title");
    if (!title.isString())
        return importFailure(error, u"The tab has no title."_qs);
    const QJsonValue rowValues = object.value(u"tabRows");
    if (!rowValues.isArray())
        return importFailure(error, u"The tab has no rows."_qs);

    TabData tab(title.toString(), defaultStringCount);
    const QJsonArray rowArray = rowValues.toArray();
    tab.tabRowDatas.reserve(rowArray.size());
    for (qsizetype r = 0; r < rowArray.size(); ++r) {
        const QJsonValue rowValue = rowArray.at(r);
        const QString damagedRow = u"Row %1 of the tab is damaged."_qs.arg(r + 1);
        if (!rowValue.isObject())
            return importFailure(error, damagedRow);
        const QJsonObject row = rowValue.toObject();

        QStringList lines;
        const QJsonValue lineValues = row.value(u"lyricLines");
        if (lineValues.isArray()) {
            for (const QJsonValue &line : lineValues.toArray()) {
                if (!line.isString()) {
                    lines.clear();
                    break;
                }
                lines.append(line.toString());
            }
        }
        const QJsonValue single = row.value(u"lyrics");
        adoptSingleLyric(single.isString() ? std::optional(single.toString()) : std::nullopt,
                         lines);

        const QJsonValue columnValues = row.value(u"columns");
        if (!columnValues.isArray())
            return importFailure(error, damagedRow);
        QJsonArray headers;
        const QJsonValue headerValues = row.value(u"columnHeaders");
        if (headerValues.isArray()) {
            headers = headerValues.toArray();
            const bool allOptionalStrings =
                std::all_of(headers.begin(), headers.end(), [](const QJsonValue &header) {
                    return header.isString() || header.isNull();
                });
            if (!allOptionalStrings)
                headers = QJsonArray();
        }

        const QJsonArray columnArray = columnValues.toArray();
        QList<TabColumnData> columns;
        columns.reserve(columnArray.size());
        for (qsizetype c = 0; c < columnArray.size(); ++c) {
            const QJsonValue columnValue = columnArray.at(c);
            if (!columnValue.isArray())
                return importFailure(error, damagedRow);
            const QJsonArray texts = columnValue.toArray();
            TabColumnData column;
            column.columnItems.reserve(texts.size());
            for (const QJsonValue &text : texts) {
                if (!text.isString())
                    return importFailure(error, damagedRow);
                column.columnItems.append(ColumnItemType::fromText(text.toString()));
            }
            if (c < headers.size() && headers.at(c).isString())
                column.chordName = headers.at(c).toString();
            columns.append(std::move(column));
        }
        tab.tabRowDatas.append(TabRowData(std::move(columns), std::move(lines)));
    }

    const QJsonValue stringNotes = object.value(u"stringNotes");
    if (stringNotes.isArray()) {
        QStringList notes;
        bool allStrings = true;
        for (const QJsonValue &note : stringNotes.toArray()) {
            allStrings = allStrings && note.isString();
            notes.append(note.toString());
        }
        if (allStrings)
            tab.stringNotes = notes;
    }
    if (const auto capo = jsonInteger(object.value(u"cFret")))
        tab.capoFret = *capo;
    const QJsonValue intro = object.value(u"intro");
    if (intro.isString()) {
        const QString trimmed = intro.toString().trimmed();
        if (!trimmed.isEmpty())
            tab.introText = trimmed;
    }
    if (const auto tempo = jsonInteger(object.value(u"tempo")))
        tab.tempo = *tempo;
    return tab;
}

bool tabFitsDocument(const TabData &tabData)
{
    quint64 cells = 0;
    for (const TabRowData &row : tabData.tabRowDatas) {
        for (const TabColumnData &column : row.colDatas)
            cells += quint64(column.columnItems.size());
    }
    if (cells > TabDocumentReader::maximumCells)
        return false;
    // Text can grow on the way: a string with one character past ASCII is stored in UTF-16.
    return documentData(tabData).size() <= maximumTabFileBytes;
}
