import QtQuick
import QtQuick.Controls.Basic
import Lutegrid.Shell

// One tab in a list: its name, when it was changed and its labels; swiped left (or with the
// Delete key) it offers Delete; the info button opens the tab's info. A long press, a right
// click or the Menu key asks for the row's context menu.
SwipeDelegate {
    id: row
    property string detail: ""
    property bool hasInfo: true
    property bool canDelete: true
    signal infoClicked()
    signal deleteClicked()
    signal contextMenuRequested(point position)
    onPressAndHold: row.contextMenuRequested(Qt.point(row.pressX, row.pressY))
    Keys.onMenuPressed: row.contextMenuRequested(Qt.point(row.width / 2, row.height / 2))
    // Takes the right button only: the left one and touches still reach the row.
    MouseArea {
        anchors.fill: parent
        acceptedButtons: Qt.RightButton
        onClicked: (mouse) => row.contextMenuRequested(Qt.point(mouse.x, mouse.y))
    }
    implicitHeight: detail.length ? 64 : 56
    padding: 0
    focusPolicy: Qt.StrongFocus
    swipe.enabled: canDelete
    Keys.onDeletePressed: if (canDelete) row.deleteClicked()
    Keys.onReturnPressed: row.clicked()

    background: Rectangle {
        color: row.down ? Theme.pressed : Theme.raised
        border.width: row.visualFocus ? 2 : 0
        border.color: Theme.accent
    }
    contentItem: Item {
        Image {
            id: glyph
            x: 16
            anchors.verticalCenter: parent.verticalCenter
            width: 24; height: 24
            sourceSize: Qt.size(48, 48)
            source: "image://icon/tab/" + Theme.accent
        }
        Column {
            anchors.left: glyph.right
            anchors.leftMargin: 16
            anchors.right: infoButt.left
            anchors.rightMargin: 4
            anchors.verticalCenter: parent.verticalCenter
            spacing: 2
            Text {
                width: parent.width
                text: row.text
                elide: Text.ElideRight
                color: Theme.label
                font.pixelSize: 17
            }
            Text {
                objectName: "rowDetail"
                width: parent.width
                visible: row.detail.length > 0
                text: row.detail
                elide: Text.ElideRight
                color: Theme.secondaryLabel
                font.pixelSize: 13
            }
        }
        IconButton {
            id: infoButt
            objectName: "infoButt"
            visible: row.hasInfo
            width: row.hasInfo ? Theme.touchTarget : 0
            anchors.right: parent.right
            anchors.rightMargin: 6
            anchors.verticalCenter: parent.verticalCenter
            iconName: "info"
            tint: Theme.accent
            onClicked: row.infoClicked()
        }
        Rectangle {
            anchors.bottom: parent.bottom
            x: 56
            width: parent.width - x
            height: 1
            color: Theme.separator
        }
    }
    swipe.right: AbstractButton {
        objectName: "swipeDeleteButt"
        width: 96
        height: row.height
        anchors.right: parent.right
        onClicked: { row.swipe.close(); row.deleteClicked() }
        background: Rectangle { color: Theme.destructive }
        contentItem: Text {
            text: "Delete"
            color: "white"
            font.pixelSize: 16
            font.weight: Font.DemiBold
            horizontalAlignment: Text.AlignHCenter
            verticalAlignment: Text.AlignVCenter
        }
    }
}
