import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Lutegrid.Surface
import Lutegrid.Shell
import Lutegrid.Editor

// The editor screen: the rows with their letters and scroll indicator, the toolbar, and the
// fretboard with the open-string letters. Sizes come from the controller's layout.
EditorScreenItem {
    id: screen
    surface: area
    fretboard: board
    signal backRequested()
    signal newTabRequested()
    // Back to the first screen of the window, at once.
    signal rootRequested()
    // The tab to read and play, from the cursor on.
    signal viewModeRequested()
    // In a window of its own there is nothing to go back to.
    property bool inOwnWindow: false
    readonly property var c: controller
    readonly property var pan: c ? c.rowPan : null
    readonly property var indicator: c ? c.scrollIndicator : null
    readonly property real rowsTop: c ? c.navHeight : 56
    readonly property real toolbarTop: height - (c ? c.fretboardHeight : 0) - (c && c.shortLayout ? 0 : 55)

    Rectangle { anchors.fill: parent; color: Theme.background }

    Connections {
        target: screen.c
        function onReturnToRootRequested() { screen.rootRequested() }
    }
    Connections {
        target: screen.c ? screen.c.keyboard : null
        function onBackRequested() { screen.backRequested() }
        function onNewTabRequested() { screen.newTabRequested() }
        function onHelpRequested() { helpOverlay.visible = !helpOverlay.visible }
        function onFullScreenRequested() { screen.toggleFullScreen() }
    }

    // The rows, between the bar and the toolbar.
    Item {
        id: rowsRegion
        y: screen.rowsTop
        width: parent.width
        height: Math.max(0, screen.toolbarTop - y)
        clip: true

        Item {
            id: panContent
            width: parent.width
            height: parent.height
            y: screen.pan ? screen.pan.panOffsetY : 0
            Behavior on y {
                enabled: screen.pan !== null && screen.pan.panSettling
                NumberAnimation { duration: 100; easing.type: Easing.OutQuad }
            }

            LetterStringSpacedView {
                objectName: "tabLetters"
                readonly property bool free: screen.c !== null && screen.c.freeScroll
                x: free ? Math.max(0, screen.c.tabLeftInset - area.contentX) : 0
                width: screen.c ? screen.c.tabLettersWidth : 28
                // Free scroll lays every row out: the strip is as tall as their content.
                height: free ? area.contentHeight : area.height
                y: -area.contentY
                letters: area.stringNotes
                numItemGroups: area.shownRowCount
                topPadding: area.headerBandHeight
                itemSpacing: area.tabRowVertSpacing
                capoNum: screen.c ? screen.c.capoFret : 0
            }
            LyricLineButtons {
                x: 0
                width: screen.c ? screen.c.tabLettersWidth : 28
                area: area
                dropdown: screen.c ? screen.c.lyricDropdown : null
            }
            TabEditArea {
                id: area
                objectName: "surface"
                x: screen.c ? screen.c.tabLettersWidth : 28
                width: screen.c ? screen.c.tabEditViewWidth : 0
                height: screen.c ? screen.c.tabEditViewHeight : 0
                rowsWanted: screen.c ? screen.c.visibleRows : 0
                slideFromRow: screen.pan ? screen.pan.rowSlideFrom : -1
                slideOffset: screen.pan ? screen.pan.rowSlideOffset : 0
                sliding: screen.pan !== null && screen.pan.rowSliding
            }
            TabRowWithMarkupView {
                id: nextRowPreview
                objectName: "nextRowPreview"
                visible: screen.c !== null && screen.c.nextRowPreviewRow >= 0
                surface: area
                modelRow: screen.c ? screen.c.nextRowPreviewRow : -1
                editMode: true
                showLyrics: true
                showChordNames: !area.chordNamesHidden
                opacity: 0.5
                x: area.x - area.contentX
                y: area.y + area.height + area.tabRowVertSpacing
                width: area.contentWidth
                height: area.height / Math.max(1, area.shownRowCount) + 0.5
            }
        }

        Rectangle {
            id: fadeOutBottomCover
            objectName: "fadeOutBottomCover"
            // A pan shows it whatever the layout said, so rows sliding in fade as well.
            visible: screen.c !== null
                     && (!screen.c.fadeOutBottomCoverHidden || screen.pan.panning)
            y: area.y + area.height
            width: parent.width
            height: Math.max(0, parent.height - y)
            gradient: Gradient {
                GradientStop { position: 0.0; color: Qt.alpha(Theme.background, 0) }
                GradientStop { position: 0.5; color: Qt.alpha(Theme.background, 0.95) }
                GradientStop { position: 1.0; color: Qt.alpha(Theme.background, 0.95) }
            }
        }

        MagicEditLayer {
            anchors.fill: parent
            controller: screen.c
            area: area
        }

        // The row pan: a vertical drag over the rows moves by one row at most. It belongs to
        // the region, not to an item over the rows: the rows see every press first, and the
        // pan watches and takes the drag over once it runs vertically.
        DragHandler {
            id: rowPan
            target: null
            xAxis.enabled: false
            enabled: screen.c !== null && !screen.c.freeScroll
            property bool taken: false
            onActiveChanged: {
                if (active) {
                    taken = screen.pan.panBegan(centroid.pressPosition.x - area.x + area.contentX,
                                                centroid.pressPosition.y)
                } else if (taken) {
                    taken = false
                    screen.pan.panEnded(centroid.velocity.y)
                }
            }
            onTranslationChanged: if (taken) screen.pan.panMoved(translation.y)
            onCanceled: if (taken) { taken = false; screen.pan.panCancelled() }
        }

        // The scroll indicator, which a finger can drag.
        Item {
            id: tabScrollIndicator
            objectName: "tabScrollIndicator"
            readonly property var ind: screen.indicator
            visible: ind !== null && ind.visible
            x: parent.width - (ind && ind.dragging ? 20 : 14)
            width: ind && ind.dragging ? 20 : 14
            height: area.height
            opacity: ind && (ind.shown || ind.dragging) ? 1 : 0.35
            Behavior on opacity { NumberAnimation { duration: 300 } }
            Rectangle {
                x: parent.width - width - 3
                y: tabScrollIndicator.ind ? tabScrollIndicator.ind.scrubberY : 0
                width: tabScrollIndicator.ind && tabScrollIndicator.ind.dragging ? 12 : 5
                height: tabScrollIndicator.ind ? tabScrollIndicator.ind.scrubberHeight : 0
                radius: width / 2
                color: Theme.secondaryLabel
                Behavior on width { NumberAnimation { duration: 120 } }
            }
            MouseArea {
                anchors.fill: parent
                anchors.leftMargin: -10
                preventStealing: true
                onPressed: (mouse) => screen.indicator.indicatorTouchBegan(mouse.y)
                onPositionChanged: (mouse) => screen.indicator.indicatorTouchMoved(mouse.y)
                onReleased: screen.indicator.indicatorTouchEnded()
                onCanceled: screen.indicator.indicatorTouchCancelled()
            }
        }
    }

    NavBar {
        id: nav
        width: parent.width
        title: screen.c ? screen.c.title : ""
        canGoBack: !screen.inOwnWindow
        backTitle: "Tabs"
        onBackClicked: screen.backRequested()
        // Chord shortcut mode, on and off, the tab's settings, and view mode.
        trailing: [
            IconButton {
                objectName: "chordShortcutButt"; iconName: "chord"; tint: Theme.accent
                visible: screen.c !== null && !screen.c.shortLayout
                emphasized: screen.c !== null && screen.c.chordMode.active
                onClicked: screen.c.toggleChordShortcutMode()
            },
            IconButton {
                objectName: "tabSettingsButt"
                iconName: "settings"
                tint: Theme.accent
                visible: screen.c !== null && !screen.c.shortLayout
                onClicked: screen.c.openSettingsMenu()
            },
            IconButton {
                objectName: "viewModeButt"
                iconName: "viewmode"
                tint: Theme.accent
                onClicked: screen.viewModeRequested()
            }
        ]
    }

    // The toolbar.
    Rectangle {
        id: toolbar
        objectName: "toolbar"
        visible: screen.c !== null && !screen.c.shortLayout
        y: screen.toolbarTop
        width: parent.width
        height: 55
        color: Theme.toolbar
        readonly property var widths: screen.c ? screen.c.buttonWidths : ({})
        readonly property bool compact: screen.c !== null && screen.c.compactToolbar
        Rectangle { width: parent.width; height: 1; color: Theme.separator }

        RowLayout {
            id: toolRow
            anchors.fill: parent
            anchors.leftMargin: toolbar.compact ? 2 : 8
            anchors.rightMargin: toolbar.compact ? 2 : 8
            spacing: toolbar.compact ? 0 : 2

            IconButton {
                objectName: "undoButton"; iconName: "undo"
                Layout.preferredWidth: toolbar.widths.undo ?? 44
                enabled: screen.c !== null && screen.c.undoEnabled
                onClicked: screen.c.undoEdit()
            }
            IconButton {
                objectName: "redoButt"; iconName: "redo"
                Layout.preferredWidth: toolbar.widths.redo ?? 44
                enabled: screen.c !== null && screen.c.redoEnabled
                onClicked: screen.c.redoEdit()
            }
            Rectangle { width: 1; Layout.preferredHeight: 26; color: Theme.separator; Layout.leftMargin: 2; Layout.rightMargin: 2 }
            IconButton {
                objectName: "clearButt"; iconName: "clear"
                Layout.preferredWidth: toolbar.widths.clear ?? 44
                onClicked: screen.c.tabClear()
            }
            // Rows go and come; magic edit hides them while it holds the rows.
            IconButton {
                objectName: "addRowButt"; iconName: "addrow"
                Layout.preferredWidth: toolbar.widths.row ?? 44
                visible: !(screen.c && screen.c.magic.active)
                onClicked: screen.c.addTabRow()
            }
            IconButton {
                objectName: "deleteRowButt"; iconName: "deleterow"
                Layout.preferredWidth: toolbar.widths.row ?? 44
                visible: !(screen.c && screen.c.magic.active)
                onClicked: screen.c.deleteTabRow()
            }
            Item { Layout.fillWidth: true; Layout.minimumWidth: 0 }
            // The mode buttons. On narrow screens the arrows flash over these after each cursor
            // move: a late tap where an arrow was only switches a mode, it never deletes a row.
            Item {
                id: modeButts
                Layout.preferredWidth: Math.max(magicButt.width + toolsButt.width + 2, 90)
                Layout.preferredHeight: 44
                Row {
                    anchors.right: parent.right
                    spacing: 2
                    IconButton {
                        id: magicButt
                        objectName: "magicEditButt"; iconName: "magicedit"
                        width: toolbar.widths.add ?? 44
                        emphasized: screen.c !== null && screen.c.magic.active
                        onClicked: screen.c.toggleMagicEditMode()
                    }
                    IconButton {
                        id: toolsButt
                        objectName: "moreToolsButt"; iconName: "moretools"
                        width: toolbar.widths.row ?? 44
                        emphasized: screen.c !== null && screen.c.moreToolsViewShowing
                        onClicked: screen.c.toggleMoreToolsView()
                        Rectangle {
                            objectName: "moreToolsUnseenDot"
                            visible: screen.c !== null && screen.c.moreToolsUnseenDotShown
                            width: 9; height: 9; radius: 4.5
                            color: Theme.destructive
                            x: parent.width - 12; y: 6
                        }
                    }
                }
                Rectangle {
                    id: modeButtsCoverView
                    objectName: "modeButtsCoverView"
                    anchors.fill: parent
                    anchors.margins: -2
                    color: toolbar.color
                    visible: opacity > 0
                    opacity: screen.c !== null && screen.c.editMoveButtsShown ? 1 : 0
                    Behavior on opacity {
                        enabled: !(screen.c && screen.c.editMoveButtsShown)
                        NumberAnimation { duration: 300; easing.type: Easing.InOutQuad }
                    }
                    // Presses on the cover stay on the cover while it shows.
                    MouseArea { anchors.fill: parent; enabled: modeButtsCoverView.opacity > 0.5 }
                    Row {
                        anchors.centerIn: parent
                        spacing: 2
                        IconButton {
                            objectName: "flashLeftButt"; iconName: "left"; tint: Theme.accent
                            enabled: screen.c !== null && screen.c.editLeftEnabled
                            onClicked: screen.c.editLeftPress()
                        }
                        IconButton {
                            objectName: "flashRightButt"; iconName: "right"; tint: Theme.accent
                            enabled: screen.c !== null && screen.c.editRightEnabled
                            onClicked: screen.c.editRightPress()
                        }
                    }
                }
            }
            Rectangle {
                visible: !(screen.c && screen.c.editMoveButtsCompacted)
                width: 1; Layout.preferredHeight: 26; color: Theme.separator
            }
            IconButton {
                objectName: "editLeftButt"; iconName: "left"; tint: Theme.accent
                visible: !(screen.c && screen.c.editMoveButtsCompacted)
                enabled: screen.c !== null && screen.c.editLeftEnabled
                onClicked: screen.c.editLeftPress()
            }
            IconButton {
                objectName: "editRightButt"; iconName: "right"; tint: Theme.accent
                visible: !(screen.c && screen.c.editMoveButtsCompacted)
                enabled: screen.c !== null && screen.c.editRightEnabled
                onClicked: screen.c.editRightPress()
            }
        }
    }

    // The fretboard and the open-string letters at its left.
    Item {
        id: fretArea
        visible: screen.c !== null && screen.c.fretboardHeight > 0
        y: screen.height - height
        width: parent.width
        height: screen.c ? screen.c.fretboardHeight : 0

        Rectangle {
            id: fretLetters
            width: screen.c ? screen.c.fretLettersWidth : 44
            height: parent.height
            color: Theme.toolbar
            LetterStringSpacedView {
                id: fretLetterView
                objectName: "fretLetters"
                width: parent.width
                height: board.stringAreaHeight
                letters: area.stringNotes
                numItemGroups: 1
                Connections {
                    target: screen.c
                    function onHighlightsChanged() {
                        fretLetterView.showOpenStringHighlights(screen.c.openStringMarks)
                    }
                }
            }
            FretLettersTouchArea {
                objectName: "fretLettersTouch"
                anchors.fill: fretLetterView
                controller: screen.c
                numStrings: area.stringNotes.length
            }
        }
        FretboardItem {
            id: board
            objectName: "fretboard"
            x: fretLetters.width
            width: parent.width - x
            height: parent.height
        }
        ElectricStringSpacedView {
            objectName: "fretStrings"
            x: board.x
            width: board.width
            height: board.stringAreaHeight
            numItems: area.stringNotes.length
        }
        ChordShortcutBar {
            anchors.fill: parent
            controller: screen.c
        }
    }

    // Chords and lyrics: the lines of a row, the user's chord and the column header dialogs.
    LyricLineDropdownView {
        dropdown: screen.c ? screen.c.lyricDropdown : null
        boxX: (screen.c ? screen.c.tabLettersWidth : 28) + 4
        rowTop: rowsRegion.y + panContent.y - area.contentY
                + (open ? (area.lyricRects[dropdown.activeLyricRowIndex] ?? Qt.rect(0, 0, 0, 0)).y : 0)
        z: 40
    }
    CustomChordDialog { logic: screen.c ? screen.c.customChordDialog : null; z: 60 }
    ChordNameDialog { logic: screen.c ? screen.c.chordNameDialog : null; z: 60 }
    // Magic edit's panel and the tools drawer stand over the fretboard; without one, the
    // panel's tools stand in a strip at the bottom.
    MagicEditPanel {
        controller: screen.c
        y: screen.c && screen.c.shortLayout ? screen.height - 50 : fretArea.y
        width: parent.width
        height: screen.c && screen.c.shortLayout ? 50 : fretArea.height
    }
    ToolsDrawer {
        controller: screen.c
        y: fretArea.y
        width: parent.width
        height: fretArea.height
    }

    // The tab settings, while the controller has them open.
    Loader {
        id: settingsLoader
        anchors.fill: parent
        z: 40
        active: screen.c !== null && screen.c.settingsDialog !== null
        sourceComponent: TabSettingsDialog { dialog: screen.c.settingsDialog }
        onLoaded: item.forceActiveFocus()
        onActiveChanged: if (!active) screen.forceActiveFocus()
    }

    // The keyboard shortcuts, over everything; any tap or key closes it.
    Rectangle {
        id: helpOverlay
        objectName: "keyboardHelp"
        visible: false
        anchors.fill: parent
        color: Qt.alpha("black", 0.45)
        z: 50
        MouseArea { anchors.fill: parent; onClicked: helpOverlay.visible = false }
        Keys.onPressed: (event) => { helpOverlay.visible = false; event.accepted = true }
        onVisibleChanged: if (visible) forceActiveFocus(); else screen.forceActiveFocus()
        Rectangle {
            anchors.centerIn: parent
            width: Math.min(parent.width - 32, 520)
            height: helpColumn.implicitHeight + 40
            radius: 12
            color: Theme.background
            Column {
                id: helpColumn
                x: 20; y: 20
                width: parent.width - 40
                spacing: 10
                Text {
                    text: "Keyboard shortcuts"
                    font.pixelSize: 20; font.bold: true
                    color: Theme.label
                }
                Grid {
                    columns: 2
                    columnSpacing: 16
                    rowSpacing: 6
                    Repeater {
                        model: screen.keyboardShortcuts
                        Text {
                            text: modelData
                            font.pixelSize: 14
                            font.bold: index % 2 === 0
                            color: index % 2 === 0 ? Theme.accent : Theme.label
                            width: index % 2 === 0 ? helpColumn.width * 0.42 : helpColumn.width * 0.58 - 16
                            wrapMode: Text.WordWrap
                        }
                    }
                }
            }
        }
    }
}
