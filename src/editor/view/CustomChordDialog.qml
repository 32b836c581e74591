import QtQuick
import QtQuick.Controls.Basic
import Lutegrid.Shell

// Stores the cursor column as a chord of one's own: the column as it will be kept, a name of at
// most ten characters, and the warning before a chord is replaced.
EditorDialogFrame {
    id: dialog
    objectName: "customChordDialog"
    required property var logic
    shown: logic !== null && logic.shown
    onDismissed: logic.dismiss()
    onShownChanged: if (shown) { nameField.text = ""; nameField.forceActiveFocus() }

    Column {
        width: parent.width
        spacing: 12
        Text {
            text: "New custom chord"
            font.pixelSize: 19
            font.weight: Font.DemiBold
            color: Theme.label
        }
        Row {
            spacing: 16
            width: parent.width
            // The column as the tab shows it, highest string on top.
            Rectangle {
                id: columnView
                objectName: "customChordColumn"
                width: 44
                height: Math.max(1, dialog.logic ? dialog.logic.itemTexts.length : 1) * 20 + 8
                radius: 6
                color: Theme.background
                border.color: Theme.separator
                Repeater {
                    model: dialog.logic ? dialog.logic.itemTexts : []
                    Item {
                        required property int index
                        required property string modelData
                        y: 4 + index * 20
                        width: columnView.width
                        height: 20
                        Rectangle {
                            anchors.verticalCenter: parent.verticalCenter
                            width: parent.width
                            height: 1
                            color: Theme.secondaryLabel
                            opacity: 0.6
                        }
                        Rectangle {
                            visible: modelData.length > 0
                            anchors.centerIn: parent
                            width: label.implicitWidth + 6
                            height: 18
                            color: Theme.background
                            Text {
                                id: label
                                anchors.centerIn: parent
                                text: modelData
                                font.family: "JetBrains Mono"
                                font.pixelSize: 15
                                font.bold: true
                                color: Theme.label
                            }
                        }
                    }
                }
            }
            Column {
                width: parent.width - columnView.width - 16
                spacing: 8
                Text {
                    width: parent.width
                    text: "Name"
                    font.pixelSize: 14
                    color: Theme.secondaryLabel
                }
                TextField {
                    id: nameField
                    objectName: "customChordName"
                    width: parent.width
                    maximumLength: 10
                    font.pixelSize: 18
                    color: Theme.label
                    placeholderText: "e.g. Am7"
                    placeholderTextColor: Theme.secondaryLabel
                    background: Rectangle {
                        radius: 8
                        color: Theme.background
                        border.color: nameField.activeFocus ? Theme.accent : Theme.separator
                    }
                    onTextEdited: dialog.logic.nameEdited()
                    Keys.onReturnPressed: dialog.logic.createButtonTapped(text)
                    Keys.onEnterPressed: dialog.logic.createButtonTapped(text)
                    Keys.onEscapePressed: dialog.logic.dismiss()
                }
                Text {
                    objectName: "errorLabel"
                    width: parent.width
                    visible: text.length > 0
                    text: dialog.logic ? dialog.logic.errorText : ""
                    wrapMode: Text.Wrap
                    font.pixelSize: 14
                    color: Theme.destructive
                }
            }
        }
        Rectangle {
            objectName: "limitWarningView"
            visible: dialog.logic !== null && dialog.logic.limitWarningShown
            width: parent.width
            height: visible ? limitLabel.implicitHeight + 16 : 0
            radius: 8
            color: Theme.accentSoft
            Text {
                id: limitLabel
                objectName: "limitLabel"
                x: 8; y: 8
                width: parent.width - 16
                text: dialog.logic ? dialog.logic.limitText : ""
                wrapMode: Text.Wrap
                font.pixelSize: 14
                color: Theme.label
            }
        }
        Row {
            width: parent.width
            spacing: 10
            DialogButton {
                objectName: "customChordCancel"
                width: (parent.width - 10) / 2
                text: "Cancel"
                onClicked: dialog.logic.dismiss()
            }
            DialogButton {
                objectName: "customChordCreate"
                width: (parent.width - 10) / 2
                text: dialog.logic ? dialog.logic.buttonTitle : ""
                emphasized: true
                onClicked: dialog.logic.createButtonTapped(nameField.text)
            }
        }
    }
}
