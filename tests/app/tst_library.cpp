#include "export/asciitabreader.h"
#include "export/musicxml.h"
#include "exportalldialogviewcontroller.h"
#include "filechoosercontroller.h"
#include "importdialogviewcontroller.h"
#include "menudialogviewcontroller.h"
#include "model/tabfileformat.h"
#include "services/saveddata.h"
#include "tabinfoviewcontroller.h"
#include "tabslistviewcontroller.h"

#include "appwindow.h"

namespace {

void writeTab(const QString &name, qint64 fret, const QDateTime &modified)
{
    TabData tab(name, 6);
    tab.tabRowDatas.append(TabRowData(16, 6));
    tab.tabRowDatas[0].colDatas[0].setColumnItem(1, ColumnItemType::note(fret));
    QFile file(QDir(storageFolder()).filePath(name + u".lgrdi"_qs));
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(documentData(tab));
    QVERIFY(file.flush());
    QVERIFY(file.setFileTime(modified, QFileDevice::FileModificationTime));
}

} // namespace

// The library in the window: the list with search and sort, delete and restore, the tab info
// dialog with its labels, import, the Menu with the sync folder and the look, and the back-up.
class TestLibraryWindow : public QObject, AppWindow {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void searchAndSort();
    void deleteAndRestoreInTheWindow();
    void tabInfoRenameCopyAndLabels();
    void labelLimitAndRemoval();
    void removeFolderFromEmptyLabelList();
    void importDialog();
    void importOtherForms();
    void menuSyncFolderAndAppearance();
    void backupDialog();
    void screenshots_data();
    void screenshots();

private:
    bool open(QSize size = QSize(390, 844))
    {
        if (!openWindow(size))
            return false;
        settle();
        return true;
    }
    // A tap once the item has shown and laid out, and the screens still after it.
    void tapWhenStill(const QString &name)
    {
        QTRY_VERIFY2(item(name), qPrintable(name));
        QTest::qWait(60);
        tap(name);
        settle();
    }
    void typeInto(const QString &field, const QString &text);
    void writeThreeTabs();
};

void TestLibraryWindow::initTestCase()
{
    start(u"shots-library"_qs);
}

void TestLibraryWindow::init()
{
    SavedData &saved = SavedData::shared();
    saved.icloudOff = true;
    saved.cloudFolder.reset();
    saved.hasTurnedICloudOff = false;
    saved.tabCreateCount = 1;
    saved.appearanceSetting = 1;
    saved.localTagMap = TabTagStore::TagMap();
    saved.tagMapLoaded = true;
    iCloudManager::shared().iCloudAccountAvailabilityChanged();
    QTRY_VERIFY(iCloudManager::shared().iCloudContainerUrl);
    resetStorage();
}

void TestLibraryWindow::cleanup()
{
    closeWindow();
}

void TestLibraryWindow::typeInto(const QString &field, const QString &text)
{
    QQuickItem *target = item(field);
    QVERIFY2(target, qPrintable(field));
    target->forceActiveFocus();
    QMetaObject::invokeMethod(target, "selectAll");
    typeText(text);
    QCoreApplication::processEvents();
}

void TestLibraryWindow::writeThreeTabs()
{
    const QDateTime now = QDateTime::currentDateTime();
    writeTab(u"Song 10"_qs, 1, now.addDays(-3));
    writeTab(u"Blackbird"_qs, 2, now.addDays(-1));
    writeTab(u"Song 2"_qs, 3, now.addDays(-2));
}

