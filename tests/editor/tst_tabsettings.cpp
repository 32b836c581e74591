#include "editorsession.h"
#include "testmain.h"

#include "editor/tabsettingsdialogviewcontroller.h"
#include "model/columnitemtype.h"
#include "model/tabfileformat.h"

#include <QSignalSpy>
#include <QTest>

// The tab settings dialog without a window: its limits, the warning, and what saving does to the
// tab (one undo step), to the editor's views and to the global settings.
class TestTabSettings : public QObject {
    Q_OBJECT

private:
    // Notes on every string of every column of the first row: fret = string index + column.
    static void fillRow(Session &s)
    {
        TabEdits *edits = s.document->edits();
        for (int c = 0; c < edits->rows()[0].colDatas.size(); ++c) {
            for (int i = 0; i < 6; ++i)
                edits->setColumnItem(0, c, i, ColumnItemType::note(i + c));
        }
        s.undo->removeAllActions();
    }
    std::unique_ptr<TabSettingsDialogViewController> dialogFor(Session &s)
    {
        return std::make_unique<TabSettingsDialogViewController>(
            s.editor->tabData(), SavedData::shared(), s.editor.get(), 25);
    }

    EditorSessions sessions;

private Q_SLOTS:
    void init() { sessions.prepare(); }

    void fillsFromTheTab()
    {
        Session s = sessions.open(u"fill"_qs);
        auto d = dialogFor(s);
        QCOMPARE(d->stringCount(), 6);
        QCOMPARE(d->tuningNames().value(d->tuningIndex()), u"Standard"_qs);
        QVERIFY(!d->labelsBordered);
        QCOMPARE(d->tuningFromLabels(), s.editor->tabData().stringNotes);
        // Labels 8 and 7 are the extra low strings, hidden on six.
        QCOMPARE(d->labelNotes(), QStringList({{}, {}, u"E"_qs, u"A"_qs, u"D"_qs, u"G"_qs,
                                                u"B"_qs, u"E"_qs}));
        QCOMPARE(d->introButtTitle(), u"Add tab intro"_qs);
        QCOMPARE(d->viewAllGeneralTitle(), u"View all general settings"_qs);
        d->viewAllGeneralPress();
        QCOMPARE(d->viewAllGeneralTitle(), u"Collapse general settings"_qs);
    }

    void labelsForEveryCount_data()
    {
        QTest::addColumn<int>("count");
        QTest::addColumn<QStringList>("labels");
        QTest::newRow("4") << 4 << QStringList({{}, {}, u"E"_qs, u"A"_qs, u"D"_qs, u"G"_qs, {}, {}});
        QTest::newRow("5") << 5
                           << QStringList({{}, {}, u"B"_qs, u"E"_qs, u"A"_qs, u"D"_qs, u"G"_qs, {}});
        QTest::newRow("7") << 7
                           << QStringList({{}, u"B"_qs, u"E"_qs, u"A"_qs, u"D"_qs, u"G"_qs,
                                           u"B"_qs, u"E"_qs});
        QTest::newRow("8") << 8
                           << QStringList({u"F#"_qs, u"B"_qs, u"E"_qs, u"A"_qs, u"D"_qs, u"G"_qs,
                                           u"B"_qs, u"E"_qs});
    }
    void labelsForEveryCount()
    {
        QFETCH(int, count);
        QFETCH(QStringList, labels);
        Session s = sessions.open(u"labels"_qs);
        auto d = dialogFor(s);
        d->stringCountChange(count);
        QCOMPARE(d->labelNotes(), labels);
        QCOMPARE(d->tuningIndex(), 0);
        QCOMPARE(d->tuningFromLabels(), *GuitarTunings::presetsFor(count).first().stringNotes);
        // A tap on the hidden label's place opens nothing.
        if (count < 8)
            QVERIFY(!d->openNoteMenu(d->labelAt(10, 400), 10, 10, 0, 0, 400, 400));
    }

