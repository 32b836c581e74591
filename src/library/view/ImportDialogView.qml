import QtQuick
import QtQuick.Controls.Basic
import Lutegrid.Shell
import Lutegrid.Library

// The import dialog: the name for the new tab, and what went wrong if anything did.
SheetLayer {
    id: sheet
    required property ImportDialogViewController dialog
    objectName: "importDialogView"
    onCancelled: dialog.cancelImport()

    Column {
        id: body
        width: sheet.panel.width
        padding: 20
        spacing: 14
        Text {
            text: "Import Tab"
            color: Theme.label
            font.pixelSize: 19
            font.weight: Font.DemiBold
        }
        Text {
            width: body.width - 2 * body.padding
            text: sheet.dialog.fileUrl
            elide: Text.ElideMiddle
            color: Theme.secondaryLabel
            font.pixelSize: 13
        }
        LgTextField {
            objectName: "tabNameField"
            width: body.width - 2 * body.padding
            text: sheet.dialog.tabNameField
            placeholderText: "Tab name"
            focus: true
            onTextEdited: sheet.dialog.tabNameField = text
            onAccepted: sheet.dialog.importTab()
        }
        Text {
            objectName: "errorLabel"
            width: body.width - 2 * body.padding
            visible: text.length > 0
            text: sheet.dialog.errorLabel
            wrapMode: Text.Wrap
            color: Theme.destructive
            font.pixelSize: 14
        }
        Row {
            spacing: 10
            anchors.right: parent.right
            anchors.rightMargin: body.padding
            SheetButton { objectName: "cancelImportButt"; text: "Cancel"; onClicked: sheet.dialog.cancelImport() }
            SheetButton { objectName: "confirmImportButt"; text: "Import"; emphasized: true; onClicked: sheet.dialog.importTab() }
        }
    }
}
