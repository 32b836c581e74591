import QtQuick
import QtQuick.Controls.Basic
import Lutegrid.Shell

// Chord shortcut mode's cover over the fretboard: the search field, the button that stores the
// cursor column as a chord of one's own, the cursor arrows on narrow screens, the bar of chords
// and the search results. The controller decides what stands where.
Rectangle {
    id: cover
    objectName: "chordCoverView"
    required property var controller
    readonly property var mode: controller ? controller.chordMode : null
    visible: mode !== null && mode.active
    color: Theme.toolbar
    // While the search field has the on-screen keyboard, the cover rises above it.
    transform: Translate {
        y: search.activeFocus && Qt.inputMethod.visible
           ? -Math.max(0, cover.Window.height - Qt.inputMethod.keyboardRectangle.y) : 0
    }
    // Presses on the cover never reach the fretboard under it.
    MouseArea { anchors.fill: parent; onPressed: search.focus = false }

    Connections {
        target: cover.mode
        function onSearchEditingEnded() { search.focus = false }
        function onSearchTextUpdated() {
            if (search.text !== cover.mode.searchText)
                search.text = cover.mode.searchText
        }
        function onActiveChanged() { if (!cover.mode.active) search.text = "" }
    }

    TextField {
        id: search
        objectName: "csSearchBar"
        x: 70
        y: 4
        width: Math.max(0, cover.width - 70 - 30)
        height: 32
        placeholderText: "Search chords"
        font.pixelSize: 16
        color: Theme.label
        placeholderTextColor: Theme.secondaryLabel
        inputMethodHints: Qt.ImhNoPredictiveText
        background: Rectangle {
            radius: 8
            color: Theme.raised
            border.color: search.activeFocus ? Theme.accent : Theme.separator
        }
        onTextEdited: cover.mode.searchTextChanged(text)
        // Enter takes the best result; Escape leaves the mode.
        Keys.onReturnPressed: cover.mode.takeFirstResult()
        Keys.onEnterPressed: cover.mode.takeFirstResult()
        Keys.onEscapePressed: cover.controller.toggleChordShortcutMode()
    }

    IconButton {
        objectName: "csCustomButt"
        iconName: "plus"
        tint: Theme.accent
        x: 13
        y: 38
        enabled: cover.mode !== null && cover.mode.customEnabled
        onClicked: cover.controller.createCustomShortcut()
    }
    Row {
        visible: cover.controller !== null && cover.controller.editMoveButtsCompacted
        x: 0
        y: 88
        IconButton {
            objectName: "csMoveLeftButt"; iconName: "left"; tint: Theme.accent
            width: 35
            enabled: cover.controller !== null && cover.controller.editLeftEnabled
            onClicked: cover.controller.editLeftPress()
        }
        IconButton {
            objectName: "csMoveRightButt"; iconName: "right"; tint: Theme.accent
            width: 35
            enabled: cover.controller !== null && cover.controller.editRightEnabled
            onClicked: cover.controller.editRightPress()
        }
    }

    Repeater {
        model: cover.mode ? cover.mode.barButtons : []
        delegate: ChordButton {
            required property int index
            required property var modelData
            objectName: "barChord" + index
            chord: modelData
            onClicked: cover.mode.insertFromBar(index)
            onHeld: cover.mode.longPressed(index, false)
        }
    }
    Repeater {
        model: cover.mode ? cover.mode.resultButtons : []
        delegate: ChordButton {
            required property int index
            required property var modelData
            objectName: "resultChord" + index
            chord: modelData
            onClicked: cover.mode.insertFromResults(index)
            onHeld: cover.mode.longPressed(index, true)
        }
    }
}
