#pragma once

#include "documentmanager.h"

#include <QObject>
#include <QStringList>

#include <functional>
#include <optional>

// The export dialog's rules: the name check, the formats wanted, a pass that writes them in the
// fixed order lgrd, txt, pdf, musicxml, mid into the documents' "Exports" folder, the overwrite question and
// the done state. The QML panel only binds to it.
class ExportDialogViewController : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString fileName READ fileName WRITE setFileName NOTIFY changed)
    Q_PROPERTY(QString errorText READ errorText NOTIFY changed)
    Q_PROPERTY(bool lgrdOn MEMBER lgrdOn NOTIFY changed)
    Q_PROPERTY(bool txtOn MEMBER txtOn NOTIFY changed)
    Q_PROPERTY(bool pdfOn MEMBER pdfOn NOTIFY changed)
    Q_PROPERTY(bool musicXmlOn MEMBER musicXmlOn NOTIFY changed)
    Q_PROPERTY(bool midiOn MEMBER midiOn NOTIFY changed)
    Q_PROPERTY(State state READ state NOTIFY changed)
    Q_PROPERTY(QString overwriteList READ overwriteList NOTIFY changed)
    Q_PROPERTY(bool exportEnabled READ exportEnabled NOTIFY changed)
    Q_PROPERTY(QString successDetails READ successDetails NOTIFY changed)
    Q_PROPERTY(QStringList exportedFiles READ exportedFiles NOTIFY changed)

public:
    // The panel, the overwrite question, the success view.
    enum State { Input, Asking, Done };
    Q_ENUM(State)

    // Writes one export to a path; gives the path, or nothing on failure.
    using Exporter = std::function<std::optional<QString>(
        ExportType, const TabExportConfiguration &, const QString &path)>;

    // Without an exporter only what DocumentManager writes alone (lgrd, txt) can succeed.
    explicit ExportDialogViewController(TabExportConfiguration exportConfig, Exporter exporter = {},
                                        QObject *parent = nullptr);

    const TabExportConfiguration exportConfig;
    bool lgrdOn = false;
    bool txtOn = false;
    bool pdfOn = false;
    bool musicXmlOn = false;
    bool midiOn = false;
    // File names found to exist in the present pass.
    QStringList overwriteNames;
    // Files written so far; a confirmed overwrite writes the clash-free ones again.
    QStringList exportedFileUrls;

    QString fileName() const { return fileNameField; }
    void setFileName(const QString &name);
    QString errorText() const { return errorLabel; }
    State state() const { return currentState; }
    QString overwriteList() const { return overwriteFileList; }
    bool exportEnabled() const { return exportButtEnabled; }
    QString successDetails() const;
    // Each written file once, in the order written.
    QStringList exportedFiles() const;

    Q_INVOKABLE void exportTab();
    Q_INVOKABLE void confirmOverwrite();
    Q_INVOKABLE void cancelOverwrite();
    Q_INVOKABLE void finishExporting();
    // Starting to edit the name clears the message.
    Q_INVOKABLE void editingBegan();

Q_SIGNALS:
    void changed();
    // The dialog is to close.
    void finished();

private:
    void runPass(bool overwrite);
    void setError(const QString &text);
    QString analyticsEvent() const;

    Exporter exporter;
    QString fileNameField;
    QString errorLabel;
    QString overwriteFileList;
    State currentState = Input;
    bool exportButtEnabled = true;
};