void TestLibraryWindow::searchAndSort()
{
    writeThreeTabs();
    QVERIFY(open());
    TabsListViewController *list = scene->topList();
    QTRY_COMPARE(list->rowNames(), (QStringList{u"Blackbird"_qs, u"Song 2"_qs, u"Song 10"_qs}));
    QVERIFY(list->rows().first().toMap().value(u"detail"_qs).toString().size() > 0);

    // Typed into the search field, in any case.
    typeInto(u"searchBar"_qs, u"SONG"_qs);
    QCOMPARE(list->rowNames(), (QStringList{u"Song 2"_qs, u"Song 10"_qs}));
    // A scan arriving meanwhile is searched again.
    writeTab(u"Songbird"_qs, 4, QDateTime::currentDateTime());
    AppManager::shared().refreshTabs();
    QCOMPARE(list->rowNames(), (QStringList{u"Songbird"_qs, u"Song 2"_qs, u"Song 10"_qs}));
    // The touched row is the row shown, not the row of the whole list.
    QVERIFY(item(u"tabRow1"_qs));

    typeInto(u"searchBar"_qs, u"zzz"_qs);
    QCOMPARE(list->emptyText(), u"No tabs found"_qs);
    QVERIFY(!list->emptyHasHelp());

    list->setSearchText(QString());
    tapWhenStill(u"sortButt"_qs);
    QCOMPARE(scene->dialogs()->kind(), DialogHost::Kind::TwoOption);
    QCOMPARE(scene->dialogs()->optionTxt2, u"Sort Alphabetically"_qs);
    tapWhenStill(u"optionTwoButt"_qs);
    QCOMPARE(list->rowNames(),
             (QStringList{u"Blackbird"_qs, u"Song 2"_qs, u"Song 10"_qs, u"Songbird"_qs}));
    tapWhenStill(u"sortButt"_qs);
    tapWhenStill(u"optionOneButt"_qs);
    QCOMPARE(list->rowNames().first(), u"Songbird"_qs);
}

void TestLibraryWindow::deleteAndRestoreInTheWindow()
{
    writeThreeTabs();
    QVERIFY(open());
    TabsListViewController *list = scene->topList();
    QTRY_COMPARE(list->rowNames().size(), 3);
    // The Delete key on a focused row asks first.
    QQuickItem *row = item(u"tabRow0"_qs);
    row->forceActiveFocus();
    QTest::keyClick(window.get(), Qt::Key_Delete);
    QCOMPARE(scene->dialogs()->kind(), DialogHost::Kind::Confirm);
    QCOMPARE(scene->dialogs()->messageString,
             u"Are you sure you want to delete \"Blackbird\"?\n\nIt will be removed from all custom folders."_qs);
    tapWhenStill(u"confirmButt"_qs);
    QCOMPARE(list->rowNames(), (QStringList{u"Song 2"_qs, u"Song 10"_qs}));
    QVERIFY(QFile::exists(QDir(storageFolder()).filePath(u"Deleted/Blackbird.lgrdi"_qs)));

    // A finger swiping a row to the left uncovers its Delete button.
    QQuickItem *second = item(u"tabRow1"_qs);
    const QPointF centre(second->width() / 2, second->height() / 2);
    QPoint at = second->mapToScene(centre + QPointF(120, 0)).toPoint();
    touches().press(0, at, window.get());
    for (int step = 0; step < 12; ++step) {
        at.rx() -= 20;
        touches().move(0, at, window.get());
        QTest::qWait(10);
    }
    touches().release(0, at, window.get());
    saveShot(u"swipe-delete"_qs);
    tapWhenStill(u"swipeDeleteButt"_qs);
    QCOMPARE(scene->dialogs()->messageString.left(40),
             u"Are you sure you want to delete \"Song 10\""_qs.left(40));
    scene->dialogs()->tapOutside();
    QCOMPARE(list->rowNames().size(), 2);

    // The Deleted list: a touch asks to restore.
    scene->goBack();
    settle();
    tapWhenStill(u"folderRow2"_qs);
    TabsListViewController *deleted = scene->topList();
    QVERIFY(deleted->isDeletedFolder());
    QTRY_COMPARE(deleted->rowNames(), QStringList{u"Blackbird"_qs});
    QVERIFY(item(u"clearButt"_qs));
    QVERIFY(!item(u"newTabButt"_qs));
    tapWhenStill(u"tabRow0"_qs);
    QCOMPARE(scene->dialogs()->messageString, u"Restore this tab?"_qs);
    QCOMPARE(scene->dialogs()->confirmTxt, u"Restore"_qs);
    tapWhenStill(u"confirmButt"_qs);
    QVERIFY(QFile::exists(QDir(storageFolder()).filePath(u"Blackbird.lgrdi"_qs)));
    QVERIFY(deleted->rowNames().isEmpty());
    tapWhenStill(u"clearButt"_qs);
    QCOMPARE(scene->dialogs()->messageString, u"No deleted tabs to clear."_qs);
    scene->dialogs()->acknowledgeMessage();
}

