#include "model/tabfileformat.h"
#include "services/saveddata.h"

#include "appwindow.h"

namespace {

// A tab of `rows` rows with a short melody in the first.
QByteArray melody(const QString &title, int rows)
{
    TabData tab(title, 6);
    for (int r = 0; r < rows; ++r)
        tab.tabRowDatas.append(TabRowData(32, 6));
    const int frets[] = {0, 2, 3, 5, 3, 2, 0, 7};
    for (int c = 0; c < 8; ++c)
        tab.tabRowDatas[0].colDatas[c].setColumnItem(c % 3 + 1, ColumnItemType::note(frets[c]));
    tab.tabRowDatas[0].colDatas[0].chordName = u"Am"_qs;
    tab.tabRowDatas[0].setLyricText(u"Hello darkness"_qs);
    return documentData(tab);
}

} // namespace

// The tab settings dialog in the real window, by finger, mouse and keys, and the editor on
// a desktop-sized window.
class TestSettingsWindow : public QObject, AppWindow {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void settingsByTouchMouseAndKeys();
    void stringLabelNoteMenu();
    void warningAndIntro();
    void dialogScreenshots_data();
    void dialogScreenshots();
    void wideEditor_data();
    void wideEditor();

private:
    TabSettingsDialogViewController *dialog() const { return c ? c->settingsDialog() : nullptr; }
};

void TestSettingsWindow::initTestCase()
{
    start(u"shots-settings"_qs);
}

void TestSettingsWindow::init()
{
    resetStorage();
    SavedData &saved = SavedData::shared();
    saved.autoCursorAmount = 0;
    saved.playSounds = false;
    saved.freeScrollSetting = false;
    saved.hideColHeaders = false;
    saved.notesOnTab = false;
    saved.lastFretCount = 25;
    saved.appearanceSetting = 1;
}

void TestSettingsWindow::cleanup()
{
    closeWindow();
}

void TestSettingsWindow::settingsByTouchMouseAndKeys()
{
    QVERIFY(openTab(u"Touch.lgrdi"_qs, melody(u"Touch"_qs, 1), QSize(390, 844)));
    const TabData &tab = c->tabData();

    // A finger: the settings button, one more string, sounds on, save.
    tap(u"tabSettingsButt"_qs);
    QTRY_VERIFY(item(u"dialogBg"_qs));
    tap(u"stringCountUp"_qs);
    QCOMPARE(dialog()->stringCount(), 7);
    tap(u"playSoundsSwitch"_qs);
    QVERIFY(dialog()->playSounds);
    tap(u"saveChangesButt"_qs);
    // Notes on the tab: the warning first.
    QTRY_VERIFY(item(u"warningView"_qs));
    tap(u"continueAfterWarning"_qs);
    QTRY_VERIFY(!dialog());
    QCOMPARE(tab.stringCount(), 7);
    QVERIFY(SavedData::shared().playSounds);
    QTRY_VERIFY(!item(u"dialogBg"_qs));

    // The mouse: the automatic cursor to 2 and a bigger lyric size.
    click(u"tabSettingsButt"_qs);
    QTRY_VERIFY(item(u"dialogBg"_qs));
    click(u"autoCursorUp"_qs);
    click(u"autoCursorUp"_qs);
    click(u"lyricSizeUp"_qs);
    click(u"saveChangesButt"_qs);
    QTRY_VERIFY(!dialog());
    QCOMPARE(SavedData::shared().autoCursorAmount, 2);
    QCOMPARE(tab.lyricSize, 105);

    // Keys: Ctrl+, opens, Escape leaves with nothing changed, Return saves.
    auto *screen = findItem<EditorScreenItem>(window->contentItem());
    QTRY_VERIFY(screen->hasActiveFocus());
    QTest::keyClick(window.get(), Qt::Key_Comma, Qt::ControlModifier);
    QTRY_VERIFY(dialog());
    QTRY_VERIFY(item(u"dialogBg"_qs));
    dialog()->setCapoSlider(4);
    QTest::keyClick(window.get(), Qt::Key_Right);
    QCOMPARE(c->tabEditView()->editColIndex, 0);
    QTest::keyClick(window.get(), Qt::Key_Escape);
    QTRY_VERIFY(!dialog());
    QCOMPARE(tab.capoFret, 0);
    QTRY_VERIFY(screen->hasActiveFocus());
    QTest::keyClick(window.get(), Qt::Key_Comma, Qt::ControlModifier);
    QTRY_VERIFY(dialog());
    dialog()->setCapoSlider(4);
    QTest::keyClick(window.get(), Qt::Key_Return);
    QTRY_VERIFY(!dialog());
    QCOMPARE(tab.capoFret, 4);
    // The undo button takes back the tab's part.
    QTRY_VERIFY(screen->hasActiveFocus());
    QTest::keyClick(window.get(), Qt::Key_Z, Qt::ControlModifier);
    QCOMPARE(tab.capoFret, 0);

    // A tap on the dim outside the panel closes without saving.
    tap(u"tabSettingsButt"_qs);
    QTRY_VERIFY(item(u"dialogBg"_qs));
    tap(u"lyricSizeDown"_qs);
    tap(QPoint(10, 830));
    QTRY_VERIFY(!dialog());
    QCOMPARE(tab.lyricSize, 105);
}

