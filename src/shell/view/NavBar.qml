import QtQuick
import QtQuick.Controls.Basic

// The bar over a screen: a back button when there is somewhere to go back to, and the title.
Rectangle {
    id: bar
    property string title: ""
    property bool canGoBack: false
    property string backTitle: ""
    property alias trailing: trailingSlot.data
    signal backClicked()
    height: 56
    color: Theme.background

    AbstractButton {
        id: back
        objectName: "backButton"
        visible: bar.canGoBack
        anchors.left: parent.left
        anchors.leftMargin: 4
        anchors.verticalCenter: parent.verticalCenter
        height: Theme.touchTarget
        width: Math.max(Theme.touchTarget, backRow.implicitWidth + 12)
        onClicked: bar.backClicked()
        background: Rectangle { radius: 10; color: back.down ? Theme.pressed : "transparent" }
        contentItem: Row {
            id: backRow
            spacing: 0
            leftPadding: 2
            Image {
                anchors.verticalCenter: parent.verticalCenter
                width: 24; height: 24
                sourceSize: Qt.size(48, 48)
                source: "image://icon/back/" + Theme.accent
            }
            Text {
                anchors.verticalCenter: parent.verticalCenter
                text: bar.backTitle
                color: Theme.accent
                font.pixelSize: 17
            }
        }
    }
    Text {
        objectName: "navTitle"
        anchors.centerIn: parent
        width: Math.min(implicitWidth, parent.width - 2 * Math.max(back.width, trailingSlot.width) - 24)
        elide: Text.ElideRight
        horizontalAlignment: Text.AlignHCenter
        text: bar.title
        color: Theme.label
        font.pixelSize: 17
        font.weight: Font.DemiBold
    }
    Row {
        id: trailingSlot
        anchors.right: parent.right
        anchors.rightMargin: 6
        anchors.verticalCenter: parent.verticalCenter
        spacing: 2
    }
    Rectangle {
        anchors.bottom: parent.bottom
        width: parent.width
        height: 1
        color: Theme.separator
    }
}
