#include "model/keyedarchive.h"
#include "model/plistvariant.h"
#include "model/tabfileformat.h"
#include "services/saveddata.h"
#include "testmain.h"

#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTimeZone>

#include <plist/plist.h>

#include <functional>

// Seeded mutations of good files into the readers of outside input. Whatever the bytes,
// each reader must give an answer (a tab, or "unreadable") promptly and never crash.
namespace {

constexpr int archiveMutations = 9000;
constexpr int exchangeMutations = 8000;
constexpr int settingsMutations = 3000;
constexpr int plistMutations = 3000;
constexpr qint64 slowestAllowedMs = 1000;

TabData sampleTab()
{
    TabRowData row(8, 6);
    row.colDatas[0].setColumnItem(0, ColumnItemType::note(3));
    row.colDatas[1].setColumnItem(2, ColumnItemType(ColumnItemType::Kind::hammer));
    row.colDatas[2].setColumnItem(1, ColumnItemType::bar());
    row.colDatas[3].chordName = u"Am7"_qs;
    row.lyricLines = {u"la la"_qs, u"second"_qs};
    TabData tab(u"Fuzz"_qs, {row, row}, standardStringNotes(6), 2, u"intro"_qs);
    tab.playbackOptions = ViewModePlaybackOptions{};
    return tab;
}

QByteArray settingsBytes()
{
    ChordShortcut chord{u"Mine"_qs, {ColumnItemType::note(1), ColumnItemType::blank()}, true};
    return KeyedArchiver::archivedDataKeyedDirectly({
        {u"notk"_qs, ArchiveValue::fromBool(true)},
        {u"defaultstringcountkey"_qs, ArchiveValue::fromInteger(7)},
        {u"rcsck"_qs, ArchiveValue::fromArray({RecentChord{u"G"_qs, false}.toArchiveValue()})},
        {u"ccsck"_qs, ArchiveValue::fromArray({chord.toArchiveValue()})},
        {u"lastrrtKey"_qs, ArchiveValue::fromReal(12.5)},
    });
}

// Byte-level damage: truncation, bit flips, random bytes, or a random run overwritten.
QByteArray mutateBytes(QByteArray bytes, QRandomGenerator &random)
{
    switch (random.bounded(5)) {
    case 0:
        bytes.truncate(random.bounded(qMax<qsizetype>(bytes.size(), 1)));
        break;
    case 1:
        for (int flips = 1 + random.bounded(8); flips > 0 && !bytes.isEmpty(); --flips) {
            const int at = random.bounded(int(bytes.size()));
            bytes[at] = char(bytes[at] ^ (1 << random.bounded(8)));
        }
        break;
    case 2:
        for (int writes = 1 + random.bounded(4); writes > 0 && !bytes.isEmpty(); --writes)
            bytes[random.bounded(int(bytes.size()))] = char(random.bounded(256));
        break;
    case 3: {
        // Damage the trailer, where the offsets and sizes of a binary property list live.
        for (int i = 0; i < 3 && bytes.size() > 32; ++i)
            bytes[bytes.size() - 1 - random.bounded(32)] = char(random.bounded(256));
        break;
    }
    default: {
        QByteArray noise(random.bounded(1, 64), Qt::Uninitialized);
        for (char &c : noise)
            c = char(random.bounded(256));
        bytes.insert(random.bounded(int(bytes.size()) + 1), noise);
        break;
    }
    }
    return bytes;
}

void collectUids(plist_t node, std::vector<plist_t> &uids)
{
    switch (plist_get_node_type(node)) {
    case PLIST_UID:
        uids.push_back(node);
        break;
    case PLIST_ARRAY:
        for (uint32_t i = 0; i < plist_array_get_size(node); ++i)
            collectUids(plist_array_get_item(node, i), uids);
        break;
    case PLIST_DICT: {
        plist_dict_iter iter = nullptr;
        plist_dict_new_iter(node, &iter);
        for (;;) {
            char *key = nullptr;
            plist_t value = nullptr;
            plist_dict_next_item(node, iter, &key, &value);
            free(key);
            if (!value)
                break;
            collectUids(value, uids);
        }
        free(iter);
        break;
    }
    default:
        break;
    }
}

// Archive-level damage: references redirected anywhere, past the end, or back up the tree.
QByteArray mutateReferences(const QByteArray &bytes, QRandomGenerator &random)
{
    plist_t root = nullptr;
    plist_from_bin(bytes.constData(), uint32_t(bytes.size()), &root);
    if (!root)
        return bytes;
    std::vector<plist_t> uids;
    collectUids(root, uids);
    const uint32_t objectCount = plist_array_get_size(plist_dict_get_item(root, "$objects"));
    for (int changes = 1 + random.bounded(3); changes > 0 && !uids.empty(); --changes) {
        plist_t uid = uids[random.bounded(quint32(uids.size()))];
        const quint64 target = random.bounded(4) == 0 ? objectCount + random.bounded(100)
                                                      : random.bounded(objectCount);
        plist_set_uid_val(uid, target);
    }
    char *out = nullptr;
    uint32_t length = 0;
    plist_to_bin(root, &out, &length);
    QByteArray result(out, qsizetype(length));
    plist_to_bin_free(out);
    plist_free(root);
    return result;
}

QByteArray deepJson(int depth)
{
    return QByteArray(R"({"title":"t","tabRows":[{"columns":)") + QByteArray(depth, '[') +
           QByteArray(depth, ']') + "}]}";
}

} // namespace

