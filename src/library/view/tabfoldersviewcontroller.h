#pragma once

#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QtQml/qqmlregistration.h>

// The folder screen one step behind the list: three fixed rows, then one per folder label.
// Each row opens its list.
class DialogHost;
class ExportAllDialogViewController;
class MenuDialogViewController;
class SceneWindow;
Q_MOC_INCLUDE("exportalldialogviewcontroller.h")
Q_MOC_INCLUDE("menudialogviewcontroller.h")

class TabFoldersViewController : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the window")
    Q_PROPERTY(QString title READ title NOTIFY changed)
    Q_PROPERTY(QStringList rows READ rows NOTIFY changed)
    Q_PROPERTY(int fixedRowCount READ fixedRowCount CONSTANT)

public:
    enum FixedRow { AllTabs, Unlabeled, Deleted };
    explicit TabFoldersViewController(QObject *parent = nullptr);

    QString title() const;
    QStringList rows() const;
    int fixedRowCount() const { return 3; }
    // Reads the labels again.
    Q_INVOKABLE void refresh();
    // Pull to refresh: the storage folder is listed anew, then the labels read.
    Q_INVOKABLE void refreshTriggered();
    Q_INVOKABLE void openRow(int row);
    // The window's dialogs and the window, for the Menu's messages and appearance.
    void setScene(DialogHost *dialogs, SceneWindow *window);
    // The gear's Menu dialog, and the back-up dialog that it offers.
    Q_INVOKABLE MenuDialogViewController *makeMenu();
    Q_INVOKABLE ExportAllDialogViewController *makeBackup();

Q_SIGNALS:
    void changed();
    // The list to open: a label's, the unlabeled tabs', the Deleted folder's, or all tabs'.
    void listRequested(const QString &tagName, bool isUnlabeledList, bool isDeletedFolder);

private:
    QStringList labels;
    QPointer<DialogHost> dialogs;
    SceneWindow *window = nullptr;
};
