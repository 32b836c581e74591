import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Lutegrid.Shell

// An on-off setting, in the theme's colours.
Switch {
    id: toggle
    Layout.alignment: Qt.AlignRight
    indicator: Rectangle {
        implicitWidth: 52
        implicitHeight: 32
        x: toggle.leftPadding
        y: (toggle.height - height) / 2
        radius: 16
        color: toggle.checked ? Theme.accent : Theme.separator
        border.color: toggle.visualFocus ? Theme.label : "transparent"
        border.width: 2
        Rectangle {
            x: toggle.checked ? parent.width - width - 3 : 3
            y: 3
            width: 26; height: 26; radius: 13
            color: "white"
            Behavior on x { NumberAnimation { duration: 120 } }
        }
    }
    implicitHeight: Theme.touchTarget
}