void TestLibraryWindow::tabInfoRenameCopyAndLabels()
{
    writeThreeTabs();
    QVERIFY(open());
    TabsListViewController *list = scene->topList();
    QTRY_COMPARE(list->rowNames().size(), 3);
    tapWhenStill(u"infoButt"_qs); // the first row's
    QVERIFY(item(u"tabInfoView"_qs));
    auto *name = item(u"nameField"_qs);
    QCOMPARE(name->property("text").toString(), u"Blackbird"_qs);

    tapWhenStill(u"copyButt"_qs);
    QCOMPARE(item(u"errorLabel"_qs)->property("text").toString(),
             u"Name must be different for copy"_qs);
    typeInto(u"nameField"_qs, QString(51, u'x'));
    tapWhenStill(u"okButt"_qs);
    QCOMPARE(item(u"errorLabel"_qs)->property("text").toString(),
             u"Name too long. 51/50 characters."_qs);
    QVERIFY(!item(u"tagsContainer"_qs));
    typeInto(u"nameField"_qs, u"Song 2"_qs);
    QVERIFY(item(u"tagsContainer"_qs));
    tapWhenStill(u"okButt"_qs);
    QCOMPARE(item(u"errorLabel"_qs)->property("text").toString(),
             u"A tab with that name already exists"_qs);

    // A label, then the new name.
    typeInto(u"nameField"_qs, u"Blackbird Live"_qs);
    tapWhenStill(u"addTagButt"_qs);
    QVERIFY(item(u"addTagCoverView"_qs));
    typeInto(u"newTagNameField"_qs, u"Beatles"_qs);
    tapWhenStill(u"confirmAddTagButt"_qs);
    QVERIFY(!item(u"addTagCoverView"_qs));
    QCOMPARE(item(u"tag0"_qs)->property("text").toString(), u"Beatles"_qs);
    tapWhenStill(u"okButt"_qs);
    QVERIFY(!item(u"tabInfoView"_qs));
    QVERIFY(QFile::exists(QDir(storageFolder()).filePath(u"Blackbird Live.lgrdi"_qs)));
    QVERIFY(list->rowNames().contains(u"Blackbird Live"_qs));
    QCOMPARE(AppManager::shared().currentTagMap().value(u"Blackbird Live"_qs),
             QStringList{u"Beatles"_qs});
    QVERIFY(list->rows().first().toMap().value(u"detail"_qs).toString().contains(u"Beatles"_qs));

    // The new label is a folder on the folder screen, and its list holds the tab.
    scene->goBack();
    settle();
    QCOMPARE(scene->folders()->rows().last(), u"Beatles"_qs);
    tapWhenStill(u"folderRow3"_qs);
    QTRY_COMPARE(scene->topList()->rowNames(), QStringList{u"Blackbird Live"_qs});

    // Copying from here: the copy takes the dialog's labels.
    tapWhenStill(u"infoButt"_qs);
    typeInto(u"nameField"_qs, u"Blackbird Copy"_qs);
    tapWhenStill(u"copyButt"_qs);
    QVERIFY(QFile::exists(QDir(storageFolder()).filePath(u"Blackbird Copy.lgrdi"_qs)));
    QCOMPARE(scene->topList()->rowNames().size(), 2);
}

