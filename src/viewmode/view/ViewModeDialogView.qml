import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Lutegrid.Shell

// The view options over the page: what is shown, and how the tab plays. A tap outside the box
// counts as Done.
Item {
    id: root
    property var dialog: null

    component Heading: Text {
        color: Theme.secondaryLabel
        font.pixelSize: 13
        font.weight: Font.DemiBold
        Layout.topMargin: 8
    }
    component OptionSwitch: Switch {
        id: sw
        Layout.fillWidth: true
        palette.dark: Theme.accent
        implicitHeight: 44
        contentItem: Text {
            text: sw.text
            color: Theme.label
            font.pixelSize: 16
            verticalAlignment: Text.AlignVCenter
            leftPadding: sw.indicator.width + sw.spacing
        }
    }
    component StepRow: RowLayout {
        id: step
        property string label
        property int value
        property int from
        property int to
        signal moved(int value)
        Layout.fillWidth: true
        Text { text: step.label; color: Theme.label; font.pixelSize: 16; Layout.fillWidth: true }
        Text {
            objectName: step.objectName + "Value"
            text: step.value
            color: Theme.label
            font.pixelSize: 16
            horizontalAlignment: Text.AlignHCenter
            Layout.preferredWidth: 28
        }
        DialogButton {
            objectName: step.objectName + "Minus"
            text: "−"
            implicitWidth: 44
            implicitHeight: 36
            enabled: step.value > step.from
            opacity: enabled ? 1 : 0.4
            onClicked: step.moved(step.value - 1)
        }
        DialogButton {
            objectName: step.objectName + "Plus"
            text: "+"
            implicitWidth: 44
            implicitHeight: 36
            enabled: step.value < step.to
            opacity: enabled ? 1 : 0.4
            onClicked: step.moved(step.value + 1)
        }
    }


    Rectangle {
        anchors.fill: parent
        color: Theme.dim
        MouseArea {
            anchors.fill: parent
            onClicked: if (root.dialog) root.dialog.done()
        }
    }

    Rectangle {
        id: dialogBg
        objectName: "dialogBg"
        anchors.centerIn: parent
        width: Math.min(parent.width - 24, 440)
        height: Math.min(parent.height - 40, content.implicitHeight + footer.implicitHeight + 40)
        radius: Theme.radius
        color: Theme.raised
        MouseArea { anchors.fill: parent } // a tap inside is no tap outside

        Flickable {
            id: scroller
            anchors.left: parent.left
            anchors.right: parent.right
            anchors.top: parent.top
            anchors.bottom: footer.top
            anchors.margins: 16
            anchors.bottomMargin: 8
            contentHeight: content.implicitHeight
            clip: true
            boundsBehavior: Flickable.StopAtBounds

            ColumnLayout {
                id: content
                width: scroller.width
                spacing: 4

                RowLayout {
                    Layout.fillWidth: true
                    Text {
                        text: "View options"
                        color: Theme.label
                        font.pixelSize: 20
                        font.weight: Font.DemiBold
                        Layout.fillWidth: true
                    }
                    // The guide's section on view mode, in the browser.
                    DialogButton {
                        objectName: "helpButt"
                        text: "?"
                        implicitWidth: 44
                        implicitHeight: 36
                        onClicked: Qt.openUrlExternally("https://lutegrid.org/lutegrid/guide/#viewModeSection")
                    }
                }
                Heading { text: "Show" }
                OptionSwitch {
                    objectName: "showLyricsSwitch"; text: "Lyrics"
                    checked: root.dialog ? root.dialog.showLyrics : false
                    onToggled: root.dialog.showLyrics = checked
                }
                OptionSwitch {
                    objectName: "lyricsBelowSwitch"; text: "Lyrics below the tab"
                    checked: root.dialog ? root.dialog.lyricsBelow : false
                    onToggled: root.dialog.lyricsBelow = checked
                }
                OptionSwitch {
                    objectName: "showColumnHeadersSwitch"; text: "Chord names"
                    checked: root.dialog ? root.dialog.showColumnHeaders : false
                    onToggled: root.dialog.showColumnHeaders = checked
                }
                OptionSwitch {
                    objectName: "showTabContentSwitch"; text: "Tab"
                    checked: root.dialog ? root.dialog.showTabContent : false
                    onToggled: root.dialog.showTabContent = checked
                }
                OptionSwitch {
                    objectName: "twoColumnsSwitch"; text: "Two columns"
                    checked: root.dialog ? root.dialog.twoColumns : false
                    onToggled: root.dialog.twoColumns = checked
                }

                Heading { text: "Playback" }
                RowLayout {
                    Layout.fillWidth: true
                    Text { text: "Speed"; color: Theme.label; font.pixelSize: 16; Layout.fillWidth: true }
                    Text {
                        objectName: "playbackSpeedValueLabel"
                        text: (root.dialog ? root.dialog.playbackSpeedValue : 0) + " bpm"
                        color: Theme.label
                        font.pixelSize: 16
                    }
                }
                Slider {
                    objectName: "playbackSpeedSlider"
                    Layout.fillWidth: true
                    palette.dark: Theme.accent
                    from: 0; to: 1
                    value: root.dialog ? root.dialog.sliderValue : 0
                    onMoved: root.dialog.sliderValue = value
                }
                RowLayout {
                    Layout.fillWidth: true
                    Text {
                        objectName: "defaultBpmLabel"
                        text: root.dialog ? root.dialog.defaultBpmText : ""
                        color: Theme.secondaryLabel
                        font.pixelSize: 14
                        Layout.fillWidth: true
                    }
                    DialogButton {
                        objectName: "resetPlaybackSpeedButt"
                        text: "Reset"
                        implicitWidth: 88
                        onClicked: root.dialog.resetPlaybackSpeed()
                    }
                }
                StepRow {
                    objectName: "colsPerBeat"
                    label: "Columns per beat"
                    from: 1; to: 8
                    value: root.dialog ? root.dialog.colsPerBeat : 1
                    onMoved: (v) => root.dialog.colsPerBeat = v
                }
                OptionSwitch {
                    objectName: "useMeasuresForPlaybackSwitch"; text: "Use measures for playback"
                    checked: root.dialog ? root.dialog.useMeasuresForPlayback : false
                    onToggled: root.dialog.useMeasuresForPlayback = checked
                }
                StepRow {
                    objectName: "beatsPerMeasure"
                    visible: root.dialog !== null && root.dialog.useMeasuresForPlayback
                    label: "Beats per measure"
                    from: 1; to: 12
                    value: root.dialog ? root.dialog.beatsPerMeasure : 4
                    onMoved: (v) => root.dialog.beatsPerMeasure = v
                }
                OptionSwitch {
                    objectName: "loopPlaybackSwitch"; text: "Loop"
                    checked: root.dialog ? root.dialog.loopPlayback : false
                    onToggled: root.dialog.loopPlayback = checked
                }
                OptionSwitch {
                    objectName: "countInSwitch"; text: "Count in one measure"
                    checked: root.dialog ? root.dialog.countIn : false
                    onToggled: root.dialog.countIn = checked
                }
                OptionSwitch {
                    objectName: "metronomeSwitch"; text: "Metronome click"
                    checked: root.dialog ? root.dialog.metronome : false
                    onToggled: root.dialog.metronome = checked
                }
            }
        }
        // Done stays in reach however long the options run.
        ColumnLayout {
            id: footer
            anchors.left: parent.left
            anchors.right: parent.right
            anchors.bottom: parent.bottom
            anchors.margins: 16
            spacing: 8
            Text {
                objectName: "errorLabel"
                visible: root.dialog !== null && root.dialog.errorShown
                text: "Turn on at least one of lyrics, chord names or tab."
                color: Theme.destructive
                font.pixelSize: 14
                wrapMode: Text.Wrap
                Layout.fillWidth: true
            }
            DialogButton {
                objectName: "doneButton"
                visible: root.dialog === null || root.dialog.doneShown
                text: "Done"
                emphasized: true
                Layout.fillWidth: true
                Layout.topMargin: 8
                onClicked: root.dialog.done()
            }
        }
    }
}
