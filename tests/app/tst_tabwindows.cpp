#include "appdelegate.h"
#include "editorscreenitem.h"
#include "library/icloudmanager.h"
#include "lutegridqmlimports.h"
#include "mainscene.h"
#include "model/tabfileformat.h"
#include "services/saveddata.h"
#include "shell/appmanager.h"
#include "surfacepalette.h"
#include "tabscene.h"
#include "tabslistviewcontroller.h"

#include "appwindow.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QPainter>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

namespace {

QString tabPath(const QString &name)
{
    return QDir(storageFolder()).filePath(name + u".lgrdi"_qs);
}

void writeTab(const QString &name, const QDateTime &modified)
{
    TabData tab(name, 6);
    tab.tabRowDatas.append(TabRowData(16, 6));
    QFile file(tabPath(name));
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(documentData(tab));
    QVERIFY(file.flush());
    QVERIFY(file.setFileTime(modified, QFileDevice::FileModificationTime));
}

// The frets written in the tab's file, row by row, as they read back from disk.
QList<qint64> fretsOnDisk(const QString &name)
{
    QFile file(tabPath(name));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const auto tab = tabDataFromDocumentData(file.readAll());
    QList<qint64> frets;
    if (!tab)
        return frets;
    for (const TabRowData &row : tab->tabRowDatas) {
        for (const TabColumnData &column : row.colDatas) {
            for (const ColumnItemType &item : column.columnItems) {
                if (item.isNote())
                    frets.append(item.fret());
            }
        }
    }
    return frets;
}

} // namespace

// Tab windows beside the main window: made from the list's context menu, one per tab, each
// saving what it edits when it closes; requests from outside reach the right window.
class TestTabWindows : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void twoWindowsTwoTabsBothSaved();
    void openTabAlreadyInAWindowBringsItForward();
    void newTabWindowAndItsLimits();
    void requestsFromOutside();
    void screenshots_data();
    void screenshots();

private:
    void openMain();
    TabScene *openFromContextMenu(int row);
    void typeFret(TabScene *tabScene, Qt::Key key);
    void settle(QQuickWindow *target);

    QPointingDevice *touch = nullptr;
    QString shots;
    std::unique_ptr<QQmlEngine> engine;
    std::unique_ptr<AppDelegate> delegate;
    QQuickWindow *window = nullptr;
};

void TestTabWindows::initTestCase()
{
    touch = QTest::createTouchDevice();
    shots = QDir(QString::fromUtf8(LUTEGRID_SOURCE_DIR)).filePath(u"build/shots-windows"_qs);
    QDir().mkpath(shots);
    iCloudManager::shared().findCloudContainer();
    QTRY_VERIFY(iCloudManager::shared().iCloudContainerUrl);
}

void TestTabWindows::init()
{
    SavedData &saved = SavedData::shared();
    saved.icloudOff = true;
    saved.tabCreateCount = 1;
    // Typed frets need the free-scroll layout.
    saved.freeScrollSetting = true;
    saved.appearanceSetting = 1;
    iCloudManager::shared().iCloudAccountAvailabilityChanged();
    QTRY_VERIFY(iCloudManager::shared().iCloudContainerUrl);
    QDir(storageFolder()).removeRecursively();
    QDir().mkpath(storageFolder());
    AppManager::shared().activeDocUrls.clear();
    SurfacePalette::instance()->setDark(false);
    const QDateTime now = QDateTime::currentDateTime();
    writeTab(u"Alpha"_qs, now.addDays(-1));
    writeTab(u"Beta"_qs, now.addDays(-2));
    QTest::failOnWarning(QRegularExpression(u"TypeError|ReferenceError|is not a function"_qs));
}

void TestTabWindows::cleanup()
{
    delegate.reset();
    engine.reset();
    window = nullptr;
}

void TestTabWindows::openMain()
{
    engine = std::make_unique<QQmlEngine>();
    delegate = std::make_unique<AppDelegate>(*engine);
    window = delegate->openMainWindow();
    QVERIFY(window);
    window->setGeometry(20, 20, 420, 760);
    window->show();
    QVERIFY(QTest::qWaitForWindowExposed(window));
    QTRY_COMPARE(delegate->mainScene()->topKind(), MainScene::TabsList);
    QTRY_COMPARE(delegate->mainScene()->topList()->rowNames().size(), 2);
    settle(window);
}

