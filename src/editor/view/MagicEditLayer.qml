import QtQuick
import Lutegrid.Surface
import Lutegrid.Shell
import Lutegrid.Editor

// Magic edit over the rows: the touch area that draws the band and drags the selection, the
// band itself, the cover over a moved block's source, the dragged block, and in row reorder
// mode a table of strings with a handle each over every shown row. Frames come from the
// editor in the surface's coordinates.
Item {
    id: magicLayer
    required property var controller
    required property TabEditSurface area
    readonly property var magic: controller ? controller.magic : null
    readonly property bool active: magic !== null && magic.active
    readonly property rect band: magic ? magic.bandRect : Qt.rect(0, 0, 0, 0)
    readonly property rect dragged: magic ? magic.dragRect : Qt.rect(0, 0, 0, 0)
    visible: active

    MagicTouchArea {
        objectName: "magicTouchArea"
        anchors.fill: parent
        enabled: magicLayer.active && !magicLayer.magic.rowReorderOn
        controller: magicLayer.controller
        surface: magicLayer.area
    }

    SelectionBlockView {
        objectName: "selectionCover"
        cover: true
        surface: magicLayer.area
        visible: magicLayer.active && magicLayer.area.selectionCoverShown
        x: magicLayer.area.x + magicLayer.area.selectionCoverRect.x - magicLayer.area.contentX
        y: magicLayer.area.y + magicLayer.area.selectionCoverRect.y - magicLayer.area.contentY
        width: magicLayer.area.selectionCoverRect.width
        height: magicLayer.area.selectionCoverRect.height
    }

    Rectangle {
        objectName: "magicSelectionBand"
        visible: magicLayer.active && magicLayer.magic.bandShown
        x: magicLayer.area.x + magicLayer.band.x
        y: magicLayer.area.y + magicLayer.band.y
        width: Math.max(10, magicLayer.band.width)
        height: Math.max(10, magicLayer.band.height)
        color: SurfacePalette.colorEditColHighlightBg
        border.color: SurfacePalette.colorEditColHighlightBorder
        border.width: 3
    }

    SelectionBlockView {
        objectName: "magicEditDragView"
        surface: magicLayer.area
        visible: magicLayer.active && magicLayer.magic.dragShown
        x: magicLayer.area.x + magicLayer.dragged.x
        y: magicLayer.area.y + magicLayer.dragged.y
        width: magicLayer.dragged.width
        height: magicLayer.dragged.height + 6
        z: 5
    }

    // Row reorder: each shown row's strings as strips that a handle drags to a new place.
    Repeater {
        model: magicLayer.active && magicLayer.magic.rowReorderOn ? magicLayer.area.shownRowCount : 0
        delegate: Item {
            id: table
            objectName: "reorderTable" + index
            required property int index
            readonly property rect rowRect: magicLayer.area.rowRects[index] ?? Qt.rect(0, 0, 0, 0)
            readonly property real itemHeight: magicLayer.area.itemHeight
            x: magicLayer.area.x + rowRect.x - magicLayer.area.contentX
            y: magicLayer.area.y + rowRect.y - magicLayer.area.contentY
            width: Math.min(rowRect.width, magicLayer.area.width) + (magicLayer.area.freeScroll ? 0 : 20)
            height: rowRect.height
            Repeater {
                model: magicLayer.area.stringNotes.length
                delegate: Rectangle {
                    id: strip
                    objectName: "reorderStrip" + table.index + "_" + index
                    required property int index
                    property real dragY: 0
                    y: index * table.itemHeight + dragY
                    z: strip.dragY !== 0 ? 2 : 1
                    width: table.width
                    height: table.itemHeight
                    color: Theme.raised
                    border.color: strip.dragY !== 0 ? Theme.accent : Theme.separator
                    border.width: strip.dragY !== 0 ? 2 : 1
                    clip: true
                    TabRowView {
                        surface: magicLayer.area
                        shownRow: table.index
                        x: -magicLayer.area.contentX
                        y: -strip.index * table.itemHeight
                        width: table.rowRect.width
                        height: table.rowRect.height
                    }
                    Image {
                        anchors.right: parent.right
                        anchors.rightMargin: 2
                        anchors.verticalCenter: parent.verticalCenter
                        width: Math.min(20, parent.height); height: width
                        sourceSize: Qt.size(40, 40)
                        source: "image://icon/draghandle/" + Theme.secondaryLabel
                    }
                    // Followed in the table's coordinates: the strip itself moves under the finger.
                    MouseArea {
                        anchors.fill: parent
                        preventStealing: true
                        property real startY: 0
                        property bool held: false
                        onPressed: (mouse) => {
                            startY = mapToItem(table, mouse.x, mouse.y).y
                            held = true
                        }
                        onPositionChanged: (mouse) => {
                            if (held)
                                strip.dragY = mapToItem(table, mouse.x, mouse.y).y - startY
                        }
                        onReleased: {
                            held = false
                            const to = Math.max(0, Math.min(magicLayer.area.stringNotes.length - 1,
                                Math.round((strip.index * table.itemHeight + strip.dragY) / table.itemHeight)))
                            strip.dragY = 0
                            magicLayer.magic.rowMoved(strip.index, to, table.index)
                        }
                        onCanceled: { held = false; strip.dragY = 0 }
                    }
                }
            }
        }
    }
}
