import QtQuick
import QtQuick.Controls.Basic
import Lutegrid.Shell

// The versions of a tab that changed in two places: keep one, or keep them all.
Column {
    id: view
    required property DialogHost host
    property int selected: 0
    padding: 20
    spacing: 12
    Text {
        width: view.width - 2 * view.padding
        text: "This tab was changed in two places. Which version do you want to keep?"
        wrapMode: Text.Wrap
        color: Theme.label
        font.pixelSize: 16
    }
    Rectangle {
        width: view.width - 2 * view.padding
        height: Math.min(versionPicker.contentHeight, 5 * 44)
        radius: 12
        color: Theme.toolbar
        clip: true
        ListView {
            id: versionPicker
            objectName: "versionPicker"
            anchors.fill: parent
            model: view.host.conflictRows
            delegate: AbstractButton {
                id: row
                required property int index
                required property string modelData
                objectName: "version" + index
                width: ListView.view.width
                height: 44
                onClicked: view.selected = index
                background: Rectangle {
                    color: view.selected === row.index ? Theme.accentSoft : "transparent"
                    radius: 10
                }
                contentItem: Text {
                    leftPadding: 14
                    verticalAlignment: Text.AlignVCenter
                    text: row.modelData
                    color: view.selected === row.index ? Theme.accent : Theme.label
                    font.pixelSize: 16
                    font.weight: view.selected === row.index ? Font.DemiBold : Font.Normal
                }
            }
        }
    }
    DialogButton {
        objectName: "confirmSelection"
        width: view.width - 2 * view.padding
        text: "Keep"
        emphasized: true
        onClicked: view.host.chooseConflictRow(view.selected)
    }
}
