import QtQuick
import QtQuick.Controls.Basic
import Lutegrid.Shell
import Lutegrid.Library

// The folder screen behind the list; its gear opens the Menu.
Rectangle {
    id: page
    required property TabFoldersViewController folders
    color: Theme.background
    property MenuDialogViewController menu: null
    property ExportAllDialogViewController backup: null
    property bool choosingFolder: false

    function openMenu() { page.menu = page.folders.makeMenu() }

    NavBar {
        id: nav
        width: parent.width
        title: page.folders.title
        z: 1
        IconButton {
            objectName: "menuButt"
            parent: nav
            anchors.left: parent.left
            anchors.leftMargin: 6
            anchors.verticalCenter: parent.verticalCenter
            iconName: "gear"
            tint: Theme.accent
            onClicked: page.openMenu()
        }
    }
    ListView {
        objectName: "folderList"
        anchors.top: nav.bottom
        anchors.topMargin: 12
        anchors.bottom: parent.bottom
        width: Math.min(parent.width, 720)
        anchors.horizontalCenter: parent.horizontalCenter
        clip: true
        model: page.folders.rows
        // Pull to refresh.
        onDragEnded: if (contentY < -80) page.folders.refreshTriggered()
        delegate: ListRow {
            required property int index
            required property string modelData
            objectName: "folderRow" + index
            width: ListView.view.width
            text: modelData
            iconName: index === 0 ? "stack" : index === 1 ? "tray" : index === 2 ? "trash" : "label"
            iconTint: index === 2 ? Theme.destructive : Theme.accent
            onClicked: page.folders.openRow(index)
        }
    }

    Loader {
        anchors.fill: parent
        z: 10
        active: page.menu !== null
        sourceComponent: MenuDialogView {
            menu: page.menu
            onBackupRequested: {
                page.menu.close()
                page.backup = page.folders.makeBackup()
            }
            onChooseFolderRequested: page.choosingFolder = true
        }
    }
    Connections {
        target: page.menu
        function onFinished() { page.menu = null }
    }
    Loader {
        anchors.fill: parent
        z: 11
        active: page.choosingFolder
        sourceComponent: FileChooserView {
            title: "Choose the sync folder"
            choosingFolder: true
            startFolder: page.menu && page.menu.syncFolder.length ? page.menu.syncFolder : ""
            onCancelled: page.choosingFolder = false
            onChosen: (path) => {
                page.choosingFolder = false
                if (page.menu) page.menu.chooseSyncFolder(path)
            }
        }
    }
    Loader {
        anchors.fill: parent
        z: 10
        active: page.backup !== null
        sourceComponent: ExportAllDialogView { backup: page.backup }
    }
    Connections {
        target: page.backup
        function onFinished() { page.backup = null }
    }
}
