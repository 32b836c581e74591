#pragma once

#include "music/chordshortcut.h"

#include <QObject>
#include <QRectF>
#include <QSizeF>
#include <QTimer>
#include <QVariantList>

#include <functional>
#include <optional>

class DialogPresenter;
class SavedData;
class TabEditView;

// Chord shortcut mode: a bar of chord buttons and a search field over the fretboard, and one
// touch putting a whole chord into the cursor column. The bar shows the recent chords first,
// then the tuning's; the search ranks every chord of the tuning. Buttons are laid out here, in
// the cover's coordinates, from the size of their names that the screen measures.
class ChordShortcutMode : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool active READ active NOTIFY activeChanged)
    Q_PROPERTY(QVariantList barButtons READ barButtons NOTIFY barChanged)
    Q_PROPERTY(QVariantList resultButtons READ resultButtons NOTIFY resultsChanged)
    Q_PROPERTY(bool customEnabled READ customEnabled NOTIFY customEnabledChanged)
    Q_PROPERTY(QString searchText READ searchText NOTIFY searchTextUpdated)

public:
    struct Button {
        ChordShortcut chord;
        QRectF frame;
    };
    static constexpr double horizPadding = 10.0;
    static constexpr double buttonGap = 10.0;
    static constexpr double barX = 70.0;
    static constexpr double barY = 38.0;
    static constexpr double barHeight = 44.0;
    static constexpr double resultsX = 40.0;
    static constexpr double resultsY = 141.0;
    static constexpr double resultLinePitch = 52.0;
    static constexpr int searchFirstDelay = 200;
    static constexpr int searchSettleDelay = 300;

    ChordShortcutMode(TabEditView *surface, SavedData &saved, QObject *parent = nullptr);

    // The fitted size of a chord's name on its button. Without one, a rough estimate.
    std::function<QSizeF(const QString &)> measureName;
    // Entering the mode leaves the other tool modes.
    std::function<void()> leaveOtherModes;
    // Sounds a chord put in, with the tab's tuning; called only when sounds are on.
    std::function<void(const QList<ColumnItemType> &)> playChord;
    // After a chord went in and the cursor moved on.
    std::function<void()> chordInserted;
    DialogPresenter *dialogs = nullptr;

    bool active() const { return inChordShortcutMode; }
    QVariantList barButtons() const { return buttonsForView(topButtons); }
    QVariantList resultButtons() const { return buttonsForView(searchResultButtons); }
    bool customEnabled() const { return csCustomEnabled; }
    QString searchText() const { return csSearchText; }

    bool inChordShortcutMode = false;
    QList<Button> topButtons;
    QList<Button> searchResultButtons;
    // Throttles the search: the first key searches at once, the last one once typing settles.
    QTimer searchDelayTimer;
    std::optional<QString> pendingSearch;
    std::optional<ChordShortcut> customChordShortToDelete;
    double coverWidth = 0.0;
    double fretboardHeight = 0.0;

    Q_INVOKABLE void toggleChordShortcutMode();
    // Leaves the mode if it is on, as another tool mode or a new string count does.
    void leave();
    void rebuildChordBar();
    // The cover's size changed: the bar is laid out anew and the results go.
    void setCoverSize(double width, double height);
    // The chords of the tab's tuning, the user's last.
    QList<ChordShortcut> chords() const;

    Q_INVOKABLE void searchTextChanged(const QString &text);
    void searchChords(const QString &text);
    // Enter in the search field takes the best result; false if there is none.
    Q_INVOKABLE bool takeFirstResult();
    // The delay timer ran out: a search that waited runs now.
    void searchDelayElapsed();

    Q_INVOKABLE void insertFromBar(int index);
    Q_INVOKABLE void insertFromResults(int index);
    void insertChord(const ChordShortcut &chord, bool fromSearch);
    // A long press on a button: a custom chord may be deleted, after a question.
    Q_INVOKABLE void longPressed(int index, bool inResults);
    void deleteConfirmed();
    // A new custom chord made from the cursor column under `name`.
    void customChordCreated(const QString &name);
    void refreshCustomEnabled();

Q_SIGNALS:
    void activeChanged();
    void barChanged();
    void resultsChanged();
    void customEnabledChanged();
    void searchTextUpdated();
    // The search field loses the keys, as when a chord goes in.
    void searchEditingEnded();

private:
    QSizeF buttonSize(const QString &name) const;
    void layoutSearchResults(const QList<ChordShortcut> &found);
    void clearResults();
    void setSearchText(const QString &text);
    static QVariantList buttonsForView(const QList<Button> &buttons);

    TabEditView *surface;
    SavedData &saved;
    bool csCustomEnabled = false;
    QString csSearchText;
};
