#include "library/icloudmanager.h"
#include "shell/appmanager.h"
#include "shell/windowrequest.h"
#include "testmain.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

namespace {

struct List : TabsListScreen {
    QStringList messages;
    QStringList imports;
    QStringList opened;

    void refreshList(const std::optional<QList<TabUrlInfo>> &) override {}
    bool isDeletedFolder() const override { return false; }
    void showMessage(const QString &text) override { messages.append(text); }
    void startImport(const QString &path) override { imports.append(path); }
    void openTabNamed(const QString &fileName) override { opened.append(fileName); }
};

struct Window : SceneWindow {
    std::optional<QString> editorFile;
    TopScreen top = TopScreen::TabsList;
    List list;
    int activations = 0;

    std::optional<QString> rootEditorFileURL() const override { return editorFile; }
    TopScreen topScreen() const override { return top; }
    TabsListScreen *topTabsList() const override { return const_cast<List *>(&list); }
    TabsListScreen *pushAllTabsList() override
    {
        top = TopScreen::TabsList;
        return &list;
    }
    void requestSceneSessionActivation() override { ++activations; }
    std::optional<QStringList> shownTabStringNotes() const override { return std::nullopt; }
    void setOverrideUserInterfaceStyle(int) override {}
};

} // namespace

// What a start asks for, how it travels to a running instance, and where a file handed over
// from outside goes.
class TestWindowRequest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        iCloudManager::shared().findCloudContainer();
        QVERIFY(iCloudManager::shared().iCloudContainerUrl);
    }

    void argumentsAndWire()
    {
        using Kind = WindowRequest::Kind;
        QCOMPARE(WindowRequest::fromArguments({}, u"/w"_qs).kind, Kind::Show);
        QCOMPARE(WindowRequest::fromArguments({u"--new-tab"_qs}, u"/w"_qs).kind, Kind::NewTab);
        QCOMPARE(WindowRequest::fromArguments({u"--import"_qs, u"--x"_qs}, u"/w"_qs).kind,
                 Kind::Import);
        // Relative paths against the starting folder; URLs from a file manager as paths.
        const WindowRequest files = WindowRequest::fromArguments(
            {u"a/../song.lgrd"_qs, u"file:///tmp/My%20Tab.lgrdi"_qs, u"/abs/x.lgrd"_qs},
            u"/home/me"_qs);
        QCOMPARE(files.kind, Kind::OpenFiles);
        QCOMPARE(files.files, (QStringList{u"/home/me/song.lgrd"_qs, u"/tmp/My Tab.lgrdi"_qs,
                                           u"/abs/x.lgrd"_qs}));

        for (const WindowRequest &request :
             {WindowRequest{}, WindowRequest{Kind::NewTab, {}}, WindowRequest{Kind::Import, {}},
              files}) {
            const auto back = WindowRequest::fromBytes(request.toBytes());
            QVERIFY(back);
            QCOMPARE(*back, request);
            QVERIFY(!request.toBytes().contains('\n'));
        }
    }

    void garbageIsNoRequest()
    {
        const QList<QByteArray> garbage{
            QByteArray(),
            QByteArray("hello"),
            QByteArray("\xff\xfe\x00\x01", 4),
            QByteArray("[]"),
            QByteArray(R"({"kind":"newtab"})"),
            QByteArray(R"({"lutegridRequest":2,"kind":"newtab"})"),
            QByteArray(R"({"lutegridRequest":1,"kind":"explode"})"),
            QByteArray(R"({"lutegridRequest":1,"kind":"open","files":[]})"),
            QByteArray(R"({"lutegridRequest":1,"kind":"open","files":"/a.lgrd"})"),
            QByteArray(R"({"lutegridRequest":1,"kind":"open","files":[3]})"),
            QByteArray(R"({"lutegridRequest":1,"kind":"open","files":["rel.lgrd"]})"),
            QByteArray(R"({"lutegridRequest":1,"kind":"show","files":[")") +
                QByteArray(WindowRequest::maxBytes, 'a') + QByteArray(R"("]})"),
        };
        for (const QByteArray &bytes : garbage)
            QVERIFY2(!WindowRequest::fromBytes(bytes), bytes.left(60).constData());
    }

    void filesFromOutside()
    {
        AppManager &manager = AppManager::shared();
        const QString storage = *iCloudManager::shared().iCloudContainerUrl;
        QDir().mkpath(storage);
        QTemporaryDir elsewhere;
        Window main;
        manager.registerWindow(&main);

        // An exchange file: the list's import, its window forward.
        manager.openUrlContexts({elsewhere.filePath(u"song.lgrd"_qs), u"/second.lgrd"_qs});
        QCOMPARE(main.list.imports, QStringList{elsewhere.filePath(u"song.lgrd"_qs)});
        QCOMPARE(main.activations, 1);

        // A tab of the storage folder opens by name, also through a folder link.
        manager.openUrlContexts({QDir(storage).filePath(u"Song.lgrdi"_qs)});
        QCOMPARE(main.list.opened, QStringList{u"Song.lgrdi"_qs});
        const QString link = elsewhere.filePath(u"link"_qs);
        QVERIFY(QFile::link(storage, link));
        manager.openUrlContexts({QDir(link).filePath(u"Other.lgrdi"_qs)});
        QCOMPARE(main.list.opened.size(), 2);

        // A namesake outside it is not that tab: a message, the file untouched.
        QFile outside(elsewhere.filePath(u"Song.lgrdi"_qs));
        QVERIFY(outside.open(QIODevice::WriteOnly));
        outside.write("bytes");
        outside.close();
        manager.openUrlContexts({outside.fileName()});
        QCOMPARE(main.list.opened.size(), 2);
        QCOMPARE(main.list.messages.size(), 1);
        QVERIFY(main.list.messages.first().contains(u"\"Song.lgrdi\""_qs));
        QCOMPARE(QFileInfo(outside.fileName()).size(), 5);

        // With an editor over the list: a tab window on the file comes forward, else nothing.
        main.top = SceneWindow::TopScreen::Other;
        Window tabWindow;
        tabWindow.top = SceneWindow::TopScreen::Other;
        tabWindow.editorFile = QDir(storage).filePath(u"Song.lgrdi"_qs);
        manager.registerWindow(&tabWindow);
        manager.openUrlContexts({QDir(storage).filePath(u"Song.lgrdi"_qs)});
        QCOMPARE(tabWindow.activations, 1);
        manager.openUrlContexts({elsewhere.filePath(u"x.lgrd"_qs)});
        QCOMPARE(main.list.imports.size(), 1);
        manager.openUrlContexts({});
        manager.unregisterWindow(&tabWindow);
        manager.unregisterWindow(&main);
    }
};

LUTEGRID_TEST_MAIN(TestWindowRequest)
#include "tst_windowrequest.moc"