    void limits()
    {
        Session s = sessions.open(u"limits"_qs);
        auto d = dialogFor(s);
        d->stringCountChange(9);
        QCOMPARE(d->stringCount(), 8);
        d->stringCountChange(3);
        QCOMPARE(d->stringCount(), 4);
        d->setLyricSize(125);
        QCOMPARE(d->lyricSize(), 120);
        QCOMPARE(d->lyricSizeText(), u"120%"_qs);
        d->setLyricSize(20);
        QCOMPARE(d->lyricSize(), 25);
        d->setFretCount(100);
        QCOMPARE(d->fretCount(), 80);
        d->setFretCount(12);
        QCOMPARE(d->fretCount(), 21);
        d->setAutoCursor(5);
        QCOMPARE(d->autoCursor(), 3);
        d->setDefaultStringCount(2);
        QCOMPARE(d->defaultStringCount(), 4);
        // Tempo 30 at the slider's start, 300 at its end, 165 in the middle.
        d->tempoSliderChanged(0.0);
        QCOMPARE(d->tempoValue, 30);
        d->tempoSliderChanged(1.0);
        QCOMPARE(d->tempoValue, 300);
        d->tempoSliderChanged(0.5);
        QCOMPARE(d->tempoValue, 165);
        d->tempoSliderChanged(7.0);
        QCOMPARE(d->tempoValue, 300);
        // The capo snaps to whole frets and stops at the last fret.
        d->setCapoSlider(2.6);
        QCOMPARE(d->capoFret(), 3);
        d->setCapoSlider(40);
        QCOMPARE(d->capoFret(), 25);
        d->setCapoSlider(-3);
        QCOMPARE(d->capoFret(), 0);
    }

    void customTuningByString()
    {
        Session s = sessions.open(u"custom"_qs);
        auto d = dialogFor(s);
        // Eighths of the area from the left: 8, 7, 6 … 2, then 1.
        QCOMPARE(d->labelAt(399, 400), 1);
        QCOMPARE(d->labelAt(120, 400), 6);
        QCOMPARE(d->labelAt(310, 400), 2);
        // The same note leaves the picker where it was.
        d->chooseStringNote(6, u"E"_qs);
        QCOMPARE(d->tuningIndex(), 0);
        // The menu on label 6 starts at its note; sliding to D# and lifting chooses it.
        QVERIFY(d->openNoteMenu(6, 100, 100, 0, 0, 400, 400));
        const QVariantList entries = d->noteMenuEntries();
        QCOMPARE(entries.size(), 12);
        const QVariantMap dSharp = entries[6].toMap();
        QCOMPARE(dSharp[u"text"_qs].toString(), u"D#"_qs);
        d->noteMenuMoved(dSharp[u"x"_qs].toDouble(), dSharp[u"y"_qs].toDouble());
        d->noteMenuReleased(dSharp[u"x"_qs].toDouble(), dSharp[u"y"_qs].toDouble());
        QCOMPARE(d->stringLabel(6), u"D#"_qs);
        QCOMPARE(d->tuningNames().value(d->tuningIndex()), u"Custom"_qs);
        QCOMPARE(d->noteMenuLabel(), 0);
        // The lifting finger is no tap outside, for a moment.
        QSignalSpy dismissed(d.get(), &TabSettingsDialogViewController::dismissed);
        d->touchEndedOutside();
        QCOMPARE(dismissed.count(), 0);
        QTRY_VERIFY(!d->ignoreTouchUpsSet());
        // A tap opens the ring and keeps it up for a second tap on a note.
        QVERIFY(d->openNoteMenu(1, 300, 100, 0, 0, 400, 400));
        d->noteMenuReleased(300, 100);
        QCOMPARE(d->noteMenuLabel(), 1);
        const QVariantMap f = d->noteMenuEntries()[8].toMap();
        d->noteMenuMoved(f[u"x"_qs].toDouble(), f[u"y"_qs].toDouble());
        d->noteMenuReleased(f[u"x"_qs].toDouble(), f[u"y"_qs].toDouble());
        QCOMPARE(d->stringLabel(1), u"F"_qs);

        d->saveChangesButt();
        QCOMPARE(dismissed.count(), 1);
        const QStringList custom{u"D#"_qs, u"A"_qs, u"D"_qs, u"G"_qs, u"B"_qs, u"F"_qs};
        QCOMPARE(s.editor->tabData().stringNotes, custom);
        QCOMPARE(s.view->stringNotes, custom);
        // Both file forms keep it.
        const TabData &tab = s.editor->tabData();
        QCOMPARE(tabDataFromDocumentData(documentData(tab))->stringNotes, custom);
        QCOMPARE(tabDataFromExchangeData(*exchangeData(tab))->stringNotes, custom);
        // Shown again, it is the custom row with a border; a preset's notes show as the preset.
        auto again = dialogFor(s);
        QCOMPARE(again->tuningNames().value(again->tuningIndex()), u"Custom"_qs);
        QVERIFY(again->labelsBordered);
        again->chooseStringNote(6, u"D"_qs);
        again->chooseStringNote(1, u"E"_qs);
        again->saveChangesButt();
        QCOMPARE(dialogFor(s)->tuningNames().value(dialogFor(s)->tuningIndex()), u"Drop D"_qs);
    }

