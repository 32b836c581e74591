import QtQuick
import QtQuick.Controls.Basic
import Lutegrid.Shell

// The lines of one row, to choose, add or remove, floating beside the row's hamburger. A press
// anywhere else closes it and goes on to what lies under it.
Item {
    id: view
    objectName: "lyricLineDropdown"
    required property var dropdown
    // The top of the shown row's lyric band, in this item's parent's coordinates.
    property real rowTop: 0
    property real boxX: 32
    readonly property bool open: dropdown !== null && dropdown.activeLyricRowIndex >= 0
    readonly property real entryHeight: 38
    anchors.fill: parent
    visible: open

    MouseArea {
        anchors.fill: parent
        enabled: view.open
        onPressed: (mouse) => { view.dropdown.closeLyricDropdown(); mouse.accepted = false }
    }

    Rectangle {
        id: box
        x: view.boxX
        y: view.rowTop + 39.9
        width: 255
        height: (view.dropdown ? view.dropdown.entries.length : 0) * view.entryHeight
        color: Theme.raised
        border.width: 1.2
        border.color: Qt.rgba(0.5, 0.5, 0.5, 1)
        radius: 5
        // Square at the top, where it hangs from the row.
        Rectangle { width: parent.width; height: 6; color: parent.color
            Rectangle { width: 1.2; height: parent.height; color: box.border.color }
            Rectangle { x: parent.width - 1.2; width: 1.2; height: parent.height; color: box.border.color }
            Rectangle { width: parent.width; height: 1.2; color: box.border.color }
        }
        // A line is chosen as the finger comes down, as on the rows.
        MouseArea {
            anchors.fill: parent
            onPressed: (mouse) => view.dropdown.lyricDropdownTouched(mouse.y)
        }
        Repeater {
            model: view.dropdown ? view.dropdown.entries : []
            delegate: Item {
                required property int index
                required property var modelData
                objectName: "lyricLineEntry" + index
                y: index * view.entryHeight
                width: box.width
                height: view.entryHeight
                Rectangle {
                    visible: modelData.selected
                    anchors.fill: parent
                    anchors.margins: 1.2
                    color: Theme.pressed
                }
                Text {
                    x: 10
                    width: modelData.adding ? 237 : 215
                    height: parent.height
                    verticalAlignment: Text.AlignVCenter
                    elide: Text.ElideRight
                    text: modelData.text
                    font.family: modelData.adding ? Theme.fontFamily : "JetBrains Mono"
                    font.italic: modelData.adding
                    font.pixelSize: 16
                    color: modelData.adding ? Theme.accent : Theme.label
                }
                AbstractButton {
                    objectName: "lyricLineRemove" + index
                    visible: !modelData.adding
                    x: 225
                    width: 30
                    height: parent.height
                    focusPolicy: Qt.NoFocus
                    onClicked: view.dropdown.lyricLineRemovePress((index + 0.5) * view.entryHeight)
                    contentItem: Item {
                        Rectangle {
                            anchors.centerIn: parent
                            width: 22; height: 22; radius: 11
                            color: "transparent"
                            border.width: 1.8
                            border.color: Theme.destructive
                            Rectangle {
                                anchors.centerIn: parent
                                width: 10; height: 2
                                color: Theme.destructive
                            }
                        }
                    }
                    background: Item {}
                }
            }
        }
    }
}
