#include "export/exportdialogviewcontroller.h"
#include "exportdialogpresenter.h"
#include "exportsharing.h"
#include "services/apppaths.h"
#include "surfacepalette.h"

#include "analyticscapture.h"
#include "testfiles.h"
#include "windowdriver.h"

#include <QClipboard>
#include <QMimeData>
#include <QPointer>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QtQml/qqmlextensionplugin.h>

Q_IMPORT_QML_PLUGIN(Lutegrid_SurfacePlugin)
Q_IMPORT_QML_PLUGIN(Lutegrid_ShellPlugin)
Q_IMPORT_QML_PLUGIN(Lutegrid_ExportPlugin)

namespace {

TabExportConfiguration songConfig()
{
    TabRowData row(30, 6);
    row.colDatas[0].chordName = u"Am"_qs;
    row.colDatas[2].setColumnItem(0, ColumnItemType::note(7));
    row.lyricLines = {u"hello road"_qs};
    return TabExportConfiguration{
        TabData(u"Song"_qs, {row}, standardStringNotes(6), 0, std::nullopt)};
}

QString exportsFolder()
{
    return QDir(AppPaths::documentDirectory()).filePath(u"Exports"_qs);
}

QString exported(const QString &name)
{
    return QDir(exportsFolder()).filePath(name);
}

} // namespace

class TestExportWindow : public QObject, WindowDriver {
    Q_OBJECT

    QQmlEngine engine;
    QQuickWindow *window = nullptr;
    QQuickItem *host = nullptr;
    QPointer<QQuickItem> dialog;
    QList<QUrl> opened;
    QStringList shown;

    ExportDialogViewController *controller() { return ExportDialogPresenter::controllerOf(dialog); }

    QQuickWindow *drivenWindow() const override { return window; }
    using WindowDriver::click;
    using WindowDriver::tap;

    // Walks the visual tree, shown or not: a Repeater's rows are not QObject children of the
    // dialog.
    static QQuickItem *findAny(QQuickItem *root, const QString &name)
    {
        if (!root || root->objectName() == name)
            return root;
        for (QQuickItem *child : root->childItems()) {
            if (QQuickItem *found = findAny(child, name))
                return found;
        }
        return nullptr;
    }

    QQuickItem *item(const QString &name)
    {
        auto *found = findAny(dialog, name);
        if (!found)
            qWarning() << "no item" << name;
        return found;
    }

    // A view that just appeared lays itself out at the next polish; a grab runs it now.
    QQuickItem *visibleItem(const QString &name)
    {
        window->grabWindow();
        QQuickItem *target = item(name);
        return target && target->isVisible() ? target : nullptr;
    }
    void click(const QString &name)
    {
        QQuickItem *target = visibleItem(name);
        QVERIFY2(target, qPrintable(name));
        click(centerOf(target));
    }
    void tap(const QString &name) { tap(visibleItem(name)); }

    // Replaces the name the way a user does: click in, select all, type.
    void typeName(const QString &text)
    {
        click(u"fileNameField"_qs);
        QTest::keyClick(window, Qt::Key_A, Qt::ControlModifier);
        if (text.isEmpty())
            QTest::keyClick(window, Qt::Key_Backspace);
        typeText(text);
    }

    QString text(const QString &name) { return item(name)->property("text").toString(); }

    void open(TabExportConfiguration config = songConfig())
    {
        if (dialog)
            delete dialog;
        dialog = ExportDialogPresenter::openExportDialog(host, config);
        QVERIFY(dialog);
        QVERIFY(QTest::qWaitForWindowExposed(window));
        QTRY_VERIFY(item(u"fileNameField"_qs)->hasActiveFocus());
    }