void TestTabWindows::settle(QQuickWindow *target)
{
    QQuickItem *stack = findItem(target->contentItem(), u"stack"_qs);
    QTRY_VERIFY(stack && !stack->property("busy").toBool());
    QTest::qWait(50);
}

// A right click on the row and the menu's item, as a mouse user does.
TabScene *TestTabWindows::openFromContextMenu(int row)
{
    QSignalSpy opened(delegate.get(), &AppDelegate::tabWindowOpened);
    QQuickItem *rowItem = findItem(window->contentItem(), u"tabRow%1"_qs.arg(row));
    if (!rowItem)
        return nullptr;
    const QPoint point = rowItem->mapToScene(QPointF(80, rowItem->height() / 2)).toPoint();
    QTest::mouseClick(window, Qt::RightButton, {}, point);
    (void)QTest::qWaitFor([this] { return findItem(window->contentItem(), u"openInNewWindowButt"_qs); },
                    2000);
    QQuickItem *menuItem = findItem(window->contentItem(), u"openInNewWindowButt"_qs);
    if (!menuItem)
        return nullptr;
    QTest::qWait(250);
    const QPoint at = menuItem->mapToScene(QPointF(menuItem->width() / 2, menuItem->height() / 2))
                          .toPoint();
    QTest::mouseClick(window, Qt::LeftButton, {}, at);
    if (opened.isEmpty() && !opened.wait(2000))
        return nullptr;
    return opened.first().first().value<TabScene *>();
}

void TestTabWindows::typeFret(TabScene *tabScene, Qt::Key key)
{
    QQuickWindow *target = tabScene->window();
    target->requestActivate();
    auto *screen = findItem<EditorScreenItem>(target->contentItem());
    QVERIFY(screen);
    QTRY_VERIFY(screen->controller());
    screen->forceActiveFocus();
    QTRY_VERIFY(screen->hasActiveFocus());
    QTest::keyClick(target, key);
}

void TestTabWindows::twoWindowsTwoTabsBothSaved()
{
    openMain();
    TabScene *alpha = openFromContextMenu(0);
    QVERIFY(alpha);
    QCOMPARE(alpha->window()->title(), u"Edit - Alpha"_qs);
    // The window holds the editor alone: no way back to a list it doesn't have.
    QVERIFY(QTest::qWaitForWindowExposed(alpha->window()));
    QQuickItem *back = findItem(alpha->window()->contentItem(), u"backButton"_qs);
    QVERIFY(!back || !back->isVisible());
    QVERIFY(alpha->window()->minimumSize() == QSize(450, 600));

    // Touch: a long press on the row opens the same menu.
    QQuickItem *row = findItem(window->contentItem(), u"tabRow1"_qs);
    const QPoint point = row->mapToScene(QPointF(80, row->height() / 2)).toPoint();
    QTest::touchEvent(window, touch).press(0, point, window);
    QTRY_VERIFY_WITH_TIMEOUT(findItem(window->contentItem(), u"openInNewWindowButt"_qs), 3000);
    QTest::touchEvent(window, touch).release(0, point, window);
    QTest::qWait(250);
    QQuickItem *menuItem = findItem(window->contentItem(), u"openInNewWindowButt"_qs);
    QVERIFY(menuItem);
    QSignalSpy opened(delegate.get(), &AppDelegate::tabWindowOpened);
    const QPoint at = menuItem->mapToScene(QPointF(menuItem->width() / 2, menuItem->height() / 2))
                          .toPoint();
    QTest::touchEvent(window, touch).press(0, at, window);
    QTest::touchEvent(window, touch).release(0, at, window);
    QVERIFY(opened.wait(2000) || !opened.isEmpty());
    TabScene *beta = opened.first().first().value<TabScene *>();
    QCOMPARE(beta->window()->title(), u"Edit - Beta"_qs);
    QVERIFY(QTest::qWaitForWindowExposed(beta->window()));
    QCOMPARE(delegate->tabScenes().size(), 2);
    // The main window stays on its list.
    QCOMPARE(delegate->mainScene()->topKind(), MainScene::TabsList);

    typeFret(alpha, Qt::Key_3);
    typeFret(beta, Qt::Key_7);
    // Closing finishes the editing with no question: the rows are on disk at once.
    QVERIFY(alpha->window()->close());
    QCOMPARE(delegate->tabScenes().size(), 1);
    QCOMPARE(fretsOnDisk(u"Alpha"_qs), QList<qint64>{3});
    QVERIFY(beta->window()->close());
    QCOMPARE(delegate->tabScenes().size(), 0);
    QCOMPARE(fretsOnDisk(u"Beta"_qs), QList<qint64>{7});
    QTRY_VERIFY(!AppManager::shared().isOpenInEditor(u"Beta.lgrdi"_qs));
}

