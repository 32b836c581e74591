// The direct document reader against libplist's: every file, however damaged, must read to the
// same tab or be refused by both.
#include "model/binaryplistreader.h"
#include "model/keyedarchive.h"
#include "model/tabfileformat.h"
#include "testmain.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QRandomGenerator>
#include <QtEndian>

namespace {

struct Outcome {
    std::optional<TabData> tab;
    QString error;
};

// Describes where the two readers part, or gives nothing when they agree.
QString disagreement(const QByteArray &bytes)
{
    Outcome direct;
    Outcome tree;
    direct.tab = tabDataFromDocumentData(bytes, &direct.error);
    tree.tab = tabDataFromDocumentDataViaLibplist(bytes, &tree.error);
    if (!direct.tab && !tree.tab)
        return {};
    if (!direct.tab || !tree.tab)
        return direct.tab ? u"only libplist refuses: "_qs + tree.error
                          : u"only the direct reader refuses: "_qs + direct.error;
    // The writer is deterministic, so equal tabs write equal bytes: this also compares texts
    // that the tabs' own comparison might take as alike.
    if (!(*direct.tab == *tree.tab) || documentData(*direct.tab) != documentData(*tree.tab)) {
        // The exchange form shows where, in words.
        const QByteArray a = exchangeData(*direct.tab).value_or(QByteArray());
        const QByteArray b = exchangeData(*tree.tab).value_or(QByteArray());
        qsizetype at = 0;
        while (at < a.size() && at < b.size() && a[at] == b[at])
            ++at;
        return u"the tabs differ: %1 against libplist's %2"_qs.arg(
            QString::fromUtf8(a.mid(std::max<qsizetype>(0, at - 20), 40).toHex(' ')),
            QString::fromUtf8(b.mid(std::max<qsizetype>(0, at - 20), 40).toHex(' ')));
    }
    return {};
}

// A file of many shapes: notes, marks, blanks, chord names, lyrics, tuning and options.
TabData sampleTab(QRandomGenerator &random, const QStringList &texts)
{
    auto text = [&] { return texts[random.bounded(int(texts.size()))]; };
    QList<TabRowData> rows;
    const int rowCount = random.bounded(1, 4);
    const int stringCount = random.bounded(1, 8);
    for (int r = 0; r < rowCount; ++r) {
        TabRowData row(random.bounded(1, 5), stringCount);
        for (TabColumnData &column : row.colDatas) {
            for (ColumnItemType &item : column.columnItems) {
                const int roll = random.bounded(4);
                item = roll == 0 ? ColumnItemType::note(random.bounded(-3, 30))
                       : roll == 1
                           ? ColumnItemType(ColumnItemType::Kind(
                                 random.bounded(1, int(ColumnItemType::kindCount))))
                           : ColumnItemType::blank();
            }
            if (random.bounded(3) == 0)
                column.chordName = text();
        }
        for (int line = random.bounded(3); line > 0; --line)
            row.lyricLines.append(text());
        rows.append(std::move(row));
    }
    QStringList tuning;
    for (int s = 0; s < stringCount; ++s)
        tuning.append(text());
    TabData tab(u"?"_qs, std::move(rows), std::move(tuning), random.bounded(-2, 12),
                random.bounded(2) ? std::optional(text()) : std::nullopt);
    tab.tempo = random.bounded(-5, 300);
    tab.lyricSize = random.bounded(20, 130);
    if (random.bounded(2))
        tab.playbackOptions = ViewModePlaybackOptions{96, 2, true, 3, false};
    return tab;
}

const QStringList oddTexts = {
    u""_qs,        u"E"_qs,          u"F#3"_qs,           u"Am7"_qs,
    u"\u2014"_qs,  u"x\u0000y"_qs,   u"\u0000"_qs,        u"caf\u00e9"_qs,
    u"\U0001F3B8 riff"_qs, u"\ufeffBOM"_qs, u"\ufeff\ufeff"_qs, u"a\ufeff"_qs, QString(QChar(0xD800)) + u"x"_qs,
    u"a"_qs + QChar(0xDC00), u"e\u0301"_qs, u"a long line of words for the row"_qs,
};

// The small documents every damage is done to.
QList<QByteArray> seedDocuments()
{
    QRandomGenerator random(7);
    QList<QByteArray> seeds;
    for (int i = 0; i < 6; ++i)
        seeds.append(documentData(sampleTab(random, oddTexts)));
    return seeds;
}

// A document's objects, as the trailer and the offset table give them.
struct Layout {
    int offsetSize = 0;
    int refSize = 0;
    quint64 objectCount = 0;
    quint64 tableOffset = 0;

