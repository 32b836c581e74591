#pragma once

#include "editor/chordshortcutmode.h"
#include "editor/customchordcreatedialog.h"
#include "editor/hardwarekeyboard.h"
#include "editor/lyriclinedropdown.h"
#include "editor/selectchordnamedialog.h"
#include "editor/magicedit.h"
#include "editor/tabrowpan.h"
#include "editor/tabscrollindicator.h"
#include "editor/tabsettingsdialogviewcontroller.h"
#include "library/conflictresolver.h"
#include "library/lutegriddocument.h"
#include "model/tabdata.h"
#include "surface/fretboard.h"
#include "surface/tabeditview.h"

#include <QObject>
#include <QPointer>
#include <QSizeF>
#include <QStringList>
#include <QTimer>
#include <QVariantMap>

#include <functional>
#include <memory>
#include <optional>

class DialogPresenter;
class SoundManager;

// The letters left of the fretboard stand for the open strings; the letters beside the tab
// only select in magic edit.
class StringTouchResponder {
public:
    enum class Strip { FretLetters, TabLetters };
    virtual ~StringTouchResponder() = default;
    virtual void stringTouched(Strip view, int stringNumber, int shownRow) = 0;
    virtual void stringReleased() = 0;
    virtual void stringCancelled(Strip view) = 0;
};