    void stringCountConvertsInOneStep()
    {
        Session s = sessions.open(u"strings"_qs, 2);
        fillRow(s);
        const QList<TabRowData> before = s.editor->tabData().tabRowDatas;

        auto d = dialogFor(s);
        d->stringCountChange(7);
        d->saveChangesButt();
        // Notes on the tab: the dialog warns and waits.
        QVERIFY(d->warningShown());
        QCOMPARE(s.editor->tabData().stringCount(), 6);
        d->continueAfterWarning();
        const TabData &tab = s.editor->tabData();
        QCOMPARE(tab.stringNotes, *GuitarTunings::tuningPresets7string().first().stringNotes);
        QCOMPARE(undoSteps(s.undo), 1);
        for (const TabRowData &row : tab.tabRowDatas) {
            QCOMPARE(row.stringCount, 7);
            for (const TabColumnData &column : row.colDatas)
                QCOMPARE(column.columnItems.size(), 7);
        }
        // The new lowest string is blank; the six stay on top.
        const TabColumnData &column = tab.tabRowDatas[0].colDatas[2];
        QCOMPARE(column.columnItems.mid(0, 6), before[0].colDatas[2].columnItems);
        QVERIFY(column.columnItems[6].isBlank());
        QCOMPARE(s.view->stringCount(), 7);
        QCOMPARE(s.editor->fretboard()->numStrings, 7.0);
        QCOMPARE(s.editor->baseTabEditViewHeight, 279.0 + 20.0);

        s.editor->undoEdit();
        QCOMPARE(s.editor->tabData().tabRowDatas, before);
        QCOMPARE(s.view->stringCount(), 6);
        s.editor->redoEdit();
        QCOMPARE(s.editor->tabData().stringCount(), 7);
        s.editor->undoEdit();

        // To four: the two highest strings go, and undo brings their notes back.
        auto four = dialogFor(s);
        four->stringCountChange(4);
        four->continueAfterWarning();
        const TabColumnData &small = s.editor->tabData().tabRowDatas[0].colDatas[5];
        QCOMPARE(small.columnItems, before[0].colDatas[5].columnItems.mid(2));
        QCOMPARE(s.editor->baseTabEditViewHeight, 279.0 - 40.0);
        QCOMPARE(undoSteps(s.undo), 1);
        s.editor->undoEdit();
        QCOMPARE(s.editor->tabData().tabRowDatas, before);
        QCOMPARE(s.editor->tabData().stringNotes, standardStringNotes(6));
        s.editor->redoEdit();
        QCOMPARE(s.editor->tabData().tabRowDatas[0].colDatas[5], small);
    }

    void warningOnlyWhenContentChanges()
    {
        // Blank rows change count freely; eleven rows warn even when blank.
        Session blank = sessions.open(u"blank"_qs, 3);
        auto d = dialogFor(blank);
        d->stringCountChange(7);
        d->saveChangesButt();
        QVERIFY(!d->warningShown());
        QCOMPARE(blank.editor->tabData().stringCount(), 7);

        Session many = sessions.open(u"many"_qs, 11);
        auto m = dialogFor(many);
        m->stringCountChange(5);
        m->pickTuning(1);
        m->saveChangesButt();
        QVERIFY(m->warningShown());
        // Cancel leaves the dialog up with the tab's own count and tuning.
        m->cancelAfterWarning();
        QVERIFY(!m->warningShown());
        QCOMPARE(m->stringCount(), 6);
        QCOMPARE(m->tuningFromLabels(), standardStringNotes(6));
        // Another tuning of the same count needs no warning.
        m->pickTuning(1);
        m->saveChangesButt();
        QVERIFY(!m->warningShown());
        QCOMPARE(many.editor->tabData().stringNotes.first(), u"D"_qs);
    }

    void tabValuesAreOneStepAndTempoNone()
    {
        Session s = sessions.open(u"values"_qs);
        auto d = dialogFor(s);
        d->setCapoSlider(3);
        d->setLyricSize(120);
        d->introEdited(u"  Slowly\n\nwith feeling \n"_qs);
        QCOMPARE(d->introButtTitle(), u"Edit tab intro"_qs);
        d->tempoSliderChanged(0.5);
        d->saveChangesButt();
        const TabData &tab = s.editor->tabData();
        QCOMPARE(tab.capoFret, 3);
        QCOMPARE(tab.lyricSize, 120);
        QCOMPARE(tab.introText, u"Slowly\n\nwith feeling"_qs);
        QCOMPARE(tab.tempo, 165);
        QCOMPARE(s.view->lyricsSizePercentage, 120);
        QCOMPARE(s.view->showingTabRows.first().lyricsField.fontSize, 24.0 * 1.2);
        QCOMPARE(undoSteps(s.undo), 1);
        QVERIFY(s.document->hasUnsavedChanges());
        s.editor->undoEdit();
        QCOMPARE(tab.capoFret, 0);
        QCOMPARE(tab.lyricSize, 100);
        QVERIFY(!tab.introText);
        QCOMPARE(s.view->lyricsSizePercentage, 100);
        // The tempo has no step of its own.
        QCOMPARE(tab.tempo, 165);
        // Saving with nothing changed makes no step.
        dialogFor(s)->saveChangesButt();
        QCOMPARE(undoSteps(s.undo), 0);
    }

