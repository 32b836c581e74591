#pragma once

#include "export/documentmanager.h"

#include <QByteArray>
#include <QString>

#include <optional>

class QPainter;
class TabViewPrintRenderer;

// A tab's PDF: US Letter pages of vector rows and embedded fonts, made without a window. Needs a
// QGuiApplication (the offscreen platform will do) for its fonts.
namespace TabPdf {

// The PDF's bytes, or nothing if none could be made. A tab without rows gives a PDF of no pages.
std::optional<QByteArray> pdfData(const TabExportConfiguration &configuration);
// Writes the PDF to `path` whole or not at all.
bool writePdf(const TabExportConfiguration &configuration, const QString &path);
// An export of any type to `path`: PDF from here, the others through DocumentManager. The
// export dialog and the command line write through it.
std::optional<QString> exportToPath(ExportType type, const TabExportConfiguration &configuration,
                                    const QString &path);
// Paints page `page` of `renderer` in page coordinates (points).
void drawPage(QPainter &painter, TabViewPrintRenderer &renderer, int page);

} // namespace TabPdf
