#include "model/tabfileformat.h"
#include "music/chordshortcutlibrary.h"
#include "services/lgundomanager.h"
#include "services/saveddata.h"

#include "appwindow.h"

namespace {

ChordShortcut custom(const QString &name, qint64 fret)
{
    return ChordShortcut{name, QList<ColumnItemType>(6, ColumnItemType::note(fret)), true};
}

} // namespace

// Chords and lyrics in the window: chord mode by finger, mouse and keys, the user's chords,
// column headers and lyric lines, with screenshots at phone and desktop sizes.
class TestChordsApp : public QObject, AppWindow {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void chordModeByTouchMouseAndKeys();
    void customChordMadeAndDeletedInTheWindow();
    void columnHeaderDialog();
    void lyricLinesFromTheDropdown();
    void lyricsTypedJustBeforeLeavingAreKept();
    void screenshots_data();
    void screenshots();

private:
    const TabColumnData &column(int c) const { return view->tabRows[0].colDatas[c]; }
};

void TestChordsApp::initTestCase()
{
    start(u"shots-chords"_qs);
}

void TestChordsApp::init()
{
    resetStorage();
    SavedData &saved = SavedData::shared();
    saved.tabCreateCount = 0;
    saved.autoCursorAmount = 1;
    saved.playSounds = false;
    saved.freeScrollSetting = false;
    saved.appearanceSetting = 1;
    saved.recentChords.reset();
    saved.customChordShortcuts = QList<ChordShortcut>();
    saved.storeCloudCustomChords({});
    saved.save();
}

void TestChordsApp::cleanup()
{
    closeWindow();
}

void TestChordsApp::chordModeByTouchMouseAndKeys()
{
    QVERIFY(openEditor());
    QVERIFY(!item(u"chordCoverView"_qs));
    tap(u"chordShortcutButt"_qs);
    QVERIFY(item(u"chordCoverView"_qs));
    // The cover hides the fretboard; the bar starts with the library's first chord.
    QQuickItem *first = item(u"barChord0"_qs);
    QVERIFY(first);
    QCOMPARE(first->property("chord").toMap().value(u"name"_qs).toString(), u"G"_qs);
    // Every button of the bar fits on the screen.
    for (int i = 0; QQuickItem *button = item(u"barChord"_qs + QString::number(i)); ++i)
        QVERIFY(button->mapToScene(QPointF(button->width(), 0)).x() <= window->width());

    // A finger puts a chord in, as one step, and the cursor moves on.
    tap(u"barChord1"_qs);
    QCOMPARE(column(0).chordName, std::optional<QString>(u"C"_qs));
    QCOMPARE(view->editColIndex, 1);
    // A click does the same.
    click(u"barChord2"_qs);
    QCOMPARE(column(1).chordName, std::optional<QString>(u"D"_qs));
    QCOMPARE(column(1).columnItems, c->chordShortcuts()->topButtons[2].chord.colItems);
    tap(u"undoButton"_qs);
    QVERIFY(!column(1).chordName);

    // Typing searches; Enter takes the best result, which joins the bar's front.
    click(u"csSearchBar"_qs);
    QTRY_VERIFY(item(u"csSearchBar"_qs)->hasActiveFocus());
    typeText(u"am"_qs);
    QTRY_VERIFY(item(u"resultChord0"_qs));
    QTRY_COMPARE(item(u"resultChord0"_qs)->property("chord").toMap().value(u"name"_qs).toString(),
                 u"Am"_qs);
    QTest::keyClick(window.get(), Qt::Key_Return);
    QCOMPARE(column(1).chordName, std::optional<QString>(u"Am"_qs));
    QCOMPARE(item(u"barChord0"_qs)->property("chord").toMap().value(u"name"_qs).toString(),
             u"Am"_qs);
    // A result by finger.
    click(u"csSearchBar"_qs);
    QTest::keyClick(window.get(), Qt::Key_A, Qt::ControlModifier);
    typeText(u"e minor"_qs);
    QTRY_COMPARE(item(u"resultChord0"_qs)->property("chord").toMap().value(u"name"_qs).toString(),
                 u"Em"_qs);
    tap(u"resultChord0"_qs);
    QCOMPARE(column(2).chordName, std::optional<QString>(u"Em"_qs));

    // Escape in the field leaves the mode.
    click(u"csSearchBar"_qs);
    QTRY_VERIFY(item(u"csSearchBar"_qs)->hasActiveFocus());
    QTest::keyClick(window.get(), Qt::Key_Escape);
    QVERIFY(!c->chordShortcuts()->active());
    QTRY_VERIFY(!item(u"chordCoverView"_qs));
    // The fretboard answers again.
    QVERIFY(item(u"fretboard"_qs));
}

