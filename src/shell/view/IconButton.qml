import QtQuick
import QtQuick.Controls.Basic

// A toolbar button: an icon in a touch target of at least 44 points.
AbstractButton {
    id: control
    property string iconName: ""
    property color tint: Theme.label
    property bool emphasized: false
    implicitWidth: Theme.touchTarget
    implicitHeight: Theme.touchTarget
    focusPolicy: Qt.NoFocus
    opacity: enabled ? 1 : 0.32

    background: Rectangle {
        radius: 10
        color: control.down ? Theme.pressed : (control.emphasized ? Theme.accentSoft : "transparent")
        Behavior on color { ColorAnimation { duration: 90 } }
    }
    contentItem: Item {
        Image {
            anchors.centerIn: parent
            width: 24
            height: 24
            sourceSize: Qt.size(48, 48)
            smooth: true
            source: control.iconName.length ? "image://icon/" + control.iconName + "/" + control.tint : ""
        }
    }
}
