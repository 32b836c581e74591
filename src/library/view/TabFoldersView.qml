import QtQuick
import QtQuick.Controls.Basic
import Lutegrid.Shell
import Lutegrid.Library

// The folder screen behind the list.
Rectangle {
    id: page
    required property TabFoldersViewController folders
    color: Theme.background

    NavBar {
        id: nav
        width: parent.width
        title: page.folders.title
        z: 1
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
}
