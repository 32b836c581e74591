#pragma once

#include "dialoghost.h"
#include "export/documentmanager.h"
#include "library/lutegriddocument.h"
#include "viewmode/tabviewcontroller.h"
#include "viewmode/viewmodedialogviewcontroller.h"
#include "viewmode/viewmodesoundpreparer.h"
#include "viewmoderowsmodel.h"

#include <QPointer>
#include <QQuickItem>

#include <memory>

// The view screen's root item: it makes the controller from the editor's document and cursor,
// fills its hooks with the app's services (sound, the display options of the run, the
// document, the dialogs), gets the sound ready, and hands the keys to the controller.
class ViewModeScreenItem : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QObject *document READ document WRITE setDocument NOTIFY controllerChanged)
    Q_PROPERTY(int startRow MEMBER startRow NOTIFY startChanged)
    Q_PROPERTY(int startColumn MEMBER startColumn NOTIFY startChanged)
    Q_PROPERTY(DialogHost *dialogs MEMBER dialogHost NOTIFY controllerChanged)
    Q_PROPERTY(TabViewController *controller READ controller NOTIFY controllerChanged)
    Q_PROPERTY(QAbstractItemModel *rowsModel READ rowsModel NOTIFY controllerChanged)
    Q_PROPERTY(ViewModeDialogViewController *optionsDialog READ optionsDialog NOTIFY
                   optionsDialogChanged)
    Q_PROPERTY(bool soundReady READ soundReady NOTIFY soundReadyChanged)

public:
    explicit ViewModeScreenItem(QQuickItem *parent = nullptr);
    ~ViewModeScreenItem() override;

    LutegridDocument *document() const { return lgDocument; }
    void setDocument(QObject *document);
    TabViewController *controller() const { return view.get(); }
    QAbstractItemModel *rowsModel() const { return model.get(); }
    ViewModeDialogViewController *optionsDialog() const { return dialog.get(); }
    bool soundReady() const { return sound && sound->firstColumnsReady() && sound->outputReady(); }
    const ViewModeSoundPreparer *soundPreparer() const { return sound.get(); }

    // The play button and Space; the options and export buttons.
    Q_INVOKABLE void playPausePress();
    Q_INVOKABLE void openViewOptions();
    Q_INVOKABLE void requestExport();
    // Back to the editor: playback stops, and `closed` names the row to show.
    Q_INVOKABLE void close();
    // What the export dialog starts from: the tab and what this screen shows.
    TabExportConfiguration exportConfiguration() const;

Q_SIGNALS:
    void controllerChanged();
    void startChanged();
    void optionsDialogChanged();
    void soundReadyChanged();
    // Row and column of the highlight, -1 when there is none.
    void closed(int row, int column);
    void exportRequested();

protected:
    void componentComplete() override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void makeController();

    QPointer<LutegridDocument> lgDocument;
    QPointer<DialogHost> dialogHost;
    int startRow = -1;
    int startColumn = 0;
    bool closedOnce = false;
    std::unique_ptr<TabViewController> view;
    std::unique_ptr<ViewModeRowsModel> model;
    std::unique_ptr<ViewModeDialogViewController> dialog;
    std::unique_ptr<ViewModeSoundPreparer> sound;
};