void TestLibraryWindow::labelLimitAndRemoval()
{
    writeThreeTabs();
    QVERIFY(open());
    TabsListViewController *list = scene->topList();
    QTRY_COMPARE(list->rowNames().size(), 3);
    QStringList fifteen;
    for (int i = 0; i < 15; ++i)
        fifteen.append(u"F"_qs + QString::number(i));
    AppManager::shared().setTabTags(u"Blackbird"_qs, fifteen);
    AppManager::shared().setTabTags(u"Song 2"_qs, {u"Other"_qs});
    AppManager::shared().refreshTabs();
    TabInfoViewController *info = list->tabInfoFor(0);
    QCOMPARE(info->tagSet.size(), 15);
    info->showAddTag();
    QCOMPARE(info->errorLabel(), u"Tab cannot be in more than 15 folders."_qs);
    QVERIFY(!info->addTagShown());
    // One out, another in, in the same opening.
    info->askRemoveTag(u"F3"_qs);
    QCOMPARE(info->removeTagLabel(), u"Remove this tab from folder \"F3\"?"_qs);
    info->confirmRemoveTag();
    info->showAddTag();
    QVERIFY(info->addTagShown());
    QCOMPARE(info->suggestedTags(), (QStringList{u"F3"_qs, u"Other"_qs}));
    info->pickSuggestion(u"Other"_qs);
    info->confirmAddTag();
    // A repeat and a blank label add nothing.
    info->showAddTag();
    info->newTagNameField = u"  Other "_qs;
    info->confirmAddTag();
    info->showAddTag();
    info->newTagNameField = u"   "_qs;
    info->confirmAddTag();
    QCOMPARE(info->tagSet.size(), 15);
    QVERIFY(info->tagSet.contains(u"Other"_qs) && !info->tagSet.contains(u"F3"_qs));
    QVERIFY(info->confirm(false));
    QCOMPARE(AppManager::shared().currentTagMap().value(u"Blackbird"_qs).size(), 15);
    QVERIFY(!AppManager::shared().allTagNames().contains(u"F3"_qs));
}

void TestLibraryWindow::removeFolderFromEmptyLabelList()
{
    writeThreeTabs();
    AppManager::shared().setTabTags(u"Song 2"_qs, {u"Gig"_qs});
    QVERIFY(open());
    scene->goBack();
    settle();
    tapWhenStill(u"folderRow3"_qs);
    TabsListViewController *list = scene->topList();
    QTRY_COMPARE(list->rowNames(), QStringList{u"Song 2"_qs});
    // "Remove From Folder" keeps the file.
    list->deleteRow(0);
    QCOMPARE(scene->dialogs()->optionTxt1, u"Remove From Folder"_qs);
    tapWhenStill(u"optionOneButt"_qs);
    QVERIFY(QFile::exists(QDir(storageFolder()).filePath(u"Song 2.lgrdi"_qs)));
    QVERIFY(list->rowNames().isEmpty());
    // The empty label list offers to remove the label itself.
    tapWhenStill(u"removeFolderButt"_qs);
    QCOMPARE(scene->dialogs()->messageString, u"Remove this folder?"_qs);
    tapWhenStill(u"confirmButt"_qs);
    QTRY_COMPARE(scene->topKind(), MainScene::Folders);
    QVERIFY(AppManager::shared().allTagNames().isEmpty());
}

