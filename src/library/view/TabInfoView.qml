import QtQuick
import QtQuick.Controls.Basic
import Lutegrid.Shell
import Lutegrid.Library

// The tab info dialog: the name, to rename or copy the tab, and its folder labels.
SheetLayer {
    id: sheet
    required property TabInfoViewController info
    objectName: "tabInfoView"
    onCancelled: {
        if (info.addTagShown) info.cancelAddTag()
        else if (info.removeTagShown) info.cancelRemoveTag()
        else info.cancel()
    }

    Column {
        id: body
        width: sheet.panel.width
        padding: 20
        spacing: 14
        readonly property real inner: width - 2 * padding

        Text {
            text: "Tab Info"
            color: Theme.label
            font.pixelSize: 19
            font.weight: Font.DemiBold
        }
        LgTextField {
            id: nameField
            objectName: "nameField"
            width: body.inner
            text: sheet.info.nameField
            placeholderText: "Tab name"
            focus: !sheet.info.addTagShown
            onTextEdited: sheet.info.setName(text)
            onAccepted: sheet.info.confirm(false)
        }
        Text {
            objectName: "errorLabel"
            width: body.inner
            visible: text.length > 0
            text: sheet.info.errorLabel
            wrapMode: Text.Wrap
            color: Theme.destructive
            font.pixelSize: 14
        }
        Text {
            visible: !sheet.info.tagsHidden
            text: "Folders"
            color: Theme.secondaryLabel
            font.pixelSize: 13
        }
        Flow {
            id: tagsContainer
            objectName: "tagsContainer"
            width: body.inner
            visible: !sheet.info.tagsHidden
            spacing: 8
            Repeater {
                model: sheet.info.tagSet
                // The taller cell makes the gap between rows of pills 10.
                Item {
                    required property string modelData
                    required property int index
                    width: pill.implicitWidth
                    height: 38
                    TagLabelButton {
                        id: pill
                        objectName: "tag" + parent.index
                        text: parent.modelData
                        width: implicitWidth
                        touchHandler: function(t) { sheet.info.askRemoveTag(t) }
                    }
                }
            }
            AbstractButton {
                objectName: "addTagButt"
                width: 100
                height: 28
                focusPolicy: Qt.StrongFocus
                Keys.onReturnPressed: clicked()
                onClicked: sheet.info.showAddTag()
                background: Rectangle {
                    radius: 8
                    color: parent.down ? Theme.pressed : "transparent"
                    border.width: parent.visualFocus ? 2 : 1
                    border.color: Theme.accent
                }
                contentItem: Text {
                    text: "+ add folder"
                    color: Theme.accent
                    font.pixelSize: 14
                    horizontalAlignment: Text.AlignHCenter
                    verticalAlignment: Text.AlignVCenter
                }
            }
        }
        Row {
            spacing: 10
            anchors.right: parent.right
            anchors.rightMargin: body.padding
            SheetButton { objectName: "cancelButt"; text: "Cancel"; onClicked: sheet.info.cancel() }
            SheetButton { objectName: "copyButt"; text: "Copy"; onClicked: sheet.info.confirm(true) }
            SheetButton { objectName: "okButt"; text: "OK"; emphasized: true; onClicked: sheet.info.confirm(false) }
        }
    }

    // The sheet that adds a label, over the dialog's own content.
    Rectangle {
        objectName: "addTagCoverView"
        visible: sheet.info.addTagShown
        width: sheet.panel.width
        height: Math.max(body.height, addColumn.height)
        radius: Theme.radius
        color: Theme.raised
        MouseArea { anchors.fill: parent }
        Column {
            id: addColumn
            width: parent.width
            padding: 20
            spacing: 12
            Text { text: "Add to folder"; color: Theme.label; font.pixelSize: 19; font.weight: Font.DemiBold }
            LgTextField {
                id: newTagField
                objectName: "newTagNameField"
                width: parent.width - 40
                placeholderText: "Folder name"
                text: sheet.info.newTagNameField
                focus: sheet.info.addTagShown
                onTextEdited: sheet.info.newTagNameField = text
                onAccepted: sheet.info.confirmAddTag()
                onVisibleChanged: if (visible) forceActiveFocus()
            }
            Text {
                visible: sheet.info.suggestedTags.length > 0
                text: "Existing folders"
                color: Theme.secondaryLabel
                font.pixelSize: 13
            }
            Flickable {
                objectName: "suggestedTagsContainer"
                width: parent.width - 40
                height: Math.min(suggestions.height, 144)
                contentHeight: suggestions.height
                clip: true
                Flow {
                    id: suggestions
                    width: parent.width
                    spacing: 8
                    Repeater {
                        model: sheet.info.suggestedTags
                        Item {
                            required property string modelData
                            required property int index
                            width: suggestion.implicitWidth
                            height: 38
                            TagLabelButton {
                                id: suggestion
                                objectName: "suggestion" + parent.index
                                text: parent.modelData
                                width: implicitWidth
                                touchHandler: function(t) { sheet.info.pickSuggestion(t) }
                            }
                        }
                    }
                }
            }
            Row {
                spacing: 10
                anchors.right: parent.right
                anchors.rightMargin: 20
                SheetButton { objectName: "cancelAddTagButt"; text: "Cancel"; onClicked: sheet.info.cancelAddTag() }
                SheetButton { objectName: "confirmAddTagButt"; text: "Add"; emphasized: true; onClicked: sheet.info.confirmAddTag() }
            }
        }
    }

    // The sheet that asks about removing a label.
    Rectangle {
        objectName: "removeTagCoverView"
        visible: sheet.info.removeTagShown
        width: sheet.panel.width
        height: body.height
        radius: Theme.radius
        color: Theme.raised
        MouseArea { anchors.fill: parent }
        Column {
            anchors.centerIn: parent
            width: parent.width - 40
            spacing: 16
            Text {
                objectName: "removeTagLabel"
                width: parent.width
                text: sheet.info.removeTagLabel
                wrapMode: Text.Wrap
                color: Theme.label
                font.pixelSize: 16
            }
            Row {
                spacing: 10
                anchors.right: parent.right
                SheetButton { objectName: "cancelRemoveTagButt"; text: "Cancel"; onClicked: sheet.info.cancelRemoveTag() }
                SheetButton {
                    objectName: "confirmRemoveTagButt"; text: "Remove"; emphasized: true; destructive: true
                    onClicked: sheet.info.confirmRemoveTag()
                }
            }
        }
    }
}
