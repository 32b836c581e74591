import QtQuick
import Lutegrid.Shell

// A window that has nothing to edit says why, and nothing else.
Rectangle {
    id: view
    property string message: ""
    color: Theme.background
    Text {
        objectName: "emptyMsgLabel"
        anchors.centerIn: parent
        width: parent.width - 48
        text: view.message
        wrapMode: Text.Wrap
        horizontalAlignment: Text.AlignHCenter
        color: Theme.label
        font.pixelSize: 18
    }
}
