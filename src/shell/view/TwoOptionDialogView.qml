import QtQuick
import QtQuick.Controls.Basic
import Lutegrid.Shell

Column {
    id: view
    required property DialogHost host
    padding: 20
    spacing: 10
    DialogButton {
        objectName: "optionOneButt"
        width: view.width - 2 * view.padding
        text: view.host.optionTxt1
        onClicked: view.host.chooseOption(1)
    }
    DialogButton {
        objectName: "optionTwoButt"
        width: view.width - 2 * view.padding
        text: view.host.optionTxt2
        emphasized: !view.host.removeButtonEmphasis
        onClicked: view.host.chooseOption(2)
    }
}
