import QtQuick
import QtQuick.Controls.Basic
import Lutegrid.Shell

Column {
    id: view
    required property DialogHost host
    padding: 20
    spacing: 16
    Text {
        objectName: "msgLabel"
        width: view.width - 2 * view.padding
        text: view.host.messageString
        wrapMode: Text.Wrap
        color: Theme.label
        font.pixelSize: 16
    }
    DialogButton {
        objectName: "confirmButt"
        width: view.width - 2 * view.padding
        text: view.host.confirmTxt
        emphasized: true
        destructive: true
        onClicked: view.host.confirm()
    }
}
