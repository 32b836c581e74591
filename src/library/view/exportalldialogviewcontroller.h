#pragma once

#include "shell/tabbackup.h"

#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

#include <memory>

// The back-up dialog: a progress bar while every tab is written, then the tally and the zip
// to take away. Cancel (or Close) removes the temporary folder; with a tab open it waits for
// that tab to close first.
class ExportAllDialogViewController : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the folder screen")
    Q_PROPERTY(double progress READ progress NOTIFY changed)
    Q_PROPERTY(bool running READ running NOTIFY changed)
    Q_PROPERTY(bool done READ done NOTIFY changed)
    Q_PROPERTY(QString message READ message NOTIFY changed)
    Q_PROPERTY(QString zipPath READ zipPath NOTIFY changed)
    Q_PROPERTY(QString zipFolder READ zipFolder NOTIFY changed)

public:
    // What writes a tab's PDF; the app sets it where a renderer is to be had. Without one the
    // back-up holds the .lgrd files only.
    static TabBackup::PdfMaker &pdfMaker();

    explicit ExportAllDialogViewController(QObject *parent = nullptr);

    TabBackup *backup() const { return run.get(); }
    double progress() const;
    bool running() const;
    bool done() const { return isDone; }
    QString message() const { return text; }
    QString zipPath() const;
    QString zipFolder() const;

    Q_INVOKABLE void start();
    Q_INVOKABLE void cancel();

Q_SIGNALS:
    void changed();
    void finished();

private:
    std::unique_ptr<TabBackup> run;
    QString text;
    bool isDone = false;
};
