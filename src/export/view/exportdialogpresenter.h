#pragma once

#include "export/documentmanager.h"

class QQuickItem;
class ExportDialogViewController;

// Opens the export dialog over a screen. The view screen stops playback, makes a
// TabExportConfiguration from what it shows and calls openExportDialog with its root item.
namespace ExportDialogPresenter {

// The dialog fills `host` and closes (and deletes itself) when done or tapped outside. Gives
// the dialog item, or null if its QML could not be loaded (the reason goes to the log). The
// host's engine must have "qrc:/" among its import paths, as the app's window does.
QQuickItem *openExportDialog(QQuickItem *host, const TabExportConfiguration &exportConfig);
// The dialog's controller, for tests and for whoever wants to watch it.
ExportDialogViewController *controllerOf(QQuickItem *dialog);

} // namespace ExportDialogPresenter