void TestSettingsWindow::stringLabelNoteMenu()
{
    QVERIFY(openTab(u"Tuning.lgrdi"_qs, melody(u"Tuning"_qs, 1), QSize(390, 844)));
    tap(u"tabSettingsButt"_qs);
    QTRY_VERIFY(item(u"stringLabel6"_qs));
    // A finger on the low string, slid to D and lifted.
    const QPoint start = centerOf(item(u"stringLabel6"_qs));
    touches().press(0, start, window.get());
    QTRY_VERIFY(item(u"noteEntryD"_qs));
    saveShot(u"settings-note-menu"_qs);
    const QPoint d = centerOf(item(u"noteEntryD"_qs));
    touches().move(0, (start + d) / 2, window.get());
    touches().move(0, d, window.get());
    touches().release(0, d, window.get());
    QCoreApplication::processEvents();
    QCOMPARE(dialog()->stringLabel(6), u"D"_qs);
    // A string changed by hand makes the tuning custom, even where it matches a preset.
    QCOMPARE(dialog()->tuningNames().value(dialog()->tuningIndex()), u"Custom"_qs);
    // The mouse: a click opens the ring, a second click picks a note.
    click(u"stringLabel1"_qs);
    click(u"noteEntryF"_qs);
    QTRY_VERIFY(!item(u"noteEntryF"_qs));
    QCOMPARE(dialog()->stringLabel(1), u"F"_qs);
    // Keys on a focused label step it.
    item(u"stringLabel5"_qs)->forceActiveFocus();
    QTest::keyClick(window.get(), Qt::Key_Up);
    QCOMPARE(dialog()->stringLabel(5), u"A#"_qs);
    // The dialog stays up after a choice: the lifting finger was no tap outside.
    QVERIFY(dialog());
    tap(u"saveChangesButt"_qs);
    QTRY_VERIFY(!dialog());
    QCOMPARE(c->tabData().stringNotes,
             QStringList({u"D"_qs, u"A#"_qs, u"D"_qs, u"G"_qs, u"B"_qs, u"F"_qs}));
}

void TestSettingsWindow::warningAndIntro()
{
    QVERIFY(openTab(u"Intro.lgrdi"_qs, melody(u"Intro"_qs, 1), QSize(390, 844)));
    tap(u"tabSettingsButt"_qs);
    QTRY_VERIFY(item(u"dialogBg"_qs));
    tap(u"stringCountDown"_qs);
    tap(u"saveChangesButt"_qs);
    QTRY_VERIFY(item(u"warningView"_qs));
    saveShot(u"settings-warning"_qs);
    tap(u"cancelAfterWarning"_qs);
    QTRY_VERIFY(!item(u"warningView"_qs));
    QCOMPARE(dialog()->stringCount(), 6);

    tap(u"introButt"_qs);
    QTRY_VERIFY(item(u"introTextView"_qs));
    QTRY_VERIFY(item(u"introTextView"_qs)->hasActiveFocus());
    typeText(u"Capo 2, slowly"_qs);
    tap(u"introDoneButt"_qs);
    QTRY_VERIFY(!item(u"introEditor"_qs));
    QCOMPARE(dialog()->introButtTitle(), u"Edit tab intro"_qs);
    tap(u"saveChangesButt"_qs);
    QTRY_VERIFY(!dialog());
    QCOMPARE(c->tabData().introText, u"Capo 2, slowly"_qs);
}