void TestLibraryWindow::importDialog()
{
    QVERIFY(open());
    TabsListViewController *list = scene->topList();
    // The empty main list explains where tabs may have gone.
    QCOMPARE(list->emptyText(), u"No tabs found..."_qs);
    tapWhenStill(u"helpButt"_qs);
    QVERIFY(scene->dialogs()->messageString.contains(u"DO NOT delete"_qs));
    QVERIFY(scene->dialogs()->messageString.contains(TabsListViewController::supportAddress));
    scene->dialogs()->acknowledgeMessage();
    const QDir home(qEnvironmentVariable("LUTEGRID_HOME"));
    const QString good = home.filePath(u"Riff.lgrd"_qs);
    {
        TabData tab(u"Riff"_qs, 6);
        tab.tabRowDatas.append(TabRowData(8, 6));
        QFile file(good);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(*exchangeData(tab));
    }
    // The file chooser lists the folder's .lgrd files.
    tapWhenStill(u"importButt"_qs);
    QVERIFY(item(u"fileChooserView"_qs));
    tapWhenStill(u"cancelChooserButt"_qs);
    QVERIFY(!item(u"fileChooserView"_qs));

    list->startImport(good);
    settle();
    QVERIFY(item(u"importDialogView"_qs));
    QCOMPARE(item(u"tabNameField"_qs)->property("text").toString(), u"Riff"_qs);
    typeInto(u"tabNameField"_qs, u"a.LGRD"_qs);
    tapWhenStill(u"confirmImportButt"_qs);
    QCOMPARE(item(u"errorLabel"_qs)->property("text").toString(), u"Cannot contain '.lgrd'"_qs);
    typeInto(u"tabNameField"_qs, u"Riff"_qs);
    tapWhenStill(u"confirmImportButt"_qs);
    QVERIFY(!item(u"importDialogView"_qs));
    QTRY_VERIFY(list->rowNames().contains(u"Riff"_qs));

    // Again: the name is taken, and the dialog stays.
    list->startImport(good);
    settle();
    tapWhenStill(u"confirmImportButt"_qs);
    QCOMPARE(item(u"errorLabel"_qs)->property("text").toString(), u"That name is already taken"_qs);
    saveShot(u"import-taken"_qs);
    tapWhenStill(u"cancelImportButt"_qs);

    // Not a tab at all.
    const QString bad = home.filePath(u"junk.lgrd"_qs);
    {
        QFile file(bad);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(QByteArray(5000, '{'));
    }
    list->startImport(bad);
    settle();
    tapWhenStill(u"confirmImportButt"_qs);
    QVERIFY(item(u"errorLabel"_qs)->property("text").toString().startsWith(
        u"Import was unsuccessful.\n\n"_qs));
    saveShot(u"import-bad"_qs);
    tapWhenStill(u"cancelImportButt"_qs);
    QCOMPARE(list->rowNames(), QStringList{u"Riff"_qs});
}

