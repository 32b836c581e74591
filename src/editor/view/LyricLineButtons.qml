import QtQuick
import QtQuick.Controls.Basic
import Lutegrid.Shell

// The hamburger at the left of each shown row's lyric band, which opens that row's lines.
Item {
    id: buttons
    required property var area
    required property var dropdown
    y: -area.contentY
    height: area.contentHeight

    Repeater {
        model: buttons.dropdown ? buttons.area.shownRowCount : 0
        delegate: AbstractButton {
            required property int index
            readonly property rect lyricRect: buttons.area.lyricRects[index] ?? Qt.rect(0, 0, 0, 0)
            objectName: "lyricLineButt" + index
            x: (buttons.width - 27) * 0.5
            y: lyricRect.y + 5
            width: 27
            height: 29
            focusPolicy: Qt.NoFocus
            onClicked: buttons.dropdown.lyricLineButtPress(index)
            background: Rectangle {
                radius: 5
                color: buttons.dropdown.activeLyricRowIndex === index ? Theme.accentSoft
                                                                      : "transparent"
            }
            contentItem: Image {
                fillMode: Image.PreserveAspectFit
                sourceSize: Qt.size(40, 40)
                opacity: parent.down ? 0.5 : 1
                source: "image://icon/lyrics/" + Theme.secondaryLabel
            }
        }
    }
}
