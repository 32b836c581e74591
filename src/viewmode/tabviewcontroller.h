#pragma once

#include "model/tabdata.h"
#include "model/viewmodeoptions.h"
#include "songsequence.h"
#include "surface/surfacesettings.h"
#include "viewmodelayout.h"
#include "viewmodetimers.h"

#include <QObject>
#include <QPointF>
#include <QRectF>
#include <QVariantMap>

#include <functional>
#include <memory>
#include <optional>

// What view mode adds beyond the tab's own playback record: a measure of clicks before the
// first column and a click on every beat. Off unless the user turns them on; kept for the run.
struct ViewModeExtraOptions {
    bool countIn = false;
    bool metronome = false;

    friend bool operator==(const ViewModeExtraOptions &, const ViewModeExtraOptions &) = default;
};

// The read-only screen of one tab: the rows laid out to read, the highlight, the page's scroll
// and playback on one repeating timer. It never writes rows; what leaves it (the playback
// options, the display options, the row handed back) goes out through the hooks below, which
// the screen fills and tests replace.
class TabViewController : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isPlaying READ playing NOTIFY playingChanged)
    Q_PROPERTY(QString title READ title CONSTANT)
    Q_PROPERTY(QString introText READ introText CONSTANT)
    Q_PROPERTY(int entryCount READ entryCount NOTIFY entriesChanged)
    Q_PROPERTY(double stackWidth READ stackWidth NOTIFY entriesChanged)
    Q_PROPERTY(double stackX READ stackX NOTIFY entriesChanged)
    Q_PROPERTY(double contentHeight READ contentHeight NOTIFY entriesChanged)
    Q_PROPERTY(bool highlightVisible READ highlightVisible NOTIFY highlightChanged)
    Q_PROPERTY(QRectF highlightRect READ highlightRect NOTIFY highlightChanged)
    Q_PROPERTY(int highlightRow READ highlightRow NOTIFY highlightChanged)
    Q_PROPERTY(int highlightColumn READ highlightColumn NOTIFY highlightChanged)
    Q_PROPERTY(QVariantMap options READ optionsMap NOTIFY optionsChanged)
    Q_PROPERTY(bool twoColumns READ twoColumns NOTIFY optionsChanged)
    // Steps when entries already made move or change size; a new entry alone leaves it.
    Q_PROPERTY(int layoutRevision MEMBER layoutRevision NOTIFY entriesMoved)

