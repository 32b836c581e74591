import QtQuick
import QtQuick.Controls.Basic
import Lutegrid.Surface
import Lutegrid.Shell

// The panel of magic edit over the fretboard: its tools and the hints, or, in a window too
// short for the fretboard, the tools alone in a strip at the bottom.
Rectangle {
    id: panel
    objectName: "fretboardCover"
    required property var controller
    readonly property var magic: controller ? controller.magic : null
    readonly property bool shortLayout: controller !== null && controller.shortLayout
    readonly property bool tall: height >= 282
    readonly property real l: width * (tall ? 0.06 : 0.1)
    color: Qt.alpha(Theme.background, 0.92)
    visible: magic !== null && magic.active

    // The fretboard under the panel takes no touch while it shows.
    MouseArea { anchors.fill: parent; enabled: !panel.shortLayout }

    component ToggleButt: IconButton {
        property bool on: false
        width: 50; height: 44
        emphasized: on
        background: Rectangle {
            radius: 10
            color: parent.on ? Qt.rgba(0.694, 0.788, 0.816, 0.5)
                             : parent.down ? Theme.pressed : "transparent"
        }
    }

    Item {
        id: tools
        readonly property real baseX: panel.shortLayout
            ? panel.width * 0.5 + (panel.width < 600 ? -122 : -100) : panel.l
        readonly property real rowY: panel.shortLayout ? panel.height - 43 : 11
        anchors.fill: parent

        ToggleButt {
            id: rowReorderButt
            objectName: "rowReorderButt"
            iconName: "reorderToggle"
            on: panel.magic !== null && panel.magic.rowReorderOn
            x: panel.shortLayout ? tools.baseX + 160 : tools.baseX
            y: tools.rowY
            onClicked: panel.magic.toggleRowReorderMode()
        }
        ToggleButt {
            id: magicShiftButt
            objectName: "magicShiftButt"
            iconName: "magicShiftButt"
            on: panel.magic !== null && panel.magic.magicShiftOn
            x: panel.shortLayout ? tools.baseX + 205 : rowReorderButt.x + rowReorderButt.width + 15
            y: tools.rowY
            onClicked: panel.magic.toggleMagicShift()
        }
        IconButton {
            id: semiDownButt
            objectName: "semiDownButt"
            iconName: "semiDownButt"
            visible: panel.magic !== null && panel.magic.semitoneButtsShown
            x: panel.shortLayout ? magicShiftButt.x + (panel.width < 600 ? 50 : 65)
                                 : magicShiftButt.x + magicShiftButt.width + 60
            y: tools.rowY
            onClicked: panel.magic.semiShiftDown()
        }
        IconButton {
            objectName: "semiUpButt"
            iconName: "semiUpButt"
            visible: semiDownButt.visible
            x: semiDownButt.x + semiDownButt.width + (panel.shortLayout ? 8 : 15)
            y: tools.rowY
            onClicked: panel.magic.semiShiftUp()
        }
        IconButton {
            objectName: "magicEditHelpButt"
            visible: !panel.shortLayout
            iconName: "help"
            width: 50; height: 40
            x: panel.width - 50; y: 2
            onClicked: Qt.openUrlExternally("https://lutegrid.app/lutegrid/guide/#magicEditModeSection")
        }

        Text {
            id: magicEditOnLabel
            objectName: "magicEditOnLabel"
            text: "MAGIC EDIT MODE"
            x: panel.shortLayout ? tools.baseX : panel.l
            y: panel.shortLayout ? panel.height - 35 : (panel.tall ? 60 : 52)
            width: panel.shortLayout ? 150 : 200; height: panel.shortLayout ? 30 : 40
            fontSizeMode: Text.Fit
            minimumPixelSize: 10
            font.pixelSize: 22
            font.family: Theme.fontFamily
            font.weight: Font.Black
            color: Theme.label
            verticalAlignment: Text.AlignVCenter
        }
        Column {
            visible: !panel.shortLayout
            x: panel.l
            y: magicEditOnLabel.y + magicEditOnLabel.height + (panel.tall ? 15 : 4)
            width: panel.width - 2 * panel.l
            spacing: panel.tall ? 15 : 4
            Repeater {
                model: ["• Use your finger to draw selection box",
                        "• Drag selection to move it",
                        "• Toggle ⤴ to enable drag duplication",
                        "• Tap a note to select an entire string"]
                Text {
                    required property string modelData
                    width: parent.width
                    text: modelData
                    wrapMode: Text.WordWrap
                    maximumLineCount: 2
                    font.pixelSize: panel.tall ? 17 : 16
                    color: Theme.secondaryLabel
                }
            }
        }
    }
}
