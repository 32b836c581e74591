#pragma once

#include <QObject>
#include <QPointer>
#include <QString>
#include <QtQml/qqmlregistration.h>

class TabsListViewController;

// The import dialog: the chosen file, the name for the new tab, and the one line for what
// went wrong. The dialog stays until an import succeeds or the user cancels.
class ImportDialogViewController : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by a tab list")
    Q_PROPERTY(QString fileUrl MEMBER fileUrl CONSTANT)
    Q_PROPERTY(QString tabNameField MEMBER tabNameField NOTIFY changed)
    Q_PROPERTY(QString errorLabel READ errorLabel NOTIFY changed)

public:
    ImportDialogViewController(QString fileUrl, TabsListViewController *importHandler);

    const QString fileUrl;
    QString tabNameField;

    QString errorLabel() const { return error; }
    // True when the tab is in and the dialog goes.
    Q_INVOKABLE bool importTab();
    Q_INVOKABLE void cancelImport();

Q_SIGNALS:
    void changed();
    void finished();

private:
    void showError(const QString &text);

    QPointer<TabsListViewController> importHandler;
    QString error;
};
