import QtQuick
import QtQuick.Window
import Lutegrid.Surface

Window {
    id: root
    width: 900
    height: 700
    minimumWidth: 320
    minimumHeight: 480
    visible: true
    title: qsTr("Lutegrid")
    color: SurfacePalette.colorSystemBg

    SurfaceDemoPage {
        anchors.fill: parent
    }
}
