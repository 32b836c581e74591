import QtQuick
import Lutegrid.Surface
import Lutegrid.Shell
import Lutegrid.Editor

// Magic edit over the rows: the touch area that draws the band and drags the selection, the
// band itself, the cover over a moved block's source, the dragged block, and in row reorder
// mode a table of strings with a handle each over every shown row. Frames come from the
// editor in the surface's coordinates.
Item {
    id: layer
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
        enabled: layer.active && !layer.magic.rowReorderOn
        controller: layer.controller
        surface: layer.area
    }

    SelectionBlockView {
        objectName: "selectionCover"
        cover: true
        surface: layer.area
        visible: layer.active && layer.area.selectionCoverShown
        x: layer.area.x + layer.area.selectionCoverRect.x - layer.area.contentX
        y: layer.area.y + layer.area.selectionCoverRect.y - layer.area.contentY
        width: layer.area.selectionCoverRect.width
        height: layer.area.selectionCoverRect.height
    }

    Rectangle {
        objectName: "magicSelectionBand"
        visible: layer.active && layer.magic.bandShown
        x: layer.area.x + layer.band.x
        y: layer.area.y + layer.band.y
        width: Math.max(10, layer.band.width)
        height: Math.max(10, layer.band.height)
        color: SurfacePalette.colorEditColHighlightBg
        border.color: SurfacePalette.colorEditColHighlightBorder
        border.width: 3
    }

    SelectionBlockView {
        objectName: "magicEditDragView"
        surface: layer.area
        visible: layer.active && layer.magic.dragShown
        x: layer.area.x + layer.dragged.x
        y: layer.area.y + layer.dragged.y
        width: layer.dragged.width
        height: layer.dragged.height + 6
        z: 5
    }

    // Row reorder: each shown row's strings as strips that a handle drags to a new place.
    Repeater {
        model: layer.active && layer.magic.rowReorderOn ? layer.area.shownRowCount : 0
        delegate: Item {
            id: table
            objectName: "reorderTable" + index
            required property int index
            readonly property rect rowRect: layer.area.rowRects[index] ?? Qt.rect(0, 0, 0, 0)
            readonly property real itemHeight: layer.area.itemHeight
            x: layer.area.x + rowRect.x - layer.area.contentX
            y: layer.area.y + rowRect.y - layer.area.contentY
            width: Math.min(rowRect.width, layer.area.width) + (layer.area.freeScroll ? 0 : 20)
            height: rowRect.height
            Repeater {
                model: layer.area.stringNotes.length
                delegate: Rectangle {
                    id: strip
                    objectName: "reorderStrip" + table.index + "_" + index
                    required property int index
                    property real dragY: 0
                    y: index * table.itemHeight + dragY
                    z: handle.active ? 2 : 1
                    width: table.width
                    height: table.itemHeight
                    color: Theme.raised
                    border.color: handle.active ? Theme.accent : Theme.separator
                    border.width: handle.active ? 2 : 1
                    clip: true
                    TabRowView {
                        surface: layer.area
                        shownRow: table.index
                        x: -layer.area.contentX
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
                    DragHandler {
                        id: handle
                        target: null
                        xAxis.enabled: false
                        onTranslationChanged: strip.dragY = translation.y
                        onActiveChanged: {
                            if (active)
                                return
                            const to = Math.max(0, Math.min(layer.area.stringNotes.length - 1,
                                Math.round((strip.index * table.itemHeight + strip.dragY) / table.itemHeight)))
                            strip.dragY = 0
                            layer.magic.rowMoved(strip.index, to, table.index)
                        }
                    }
                }
            }
        }
    }
}
