import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Lutegrid.Shell

// A stepper of the settings: minus, the value, plus; buttons of a full touch target.
Row {
    id: stepper
    property string text: ""
    property string name: ""
    property bool canDown: true
    property bool canUp: true
    signal down()
    signal up()
    spacing: 4
    activeFocusOnTab: true
    Keys.onLeftPressed: if (canDown) down()
    Keys.onRightPressed: if (canUp) up()
    Keys.onDownPressed: if (canDown) down()
    Keys.onUpPressed: if (canUp) up()
    StepButton { objectName: stepper.name + "Down"; label: "−"; enabled: stepper.canDown; onClicked: stepper.down() }
    Text {
        objectName: stepper.name + "Label"
        width: 56
        height: Theme.touchTarget
        text: stepper.text
        color: Theme.label
        font.pixelSize: 17
        font.weight: Font.DemiBold
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        Rectangle {
            anchors.fill: parent
            anchors.margins: 4
            radius: 8
            color: "transparent"
            border.color: Theme.accent
            border.width: 1.5
            visible: stepper.activeFocus
        }
    }
    StepButton { objectName: stepper.name + "Up"; label: "+"; enabled: stepper.canUp; onClicked: stepper.up() }

    component StepButton: AbstractButton {
        id: stepButton
        property string label: ""
        width: Theme.touchTarget
        height: Theme.touchTarget
        focusPolicy: Qt.NoFocus
        opacity: enabled ? 1 : 0.3
        background: Rectangle {
            radius: 10
            color: stepButton.down ? Theme.pressed : Theme.toolbar
        }
        contentItem: Text {
            text: stepButton.label
            color: Theme.accent
            font.pixelSize: 22
            horizontalAlignment: Text.AlignHCenter
            verticalAlignment: Text.AlignVCenter
        }
    }
}
