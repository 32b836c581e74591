import QtQuick
import QtQuick.Controls.Basic
import Lutegrid.Shell

// A folder label as a pill: a touch hands its own text to `touchHandler`.
AbstractButton {
    id: pill
    property var touchHandler: null
    implicitHeight: 28
    implicitWidth: label.implicitWidth + 18
    focusPolicy: Qt.StrongFocus
    Keys.onReturnPressed: clicked()
    onClicked: if (touchHandler) touchHandler(text)
    background: Rectangle {
        radius: 8
        color: pill.down ? Theme.pressed : (Theme.dark ? "#2c2c2e" : "#e5e5ea")
        border.width: pill.visualFocus ? 2 : 0
        border.color: Theme.accent
    }
    contentItem: Text {
        id: label
        text: pill.text
        font.pixelSize: 14
        color: Theme.label
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
    }
}
