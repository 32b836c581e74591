#include "tabinfoviewcontroller.h"

#include "export/documentmanager.h"
#include "shell/appmanager.h"
#include "tabslistviewcontroller.h"

#include <QSet>

TabInfoViewController::TabInfoViewController(QString initialTabPath, QString initialTabName,
                                             QStringList tags,
                                             TabsListViewController *infoDelegate)
    : QObject(infoDelegate), initialTabPath(std::move(initialTabPath)),
      initialTabName(std::move(initialTabName)), nameField(this->initialTabName),
      tagSet(std::move(tags)), infoDelegate(infoDelegate)
{
}

QString TabInfoViewController::removeTagLabel() const
{
    return u"Remove this tab from folder \""_qs + tagUpForRemoval + u"\"?"_qs;
}

void TabInfoViewController::showError(const QString &text, bool aboutName)
{
    error = text;
    hideTags = aboutName;
    Q_EMIT changed();
}

void TabInfoViewController::setName(const QString &text)
{
    if (text == nameField)
        return;
    nameField = text;
    if (hideTags)
        showError(QString(), false);
}

bool TabInfoViewController::confirm(bool makeCopy)
{
    std::optional<QString> newName;
    if (nameField == initialTabName) {
        if (makeCopy) {
            showError(u"Name must be different for copy"_qs);
            return false;
        }
    } else {
        const QString trimmed = DocumentManager::trimmedTabName(nameField);
        if (const auto refusal = DocumentManager::validateTabName(trimmed)) {
            showError(*refusal);
            return false;
        }
        newName = trimmed;
    }
    if (!infoDelegate)
        return false;
    if (const auto message = infoDelegate->updateTabInfo(initialTabPath, newName, makeCopy, tagSet)) {
        showError(*message);
        return false;
    }
    Q_EMIT finished();
    return true;
}

void TabInfoViewController::cancel()
{
    Q_EMIT finished();
}

void TabInfoViewController::showAddTag()
{
    if (tagSet.size() >= tagLimit) {
        showError(u"Tab cannot be in more than 15 folders."_qs, false);
        return;
    }
    error.clear();
    hideTags = false;
    newTagNameField.clear();
    suggestions.clear();
    for (const QString &tag : AppManager::shared().allTagNames()) {
        if (!tagSet.contains(tag))
            suggestions.append(tag);
    }
    addSheet = true;
    Q_EMIT changed();
}

void TabInfoViewController::pickSuggestion(const QString &tag)
{
    newTagNameField = tag;
    Q_EMIT changed();
}

void TabInfoViewController::confirmAddTag()
{
    const QString tag = newTagNameField.trimmed();
    if (!tag.isEmpty()) {
        // A set: a repeat vanishes.
        QSet<QString> set(tagSet.cbegin(), tagSet.cend());
        set.insert(tag);
        QStringList list(set.cbegin(), set.cend());
        list.sort();
        tagSet = list;
    }
    newTagNameField.clear();
    addSheet = false;
    Q_EMIT changed();
}

void TabInfoViewController::cancelAddTag()
{
    addSheet = false;
    Q_EMIT changed();
}

void TabInfoViewController::askRemoveTag(const QString &tag)
{
    tagUpForRemoval = tag;
    removeSheet = true;
    Q_EMIT changed();
}

void TabInfoViewController::confirmRemoveTag()
{
    tagSet.removeAll(tagUpForRemoval);
    removeSheet = false;
    Q_EMIT changed();
}

void TabInfoViewController::cancelRemoveTag()
{
    removeSheet = false;
    Q_EMIT changed();
}
