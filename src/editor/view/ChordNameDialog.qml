import QtQuick
import QtQuick.Controls.Basic
import Lutegrid.Shell

// A column's header: a short chord name typed or taken from the presets. Done writes it.
EditorDialogFrame {
    id: dialog
    objectName: "chordNameDialog"
    required property var logic
    shown: logic !== null && logic.shown
    onDismissed: logic.dismiss()
    onShownChanged: {
        if (!shown)
            return
        inputField.text = logic.initialText
        presetPicker.currentIndex = 0
        inputField.forceActiveFocus()
        inputField.selectAll()
    }

    Column {
        width: parent.width
        spacing: 12
        Text {
            text: "Column header"
            font.pixelSize: 19
            font.weight: Font.DemiBold
            color: Theme.label
        }
        TextField {
            id: inputField
            objectName: "chordNameField"
            width: parent.width
            maximumLength: 10
            font.pixelSize: 18
            color: Theme.label
            placeholderText: "Chord name"
            placeholderTextColor: Theme.secondaryLabel
            background: Rectangle {
                radius: 8
                color: Theme.background
                border.color: inputField.activeFocus ? Theme.accent : Theme.separator
            }
            Keys.onReturnPressed: dialog.logic.done(text)
            Keys.onEnterPressed: dialog.logic.done(text)
            Keys.onEscapePressed: dialog.logic.dismiss()
        }
        ComboBox {
            id: presetPicker
            objectName: "presetPicker"
            width: parent.width
            model: dialog.logic ? dialog.logic.presetOptions : []
            focusPolicy: Qt.NoFocus
            onActivated: (index) => {
                const text = dialog.logic.presetText(index)
                if (text.length > 0)
                    inputField.text = text
            }
        }
        Row {
            width: parent.width
            spacing: 10
            DialogButton {
                objectName: "chordNameCancel"
                width: (parent.width - 10) / 2
                text: "Cancel"
                onClicked: dialog.logic.dismiss()
            }
            DialogButton {
                objectName: "chordNameDone"
                width: (parent.width - 10) / 2
                text: "Done"
                emphasized: true
                onClicked: dialog.logic.done(inputField.text)
            }
        }
    }
}
