#pragma once

#include "keyedarchive.h"
#include "tabdata.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <optional>

// The document form (".lgrdi"): a keyed archive of the tab. A loaded tab is titled "?" until
// its document names it after the file.
QByteArray documentData(const TabData &tabData);
std::optional<TabData> tabDataFromDocumentData(QByteArrayView bytes, QString *error = nullptr);
// The same read through libplist's tree of nodes: slower, and kept as an independent reader
// that the tests and benchmarks hold the direct one against.
std::optional<TabData> tabDataFromDocumentDataViaLibplist(QByteArrayView bytes,
                                                          QString *error = nullptr);

// The exchange form (".lgrd"): JSON for export, back-up and import.
struct ImportError {
    QString message;
};
std::optional<QByteArray> exchangeData(const TabData &tabData);
// A file that names no tuning gets the standard one of `defaultStringCount` strings.
std::optional<TabData> tabDataFromExchangeData(const QByteArray &bytes,
                                               ImportError *error = nullptr,
                                               int defaultStringCount = 6);

inline constexpr QStringView documentExtension = u"lgrdi";
inline constexpr QStringView exchangeExtension = u"lgrd";

// The most bytes a tab file may hold in either form: the document reader refuses anything
// larger, and an exchange file that size already makes a document past it.
inline constexpr qsizetype maximumTabFileBytes = KeyedUnarchiver::maximumBytes;

// Whether the document form holds the tab so that it reads back, within the document reader's
// limits of cells and bytes. A tab read from another form is checked before it becomes a
// document: the other readers take more than a document can hold.
bool tabFitsDocument(const TabData &tabData);
