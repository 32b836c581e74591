import QtQuick
import QtQuick.Controls.Basic
import Lutegrid.Surface

// The surface with its rows, lyric fields, cursor and note menu laid out from its geometry.
TabEditSurface {
    id: area

    // Shown rows from slideFromRow down stand slideOffset lower; with sliding on, they move home.
    property int slideFromRow: -1
    property real slideOffset: 0
    property bool sliding: false

    Item {
        id: content
        x: -area.contentX
        y: -area.contentY
        width: area.contentWidth
        height: area.contentHeight

        Repeater {
            model: area.shownRowCount
            delegate: Item {
                id: shownRow
                required property int index
                y: area.slideFromRow >= 0 && index >= area.slideFromRow ? area.slideOffset : 0
                Behavior on y {
                    enabled: area.sliding
                    NumberAnimation { duration: 100; easing.type: Easing.OutQuad }
                }
                readonly property rect rowRect: area.rowRects[index] ?? Qt.rect(0, 0, 0, 0)
                readonly property rect chordRect: area.chordRects[index] ?? Qt.rect(0, 0, 0, 0)
                readonly property rect lyricRect: area.lyricRects[index] ?? Qt.rect(0, 0, 0, 0)

                TextField {
                    id: lyricsField
                    objectName: "lyricsField" + shownRow.index
                    x: shownRow.lyricRect.x
                    y: shownRow.lyricRect.y
                    width: shownRow.lyricRect.width
                    height: shownRow.lyricRect.height
                    text: area.lyricTexts[shownRow.index] ?? ""
                    placeholderText: "lyrics"
                    font.family: "JetBrains Mono"
                    font.pixelSize: area.lyricFontSize
                    color: SurfacePalette.colorLabel
                    placeholderTextColor: SurfacePalette.colorSecondaryLabel
                    background: Rectangle {
                        radius: 6
                        color: SurfacePalette.colorFieldBg
                        border.color: Qt.alpha(SurfacePalette.colorSecondaryLabel, 0.35)
                    }
                    // What the user types goes to the surface, which writes the row a second
                    // after the last key; leaving the field writes it at once.
                    onTextEdited: area.lyricsFieldTextChanged(shownRow.index, text,
                                                              x + cursorRectangle.x,
                                                              x + cursorRectangle.x + cursorRectangle.width)
                    onEditingFinished: area.commitLyricsField()
                }
                ChordNamesDisplay {
                    objectName: "chordNames" + shownRow.index
                    surface: area
                    shownRow: shownRow.index
                    visible: !area.chordNamesHidden
                    x: shownRow.chordRect.x
                    y: shownRow.chordRect.y
                    width: shownRow.chordRect.width
                    height: shownRow.chordRect.height
                }
                TabRowView {
                    objectName: "tabRow" + shownRow.index
                    surface: area
                    shownRow: shownRow.index
                    x: shownRow.rowRect.x
                    y: shownRow.rowRect.y
                    width: shownRow.rowRect.width
                    height: shownRow.rowRect.height
                }
            }
        }

        Rectangle {
            objectName: "editColumnHighlight"
            visible: area.highlightVisible
            x: area.highlightRect.x
            y: area.highlightRect.y
            width: area.highlightRect.width
            height: area.highlightRect.height
            color: SurfacePalette.colorEditColHighlightBg
            border.color: SurfacePalette.colorEditColHighlightBorder
            border.width: area.editColBorderWidth
            radius: 2
        }
    }

    ForceContextMenuView {
        objectName: "noteMenu"
        anchors.fill: parent
        surface: area
        visible: open
        z: 10
    }
}
