import QtQuick
import QtQuick.Controls.Basic

// A full-width dialog button; the emphasised one is filled.
AbstractButton {
    id: control
    property bool emphasized: false
    property bool destructive: false
    implicitHeight: 48
    focusPolicy: Qt.NoFocus
    background: Rectangle {
        radius: 12
        color: control.emphasized ? (control.destructive ? Theme.destructive : Theme.accent)
                                  : (control.down ? Theme.pressed : Theme.toolbar)
        opacity: control.down && control.emphasized ? 0.85 : 1
    }
    contentItem: Text {
        text: control.text
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        font.pixelSize: 17
        font.weight: control.emphasized ? Font.DemiBold : Font.Normal
        color: control.emphasized ? "white" : (control.destructive ? Theme.destructive : Theme.accent)
    }
}
