#include "viewmodescreenitem.h"

#include "services/saveddata.h"
#include "shell/appmanager.h"
#include "sound/soundmanager.h"

#include <QFileInfo>
#include <QHash>
#include <QKeyEvent>
#include <QTimer>
#include <QUrl>

namespace {

// The count-in and the metronome are the viewer's, like the display half: kept for the run.
QHash<QString, ViewModeExtraOptions> &extraOptionsMap()
{
    static QHash<QString, ViewModeExtraOptions> map;
    return map;
}

QUrl clickUrl(bool accent)
{
    return QUrl::fromLocalFile(SoundManager::defaultSampleDirectory() +
                               (accent ? u"/metronome/clickaccent.wav" : u"/metronome/click.wav"));
}

} // namespace

ViewModeScreenItem::ViewModeScreenItem(QQuickItem *parent) : QQuickItem(parent)
{
    setFlag(ItemIsFocusScope);
    setActiveFocusOnTab(true);
}

ViewModeScreenItem::~ViewModeScreenItem()
{
    if (view)
        view->setPlaying(false);
    setAudioSession(false);
}

void ViewModeScreenItem::setDocument(QObject *document)
{
    auto *doc = qobject_cast<LutegridDocument *>(document);
    if (doc == lgDocument)
        return;
    lgDocument = doc;
    if (isComponentComplete())
        makeController();
    Q_EMIT controllerChanged();
}

void ViewModeScreenItem::componentComplete()
{
    QQuickItem::componentComplete();
    makeController();
    forceActiveFocus();
}

void ViewModeScreenItem::makeController()
{
    if (view || !lgDocument || !lgDocument->tabData)
        return;
    std::optional<QPointF> start;
    if (startRow >= 0)
        start = QPointF(startColumn, startRow);
    view = std::make_unique<TabViewController>(*lgDocument->tabData, start);
    view->tabPath = QFileInfo(lgDocument->fileURL()).fileName();
    // A tab's name is its file name.
    view->tabData.title = lgDocument->localizedName();
    view->initialTabRowIndex = startRow;

    SoundManager &soundManager = SoundManager::shared();
    view->columnPlayer = [&soundManager](const QList<ColumnItemType> &items,
                                         const QStringList &notes, bool silent) {
        soundManager.playColumnItems(items, notes, silent);
    };
    view->clickPlayer = [&soundManager](bool accent) {
        soundManager.playSample(clickUrl(accent), 0, false);
    };
    view->storeDisplayOptions = [](const QString &path, const ViewModeDisplayOptions &options) {
        AppManager::shared().viewDisplayOptionsMap.insert(path, options);
    };
    QPointer<LutegridDocument> doc = lgDocument;
    view->savePlaybackOptions = [doc](const ViewModePlaybackOptions &options) {
        // With the editor gone there is nothing to mark.
        if (!doc || !doc->tabData)
            return;
        doc->tabData->playbackOptions = options;
        doc->updateChangeCount(LutegridDocument::ChangeKind::Done);
    };
    view->showMessage = [this](const QString &text) {
        if (dialogHost)
            dialogHost->showMessage(text);
    };

    const QString path = *view->tabPath;
    const auto &displays = AppManager::shared().viewDisplayOptionsMap;
    std::optional<ViewModeDisplayOptions> stored;
    if (displays.contains(path))
        stored = displays.value(path);
    SavedData &settings = SavedData::shared();
    view->load(stored, SurfaceSettings{settings.hideColHeaders, settings.notesOnTab},
               extraOptionsMap().value(path));
    model = std::make_unique<ViewModeRowsModel>(view.get());

    setAudioSession(true);
    // The output and the first columns get ready while the page builds.
    sound = std::make_unique<ViewModeSoundPreparer>(
        soundManager, view->tabData,
        start ? std::optional<QPoint>(start->toPoint()) : std::nullopt);
    auto *poll = new QTimer(this);
    poll->setInterval(20);
    connect(poll, &QTimer::timeout, this, [this, poll] {
        if (soundReady()) {
            poll->stop();
            poll->deleteLater();
            Q_EMIT soundReadyChanged();
        }
    });
    poll->start();
    Q_EMIT controllerChanged();
}

void ViewModeScreenItem::playPausePress()
{
    if (view)
        view->togglePlaying();
}

void ViewModeScreenItem::openViewOptions()
{
    if (!view || dialog)
        return;
    view->viewOptionsOpening();
    dialog = std::make_unique<ViewModeDialogViewController>(
        view->tabData.tempo, view->viewConfigState, view->extraOptions);
    connect(dialog.get(), &ViewModeDialogViewController::finished, this, [this] {
        const ViewModeOptions options = dialog->options();
        const ViewModeExtraOptions extra = dialog->extraOptions();
        if (view->tabPath)
            extraOptionsMap().insert(*view->tabPath, extra);
        // The dialog goes first; its QML may still be in the middle of a handler.
        dialog.release()->deleteLater();
        Q_EMIT optionsDialogChanged();
        view->applyViewOptions(options, extra);
        forceActiveFocus();
    });
    Q_EMIT optionsDialogChanged();
}

void ViewModeScreenItem::requestExport()
{
    if (view)
        view->exportOpening();
    if (isSignalConnected(QMetaMethod::fromSignal(&ViewModeScreenItem::exportRequested))) {
        Q_EMIT exportRequested();
    } else if (dialogHost) {
        dialogHost->showMessage(u"Export isn't available in this window."_qs);
    }
}

void ViewModeScreenItem::close()
{
    if (closedOnce)
        return;
    closedOnce = true;
    int row = -1;
    int column = -1;
    if (view) {
        connect(view.get(), &TabViewController::handBack, this, [&](int r, int c) {
            row = r;
            column = c;
        });
        view->viewWillDisappear();
        disconnect(view.get(), &TabViewController::handBack, this, nullptr);
    }
    setAudioSession(false);
    Q_EMIT closed(row, column);
}

TabExportConfiguration ViewModeScreenItem::exportConfiguration() const
{
    TabExportConfiguration config{view ? view->tabData : TabData(QString(), 6)};
    if (view) {
        const ViewModeDisplayOptions &d = view->viewConfigState.displayOptions;
        config.showLyrics = d.showLyrics;
        config.lyricsBelow = d.lyricsBelow;
        config.showColumnHeaders = d.showColumnHeaders;
        config.showTabContent = d.showTabContent;
        config.twoColumns = d.twoColumns;
    }
    config.notesOnTab = SavedData::shared().notesOnTab;
    return config;
}

void ViewModeScreenItem::keyPressEvent(QKeyEvent *event)
{
    // With the options open, Escape is their Done.
    if (dialog && event->key() == Qt::Key_Escape) {
        dialog->done();
        event->accept();
        return;
    }
    if (event->key() == Qt::Key_Escape || (event->key() == Qt::Key_Left &&
                                           event->modifiers().testFlag(Qt::ControlModifier))) {
        close();
        event->accept();
        return;
    }
    if (view && !dialog && view->pressKey(event->key(), event->text())) {
        event->accept();
        return;
    }
    event->ignore();
}
