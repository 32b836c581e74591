import QtQuick
import QtQuick.Controls.Basic
import Lutegrid.Shell

// Whatever dialog the window's host has up, over a dimmed screen. A tap on the dim goes to the
// host, which decides what it means for that dialog.
Item {
    id: dialogLayer
    required property DialogHost host
    readonly property bool open: host.kind !== DialogHost.None
    // Shown from the first frame, so a touch just after it opens can't reach the screen below.
    visible: open || opacity > 0
    opacity: open ? 1 : 0
    Behavior on opacity { NumberAnimation { duration: 160; easing.type: Easing.OutCubic } }

    Rectangle {
        objectName: "dialogBg"
        anchors.fill: parent
        color: Theme.dim
        MouseArea {
            anchors.fill: parent
            enabled: dialogLayer.open
            onClicked: dialogLayer.host.tapOutside()
            onDoubleClicked: dialogLayer.host.tapOutside()
        }
    }

    Rectangle {
        id: panel
        objectName: "dialogPanel"
        anchors.centerIn: parent
        width: Math.min(dialogLayer.width - 40, 380)
        height: loader.item ? loader.item.implicitHeight : 0
        radius: Theme.radius
        color: Theme.raised
        scale: dialogLayer.open ? 1 : 0.94
        Behavior on scale { NumberAnimation { duration: 160; easing.type: Easing.OutCubic } }
        // Presses on the panel stay on the panel.
        MouseArea { anchors.fill: parent; enabled: dialogLayer.open }

        Loader {
            id: loader
            width: parent.width
            sourceComponent: {
                switch (dialogLayer.host.kind) {
                case DialogHost.Message: return message
                case DialogHost.TwoOption: return twoOption
                case DialogHost.Confirm: return confirm
                case DialogHost.LoadingStandby: return standby
                case DialogHost.Conflict: return conflict
                }
                return null
            }
        }
    }

    Component { id: message; MessageDialogView { host: dialogLayer.host } }
    Component { id: twoOption; TwoOptionDialogView { host: dialogLayer.host } }
    Component { id: confirm; ConfirmDialogView { host: dialogLayer.host } }
    Component { id: standby; LoadingStandbyDialogView { host: dialogLayer.host } }
    Component { id: conflict; ConflictDialogView { host: dialogLayer.host } }
}