    void introKeepsFifteenLines()
    {
        QStringList lines;
        for (int i = 1; i <= 17; ++i)
            lines.append(QString::number(i));
        const QString value = *TabSettingsDialogViewController::introValueFor(lines.join(u'\n'));
        QCOMPARE(value.split(u'\n').size(), 15);
        QCOMPARE(value.split(u'\n').last(), u"151617"_qs);
        QVERIFY(!TabSettingsDialogViewController::introValueFor(u" \n \n"_qs));
    }

    void nothingChangesUntilSaved()
    {
        Session s = sessions.open(u"unsaved"_qs);
        SavedData &saved = SavedData::shared();
        auto d = dialogFor(s);
        QSignalSpy dismissed(d.get(), &TabSettingsDialogViewController::dismissed);
        d->stringCountChange(4);
        d->setCapoSlider(5);
        d->playSounds = true;
        d->setAutoCursor(2);
        d->touchEndedOutside();
        QCOMPARE(dismissed.count(), 1);
        QCOMPARE(s.editor->tabData().stringCount(), 6);
        QCOMPARE(s.editor->tabData().capoFret, 0);
        QVERIFY(!saved.playSounds);
        QCOMPARE(saved.autoCursorAmount, 1);
    }

    void globalValuesSurviveARestart()
    {
        Session s = sessions.open(u"global"_qs);
        SavedData &saved = SavedData::shared();
        saved.lastFretCount = 0;
        saved.defaultStringCount = 0;
        saved.hideColHeaders = false;
        saved.notesOnTab = false;
        auto d = dialogFor(s);
        // Unset values show their defaults and are stored as such.
        QCOMPARE(d->fretCount(), 25);
        QCOMPARE(d->defaultStringCount(), 6);
        QCOMPARE(saved.lastFretCount, 25);
        QVERIFY(d->flashNavArrows);
        QVERIFY(d->colHeaders);

        d->notesOnTab = true;
        d->setFretCount(30);
        d->setAutoCursor(3);
        d->playSounds = true;
        d->setDefaultStringCount(7);
        d->flashNavArrows = false;
        d->colHeaders = false;
        d->freeScroll = true;
        d->saveChangesButt();
        // The editor follows at once: headers hidden, fret count, note names.
        QVERIFY(s.view->settings.hideColHeaders);
        QVERIFY(s.view->settings.notesOnTab);
        QCOMPARE(s.editor->fretboard()->numFrets, 30.0);
        QCOMPARE(s.editor->initialTabEditViewHeight, 279.0 - 25.0);

        SavedData::resetShared();
        QVERIFY(saved.notesOnTab);
        QCOMPARE(saved.lastFretCount, 30);
        QCOMPARE(saved.autoCursorAmount, 3);
        QVERIFY(saved.playSounds);
        QCOMPARE(saved.defaultStringCount, 7);
        QVERIFY(saved.disableFlashNavArrows);
        QVERIFY(saved.hideColHeaders);
        QVERIFY(saved.freeScrollSetting);
        saved.hideColHeaders = false;
        saved.notesOnTab = false;
        saved.defaultStringCount = 6;
        saved.save();
    }

    void ctrlCommaOpensTheSettingsAndBlocksKeys()
    {
        Session s = sessions.open(u"keys"_qs);
        HardwareKeyboard *keys = s.editor->keyboard();
        QVERIFY(keys->pressBegan(KeyPress{Qt::Key_Comma, u","_qs, Qt::ControlModifier, false}));
        QVERIFY(s.editor->settingsDialog());
        // The editor's keys wait while the dialog is up.
        QVERIFY(!keys->pressBegan(KeyPress{Qt::Key_Right, {}, {}, false}));
        QCOMPARE(s.view->editColIndex, 0);
        s.editor->settingsDialog()->cancel();
        QTRY_VERIFY(!s.editor->settingsDialog());
        QVERIFY(keys->pressBegan(KeyPress{Qt::Key_Right, {}, {}, false}));
        QCOMPARE(s.view->editColIndex, 1);
    }
};

LUTEGRID_TEST_MAIN(TestTabSettings)
#include "tst_tabsettings.moc"
