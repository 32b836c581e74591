import QtQuick
import QtQuick.Controls.Basic
import Lutegrid.Shell
import Lutegrid.Library

// The back-up dialog: progress while every tab is written, then the tally and the zip.
SheetLayer {
    id: sheet
    required property ExportAllDialogViewController backup
    objectName: "exportAllDialogView"
    // A tap outside doesn't end a back-up half done; Cancel does.
    onCancelled: if (!backup.running) backup.cancel()

    Column {
        id: body
        width: sheet.panel.width
        padding: 20
        spacing: 14
        readonly property real inner: width - 2 * padding
        Text { text: "Back Up All Tabs"; color: Theme.label; font.pixelSize: 19; font.weight: Font.DemiBold }
        ProgressBar {
            id: bar
            objectName: "progressBar"
            width: body.inner
            value: sheet.backup.progress
            background: Rectangle { implicitHeight: 6; radius: 3; color: Theme.separator }
            contentItem: Item {
                implicitHeight: 6
                Rectangle { width: bar.visualPosition * parent.width; height: 6; radius: 3; color: Theme.accent }
            }
        }
        Text {
            objectName: "resultsLabel"
            width: body.inner
            text: sheet.backup.message
            wrapMode: Text.Wrap
            color: Theme.label
            font.pixelSize: 15
        }
        Text {
            objectName: "zipLabel"
            visible: sheet.backup.zipPath.length > 0
            width: body.inner
            text: sheet.backup.zipPath
            elide: Text.ElideMiddle
            color: Theme.secondaryLabel
            font.pixelSize: 13
        }
        Row {
            spacing: 10
            anchors.right: parent.right
            anchors.rightMargin: body.padding
            SheetButton {
                objectName: "shareButt"
                visible: sheet.backup.zipPath.length > 0
                text: "Show File"
                onClicked: Qt.openUrlExternally("file://" + sheet.backup.zipFolder)
            }
            SheetButton {
                objectName: "closeButt"
                text: sheet.backup.done ? "Close" : "Cancel"
                emphasized: sheet.backup.done
                focus: true
                onClicked: sheet.backup.cancel()
            }
        }
    }
    Component.onCompleted: backup.start()
}
