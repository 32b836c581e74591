#pragma once

#include <QObject>
#include <QString>
#include <QTimer>

#include <optional>

class LutegridDocument;

// What a list screen does for the open flow.
class TabOpenFlowScreen {
public:
    virtual ~TabOpenFlowScreen() = default;
    // The folder the list is about, if known.
    virtual std::optional<QString> docsUrl() const = 0;
    virtual void showMessage(const QString &text) = 0;
    virtual void setActivity(bool on) = 0;
    virtual void showStandbyDialog() = 0;
    virtual void dismissStandbyDialog() = 0;
    // Makes the editor for the opened document, as its change listener, and shows it.
    virtual void presentEditor(LutegridDocument *document) = 0;
    virtual void dismissSearchKeyboard() {}
};

// Opening a tab from a list. A document still busy from its last use (open in another window,
// or saving) is waited for in rounds of 0.2 s, with a standby dialog from the 18th round.
// The timer is the flow's own; tests and screens may run a round themselves.
class TabOpenFlow : public QObject {
    Q_OBJECT

public:
    enum class Outcome { NoFolder, BroughtForward, Waiting, Opened, Failed };
    static constexpr int standbyRound = 18;

    explicit TabOpenFlow(TabOpenFlowScreen *screen, QObject *parent = nullptr);

    int roundInterval = 200;
    int tabOpenStatusCheckerCount = 0;
    bool standbyShown() const { return standbyDialogShown; }
    bool waiting() const { return tabOpenTimer.isActive(); }

    // A touch on a row.
    Outcome openTab(const QString &fileName);
    // One round of the flow; the timer runs the next one while the document is busy.
    Outcome openRound(const QString &fileName);
    // Ends the waiting, and with it the standby dialog.
    void stop();

private:
    TabOpenFlowScreen *screen;
    QTimer tabOpenTimer;
    QString pendingFileName;
    bool standbyDialogShown = false;
};
