#include "tabfileformat.h"

#include "binaryarchiveview.h"
#include "keyedarchive.h"
#include "modellog.h"
#include "wellformedtext.h"

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
// costs a million references, not a million decodings. What was decoded is remembered by UID
// in flat tables, the rows and columns by where they stand in the tab being built.
// A document of more cells than this is refused, so a hostile file cannot make a giant tab.
constexpr quint64 maximumDocumentCells = 16'000'000;

template<typename View>
class TabDocumentReader {
public:
    using Uid = typename View::Uid;
    explicit TabDocumentReader(const View &view)
        : view(view), columnPlaces(size_t(view.objectCount()), 0),
          itemSlots(size_t(view.objectCount()), 0)
    {
    }

    // The rows in order; nothing if one is damaged.
    bool readRows(Uid list)
    {
        std::vector<Uid> rowUids;
        if (!view.forEachElement(list, [&](Uid uid) {
                rowUids.push_back(uid);
                return true;
            }))
            return false;
        rows.reserve(qsizetype(rowUids.size()));
        for (const Uid uid : rowUids) {
            if (!row(uid))
                return false;
        }
        return true;
    }

    std::optional<QStringList> stringList(std::optional<Uid> uid)
    {
        QStringList texts;
        const bool ok = uid && view.forEachElement(*uid, [&](Uid element) {
            auto text = view.string(element);
            if (text)
                texts.append(std::move(*text));
            return text.has_value();
        });
        return ok ? std::optional(std::move(texts)) : std::nullopt;
    }

    // More cells than any tab a person writes: the mark of an archive built to exhaust memory.
    static constexpr quint64 maximumCells = maximumDocumentCells;
    bool tooLarge() const { return cells > maximumCells; }

    QList<TabRowData> rows;

private:
    bool row(Uid uid)
    {
        if (const auto found = rowPlaces.find(uid); found != rowPlaces.end()) {
            cells += found->second.cells;
            if (cells > maximumCells)
                return false;
            TabRowData again = rows[found->second.index];
            rows.append(std::move(again));
            return true;
        }
        if (view.className(uid).isEmpty())
            return false;
        const auto columnList = view.reference(uid, "cdkey");
        if (!columnList)
            return false;
        current.clear();
        quint64 rowCells = 0;
        const bool ok = view.forEachElement(*columnList, [&](Uid columnUid) {
            if (!column(columnUid))
                return false;
            const quint64 size = quint64(current.constLast().columnItems.size());
            rowCells += size;
            cells += size;
            return cells <= maximumCells;
        }, [&](quint64 count) { current.reserve(qsizetype(std::min<quint64>(count, 1 << 16))); });
        if (!ok)
            return false;
        QStringList lines = stringList(view.reference(uid, "lmkey")).value_or(QStringList());
        adoptSingleLyric(view.stringField(uid, "lkey"), lines);
        rowPlaces.emplace(uid, RowPlace{rows.size(), rowCells});
        rows.append(TabRowData(std::exchange(current, {}), std::move(lines)));
        return true;
    }

    // Appends the column to the row being read.
    bool column(Uid uid)
    {
        if (uid < columnPlaces.size() && columnPlaces[size_t(uid)]) {
            const quint64 place = columnPlaces[size_t(uid)] - 1;
            const qsizetype row = qsizetype(place >> 32);
            const qsizetype index = qsizetype(place & 0xFFFFFFFF);
            TabColumnData again = row == rows.size() ? current[index] : rows[row].colDatas[index];
            current.append(std::move(again));
            return true;
        }
        if (view.className(uid).isEmpty())
            return false;
        const auto itemList = view.reference(uid, "colikey");
        if (!itemList)
            return false;
        TabColumnData decoded;
        const bool ok = view.forEachElement(*itemList, [&](Uid itemUid) {
            const auto item = cellItem(itemUid);
            if (item)
                decoded.columnItems.append(*item);
            return item.has_value();
        }, [&](quint64 count) {
            decoded.columnItems.reserve(qsizetype(std::min<quint64>(count, 1 << 16)));
        });
        if (!ok)
            return false;
        decoded.chordName = view.stringField(uid, "chnmkey");
        if (uid < columnPlaces.size() && current.size() <= 0xFFFFFFFF)
            columnPlaces[size_t(uid)] = ((quint64(rows.size()) << 32) | quint64(current.size())) + 1;
        current.append(std::move(decoded));
        return true;
    }

    std::optional<ColumnItemType> cellItem(Uid uid)
    {
        if (uid < itemSlots.size() && itemSlots[size_t(uid)])
            return items[itemSlots[size_t(uid)] - 1];
        const auto text = view.string(uid);
        if (!text)
            return std::nullopt;
        const ColumnItemType item = ColumnItemType::fromText(*text);
        if (uid < itemSlots.size()) {
            items.push_back(item);
            itemSlots[size_t(uid)] = quint32(items.size());
        }
        return item;
    }

    struct RowPlace {
        qsizetype index;
        quint64 cells;
    };

    const View &view;
    QList<TabColumnData> current;
    std::unordered_map<Uid, RowPlace> rowPlaces;
    std::vector<quint64> columnPlaces;
    std::vector<quint32> itemSlots;
    std::vector<ColumnItemType> items;
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

// The document read through either view of its archive; both must give the same tab.
template<typename View>
std::optional<TabData> readDocument(QByteArrayView bytes, QString *error)
{
    auto fail = [error](const QString &message) -> std::optional<TabData> {
        if (error)
            *error = message;
        return std::nullopt;
    };
    View view;
    if (!view.open(bytes, error))
        return std::nullopt;
    const auto root = view.rootObject();
    if (!root || view.className(*root) != tabDataClass)
        return fail(u"the archive holds no tab"_qs);

    TabDocumentReader<View> reader(view);
    const auto rowList = view.reference(*root, "trk");
    if (!rowList || !view.isArray(*rowList))
        return fail(u"the tab has no rows"_qs);
    if (!reader.readRows(*rowList))
        return fail(reader.tooLarge() ? u"the tab is too large"_qs
                                      : u"a row of the tab is damaged"_qs);
    QList<TabRowData> rows = std::move(reader.rows);

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

std::optional<TabData> tabDataFromDocumentData(QByteArrayView bytes, QString *error)
{
    return readDocument<BinaryArchiveView>(bytes, error);
}

std::optional<TabData> tabDataFromDocumentDataViaLibplist(QByteArrayView bytes, QString *error)
{
    return readDocument<KeyedArchiveView>(bytes, error);
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

bool tabFitsDocument(const TabData &tabData)
{
    quint64 cells = 0;
    for (const TabRowData &row : tabData.tabRowDatas) {
        for (const TabColumnData &column : row.colDatas)
            cells += quint64(column.columnItems.size());
    }
    if (cells > maximumDocumentCells)
        return false;
    // Text can grow on the way: a string with one character past ASCII is stored in UTF-16.
    return documentData(tabData).size() <= maximumTabFileBytes;
}
