import QtQuick
import QtQuick.Controls.Basic
import Lutegrid.Shell
import Lutegrid.Library

// A list of tabs, newest first, with the button that makes a new one.
Rectangle {
    id: page
    required property TabsListViewController list
    signal backRequested()
    color: Theme.background

    NavBar {
        id: nav
        width: parent.width
        title: page.list.title
        canGoBack: true
        backTitle: "Folders"
        onBackClicked: page.backRequested()
        z: 1
        trailing: [
            IconButton {
                objectName: "newTabButt"
                visible: page.list.canMakeTabs
                iconName: "plus"
                tint: Theme.accent
                onClicked: page.list.newTab()
            }
        ]
    }

    ListView {
        id: tabList
        objectName: "tabList"
        anchors.top: nav.bottom
        anchors.bottom: parent.bottom
        width: Math.min(parent.width, 720)
        anchors.horizontalCenter: parent.horizontalCenter
        clip: true
        model: page.list.rowNames
        delegate: ListRow {
            required property int index
            required property string modelData
            objectName: "tabRow" + index
            width: ListView.view.width
            text: modelData
            iconName: "tab"
            onClicked: page.list.openRow(index)
        }
    }

    Column {
        objectName: "emptyList"
        visible: page.list.emptyText.length > 0 && !page.list.busy
        anchors.centerIn: tabList
        width: Math.min(parent.width - 48, 420)
        spacing: 18
        Text {
            objectName: "emptyText"
            width: parent.width
            horizontalAlignment: Text.AlignHCenter
            text: page.list.emptyText
            wrapMode: Text.Wrap
            color: Theme.secondaryLabel
            font.pixelSize: 20
        }
        AbstractButton {
            visible: page.list.canMakeTabs
            anchors.horizontalCenter: parent.horizontalCenter
            implicitWidth: newLabel.implicitWidth + 48
            implicitHeight: 48
            onClicked: page.list.newTab()
            background: Rectangle { radius: 24; color: Theme.accent; opacity: parent.down ? 0.85 : 1 }
            contentItem: Text {
                id: newLabel
                text: "New tab"
                color: "white"
                font.pixelSize: 17
                font.weight: Font.DemiBold
                horizontalAlignment: Text.AlignHCenter
                verticalAlignment: Text.AlignVCenter
            }
        }
    }

    BusyIndicator {
        objectName: "loadingView"
        anchors.centerIn: parent
        running: page.list.busy
        visible: running
    }
}
