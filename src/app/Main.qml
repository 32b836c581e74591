import QtQuick
import QtQuick.Window

Window {
    id: root
    width: 390
    height: 844
    minimumWidth: 320
    minimumHeight: 480
    visible: true
    title: qsTr("Lutegrid")
    color: palette.window

    Text {
        anchors.centerIn: parent
        text: qsTr("No tabs created yet ✍️")
        color: palette.windowText
        font.pixelSize: 20
    }
}
