import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Lutegrid.Shell

// The tab's intro, edited in a dialog of its own over the settings. Done hands the text to
// the settings dialog; the tab changes only when the settings are saved.
Rectangle {
    id: introEditor
    required property var dialog
    signal closed()
    visible: false
    color: Theme.dim
    function open() {
        introText.text = introEditor.dialog.introPreview
        visible = true
        introText.forceActiveFocus()
    }
    function done() {
        introEditor.dialog.introEdited(introText.text)
        visible = false
        introEditor.closed()
    }
    MouseArea { anchors.fill: parent; onClicked: { introEditor.visible = false; introEditor.closed() } }
    Rectangle {
        anchors.centerIn: parent
        width: Math.min(parent.width - 24, 520)
        height: Math.min(parent.height - 24, 360)
        radius: Theme.radius
        color: Theme.raised
        MouseArea { anchors.fill: parent }
        ColumnLayout {
            anchors.fill: parent
            anchors.margins: 16
            spacing: 12
            Text {
                text: "Tab intro"
                color: Theme.label
                font.pixelSize: 19
                font.weight: Font.DemiBold
            }
            ScrollView {
                Layout.fillWidth: true
                Layout.fillHeight: true
                TextArea {
                    id: introText
                    objectName: "introTextView"
                    wrapMode: TextEdit.Wrap
                    color: Theme.label
                    placeholderText: "A few lines shown before the tab"
                    placeholderTextColor: Theme.secondaryLabel
                    font.pixelSize: 16
                    Keys.onEscapePressed: { introEditor.visible = false; introEditor.closed() }
                    background: Rectangle { radius: 8; color: Theme.toolbar }
                }
            }
            DialogButton {
                objectName: "introDoneButt"
                Layout.fillWidth: true
                text: "Done"
                emphasized: true
                onClicked: introEditor.done()
            }
        }
    }
}
