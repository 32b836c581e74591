#pragma once

#include "model/tabdata.h"

#include <QByteArray>
#include <QString>

#include <optional>

// MUSICXML is the plain score, MXL the compressed one.
enum class ExportType { LGRD, RTF, PDF, TXT, MUSICXML, MXL, MIDI };

// The display flags and tab that an export uses.
struct TabExportConfiguration {
    TabData tabData;
    bool showLyrics = true;
    bool lyricsBelow = false;
    bool showColumnHeaders = true;
    bool showTabContent = true;
    bool twoColumns = false;
    // Notes read as note names where the tuning allows, as the editor's setting shows them.
    bool notesOnTab = false;
};

class DocumentManager
{
public:
    // "lgrd", "rtf", "pdf", "txt", "musicxml", "mxl", "mid".
    static QString fileExtension(ExportType type);
    // The tab as plain text, three characters a column.
    static QString tabText(const TabExportConfiguration &configuration);
    // Plain text as ASCII: accented letters lose their accents, anything else becomes "?".
    static QByteArray asciiBytes(const QString &text);
    // The bytes of an export, or nothing if none could be made.
    static std::optional<QByteArray> exportData(ExportType type,
                                                const TabExportConfiguration &configuration);
    // Writes the export into the "Exports" folder of the temporary area under `fileName` (or
    // the tab's title) with the type's extension. Gives the file's path, or nothing.
    static std::optional<QString> exportFile(ExportType type,
                                             const TabExportConfiguration &configuration,
                                             const QString &fileName = QString());
    // Writes an export to `path` whole or not at all; gives the path, or nothing. Types that
    // need a painter (PDF) give nothing here: src/export/print writes those.
    static std::optional<QString> exportToPath(ExportType type,
                                               const TabExportConfiguration &configuration,
                                               const QString &path);
    // Where the export dialog puts `fileName`: the "Exports" folder of the documents directory,
    // made if missing, so the user finds the files again (the temporary area is for handing
    // files over).
    static QString exportUrl(const QString &fileName);
    // The check every name a tab can get passes (export, import, rename, duplicate): the first
    // rule it breaks as a message, or nothing. The caller trims blanks first.
    static std::optional<QString> validateTabName(const QString &name);
    // The name trimmed of blanks and tabs (not of line feeds), as the name checks want it.
    static QString trimmedTabName(const QString &name);
};
