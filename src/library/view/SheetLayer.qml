import QtQuick
import QtQuick.Controls.Basic
import Lutegrid.Shell

// A dialog of the library's own over a dimmed screen: the panel holds `content`; a tap on the
// dim outside it, or Escape, cancels.
FocusScope {
    id: layer
    default property alias content: panelContent.data
    property int panelWidth: 420
    property real panelY: -1
    property alias panel: panel
    signal cancelled()
    anchors.fill: parent
    z: 50
    focus: true
    Keys.onEscapePressed: layer.cancelled()

    Rectangle {
        objectName: "sheetDim"
        anchors.fill: parent
        color: Theme.dim
        MouseArea {
            anchors.fill: parent
            onClicked: layer.cancelled()
        }
    }
    Rectangle {
        id: panel
        objectName: "dialogBg"
        anchors.horizontalCenter: parent.horizontalCenter
        y: layer.panelY >= 0 ? layer.panelY : Math.max(24, (parent.height - height) / 2)
        width: Math.min(layer.width - 32, layer.panelWidth)
        height: Math.min(panelContent.childrenRect.height, layer.height - 48)
        radius: Theme.radius
        color: Theme.raised
        clip: true
        // Presses on the panel stay on the panel.
        MouseArea { anchors.fill: parent }
        Item {
            id: panelContent
            width: parent.width
            height: childrenRect.height
        }
    }
}
