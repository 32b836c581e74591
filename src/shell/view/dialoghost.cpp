#include "dialoghost.h"

#include "services/analytics.h"
#include "shell/appmanager.h"

DialogHost::DialogHost(QObject *parent) : QObject(parent) {}

void DialogHost::present(Kind kind)
{
    current = kind;
    Q_EMIT changed();
}

void DialogHost::dismissDialog()
{
    current = Kind::None;
    twoOptionListener = nullptr;
    confirmListener = nullptr;
    standbyListener = nullptr;
    conflictListener = nullptr;
    showLoadUponLoad = false;
    Q_EMIT changed();
}

void DialogHost::showMessage(const QString &text, bool showLoad)
{
    messageString = text;
    showLoadUponLoad = showLoad;
    present(Kind::Message);
}

void DialogHost::removeLoadCover()
{
    showLoadUponLoad = false;
    Q_EMIT changed();
}

void DialogHost::acknowledgeMessage()
{
    // A press that arrives after another dialog took the panel leaves that one alone.
    if (current == Kind::Message)
        dismissDialog();
}

void DialogHost::showTwoOption(const QString &option1, const QString &option2, const QString &id,
                               std::function<void(int, QString)> listener, bool noEmphasis)
{
    optionTxt1 = option1;
    optionTxt2 = option2;
    dialogId = id;
    removeButtonEmphasis = noEmphasis;
    twoOptionListener = std::move(listener);
    present(Kind::TwoOption);
}

void DialogHost::showConfirm(const QString &message, const QString &confirm, const QString &tag,
                             std::function<void(QString)> listener)
{
    messageString = message;
    confirmTxt = confirm;
    dialogId = tag;
    confirmListener = std::move(listener);
    present(Kind::Confirm);
}

void DialogHost::showLoadingStandby(std::function<void()> loadListener)
{
    messageString = u"Still opening the tab…"_qs;
    standbyListener = std::move(loadListener);
    present(Kind::LoadingStandby);
}

void DialogHost::presentConflict(const QStringList &rows, std::function<void(int)> choose)
{
    conflictRows = rows;
    conflictListener = std::move(choose);
    present(Kind::Conflict);
}

void DialogHost::chooseOption(int option)
{
    if (current != Kind::TwoOption)
        return;
    auto listener = std::move(twoOptionListener);
    const QString id = dialogId;
    dismissDialog();
    if (listener)
        listener(option, id);
}

void DialogHost::confirm()
{
    if (current != Kind::Confirm)
        return;
    auto listener = std::move(confirmListener);
    const QString tag = dialogId;
    dismissDialog();
    if (listener)
        listener(tag);
}

void DialogHost::cancelLoading()
{
    if (current != Kind::LoadingStandby)
        return;
    auto listener = std::move(standbyListener);
    dismissDialog();
    if (listener)
        listener();
    Analytics::logEvent(u"Tab open STANDBY fail"_qs);
    AppManager::shared().refreshTabs();
}

void DialogHost::chooseConflictRow(int row)
{
    if (current != Kind::Conflict || row < 0 || row >= conflictRows.size())
        return;
    auto listener = std::move(conflictListener);
    dismissDialog();
    if (listener)
        listener(row);
}

void DialogHost::tapOutside()
{
    switch (current) {
    case Kind::Message:
    case Kind::TwoOption:
    case Kind::Confirm:
        // Closing without a choice tells no one.
        dismissDialog();
        break;
    case Kind::LoadingStandby:
        cancelLoading();
        break;
    case Kind::Conflict:
        // The user must choose.
    case Kind::None:
        break;
    }
}
