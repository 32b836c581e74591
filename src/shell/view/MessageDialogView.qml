import QtQuick
import QtQuick.Controls.Basic
import Lutegrid.Shell

Column {
    id: view
    required property DialogHost host
    padding: 20
    spacing: 16
    Text {
        objectName: "messageLabel"
        width: view.width - 2 * view.padding
        text: view.host.messageString
        wrapMode: Text.Wrap
        color: Theme.label
        font.pixelSize: 16
        lineHeight: 1.15
    }
    DialogButton {
        objectName: "messageOk"
        width: view.width - 2 * view.padding
        text: "OK"
        emphasized: true
        onClicked: view.host.acknowledgeMessage()
    }
    BusyIndicator {
        objectName: "loadCover"
        visible: view.host.showLoadUponLoad
        running: visible
        anchors.horizontalCenter: parent.horizontalCenter
    }
}
