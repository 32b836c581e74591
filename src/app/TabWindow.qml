import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Window
import Lutegrid.Shell
import Lutegrid.Editor
import Lutegrid.ViewMode
import Lutegrid.App

// A tab in a window of its own: the editor, view mode over it, and the window's dialogs; or a
// message when there is no tab to edit. Closing the window finishes the editing; nothing is
// asked.
Window {
    id: root
    required property TabScene scene
    // Sized and shown by the scene, so that the editor lays out once, at its real size.
    width: 960
    height: 760
    visible: false
    title: scene.windowTitle
    color: Theme.background

    StackView {
        id: stack
        objectName: "stack"
        anchors.fill: parent
        initialItem: root.scene.document ? editorComponent : messageComponent
    }
    Component {
        id: editorComponent
        TabEditScreen {
            objectName: "tabWindowEditor"
            document: root.scene.document
            dialogs: root.scene.dialogs
            inOwnWindow: true
            onNewTabRequested: root.scene.newTabRequested()
            onRootRequested: root.scene.closeRequested()
            onViewModeRequested: {
                const start = controller ? controller.viewModeStartPoint() : Qt.point(0, -1)
                stack.push(viewPage, { editorScreen: this, document: document,
                                       startRow: start.y, startColumn: start.x })
            }
        }
    }
    Component {
        id: viewPage
        TabViewScreen {
            property var editorScreen: null
            dialogs: root.scene.dialogs
            onExportRequested: root.scene.openExportDialog(root.contentItem, this)
            onClosed: (row, column) => {
                if (row >= 0 && editorScreen && editorScreen.controller)
                    editorScreen.controller.showRowFromViewMode(row, column)
                stack.pop()
            }
        }
    }
    Component {
        id: messageComponent
        EmptyMsgView { message: root.scene.message }
    }

    DialogLayer {
        anchors.fill: parent
        host: root.scene.dialogs
        z: 100
    }
}
