#pragma once

#include "services/dialogpresenter.h"

#include <QObject>
#include <QStringList>
#include <QtQml/qqmlregistration.h>

#include <functional>

// The dialogs of one window: at most one at a time, over a dimmed screen. Which dialog shows,
// its texts, and what a press or a tap outside its panel means are decided here; the QML only
// draws the one that is up and passes the presses on.
class DialogHost : public QObject, public DialogPresenter {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Each window has its own")
    Q_PROPERTY(Kind kind READ kind NOTIFY changed)
    Q_PROPERTY(QString messageString MEMBER messageString NOTIFY changed)
    Q_PROPERTY(QString optionTxt1 MEMBER optionTxt1 NOTIFY changed)
    Q_PROPERTY(QString optionTxt2 MEMBER optionTxt2 NOTIFY changed)
    Q_PROPERTY(bool removeButtonEmphasis MEMBER removeButtonEmphasis NOTIFY changed)
    Q_PROPERTY(QString confirmTxt MEMBER confirmTxt NOTIFY changed)
    Q_PROPERTY(bool showLoadUponLoad MEMBER showLoadUponLoad NOTIFY changed)
    Q_PROPERTY(QStringList conflictRows MEMBER conflictRows NOTIFY changed)

public:
    enum class Kind { None, Message, TwoOption, Confirm, LoadingStandby, Conflict };
    Q_ENUM(Kind)

    explicit DialogHost(QObject *parent = nullptr);

    Kind kind() const { return current; }
    QString messageString;
    QString optionTxt1;
    QString optionTxt2;
    bool removeButtonEmphasis = false;
    QString confirmTxt;
    bool showLoadUponLoad = false;
    QStringList conflictRows;
    QString dialogId;

    // A long message; with `showLoad`, an activity cover over it until the caller drops it.
    Q_INVOKABLE void showMessage(const QString &text, bool showLoad = false);
    Q_INVOKABLE void removeLoadCover();
    // The message's OK: it only closes the message.
    Q_INVOKABLE void acknowledgeMessage();
    // The listener gets 1 or 2 and the dialog's id.
    void showTwoOption(const QString &option1, const QString &option2, const QString &id,
                       std::function<void(int, QString)> listener, bool noEmphasis = false);
    void showConfirm(const QString &message, const QString &confirm, const QString &tag,
                     std::function<void(QString)> listener);
    // The "still opening" dialog; a cancel tells the listener.
    void showLoadingStandby(std::function<void()> loadListener);

    Q_INVOKABLE void chooseOption(int option);
    Q_INVOKABLE void confirm();
    Q_INVOKABLE void cancelLoading();
    Q_INVOKABLE void chooseConflictRow(int row);
    // A tap on the dimmed background, outside the panel.
    Q_INVOKABLE void tapOutside();

    // DialogPresenter.
    bool isPresenting() const override { return current != Kind::None; }
    void presentMessage(const QString &text) override { showMessage(text); }
    void presentConflict(const QStringList &rows, std::function<void(int)> choose) override;
    void presentConfirm(const QString &text, const QString &confirm,
                        std::function<void()> confirmed) override
    {
        showConfirm(text, confirm, QString(), [confirmed](const QString &) { confirmed(); });
    }
    void dismissDialog() override;

Q_SIGNALS:
    void changed();

private:
    void present(Kind kind);

    Kind current = Kind::None;
    std::function<void(int, QString)> twoOptionListener;
    std::function<void(QString)> confirmListener;
    std::function<void()> standbyListener;
    std::function<void(int)> conflictListener;
};
