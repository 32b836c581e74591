#pragma once

#include "dialoghost.h"
#include "editor/tabeditviewcontroller.h"
#include "fretboarditem.h"
#include "tabeditsurface.h"

#include <QPointer>
#include <QQuickItem>

#include <memory>

// The editor screen's root item: it makes the controller once the surface and the fretboard
// exist, hands it the screen's size and the keys, and finishes the editing when the screen goes.
class EditorScreenItem : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QObject *document READ document WRITE setDocument NOTIFY documentChanged)
    Q_PROPERTY(TabEditSurface *surface MEMBER surfaceItem NOTIFY partsChanged)
    Q_PROPERTY(FretboardItem *fretboard MEMBER fretboardItem NOTIFY partsChanged)
    Q_PROPERTY(DialogHost *dialogs MEMBER dialogHost NOTIFY partsChanged)
    Q_PROPERTY(QObject *controller READ controllerObject NOTIFY controllerChanged)
    Q_PROPERTY(QStringList keyboardShortcuts READ keyboardShortcuts CONSTANT)

public:
    explicit EditorScreenItem(QQuickItem *parent = nullptr);
    ~EditorScreenItem() override;

    LutegridDocument *document() const { return lgDocument; }
    void setDocument(QObject *document);
    TabEditViewController *controller() const { return editor.get(); }
    QObject *controllerObject() const { return editor.get(); }

    Q_INVOKABLE void finishEditing();
    Q_INVOKABLE void toggleFullScreen();
    QStringList keyboardShortcuts() const { return HardwareKeyboard::shortcutList(); }

Q_SIGNALS:
    void documentChanged();
    void partsChanged();
    void controllerChanged();

protected:
    void componentComplete() override;
    // Keys reach the editor here when no child took them; a text field with the keys keeps them.
    void keyPressEvent(QKeyEvent *event) override;
    void keyReleaseEvent(QKeyEvent *event) override;
    void itemChange(ItemChange change, const ItemChangeData &data) override;
    void geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry) override;

private:
    void makeController();
    bool textBeingTyped() const;
    // With no text field holding the keys, they come back to the editor.
    void keepKeyFocus();
    void pasteFromClipboard();

    QPointer<LutegridDocument> lgDocument;
    // Children of this screen, or the window's host: they outlive the controller.
    TabEditSurface *surfaceItem = nullptr;
    FretboardItem *fretboardItem = nullptr;
    DialogHost *dialogHost = nullptr;
    std::unique_ptr<TabEditViewController> editor;
    QMetaObject::Connection focusConnection;
};
