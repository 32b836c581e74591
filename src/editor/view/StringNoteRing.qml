import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Lutegrid.Shell

// The ring of notes for one string; once lifted without a choice it waits for a tap.
Item {
    id: noteRing
    required property var dialog
    visible: noteRing.dialog.noteMenuLabel !== 0
    MouseArea {
        anchors.fill: parent
        onPressed: (mouse) => noteRing.dialog.noteMenuMoved(mouse.x, mouse.y)
        onPositionChanged: (mouse) => noteRing.dialog.noteMenuMoved(mouse.x, mouse.y)
        onReleased: (mouse) => noteRing.dialog.noteMenuReleased(mouse.x, mouse.y)
        onCanceled: noteRing.dialog.noteMenuCancelled()
    }
    // A disc under the ring, so the notes stand clear of the controls below.
    Rectangle {
        readonly property var entries: noteRing.dialog.noteMenuEntries
        readonly property real cx: entries.length ? (entries[0].x + entries[Math.floor(entries.length / 2)].x) / 2 : 0
        readonly property real cy: entries.length ? (entries[0].y + entries[Math.floor(entries.length / 2)].y) / 2 : 0
        readonly property real r: entries.length ? Math.hypot(entries[0].x - cx, entries[0].y - cy) + 30 : 0
        x: cx - r; y: cy - r
        width: 2 * r; height: 2 * r; radius: r
        color: Qt.alpha(Theme.toolbar, 0.94)
        border.color: Theme.separator
    }
    Repeater {
        model: noteRing.dialog.noteMenuEntries
        Rectangle {
            objectName: "noteEntry" + modelData.text
            x: modelData.x - width / 2
            y: modelData.y - height / 2
            width: 40; height: 40; radius: 20
            color: index === noteRing.dialog.noteMenuSelected ? Theme.accent : Theme.raised
            border.color: Theme.separator
            border.width: 1
            Text {
                anchors.centerIn: parent
                text: modelData.text
                font.pixelSize: 19
                color: index === noteRing.dialog.noteMenuSelected ? "white" : Theme.label
            }
        }
    }
}
