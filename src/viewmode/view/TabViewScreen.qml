import QtQuick
import QtQuick.Controls.Basic
import Lutegrid.Surface
import Lutegrid.Shell
import Lutegrid.ViewMode

// The view screen: the tab laid out to read on a page that scrolls, the column highlight,
// and the bar with play, the view options and export. Decisions are the controller's.
ViewModeScreenItem {
    id: screen
    objectName: "viewModeScreen"
    readonly property var c: controller

    Rectangle { anchors.fill: parent; color: Theme.background }

    Connections {
        target: screen.c
        function onScrollRequested(y, animated) {
            scrollAnimation.stop()
            if (animated) {
                scrollAnimation.to = y
                scrollAnimation.start()
            } else {
                page.contentY = y
            }
        }
    }

    Flickable {
        id: page
        objectName: "viewPage"
        y: nav.height
        width: parent.width
        height: parent.height - nav.height
        contentWidth: width
        contentHeight: Math.max(height, screen.c ? screen.c.contentHeight : 0)
        clip: true
        boundsBehavior: Flickable.StopAtBounds
        function report() { if (screen.c) screen.c.setScrollState(contentY, dragging || flicking && !scrollAnimation.running) }
        onWidthChanged: if (screen.c) screen.c.setViewSize(width, height)
        onHeightChanged: if (screen.c) screen.c.setViewSize(width, height)
        onContentYChanged: report()
        onDraggingChanged: report()
        Component.onCompleted: if (screen.c) screen.c.setViewSize(width, height)
        Connections {
            target: screen
            function onControllerChanged() { if (screen.c) screen.c.setViewSize(page.width, page.height) }
        }

        NumberAnimation {
            id: scrollAnimation
            target: page
            property: "contentY"
            duration: 300
            easing.type: Easing.InOutQuad
        }

        Item {
            id: stackContent
            width: page.width
            height: page.contentHeight
            transformOrigin: Item.Top

            TapHandler {
                onTapped: (eventPoint) => {
                    if (screen.c)
                        screen.c.handleTap(eventPoint.position.x, eventPoint.position.y)
                    screen.forceActiveFocus()
                }
            }

            Text {
                id: intro
                objectName: "introText"
                visible: text.length > 0
                // From the page's width, not the stack's: the stack follows this text's height.
                readonly property real stackWidth: Math.max(1, page.width - 32)
                x: 16 + stackWidth * 0.038
                y: 12
                width: stackWidth * (1 - 0.038)
                text: screen.c ? screen.c.introText : ""
                wrapMode: Text.Wrap
                textFormat: Text.PlainText
                color: Theme.label
                font.pixelSize: Math.min(20, Math.max(13, stackWidth * 0.031))
                onHeightChanged: if (screen.c && visible) screen.c.setIntroHeight(height)
                onVisibleChanged: if (screen.c) screen.c.setIntroHeight(visible ? height : 0)
            }

            Repeater {
                model: screen.rowsModel
                delegate: Item {
                    id: entryItem
                    required property int entry
                    readonly property rect frame: {
                        screen.c.layoutRevision
                        return screen.c.entryFrame(entry)
                    }
                    // Only entries near the visible page keep a painted row.
                    readonly property bool near: frame.y + frame.height > page.contentY - page.height
                                                 && frame.y < page.contentY + 2 * page.height
                    x: frame.x
                    y: frame.y
                    width: frame.width
                    height: frame.height
                    Loader {
                        anchors.fill: parent
                        active: entryItem.near
                        sourceComponent: ViewModeRow {
                            objectName: "viewModeRow"
                            controller: screen.c
                            entry: entryItem.entry
                            onWidthChanged: update()
                            onHeightChanged: update()
                        }
                    }
                }
            }

            Rectangle {
                id: columnHighlight
                objectName: "columnHighlight"
                readonly property rect box: screen.c ? screen.c.highlightRect : Qt.rect(0, 0, 0, 0)
                readonly property real borderWidth: width * 3 / 28
                visible: screen.c !== null && screen.c.highlightVisible && box.width > 0
                x: box.x
                y: box.y
                width: box.width
                height: box.height
                color: SurfacePalette.colorEditColHighlightBg
                border.color: SurfacePalette.colorEditColHighlightBorder
                border.width: borderWidth
                Rectangle {
                    x: parent.width - parent.borderWidth
                    width: parent.borderWidth
                    height: parent.height
                    color: SurfacePalette.colorEditColItemIndicator
                }
            }
        }

        // Pinch to zoom: the page keeps the size it was pinched to.
        PinchHandler {
            target: stackContent
            minimumScale: 0.5
            maximumScale: 3
            xAxis.enabled: false
            yAxis.enabled: false
            minimumRotation: 0
            maximumRotation: 0
        }
    }

    Text {
        objectName: "emptyTabText"
        visible: screen.c !== null && screen.c.entryCount === 0 && screen.c.introText.length === 0
        anchors.centerIn: page
        text: "This tab has no rows yet."
        color: Theme.secondaryLabel
        font.pixelSize: 16
    }

    NavBar {
        id: nav
        width: parent.width
        title: screen.c ? screen.c.title : ""
        canGoBack: true
        backTitle: "Edit"
        onBackClicked: screen.close()
        trailing: [
            IconButton {
                objectName: "exportButt"
                iconName: "exportdoc"
                tint: Theme.accent
                onClicked: screen.requestExport()
            },
            IconButton {
                objectName: "viewMenuButt"
                iconName: "sliders"
                tint: Theme.accent
                onClicked: screen.openViewOptions()
            },
            IconButton {
                objectName: "playPauseButt"
                width: 52
                iconName: screen.c && screen.c.isPlaying ? "pause" : "play"
                tint: Theme.accent
                emphasized: screen.c !== null && screen.c.isPlaying
                onClicked: { screen.playPausePress(); screen.forceActiveFocus() }
            }
        ]
    }

    ViewModeDialogView {
        objectName: "viewOptionsDialog"
        anchors.fill: parent
        dialog: screen.optionsDialog
        visible: screen.optionsDialog !== null
        z: 20
    }
}
