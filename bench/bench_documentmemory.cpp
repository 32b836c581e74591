// Prints the peak memory and, run under callgrind, the work of reading the 1,000-row tab's
// document: each reader in a process of its own, so that one's peak does not hide another's.
#include "benchtab.h"
#include "benchutil.h"

#include "model/plistvariant.h"
#include "model/tabfileformat.h"

#include <QDir>
#include <QFile>
#include <QProcess>

#include <malloc.h>

namespace {

const QStringList readers = {u"direct"_qs, u"libplist"_qs, u"check"_qs, u"exchange"_qs};

// The process's own high-water mark: getrusage's would carry the parent's over the exec.
double peakMegabytes()
{
    QFile status(u"/proc/self/status"_qs);
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith("VmHWM:"))
            return line.mid(6).trimmed().split(' ').value(0).toDouble() / 1024.0;
    }
    return 0;
}

// One read in this process; prints the peak before and after it.
int readOnce(const QString &path, const QString &reader)
{
    const double start = peakMegabytes();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return 1;
    const QByteArray bytes = file.readAll();
    const double loaded = peakMegabytes();
    bool ok = false;
    double held = 0;
    if (reader == u"direct") {
        // What the tab itself takes, held after the read: the rest of the peak is the read's.
        const double before = double(mallinfo2().uordblks + mallinfo2().hblkhd);
        const auto tab = tabDataFromDocumentData(bytes);
        ok = tab.has_value();
        held = (double(mallinfo2().uordblks + mallinfo2().hblkhd) - before) / (1024.0 * 1024.0);
    }
    else if (reader == u"libplist")
        ok = tabDataFromDocumentDataViaLibplist(bytes).has_value();
    else if (reader == u"exchange")
        ok = tabDataFromExchangeData(bytes).has_value();
    else if (reader == u"check") {
        PlistVariant::GraphLimits limits;
        limits.expandedNodes = 1'000'000 + quint64(bytes.size());
        limits.expandedPayloadBytes = 64 * 1024 * 1024 + 4 * quint64(bytes.size());
        ok = PlistVariant::isSafeBinaryPlist(bytes, limits);
    } else if (reader == u"none")
        ok = true;
    std::printf("%f %f %f %f\n", start, loaded, peakMegabytes(), held);
    return ok ? 0 : 2;
}

} // namespace

int main(int argc, char *argv[])
{
    BenchEnvironment environment(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() == 4 && arguments[1] == u"--read")
        return readOnce(arguments[2], arguments[3]);

    // "--write FOLDER" leaves the two files there, for a profiler to run "--read" on.
    const bool keep = arguments.size() == 3 && arguments[1] == u"--write";
    const QDir folder(keep ? arguments[2] : environment.home.path());
    const TabData tab = makeBenchmarkTab();
    const QString documentPath = folder.filePath(u"bench.lgrdi"_qs);
    const QString exchangePath = folder.filePath(u"bench.lgrd"_qs);
    const QByteArray document = documentData(tab);
    for (const auto &[path, bytes] :
         {std::pair{documentPath, document}, std::pair{exchangePath, exchangeData(tab).value()}}) {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            qFatal("cannot write %s", qPrintable(path));
    }
    if (keep)
        return 0;
    const double fileMegabytes = double(document.size()) / (1024.0 * 1024.0);
    printFigure("document size", fileMegabytes, "MiB");
    for (const QString &reader : readers) {
        QProcess child;
        child.start(QCoreApplication::applicationFilePath(),
                    {u"--read"_qs, reader == u"exchange" ? exchangePath : documentPath, reader});
        if (!child.waitForFinished(120000) || child.exitCode() != 0)
            qFatal("the %s read failed", qPrintable(reader));
        const QList<QByteArray> figures = child.readAllStandardOutput().trimmed().split(' ');
        const double start = figures.value(0).toDouble();
        const double loaded = figures.value(1).toDouble();
        const double peak = figures.value(2).toDouble();
        const double held = figures.value(3).toDouble();
        const QByteArray name = reader.toUtf8();
        printFigure(QByteArray(name + " peak above the file").constData(), peak - loaded, "MiB");
        printFigure(QByteArray(name + " peak with the file / document").constData(),
                    (peak - start) / fileMegabytes, "x");
        if (held > 0) {
            printFigure(QByteArray(name + " tab held after the read").constData(), held, "MiB");
            printFigure(QByteArray(name + " peak beyond file and tab / doc").constData(),
                        (peak - loaded - held) / fileMegabytes, "x");
        }
    }
    return 0;
}
