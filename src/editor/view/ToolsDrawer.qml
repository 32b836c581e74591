import QtQuick
import QtQuick.Controls.Basic
import Lutegrid.Shell

// The tools drawer over the fretboard: the rarer operations on columns, rows and bars.
Rectangle {
    id: drawer
    objectName: "moreToolsCoverView"
    required property var controller
    color: Theme.background
    visible: controller !== null && controller.moreToolsViewShowing

    // The fretboard under the drawer takes no touch while it shows.
    MouseArea { anchors.fill: parent }

    component Group: Rectangle {
        default property alias buttons: groupRow.data
        property string title: ""
        width: Math.max(groupRow.width, groupTitle.implicitWidth) + 16
        height: 74
        radius: 10
        color: "transparent"
        border.width: 2
        border.color: Theme.accent
        Text {
            id: groupTitle
            x: 8; y: 4
            text: parent.title
            font.pixelSize: 12
            color: Theme.secondaryLabel
        }
        Row {
            id: groupRow
            x: 8; y: 22
            spacing: 4
        }
    }
    component Tool: IconButton {
        required property string label
        width: 64; height: 44
        contentItem: Row {
            spacing: 4
            Image {
                anchors.verticalCenter: parent.verticalCenter
                width: 22; height: 22
                sourceSize: Qt.size(44, 44)
                source: "image://icon/" + parent.parent.iconName + "/" + Theme.label
            }
            Text {
                anchors.verticalCenter: parent.verticalCenter
                text: parent.parent.label
                font.pixelSize: 13
                color: Theme.label
            }
        }
    }

    Flickable {
        id: moreToolsScrollView
        objectName: "moreToolsScrollView"
        anchors.fill: parent
        anchors.margins: 12
        contentWidth: width
        contentHeight: toolsFlow.y + toolsFlow.height + 10
        clip: true
        boundsBehavior: Flickable.StopAtBounds

        Text {
            text: "Tools"
            font.pixelSize: 20
            font.family: Theme.fontFamily
            font.weight: Font.Black
            color: Theme.label
        }
        IconButton {
            objectName: "moreToolsHelpButt"
            iconName: "help"
            x: parent.width - width
            onClicked: Qt.openUrlExternally("https://lutegrid.app/lutegrid/guide/#moreToolsSection")
        }
        Flow {
            id: toolsFlow
            y: 44
            width: parent.width
            spacing: 12
            Group {
                objectName: "colAddDeleteBorderView"
                title: "Column at the cursor"
                Tool { objectName: "addColumnButt"; iconName: "addcolumn"; label: "Add"; onClicked: drawer.controller.addTabColumn() }
                Tool { objectName: "deleteColumnButt"; iconName: "deletecolumn"; label: "Delete"; onClicked: drawer.controller.deleteTabColumn() }
            }
            Group {
                objectName: "rowAddDeleteBorderView"
                title: "Row at the cursor"
                Tool { objectName: "insertRowButt"; iconName: "insertrow"; label: "Insert"; width: 74; onClicked: drawer.controller.insertTabRow() }
                Tool { objectName: "drawerDeleteRowButt"; iconName: "deleterow"; label: "Delete"; onClicked: drawer.controller.deleteTabRow() }
            }
            Group {
                objectName: "rowAddBottomBorderView"
                title: "Row at the end"
                Tool { objectName: "drawerAddRowButt"; iconName: "addrow"; label: "Add"; onClicked: drawer.controller.addTabRow() }
            }
            Group {
                title: "Bar line"
                Tool { objectName: "putBarButt"; iconName: "bar"; label: "Bar"; onClicked: drawer.controller.putBarButtPress() }
            }
        }
    }
}
