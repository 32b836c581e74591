import QtQuick
import QtQuick.Controls.Basic
import Lutegrid.Shell
import Lutegrid.Library

// Choosing a file to import, or the sync folder.
SheetLayer {
    id: sheet
    property string title: "Choose a file"
    property alias choosingFolder: chooser.choosingFolder
    property alias suffixes: chooser.suffixes
    property string emptyText: "No files here"
    property string startFolder: ""
    signal chosen(string path)
    objectName: "fileChooserView"
    panelWidth: 520

    FileChooserController {
        id: chooser
        onChosen: (path) => sheet.chosen(path)
    }
    Component.onCompleted: if (startFolder.length) chooser.setFolder(startFolder); else chooser.setFolder("")

    Column {
        id: body
        width: sheet.panel.width
        padding: 16
        spacing: 10
        readonly property real inner: width - 2 * padding
        Text { text: sheet.title; color: Theme.label; font.pixelSize: 19; font.weight: Font.DemiBold }
        Row {
            spacing: 8
            width: body.inner
            IconButton { objectName: "upButt"; iconName: "back"; tint: Theme.accent; onClicked: chooser.up() }
            Text {
                objectName: "chooserFolder"
                width: body.inner - 52
                anchors.verticalCenter: parent.verticalCenter
                text: chooser.folder
                elide: Text.ElideLeft
                color: Theme.secondaryLabel
                font.pixelSize: 13
            }
        }
        ListView {
            id: entryList
            objectName: "chooserList"
            width: body.inner
            height: Math.min(Math.max(contentHeight, 48), sheet.height * 0.55)
            clip: true
            focus: true
            keyNavigationEnabled: true
            model: chooser.entries
            Keys.onReturnPressed: chooser.activate(currentIndex)
            delegate: ListRow {
                required property int index
                required property var modelData
                objectName: "chooserRow" + index
                width: ListView.view.width
                height: 48
                text: modelData.name
                iconName: modelData.isDir ? "folder" : "tab"
                chevron: modelData.isDir
                onClicked: chooser.activate(index)
            }
            Text {
                visible: entryList.count === 0
                anchors.centerIn: parent
                text: chooser.choosingFolder ? "No folders here" : sheet.emptyText
                color: Theme.secondaryLabel
                font.pixelSize: 15
            }
        }
        Row {
            spacing: 10
            anchors.right: parent.right
            anchors.rightMargin: body.padding
            SheetButton { objectName: "cancelChooserButt"; text: "Cancel"; onClicked: sheet.cancelled() }
            SheetButton {
                objectName: "chooseFolderButt"
                visible: chooser.choosingFolder
                text: "Use This Folder"
                emphasized: true
                onClicked: chooser.chooseCurrentFolder()
            }
        }
    }
}
