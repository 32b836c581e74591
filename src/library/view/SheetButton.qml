import QtQuick
import QtQuick.Controls.Basic
import Lutegrid.Shell

// A dialog button of the library's sheets; it takes the keyboard focus in turn, and Return
// or Space presses it.
AbstractButton {
    id: control
    property bool emphasized: false
    property bool destructive: false
    implicitHeight: 44
    implicitWidth: Math.max(88, label.implicitWidth + 32)
    focusPolicy: Qt.StrongFocus
    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()
    opacity: enabled ? 1 : 0.4
    background: Rectangle {
        radius: 12
        color: control.emphasized ? (control.destructive ? Theme.destructive : Theme.accent)
                                  : (control.down ? Theme.pressed : Theme.toolbar)
        opacity: control.down && control.emphasized ? 0.85 : 1
        border.width: control.visualFocus ? 2 : 0
        border.color: Theme.label
    }
    contentItem: Text {
        id: label
        text: control.text
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        font.pixelSize: 16
        font.weight: control.emphasized ? Font.DemiBold : Font.Normal
        color: control.emphasized ? "white" : (control.destructive ? Theme.destructive : Theme.accent)
    }
}
