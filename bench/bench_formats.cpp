// Prints the cost of the tab file forms on the 1,000-row benchmark tab, beside the floor that
// the parsers underneath take alone.
#include "benchtab.h"
#include "benchutil.h"
#include "exchangefigures.h"

#include "export/documentmanager.h"
#include "model/plistvariant.h"
#include "model/tabfileformat.h"

#include <QJsonDocument>

#include <plist/plist.h>

int main(int argc, char *argv[])
{
    BenchEnvironment environment(argc, argv);
    const TabData tab = makeBenchmarkTab();

    QByteArray archive;
    const double archiveWrite = bestOf([&] { archive = documentData(tab); });
    const double archiveRead = bestOf([&] { tabDataFromDocumentData(archive).value(); });
    const double plistParse = bestOf([&] {
        plist_t root = nullptr;
        plist_from_bin(archive.constData(), uint32_t(archive.size()), &root);
        plist_free(root);
    });

    QByteArray json;
    const double exchangeWrite = bestOf([&] { json = exchangeData(tab).value(); });
    const double exchangeRead = bestOf([&] { tabDataFromExchangeData(json).value(); });
    const double jsonParse = bestOf([&] { QJsonDocument::fromJson(json); });

    TabExportConfiguration configuration{tab};
    QByteArray text;
    const double textExport = bestOf(
        [&] { text = DocumentManager::asciiBytes(DocumentManager::tabText(configuration)); });

    // The document reader against its libplist twin, the exchange read and the structural
    // check that every read of a document begins with.
    const double archiveReadLibplist =
        bestOf([&] { tabDataFromDocumentDataViaLibplist(archive).value(); });
    PlistVariant::GraphLimits limits;
    limits.expandedNodes = 1'000'000 + quint64(archive.size());
    limits.expandedPayloadBytes = 64 * 1024 * 1024 + 4 * quint64(archive.size());
    bool checked = true;
    const double structuralCheck =
        bestOf([&] { checked = PlistVariant::isSafeBinaryPlist(archive, limits) && checked; });
    if (!checked)
        qFatal("the benchmark document fails the structural check");

    printFigure("archive write", archiveWrite, "ms");
    printFigure("archive read", archiveRead, "ms");
    printFigure("libplist parse alone", plistParse, "ms");
    printFigure("archive read / plist parse", archiveRead / plistParse, "x");
    printFigure("archive read through libplist", archiveReadLibplist, "ms");
    printFigure("structural check alone", structuralCheck, "ms");
    printFigure("archive read / libplist read", archiveRead / archiveReadLibplist, "x");
    printFigure("archive read / exchange read", archiveRead / exchangeRead, "x");
    printFigure("archive read / structural check", archiveRead / structuralCheck, "x");
    printFigure("exchange write", exchangeWrite, "ms");
    printFigure("exchange read", exchangeRead, "ms");
    printFigure("QJsonDocument parse alone", jsonParse, "ms");
    printFigure("exchange read / JSON parse", exchangeRead / jsonParse, "x");
    printFigure("text export", textExport, "ms");
    printFigure("document size", double(archive.size()), "bytes");
    printFigure("exchange size", double(json.size()), "bytes");
    printFigure("text size", double(text.size()), "bytes");

    printExchangeReaderFigures(tab);
    return 0;
}