// A plain-text tab and a MusicXML score come in through the same dialog; a text with no tab
// in it says so in the reader's words.
void TestLibraryWindow::importOtherForms()
{
    QVERIFY(open());
    TabsListViewController *list = scene->topList();
    const QDir home(qEnvironmentVariable("LUTEGRID_HOME"));
    QFile(home.filePath(u"Tune.txt"_qs)).remove();
    const auto write = [&](const QString &name, const QByteArray &bytes) {
        QFile file(home.filePath(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    };
    write(u"Tune.txt"_qs, "e|--0--|\nB|--1--|\nG|--0--|\nD|--2--|\nA|--3--|\nE|-----|\n");
    write(u"Notes.txt"_qs, "Remember to buy strings.\n");
    TabData score(u"Title inside"_qs, 6);
    score.tabRowDatas.append(TabRowData(8, 6));
    score.tabRowDatas[0].colDatas[0].setColumnItem(0, ColumnItemType::note(3));
    write(u"Score.musicxml"_qs, *MusicXml::write(score, false));
    write(u"Picture.png"_qs, "not a tab");

    // The chooser offers the forms the import reads, and nothing else.
    FileChooserController chooser;
    chooser.suffixes = list->importSuffixes();
    chooser.setFolder(home.path());
    QStringList names;
    for (const QVariant &entry : chooser.entries()) {
        if (!entry.toMap().value(u"isDir"_qs).toBool())
            names.append(entry.toMap().value(u"name"_qs).toString());
    }
    QVERIFY(names.contains(u"Tune.txt"_qs) && names.contains(u"Score.musicxml"_qs));
    QVERIFY(!names.contains(u"Picture.png"_qs));

    list->startImport(home.filePath(u"Notes.txt"_qs));
    settle();
    QCOMPARE(item(u"tabNameField"_qs)->property("text").toString(), u"Notes"_qs);
    tapWhenStill(u"confirmImportButt"_qs);
    QCOMPARE(item(u"errorLabel"_qs)->property("text").toString(),
             u"Import was unsuccessful.\n\n"_qs + AsciiTabReader::noTabMessage());
    saveShot(u"import-not-a-tab"_qs);
    tapWhenStill(u"cancelImportButt"_qs);

    for (const QString &file : {u"Tune.txt"_qs, u"Score.musicxml"_qs}) {
        list->startImport(home.filePath(file));
        settle();
        const QString name = file.section(u'.', 0, 0);
        QCOMPARE(item(u"tabNameField"_qs)->property("text").toString(), name);
        tapWhenStill(u"confirmImportButt"_qs);
        QVERIFY(!item(u"importDialogView"_qs));
        QTRY_VERIFY(list->rowNames().contains(name));
    }
    QCOMPARE(list->rowNames().size(), 2);
}

void TestLibraryWindow::menuSyncFolderAndAppearance()
{
    writeThreeTabs();
    QVERIFY(open());
    scene->goBack();
    settle();
    QCOMPARE(scene->folders()->title(), u"Folders (Local)"_qs);
    tapWhenStill(u"menuButt"_qs);
    QVERIFY(item(u"menuDialogView"_qs));
    // No sync folder: the switch springs back with the message.
    auto *menu = qvariant_cast<MenuDialogViewController *>(
        item(u"menuDialogView"_qs)->property("menu"));
    QVERIFY(menu);
    tapWhenStill(u"iCloudSwitch"_qs);
    QVERIFY(!menu->switchOn());
    QCOMPARE(scene->dialogs()->messageString, MenuDialogViewController::unavailableMessage);
    scene->dialogs()->acknowledgeMessage();

    // The folder chooser, then the folder.
    tapWhenStill(u"chooseSyncFolderButt"_qs);
    QVERIFY(item(u"fileChooserView"_qs));
    tapWhenStill(u"cancelChooserButt"_qs);
    QTemporaryDir sync;
    menu->chooseSyncFolder(sync.path());
    tapWhenStill(u"iCloudSwitch"_qs);
    QVERIFY(menu->switchOn());
    tapWhenStill(u"appearance2"_qs);
    QVERIFY(SurfacePalette::instance()->isDark());
    QCOMPARE(SavedData::shared().appearanceSetting, 2);
    tapWhenStill(u"menuDoneButt"_qs);
    QVERIFY(!item(u"menuDialogView"_qs));
    QTRY_COMPARE(storageFolder(), QDir(sync.path()).filePath(u"Documents"_qs));
    QTRY_COMPARE(scene->folders()->title(), u"Folders"_qs);

    // The folder goes away during the run: the watch notices, and the tabs are local again.
    QDir(sync.path()).removeRecursively();
    QVERIFY(iCloudManager::shared().checkAvailability());
    QTRY_VERIFY(storageFolder().endsWith(u"/Local"_qs));
    QVERIFY(SavedData::shared().icloudOff);

    // Back to the synced folder, then off by the switch: the warning once in the app's life.
    QDir().mkpath(sync.path());
    QVERIFY(iCloudManager::shared().checkAvailability());
    tapWhenStill(u"menuButt"_qs);
    menu = qvariant_cast<MenuDialogViewController *>(item(u"menuDialogView"_qs)->property("menu"));
    menu->setSwitch(true);
    menu->close();
    QTRY_COMPARE(storageFolder(), QDir(sync.path()).filePath(u"Documents"_qs));
    tapWhenStill(u"menuButt"_qs);
    menu = qvariant_cast<MenuDialogViewController *>(item(u"menuDialogView"_qs)->property("menu"));
    // Off and on again within one opening changes nothing.
    menu->setSwitch(false);
    menu->setSwitch(true);
    menu->close();
    QVERIFY(!scene->dialogs()->isPresenting());
    tapWhenStill(u"menuButt"_qs);
    menu = qvariant_cast<MenuDialogViewController *>(item(u"menuDialogView"_qs)->property("menu"));
    menu->setSwitch(false);
    menu->close();
    QCOMPARE(scene->dialogs()->messageString, MenuDialogViewController::turnedOffWarning);
    QVERIFY(SavedData::shared().hasTurnedICloudOff);
    scene->dialogs()->acknowledgeMessage();
    QTRY_VERIFY(storageFolder().endsWith(u"/Local"_qs));
    SavedData::shared().cloudFolder.reset();
}

void TestLibraryWindow::backupDialog()
{
    writeThreeTabs();
    QVERIFY(open());
    scene->goBack();
    settle();
    tapWhenStill(u"menuButt"_qs);
    tapWhenStill(u"backupRow"_qs);
    QVERIFY(!item(u"menuDialogView"_qs));
    QVERIFY(item(u"exportAllDialogView"_qs));
    QTRY_VERIFY(item(u"shareButt"_qs));
    QVERIFY(item(u"resultsLabel"_qs)->property("text").toString().startsWith(
        u"3 tabs exported"_qs));
    QCOMPARE(item(u"progressBar"_qs)->property("value").toDouble(), 1.0);
    saveShot(u"backup-done"_qs);
    tapWhenStill(u"closeButt"_qs);
    QVERIFY(!item(u"exportAllDialogView"_qs));
}

void TestLibraryWindow::screenshots_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<bool>("dark");
    QTest::newRow("phone-light") << QSize(390, 844) << false;
    QTest::newRow("phone-dark") << QSize(390, 844) << true;
    QTest::newRow("desktop-light") << QSize(1280, 800) << false;
    QTest::newRow("desktop-dark") << QSize(1280, 800) << true;
}

void TestLibraryWindow::screenshots()
{
    QFETCH(QSize, size);
    QFETCH(bool, dark);
    const QString tag = QString::fromLatin1(QTest::currentDataTag());
    SavedData::shared().appearanceSetting = dark ? 2 : 1;
    writeThreeTabs();
    AppManager::shared().setTabTags(u"Blackbird"_qs, {u"Beatles"_qs, u"Fingerstyle"_qs});
    QVERIFY(open(size));
    TabsListViewController *list = scene->topList();
    QTRY_COMPARE(list->rowNames().size(), 3);
    saveShot(tag + u"-list"_qs);
    typeInto(u"searchBar"_qs, u"song"_qs);
    saveShot(tag + u"-search"_qs);
    list->setSearchText(QString());
    settle();
    tapWhenStill(u"infoButt"_qs);
    saveShot(tag + u"-tabinfo"_qs);
    tapWhenStill(u"addTagButt"_qs);
    saveShot(tag + u"-addtag"_qs);
    tapWhenStill(u"cancelAddTagButt"_qs);
    tapWhenStill(u"cancelButt"_qs);
    const QString file = QDir(qEnvironmentVariable("LUTEGRID_HOME")).filePath(u"Riff.lgrd"_qs);
    list->startImport(file);
    settle();
    saveShot(tag + u"-import"_qs);
    tapWhenStill(u"cancelImportButt"_qs);
    scene->goBack();
    settle();
    saveShot(tag + u"-folders"_qs);
    tapWhenStill(u"menuButt"_qs);
    saveShot(tag + u"-menu"_qs);
    tapWhenStill(u"backupRow"_qs);
    QTRY_VERIFY(item(u"shareButt"_qs));
    saveShot(tag + u"-backup"_qs);
    tapWhenStill(u"closeButt"_qs);
}

LUTEGRID_WINDOW_TEST_MAIN(TestLibraryWindow)
#include "tst_library.moc"