void TestChordsApp::customChordMadeAndDeletedInTheWindow()
{
    QVERIFY(openEditor());
    tap(u"chordShortcutButt"_qs);
    QVERIFY(!item(u"csCustomButt"_qs)->isEnabled());
    c->tabEditView()->putColumnAtCursor(std::nullopt,
                                        QList<ColumnItemType>(6, ColumnItemType::note(5)));
    c->refreshFretHighlights();
    QTRY_VERIFY(item(u"csCustomButt"_qs)->isEnabled());
    tap(u"csCustomButt"_qs);
    QTRY_VERIFY(item(u"customChordDialog"_qs));
    QTRY_VERIFY(item(u"customChordName"_qs)->hasActiveFocus());
    // No name: the message stands in the dialog, which stays.
    click(u"customChordCreate"_qs);
    QCOMPARE(item(u"errorLabel"_qs)->property("text").toString(), u"Name cannot be empty"_qs);
    typeText(u"Five"_qs);
    QVERIFY(!item(u"errorLabel"_qs));
    saveShot(u"custom-chord-dialog"_qs);
    click(u"customChordCreate"_qs);
    QTRY_VERIFY(!item(u"customChordDialog"_qs));
    QCOMPARE(SavedData::shared().customChordShortcuts->first().name, u"Five"_qs);

    // The new chord stands in the search, marked as one's own; a held press offers to delete it.
    click(u"csSearchBar"_qs);
    typeText(u"five"_qs);
    QTRY_VERIFY(item(u"resultChord0"_qs));
    QTRY_COMPARE(item(u"resultChord0"_qs)->property("chord").toMap().value(u"name"_qs).toString(),
                 u"Five"_qs);
    QQuickItem *result = item(u"resultChord0"_qs);
    QVERIFY(findItem(result, u"customLine"_qs));
    const QPoint at = centerOf(result);
    touches().press(0, at, window.get());
    QTest::qWait(1000);
    touches().release(0, at, window.get());
    QTRY_VERIFY(item(u"confirmButt"_qs));
    QCOMPARE(item(u"msgLabel"_qs)->property("text").toString(),
             u"Delete the custom chord shortcut \"Five\"? This cannot be undone."_qs);
    saveShot(u"custom-chord-delete"_qs);
    tap(u"confirmButt"_qs);
    QVERIFY(SavedData::shared().customChordShortcuts->isEmpty());
    QTRY_VERIFY(!item(u"resultChord0"_qs));
}

void TestChordsApp::columnHeaderDialog()
{
    QVERIFY(openEditor(QSize(1280, 800)));
    QQuickItem *names = item(u"chordNames0"_qs);
    QVERIFY(names);
    const QPointF inColumn(view->tabLeftInset() + 2.5 * TabEditView::tabColumnWidth -
                               names->x(), names->height() / 2);
    click(names->mapToScene(inColumn).toPoint());
    QTRY_VERIFY(item(u"chordNameDialog"_qs));
    QTRY_VERIFY(item(u"chordNameField"_qs)->hasActiveFocus());
    typeText(u"Bb7sus4add9"_qs);
    // The field takes ten characters.
    QCOMPARE(item(u"chordNameField"_qs)->property("text").toString(), u"Bb7sus4add"_qs);
    QTest::keyClick(window.get(), Qt::Key_Return);
    QTRY_VERIFY(!item(u"chordNameDialog"_qs));
    const int col = view->editColIndex;
    QCOMPARE(column(col).chordName, std::optional<QString>(u"Bb7sus4add"_qs));
    // A tap outside the dialog changes nothing.
    click(names->mapToScene(inColumn).toPoint());
    QTRY_VERIFY(item(u"chordNameDialog"_qs));
    click(QPoint(5, 5));
    QTRY_VERIFY(!item(u"chordNameDialog"_qs));
    QCOMPARE(column(col).chordName, std::optional<QString>(u"Bb7sus4add"_qs));
    c->undoEdit();
    QVERIFY(!column(col).chordName);
}

