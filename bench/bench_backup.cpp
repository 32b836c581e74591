// The library screen's figures: the back-up archive of 100 tabs of 20 rows, and the search of a
// list of 5,000 tabs at each typed character (the list's rows rebuilt as the screen reads them).
#include "benchtab.h"
#include "benchutil.h"

#include "library/icloudmanager.h"
#include "library/lutegriddocument.h"
#include "model/tabfileformat.h"
#include "shell/appmanager.h"
#include "shell/tabbackup.h"
#include "tabslistviewcontroller.h"

#include <QDateTime>
#include <QDir>
#include <QEventLoop>
#include <QFile>

int main(int argc, char **argv)
{
    BenchEnvironment environment(argc, argv);
    iCloudManager::shared().findCloudContainer();
    const QString storage = *iCloudManager::shared().iCloudContainerUrl;

    TabData tab(u"Bench"_qs, 6);
    for (int r = 0; r < 20; ++r) {
        tab.tabRowDatas.append(TabRowData(32, 6));
        for (int c = 0; c < 32; c += 2)
            tab.tabRowDatas[r].colDatas[c].setColumnItem(c % 6, ColumnItemType::note(c % 13));
    }
    const QByteArray bytes = documentData(tab);
    for (int i = 0; i < 100; ++i) {
        QFile file(QDir(storage).filePath(u"Tab %1.lgrdi"_qs.arg(i)));
        if (!file.open(QIODevice::WriteOnly))
            return 1;
        file.write(bytes);
    }
    const double backupMs = bestOf(
        [&] {
            TabBackup backup(storage, {});
            QEventLoop loop;
            QObject::connect(&backup, &TabBackup::finished, &loop, &QEventLoop::quit);
            if (backup.start())
                return;
            loop.exec();
        },
        3);
    printFigure("backup 100 tabs x 20 rows (no PDF)", backupMs, "ms");
    // Where the time goes: opening and closing the documents, and the zip.
    const double openMs = bestOf(
        [&] {
            for (int i = 0; i < 100; ++i) {
                LutegridDocument *document = AppManager::shared().documentFor(
                    QDir(storage).filePath(u"Tab %1.lgrdi"_qs.arg(i)));
                document->open();
                document->close();
            }
        },
        3);
    printFigure("  open and close 100 documents", openMs, "ms");
    const QString zipSource = QDir(qEnvironmentVariable("LUTEGRID_HOME")).filePath(u"zipme"_qs);
    QDir().mkpath(zipSource);
    for (int i = 0; i < 100; ++i) {
        QFile file(QDir(zipSource).filePath(u"Tab %1.lgrd"_qs.arg(i)));
        if (file.open(QIODevice::WriteOnly))
            file.write(*exchangeData(tab));
    }
    const QString zipTarget = QDir(qEnvironmentVariable("LUTEGRID_HOME")).filePath(u"b.zip"_qs);
    printFigure("  zip of 100 .lgrd files",
                bestOf([&] { TabBackup::zipFolder(zipSource, zipTarget); }, 3), "ms");

    // The search runs over the scan's entries, not the disk.
    QList<TabUrlInfo> tabs;
    const QDateTime start = QDateTime::currentDateTime().addDays(-100);
    for (int i = 0; i < 5000; ++i) {
        const QString path = u"Song number %1.lgrdi"_qs.arg(i);
        tabs.append(TabUrlInfo{path, path, start.addSecs(i * 97), {}});
    }
    TabsListViewController list(std::nullopt, false, false, nullptr);
    list.refreshList(tabs);
    const QString typed = u"number 4999"_qs;
    double worst = 0;
    double total = 0;
    QList<double> times;
    for (int run = 0; run < 3; ++run) {
        list.setSearchText(QString());
        for (int n = 1; n <= typed.size(); ++n) {
            QElapsedTimer timer;
            timer.start();
            list.setSearchText(typed.left(n));
            const QVariantList rows = list.rows();
            const double ms = double(timer.nsecsElapsed()) / 1e6;
            if (rows.isEmpty() && n < typed.size())
                return 1;
            worst = std::max(worst, ms);
            times.append(ms);
            total += ms;
        }
    }
    printFigure("search 5000 tabs, mean per character", total / (3 * typed.size()), "ms");
    std::sort(times.begin(), times.end());
    printFigure("search 5000 tabs, median character", times[times.size() / 2], "ms");
    printFigure("search 5000 tabs, worst character", worst, "ms");
    return 0;
}
