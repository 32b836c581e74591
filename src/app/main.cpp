#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QUrl>
#include <QtQml/qqmlextensionplugin.h>

Q_IMPORT_QML_PLUGIN(Lutegrid_SurfacePlugin)

int main(int argc, char *argv[])
{
    QGuiApplication app(argc, argv);
    QGuiApplication::setOrganizationName(u"Lutegrid"_qs);
    QGuiApplication::setApplicationName(u"Lutegrid"_qs);

    QQmlApplicationEngine engine;
    // The feature modules live in the resources, under their URI.
    engine.addImportPath(u"qrc:/"_qs);
    QObject::connect(
        &engine, &QQmlApplicationEngine::objectCreationFailed, &app,
        [] { QCoreApplication::exit(1); }, Qt::QueuedConnection);
    engine.load(QUrl(u"qrc:/Lutegrid/Main.qml"_qs));
    return app.exec();
}
