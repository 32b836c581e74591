import QtQuick
import QtQuick.Controls.Basic
import Lutegrid.Shell
import Lutegrid.Export

// The export dialog over the view screen: the panel (name and formats), the overwrite
// question and the success view are three states of one screen. The rules are the
// controller's; this only binds to them.
FocusScope {
    id: dialog
    required property ExportDialogViewController controller
    readonly property int state_: controller.state
    property string shareMessage
    property bool shareSheetOpen: false
    anchors.fill: parent
    focus: true

    Component.onCompleted: {
        nameField.forceActiveFocus()
        nameField.selectAll()
    }

    // The question and the done view have no field: keys come to the dialog itself there.
    onState_Changed: {
        if (state_ === ExportDialogViewController.Input)
            nameField.forceActiveFocus()
        else
            keyCatcher.forceActiveFocus()
    }
    Item { id: keyCatcher }

    Keys.onEscapePressed: {
        if (state_ === ExportDialogViewController.Asking)
            controller.cancelOverwrite()
        else
            controller.finishExporting()
    }
    // Return answers the default: export, replace, done. The field passes Return on to here.
    Keys.onReturnPressed: answerDefault()
    Keys.onEnterPressed: answerDefault()
    function answerDefault() {
        if (state_ === ExportDialogViewController.Asking)
            controller.confirmOverwrite()
        else if (state_ === ExportDialogViewController.Done)
            controller.finishExporting()
        else
            controller.exportTab()
    }

    Rectangle {
        objectName: "exportDim"
        anchors.fill: parent
        color: Theme.dim
        opacity: 0.6
        // A touch that ends outside the panel closes the dialog.
        MouseArea {
            anchors.fill: parent
            onClicked: dialog.controller.finishExporting()
        }
    }

    Rectangle {
        id: dialogBg
        objectName: "dialogBg"
        anchors.centerIn: parent
        width: Math.min(dialog.width - 32, 440)
        height: Math.min(dialog.height - 32, content.implicitHeight)
        radius: Theme.radius
        color: Theme.raised
        border.width: Theme.dark ? 1 : 0
        border.color: Theme.separator
        clip: true
        // Presses on the panel stay on the panel.
        MouseArea { anchors.fill: parent }

        Flickable {
            anchors.fill: parent
            contentHeight: content.implicitHeight
            boundsBehavior: Flickable.StopAtBounds
            interactive: contentHeight > height

            Item {
                id: content
                width: dialogBg.width
                implicitHeight: (dialog.state_ === ExportDialogViewController.Done
                                 ? successView.implicitHeight
                                 : dialog.state_ === ExportDialogViewController.Asking
                                   ? confirmView.implicitHeight : panel.implicitHeight)

                // Input: the name and the formats.
                Column {
                    id: panel
                    objectName: "exportPanel"
                    visible: dialog.state_ === ExportDialogViewController.Input
                    width: parent.width
                    padding: 20
                    spacing: 10

                    Item {
                        width: panel.width - 2 * panel.padding
                        height: Theme.touchTarget
                        Text {
                            anchors.verticalCenter: parent.verticalCenter
                            text: "Export Tab"
                            color: Theme.label
                            font.pixelSize: 20
                            font.weight: Font.DemiBold
                        }
                        AbstractButton {
                            objectName: "helpButt"
                            anchors.right: parent.right
                            width: Theme.touchTarget
                            height: Theme.touchTarget
                            focusPolicy: Qt.StrongFocus
                            Accessible.name: "Help"
                            onClicked: dialog.shareMessage = sharing.openHelp()
                            background: Rectangle {
                                radius: width / 2
                                color: parent.down ? Theme.pressed : Theme.toolbar
                                border.width: parent.visualFocus ? 2 : 0
                                border.color: Theme.accent
                            }
                            contentItem: Text {
                                text: "?"
                                horizontalAlignment: Text.AlignHCenter
                                verticalAlignment: Text.AlignVCenter
                                color: Theme.accent
                                font.pixelSize: 20
                                font.weight: Font.DemiBold
                            }
                        }
                    }

                    Text {
                        text: "File name"
                        color: Theme.secondaryLabel
                        font.pixelSize: 13
                    }
                    TextField {
                        id: nameField
                        objectName: "fileNameField"
                        width: panel.width - 2 * panel.padding
                        height: Theme.touchTarget
                        text: dialog.controller.fileName
                        color: Theme.label
                        font.pixelSize: 17
                        selectByMouse: true
                        placeholderText: "Name"
                        placeholderTextColor: Theme.secondaryLabel
                        // Typing again clears a message as well as coming back to the field.
                        onTextEdited: {
                            dialog.controller.fileName = text
                            dialog.controller.editingBegan()
                        }
                        onActiveFocusChanged: if (activeFocus) dialog.controller.editingBegan()
                        KeyNavigation.tab: lgrdSwitch
                        background: Rectangle {
                            radius: 10
                            color: Theme.background
                            border.width: nameField.activeFocus ? 2 : 1
                            border.color: nameField.activeFocus ? Theme.accent : Theme.separator
                        }
                    }
                    Text {
                        objectName: "errorLabel"
                        width: panel.width - 2 * panel.padding
                        text: dialog.controller.errorText
                        visible: text.length > 0
                        wrapMode: Text.Wrap
                        color: Theme.destructive
                        font.pixelSize: 14
                    }
                    ExportSwitchRow {
                        id: lgrdSwitch
                        objectName: "lgrdSwitch"
                        width: panel.width - 2 * panel.padding
                        text: "Lutegrid file"
                        detail: ".lgrd, opens in Lutegrid"
                        checked: dialog.controller.lgrdOn
                        onToggled: dialog.controller.lgrdOn = checked
                        KeyNavigation.tab: txtSwitch
                    }
                    ExportSwitchRow {
                        id: txtSwitch
                        objectName: "txtSwitch"
                        width: panel.width - 2 * panel.padding
                        text: "Plain text"
                        detail: ".txt"
                        checked: dialog.controller.txtOn
                        onToggled: dialog.controller.txtOn = checked
                        KeyNavigation.tab: pdfSwitch
                    }
                    ExportSwitchRow {
                        id: pdfSwitch
                        objectName: "pdfSwitch"
                        width: panel.width - 2 * panel.padding
                        text: "PDF"
                        detail: ".pdf, US Letter pages for printing"
                        checked: dialog.controller.pdfOn
                        onToggled: dialog.controller.pdfOn = checked
                        KeyNavigation.tab: musicXmlSwitch
                    }
                    ExportSwitchRow {
                        id: musicXmlSwitch
                        objectName: "musicXmlSwitch"
                        width: panel.width - 2 * panel.padding
                        text: "MusicXML"
                        detail: ".musicxml, opens in notation programs"
                        checked: dialog.controller.musicXmlOn
                        onToggled: dialog.controller.musicXmlOn = checked
                        KeyNavigation.tab: midiSwitch
                    }
                    ExportSwitchRow {
                        id: midiSwitch
                        objectName: "midiSwitch"
                        width: panel.width - 2 * panel.padding
                        text: "MIDI"
                        detail: ".mid, plays in music programs"
                        checked: dialog.controller.midiOn
                        onToggled: dialog.controller.midiOn = checked
                        KeyNavigation.tab: exportButt
                    }
                    Text {
                        width: panel.width - 2 * panel.padding
                        text: dialog.shareMessage
                        visible: text.length > 0
                        wrapMode: Text.Wrap
                        color: Theme.secondaryLabel
                        font.pixelSize: 13
                    }
                    Row {
                        spacing: 10
                        DialogButton {
                            objectName: "closeButt"
                            width: (panel.width - 2 * panel.padding - 10) / 2
                            text: "Cancel"
                            onClicked: dialog.controller.finishExporting()
                        }
                        DialogButton {
                            id: exportButt
                            objectName: "exportButt"
                            width: (panel.width - 2 * panel.padding - 10) / 2
                            text: "Export"
                            emphasized: true
                            focusPolicy: Qt.StrongFocus
                            enabled: dialog.controller.exportEnabled
                            onClicked: dialog.controller.exportTab()
                            KeyNavigation.tab: nameField
                        }
                    }
                }

                // Asking: the files that would be replaced.
                Column {
                    id: confirmView
                    objectName: "confirmView"
                    visible: dialog.state_ === ExportDialogViewController.Asking
                    width: parent.width
                    padding: 20
                    spacing: 14
                    Text {
                        width: confirmView.width - 2 * confirmView.padding
                        text: "Replace existing files?"
                        color: Theme.label
                        font.pixelSize: 20
                        font.weight: Font.DemiBold
                    }
                    Text {
                        width: confirmView.width - 2 * confirmView.padding
                        text: "These files are already in the Exports folder:"
                        wrapMode: Text.Wrap
                        color: Theme.secondaryLabel
                        font.pixelSize: 15
                    }
                    Text {
                        objectName: "overwriteFileList"
                        width: confirmView.width - 2 * confirmView.padding
                        text: dialog.controller.overwriteList
                        wrapMode: Text.Wrap
                        color: Theme.label
                        font.pixelSize: 16
                    }
                    DialogButton {
                        objectName: "confirmButt"
                        width: confirmView.width - 2 * confirmView.padding
                        text: "Replace"
                        emphasized: true
                        destructive: true
                        onClicked: dialog.controller.confirmOverwrite()
                    }
                    DialogButton {
                        objectName: "cancelOverwriteButt"
                        width: confirmView.width - 2 * confirmView.padding
                        text: "Keep Existing"
                        onClicked: dialog.controller.cancelOverwrite()
                    }
                }

                // Done: what was written, and ways to hand it on.
                Column {
                    id: successView
                    objectName: "successView"
                    visible: dialog.state_ === ExportDialogViewController.Done
                    width: parent.width
                    padding: 20
                    spacing: 12
                    Text {
                        text: "Export Complete"
                        color: Theme.label
                        font.pixelSize: 20
                        font.weight: Font.DemiBold
                    }
                    Text {
                        objectName: "successDetailsLabel"
                        width: successView.width - 2 * successView.padding
                        text: dialog.controller.successDetails
                        wrapMode: Text.Wrap
                        color: Theme.secondaryLabel
                        font.pixelSize: 15
                        lineHeight: 1.15
                    }
                    DialogButton {
                        objectName: "shareButt"
                        width: successView.width - 2 * successView.padding
                        visible: !dialog.shareSheetOpen
                        text: "Share…"
                        enabled: dialog.controller.exportedFiles.length > 0
                        onClicked: dialog.shareSheetOpen = true
                    }
                    Column {
                        objectName: "shareSheet"
                        visible: dialog.shareSheetOpen
                        spacing: 8
                        DialogButton {
                            objectName: "showInFolderButt"
                            width: successView.width - 2 * successView.padding
                            text: "Show in Folder"
                            onClicked: dialog.shareMessage =
                                       sharing.showInFolder(dialog.controller.exportedFiles)
                        }
                        DialogButton {
                            objectName: "copyFilesButt"
                            width: successView.width - 2 * successView.padding
                            text: "Copy Files"
                            onClicked: dialog.shareMessage =
                                       sharing.copyFiles(dialog.controller.exportedFiles)
                        }
                        Repeater {
                            model: dialog.controller.exportedFiles
                            DialogButton {
                                required property string modelData
                                objectName: "open " + sharing.fileName(modelData)
                                width: successView.width - 2 * successView.padding
                                text: "Open " + sharing.fileName(modelData)
                                onClicked: dialog.shareMessage = sharing.openFile(modelData)
                            }
                        }
                    }
                    Text {
                        objectName: "shareMessage"
                        width: successView.width - 2 * successView.padding
                        text: dialog.shareMessage
                        visible: text.length > 0
                        wrapMode: Text.Wrap
                        color: Theme.secondaryLabel
                        font.pixelSize: 13
                    }
                    DialogButton {
                        objectName: "doneButt"
                        width: successView.width - 2 * successView.padding
                        text: "Done"
                        emphasized: true
                        onClicked: dialog.controller.finishExporting()
                    }
                }
            }
        }
    }

    ExportSharing { id: sharing }
}
