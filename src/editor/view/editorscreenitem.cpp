#include "editorscreenitem.h"

#include "editor/tabpaste.h"
#include "export/asciitabreader.h"
#include "services/dialogpresenter.h"
#include "shell/appmanager.h"

#include "dialoghost.h"
#include "fretboarditem.h"
#include "tabeditsurface.h"

#include <QClipboard>
#include <QFont>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QQuickWindow>

#include <cmath>

EditorScreenItem::EditorScreenItem(QQuickItem *parent) : QQuickItem(parent)
{
    setActiveFocusOnTab(false);
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
    // Chord buttons are as wide as their names in the font the buttons use.
    editor->chordShortcuts()->measureName = [](const QString &name) {
        QFont font;
        font.setPixelSize(24);
        const QFontMetricsF metrics(font);
        return QSizeF(std::ceil(metrics.horizontalAdvance(name)), std::ceil(metrics.height()));
    };
    editor->existingTabCount = AppManager::shared().existingTabPaths.size();
    if (width() > 0 && height() > 0)
        editor->applyViewSize(width(), height());
    connect(editor->keyboard(), &HardwareKeyboard::pasteRequested, this,
            &EditorScreenItem::pasteFromClipboard);
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

namespace {

KeyPress keyPress(const QKeyEvent &event)
{
    return KeyPress{event.key(), event.text(), event.modifiers(), event.isAutoRepeat()};
}

} // namespace

bool EditorScreenItem::textBeingTyped() const
{
    const QQuickWindow *w = window();
    const QQuickItem *item = w ? w->activeFocusItem() : nullptr;
    return item && (item->inherits("QQuickTextInput") || item->inherits("QQuickTextEdit"));
}

void EditorScreenItem::keyPressEvent(QKeyEvent *event)
{
    if (!editor) {
        event->ignore();
        return;
    }
    HardwareKeyboard *keys = editor->keyboard();
    keys->textBeingTyped = textBeingTyped();
    event->setAccepted(keys->pressBegan(keyPress(*event)));
}

// A plain-text tab on the clipboard goes in at the cursor; other text says why it can't.
void EditorScreenItem::pasteFromClipboard()
{
    TabEditView *view = editor ? editor->tabEditView() : nullptr;
    if (!view || !view->tabEdits())
        return;
    const AsciiTabResult read = AsciiTabReader::read(QGuiApplication::clipboard()->text());
    std::optional<QString> message = read.tab ? std::nullopt : std::optional(read.message);
    if (read.tab)
        message = TabPaste::pasteRows(*view->tabEdits(), view->cursorTabRow(),
                                      view->editColIndex, read.tab->tabRowDatas);
    if (message && editor->dialogPresenter())
        editor->dialogPresenter()->presentMessage(*message);
}

void EditorScreenItem::keyReleaseEvent(QKeyEvent *event)
{
    if (!editor) {
        event->ignore();
        return;
    }
    event->setAccepted(editor->keyboard()->pressEnded(keyPress(*event)));
}

void EditorScreenItem::itemChange(ItemChange change, const ItemChangeData &data)
{
    QQuickItem::itemChange(change, data);
    if (change != ItemSceneChange)
        return;
    disconnect(focusConnection);
    if (data.window) {
        focusConnection = connect(data.window, &QQuickWindow::activeFocusItemChanged, this,
                                  &EditorScreenItem::keepKeyFocus, Qt::QueuedConnection);
        QMetaObject::invokeMethod(this, &EditorScreenItem::keepKeyFocus, Qt::QueuedConnection);
    }
}

void EditorScreenItem::keepKeyFocus()
{
    QQuickWindow *w = window();
    if (!w || !isVisible() || !isEnabled() || textBeingTyped())
        return;
    QQuickItem *item = w->activeFocusItem();
    // Keys inside the screen still climb up to it; elsewhere (the dialog layer) they stay.
    if (item && item != w->contentItem() && (item == this || isAncestorOf(item)))
        return;
    if (item && item != w->contentItem() && !item->inherits("QQuickStackView"))
        return;
    forceActiveFocus(Qt::OtherFocusReason);
}

void EditorScreenItem::toggleFullScreen()
{
    if (QQuickWindow *w = window())
        w->setWindowStates(w->windowStates() ^ Qt::WindowFullScreen);
}
