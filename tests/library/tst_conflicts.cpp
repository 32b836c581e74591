#include "library/conflictresolver.h"
#include "library/fileversion.h"
#include "model/tabfileformat.h"
#include "library/lutegriddocument.h"
#include "tablisting.h"
#include "testmain.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>

#include <memory>

namespace {

TabData tabWithNote(int fret)
{
    TabData tab(u"Tab"_qs, 6);
    tab.tabRowDatas = {TabRowData(8, 6)};
    tab.tabRowDatas[0].colDatas[0].setColumnItem(0, ColumnItemType::note(fret));
    return tab;
}

QByteArray fileBytes(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void writeFile(const QString &path, const QByteArray &bytes, const QDateTime &date = {})
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(bytes);
    file.flush(); // a flush at close would stamp the file with the time of the close
    if (date.isValid())
        file.setFileTime(date, QFileDevice::FileModificationTime);
}

} // namespace

class TestConflicts : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void versionsAreListedWithDates();
    void keepCurrent();
    void takeVersion();
    void keepAll();

private:
    QString folder;
    QString path;
    std::unique_ptr<LutegridDocument> document;
    const QDateTime first = QDateTime(QDate(2026, 11, 20), QTime(9, 30));
    const QDateTime second = QDateTime(QDate(2026, 11, 21), QTime(10, 15));
};

void TestConflicts::init()
{
    folder = QDir(qEnvironmentVariable("LUTEGRID_HOME"))
                 .filePath(QString::fromLatin1(QTest::currentTestFunction()));
    QDir().mkpath(folder);
    path = QDir(folder).filePath(u"Song.lgrdi"_qs);
    writeFile(path, documentData(tabWithNote(1)));
    writeFile(QDir(folder).filePath(u"Song.sync-conflict-20261121-101530-ABCDEFG.lgrdi"_qs),
              documentData(tabWithNote(2)), second);
    writeFile(QDir(folder).filePath(u"Song (Ann's conflicted copy 2026-11-20).lgrdi"_qs),
              documentData(tabWithNote(3)), first);
    document = std::make_unique<LutegridDocument>(path, std::nullopt);
    QVERIFY(document->open());
    QVERIFY(document->documentState().testFlag(LutegridDocument::InConflict));
}

void TestConflicts::cleanup()
{
    document.reset();
}

void TestConflicts::versionsAreListedWithDates()
{
    const QList<FileVersion> versions = document->unresolvedConflictVersions();
    QCOMPARE(versions.size(), 2);
    QCOMPARE(versions[0].modificationDate, first);
    QCOMPARE(versions[1].modificationDate, second);
    ConflictResolver resolver(versions, document.get());
    const QStringList titles = resolver.rowTitles();
    QCOMPARE(titles.size(), 4);
    QCOMPARE(titles.first(), u"Current"_qs);
    QCOMPARE(titles.last(), u"All"_qs);
    QCOMPARE(titles[1], ConflictResolver::dateText(first));
}

void TestConflicts::keepCurrent()
{
    const QByteArray before = fileBytes(path);
    ConflictResolver resolver(document->unresolvedConflictVersions(), document.get());
    resolver.confirmSelection(0);
    QCOMPARE(fileBytes(path), before);
    QVERIFY(document->unresolvedConflictVersions().isEmpty());
    QCOMPARE(QDir(folder).entryList(QDir::Files | QDir::Hidden), QStringList{u"Song.lgrdi"_qs});
    QVERIFY(!document->documentState().testFlag(LutegridDocument::InConflict));

    // Nothing the other machines wrote is lost: each version waits in Deleted as a tab.
    const QString deleted = QDir(folder).filePath(u"Deleted"_qs);
    QStringList expected{u"Song "_qs + ConflictResolver::fileNameDateText(first) + u".lgrdi"_qs,
                         u"Song "_qs + ConflictResolver::fileNameDateText(second) + u".lgrdi"_qs};
    expected.sort();
    QCOMPARE(listedTabs(deleted), expected);
    QCOMPARE(tabDataFromDocumentData(fileBytes(QDir(deleted).filePath(expected[0])))
                 ->tabRowDatas[0].colDatas[0].columnItems[0],
             ColumnItemType::note(3));
    QCOMPARE(tabDataFromDocumentData(fileBytes(QDir(deleted).filePath(expected[1])))
                 ->tabRowDatas[0].colDatas[0].columnItems[0],
             ColumnItemType::note(2));
}