void TestSettingsWindow::dialogScreenshots_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<bool>("dark");
    QTest::newRow("phone-light") << QSize(390, 844) << false;
    QTest::newRow("phone-dark") << QSize(390, 844) << true;
    QTest::newRow("desktop-light") << QSize(1280, 800) << false;
    QTest::newRow("desktop-dark") << QSize(1280, 800) << true;
}

void TestSettingsWindow::dialogScreenshots()
{
    QFETCH(QSize, size);
    QFETCH(bool, dark);
    const QString tag = QString::fromLatin1(QTest::currentDataTag());
    SavedData::shared().appearanceSetting = dark ? 2 : 1;
    QVERIFY(openTab(u"Shots.lgrdi"_qs, melody(u"Shots"_qs, 2), size));
    tap(u"tabSettingsButt"_qs);
    QTRY_VERIFY(item(u"dialogBg"_qs));
    saveShot(u"settings-"_qs + tag);
    // The tuning list, opened by a finger; a tap on a row picks it.
    tap(u"tuningPicker"_qs);
    QTRY_VERIFY(findItem(window->contentItem()->parentItem(), u"tuningPopupList"_qs) ||
                QTest::qWaitFor([] { return true; }, 300));
    saveShot(u"settings-"_qs + tag + u"-tunings"_qs);
    QTest::keyClick(window.get(), Qt::Key_Down);
    QTest::keyClick(window.get(), Qt::Key_Return);
    QTRY_COMPARE(dialog()->tuningNames().value(dialog()->tuningIndex()), u"Drop D"_qs);
    tap(u"viewAllGeneralButt"_qs);
    QTRY_VERIFY(item(u"moreGeneralView"_qs));
    auto *scroll = item(u"settingsScroll"_qs);
    QTest::qWait(100);
    scroll->setProperty("contentY", std::max(0.0, scroll->property("contentHeight").toDouble() -
                                                      scroll->height()));
    saveShot(u"settings-"_qs + tag + u"-general"_qs);
}

void TestSettingsWindow::wideEditor_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<int>("rows");
    QTest::addColumn<bool>("freeScroll");
    QTest::newRow("1280x800") << QSize(1280, 800) << 1 << false;
    QTest::newRow("1920x1080") << QSize(1920, 1080) << 2 << false;
    // Free scroll, a tablet's choice, lays every row out and scrolls them.
    QTest::newRow("1920x1080-free") << QSize(1920, 1080) << 4 << true;
}

void TestSettingsWindow::wideEditor()
{
    QFETCH(QSize, size);
    QFETCH(int, rows);
    QFETCH(bool, freeScroll);
    SavedData::shared().freeScrollSetting = freeScroll;
    QVERIFY(openTab(u"Wide.lgrdi"_qs, melody(u"Wide"_qs, 4), size));
    // The rows take the width beside the letters and the indicator.
    QCOMPARE(c->tabEditViewWidth, size.width() - 28.0 - 14.0);
    auto *surface = item(u"surface"_qs);
    QCOMPARE(surface->width(), c->tabEditViewWidth);
    QCOMPARE(c->visibleRows, rows);
    QCOMPARE(c->freeScroll(), freeScroll);
    // The string letters stand at the rows' left edge, one set per laid-out row.
    QQuickItem *letters = item(u"tabLetters"_qs);
    QCOMPARE(letters->x(), freeScroll ? c->tabLeftInset() : 0.0);
    if (freeScroll)
        QVERIFY(letters->height() > surface->height());
    // The fretboard keeps its own height however tall the window.
    QCOMPARE(c->fretboardHeight, 330.0);
    saveShot(u"editor-"_qs + QString::fromLatin1(QTest::currentDataTag()));
}

LUTEGRID_WINDOW_TEST_MAIN(TestSettingsWindow)
#include "tst_settingswindow.moc"
