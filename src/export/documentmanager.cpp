#include "documentmanager.h"

QString DocumentManager::fileExtension(ExportType type)
{
    switch (type) {
    case ExportType::LGRD:
        return u"lgrd"_qs;
    case ExportType::RTF:
        return u"rtf"_qs;
    case ExportType::PDF:
        return u"pdf"_qs;
    case ExportType::TXT:
        return u"txt"_qs;
    }
    return {};
}

QString DocumentManager::tabText(const TabExportConfiguration &configuration)
{
    return configuration.tabData.title;
}

QByteArray DocumentManager::asciiBytes(const QString &text)
{
    return text.toLatin1();
}

std::optional<QByteArray> DocumentManager::exportData(ExportType, const TabExportConfiguration &)
{
    return std::nullopt;
}

std::optional<QString> DocumentManager::exportFile(ExportType, const TabExportConfiguration &,
                                                   const QString &)
{
    return std::nullopt;
}
