#pragma once

#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QtQml/qqmlregistration.h>

class TabsListViewController;

// The tab info dialog: the tab's name, to rename it or to copy it under a new name, and its
// folder labels as pills, with a sheet to add one (the labels in use offered as suggestions)
// and a sheet to confirm a removal. Nothing is stored until OK or Copy.
class TabInfoViewController : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by a tab list")
    Q_PROPERTY(QString nameField MEMBER nameField NOTIFY changed)
    Q_PROPERTY(QString errorLabel READ errorLabel NOTIFY changed)
    Q_PROPERTY(bool tagsHidden READ tagsHidden NOTIFY changed)
    Q_PROPERTY(QStringList tagSet READ tags NOTIFY changed)
    Q_PROPERTY(bool addTagShown READ addTagShown NOTIFY changed)
    Q_PROPERTY(QString newTagNameField MEMBER newTagNameField NOTIFY changed)
    Q_PROPERTY(QStringList suggestedTags READ suggestedTags NOTIFY changed)
    Q_PROPERTY(bool removeTagShown READ removeTagShown NOTIFY changed)
    Q_PROPERTY(QString removeTagLabel READ removeTagLabel NOTIFY changed)

public:
    static constexpr int tagLimit = 15;
    static constexpr double tagHeight = 28;
    static constexpr double tagSpacing = 8;
    static constexpr double tagSpacingY = 10;

    TabInfoViewController(QString initialTabPath, QString initialTabName, QStringList tags,
                          TabsListViewController *infoDelegate);

    const QString initialTabPath;
    const QString initialTabName;
    QString nameField;
    QString newTagNameField;
    QStringList tagSet;
    QString tagUpForRemoval;

    QString errorLabel() const { return error; }
    // The pills make room for a message about the name.
    bool tagsHidden() const { return hideTags; }
    // Editing the name takes a message about it away.
    Q_INVOKABLE void setName(const QString &text);
    QStringList tags() const { return tagSet; }
    bool addTagShown() const { return addSheet; }
    QStringList suggestedTags() const { return suggestions; }
    bool removeTagShown() const { return removeSheet; }
    QString removeTagLabel() const;

    // OK (false) and Copy (true). True when the dialog is done and goes.
    Q_INVOKABLE bool confirm(bool makeCopy);
    Q_INVOKABLE void cancel();
    Q_INVOKABLE void showAddTag();
    Q_INVOKABLE void pickSuggestion(const QString &tag);
    Q_INVOKABLE void confirmAddTag();
    Q_INVOKABLE void cancelAddTag();
    Q_INVOKABLE void askRemoveTag(const QString &tag);
    Q_INVOKABLE void confirmRemoveTag();
    Q_INVOKABLE void cancelRemoveTag();

Q_SIGNALS:
    void changed();
    // The dialog goes, confirmed or cancelled.
    void finished();

private:
    void showError(const QString &text, bool aboutName = true);

    QPointer<TabsListViewController> infoDelegate;
    QString error;
    QStringList suggestions;
    bool addSheet = false;
    bool removeSheet = false;
    bool hideTags = false;
};