void TestTabWindows::openTabAlreadyInAWindowBringsItForward()
{
    openMain();
    TabsListViewController *list = delegate->mainScene()->topList();
    TabScene *alpha = openFromContextMenu(0);
    QVERIFY(alpha);
    QVERIFY(AppManager::shared().isOpenInEditor(u"Alpha.lgrdi"_qs));
    LutegridDocument *document = alpha->editorDocument();
    const int documents = int(AppManager::shared().activeDocUrls.size());

    // A touch on its row in the list: no editor over the list, no second document.
    window->requestActivate();
    QCOMPARE(list->tabOpenFlow.openTab(u"Alpha.lgrdi"_qs), TabOpenFlow::Outcome::BroughtForward);
    QCOMPARE(delegate->mainScene()->topKind(), MainScene::TabsList);
    // "Open in New Window" again, and the file handed over from outside: the same window.
    QSignalSpy opened(delegate.get(), &AppDelegate::tabWindowOpened);
    list->openRowInNewWindow(0);
    delegate->handle(WindowRequest{WindowRequest::Kind::OpenFiles, {tabPath(u"Alpha"_qs)}});
    QCOMPARE(opened.size(), 0);
    QCOMPARE(delegate->tabScenes().size(), 1);
    QCOMPARE(delegate->mainScene()->topKind(), MainScene::TabsList);
    QCOMPARE(int(AppManager::shared().activeDocUrls.size()), documents);
    QCOMPARE(AppManager::shared().documentFor(tabPath(u"Alpha"_qs)), document);

    // A tab the main window is editing is not opened a second time in a window.
    list->openRow(1);
    QTRY_COMPARE(delegate->mainScene()->topKind(), MainScene::Editor);
    TabScene *beta = delegate->openTabWindow(tabPath(u"Beta"_qs));
    QVERIFY(beta && !beta->editorDocument());
    QCOMPARE(beta->message(), TabScene::openElsewhereMessage);
    QCOMPARE(beta->window()->maximumSize(), QSize(600, 300));
}

void TestTabWindows::newTabWindowAndItsLimits()
{
    openMain();
    TabScene *first = delegate->openTabWindow(std::nullopt);
    TabScene *second = delegate->openTabWindow(std::nullopt);
    QVERIFY(first && second && first != second);
    QCOMPARE(first->window()->title(), u"Edit - Untitled 1"_qs);
    QCOMPARE(second->window()->title(), u"Edit - Untitled 2"_qs);
    QVERIFY(QFile::exists(tabPath(u"Untitled 1"_qs)));
    QVERIFY(QFile::exists(tabPath(u"Untitled 2"_qs)));
    // A tab window's new-tab key makes another window, not a tab in this one.
    typeFret(first, Qt::Key_1);
    QSignalSpy opened(delegate.get(), &AppDelegate::tabWindowOpened);
    QTest::keyClick(first->window(), Qt::Key_N, Qt::ControlModifier);
    QTRY_COMPARE(opened.size(), 1);
    QCOMPARE(delegate->tabScenes().size(), 3);
    delegate->tabScenes().last()->window()->close();
    QTRY_COMPARE(delegate->tabScenes().size(), 2);

    // No storage folder: the window says so and makes no file.
    const QStringList before = QDir(storageFolder()).entryList(QDir::Files);
    const auto folder = iCloudManager::shared().iCloudContainerUrl;
    iCloudManager::shared().iCloudContainerUrl.reset();
    TabScene *failed = delegate->openTabWindow(std::nullopt);
    iCloudManager::shared().iCloudContainerUrl = folder;
    QVERIFY(failed && !failed->editorDocument());
    QCOMPARE(failed->message(), TabScene::newTabFailedMessage);
    auto *label = findItem(failed->window()->contentItem(), u"emptyMsgLabel"_qs);
    QVERIFY(label && label->property("text").toString().contains(u"support@lutegrid.org"_qs));
    QCOMPARE(QDir(storageFolder()).entryList(QDir::Files), before);
}

