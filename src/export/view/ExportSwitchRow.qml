import QtQuick
import QtQuick.Controls.Basic
import Lutegrid.Shell

// One format: its name and a switch; a tap anywhere on the row flips it.
AbstractButton {
    id: row
    property string detail
    checkable: true
    implicitHeight: Theme.touchTarget + 4
    // Space flips it from the keyboard, as a tap does.
    focusPolicy: Qt.StrongFocus
    background: Rectangle {
        radius: 10
        color: row.down ? Theme.pressed : "transparent"
        border.width: row.visualFocus ? 2 : 0
        border.color: Theme.accent
    }
    contentItem: Item {
        Column {
            anchors.left: parent.left
            anchors.leftMargin: 8
            anchors.verticalCenter: parent.verticalCenter
            Text {
                text: row.text
                color: Theme.label
                font.pixelSize: 16
            }
            Text {
                text: row.detail
                color: Theme.secondaryLabel
                font.pixelSize: 12
            }
        }
        Rectangle {
            id: track
            anchors.right: parent.right
            anchors.rightMargin: 8
            anchors.verticalCenter: parent.verticalCenter
            width: 50
            height: 30
            radius: 15
            color: row.checked ? Theme.accent : Theme.separator
            Behavior on color { ColorAnimation { duration: 120 } }
            Rectangle {
                width: 26
                height: 26
                radius: 13
                y: 2
                x: row.checked ? track.width - width - 2 : 2
                color: "white"
                Behavior on x { NumberAnimation { duration: 120; easing.type: Easing.OutCubic } }
            }
        }
    }
}