void TestChordsApp::lyricLinesFromTheDropdown()
{
    QVERIFY(openEditor());
    tap(u"lyricLineButt0"_qs);
    QTRY_VERIFY(item(u"lyricLineDropdown"_qs));
    QVERIFY(item(u"lyricLineEntry0"_qs));
    // The adding entry, by finger, twice.
    tap(u"lyricLineEntry0"_qs);
    click(u"lyricLineEntry1"_qs);
    QCOMPARE(view->tabRows[0].lyricLines, (QStringList{QString(), QString()}));
    // Choosing the first line closes the dropdown.
    tap(u"lyricLineEntry0"_qs);
    QTRY_VERIFY(!item(u"lyricLineDropdown"_qs));
    QCOMPARE(view->tabRows[0].selectedLyricLineIndex, 0);
    // Removing a line, then a press elsewhere closes.
    tap(u"lyricLineButt0"_qs);
    tap(u"lyricLineRemove1"_qs);
    QCOMPARE(view->tabRows[0].lyricLines.size(), 1);
    QVERIFY(item(u"lyricLineDropdown"_qs));
    tap(QPoint(300, 20));
    QTRY_VERIFY(!item(u"lyricLineDropdown"_qs));
}

void TestChordsApp::lyricsTypedJustBeforeLeavingAreKept()
{
    QVERIFY(openEditor());
    QQuickItem *field = item(u"lyricsField0"_qs);
    QVERIFY(field);
    click(field->mapToScene(QPointF(60, field->height() / 2)).toPoint());
    QTRY_VERIFY(field->hasActiveFocus());
    typeText(u"gone so soon"_qs);
    // Back at once, well within the second the field waits before writing.
    tap(u"backButton"_qs);
    QTRY_COMPARE(scene->topKind(), MainScene::TabsList);
    QQuickItem *stack = item(u"stack"_qs);
    QTRY_VERIFY(!stack->property("busy").toBool());
    QFile file(QDir(storageFolder()).filePath(u"Untitled 1.lgrdi"_qs));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const auto saved = tabDataFromDocumentData(file.readAll());
    QVERIFY(saved && !saved->tabRowDatas.isEmpty());
    QCOMPARE(saved->tabRowDatas[0].lyricText(), std::optional<QString>(u"gone so soon"_qs));
}

void TestChordsApp::screenshots_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<bool>("dark");
    QTest::newRow("phone-light") << QSize(390, 844) << false;
    QTest::newRow("phone-dark") << QSize(390, 844) << true;
    QTest::newRow("desktop-light") << QSize(1280, 800) << false;
    QTest::newRow("desktop-dark") << QSize(1280, 800) << true;
}

void TestChordsApp::screenshots()
{
    QFETCH(QSize, size);
    QFETCH(bool, dark);
    const QString tag = QString::fromLatin1(QTest::currentDataTag());
    SavedData &saved = SavedData::shared();
    saved.appearanceSetting = dark ? 2 : 1;
    saved.saveCustomChord(custom(u"Mine"_qs, 3));
    saved.recentChords = QList<RecentChord>{{u"Am"_qs, false}, {u"Mine"_qs, true}};
    QVERIFY(openEditor(size));
    // A row with two lyric lines and chord names.
    view->setLyricLine(0, 0, u"Hello darkness my old friend"_qs);
    view->insertLyricLine(0, 1, u"second verse"_qs);
    view->selectLyricLine(0, 0);
    for (const auto &[col, name] : {std::pair{0, u"Am"_qs}, {4, u"C"_qs}, {8, u"G"_qs},
                                    {12, u"Fmaj7"_qs}}) {
        view->setEditPosition(col, 0);
        c->chordShortcuts()->insertChord(
            ChordShortcutLibrary::shared().chordsFor(view->stringNotes).value(
                name == u"Am"_qs ? 7 : name == u"C"_qs ? 1 : name == u"G"_qs ? 0 : 38),
            false);
    }
    tap(u"lyricLineButt0"_qs);
    QTRY_VERIFY(item(u"lyricLineDropdown"_qs));
    saveShot(tag + u"-lyric-lines"_qs);
    c->lyricLines()->closeLyricDropdown();
    tap(u"chordShortcutButt"_qs);
    QTRY_VERIFY(item(u"barChord0"_qs));
    c->chordShortcuts()->searchTextChanged(u"a"_qs);
    saveShot(tag + u"-chord-mode"_qs);
}

LUTEGRID_WINDOW_TEST_MAIN(TestChordsApp)
#include "tst_chordsapp.moc"