void TestTabWindows::requestsFromOutside()
{
    openMain();
    MainScene *scene = delegate->mainScene();
    // The import action: the picker over the list.
    delegate->handle(WindowRequest{WindowRequest::Kind::Import, {}});
    QTRY_VERIFY(findItem(window->contentItem(), u"chooserList"_qs));

    // An exchange file: the import dialog, its name proposed from the file's.
    QTemporaryDir outside;
    const QString exchange = outside.filePath(u"Gamma.lgrd"_qs);
    QFile file(exchange);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(*exchangeData(TabData(u"Gamma"_qs, 6)));
    file.close();
    delegate->handle(WindowRequest{WindowRequest::Kind::OpenFiles, {exchange}});
    QTRY_VERIFY(findItem(window->contentItem(), u"tabNameField"_qs));
    QCOMPARE(findItem(window->contentItem(), u"tabNameField"_qs)->property("text").toString(),
             u"Gamma"_qs);

    // A tab of the storage folder opens over the list, as a touch on its row would.
    scene->topList()->showMessage(QString());
    delegate.reset();
    engine.reset();
    openMain();
    delegate->handle(WindowRequest{WindowRequest::Kind::OpenFiles, {tabPath(u"Beta"_qs)}});
    QTRY_COMPARE(delegate->mainScene()->topKind(), MainScene::Editor);
    QCOMPARE(delegate->mainScene()->editorDocument()->fileURL(), tabPath(u"Beta"_qs));

    // The new-tab action: a window of its own.
    delegate->handle(WindowRequest{WindowRequest::Kind::NewTab, {}});
    QTRY_COMPARE(delegate->tabScenes().size(), 1);
}

void TestTabWindows::screenshots_data()
{
    QTest::addColumn<bool>("dark");
    QTest::newRow("light") << false;
    QTest::newRow("dark") << true;
}

// The main window and a tab window side by side, at desktop size, as one picture.
void TestTabWindows::screenshots()
{
    QFETCH(bool, dark);
    SavedData::shared().appearanceSetting = dark ? 2 : 1;
    openMain();
    window->resize(480, 800);
    TabScene *alpha = openFromContextMenu(0);
    QVERIFY(alpha);
    alpha->window()->resize(1000, 800);
    typeFret(alpha, Qt::Key_5);
    QTest::qWait(400);
    const QImage left = window->grabWindow();
    const QImage right = alpha->window()->grabWindow();
    QImage both(left.width() + right.width() + 16, std::max(left.height(), right.height()),
                QImage::Format_RGB32);
    both.fill(Qt::gray);
    QPainter painter(&both);
    painter.drawImage(0, 0, left);
    painter.drawImage(left.width() + 16, 0, right);
    painter.end();
    const QString theme = dark ? u"dark"_qs : u"light"_qs;
    QVERIFY(both.save(QDir(shots).filePath(u"two-windows-%1.png"_qs.arg(theme))));

    // The row's context menu, as a right click shows it.
    QQuickItem *row = findItem(window->contentItem(), u"tabRow1"_qs);
    QTest::mouseClick(window, Qt::RightButton, {},
                      row->mapToScene(QPointF(120, row->height() / 2)).toPoint());
    QTRY_VERIFY(findItem(window->contentItem(), u"openInNewWindowButt"_qs));
    // The menu only: the row doesn't open under it.
    QCOMPARE(delegate->mainScene()->topKind(), MainScene::TabsList);
    QTest::qWait(300);
    QVERIFY(window->grabWindow().save(QDir(shots).filePath(u"row-menu-%1.png"_qs.arg(theme))));
    QTest::keyClick(window, Qt::Key_Escape);
}

int main(int argc, char *argv[])
{
    QTemporaryDir home;
    qputenv("LUTEGRID_HOME", home.path().toLocal8Bit());
    QGuiApplication app(argc, argv);
    TestTabWindows test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_tabwindows.moc"
