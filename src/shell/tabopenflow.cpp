#include "tabopenflow.h"

#include "appmanager.h"
#include "library/lutegriddocument.h"
#include "library/tabfilenames.h"
#include "services/analytics.h"

#include <QDir>

#include <utility>

TabOpenFlow::TabOpenFlow(TabOpenFlowScreen *screen, QObject *parent)
    : QObject(parent), screen(screen)
{
    tabOpenTimer.setSingleShot(true);
    connect(&tabOpenTimer, &QTimer::timeout, this, [this] { openRound(pendingFileName); });
}

TabOpenFlow::Outcome TabOpenFlow::openTab(const QString &fileName)
{
    tabOpenStatusCheckerCount = 0;
    // A touch starts a new wait, which may need its own standby dialog.
    if (std::exchange(standbyDialogShown, false))
        screen->dismissStandbyDialog();
    return openRound(fileName);
}

void TabOpenFlow::stop()
{
    tabOpenTimer.stop();
    // The standby dialog that went with this wait has gone (cancelled), or goes now.
    if (std::exchange(standbyDialogShown, false))
        screen->dismissStandbyDialog();
}

TabOpenFlow::Outcome TabOpenFlow::openRound(const QString &fileName)
{
    tabOpenTimer.stop();
    screen->dismissSearchKeyboard();
    const auto folder = screen->docsUrl();
    if (!folder) {
        screen->showMessage(u"Retrieving tab locations, please refresh and try again."_qs);
        return Outcome::NoFolder;
    }
    AppManager &manager = AppManager::shared();
    const QString url = QDir(*folder).filePath(fileName);
    if (manager.activateEditorScene(url))
        return Outcome::BroughtForward;

    if (LutegridDocument *existing = manager.activeDocUrls.value(fileName)) {
        const auto state = existing->documentState();
        if (!state.testFlag(LutegridDocument::Closed) ||
            state.testFlag(LutegridDocument::ProgressAvailable)) {
            ++tabOpenStatusCheckerCount;
            screen->setActivity(true);
            if (tabOpenStatusCheckerCount >= standbyRound && !standbyDialogShown) {
                standbyDialogShown = true;
                screen->showStandbyDialog();
            }
            pendingFileName = fileName;
            tabOpenTimer.start(roundInterval);
            return Outcome::Waiting;
        }
    }

    if (standbyDialogShown) {
        standbyDialogShown = false;
        screen->dismissStandbyDialog();
    }
    LutegridDocument *document = manager.documentFor(url);
    document->tabName = TabFileNames::plainName(fileName);
    screen->setActivity(true);
    const bool opened = document->open();
    screen->setActivity(false);
    if (opened && document->tabData) {
        manager.openedEditorThisSession = true;
        screen->presentEditor(document);
        return Outcome::Opened;
    }
    // A file that read but held no tab leaves its document open; closed again, the next touch
    // tries afresh instead of waiting on a document that nothing will ever close.
    if (opened)
        document->close();
    screen->showMessage(u"Unable to open tab."_qs);
    manager.refreshTabs();
    Analytics::logEvent(u"Tab_open_fail"_qs);
    return Outcome::Failed;
}
