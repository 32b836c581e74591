#include "export/tabviewprintrenderer.h"

#include "testmain.h"

namespace {

const QStringList standardSix{u"E"_qs, u"A"_qs, u"D"_qs, u"G"_qs, u"B"_qs, u"E"_qs};

// Fixed text heights, so the breaks below can be worked out on paper; counts its calls.
class FixedMeasurer : public PrintTextMeasurer {
public:
    double intro = 0.0;
    mutable int calls = 0;
    double titleHeight(const QString &) const override
    {
        ++calls;
        return 36.0;
    }
    double introHeight(const QString &, double) const override
    {
        ++calls;
        return intro;
    }
};

// Thirty columns, a chord name over the first unless `chords` is false.
TabRowData row(int lyricLines = 1, bool chords = true)
{
    QList<TabColumnData> columns;
    for (int c = 0; c < 30; ++c) {
        QList<ColumnItemType> items(6, ColumnItemType::blank());
        items[c % 6] = ColumnItemType::note(c % 13);
        columns.append(
            TabColumnData(items, c == 0 && chords ? std::optional(u"Am"_qs) : std::nullopt));
    }
    QStringList lyrics;
    for (int i = 0; i < lyricLines; ++i)
        lyrics.append(u"la la"_qs);
    return TabRowData(columns, lyrics);
}

TabExportConfiguration configuration(int rows, bool lyrics = true, bool twoColumns = false)
{
    TabExportConfiguration config{
        TabData(u"Song"_qs, QList<TabRowData>(rows, row()), standardSix, 0, std::nullopt)};
    config.showLyrics = lyrics;
    config.twoColumns = twoColumns;
    return config;
}

QList<int> every(int step, int first, int count)
{
    QList<int> starts{0};
    for (int i = first; i < count; i += step)
        starts.append(i);
    return starts;
}

} // namespace