class TestRobustness : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void archiveReader();
    void exchangeReader();
    void settingsReader();
    void plistReader();

private:
    void run(const char *what, int count, const std::function<QByteArray(QRandomGenerator &)> &make,
             const std::function<void(const QByteArray &)> &read);
};

void TestRobustness::run(const char *what, int count,
                         const std::function<QByteArray(QRandomGenerator &)> &make,
                         const std::function<void(const QByteArray &)> &read)
{
    QRandomGenerator random(20261121);
    qint64 slowest = 0;
    for (int i = 0; i < count; ++i) {
        const QByteArray input = make(random);
        QElapsedTimer timer;
        timer.start();
        read(input);
        slowest = qMax(slowest, timer.elapsed());
        if (slowest > slowestAllowedMs)
            QFAIL(qPrintable(
                u"%1 input %2 took %3 ms"_qs.arg(QLatin1String(what)).arg(i).arg(slowest)));
    }
    qInfo("%s: %d inputs, slowest %lld ms", what, count, slowest);
}

void TestRobustness::archiveReader()
{
    const QByteArray good = documentData(sampleTab());
    QVERIFY(tabDataFromDocumentData(good));
    QFile deep(QStringLiteral(LUTEGRID_TEST_DATA "/hostile_deep.plist"));
    QVERIFY(deep.open(QIODevice::ReadOnly));
    const QByteArray deepArchive = deep.readAll();
    QVERIFY(!tabDataFromDocumentData(deepArchive));

    int readable = 0;
    run(
        "archive", archiveMutations,
        [&](QRandomGenerator &random) {
            const int kind = random.bounded(10);
            if (kind < 4)
                return mutateReferences(good, random);
            if (kind == 4)
                return mutateBytes(deepArchive, random);
            return mutateBytes(good, random);
        },
        [&](const QByteArray &bytes) { readable += tabDataFromDocumentData(bytes) ? 1 : 0; });
    // Most damage must be noticed; some (a changed letter in a lyric) is harmless.
    QVERIFY(readable < archiveMutations);
}

void TestRobustness::exchangeReader()
{
    const QByteArray good = exchangeData(sampleTab()).value();
    QVERIFY(tabDataFromExchangeData(good));
    QVERIFY(!tabDataFromExchangeData(deepJson(10000)));
    run(
        "exchange", exchangeMutations,
        [&](QRandomGenerator &random) {
            if (random.bounded(50) == 0)
                return deepJson(random.bounded(1, 20000));
            return mutateBytes(good, random);
        },
        [](const QByteArray &bytes) {
            ImportError error;
            if (!tabDataFromExchangeData(bytes, &error) && error.message.isEmpty())
                QFAIL("an unreadable exchange file must say what is wrong");
        });
}

void TestRobustness::settingsReader()
{
    QTemporaryDir folder;
    const QString path = QDir(folder.path()).filePath(u"data.plist"_qs);
    const QByteArray good = settingsBytes();
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(good);
    }
    QCOMPARE(SavedData(path, nullptr).defaultStringCount, 7);

    run(
        "settings", settingsMutations,
        [&](QRandomGenerator &random) {
            return random.bounded(3) == 0 ? mutateReferences(good, random)
                                          : mutateBytes(good, random);
        },
        [&](const QByteArray &bytes) {
            QFile file(path);
            if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
                QFAIL("cannot write the settings file");
            file.write(bytes);
            file.close();
            SavedData settings(path, nullptr);
            if (settings.customChordShortcuts && settings.customChordShortcuts->size() > 1)
                QFAIL("damage made chords out of nothing");
        });
}

// The key-value store's file, which a sync client may leave in any state.
void TestRobustness::plistReader()
{
    const QByteArray good =
        PlistVariant::binaryData(
            {{u"text"_qs, u"Gr\u00fc\u00dfe"_qs},
             {u"data"_qs, QByteArray("\x00\x01\xFF", 3)},
             {u"numbers"_qs, QVariantList{qint64(-7), 0.1, true}},
             {u"date"_qs, QDateTime(QDate(2026, 11, 21), QTime(10, 15), QTimeZone::utc())},
             {u"map"_qs, QVariantMap{{u"inner"_qs, QVariantList{u"deep"_qs}}}}})
            .value();
    QVERIFY(PlistVariant::dictionaryFromData(good));
    run(
        "key-value store", plistMutations,
        [&](QRandomGenerator &random) { return mutateBytes(good, random); },
        [](const QByteArray &bytes) { PlistVariant::dictionaryFromData(bytes); });
}

LUTEGRID_TEST_MAIN(TestRobustness)
#include "tst_robustness.moc"