public:
    using ColumnPlayer = std::function<void(const QList<ColumnItemType> &columnItems,
                                            const QStringList &stringNotes, bool silent)>;

    // Spacing of the page around the stack, and under its last row.
    static constexpr double sideMargin = 16.0;
    static constexpr double topMargin = 12.0;
    static constexpr double bottomMargin = 40.0;
    static constexpr double batchDelay = 0.07;
    static constexpr double firstJumpSettle = 0.05;
    static constexpr double highlightScrollLock = 1.0;

    // `startPoint`: x the editor's cursor column, y its row. `timers` is not owned; without it
    // the controller keeps real ones.
    TabViewController(TabData tabData, std::optional<QPointF> startPoint,
                      ViewModeTimers *timers = nullptr, QObject *parent = nullptr);
    ~TabViewController() override;

    // Hooks. Each may be empty.
    ColumnPlayer columnPlayer;
    // A click of the count-in or the metronome; `accent` on the first beat of a measure.
    std::function<void(bool accent)> clickPlayer;
    // The display half for the run, under tabPath. The playback half into the tab: false when
    // there is no editor to mark its document changed.
    std::function<void(const QString &tabPath, const ViewModeDisplayOptions &)> storeDisplayOptions;
    std::function<void(const ViewModePlaybackOptions &)> savePlaybackOptions;
    std::function<void(const QString &message)> showMessage;

    TabData tabData;
    SongSequence sequence;
    std::optional<QString> tabPath;
    int initialTabRowIndex = -1;
    int nextTabRowIndexToDisplay = -1;
    ViewModeOptions viewConfigState;
    ViewModeExtraOptions extraOptions;
    bool isPlaying = false;
    bool wasImplicitlyPaused = false;
    bool highlightScrollInProgress = false;

    // Reads the options: the display half stored for this tab, else the start values; the tab's
    // playback record, else its tempo and the defaults. Then lays out and builds the sequence.
    void load(const std::optional<ViewModeDisplayOptions> &storedDisplay, SurfaceSettings settings,
              const ViewModeExtraOptions &extra = {});

    // Playback.
    Q_INVOKABLE void setPlaying(bool playing);
    Q_INVOKABLE void togglePlaying() { setPlaying(!isPlaying); }
    void playNextColumn();
    void playColumn(int row, int col, bool silent);
    // Seconds between two ticks with the current options.
    double tickLength() const;
    const QList<SongSequenceEvent> &activeSongArray() const;

    // Manual moves; neither plays a note.
    Q_INVOKABLE void moveHighlightColumn(int delta, bool allowBeforeFirst = true);
    Q_INVOKABLE void moveHighlightRow(int delta);
    // A tap at a point of the page.
    Q_INVOKABLE void handleTap(double pageX, double pageY);
    // A key of the keyboard; true if it meant something here.
    Q_INVOKABLE bool pressKey(int key, const QString &text);

    // The page. The screen reports its size, the intro's height, its scroll and drags.
    Q_INVOKABLE void setViewSize(double width, double height);
    Q_INVOKABLE void setIntroHeight(double height);
    Q_INVOKABLE void setScrollState(double contentY, bool dragging);
    void startDisplayRows();
    void scrollToTabRowView(int index);
    void showHighlight();
    void scrollToHighlight();
    double contentY() const { return pageContentY; }
    const ViewModeLayout &layout() const { return *rows; }

    // The options dialog and the export dialog come and go through these.
    Q_INVOKABLE void viewOptionsOpening();
    void applyViewOptions(const ViewModeOptions &options, const ViewModeExtraOptions &extra);
    Q_INVOKABLE void exportOpening() { setPlaying(false); }
    // The screen goes: playback stops and the highlighted row goes back to the editor.
    Q_INVOKABLE void viewWillDisappear();

    // For the screen's items.
    bool playing() const { return isPlaying; }
    QString title() const { return tabData.title; }
    QString introText() const { return tabData.introText.value_or(QString()); }
    int entryCount() const { return int(rows->entries.size()); }
    double stackWidth() const { return rows->stackWidth; }
    double stackX() const { return (viewWidth - rows->stackWidth) / 2.0; }
    double stackTop() const { return topMargin; }
    double contentHeight() const;
    bool highlightVisible() const { return highlightFrame.has_value(); }
    // In page coordinates.
    QRectF highlightRect() const;
    int highlightRow() const;
    int highlightColumn() const;
    Q_INVOKABLE QRectF entryFrame(int index) const;
    Q_INVOKABLE int entryFirstRow(int index) const;
    Q_INVOKABLE int entryRowCount(int index) const;
    Q_INVOKABLE QRectF entryChildFrame(int index, int within) const;
    // A row view for painting: the row's frame size in the entry.
    TabRowWithMarkupView rowViewForPaint(int entry, int within) const;
    QVariantMap optionsMap() const;
    bool twoColumns() const { return viewConfigState.displayOptions.twoColumns; }

Q_SIGNALS:
    void playingChanged();
    void entriesChanged();
    // Entries from `first` on are new or moved.
    void entriesAppended(int first, int last);
    void entriesReset();
    // The same entries, sized or placed anew.
    void entriesMoved();
    void highlightChanged();
    void optionsChanged();
    // The page should move to y; animated for the automatic scroll of playback.
    void scrollRequested(double y, bool animated);
    // The screen goes: the editor shows `row` with its cursor on `column`.
    void handBack(int row, int column);
    // One column left for the sound layer, with the tick's number since play was pressed.
    void columnPlayed(int row, int column);

private:
    void displayBatch();
    void firstJump();
    void rebuildRows();
    void stopTimer(std::optional<ViewModeTimers::Id> &id);
    void startTickTimer();
    void clickIfOnBeat();
    int ticksPerBeat() const;
    void afterManualMove();
    // Highlights the first column when nothing is; says whether it did.
    bool highlightFirstColumnIfNone();

    std::unique_ptr<QtViewModeTimers> ownTimers;
    ViewModeTimers *timers;
    std::unique_ptr<ViewModeLayout> rows;
    std::optional<ViewModeTimers::Id> playTimer;
    std::optional<ViewModeTimers::Id> displayDelayTimer;
    std::optional<ViewModeTimers::Id> countInTimer;
    std::optional<QRectF> highlightFrame; // stack coordinates
    double viewWidth = 0.0;
    double viewHeight = 0.0;
    double pageContentY = 0.0;
    bool userDragging = false;
    bool loaded = false;
    qint64 ticksSincePlay = 0;
    int layoutRevision = 0;
    int countInLeft = 0;
    // Guards the delayed work queued on the timers after the controller is gone.
    std::shared_ptr<bool> alive = std::make_shared<bool>(true);
};
