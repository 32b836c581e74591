import QtQuick
import QtQuick.Controls.Basic
import Lutegrid.Shell
import Lutegrid.Library

// The Menu: where the tabs are kept, the look, the guide and the back-up.
SheetLayer {
    id: sheet
    required property MenuDialogViewController menu
    signal backupRequested()
    signal chooseFolderRequested()
    objectName: "menuDialogView"
    onCancelled: menu.close()

    Column {
        id: body
        width: sheet.panel.width
        padding: 20
        spacing: 14
        readonly property real inner: width - 2 * padding
        Text { text: "Menu"; color: Theme.label; font.pixelSize: 19; font.weight: Font.DemiBold }

        Item {
            width: body.inner
            height: 44
            Text {
                anchors.verticalCenter: parent.verticalCenter
                text: "Sync folder"
                color: Theme.label
                font.pixelSize: 17
            }
            Switch {
                id: syncSwitch
                objectName: "iCloudSwitch"
                anchors.right: parent.right
                anchors.verticalCenter: parent.verticalCenter
                checked: sheet.menu.iCloudSwitch
                // The controller may refuse: the switch shows what it decided.
                onToggled: {
                    sheet.menu.setSwitch(checked)
                    checked = Qt.binding(() => sheet.menu.iCloudSwitch)
                }
                indicator: Rectangle {
                    implicitWidth: 52; implicitHeight: 32; radius: 16
                    color: syncSwitch.checked ? Theme.accent : Theme.separator
                    border.width: syncSwitch.visualFocus ? 2 : 0
                    border.color: Theme.label
                    Rectangle {
                        x: syncSwitch.checked ? parent.width - width - 3 : 3
                        anchors.verticalCenter: parent.verticalCenter
                        width: 26; height: 26; radius: 13
                        color: "white"
                        Behavior on x { NumberAnimation { duration: 120 } }
                    }
                }
            }
        }
        Item {
            width: body.inner
            height: Math.max(chooseButt.height, folderText.implicitHeight)
            Text {
                id: folderText
                objectName: "syncFolderLabel"
                anchors.left: parent.left
                anchors.right: chooseButt.left
                anchors.rightMargin: 10
                anchors.verticalCenter: parent.verticalCenter
                text: sheet.menu.syncFolder.length ? sheet.menu.syncFolder : "No sync folder chosen"
                elide: Text.ElideLeft
                color: Theme.secondaryLabel
                font.pixelSize: 14
            }
            SheetButton {
                id: chooseButt
                objectName: "chooseSyncFolderButt"
                anchors.right: parent.right
                text: "Choose…"
                onClicked: sheet.chooseFolderRequested()
            }
        }
        Text {
            objectName: "storageLabel"
            width: body.inner
            text: "Tabs are kept in " + sheet.menu.storageText
            wrapMode: Text.WrapAnywhere
            color: Theme.secondaryLabel
            font.pixelSize: 13
        }
        Rectangle { width: body.inner; height: 1; color: Theme.separator }
        Text { text: "Appearance"; color: Theme.secondaryLabel; font.pixelSize: 13 }
        Row {
            objectName: "appearanceControl"
            width: body.inner
            spacing: 4
            Repeater {
                model: ["System", "Light", "Dark"]
                AbstractButton {
                    required property string modelData
                    required property int index
                    objectName: "appearance" + index
                    width: (body.inner - 8) / 3
                    height: 40
                    focusPolicy: Qt.StrongFocus
                    Keys.onReturnPressed: clicked()
                    onClicked: sheet.menu.setAppearance(index)
                    readonly property bool selected: sheet.menu.appearanceControl === index
                    background: Rectangle {
                        radius: 10
                        color: parent.selected ? Theme.accent : (parent.down ? Theme.pressed : Theme.toolbar)
                        border.width: parent.visualFocus ? 2 : 0
                        border.color: Theme.label
                    }
                    contentItem: Text {
                        text: parent.modelData
                        horizontalAlignment: Text.AlignHCenter
                        verticalAlignment: Text.AlignVCenter
                        color: parent.selected ? "white" : Theme.label
                        font.pixelSize: 15
                    }
                }
            }
        }
        Rectangle { width: body.inner; height: 1; color: Theme.separator }
        ListRow {
            objectName: "backupRow"
            width: body.inner
            height: 48
            text: "Back Up All Tabs"
            iconName: "share"
            onClicked: sheet.backupRequested()
        }
        ListRow {
            objectName: "guideRow"
            width: body.inner
            height: 48
            text: "Guide"
            iconName: "info"
            onClicked: Qt.openUrlExternally("https://lutegrid.org/lutegrid/guide/#foldersSection")
        }
        SheetButton {
            objectName: "menuDoneButt"
            anchors.right: parent.right
            anchors.rightMargin: body.padding
            text: "Done"
            emphasized: true
            onClicked: sheet.menu.close()
        }
    }
}
