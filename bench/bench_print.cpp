// The time to make a tab's PDF: pagination, painting every row and writing the file's bytes.
#include "benchtab.h"
#include "benchutil.h"

#include "export/tabviewprintrenderer.h"
#include "tabpdf.h"

#include <QGuiApplication>
#include <QTemporaryDir>

int main(int argc, char *argv[])
{
    QTemporaryDir home;
    qputenv("LUTEGRID_HOME", home.path().toLocal8Bit());
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);

    for (const int rows : {100, 1000}) {
        TabExportConfiguration config{makeBenchmarkTab(rows)};
        qsizetype bytes = 0;
        const double ms =
            bestOf([&] { bytes = TabPdf::pdfData(config).value_or(QByteArray()).size(); },
                   rows == 100 ? 5 : 2);
        const QByteArray label = QByteArray("PDF of ") + QByteArray::number(rows) + " rows";
        printFigure(label.constData(), ms, "ms");
        printFigure(QByteArray(label + ", size").constData(), double(bytes) / 1024.0, "KiB");

        config.twoColumns = true;
        const double pairs = bestOf([&] { TabPdf::pdfData(config); }, rows == 100 ? 5 : 2);
        printFigure(QByteArray(label + ", two columns").constData(), pairs, "ms");
    }
    return 0;
}
