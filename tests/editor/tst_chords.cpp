#include "editor/chordsearch.h"
#include "editorsession.h"
#include "model/tabfileformat.h"
#include "music/chordshortcutlibrary.h"
#include "services/apppaths.h"
#include "services/cloudkeyvaluestore.h"
#include "testmain.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QSignalSpy>

namespace {

constexpr const char *childFolderVariable = "LUTEGRID_CHORDS_CHILD_FOLDER";

ChordShortcut custom(const QString &name, qint64 fret = 1, int strings = 6)
{
    return ChordShortcut{name, QList<ColumnItemType>(strings, ColumnItemType::note(fret)), true};
}

template <typename List> QStringList namesOf(const List &list)
{
    QStringList names;
    for (const auto &entry : list)
        names.append(entry.name);
    return names;
}

QStringList barNames(const ChordShortcutMode &mode)
{
    QStringList names;
    for (const auto &button : mode.topButtons)
        names.append(button.chord.name);
    return names;
}

QStringList resultNames(const ChordShortcutMode &mode)
{
    QStringList names;
    for (const auto &button : mode.searchResultButtons)
        names.append(button.chord.name);
    return names;
}

} // namespace

// Chord shortcut mode, the user's chords, column headers and lyric lines, on an editor without
// a window.
class TestChords : public QObject, private EditorSessions {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        prepare();
        SavedData &saved = SavedData::shared();
        saved.recentChords.reset();
        saved.customChordShortcuts = QList<ChordShortcut>();
        saved.storeCloudCustomChords({});
        saved.save();
    }

    void searchRanksTheTable()
    {
        const QList<ChordShortcut> chords = ChordShortcutLibrary::shared().chordsFor(
            standardStringNotes(6), {custom(u"Cmine"_qs), custom(u"Zed"_qs)});
        // The exact name first; names that merely contain the text behind it.
        QCOMPARE(ChordSearch::search(chords, u"am"_qs).first().name, u"Am"_qs);
        QVERIFY(ChordSearch::score(ChordShortcut{u"Am"_qs, {}}, u"a minor"_qs) >= 3);
        QCOMPARE(ChordSearch::search(chords, u"a minor"_qs).first().name, u"Am"_qs);
        QVERIFY(ChordSearch::score(ChordShortcut{u"C#"_qs, {}}, u"c sharp"_qs) >= 1);
        QCOMPARE(ChordSearch::search(chords, u"c# bar"_qs).first().name, u"C# bar"_qs);
        QCOMPARE(ChordSearch::search(chords, u"Gmaj7"_qs).first().name, u"Gmaj7"_qs);
        // "cu" lifts the user's chords by a point; one letter does not.
        QCOMPARE(ChordSearch::score(custom(u"Zed"_qs), u"cu"_qs), 1);
        QCOMPARE(ChordSearch::score(custom(u"Zed"_qs), u"c"_qs), 0);
        QCOMPARE(ChordSearch::search(chords, u"custom"_qs).first().name, u"Cmine"_qs);
        QVERIFY(ChordSearch::search(chords, u"   "_qs).isEmpty());
        QVERIFY(ChordSearch::search(chords, u"xyz"_qs).isEmpty());
    }

    void barShowsRecentsFirstAtMostTen()
    {
        Session s = open(u"bar"_qs);
        ChordShortcutMode &mode = *s.editor->chordShortcuts();
        s.editor->toggleChordShortcutMode();
        QVERIFY(mode.active());
        // No recents: the library from its first chord, as many as fit.
        QCOMPARE(barNames(mode).mid(0, 3), (QStringList{u"G"_qs, u"C"_qs, u"D"_qs}));
        for (const auto &button : mode.topButtons)
            QVERIFY(button.frame.right() < 390 - 30);

        // Search results go to the front of the recents; a press on the bar does not.
        const QStringList used{u"Am"_qs, u"Em"_qs, u"F"_qs, u"Bm"_qs, u"Cm"_qs, u"Fm"_qs,
                               u"Gm"_qs, u"Aadd9"_qs, u"Badd9"_qs, u"Cadd9"_qs, u"Dadd9"_qs};
        for (const QString &name : used) {
            mode.searchTextChanged(name);
            mode.searchDelayElapsed();
            QCOMPARE(mode.searchResultButtons.first().chord.name, name);
            mode.insertFromResults(0);
        }
        QCOMPARE(SavedData::shared().recentChords->size(), 10);
        mode.coverWidth = 2000;
        mode.rebuildChordBar();
        QCOMPARE(barNames(mode).mid(0, 11),
                 (QStringList{u"Dadd9"_qs, u"Cadd9"_qs, u"Badd9"_qs, u"Aadd9"_qs, u"Gm"_qs,
                              u"Fm"_qs, u"Cm"_qs, u"Bm"_qs, u"F"_qs, u"Em"_qs, u"G"_qs}));
        QCOMPARE(barNames(mode).count(u"Em"_qs), 1);
        mode.insertFromBar(barNames(mode).indexOf(u"G"_qs));
        QCOMPARE(SavedData::shared().recentChords->first().name, u"Dadd9"_qs);

        // A recent chord that this tuning does not have stays out of the bar.
        SavedData::shared().recentChords->prepend(RecentChord{u"A#7"_qs, false});
        mode.rebuildChordBar();
        QCOMPARE(barNames(mode).first(), u"Dadd9"_qs);
    }

    void aLongNameEndsTheBar()
    {
        Session s = open(u"long"_qs);
        ChordShortcutMode &mode = *s.editor->chordShortcuts();
        SavedData::shared().saveCustomChord(custom(u"Wide"_qs));
        mode.measureName = [](const QString &name) {
            return QSizeF(name == u"Wide"_qs ? 250.0 : 20.0, 30.0);
        };
        SavedData::shared().recentChords = QList<RecentChord>{{u"G"_qs, false},
                                                              {u"Wide"_qs, true},
                                                              {u"C"_qs, false}};
        s.editor->toggleChordShortcutMode();
        // G fits, Wide does not: the bar ends there, narrow C behind it included.
        QCOMPARE(barNames(mode), QStringList{u"G"_qs});
        QCOMPARE(mode.topButtons.first().frame, QRectF(70, 38, 40, 40));
    }

    void oneTouchPutsTheChordInOneStep()
    {
        Session s = open(u"insert"_qs);
        ChordShortcutMode &mode = *s.editor->chordShortcuts();
        mode.setCoverSize(2000, mode.fretboardHeight);
        s.editor->toggleChordShortcutMode();
        QVERIFY(!mode.customEnabled());
        const int am = barNames(mode).indexOf(u"Am"_qs);
        QVERIFY(am >= 0);
        mode.insertFromBar(am);
        const TabColumnData &column = s.view->tabRows[0].colDatas[0];
        QCOMPARE(column.chordName, std::optional<QString>(u"Am"_qs));
        QCOMPARE(column.columnItems,
                 ChordShortcutLibrary::shared().defaultChords[7].colItems);
        // The cursor moved on by the setting; the column behind it made the custom button live.
        QCOMPARE(s.view->editColIndex, 1);
        QCOMPARE(undoSteps(s.undo), 1);
        s.editor->editLeftPress();
        QVERIFY(mode.customEnabled());
        s.editor->undoEdit();
        QVERIFY(s.view->tabRows[0].colDatas[0].isAllBlank());
        QVERIFY(!s.view->tabRows[0].colDatas[0].chordName);
        QVERIFY(!mode.customEnabled());
        // The chord sounds as it goes in, when sounds are on.
        QList<QList<ColumnItemType>> played;
        mode.playChord = [&played](const QList<ColumnItemType> &items) { played.append(items); };
        mode.insertFromBar(am);
        QVERIFY(played.isEmpty());
        SavedData::shared().playSounds = true;
        mode.insertFromBar(am);
        QCOMPARE(played, QList<QList<ColumnItemType>>{s.view->tabRows[0].colDatas[1].columnItems});
        // Leaving the mode takes the bar away.
        s.editor->toggleChordShortcutMode();
        QVERIFY(!mode.active());
        QVERIFY(mode.topButtons.isEmpty());
    }

    void searchThrottlesTyping()
    {
        Session s = open(u"throttle"_qs);
        ChordShortcutMode &mode = *s.editor->chordShortcuts();
        s.editor->toggleChordShortcutMode();
        mode.searchTextChanged(u"d"_qs);
        // The first key searches at once.
        QCOMPARE(resultNames(mode).first(), u"D"_qs);
        QCOMPARE(mode.searchDelayTimer.interval(), 200);
        mode.searchTextChanged(u"dm"_qs);
        mode.searchTextChanged(u"dma"_qs);
        QCOMPARE(resultNames(mode).first(), u"D"_qs);
        QCOMPARE(mode.searchDelayTimer.interval(), 300);
        QVERIFY(mode.searchDelayTimer.isActive());
        // The last text once typing settles.
        mode.searchDelayElapsed();
        QCOMPARE(resultNames(mode).first(), u"Dmaj7"_qs);
        // Enter takes the first result, typed last even if its search still waits.
        mode.searchTextChanged(u"e"_qs);
        mode.searchTextChanged(u"em"_qs);
        QVERIFY(mode.takeFirstResult());
        QCOMPARE(s.view->tabRows[0].colDatas[0].chordName, std::optional<QString>(u"Em"_qs));
        // An empty text shows nothing.
        mode.searchDelayElapsed();
        mode.searchTextChanged(QString());
        QVERIFY(mode.searchResultButtons.isEmpty());
        QVERIFY(!mode.takeFirstResult());
    }

    void aSevenStringTabGetsFittedChords()
    {
        const QString path = QDir(folder).filePath(u"seven.lgrdi"_qs);
        TabData tab(u"seven"_qs, 7);
        tab.tabRowDatas.append(TabRowData(32, 7));
        {
            LutegridDocument created(path, tab);
            QVERIFY(created.saveToURL(path, LutegridDocument::SaveOperation::ForCreating));
            created.close();
        }
        LutegridDocument document(path, std::nullopt);
        QVERIFY(document.open());
        TabEditViewController editor(&document);
        editor.applyViewSize(390, 844);
        ChordShortcutMode &mode = *editor.chordShortcuts();
        editor.toggleChordShortcutMode();
        mode.searchTextChanged(u"G"_qs);
        mode.insertFromResults(0);
        const TabColumnData &column = document.tabData->tabRowDatas[0].colDatas[0];
        QCOMPARE(column.chordName, std::optional<QString>(u"G"_qs));
        // The six upper strings as in standard tuning, the low B left blank.
        QCOMPARE(column.columnItems.size(), 7);
        QCOMPARE(column.columnItems.mid(0, 6),
                 ChordShortcutLibrary::shared().defaultChords[0].colItems);
        QVERIFY(column.columnItems[6].isBlank());
        editor.finishEditing();
    }

    void customChordsMoveUpAndCanBeDeleted()
    {
        Session s = open(u"customs"_qs);
        ChordShortcutMode &mode = *s.editor->chordShortcuts();
        SavedData &saved = SavedData::shared();
        saved.saveCustomChord(custom(u"Mine"_qs, 4));
        saved.saveCustomChord(custom(u"Yours"_qs, 5));
        s.editor->toggleChordShortcutMode();
        mode.coverWidth = 10000;
        mode.rebuildChordBar();
        // The user's chords come last, after the table.
        QCOMPARE(barNames(mode).mid(40), (QStringList{u"Yours"_qs, u"Mine"_qs}));
        // A press on the bar moves a custom chord up its own list, not into the recents.
        mode.insertFromBar(41);
        QCOMPARE(namesOf(*saved.customChordShortcuts), (QStringList{u"Mine"_qs, u"Yours"_qs}));
        QCOMPARE(namesOf(saved.loadCloudCustomChords()), (QStringList{u"Mine"_qs, u"Yours"_qs}));
        QVERIFY(!saved.recentChords || saved.recentChords->isEmpty());
        QCOMPARE(s.view->tabRows[0].colDatas[0].columnItems.first(), ColumnItemType::note(4));

        // A long press on a built-in chord does nothing; on a custom one it asks first.
        mode.longPressed(0, false);
        QVERIFY(dialogs.confirms.isEmpty());
        mode.longPressed(40, false);
        QCOMPARE(dialogs.confirms,
                 QStringList{u"Delete the custom chord shortcut \"Yours\"? This cannot be undone."_qs});
        dialogs.confirmed();
        QCOMPARE(namesOf(*saved.customChordShortcuts), QStringList{u"Mine"_qs});
        QVERIFY(!barNames(mode).contains(u"Yours"_qs));
        QCOMPARE(namesOf(saved.loadCloudCustomChords()), QStringList{u"Mine"_qs});
    }

    void customChordDialogChecksAndWarns()
    {
        Session s = open(u"dialog"_qs);
        ChordShortcutMode &mode = *s.editor->chordShortcuts();
        CustomChordCreateDialog &dialog = *s.editor->customChordCreator();
        SavedData &saved = SavedData::shared();
        s.editor->toggleChordShortcutMode();
        // A blank column makes no chord.
        s.editor->createCustomShortcut();
        QVERIFY(!dialog.shown());
        s.view->putColumnAtCursor(std::nullopt, QList<ColumnItemType>(6, ColumnItemType::note(7)));
        s.editor->createCustomShortcut();
        QVERIFY(dialog.shown());
        QCOMPARE(dialog.itemTexts(), QStringList(6, u"7"_qs));
        dialog.createButtonTapped(QString());
        QCOMPARE(dialog.errorText(), u"Name cannot be empty"_qs);
        dialog.createButtonTapped(u"ElevenChars"_qs);
        QCOMPARE(dialog.errorText(), u"Name too long. 11/10 characters."_qs);
        QVERIFY(dialog.shown());
        // A built-in name is free for the user's chord.
        mode.searchTextChanged(u"am"_qs);
        dialog.createButtonTapped(u"Am"_qs);
        QVERIFY(!dialog.shown());
        QCOMPARE(namesOf(*saved.customChordShortcuts), QStringList{u"Am"_qs});
        QVERIFY(mode.searchText().isEmpty());
        QVERIFY(mode.searchResultButtons.isEmpty());

        // The same name again warns once, with the name, then replaces the items.
        s.view->putColumnAtCursor(std::nullopt, QList<ColumnItemType>(6, ColumnItemType::note(9)));
        s.editor->createCustomShortcut();
        dialog.createButtonTapped(u"Am"_qs);
        QVERIFY(dialog.shown());
        QCOMPARE(dialog.limitText(),
                 u"A custom chord with this name already exists. If you continue, the existing "
                 u"\"Am\" chord will be replaced."_qs);
        QCOMPARE(dialog.buttonTitle(), u"Ok"_qs);
        dialog.createButtonTapped(u"Am"_qs);
        QVERIFY(!dialog.shown());
        QCOMPARE(saved.customChordShortcuts->size(), 1);
        QCOMPARE(saved.customChordShortcuts->first().colItems.first(), ColumnItemType::note(9));

        // At fifty, a new name warns about the last one, which then goes.
        for (int i = 2; i <= 50; ++i)
            saved.saveCustomChord(custom(u"C%1"_qs.arg(i)));
        QCOMPARE(saved.customChordShortcuts->size(), 50);
        s.editor->createCustomShortcut();
        dialog.createButtonTapped(u"New"_qs);
        QCOMPARE(dialog.limitText(),
                 u"You've reached the limit for custom chords. If you continue, the rarely used "
                 u"\"Am\" chord will be replaced."_qs);
        dialog.createButtonTapped(u"Newer"_qs);
        QCOMPARE(saved.customChordShortcuts->size(), 50);
        QCOMPARE(saved.customChordShortcuts->first().name, u"Newer"_qs);
        QVERIFY(!namesOf(*saved.customChordShortcuts).contains(u"Am"_qs));
        // An existing name at fifty speaks of the name, and the list stays at fifty.
        s.editor->createCustomShortcut();
        dialog.createButtonTapped(u"C7"_qs);
        QVERIFY(dialog.limitText().startsWith(u"A custom chord with this name already exists"_qs));
        dialog.createButtonTapped(u"C7"_qs);
        QCOMPARE(saved.customChordShortcuts->size(), 50);
        QCOMPARE(saved.customChordShortcuts->first().name, u"C7"_qs);
    }

    void savingAChordTwiceWritesNothingAndMarksTheRecent()
    {
        SavedData &saved = SavedData::shared();
        saved.recentChords = QList<RecentChord>{{u"Am"_qs, false}, {u"G"_qs, false}};
        saved.saveCustomChord(custom(u"Am"_qs, 2));
        // The recent "Am" now leads to the user's chord.
        QCOMPARE(*saved.recentChords,
                 (QList<RecentChord>{{u"Am"_qs, true}, {u"G"_qs, false}}));
        QVERIFY(QFile::remove(saved.filePath));
        saved.saveCustomChord(custom(u"Am"_qs, 2));
        QVERIFY(!QFile::exists(saved.filePath));
        saved.saveCustomChord(custom(u"Am"_qs, 3));
        QVERIFY(QFile::exists(saved.filePath));
    }

    void aCustomChordSurvivesARestart()
    {
        SavedData::shared().saveCustomChord(custom(u"Keep"_qs, 3));
        SavedData::resetShared();
        Session s = open(u"restart"_qs);
        ChordShortcutMode &mode = *s.editor->chordShortcuts();
        s.editor->toggleChordShortcutMode();
        mode.searchTextChanged(u"keep"_qs);
        QCOMPARE(resultNames(mode), QStringList{u"Keep"_qs});
        QVERIFY(mode.searchResultButtons.first().chord.isCustom);
    }

    void aChordMadeByAnotherProcessArrives()
    {
        Session s = open(u"synced"_qs);
        ChordShortcutMode &mode = *s.editor->chordShortcuts();
        s.editor->toggleChordShortcutMode();
        QProcess child;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QString::fromLatin1(childFolderVariable),
                           CloudKeyValueStore::shared().folder());
        child.setProcessEnvironment(environment);
        child.start(QCoreApplication::applicationFilePath(), {u"childProcessSavesAChord"_qs});
        QVERIFY(child.waitForFinished(20000));
        QCOMPARE(child.exitCode(), 0);
        // The store takes the file in; the bar is built from what it holds.
        QTRY_VERIFY_WITH_TIMEOUT(
            namesOf(SavedData::shared().currentCustomChords()).contains(u"Remote"_qs), 5000);
        mode.coverWidth = 10000;
        mode.rebuildChordBar();
        QCOMPARE(barNames(mode).last(), u"Remote"_qs);
        QVERIFY(mode.topButtons.last().chord.isCustom);
    }

    // The second process of aChordMadeByAnotherProcessArrives: another machine's copy.
    void childProcessSavesAChord()
    {
        const QString childFolder = qEnvironmentVariable(childFolderVariable);
        if (childFolder.isEmpty())
            QSKIP("runs only as the child of aChordMadeByAnotherProcessArrives");
        CloudKeyValueStore store(childFolder);
        QTemporaryDir own;
        SavedData saved(QDir(own.path()).filePath(u"data.plist"_qs), &store);
        saved.saveCustomChord(custom(u"Remote"_qs, 5));
        QVERIFY(store.synchronize());
    }

    // Column headers

    void chordNameDialogWritesWithUndo()
    {
        Session s = open(u"header"_qs);
        SelectChordNameDialog &dialog = *s.editor->chordNamePicker();
        s.view->setEditPosition(0, 0);
        ChordNamesDisplay &display = s.view->showingTabRows[0].chordNamesDisplay;
        display.tap(3 * TabEditView::tabColumnWidth + 5);
        QVERIFY(dialog.shown());
        QCOMPARE(s.view->editColIndex, 3);
        QCOMPARE(dialog.presetText(0), QString());
        QCOMPARE(dialog.presetText(29), u"|"_qs);
        dialog.done(u"  " + dialog.presetText(29) + u"\n");
        QVERIFY(!dialog.shown());
        const TabColumnData &column = s.view->tabRows[0].colDatas[3];
        QCOMPARE(column.chordName, std::optional<QString>(u"|"_qs));
        QVERIFY(!column.hasBar());
        QCOMPARE(undoSteps(s.undo), 1);

        // The same name again is no step; the dot clears; ten characters are kept.
        display.tap(3 * TabEditView::tabColumnWidth + 5);
        QCOMPARE(dialog.initialText(), u"|"_qs);
        dialog.done(u"|"_qs);
        QCOMPARE(undoSteps(s.undo), 1);
        display.tap(3 * TabEditView::tabColumnWidth + 5);
        dialog.done(ChordNamesDisplay::placeholder);
        QVERIFY(!s.view->tabRows[0].colDatas[3].chordName);
        display.tap(3 * TabEditView::tabColumnWidth + 5);
        dialog.done(u"Cadd9/G#xx"_qs);
        QCOMPARE(s.view->tabRows[0].colDatas[3].chordName,
                 std::optional<QString>(u"Cadd9/G#xx"_qs));
        QCOMPARE(s.view->showingTabRows[0].chordNamesDisplay.chordNames[3],
                 std::optional<QString>(u"Cadd9/G#xx"_qs));
        // A tap outside changes nothing; undo walks back each name.
        display.tap(3 * TabEditView::tabColumnWidth + 5);
        dialog.dismiss();
        QCOMPARE(undoSteps(s.undo), 3);
        s.editor->undoEdit();
        QVERIFY(!s.view->tabRows[0].colDatas[3].chordName);
        s.editor->undoEdit();
        QCOMPARE(s.view->tabRows[0].colDatas[3].chordName, std::optional<QString>(u"|"_qs));
    }

    void chordNamesReachBothFileForms()
    {
        Session s = open(u"forms"_qs);
        s.view->showingTabRows[0].chordNamesDisplay.tap(TabEditView::tabColumnWidth + 1);
        s.editor->chordNamePicker()->done(u"F#m"_qs);
        const QString path = s.document->fileURL();
        s.editor->finishEditing();
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const auto stored = tabDataFromDocumentData(file.readAll());
        QVERIFY(stored);
        QCOMPARE(stored->tabRowDatas[0].colDatas[1].chordName, std::optional<QString>(u"F#m"_qs));
        const auto json = exchangeData(*stored);
        QVERIFY(json);
        const auto exchanged = tabDataFromExchangeData(*json);
        QVERIFY(exchanged);
        QCOMPARE(exchanged->tabRowDatas[0].colDatas[1].chordName,
                 std::optional<QString>(u"F#m"_qs));
    }

    // Lyric lines

    void lyricDropdownAddsChoosesAndRemoves()
    {
        Session s = open(u"lyrics"_qs);
        LyricLineDropdown &dropdown = *s.editor->lyricLines();
        auto texts = [&dropdown] {
            QStringList list;
            for (const QVariant &entry : dropdown.entries())
                list.append(entry.toMap().value(u"text"_qs).toString());
            return list;
        };
        dropdown.lyricLineButtPress(0);
        QCOMPARE(texts(), QStringList{u"+  add another line"_qs});
        dropdown.lyricDropdownTouched(10);
        QCOMPARE(texts(), (QStringList{u"1: -- blank line --"_qs, u"+  add another line"_qs}));
        QCOMPARE(undoSteps(s.undo), 1);
        for (int i = 1; i < 5; ++i)
            dropdown.lyricDropdownTouched(i * 38 + 5);
        // Five lines and no more.
        QCOMPARE(s.view->tabRows[0].lyricLines.size(), 5);
        QCOMPARE(texts().size(), 5);
        QVERIFY(!texts().contains(u"+  add another line"_qs));
        dropdown.lyricDropdownTouched(5 * 38 + 5);
        QCOMPARE(s.view->tabRows[0].lyricLines.size(), 5);

        // Undo with the dropdown open shows one entry less, and the adding entry again.
        s.editor->undoEdit();
        QCOMPARE(dropdown.activeRow(), 0);
        QCOMPARE(texts().size(), 5);
        QCOMPARE(texts().last(), u"+  add another line"_qs);

        // Choosing a line shows it in the field, which then writes to it.
        dropdown.lyricDropdownTouched(38 + 1);
        QCOMPARE(dropdown.activeRow(), -1);
        QCOMPARE(s.view->tabRows[0].selectedLyricLineIndex, 1);
        s.view->lyricsFieldTextChanged(0, u"second"_qs);
        s.view->commitLyricsField();
        QCOMPARE(s.view->tabRows[0].lyricLines[1], u"second"_qs);

        // Removing the selected line 2 selects line 1.
        dropdown.lyricLineButtPress(0);
        QCOMPARE(texts()[1], u"2: second"_qs);
        QVERIFY(dropdown.entries()[1].toMap().value(u"selected"_qs).toBool());
        dropdown.lyricLineRemovePress(38 * 1.5);
        QCOMPARE(s.view->tabRows[0].lyricLines.size(), 3);
        QCOMPARE(s.view->tabRows[0].selectedLyricLineIndex, 0);
        QCOMPARE(dropdown.activeRow(), 0);
        s.editor->undoEdit();
        QCOMPARE(s.view->tabRows[0].lyricLines[1], u"second"_qs);

        // The same hamburger twice closes; a cursor move closes too.
        dropdown.lyricLineButtPress(0);
        QCOMPARE(dropdown.activeRow(), -1);
        dropdown.lyricLineButtPress(0);
        s.editor->editRightPress();
        QCOMPARE(dropdown.activeRow(), -1);
    }

    void typedLyricsAreSavedWhenTheEditorClosesAtOnce()
    {
        Session s = open(u"closing"_qs);
        s.view->lyricsFieldTextChanged(0, u"last words"_qs);
        QVERIFY(s.view->lyricChangeTimer.isActive());
        QCOMPARE(s.view->lyricChangeTimer.interval(), 1000);
        const QString path = s.document->fileURL();
        s.editor->finishEditing();
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const auto stored = tabDataFromDocumentData(file.readAll());
        QVERIFY(stored);
        QCOMPARE(stored->tabRowDatas[0].lyricText(), std::optional<QString>(u"last words"_qs));
    }
};

LUTEGRID_TEST_MAIN(TestChords)
#include "tst_chords.moc"