    void shoot(const QString &name, const QString &folder = u"shots-export"_qs)
    {
        const QString dir =
            QDir(QCoreApplication::applicationDirPath()).filePath(u"../../../"_qs + folder);
        QDir().mkpath(dir);
        QTest::qWait(250);
        QVERIFY(window->grabWindow().save(QDir(dir).filePath(name + u".png"_qs)));
    }

private Q_SLOTS:
    void initTestCase()
    {
        startDriving(u"shots-export"_qs);
        engine.addImportPath(u"qrc:/"_qs);
        QQmlComponent component(&engine);
        component.setData("import QtQuick\nWindow { width: 390; height: 844; visible: true\n"
                          "Rectangle { objectName: 'screen'; anchors.fill: parent; "
                          "color: 'gray' } }",
                          QUrl());
        window = qobject_cast<QQuickWindow *>(component.create());
        QVERIFY2(window, qPrintable(component.errorString()));
        host = window->findChild<QQuickItem *>(u"screen"_qs);
        QVERIFY(host);
        ExportSharing::urlOpener = [this](const QUrl &url) {
            opened.append(url);
            return true;
        };
        ExportSharing::fileManagerShow = [this](const QStringList &paths) {
            shown = paths;
            return true;
        };
    }

    void init()
    {
        QDir(exportsFolder()).removeRecursively();
        opened.clear();
        shown.clear();
    }

