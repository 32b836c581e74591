#include "exportdialogpresenter.h"

#include "export/exportdialogviewcontroller.h"
#include "export/exportlog.h"
#include "tabpdf.h"

#include <QQmlComponent>
#include <QQmlContext>
#include <QQmlEngine>
#include <QQuickItem>

namespace ExportDialogPresenter {

QQuickItem *openExportDialog(QQuickItem *host, const TabExportConfiguration &exportConfig)
{
    QQmlEngine *engine = host ? qmlEngine(host) : nullptr;
    if (!engine) {
        qCWarning(lcExport) << "the export dialog needs a host item made by QML";
        return nullptr;
    }
    QQmlComponent component(engine, QUrl(u"qrc:/Lutegrid/Export/ExportDialog.qml"_qs));
    auto *controller = new ExportDialogViewController(exportConfig, &TabPdf::exportToPath);
    QObject *object = component.createWithInitialProperties(
        {{u"controller"_qs, QVariant::fromValue<QObject *>(controller)}}, qmlContext(host));
    auto *dialog = qobject_cast<QQuickItem *>(object);
    if (!dialog) {
        qCWarning(lcExport).noquote() << component.errorString();
        delete object;
        delete controller;
        return nullptr;
    }
    controller->setParent(dialog);
    dialog->setParentItem(host);
    dialog->setZ(1000);
    QObject::connect(controller, &ExportDialogViewController::finished, dialog,
                     &QObject::deleteLater);
    return dialog;
}

ExportDialogViewController *controllerOf(QQuickItem *dialog)
{
    return dialog ? dialog->findChild<ExportDialogViewController *>(QString(),
                                                                    Qt::FindDirectChildrenOnly)
                  : nullptr;
}

} // namespace ExportDialogPresenter
