#include "export/exportdialogviewcontroller.h"
#include "services/apppaths.h"

#include "analyticscapture.h"
#include "testfiles.h"
#include "testmain.h"

#include <QDir>
#include <QFileInfo>

namespace {

TabExportConfiguration songConfig()
{
    return TabExportConfiguration{TabData(u"Song"_qs, {TabRowData(4, 6)},
                                          standardStringNotes(6), 0, std::nullopt)};
}

QString exportsFolder()
{
    return QDir(AppPaths::documentDirectory()).filePath(u"Exports"_qs);
}

} // namespace

// The dialog's rules without a window; the window test drives the same cases by touch.
class TestExportDialog : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { QDir(exportsFolder()).removeRecursively(); }

    // A format that fails is left out, the others are written, and the pass still ends done.
    void aFailedFormatIsLeftOut()
    {
        QList<std::pair<ExportType, QString>> calls;
        ExportDialogViewController controller(
            songConfig(), [&](ExportType type, const TabExportConfiguration &config,
                              const QString &path) -> std::optional<QString> {
                calls.append({type, path});
                if (type == ExportType::PDF)
                    return std::nullopt;
                return DocumentManager::exportToPath(type, config, path);
            });
        controller.setFileName(u"\tTune "_qs);
        controller.pdfOn = controller.txtOn = true;
        controller.exportTab();
        QCOMPARE(controller.state(), ExportDialogViewController::Done);
        // The user's folder, not the temporary area, in the fixed order.
        const QString txt = QDir(exportsFolder()).filePath(u"Tune.txt"_qs);
        QCOMPARE(calls, (QList<std::pair<ExportType, QString>>{
                            {ExportType::TXT, txt},
                            {ExportType::PDF, QDir(exportsFolder()).filePath(u"Tune.pdf"_qs)}}));
        QCOMPARE(controller.exportedFileUrls, QStringList{txt});
        QVERIFY(readFile(txt).startsWith("Song"));
        QCOMPARE(controller.successDetails(), u"Saved in the Exports folder:\nTune.txt"_qs);
    }

    void nothingWrittenStillEnds()
    {
        // Without a painter nothing writes a PDF: the dialog says so instead of pretending.
        ExportDialogViewController controller(songConfig());
        controller.pdfOn = true;
        controller.exportTab();
        QCOMPARE(controller.state(), ExportDialogViewController::Done);
        QVERIFY(controller.exportedFiles().isEmpty());
        QVERIFY(controller.successDetails().startsWith(u"Nothing could be written"_qs));
    }

    // While the question stands, Export does nothing; after Keep Existing a new pass finds the
    // lgrd it wrote itself and asks about both.
    void askingThenAgain()
    {
        QVERIFY(AppPaths::ensureDirectory(exportsFolder()));
        writeFile(QDir(exportsFolder()).filePath(u"Song.txt"_qs), "old");
        ExportDialogViewController controller(songConfig());
        controller.lgrdOn = controller.txtOn = true;
        controller.exportTab();
        QCOMPARE(controller.state(), ExportDialogViewController::Asking);
        QVERIFY(controller.exportEnabled());
        controller.exportTab();
        QCOMPARE(controller.exportedFileUrls.size(), 1);
        controller.cancelOverwrite();
        QCOMPARE(controller.state(), ExportDialogViewController::Input);
        controller.exportTab();
        QCOMPARE(controller.overwriteList(), u"• Song.lgrd\n\n• Song.txt"_qs);
        QCOMPARE(controller.exportedFileUrls.size(), 1);
    }

    // MusicXML and MIDI come after the first three, in that order, and the event name grows
    // by their two flags only when one of them is on.
    void scoreFormatsOrderAndEvent()
    {
        QList<ExportType> calls;
        const auto recorder = [&](ExportType type, const TabExportConfiguration &config,
                                  const QString &path) -> std::optional<QString> {
            calls.append(type);
            return DocumentManager::exportToPath(type, config, path);
        };
        previousHandler = qInstallMessageHandler(captureAnalytics);
        analyticsEvents.clear();
        ExportDialogViewController all(songConfig(), recorder);
        QVERIFY(!all.musicXmlOn && !all.midiOn);
        all.midiOn = all.musicXmlOn = all.txtOn = true;
        all.exportTab();
        QCOMPARE(calls, (QList<ExportType>{ExportType::TXT, ExportType::MUSICXML, ExportType::MIDI}));
        QVERIFY(readFile(QDir(exportsFolder()).filePath(u"Song.musicxml"_qs)).contains("<score-partwise"));
        QVERIFY(readFile(QDir(exportsFolder()).filePath(u"Song.mid"_qs)).startsWith("MThd"));

        ExportDialogViewController midiOnly(songConfig());
        midiOnly.setFileName(u"Other"_qs);
        midiOnly.midiOn = true;
        midiOnly.exportTab();
        ExportDialogViewController old(songConfig());
        old.setFileName(u"Third"_qs);
        old.lgrdOn = old.pdfOn = true;
        old.exportTab();
        qInstallMessageHandler(previousHandler);
        QCOMPARE(analyticsEvents, (QStringList{u"Export_0_1_0_1_1"_qs, u"Export_0_0_0_0_1"_qs,
                                               u"Export_1_0_1"_qs}));
        QCOMPARE(midiOnly.successDetails(), u"Saved in the Exports folder:\nOther.mid"_qs);
    }
};

LUTEGRID_TEST_MAIN(TestExportDialog)
#include "tst_exportdialog.moc"
