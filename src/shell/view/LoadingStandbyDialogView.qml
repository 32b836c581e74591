import QtQuick
import QtQuick.Controls.Basic
import Lutegrid.Shell

Column {
    id: view
    required property DialogHost host
    padding: 20
    spacing: 14
    BusyIndicator {
        anchors.horizontalCenter: parent.horizontalCenter
        running: true
    }
    Text {
        objectName: "messageLabel"
        width: view.width - 2 * view.padding
        horizontalAlignment: Text.AlignHCenter
        text: view.host.messageString
        wrapMode: Text.Wrap
        color: Theme.label
        font.pixelSize: 16
    }
    DialogButton {
        objectName: "standbyCancel"
        width: view.width - 2 * view.padding
        text: "Cancel"
        onClicked: view.host.cancelLoading()
    }
}