void TestConflicts::takeVersion()
{
    const QList<FileVersion> versions = document->unresolvedConflictVersions();
    const QByteArray chosen = fileBytes(versions[1].url);
    const QByteArray replaced = fileBytes(path);
    QSignalSpy reloaded(document.get(), &LutegridDocument::documentReloaded);
    ConflictResolver resolver(versions, document.get());
    resolver.confirmSelection(2);
    QCOMPARE(fileBytes(path), chosen);
    QCOMPARE(reloaded.size(), 1);
    QCOMPARE(document->tabData->tabRowDatas[0].colDatas[0].columnItems[0], ColumnItemType::note(2));
    QCOMPARE(document->tabData->title, u"Song"_qs);
    QVERIFY(document->unresolvedConflictVersions().isEmpty());
    QVERIFY(!document->documentState().testFlag(LutegridDocument::InConflict));

    // The replaced content and the version not taken wait in Deleted.
    const QString deleted = QDir(folder).filePath(u"Deleted"_qs);
    const QStringList kept = listedTabs(deleted);
    QCOMPARE(kept.size(), 2);
    const QString notTaken =
        u"Song "_qs + ConflictResolver::fileNameDateText(first) + u".lgrdi"_qs;
    QVERIFY(kept.contains(notTaken));
    QCOMPARE(tabDataFromDocumentData(fileBytes(QDir(deleted).filePath(notTaken)))
                 ->tabRowDatas[0].colDatas[0].columnItems[0],
             ColumnItemType::note(3));
    bool foundReplaced = false;
    for (const QString &name : kept)
        foundReplaced |= fileBytes(QDir(deleted).filePath(name)) == replaced;
    QVERIFY(foundReplaced);
}

void TestConflicts::keepAll()
{
    const QByteArray before = fileBytes(path);
    // A file already bearing the first version's name: the version gets a counter.
    const QString taken = QDir(folder).filePath(
        u"Song "_qs + ConflictResolver::fileNameDateText(first) + u".lgrdi"_qs);
    writeFile(taken, "taken");
    ConflictResolver resolver(document->unresolvedConflictVersions(), document.get());
    resolver.confirmSelection(3);

    QCOMPARE(fileBytes(path), before);
    QVERIFY(document->unresolvedConflictVersions().isEmpty());
    const QString firstCopy = QDir(folder).filePath(
        u"Song "_qs + ConflictResolver::fileNameDateText(first) + u" 2.lgrdi"_qs);
    const QString secondCopy = QDir(folder).filePath(
        u"Song "_qs + ConflictResolver::fileNameDateText(second) + u".lgrdi"_qs);
    QCOMPARE(
        tabDataFromDocumentData(fileBytes(firstCopy))->tabRowDatas[0].colDatas[0].columnItems[0],
        ColumnItemType::note(3));
    QCOMPARE(
        tabDataFromDocumentData(fileBytes(secondCopy))->tabRowDatas[0].colDatas[0].columnItems[0],
        ColumnItemType::note(2));
    QCOMPARE(fileBytes(taken), QByteArray("taken"));

    // The library lists the new tabs, and the copies are gone.
    const QStringList listed = listedTabs(folder);
    QStringList expected{u"Song.lgrdi"_qs, QFileInfo(taken).fileName(),
                         QFileInfo(firstCopy).fileName(), QFileInfo(secondCopy).fileName()};
    expected.sort();
    QCOMPARE(listed, expected);
    QCOMPARE(QDir(folder).entryList(QDir::Files | QDir::Hidden).size(), 4);
}

LUTEGRID_TEST_MAIN(TestConflicts)
#include "tst_conflicts.moc"
