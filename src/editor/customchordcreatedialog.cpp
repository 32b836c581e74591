#include "customchordcreatedialog.h"

#include "services/saveddata.h"

#include <algorithm>

CustomChordCreateDialog::CustomChordCreateDialog(SavedData &settings, QObject *parent)
    : QObject(parent), saved(settings)
{
}

QStringList CustomChordCreateDialog::itemTexts() const
{
    QStringList texts;
    for (const ColumnItemType &item : tcItems)
        texts.append(item.isBlank() ? QString() : item.text());
    return texts;
}

void CustomChordCreateDialog::open(const QList<ColumnItemType> &items)
{
    tcItems = items;
    errorLabel.clear();
    limitReachedWarningShown = false;
    limitLabel.clear();
    createTitle = u"Create"_qs;
    isShown = true;
    Q_EMIT changed();
    Q_EMIT shownChanged();
}

void CustomChordCreateDialog::createButtonTapped(const QString &name)
{
    if (!isShown)
        return;
    if (name.isEmpty()) {
        errorLabel = u"Name cannot be empty"_qs;
        Q_EMIT changed();
        return;
    }
    if (name.size() > charLimit) {
        errorLabel = u"Name too long. %1/%2 characters."_qs.arg(name.size()).arg(charLimit);
        Q_EMIT changed();
        return;
    }
    // Read fresh: another machine may have added chords since the dialog opened.
    const QList<ChordShortcut> list = saved.currentCustomChords();
    const bool exists = std::any_of(list.cbegin(), list.cend(),
                                    [&](const ChordShortcut &chord) { return chord.name == name; });
    // One warning per dialog: the second press goes through, whatever the name became.
    if (!limitReachedWarningShown && (exists || list.size() >= saved.customChordLimit)) {
        limitReachedWarningShown = true;
        errorLabel.clear();
        limitLabel = exists ? u"A custom chord with this name already exists. If you continue, "
                              u"the existing \""_qs + name + u"\" chord will be replaced."_qs
                            : u"You've reached the limit for custom chords. If you continue, the "
                              u"rarely used \""_qs + list.last().name +
                                  u"\" chord will be replaced."_qs;
        createTitle = u"Ok"_qs;
        Q_EMIT changed();
        return;
    }
    if (customChordCreated)
        customChordCreated(name);
    dismiss();
}

void CustomChordCreateDialog::nameEdited()
{
    if (errorLabel.isEmpty())
        return;
    errorLabel.clear();
    Q_EMIT changed();
}

void CustomChordCreateDialog::dismiss()
{
    if (!isShown)
        return;
    isShown = false;
    Q_EMIT shownChanged();
}
