#pragma once

#include "model/columnitemtype.h"

#include <QObject>
#include <QString>
#include <QStringList>

#include <functional>

class SavedData;

// The dialog that stores the cursor column as a named chord of the user's: it checks the name,
// and warns once before a chord is replaced, whether by name or at the limit of 50.
class CustomChordCreateDialog : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool shown READ shown NOTIFY shownChanged)
    Q_PROPERTY(QString errorText READ errorText NOTIFY changed)
    Q_PROPERTY(bool limitWarningShown READ limitWarningShown NOTIFY changed)
    Q_PROPERTY(QString limitText READ limitText NOTIFY changed)
    Q_PROPERTY(QString buttonTitle READ buttonTitle NOTIFY changed)
    // The column as it will be stored, highest string first, as cell texts.
    Q_PROPERTY(QStringList itemTexts READ itemTexts NOTIFY shownChanged)

public:
    static constexpr int charLimit = 10;

    explicit CustomChordCreateDialog(SavedData &saved, QObject *parent = nullptr);

    // Called with the name once the dialog is through; the editor stores the chord.
    std::function<void(const QString &)> customChordCreated;

    bool shown() const { return isShown; }
    QString errorText() const { return errorLabel; }
    bool limitWarningShown() const { return limitReachedWarningShown; }
    QString limitText() const { return limitLabel; }
    QString buttonTitle() const { return createTitle; }
    QStringList itemTexts() const;

    void open(const QList<ColumnItemType> &items);
    // The create button; the dialog closes only when the chord was made.
    Q_INVOKABLE void createButtonTapped(const QString &name);
    // The name changed: an old complaint about it goes.
    Q_INVOKABLE void nameEdited();
    // A tap outside the dialog or its cancel: nothing changes.
    Q_INVOKABLE void dismiss();

Q_SIGNALS:
    void shownChanged();
    void changed();

private:
    SavedData &saved;
    bool isShown = false;
    QList<ColumnItemType> tcItems;
    QString errorLabel;
    bool limitReachedWarningShown = false;
    QString limitLabel;
    QString createTitle;
};
