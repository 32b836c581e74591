#include "importdialogviewcontroller.h"

#include "export/documentmanager.h"
#include "shell/tablistoperations.h"
#include "tabslistviewcontroller.h"

ImportDialogViewController::ImportDialogViewController(QString fileUrl,
                                                       TabsListViewController *importHandler)
    : QObject(importHandler), fileUrl(std::move(fileUrl)),
      tabNameField(TabListOperations::proposedImportName(this->fileUrl)),
      importHandler(importHandler)
{
}

void ImportDialogViewController::showError(const QString &text)
{
    error = text;
    Q_EMIT changed();
}

bool ImportDialogViewController::importTab()
{
    auto reading = TabListOperations::readImportFile(fileUrl);
    if (!reading.tabData) {
        showError(reading.message);
        return false;
    }
    const QString name = DocumentManager::trimmedTabName(tabNameField);
    if (const auto refusal = DocumentManager::validateTabName(name)) {
        showError(*refusal);
        return false;
    }
    if (!name.isEmpty())
        reading.tabData->title = name;
    if (!importHandler)
        return false;
    if (const auto message = importHandler->importTabData(*reading.tabData)) {
        showError(*message);
        return false;
    }
    Q_EMIT finished();
    return true;
}

void ImportDialogViewController::cancelImport()
{
    Q_EMIT finished();
}
