import QtQuick
import Lutegrid.Shell

// A dialog of the editor over a dimmed screen; a tap on the dim means `dismissed`. The panel
// rises above the on-screen keyboard when that would cover it.
Item {
    id: frame
    property bool shown: false
    default property alias content: body.data
    property alias panel: panel
    signal dismissed()
    anchors.fill: parent
    // Shown from the first frame, so a touch just after it opens can't reach the screen below.
    visible: shown || opacity > 0
    opacity: shown ? 1 : 0
    Behavior on opacity { NumberAnimation { duration: 160; easing.type: Easing.OutCubic } }

    Rectangle {
        anchors.fill: parent
        color: Theme.dim
        MouseArea {
            anchors.fill: parent
            enabled: frame.shown
            onClicked: frame.dismissed()
        }
    }
    Rectangle {
        id: panel
        objectName: "dialogBg"
        readonly property real keyboardTop: Qt.inputMethod.visible
                                            ? Qt.inputMethod.keyboardRectangle.y : frame.height
        x: (frame.width - width) / 2
        y: Math.max(8, Math.min((frame.height - height) / 2, keyboardTop - height - 8))
        width: Math.min(frame.width - 40, 380)
        height: body.childrenRect.height + 40
        radius: Theme.radius
        color: Theme.raised
        // Presses on the panel stay on the panel.
        MouseArea { anchors.fill: parent; enabled: frame.shown }
        Item {
            id: body
            x: 20
            y: 20
            width: panel.width - 40
        }
    }
}