    explicit Layout(const QByteArray &bytes)
    {
        const auto *trailer = reinterpret_cast<const uchar *>(bytes.constData()) + bytes.size() - 32;
        offsetSize = trailer[6];
        refSize = trailer[7];
        objectCount = qFromBigEndian<quint64>(trailer + 8);
        tableOffset = qFromBigEndian<quint64>(trailer + 24);
    }
    QByteArray ref(quint64 index) const
    {
        QByteArray bytes;
        for (int shift = (refSize - 1) * 8; shift >= 0; shift -= 8)
            bytes.append(char((index >> shift) & 0xFF));
        return bytes;
    }
};

// The document with one object replaced: the new object is written after the others, and
// the offset table is written again with four-byte offsets.
QByteArray withObject(const QByteArray &bytes, const Layout &layout, quint64 index,
                      const QByteArray &object)
{
    const auto *data = reinterpret_cast<const uchar *>(bytes.constData());
    QByteArray out = bytes.left(qsizetype(layout.tableOffset));
    const quint64 newOffset = quint64(out.size());
    out += object;
    const quint64 tableOffset = quint64(out.size());
    for (quint64 i = 0; i < layout.objectCount; ++i) {
        quint64 offset = 0;
        for (int b = 0; b < layout.offsetSize; ++b)
            offset = (offset << 8) | data[layout.tableOffset + i * layout.offsetSize + b];
        if (i == index)
            offset = newOffset;
        const quint32 bigEndian = qToBigEndian(quint32(offset));
        out.append(reinterpret_cast<const char *>(&bigEndian), 4);
    }
    QByteArray trailer = bytes.right(32);
    trailer[6] = 4;
    const quint64 bigEndian = qToBigEndian(tableOffset);
    trailer.replace(24, 8, QByteArray(reinterpret_cast<const char *>(&bigEndian), 8));
    return out + trailer;
}

QByteArray utf16Object(const QList<char16_t> &units)
{
    QByteArray bytes(1, char(0x60 | units.size()));
    for (const char16_t unit : units) {
        bytes.append(char(unit >> 8));
        bytes.append(char(unit & 0xFF));
    }
    return bytes;
}

// Objects no writer of ours makes, each testing a place where libplist's reading has its own
// rules: markers it refuses, widths it takes, and text it converts in its own way.
QList<QByteArray> oddObjects(const Layout &layout)
{
    auto raw = [](std::initializer_list<int> bytes) {
        QByteArray out;
        for (const int byte : bytes)
            out.append(char(byte));
        return out;
    };
    QList<QByteArray> objects = {
        raw({0x00}), raw({0x08}), raw({0x09}), raw({0x0C}), raw({0x0F}),
        raw({0x10, 0x07}), raw({0x11, 0x01, 0x02}), raw({0x12, 0, 0, 0, 0x2A}),
        raw({0x13, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE}),
        raw({0x14, 1, 2, 3, 4, 5, 6, 7, 8, 0, 0, 0, 0, 0, 0, 0, 5}), raw({0x15, 0}),
        raw({0x1F, 0}), raw({0x22, 0x40, 0x70, 0, 0}), raw({0x23, 0x40, 0x04, 0, 0, 0, 0, 0, 0}),
        raw({0x23, 0x7F, 0xF8, 0, 0, 0, 0, 0, 0}), raw({0x23, 0x7F, 0xEF, 0xFF, 0xFF, 0xFF, 0xFF,
                                                      0xFF, 0xFF}),
        raw({0x21, 0, 0}), raw({0x33, 0x41, 0xC0, 0, 0, 0, 0, 0, 0}), raw({0x32, 0x40, 0, 0, 0}),
        raw({0x43, 'a', 'b', 'c'}), raw({0x40}), raw({0x50}), raw({0x51, 'E'}),
        raw({0x52, '1', '2'}), raw({0x54, 'A', 'm', 0, '7'}), raw({0x51, 0}),
        raw({0x52, 0xC3, 0xA9}), raw({0x52, 0xFF, 0xFE}),
        raw({0x5F, 0x10, 0x0F, 'N', 'S', 'K', 'e', 'y', 'e', 'd', 'A', 'r', 'c', 'h', 'i', 'v',
             'e', 'r'}),
        raw({0x5F, 0x13, 0, 0, 0, 1, 'x'}), raw({0x5F, 0x20, 0}),
        utf16Object({}), utf16Object({0x00E9}), utf16Object({u'a', 0xD800}),
        utf16Object({0xDC00, u'b'}), utf16Object({0xD800, 0xD801, 0xDC00, u'c'}),
        utf16Object({0xD800, u'x', 0xDC00}), utf16Object({0xFEFF, u'E'}),
        utf16Object({0, u'A'}), utf16Object({0xD83C, 0xDFB8}), utf16Object({u'1', u'2'}),
        raw({0x80, 0x00}), raw({0x80, 0x01}), raw({0x80, 0x05}), raw({0x81, 0x00, 0x03}),
        raw({0x82, 0, 0, 2}), raw({0x83, 0, 0, 0, 4}), raw({0x87, 0, 0, 0, 1, 0, 0, 0, 0}),
        raw({0x87, 0, 0, 0, 0, 0, 0, 0, 3}),
        raw({0x8F, 1, 1, 1, 1, 1, 1, 1, 1, 0, 0, 0, 0, 0, 0, 0, 2}),
        raw({0x70}), raw({0x90}), raw({0xE0}), raw({0xF0}), raw({0xA0}), raw({0xC0}),
        raw({0xB0}), raw({0xD0}),
    };
    // Containers that refer to objects already there, and to one past the end.
    for (const quint64 target : {quint64(0), quint64(1), quint64(2), layout.objectCount - 1,
                                 layout.objectCount}) {
        objects.append(char(0xA1) + layout.ref(target));
        objects.append(char(0xC1) + layout.ref(target));
        objects.append(char(0xB1) + layout.ref(target));
        objects.append(char(0xD1) + layout.ref(target) + layout.ref(target));
    }
    return objects;
}

// Randomly damaged copies of a document: bytes overwritten, cut off or repeated.
QByteArray damaged(const QByteArray &bytes, QRandomGenerator &random)
{
    static const uchar interesting[] = {0x00, 0x01, 0x0F, 0x10, 0x5F, 0x6F, 0x7F, 0x80, 0x8F,
                                        0xA0, 0xAF, 0xD0, 0xDF, 0xFF};
    QByteArray out = bytes;
    switch (random.bounded(5)) {
    case 0:
        out.truncate(random.bounded(int(out.size())));
        break;
    case 1: {
        const int at = random.bounded(int(out.size()));
        out.insert(at, out.mid(at, random.bounded(1, 16)));
        break;
    }
    case 2: {
        // The trailer holds the widths and offsets every other byte depends on.
        const int at = int(out.size()) - 32 + random.bounded(32);
        out[at] = char(random.bounded(256));
        break;
    }
    default:
        for (int n = random.bounded(1, 5); n > 0; --n) {
            const int at = random.bounded(int(out.size()));
            out[at] = random.bounded(2) ? char(interesting[random.bounded(int(sizeof interesting))])
                                        : char(random.bounded(256));
        }
    }
    return out;
}

QList<QString> filesUnder(const QString &folder, const QStringList &patterns)
{
    QList<QString> paths;
    QDirIterator it(folder, patterns, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext())
        paths.append(it.next());
    paths.sort();
    return paths;
}

QByteArray fileBytes(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class TestDocumentReaders : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void agreeOnFilesInTheRepository();
    void agreeOnWrittenTabs();
    void agreeOnEveryOddObjectEverywhere();
    void agreeOnRandomDamage();
    void readOddFieldsAlike();
    void holdTheStructuralBounds();
};

void TestDocumentReaders::agreeOnFilesInTheRepository()
{
    // The fixtures, the hostile files and, where there is one, the fuzzers' corpus.
    QList<QString> paths =
        filesUnder(QStringLiteral(LUTEGRID_TEST_DATA), {u"*.plist"_qs, u"*.lgrdi"_qs});
    const int fixtures = int(paths.size());
    // Any folder of the fuzzers' named for the document form: its corpus and its crashes.
    for (const QString &path : filesUnder(QStringLiteral(LUTEGRID_SOURCE_DIR "/tests/fuzz"), {})) {
        if (path.contains(u"/document"_qs))
            paths.append(path);
    }
    QVERIFY(fixtures >= 8);
    int readable = 0;
    for (const QString &path : paths) {
        const QByteArray bytes = fileBytes(path);
        const QString why = disagreement(bytes);
        QVERIFY2(why.isEmpty(), qPrintable(path + u": "_qs + why));
        readable += tabDataFromDocumentData(bytes) ? 1 : 0;
    }
    QVERIFY(readable >= 1);
}

void TestDocumentReaders::agreeOnWrittenTabs()
{
    QRandomGenerator random(11);
    for (int i = 0; i < 200; ++i) {
        const TabData tab = sampleTab(random, oddTexts);
        const QByteArray bytes = documentData(tab);
        QString error;
        const auto read = tabDataFromDocumentData(bytes, &error);
        QVERIFY2(read, qPrintable(error));
        const QString why = disagreement(bytes);
        QVERIFY2(why.isEmpty(), qPrintable(why));
    }
}

void TestDocumentReaders::agreeOnEveryOddObjectEverywhere()
{
    int cases = 0;
    int readable = 0;
    for (const QByteArray &seed : seedDocuments().mid(0, 3)) {
        const Layout layout(seed);
        const QList<QByteArray> objects = oddObjects(layout);
        for (quint64 index = 0; index < layout.objectCount; ++index) {
            for (qsizetype k = 0; k < objects.size(); ++k) {
                const QByteArray bytes = withObject(seed, layout, index, objects[k]);
                const QString why = disagreement(bytes);
                QVERIFY2(why.isEmpty(), qPrintable(u"object %1 as odd object %2: "_qs.arg(index)
                                                       .arg(k) +
                                                   why));
                ++cases;
                readable += tabDataFromDocumentData(bytes) ? 1 : 0;
            }
        }
    }
    // Both kinds of outcome are well represented, or the comparison proves little.
    QVERIFY2(readable > cases / 10 && readable < cases - cases / 10,
             qPrintable(u"%1 of %2 readable"_qs.arg(readable).arg(cases)));
}

void TestDocumentReaders::agreeOnRandomDamage()
{
    QRandomGenerator random(20261124);
    const QList<QByteArray> seeds = seedDocuments();
    for (const QByteArray &seed : seeds) {
        for (int i = 0; i < 1500; ++i) {
            QByteArray bytes = damaged(seed, random);
            if (random.bounded(4) == 0)
                bytes = damaged(bytes, random);
            const QString why = disagreement(bytes);
            QVERIFY2(why.isEmpty(), qPrintable(why + u" on "_qs + QString::fromLatin1(
                                                                    bytes.toBase64())));
        }
    }
}

void TestDocumentReaders::readOddFieldsAlike()
{
    // Fields of types our writer never uses, as another program might store them.
    const ArchiveValue column = ArchiveValue::object(
        u"Lutegrid.TabColumnData"_qs,
        {{u"colikey"_qs, ArchiveValue::fromStringList({u"3"_qs, u"h"_qs, u"\ufeff7"_qs})},
         {u"chnmkey"_qs, ArchiveValue::fromInteger(4)}});
    const ArchiveValue row = ArchiveValue::object(
        u"Lutegrid.TabRowData"_qs, {{u"cdkey"_qs, ArchiveValue::fromArray({column, column})},
                                    {u"lkey"_qs, ArchiveValue::fromString(u"words"_qs)},
                                    {u"lmkey"_qs, ArchiveValue::fromBool(true)}});
    const QList<ArchiveFields> variants = {
        {{u"cftkey"_qs, ArchiveValue::fromReal(2.9)}, {u"tempokey"_qs, ArchiveValue::fromBool(true)}},
        {{u"cftkey"_qs, ArchiveValue::fromReal(1e300)}, {u"lcszkey"_qs, ArchiveValue::fromInteger(-4)}},
        {{u"tempokey"_qs, ArchiveValue::fromString(u"fast"_qs)},
         {u"introkey"_qs, ArchiveValue::fromInteger(5)}},
        {{u"snkey"_qs, ArchiveValue::fromStringList({u"E"_qs, u"A2"_qs})},
         {u"plbkoptionskey"_qs, ArchiveValue::fromString(u"{not json"_qs)}},
    };
    for (ArchiveFields fields : variants) {
        fields.push_back({u"trk"_qs, ArchiveValue::fromArray({row, row})});
        const QByteArray bytes = KeyedArchiver::archivedData(
            ArchiveValue::object(u"Lutegrid.TabData"_qs, std::move(fields)));
        QVERIFY(tabDataFromDocumentData(bytes));
        const QString why = disagreement(bytes);
        QVERIFY2(why.isEmpty(), qPrintable(why));
    }
}

void TestDocumentReaders::holdTheStructuralBounds()
{
    // Whatever the limits, the direct reader takes no file that the structural check refuses,
    // and on files that libplist reads whole it takes exactly what the check takes.
    QRandomGenerator random(5);
    const QList<QByteArray> seeds = seedDocuments();
    for (const int depth : {2, 4, 8, 64}) {
        for (const quint64 nodes : {quint64(20), quint64(200), quint64(1'000'000)}) {
            PlistVariant::GraphLimits limits;
            limits.depth = depth;
            limits.expandedNodes = nodes;
            limits.expandedPayloadBytes = nodes * 4;
            for (const QByteArray &seed : seeds) {
                BinaryPlistReader reader;
                QCOMPARE(reader.open(seed, limits), PlistVariant::isSafeBinaryPlist(seed, limits));
                for (int i = 0; i < 100; ++i) {
                    const QByteArray bytes = damaged(seed, random);
                    BinaryPlistReader damagedReader;
                    if (damagedReader.open(bytes, limits))
                        QVERIFY(PlistVariant::isSafeBinaryPlist(bytes, limits));
                }
            }
        }
    }
}

LUTEGRID_TEST_MAIN(TestDocumentReaders)
#include "tst_documentreaders.moc"
