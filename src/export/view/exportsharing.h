#pragma once

#include "export/exportdialogviewcontroller.h"

#include <QObject>
#include <QQmlEngine>
#include <QStringList>
#include <QUrl>

#include <functional>

// What a desktop offers for handing files on: the folder in the file manager with the files
// selected, the files on the clipboard, a file in its own program. Also opens the guide.
class ExportSharing : public QObject {
    Q_OBJECT
    QML_ELEMENT

public:
    explicit ExportSharing(QObject *parent = nullptr);

    // Opens a URL in the system's program for it; tests put a recorder here.
    static std::function<bool(const QUrl &)> urlOpener;
    // Asks the file manager to show files selected; false if none answers. Tests replace it.
    static std::function<bool(const QStringList &paths)> fileManagerShow;

    // Each gives a line to show the user: what happened, or why nothing did.
    Q_INVOKABLE QString showInFolder(const QStringList &paths) const;
    Q_INVOKABLE QString copyFiles(const QStringList &paths) const;
    Q_INVOKABLE QString openFile(const QString &path) const;
    Q_INVOKABLE QString openHelp() const;
    Q_INVOKABLE static QString fileName(const QString &path);
};

// The dialog's controller as a QML type, so QML binds to its properties and names its states.
struct ExportDialogViewControllerForeign {
    Q_GADGET
    QML_FOREIGN(ExportDialogViewController)
    QML_NAMED_ELEMENT(ExportDialogViewController)
    QML_UNCREATABLE("Made by ExportDialogPresenter.")
};
