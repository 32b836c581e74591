#include "editorscreenitem.h"

#include "shell/appmanager.h"

#include "dialoghost.h"
#include "fretboarditem.h"
#include "tabeditsurface.h"

#include <QGuiApplication>

EditorScreenItem::EditorScreenItem(QQuickItem *parent) : QQuickItem(parent)
{
    connect(this, &EditorScreenItem::partsChanged, this, &EditorScreenItem::makeController);
    // A quit leaves no time for the screen to go: the rows are saved here.
    connect(qGuiApp, &QGuiApplication::aboutToQuit, this, &EditorScreenItem::finishEditing);
}

EditorScreenItem::~EditorScreenItem()
{
    finishEditing();
}

void EditorScreenItem::setDocument(QObject *object)
{
    auto *document = qobject_cast<LutegridDocument *>(object);
    if (document == lgDocument)
        return;
    lgDocument = document;
    Q_EMIT documentChanged();
    makeController();
}

void EditorScreenItem::componentComplete()
{
    QQuickItem::componentComplete();
    makeController();
}

void EditorScreenItem::makeController()
{
    if (editor || !isComponentComplete() || !lgDocument || !lgDocument->tabData || !surfaceItem ||
        !fretboardItem)
        return;
    editor = std::make_unique<TabEditViewController>(lgDocument, surfaceItem->view(),
                                                     fretboardItem->board());
    editor->setDialogPresenter(dialogHost);
    editor->existingTabCount = AppManager::shared().existingTabPaths.size();
    if (width() > 0 && height() > 0)
        editor->applyViewSize(width(), height());
    Q_EMIT controllerChanged();
}

void EditorScreenItem::geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry)
{
    QQuickItem::geometryChange(newGeometry, oldGeometry);
    if (editor && newGeometry.size() != oldGeometry.size() && !newGeometry.isEmpty())
        editor->applyViewSize(newGeometry.width(), newGeometry.height());
}

void EditorScreenItem::finishEditing()
{
    if (editor)
        editor->finishEditing();
}