class TestPrintPagination : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // Worked by hand for a width of 508: a 30-column row with chord names and one lyric line
    // is 0.318 × 279/260 × 508 = 173.35 high, 143.53 with lyrics hidden, 84.94 as half of a
    // pair; rows are spaced 15.748 (7.717 in pairs); the first page starts at 36 + 14 = 50.
    void pageBreaks_data()
    {
        QTest::addColumn<TabExportConfiguration>("config");
        QTest::addColumn<double>("intro");
        QTest::addColumn<QList<int>>("starts");
        QTest::newRow("1 row") << configuration(1) << 0.0 << QList<int>{0};
        QTest::newRow("9 rows: 3 a page") << configuration(9) << 0.0 << QList<int>{0, 3, 6};
        QTest::newRow("120 rows: 3 a page") << configuration(120) << 0.0 << every(3, 3, 120);
        QTest::newRow("9 rows, no lyrics: 4 a page")
            << configuration(9, false) << 0.0 << QList<int>{0, 4, 8};
        QTest::newRow("120 rows, no lyrics")
            << configuration(120, false) << 0.0 << every(4, 4, 120);
        // An intro of 200 starts the rows at 250: only two fit on the first page.
        QTest::newRow("9 rows after an intro") << [] {
            auto c = configuration(9);
            c.tabData.introText = u"Slowly"_qs;
            return c;
        }() << 200.0 << QList<int>{0, 2, 5, 8};
        QTest::newRow("1 row, two columns") << configuration(1, true, true) << 0.0 << QList<int>{0};
        QTest::newRow("9 rows, two columns")
            << configuration(9, true, true) << 0.0 << QList<int>{0};
        // Seven pairs a page: 50 + 6 × 92.66 + 84.94 = 690.9 fits, an eighth would not.
        QTest::newRow("120 rows, two columns")
            << configuration(120, true, true) << 0.0 << every(14, 14, 120);
        // Without the tab lines a row is 0.08904 × 508 = 45.23: 10 on the first page, then 11.
        QTest::newRow("120 rows, lyrics and chords only") << [] {
            auto c = configuration(120);
            c.showTabContent = false;
            return c;
        }() << 0.0 << every(11, 10, 120);
        QTest::newRow("no rows") << configuration(0) << 0.0 << QList<int>{};
    }

    void pageBreaks()
    {
        QFETCH(TabExportConfiguration, config);
        QFETCH(double, intro);
        QFETCH(QList<int>, starts);
        FixedMeasurer measurer;
        measurer.intro = intro;
        TabViewPrintRenderer renderer(config, measurer);
        QCOMPARE(renderer.numberOfPages(), starts.size());
        QCOMPARE(renderer.pageStartTabRowIndices, starts);
        QCOMPARE(renderer.tabRowSpacing, config.twoColumns ? 508 * 0.031 * 0.49 : 508 * 0.031);
        // Once only: a second call measures nothing again.
        const int calls = measurer.calls;
        renderer.numberOfPages();
        QCOMPARE(measurer.calls, calls);
        if (config.tabData.tabRowDatas.isEmpty())
            QCOMPARE(calls, 0);
    }

    void pageLayoutFollowsPagination()
    {
        FixedMeasurer measurer;
        measurer.intro = 20;
        auto config = configuration(9);
        config.tabData.introText = u"Slowly"_qs;
        TabViewPrintRenderer renderer(config, measurer);
        const auto first = renderer.pageLayout(0);
        QCOMPARE(*first.titleRect, QRectF(48, 40, 516, 36));
        QCOMPARE(*first.introRect, QRectF(48, 76, 516, 20));
        QCOMPARE(first.rows.first().frame.topLeft(), QPointF(48, 40 + 36 + 20 + 14));
        QCOMPARE(first.rows.first().frame.width(), 508.0);
        QCOMPARE(first.footerRect, QRectF(231, 752, 150, 16));
        for (int page = 1; page < renderer.numberOfPages(); ++page) {
            const auto layout = renderer.pageLayout(page);
            QVERIFY(!layout.titleRect && !layout.introRect);
            QCOMPARE(layout.rows.first().frame.top(), 40.0);
            QVERIFY(layout.rows.last().frame.bottom() <= 740.0);
            QCOMPARE(layout.footerRect, first.footerRect);
        }
        int rows = 0;
        for (int page = 0; page < renderer.numberOfPages(); ++page)
            rows += int(renderer.pageLayout(page).rows.size());
        QCOMPARE(rows, 9);
    }

    void pairsStayLevel()
    {
        FixedMeasurer measurer;
        auto config = configuration(7, true, true);
        // One lyric line against three, chord names on one side only.
        config.tabData.tabRowDatas[0] = row(1, false);
        config.tabData.tabRowDatas[1] = row(3, true);
        TabViewPrintRenderer renderer(config, measurer);
        const auto pair = renderer.printRow(0);
        QCOMPARE(pair.views.size(), 2);
        QCOMPARE(pair.views[0].lyricLines.size(), 3);
        QCOMPARE(pair.views[0].requestedHeight, pair.views[1].requestedHeight);
        QVERIFY(pair.views[0].showsChordNames());
        QCOMPARE(pair.height, pair.views[1].requestedHeight);
        QVERIFY(pair.frames[1].left() > pair.frames[0].right());
        // The seventh row stands alone in the left half.
        const auto last = renderer.printRow(6);
        QCOMPARE(last.views.size(), 1);
        QCOMPARE(last.frames[0].left(), 0.0);
        QVERIFY(last.frames[0].width() < 508 / 2.0);
        // Only even rows start a pair, so only even rows start a page.
        renderer.numberOfPages();
        for (int start : renderer.pageStartTabRowIndices)
            QCOMPARE(start % 2, 0);
    }

    void aRowTallerThanAPageGetsAPageOfItsOwn()
    {
        FixedMeasurer measurer;
        auto config = configuration(3);
        // A single wide column makes a row far taller than a page.
        config.tabData.tabRowDatas[1] =
            TabRowData({TabColumnData(QList<ColumnItemType>(6, ColumnItemType::blank()))}, {});
        TabViewPrintRenderer renderer(config, measurer);
        QVERIFY(renderer.printRow(1).height > 700);
        QCOMPARE(renderer.numberOfPages(), 3);
        QCOMPARE(renderer.pageStartTabRowIndices, (QList<int>{0, 1, 2}));
    }
};

LUTEGRID_TEST_MAIN(TestPrintPagination)
#include "tst_printpagination.moc"
