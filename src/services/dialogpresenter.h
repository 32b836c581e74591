#pragma once

#include <QString>
#include <QStringList>

#include <functional>

// The dialogs a screen can put over itself. One implementer per window; screens hold it weakly.
class DialogPresenter {
public:
    virtual ~DialogPresenter() = default;
    virtual bool isPresenting() const = 0;
    virtual void presentMessage(const QString &text) = 0;
    // The chosen row, once; the dialog has no way out without a choice.
    virtual void presentConflict(const QStringList &rows, std::function<void(int)> choose) = 0;
    // A question with one button that confirms; `confirmed` runs only on that press.
    virtual void presentConfirm(const QString &text, const QString &confirm,
                                std::function<void()> confirmed) = 0;
    virtual void dismissDialog() = 0;
};
