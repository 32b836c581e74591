// Saves one tab over and over, alternating between a small and a large version, until it is
// killed. tst_document kills it at random moments and reads what is left.
#include "library/lutegriddocument.h"

#include <QCoreApplication>
#include <QFile>
#include <QTextStream>

#include <cstdio>

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    if (argc < 2)
        return 2;
    const QString path = QString::fromLocal8Bit(argv[1]);
    TabData small(u"Loop"_qs, 6);
    small.tabRowDatas = {TabRowData(16, 6)};
    TabData large(u"Loop"_qs, 6);
    // Long words make the bytes large and cheap to make, so most of a round is spent writing.
    large.tabRowDatas = {TabRowData(16, 6), TabRowData(16, 6)};
    large.tabRowDatas[1].lyricLines = {QString(4 * 1024 * 1024, u'x')};

    // Later rounds open what the killed one left, as the program would.
    const bool exists = QFile::exists(path);
    LutegridDocument document(path, exists ? std::nullopt : std::optional<TabData>(small));
    if (exists ? !document.open()
               : !document.saveToURL(path, LutegridDocument::SaveOperation::ForCreating))
        return 1;
    std::fputs("ready\n", stdout);
    std::fflush(stdout);
    for (quint64 round = 0;; ++round) {
        document.tabData = (round % 2) ? small : large;
        document.updateChangeCount(LutegridDocument::ChangeKind::Done);
        document.autosave();
    }
}
