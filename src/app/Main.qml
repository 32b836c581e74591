import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Window
import Lutegrid.Shell
import Lutegrid.Library
import Lutegrid.Editor
import Lutegrid.ViewMode
import Lutegrid.App

// The main window: the folder screen, the list over it, the editor over the list, and the
// window's dialogs over everything.
Window {
    id: root
    required property MainScene scene
    width: 390
    height: 844
    minimumWidth: 320
    minimumHeight: 480
    visible: true
    title: "Lutegrid"
    color: Theme.background

    StackView {
        id: stack
        objectName: "stack"
        anchors.fill: parent
        pushEnter: Transition {
            NumberAnimation { property: "x"; from: stack.width; to: 0; duration: 260; easing.type: Easing.OutCubic }
        }
        pushExit: Transition {
            NumberAnimation { property: "x"; from: 0; to: -stack.width * 0.3; duration: 260; easing.type: Easing.OutCubic }
        }
        popEnter: Transition {
            NumberAnimation { property: "x"; from: -stack.width * 0.3; to: 0; duration: 260; easing.type: Easing.OutCubic }
        }
        popExit: Transition {
            NumberAnimation { property: "x"; from: 0; to: stack.width; duration: 260; easing.type: Easing.OutCubic }
        }
    }

    Component {
        id: foldersPage
        TabFoldersView { }
    }
    Component {
        id: listPage
        TabsListView { onBackRequested: root.scene.goBack() }
    }
    Component {
        id: editorPage
        TabEditScreen {
            dialogs: root.scene.dialogs
            onBackRequested: root.scene.goBack()
            onNewTabRequested: root.scene.newTabFromEditor()
            onRootRequested: root.scene.popToRoot()
            onViewModeRequested: root.openViewMode(this)
        }
    }
    // View mode lies over the editor it came from and hands the highlighted row back to it.
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
    function openViewMode(editor) {
        const start = editor.controller ? editor.controller.viewModeStartPoint() : Qt.point(0, -1)
        stack.push(viewPage, { editorScreen: editor, document: editor.document,
                               startRow: start.y, startColumn: start.x })
    }

    Connections {
        target: root.scene
        function onScreenPushed(kind, object, animated) {
            const how = animated ? StackView.PushTransition : StackView.Immediate
            if (kind === MainScene.Folders)
                stack.push(foldersPage, { folders: object }, how)
            else if (kind === MainScene.TabsList)
                stack.push(listPage, { list: object }, how)
            else
                stack.push(editorPage, { document: object }, how)
        }
        function onScreenPopped() { stack.pop() }
        function onPoppedToRoot() { stack.pop(null, StackView.Immediate) }
    }

    DialogLayer {
        objectName: "dialogLayer"
        anchors.fill: parent
        host: root.scene.dialogs
        z: 100
    }

    Component.onCompleted: scene.start()
}