// The editor screen's decisions: the tools, fret input, the layout for a window size, and the
// link to the document; the row pan and the scroll indicator are parts of their own. It owns no
// pixels; the screen's items bind to its properties and hand it their touches.
class TabEditViewController : public QObject,
                              public EditHighlightListener,
                              public TabRowChangeListener,
                              public FretResponder,
                              public StringTouchResponder,
                              public DocumentChangeListener,
                              public TabSettingsListener {
    Q_OBJECT
    Q_PROPERTY(QString title READ title NOTIFY titleChanged)
    Q_PROPERTY(bool undoEnabled MEMBER undoEnabled NOTIFY toolsChanged)
    Q_PROPERTY(bool redoEnabled MEMBER redoEnabled NOTIFY toolsChanged)
    Q_PROPERTY(bool editLeftEnabled MEMBER editLeftEnabled NOTIFY toolsChanged)
    Q_PROPERTY(bool editRightEnabled MEMBER editRightEnabled NOTIFY toolsChanged)
    Q_PROPERTY(bool editMoveButtsCompacted MEMBER editMoveButtsCompacted NOTIFY layoutChanged)
    Q_PROPERTY(bool editMoveButtsShown MEMBER editMoveButtsShown NOTIFY toolsChanged)
    Q_PROPERTY(bool moreToolsUnseenDotShown MEMBER moreToolsUnseenDotShown NOTIFY toolsChanged)
    Q_PROPERTY(bool pressInProgress READ pressInProgress NOTIFY toolsChanged)
    Q_PROPERTY(bool compactToolbar MEMBER compactToolbar NOTIFY layoutChanged)
    Q_PROPERTY(QVariantMap buttonWidths READ buttonWidths NOTIFY layoutChanged)
    Q_PROPERTY(bool shortLayout MEMBER shortLayout NOTIFY layoutChanged)
    Q_PROPERTY(double navHeight MEMBER navHeight NOTIFY layoutChanged)
    Q_PROPERTY(double toolbarHeight READ toolbarHeight CONSTANT)
    Q_PROPERTY(double fretboardHeight MEMBER fretboardHeight NOTIFY layoutChanged)
    Q_PROPERTY(double fretLabelHeight MEMBER fretLabelHeight NOTIFY layoutChanged)
    Q_PROPERTY(double fretLettersWidth MEMBER fretLettersWidth NOTIFY layoutChanged)
    Q_PROPERTY(double tabLettersWidth READ tabLettersWidth CONSTANT)
    Q_PROPERTY(double tabEditViewHeight MEMBER tabEditViewHeight NOTIFY layoutChanged)
    Q_PROPERTY(double tabEditViewWidth MEMBER tabEditViewWidth NOTIFY layoutChanged)
    Q_PROPERTY(int visibleRows MEMBER visibleRows NOTIFY layoutChanged)
    Q_PROPERTY(bool freeScroll READ freeScroll NOTIFY layoutChanged)
    Q_PROPERTY(double tabLeftInset READ tabLeftInset NOTIFY layoutChanged)
    Q_PROPERTY(bool fadeOutBottomCoverHidden MEMBER fadeOutBottomCoverHidden NOTIFY layoutChanged)
    Q_PROPERTY(int nextRowPreviewRow MEMBER nextRowPreviewRow NOTIFY layoutChanged)
    Q_PROPERTY(QStringList stringNotes READ stringNotes NOTIFY layoutChanged)
    Q_PROPERTY(int capoFret READ capoFret NOTIFY layoutChanged)
    Q_PROPERTY(QObject *rowPan READ rowPanObject CONSTANT)
    Q_PROPERTY(QObject *scrollIndicator READ scrollIndicatorObject CONSTANT)
    Q_PROPERTY(QObject *keyboard READ keyboardObject CONSTANT)
    Q_PROPERTY(QObject *magic READ magicObject CONSTANT)
    Q_PROPERTY(bool moreToolsViewShowing MEMBER moreToolsViewShowing NOTIFY toolsChanged)
    Q_PROPERTY(QVariantList openStringMarks READ openStringMarks NOTIFY highlightsChanged)
    Q_PROPERTY(QObject *chordMode READ chordModeObject CONSTANT)
    Q_PROPERTY(QObject *customChordDialog READ customChordDialogObject CONSTANT)
    Q_PROPERTY(QObject *chordNameDialog READ chordNameDialogObject CONSTANT)
    Q_PROPERTY(QObject *lyricDropdown READ lyricDropdownObject CONSTANT)
    Q_PROPERTY(QObject *settingsDialog READ settingsDialogObject NOTIFY settingsDialogChanged)

public:
    // The surface and the fretboard are the screen's; without them the controller makes its own,
    // as tests do.
    TabEditViewController(LutegridDocument *document, TabEditView *surface = nullptr,
                          Fretboard *board = nullptr, QObject *parent = nullptr);
    ~TabEditViewController() override;

    static constexpr double toolbarHeightValue = 55.0;
    static constexpr double tabLettersWidthValue = 28.0;
    static constexpr double indicatorWidth = 14.0;

    // Editor state that carries logic.
    bool fretRegTouchInProgress = false;
    bool fretZeroTouchInProgress = false;
    bool inMagicEditMode = false;
    bool editMoveButtsCompacted = false;
    bool editMoveButtsCanShow = false;
    bool editMoveButtsShown = false;
    QTimer editMoveButtsTimer;
    const QPointer<LutegridDocument> lgDocument;
    // The tab edited: the document's own, which the surface edits in place.
    const TabData &tabData() const { return surface->tab(); }
    double initialFretboardHeight = -1.0;
    double baseFretboardHeight = -1.0;
    double initialFretLettersWidth = -1.0;
    double initialTabEditViewHeight = -1.0;
    double baseTabEditViewHeight = -1.0;
    std::optional<QSizeF> prevViewSize;
    bool freeVerticalDetermined = false;

    // What the layout decided.
    double navHeight = 56.0;
    double bottomInset = 0.0;
    // A desktop counts as a tablet: the free-scroll setting applies there.
    bool desktopIdiom = true;
    bool compactToolbar = false;
    bool shortLayout = false;
    double fretboardHeight = 330.0;
    double fretLabelHeight = 50.0;
    double fretLettersWidth = 44.0;
    double tabEditViewHeight = 0.0;
    double tabEditViewWidth = 0.0;
    int visibleRows = 1;
    bool fadeOutBottomCoverHidden = false;
    int nextRowPreviewRow = -1;
    bool undoEnabled = false;
    bool redoEnabled = false;
    bool editLeftEnabled = false;
    bool editRightEnabled = true;
    bool moreToolsUnseenDotShown = false;
    bool moreToolsViewShowing = false;
    // The height of the screen as last laid out, for the limit of a selection band.
    double viewHeight = 0.0;

    TabEditView *tabEditView() const { return surface; }
    Fretboard *fretboard() const { return board; }
    TabRowPan *rowPan() const { return pan.get(); }
    TabScrollIndicator *scrollIndicator() const { return indicator.get(); }
    QObject *rowPanObject() const { return pan.get(); }
    QObject *scrollIndicatorObject() const { return indicator.get(); }
    HardwareKeyboard *keyboard() const { return keys.get(); }
    MagicEdit *magicEdit() const { return magic.get(); }
    QObject *magicObject() const { return magic.get(); }
    QObject *keyboardObject() const { return keys.get(); }
    ChordShortcutMode *chordShortcuts() const { return chordShortcutMode.get(); }
    QObject *chordModeObject() const { return chordShortcutMode.get(); }
    CustomChordCreateDialog *customChordCreator() const { return customChordDialog.get(); }
    QObject *customChordDialogObject() const { return customChordDialog.get(); }
    SelectChordNameDialog *chordNamePicker() const { return chordNameDialog.get(); }
    QObject *chordNameDialogObject() const { return chordNameDialog.get(); }
    LyricLineDropdown *lyricLines() const { return lyricDropdown.get(); }
    QObject *lyricDropdownObject() const { return lyricDropdown.get(); }
    void setDialogPresenter(DialogPresenter *presenter)
    {
        dialogs = presenter;
        chordShortcutMode->dialogs = presenter;
    }
    DialogPresenter *dialogPresenter() const { return dialogs; }
    // For tests that play no sound; absent: the shared one.
    void setSoundManager(SoundManager *manager) { soundManager = manager; }
    // How many tabs the library holds, as the app last counted them.
    qsizetype existingTabCount = 0;

    QString title() const;
    bool pressInProgress() const { return fretRegTouchInProgress || fretZeroTouchInProgress; }
    QVariantMap buttonWidths() const;
    double toolbarHeight() const { return toolbarHeightValue; }
    double tabLettersWidth() const { return tabLettersWidthValue; }
    bool freeScroll() const { return surface->freeVerticalScroll; }
    // Free scroll centres the rows: the letters stand at their left edge.
    double tabLeftInset() const { return surface->tabLeftInset(); }
    QStringList stringNotes() const { return surface->stringNotes; }
    int capoFret() const { return int(tabData().capoFret); }
    QVariantList openStringMarks() const;

    // Layout for the screen's size.
    Q_INVOKABLE void applyViewSize(double w, double h);
    void setVisibleRows(int rows, double height);
    bool freeScrollWanted() const;

    // Toolbar.
    Q_INVOKABLE void tabClear();
    Q_INVOKABLE void undoEdit();
    Q_INVOKABLE void redoEdit();
    Q_INVOKABLE void addTabColumn();
    Q_INVOKABLE void deleteTabColumn();
    Q_INVOKABLE void addTabRow();
    Q_INVOKABLE void insertTabRow();
    Q_INVOKABLE void deleteTabRow();
    Q_INVOKABLE void putBarButtPress();
    Q_INVOKABLE void editLeftPress();
    Q_INVOKABLE void editRightPress();
    // Chord shortcut mode and the user's chords.
    Q_INVOKABLE void toggleChordShortcutMode();
    Q_INVOKABLE void createCustomShortcut();
    // The tool modes (tabeditviewtools.cpp): at most one of them is on.
    Q_INVOKABLE void toggleMagicEditMode();
    Q_INVOKABLE void toggleMoreToolsView();
    // A tap on the string letters beside the tab, y in the surface's frame.
    Q_INVOKABLE void tabLetterTapped(double y);
    void updateUndoButtons();
    void showEditMoveButts();
    void hideEditMoveButts();
    void refreshFretHighlights();

    // The open-string letters, for the screen's letter strip.
    Q_INVOKABLE void fretLetterPressed(int stringNumber)
    {
        stringTouched(Strip::FretLetters, stringNumber, 0);
    }
    Q_INVOKABLE void fretLetterReleased() { stringReleased(); }
    Q_INVOKABLE void fretLetterCancelled() { stringCancelled(Strip::FretLetters); }

    // The tab settings dialog (tabeditsettings.cpp): at most one, over the screen.
    Q_INVOKABLE void openSettingsMenu();
    Q_INVOKABLE void closeSettingsMenu();
    TabSettingsDialogViewController *settingsDialog() const { return tabSettingsDialog.get(); }
    QObject *settingsDialogObject() const { return tabSettingsDialog.get(); }
    void applyTabSettings(const QStringList &tuning, qint64 capo, qint64 lyricSize,
                          const std::optional<QString> &intro, qint64 tempo, bool notesOnTabChanged,
                          bool fretCountChanged, bool colHeadersChanged) override;
    // The tab's values changed, by the dialog or by undo: the views follow.
    void tabValuesChanged(bool stringCountChanged);
    void stringCountChanged();

    // Closing: the document closes, with no question asked.
    Q_INVOKABLE void finishEditing();

    // View mode starts on the cursor (x column, y row) and hands a row and column back.
    Q_INVOKABLE QPoint viewModeStartPoint() const;
    Q_INVOKABLE void showRowFromViewMode(int row, int column);

    // Conflicts: the rows of the open dialog and the choice made in it.
    std::optional<ConflictResolver> conflictResolver;
    void confirmConflictSelection(int row);

    // Every step done, undone or redone on the document's undo manager.
    void undoStateChanged();
    // EditHighlightListener, TabRowChangeListener.
    void editHighlightMoved(bool atFirstColumn, bool atLastColumn) override;
    void tabWidthChanged(double tabWidth) override;
    void tabRowCountChanged() override;
    void tabRowPositionChanged(int tabRowIndex, int showingCount, int totalCount) override;
    void columnItemChanged() override;
    void lyricsFieldEdited() override;
    // FretResponder.
    void fretTouched(int stringNum, int fretNum) override;
    void fretTouchesEnded() override;
    void fretTouchesCancelled() override;
    // StringTouchResponder.
    void stringTouched(Strip view, int stringNumber, int shownRow) override;
    void stringReleased() override;
    void stringCancelled(Strip view) override;
    // DocumentChangeListener.
    void documentConflictDetected(const std::optional<QList<FileVersion>> &versions) override;
    void documentReloaded(const TabData &newData) override;

Q_SIGNALS:
    void titleChanged();
    void toolsChanged();
    void layoutChanged();
    void highlightsChanged();
    void settingsDialogChanged();
    // The editor is done; the screen goes.
    void finished();
    // A conflict came with no versions to offer: the window goes back to the first screen of
    // its navigation, without animation.
    void returnToRootRequested();

private:
    // The one gate of the tools that must wait for a fret press to end: runs `tool` unless a
    // press is in progress, and answers whether it ran.
    bool runGuardedTool(const std::function<void()> &tool);
    void addRowAtEnd();
    void deleteCursorRow();
    void loadIntoSurface();
    void commitPress();
    void markToolsSeen(bool fromSender);
    void checkUnseenTools();
    void applyStringLayout();
    void pressString(int stringNumber, qint64 fret);

    TabEditView *surface = nullptr;
    Fretboard *board = nullptr;
    std::unique_ptr<TabEditView> ownSurface;
    std::unique_ptr<Fretboard> ownBoard;
    // After the surface they work on, so that they go first.
    std::unique_ptr<TabScrollIndicator> indicator;
    std::unique_ptr<TabRowPan> pan;
    std::unique_ptr<HardwareKeyboard> keys;
    std::unique_ptr<ChordShortcutMode> chordShortcutMode;
    std::unique_ptr<CustomChordCreateDialog> customChordDialog;
    std::unique_ptr<SelectChordNameDialog> chordNameDialog;
    std::unique_ptr<LyricLineDropdown> lyricDropdown;
    void setUpChordsAndLyrics();
    std::unique_ptr<MagicEdit> magic;
    DialogPresenter *dialogs = nullptr;
    SoundManager *soundManager = nullptr;
    std::unique_ptr<TabSettingsDialogViewController> tabSettingsDialog;
    QList<FretPosition> openStrings;
    bool finishedEditing = false;
};
