import QtQuick
import QtQuick.Controls.Basic
import Lutegrid.Shell

// One chord of the bar or the search results: its name in a framed box, and a line along the
// bottom for the user's own chords. Placed and sized by the controller.
AbstractButton {
    id: control
    required property var chord
    x: chord.x
    y: chord.y
    width: chord.width
    height: chord.height
    focusPolicy: Qt.NoFocus
    // A held press on one's own chord offers to delete it.
    signal held()
    onPressAndHold: held()

    background: Rectangle {
        radius: 6
        color: control.down ? Theme.pressed : Theme.raised
        border.width: 1.5
        border.color: Qt.rgba(0.243, 0.471, 0.537, 1)
        Rectangle {
            objectName: "customLine"
            visible: control.chord.isCustom
            x: 0
            y: parent.height - 3.3
            width: parent.width
            height: 1.9
            color: Theme.dark ? "#f2a23c" : "#d9771b"
        }
    }
    contentItem: Text {
        text: control.chord.name
        font.pixelSize: 24
        color: Theme.label
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
    }
}
