import QtQuick
import QtQuick.Controls.Basic
import Lutegrid.Shell

// One row of a list screen: an icon, a name, and a chevron when it leads somewhere.
AbstractButton {
    id: row
    property string iconName: ""
    property color iconTint: Theme.accent
    property bool chevron: true
    property string detail: ""
    implicitHeight: 56
    focusPolicy: Qt.NoFocus
    background: Rectangle {
        color: row.down ? Theme.pressed : Theme.raised
        Behavior on color { ColorAnimation { duration: 90 } }
    }
    contentItem: Item {
        Image {
            id: glyph
            visible: row.iconName.length > 0
            x: 16
            anchors.verticalCenter: parent.verticalCenter
            width: 24; height: 24
            sourceSize: Qt.size(48, 48)
            source: row.iconName.length ? "image://icon/" + row.iconName + "/" + row.iconTint : ""
        }
        Text {
            anchors.left: glyph.visible ? glyph.right : parent.left
            anchors.leftMargin: 16
            anchors.right: chevronImage.left
            anchors.rightMargin: 8
            anchors.verticalCenter: parent.verticalCenter
            text: row.text
            elide: Text.ElideRight
            color: Theme.label
            font.pixelSize: 17
        }
        Image {
            id: chevronImage
            visible: row.chevron
            anchors.right: parent.right
            anchors.rightMargin: 12
            anchors.verticalCenter: parent.verticalCenter
            width: row.chevron ? 18 : 0; height: 18
            sourceSize: Qt.size(36, 36)
            source: "image://icon/chevron/" + Theme.secondaryLabel
        }
        Rectangle {
            anchors.bottom: parent.bottom
            x: glyph.visible ? 56 : 16
            width: parent.width - x
            height: 1
            color: Theme.separator
        }
    }
}
