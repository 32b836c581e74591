import QtQuick
import QtQuick.Controls.Basic
import Lutegrid.Shell

// A text field of the library's dialogs, in the window's theme.
TextField {
    id: field
    implicitHeight: 44
    font.pixelSize: 17
    color: Theme.label
    placeholderTextColor: Theme.secondaryLabel
    selectionColor: Theme.accent
    selectedTextColor: "white"
    leftPadding: 12
    rightPadding: 12
    background: Rectangle {
        radius: 10
        color: Theme.background
        border.width: field.activeFocus ? 2 : 1
        border.color: field.activeFocus ? Theme.accent : Theme.separator
    }
}
