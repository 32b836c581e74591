#include "editorscreenitem.h"
#include "library/icloudmanager.h"
#include "lutegridqmlimports.h"
#include "mainscene.h"
#include "model/tabfileformat.h"
#include "services/saveddata.h"
#include "shell/appmanager.h"
#include "surfacepalette.h"

#include "appwindow.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QPointingDevice>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

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
class TestSettingsWindow : public QObject {
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
    bool openFile(const QString &name, const QByteArray &bytes, QSize size);
    QQuickItem *item(const QString &name) const { return findItem(window->contentItem(), name); }
    QPoint centerOf(QQuickItem *target) const
    {
        return target->mapToScene(QPointF(target->width() / 2, target->height() / 2)).toPoint();
    }
    void tap(const QString &name);
    void click(const QString &name);
    void waitForStack();
    void saveShot(const QString &name);
    TabSettingsDialogViewController *dialog() const { return c ? c->settingsDialog() : nullptr; }

    TabEditViewController *c = nullptr;
    QPointingDevice *touch = nullptr;
    QString shots;
    std::unique_ptr<QQmlEngine> engine;
    std::unique_ptr<MainScene> scene;
    std::unique_ptr<QQuickWindow> window;
};

void TestSettingsWindow::initTestCase()
{
    touch = QTest::createTouchDevice();
    shots = QDir(QString::fromUtf8(LUTEGRID_SOURCE_DIR)).filePath(u"build/shots-settings"_qs);
    QDir().mkpath(shots);
    iCloudManager::shared().findCloudContainer();
    QTRY_VERIFY(iCloudManager::shared().iCloudContainerUrl);
}

void TestSettingsWindow::init()
{
    QDir folder(storageFolder());
    for (const QString &entry : folder.entryList(QDir::Files | QDir::Hidden))
        folder.remove(entry);
    AppManager::shared().activeDocUrls.clear();
    AppManager::shared().existingTabPaths.clear();
    SavedData &saved = SavedData::shared();
    saved.autoCursorAmount = 0;
    saved.playSounds = false;
    saved.freeScrollSetting = false;
    saved.hideColHeaders = false;
    saved.notesOnTab = false;
    saved.lastFretCount = 25;
    saved.appearanceSetting = 1;
    SurfacePalette::instance()->setDark(false);
    QTest::failOnWarning(QRegularExpression(u"TypeError|ReferenceError|is not a function"_qs));
}

void TestSettingsWindow::cleanup()
{
    c = nullptr;
    window.reset();
    scene.reset();
    engine.reset();
}

void TestSettingsWindow::waitForStack()
{
    QQuickItem *stack = item(u"stack"_qs);
    QVERIFY(stack);
    QTRY_VERIFY(!stack->property("busy").toBool());
}

bool TestSettingsWindow::openFile(const QString &name, const QByteArray &bytes, QSize size)
{
    QFile file(QDir(storageFolder()).filePath(name + u".lgrdi"_qs));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        return false;
    file.close();
    engine = std::make_unique<QQmlEngine>();
    scene = std::make_unique<MainScene>();
    window.reset(scene->loadWindow(*engine));
    if (!window)
        return false;
    window->resize(size);
    window->show();
    if (!QTest::qWaitForWindowExposed(window.get()) ||
        !QTest::qWaitFor([this] { return item(u"tabRow0"_qs) != nullptr; }))
        return false;
    waitForStack();
    tap(u"tabRow0"_qs);
    waitForStack();
    auto *screen = findItem<EditorScreenItem>(window->contentItem());
    if (!screen || !QTest::qWaitFor([screen] { return screen->controller() != nullptr; }))
        return false;
    c = screen->controller();
    return true;
}

void TestSettingsWindow::tap(const QString &name)
{
    QQuickItem *target = item(name);
    QVERIFY2(target, qPrintable(name));
    const QPoint p = centerOf(target);
    QTest::touchEvent(window.get(), touch).press(0, p, window.get());
    QTest::touchEvent(window.get(), touch).release(0, p, window.get());
    QCoreApplication::processEvents();
}

void TestSettingsWindow::click(const QString &name)
{
    QQuickItem *target = item(name);
    QVERIFY2(target, qPrintable(name));
    QTest::mouseClick(window.get(), Qt::LeftButton, {}, centerOf(target));
    QCoreApplication::processEvents();
}

void TestSettingsWindow::saveShot(const QString &name)
{
    QTest::qWait(250);
    const QImage image = window->grabWindow();
    QVERIFY(!image.isNull());
    QVERIFY(image.save(QDir(shots).filePath(name + u".png"_qs)));
}

void TestSettingsWindow::settingsByTouchMouseAndKeys()
{
    QVERIFY(openFile(u"Touch"_qs, melody(u"Touch"_qs, 1), QSize(390, 844)));
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
    QTest::touchEvent(window.get(), touch).press(0, QPoint(10, 830), window.get());
    QTest::touchEvent(window.get(), touch).release(0, QPoint(10, 830), window.get());
    QTRY_VERIFY(!dialog());
    QCOMPARE(tab.lyricSize, 105);
}

void TestSettingsWindow::stringLabelNoteMenu()
{
    QVERIFY(openFile(u"Tuning"_qs, melody(u"Tuning"_qs, 1), QSize(390, 844)));
    tap(u"tabSettingsButt"_qs);
    QTRY_VERIFY(item(u"stringLabel6"_qs));
    // A finger on the low string, slid to D and lifted.
    const QPoint start = centerOf(item(u"stringLabel6"_qs));
    QTest::touchEvent(window.get(), touch).press(0, start, window.get());
    QTRY_VERIFY(item(u"noteEntryD"_qs));
    saveShot(u"settings-note-menu"_qs);
    const QPoint d = centerOf(item(u"noteEntryD"_qs));
    QTest::touchEvent(window.get(), touch).move(0, (start + d) / 2, window.get());
    QTest::touchEvent(window.get(), touch).move(0, d, window.get());
    QTest::touchEvent(window.get(), touch).release(0, d, window.get());
    QCoreApplication::processEvents();
    QCOMPARE(dialog()->stringLabel(6), u"D"_qs);
    // A string changed by hand makes the tuning custom, even where it matches a preset.
    QCOMPARE(dialog()->tuningNames().value(dialog()->tuningIndex()), u"Custom"_qs);
    // The mouse: a click opens the ring, a second click picks a note.
    click(u"stringLabel1"_qs);
    QTRY_VERIFY(item(u"noteEntryF"_qs));
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
    QVERIFY(openFile(u"Intro"_qs, melody(u"Intro"_qs, 1), QSize(390, 844)));
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
    for (QChar ch : u"Capo 2, slowly"_qs)
        QTest::keyClick(window.get(), ch.toLatin1());
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
    QVERIFY(openFile(u"Shots"_qs, melody(u"Shots"_qs, 2), size));
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
    QVERIFY(openFile(u"Wide"_qs, melody(u"Wide"_qs, 4), size));
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

int main(int argc, char *argv[])
{
    QTemporaryDir home;
    qputenv("LUTEGRID_HOME", home.path().toLocal8Bit());
    QGuiApplication app(argc, argv);
    TestSettingsWindow test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_settingswindow.moc"
