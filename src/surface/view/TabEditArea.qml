import QtQuick
import QtQuick.Controls.Basic
import Lutegrid.Surface

// The surface with its rows, lyric fields, cursor and note menu laid out from its geometry.
TabEditSurface {
    id: surface

    Item {
        id: content
        x: -surface.contentX
        y: -surface.contentY
        width: surface.contentWidth
        height: surface.contentHeight

        Repeater {
            model: surface.shownRowCount
            delegate: Item {
                id: shownRow
                required property int index
                readonly property rect rowRect: surface.rowRects[index] ?? Qt.rect(0, 0, 0, 0)
                readonly property rect chordRect: surface.chordRects[index] ?? Qt.rect(0, 0, 0, 0)
                readonly property rect lyricRect: surface.lyricRects[index] ?? Qt.rect(0, 0, 0, 0)

                TextField {
                    objectName: "lyricsField" + shownRow.index
                    x: shownRow.lyricRect.x
                    y: shownRow.lyricRect.y
                    width: shownRow.lyricRect.width
                    height: shownRow.lyricRect.height
                    text: surface.lyricTexts[shownRow.index] ?? ""
                    placeholderText: "lyrics"
                    font.family: "JetBrains Mono"
                    font.pixelSize: surface.lyricFontSize
                    color: SurfacePalette.colorLabel
                    placeholderTextColor: SurfacePalette.colorSecondaryLabel
                    background: Rectangle {
                        radius: 6
                        color: SurfacePalette.colorFieldBg
                        border.color: Qt.alpha(SurfacePalette.colorSecondaryLabel, 0.35)
                    }
                }
                ChordNamesDisplay {
                    objectName: "chordNames" + shownRow.index
                    surface: surface
                    shownRow: shownRow.index
                    visible: !surface.chordNamesHidden
                    x: shownRow.chordRect.x
                    y: shownRow.chordRect.y
                    width: shownRow.chordRect.width
                    height: shownRow.chordRect.height
                }
                TabRowView {
                    objectName: "tabRow" + shownRow.index
                    surface: surface
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
            visible: surface.highlightVisible
            x: surface.highlightRect.x
            y: surface.highlightRect.y
            width: surface.highlightRect.width
            height: surface.highlightRect.height
            color: SurfacePalette.colorEditColHighlightBg
            border.color: SurfacePalette.colorEditColHighlightBorder
            border.width: surface.editColBorderWidth
            radius: 2
        }
    }

    ForceContextMenuView {
        objectName: "noteMenu"
        anchors.fill: parent
        surface: surface
        visible: open
        z: 10
    }
}
