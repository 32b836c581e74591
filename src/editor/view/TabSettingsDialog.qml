import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Lutegrid.Shell

// The tab settings dialog over the editor. Every value and limit is the controller's; this
// only lays the controls out and passes on what a finger, the mouse or a key does.
FocusScope {
    id: root
    required property var dialog
    readonly property bool introOpen: introEditor.visible
    focus: true

    Keys.onPressed: (event) => {
        if (event.key === Qt.Key_Escape) {
            if (root.dialog.noteMenuLabel !== 0)
                root.dialog.noteMenuCancelled()
            else if (introEditor.visible)
                introEditor.visible = false
            else if (root.dialog.warningShown)
                root.dialog.cancelAfterWarning()
            else
                root.dialog.cancel()
            event.accepted = true
        } else if ((event.key === Qt.Key_Return || event.key === Qt.Key_Enter)
                   && !introEditor.visible) {
            if (root.dialog.warningShown)
                root.dialog.continueAfterWarning()
            else
                root.dialog.saveChangesButt()
            event.accepted = true
        } else if (event.key !== Qt.Key_Tab && event.key !== Qt.Key_Backtab) {
            // Keys meant for the editor stop here while the dialog is up; Tab walks the controls.
            event.accepted = true
        }
    }

    component Caption: Text {
        color: Theme.label
        font.pixelSize: 16
        verticalAlignment: Text.AlignVCenter
        Layout.fillWidth: true
        elide: Text.ElideRight
    }

    component Stepper: SettingsStepper { }
    component SettingSwitch: SettingsSwitch { }

    component SectionTitle: Text {
        color: Theme.secondaryLabel
        font.pixelSize: 13
        font.weight: Font.DemiBold
        font.capitalization: Font.AllUppercase
        topPadding: 10
    }

    // A touch that ends on the dim, outside the panel, closes without saving.
    Rectangle {
        anchors.fill: parent
        color: Theme.dim
        MouseArea {
            anchors.fill: parent
            onReleased: root.dialog.touchEndedOutside()
        }
    }

    Pane {
        id: dialogBg
        objectName: "dialogBg"
        anchors.centerIn: parent
        width: Math.min(root.width - 24, 560)
        height: Math.min(root.height - 24, body.implicitHeight + footer.height + 24)
        padding: 0
        palette.window: Theme.raised
        palette.base: Theme.raised
        palette.text: Theme.label
        palette.windowText: Theme.label
        palette.buttonText: Theme.label
        palette.button: Theme.toolbar
        palette.highlight: Theme.accent
        palette.mid: Theme.separator
        palette.dark: Theme.secondaryLabel
        palette.light: Theme.raised
        background: Rectangle { radius: Theme.radius; color: Theme.raised }

        // Presses on the panel stay on the panel.
        MouseArea { anchors.fill: parent }

        Flickable {
            id: scroller
            objectName: "settingsScroll"
            x: 0; y: 12
            width: parent.width
            height: parent.height - footer.height - 12
            contentHeight: body.implicitHeight
            clip: true
            boundsBehavior: Flickable.StopAtBounds
            ScrollIndicator.vertical: ScrollIndicator { }

            ColumnLayout {
                id: body
                x: 20
                width: scroller.width - 40
                spacing: 6

                Text {
                    text: "Tab settings"
                    color: Theme.label
                    font.pixelSize: 20
                    font.weight: Font.DemiBold
                }
                SectionTitle { text: "This tab" }

                // The open strings, low to high; a finger on one opens its notes.
                Item {
                    id: stringTouchArea
                    objectName: "stringTouchArea"
                    Layout.fillWidth: true
                    Layout.preferredHeight: 52
                    Row {
                        anchors.fill: parent
                        Repeater {
                            model: 8
                            Item {
                                width: stringTouchArea.width / 8
                                height: stringTouchArea.height
                                readonly property bool shown: root.dialog.labelShown[index]
                                Rectangle {
                                    objectName: "stringLabel" + (8 - index)
                                    visible: parent.shown
                                    anchors.centerIn: parent
                                    width: Math.min(parent.width - 6, 48)
                                    height: 44
                                    radius: 3
                                    activeFocusOnTab: parent.shown
                                    color: root.dialog.noteMenuLabel === 8 - index || activeFocus
                                           ? Theme.accentSoft : Theme.toolbar
                                    border.width: root.dialog.labelsBordered ? 1.5 : 0
                                    border.color: Qt.rgba(0.247, 0.471, 0.537, 0.6)
                                    Keys.onUpPressed: root.dialog.stepStringNote(8 - index, 1)
                                    Keys.onDownPressed: root.dialog.stepStringNote(8 - index, -1)
                                    Text {
                                        anchors.centerIn: parent
                                        text: root.dialog.labelNotes[index]
                                        color: Theme.label
                                        font.pixelSize: 19
                                        font.weight: Font.DemiBold
                                    }
                                }
                            }
                        }
                    }
                    MouseArea {
                        anchors.fill: parent
                        preventStealing: true
                        onPressed: (mouse) => {
                            const label = root.dialog.labelAt(mouse.x, width)
                            const p = mapToItem(root, mouse.x, mouse.y)
                            mouse.accepted = root.dialog.openNoteMenu(
                                        label, p.x, p.y, 0, 0, root.width, root.height)
                        }
                        onPositionChanged: (mouse) => {
                            const p = mapToItem(root, mouse.x, mouse.y)
                            root.dialog.noteMenuMoved(p.x, p.y)
                        }
                        onReleased: (mouse) => {
                            const p = mapToItem(root, mouse.x, mouse.y)
                            root.dialog.noteMenuReleased(p.x, p.y)
                        }
                        onCanceled: root.dialog.noteMenuCancelled()
                    }
                }
                Text {
                    Layout.fillWidth: true
                    text: "Tap a string to tune it on its own; ↑ ↓ on a focused string."
                    color: Theme.secondaryLabel
                    font.pixelSize: 12
                    wrapMode: Text.Wrap
                }

                RowLayout {
                    Layout.fillWidth: true
                    Caption { text: "Strings" }
                    Stepper {
                        objectName: "stringCountStepper"
                        name: "stringCount"
                        text: root.dialog.stringCount
                        canDown: root.dialog.stringCount > 4
                        canUp: root.dialog.stringCount < 8
                        onDown: root.dialog.stringCount = root.dialog.stringCount - 1
                        onUp: root.dialog.stringCount = root.dialog.stringCount + 1
                    }
                }
                RowLayout {
                    Layout.fillWidth: true
                    Caption { text: "Tuning" }
                    ComboBox {
                        id: tuningPicker
                        objectName: "tuningPicker"
                        Layout.preferredWidth: 190
                        implicitHeight: Theme.touchTarget
                        model: root.dialog.tuningNames
                        currentIndex: root.dialog.tuningIndex
                        onActivated: (index) => root.dialog.tuningIndex = index
                        delegate: ItemDelegate {
                            id: tuningRow
                            required property int index
                            required property string modelData
                            width: tuningPicker.width
                            height: 40
                            highlighted: tuningPicker.highlightedIndex === index
                            contentItem: Text {
                                text: tuningRow.modelData
                                color: Theme.label
                                font.pixelSize: 15
                                font.weight: tuningRow.index === tuningPicker.currentIndex
                                             ? Font.DemiBold : Font.Normal
                                verticalAlignment: Text.AlignVCenter
                            }
                            background: Rectangle {
                                color: tuningRow.highlighted || tuningRow.down ? Theme.accentSoft
                                                                               : Theme.raised
                            }
                        }
                        popup.background: Rectangle {
                            color: Theme.raised
                            border.color: Theme.separator
                            radius: 8
                        }
                    }
                }
                RowLayout {
                    Layout.fillWidth: true
                    Caption { text: "Capo"; Layout.fillWidth: false; Layout.preferredWidth: 90 }
                    Slider {
                        id: capoSlider
                        objectName: "capoSlider"
                        Layout.fillWidth: true
                        from: 0
                        to: Math.max(1, root.dialog.maxCapoFret)
                        stepSize: 1
                        snapMode: Slider.SnapAlways
                        value: root.dialog.capoFret
                        onMoved: root.dialog.setCapoSlider(value)
                    }
                    Text {
                        objectName: "capoNumLabel"
                        Layout.preferredWidth: 40
                        horizontalAlignment: Text.AlignRight
                        text: root.dialog.capoFret === 0 ? "None" : root.dialog.capoFret
                        color: Theme.label
                        font.pixelSize: 16
                    }
                }
                RowLayout {
                    Layout.fillWidth: true
                    Caption { text: "Lyric size" }
                    Stepper {
                        objectName: "lyricSizeStepper"
                        name: "lyricSize"
                        text: root.dialog.lyricSizeText
                        canDown: root.dialog.lyricSize > 25
                        canUp: root.dialog.lyricSize < 120
                        onDown: root.dialog.lyricSize = root.dialog.lyricSize - 5
                        onUp: root.dialog.lyricSize = root.dialog.lyricSize + 5
                    }
                }
                RowLayout {
                    Layout.fillWidth: true
                    Caption { text: "Tempo"; Layout.fillWidth: false; Layout.preferredWidth: 90 }
                    Slider {
                        objectName: "tempoSlider"
                        Layout.fillWidth: true
                        from: 0
                        to: 1
                        stepSize: 1 / 270
                        value: root.dialog.tempoSliderValue
                        onMoved: root.dialog.tempoSliderChanged(value)
                    }
                    Text {
                        objectName: "tempoValueLabel"
                        Layout.preferredWidth: 40
                        horizontalAlignment: Text.AlignRight
                        text: root.dialog.tempoValue
                        color: Theme.label
                        font.pixelSize: 16
                    }
                }
                RowLayout {
                    Layout.fillWidth: true
                    Text {
                        objectName: "introPreview"
                        Layout.fillWidth: true
                        text: root.dialog.introPreview.length ? root.dialog.introPreview : "No intro"
                        color: root.dialog.introPreview.length ? Theme.label : Theme.secondaryLabel
                        font.pixelSize: 14
                        font.italic: !root.dialog.introPreview.length
                        maximumLineCount: 2
                        elide: Text.ElideRight
                        wrapMode: Text.Wrap
                    }
                    Button {
                        objectName: "introButt"
                        text: root.dialog.introButtTitle
                        implicitHeight: Theme.touchTarget
                        onClicked: introEditor.open()
                    }
                }

                RowLayout {
                    Layout.fillWidth: true
                    SectionTitle { text: "Editing, for every tab"; Layout.fillWidth: true }
                    // The guide's page on these tweaks, in the browser.
                    AbstractButton {
                        id: tweaksHelp
                        objectName: "tweaksHelpButt"
                        implicitWidth: Theme.touchTarget
                        implicitHeight: 36
                        onClicked: Qt.openUrlExternally(root.dialog.tweaksHelpUrl)
                        contentItem: Text {
                            text: "?"
                            color: Theme.accent
                            font.pixelSize: 17
                            font.weight: Font.DemiBold
                            horizontalAlignment: Text.AlignHCenter
                            verticalAlignment: Text.AlignVCenter
                        }
                        background: Rectangle {
                            anchors.centerIn: parent
                            width: 28; height: 28; radius: 14
                            color: tweaksHelp.down ? Theme.pressed : "transparent"
                            border.color: Theme.accent
                        }
                    }
                }
                RowLayout {
                    Layout.fillWidth: true
                    ColumnLayout {
                        spacing: 0
                        Layout.fillWidth: true
                        Caption { text: "Sound on touch" }
                        Text {
                            Layout.fillWidth: true
                            text: "Play each note as it goes in"
                            color: Theme.secondaryLabel
                            font.pixelSize: 12
                            wrapMode: Text.Wrap
                        }
                    }
                    SettingSwitch {
                        objectName: "playSoundsSwitch"
                        checked: root.dialog.playSounds
                        onToggled: root.dialog.playSounds = checked
                    }
                }
                RowLayout {
                    Layout.fillWidth: true
                    ColumnLayout {
                        spacing: 0
                        Layout.fillWidth: true
                        Caption { text: "Auto cursor" }
                        Text {
                            Layout.fillWidth: true
                            text: "Columns the cursor moves on after each note"
                            color: Theme.secondaryLabel
                            font.pixelSize: 12
                            wrapMode: Text.Wrap
                        }
                    }
                    Stepper {
                        objectName: "autoCursorStepper"
                        name: "autoCursor"
                        text: root.dialog.autoCursor
                        canDown: root.dialog.autoCursor > 0
                        canUp: root.dialog.autoCursor < 3
                        onDown: root.dialog.autoCursor = root.dialog.autoCursor - 1
                        onUp: root.dialog.autoCursor = root.dialog.autoCursor + 1
                    }
                }
                RowLayout {
                    Layout.fillWidth: true
                    Caption { text: "Note names on the tab" }
                    SettingSwitch {
                        objectName: "notesOnTabSwitch"
                        checked: root.dialog.notesOnTab
                        onToggled: root.dialog.notesOnTab = checked
                    }
                }
                Button {
                    objectName: "viewAllGeneralButt"
                    Layout.fillWidth: true
                    flat: true
                    text: root.dialog.viewAllGeneralTitle
                    implicitHeight: Theme.touchTarget
                    onClicked: root.dialog.viewAllGeneralPress()
                    contentItem: Text {
                        text: parent.text
                        color: Theme.accent
                        font.pixelSize: 15
                        horizontalAlignment: Text.AlignHCenter
                        verticalAlignment: Text.AlignVCenter
                    }
                }
                ColumnLayout {
                    id: moreGeneralView
                    objectName: "moreGeneralView"
                    visible: root.dialog.generalExpanded
                    Layout.fillWidth: true
                    spacing: 6
                    RowLayout {
                        Layout.fillWidth: true
                        Caption { text: "Fret count" }
                        Stepper {
                            objectName: "fretCountStepper"
                            name: "fretCount"
                            text: root.dialog.fretCount
                            canDown: root.dialog.fretCount > 21
                            canUp: root.dialog.fretCount < 80
                            onDown: root.dialog.fretCount = root.dialog.fretCount - 1
                            onUp: root.dialog.fretCount = root.dialog.fretCount + 1
                        }
                    }
                    RowLayout {
                        Layout.fillWidth: true
                        Caption { text: "New tab strings" }
                        Stepper {
                            objectName: "defaultStringCountStepper"
                            name: "defaultStringCount"
                            text: root.dialog.defaultStringCount
                            canDown: root.dialog.defaultStringCount > 4
                            canUp: root.dialog.defaultStringCount < 8
                            onDown: root.dialog.defaultStringCount = root.dialog.defaultStringCount - 1
                            onUp: root.dialog.defaultStringCount = root.dialog.defaultStringCount + 1
                        }
                    }
                    RowLayout {
                        Layout.fillWidth: true
                        Caption { text: "Flash cursor arrows" }
                        SettingSwitch {
                            objectName: "flashNavArrowsSwitch"
                            checked: root.dialog.flashNavArrows
                            onToggled: root.dialog.flashNavArrows = checked
                        }
                    }
                    RowLayout {
                        Layout.fillWidth: true
                        Caption { text: "Chord name headers" }
                        SettingSwitch {
                            objectName: "colHeadersSwitch"
                            checked: root.dialog.colHeaders
                            onToggled: root.dialog.colHeaders = checked
                        }
                    }
                    RowLayout {
                        Layout.fillWidth: true
                        ColumnLayout {
                            spacing: 0
                            Layout.fillWidth: true
                            Caption { text: "Free scroll" }
                            Text {
                                Layout.fillWidth: true
                                text: "Takes effect when a tab is next opened"
                                color: Theme.secondaryLabel
                                font.pixelSize: 12
                                wrapMode: Text.Wrap
                            }
                        }
                        SettingSwitch {
                            objectName: "freeScrollSwitch"
                            checked: root.dialog.freeScroll
                            onToggled: root.dialog.freeScroll = checked
                        }
                    }
                }
                Item { Layout.preferredHeight: 8 }
            }
        }

        // Save and cancel stay in reach however far the settings scroll.
        Rectangle {
            id: footer
            y: parent.height - height
            width: parent.width
            height: 72
            radius: Theme.radius
            color: Theme.raised
            Rectangle { width: parent.width; height: 1; color: Theme.separator }
            RowLayout {
                anchors.fill: parent
                anchors.margins: 12
                spacing: 12
                DialogButton {
                    objectName: "cancelSettingsButt"
                    Layout.fillWidth: true
                    text: "Cancel"
                    onClicked: root.dialog.cancel()
                }
                DialogButton {
                    objectName: "saveChangesButt"
                    Layout.fillWidth: true
                    text: "Save"
                    emphasized: true
                    onClicked: root.dialog.saveChangesButt()
                }
            }
        }

        // The question before notes are lost to fewer strings.
        Rectangle {
            id: warningView
            objectName: "warningView"
            visible: root.dialog.warningShown
            anchors.fill: parent
            radius: Theme.radius
            color: Theme.raised
            MouseArea { anchors.fill: parent }
            ColumnLayout {
                anchors.centerIn: parent
                width: parent.width - 48
                spacing: 16
                Text {
                    Layout.fillWidth: true
                    text: "Change the number of strings?"
                    color: Theme.label
                    font.pixelSize: 19
                    font.weight: Font.DemiBold
                    wrapMode: Text.Wrap
                }
                Text {
                    Layout.fillWidth: true
                    text: "Every column of this tab changes with it: fewer strings remove the "
                          + "notes of the highest strings, more strings add blank ones at the "
                          + "bottom. Undo brings the tab back as it was."
                    color: Theme.label
                    font.pixelSize: 15
                    wrapMode: Text.Wrap
                    lineHeight: 1.15
                }
                DialogButton {
                    objectName: "continueAfterWarning"
                    Layout.fillWidth: true
                    text: "Continue"
                    emphasized: true
                    destructive: true
                    onClicked: root.dialog.continueAfterWarning()
                }
                DialogButton {
                    objectName: "cancelAfterWarning"
                    Layout.fillWidth: true
                    text: "Cancel"
                    onClicked: root.dialog.cancelAfterWarning()
                }
            }
        }
    }

    EditIntroDialog {
        id: introEditor
        objectName: "introEditor"
        dialog: root.dialog
        anchors.fill: parent
        onClosed: root.forceActiveFocus()
    }

    StringNoteRing {
        objectName: "noteRing"
        dialog: root.dialog
        anchors.fill: parent
    }
}