    void nameRefusals_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("message");
        QTest::newRow("51 characters")
            << QString(51, u'x') << u"Name too long. 51/50 characters."_qs;
        QTest::newRow("blanks") << u"   "_qs << u"Name cannot be empty"_qs;
        QTest::newRow("lgrd in any case") << u"my.LGRD.tab"_qs << u"Cannot contain '.lgrd'"_qs;
        QTest::newRow("slash") << u"a/b"_qs << u"Cannot contain '/'"_qs;
    }

    // Refused names stay in the field with the message under it; nothing is written, and
    // editing again clears the message.
    void nameRefusals()
    {
        QFETCH(QString, name);
        QFETCH(QString, message);
        open();
        QCOMPARE(text(u"fileNameField"_qs), u"Song"_qs);
        click(u"lgrdSwitch"_qs);
        typeName(name);
        click(u"exportButt"_qs);
        QCOMPARE(text(u"errorLabel"_qs), message);
        QVERIFY(item(u"exportPanel"_qs)->isVisible());
        QVERIFY(!QDir(exportsFolder()).exists() || QDir(exportsFolder()).isEmpty());
        click(u"lgrdSwitch"_qs);
        click(u"fileNameField"_qs);
        QCOMPARE(text(u"errorLabel"_qs), QString());
    }

    void nothingChosenAndTrimmedName()
    {
        open();
        typeName(u" Song "_qs);
        // Enter in the field exports, as the button does.
        QTest::keyClick(window, Qt::Key_Return);
        QCOMPARE(text(u"errorLabel"_qs), u"Select an export option"_qs);
        QVERIFY(!QFile::exists(exported(u"Song.lgrd"_qs)));
        shoot(u"dialog-input-error-phone-light"_qs);

        analyticsEvents.clear();
        previousHandler = qInstallMessageHandler(captureAnalytics);
        tap(u"lgrdSwitch"_qs);
        tap(u"pdfSwitch"_qs);
        tap(u"exportButt"_qs);
        qInstallMessageHandler(previousHandler);
        QVERIFY(item(u"successView"_qs)->isVisible());
        QVERIFY(readFile(exported(u"Song.lgrd"_qs)).startsWith("{"));
        QVERIFY(readFile(exported(u"Song.pdf"_qs)).startsWith("%PDF-"));
        QCOMPARE(analyticsEvents, QStringList{u"Export_1_0_1"_qs});
        QVERIFY(text(u"successDetailsLabel"_qs).contains(u"Song.lgrd\nSong.pdf"_qs));
    }

    // lgrd and pdf wanted, only Song.pdf there: the lgrd is written at once and the pdf asked
    // about; Replace writes it, Keep Existing leaves it.
    void overwriteQuestion_data()
    {
        QTest::addColumn<bool>("confirm");
        QTest::newRow("confirm") << true;
        QTest::newRow("cancel") << false;
    }

    void overwriteQuestion()
    {
        QFETCH(bool, confirm);
        QVERIFY(AppPaths::ensureDirectory(exportsFolder()));
        writeFile(exported(u"Song.pdf"_qs), "old");
        open();
        click(u"lgrdSwitch"_qs);
        click(u"pdfSwitch"_qs);
        click(u"exportButt"_qs);
        QVERIFY(item(u"confirmView"_qs)->isVisible());
        QCOMPARE(text(u"overwriteFileList"_qs), u"• Song.pdf"_qs);
        QVERIFY(QFile::exists(exported(u"Song.lgrd"_qs)));
        QCOMPARE(readFile(exported(u"Song.pdf"_qs)), QByteArray("old"));
        shoot(u"dialog-asking-phone-light"_qs);
        click(confirm ? u"confirmButt"_qs : u"cancelOverwriteButt"_qs);
        if (confirm) {
            QVERIFY(item(u"successView"_qs)->isVisible());
            QVERIFY(readFile(exported(u"Song.pdf"_qs)).startsWith("%PDF-"));
            // The lgrd of the first pass is written again and listed once.
            QCOMPARE(controller()->exportedFileUrls.size(), 3);
            QCOMPARE(controller()->exportedFiles().size(), 2);
        } else {
            QVERIFY(item(u"exportPanel"_qs)->isVisible());
            QCOMPARE(readFile(exported(u"Song.pdf"_qs)), QByteArray("old"));
            QCOMPARE(controller()->exportedFileUrls, QStringList{exported(u"Song.lgrd"_qs)});
        }
    }

    void allThreeClashInOrder()
    {
        QVERIFY(AppPaths::ensureDirectory(exportsFolder()));
        for (const QString &name : {u"Song.pdf"_qs, u"Song.txt"_qs, u"Song.lgrd"_qs})
            writeFile(exported(name), "old");
        open();
        // By keyboard alone: Tab from the name through the five switches to Export, turning
        // on the first three.
        for (int i = 0; i < 3; ++i) {
            QTest::keyClick(window, Qt::Key_Tab);
            QTest::keyClick(window, Qt::Key_Space);
        }
        for (int i = 0; i < 3; ++i)
            QTest::keyClick(window, Qt::Key_Tab);
        QVERIFY(item(u"exportButt"_qs)->hasActiveFocus());
        QTest::keyClick(window, Qt::Key_Return);
        QCOMPARE(text(u"overwriteFileList"_qs), u"• Song.lgrd\n\n• Song.txt\n\n• Song.pdf"_qs);
        QVERIFY(controller()->exportedFileUrls.isEmpty());
        // Escape answers "keep" in the question and the name field has the keys again;
        // Return answers "replace", and Return again closes the done view.
        QTest::keyClick(window, Qt::Key_Escape);
        QVERIFY(item(u"exportPanel"_qs)->isVisible());
        QTRY_VERIFY(item(u"fileNameField"_qs)->hasActiveFocus());
        QTest::keyClick(window, Qt::Key_Return);
        QVERIFY(item(u"confirmView"_qs)->isVisible());
        QTest::keyClick(window, Qt::Key_Return);
        QVERIFY(item(u"successView"_qs)->isVisible());
        QVERIFY(readFile(exported(u"Song.txt"_qs)).startsWith("Song"));
        QTest::keyClick(window, Qt::Key_Return);
        QTRY_VERIFY(!dialog);
    }

    void sharingAndHelp()
    {
        open();
        click(u"helpButt"_qs);
        QCOMPARE(opened.size(), 1);
        QCOMPARE(opened[0].fragment(), u"exportSection"_qs);
        QVERIFY(readFile(opened[0].toLocalFile()).contains("id=\"exportSection\""));

        click(u"txtSwitch"_qs);
        click(u"pdfSwitch"_qs);
        click(u"exportButt"_qs);
        click(u"shareButt"_qs);
        const QStringList files{exported(u"Song.txt"_qs), exported(u"Song.pdf"_qs)};
        click(u"showInFolderButt"_qs);
        QCOMPARE(shown, files);
        click(u"copyFilesButt"_qs);
        const QMimeData *clip = QGuiApplication::clipboard()->mimeData();
        QVERIFY(clip);
        QCOMPARE(clip->urls(),
                 (QList<QUrl>{QUrl::fromLocalFile(files[0]), QUrl::fromLocalFile(files[1])}));
        QVERIFY(text(u"shareMessage"_qs).startsWith(u"Copied 2 files"_qs));
        click(u"open Song.pdf"_qs);
        QCOMPARE(opened.last(), QUrl::fromLocalFile(files[1]));

        // Done closes the dialog, which goes away.
        click(u"doneButt"_qs);
        QTRY_VERIFY(!dialog);
    }

    void aTapOutsideCloses()
    {
        open();
        tap(QPoint(5, 5));
        QTRY_VERIFY(!dialog);
    }

    // The two score formats by touch, after the first three in the written order; a clash
    // with one of them is asked about like any other. Shot at phone size in both themes.
    void scoreFormats_data()
    {
        QTest::addColumn<bool>("dark");
        QTest::newRow("phone-light") << false;
        QTest::newRow("phone-dark") << true;
    }

    void scoreFormats()
    {
        QFETCH(bool, dark);
        const QString tag = QString::fromUtf8(QTest::currentDataTag());
        SurfacePalette::instance()->setDark(dark);
        open();
        QVERIFY(!item(u"musicXmlSwitch"_qs)->property("checked").toBool());
        QVERIFY(!item(u"midiSwitch"_qs)->property("checked").toBool());
        for (const QString &name : {u"lgrdSwitch"_qs, u"pdfSwitch"_qs, u"musicXmlSwitch"_qs,
                                    u"midiSwitch"_qs})
            tap(name);
        // All five rows and both buttons fit on a phone without scrolling.
        for (const QString &name : {u"midiSwitch"_qs, u"exportButt"_qs}) {
            QQuickItem *bottom = item(name);
            QVERIFY(bottom->mapToItem(item(u"dialogBg"_qs), QPointF(0, bottom->height())).y()
                    <= item(u"dialogBg"_qs)->height());
        }
        shoot(u"dialog-input-"_qs + tag, u"shots-formats"_qs);
        analyticsEvents.clear();
        previousHandler = qInstallMessageHandler(captureAnalytics);
        tap(u"exportButt"_qs);
        qInstallMessageHandler(previousHandler);
        QVERIFY(item(u"successView"_qs)->isVisible());
        QCOMPARE(analyticsEvents, QStringList{u"Export_1_0_1_1_1"_qs});
        QVERIFY(text(u"successDetailsLabel"_qs)
                    .endsWith(u"Song.lgrd\nSong.pdf\nSong.musicxml\nSong.mid"_qs));
        QVERIFY(readFile(exported(u"Song.musicxml"_qs)).contains("<score-partwise"));
        QVERIFY(readFile(exported(u"Song.mid"_qs)).startsWith("MThd"));
        shoot(u"dialog-done-"_qs + tag, u"shots-formats"_qs);

        // Again with MIDI alone: the file just written is asked about.
        open();
        tap(u"midiSwitch"_qs);
        tap(u"exportButt"_qs);
        QCOMPARE(text(u"overwriteFileList"_qs), u"• Song.mid"_qs);
        shoot(u"dialog-asking-"_qs + tag, u"shots-formats"_qs);
        tap(u"confirmButt"_qs);
        QCOMPARE(controller()->exportedFiles(), QStringList{exported(u"Song.mid"_qs)});
        SurfacePalette::instance()->setDark(false);
    }

    void screenshots_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<bool>("dark");
        QTest::newRow("phone-light") << QSize(390, 844) << false;
        QTest::newRow("phone-dark") << QSize(390, 844) << true;
        QTest::newRow("desktop-light") << QSize(1280, 800) << false;
        QTest::newRow("desktop-dark") << QSize(1280, 800) << true;
    }

    void screenshots()
    {
        QFETCH(QSize, size);
        QFETCH(bool, dark);
        const QString tag = QString::fromUtf8(QTest::currentDataTag());
        window->resize(size);
        SurfacePalette::instance()->setDark(dark);
        open();
        click(u"pdfSwitch"_qs);
        shoot(u"dialog-input-"_qs + tag);
        QVERIFY(AppPaths::ensureDirectory(exportsFolder()));
        writeFile(exported(u"Song.txt"_qs), "old");
        click(u"lgrdSwitch"_qs);
        click(u"txtSwitch"_qs);
        click(u"exportButt"_qs);
        shoot(u"dialog-asking-"_qs + tag);
        click(u"confirmButt"_qs);
        click(u"shareButt"_qs);
        shoot(u"dialog-done-"_qs + tag);
        SurfacePalette::instance()->setDark(false);
        window->resize(390, 844);
    }
};

LUTEGRID_WINDOW_TEST_MAIN(TestExportWindow)
#include "tst_exportwindow.moc"
