import QtQuick
import QtQuick.Controls.Basic
import Lutegrid.Shell
import Lutegrid.Library

// A list of tabs, newest first or by name, with search, import, the new-tab button (in
// Deleted: "Clear"), swipe to delete, and each row's info.
Rectangle {
    id: page
    required property TabsListViewController list
    signal backRequested()
    color: Theme.background
    property TabInfoViewController info: null
    property ImportDialogViewController importDialog: null
    property bool choosingImport: false

    Connections {
        target: page.list
        function onPopRequested() { page.backRequested() }
        function onImportRequested(dialog) { page.choosingImport = false; page.importDialog = dialog }
        function onSearchKeyboardDismissed() { searchField.focus = false }
        function onImportPickerRequested() { page.choosingImport = true }
    }

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
                objectName: "importButt"
                visible: !page.list.deletedList
                iconName: "import"
                tint: Theme.accent
                onClicked: page.choosingImport = true
            },
            IconButton {
                objectName: "sortButt"
                iconName: "sort"
                tint: Theme.accent
                onClicked: page.list.showSortDialog()
            },
            IconButton {
                objectName: "newTabButt"
                visible: page.list.canMakeTabs
                iconName: "plus"
                tint: Theme.accent
                onClicked: page.list.newTab()
            },
            AbstractButton {
                objectName: "clearButt"
                visible: page.list.deletedList
                height: Theme.touchTarget
                width: clearText.implicitWidth + 24
                onClicked: page.list.newTab()
                background: Rectangle { radius: 10; color: Theme.destructive; opacity: parent.down ? 0.8 : 1 }
                contentItem: Text {
                    id: clearText
                    text: "Clear"
                    color: "white"
                    font.pixelSize: 16
                    font.weight: Font.DemiBold
                    horizontalAlignment: Text.AlignHCenter
                    verticalAlignment: Text.AlignVCenter
                }
            }
        ]
    }

    LgTextField {
        id: searchField
        objectName: "searchBar"
        anchors.top: nav.bottom
        anchors.topMargin: 8
        anchors.horizontalCenter: parent.horizontalCenter
        width: Math.min(parent.width, 720) - 24
        implicitHeight: 40
        leftPadding: 38
        placeholderText: "Search"
        text: page.list.searchText
        onTextEdited: page.list.searchText = text
        Keys.onEscapePressed: { page.list.searchText = ""; focus = false }
        Keys.onDownPressed: { tabList.forceActiveFocus(); tabList.currentIndex = 0 }
        Image {
            x: 10
            anchors.verticalCenter: parent.verticalCenter
            width: 20; height: 20
            sourceSize: Qt.size(40, 40)
            source: "image://icon/search/" + Theme.secondaryLabel
        }
    }

    ListView {
        id: tabList
        objectName: "tabList"
        anchors.top: searchField.bottom
        anchors.topMargin: 8
        anchors.bottom: parent.bottom
        width: Math.min(parent.width, 720)
        anchors.horizontalCenter: parent.horizontalCenter
        clip: true
        keyNavigationEnabled: true
        model: page.list.rows
        // Pull to refresh.
        onDragEnded: if (contentY < -80) page.list.refreshTriggered()
        delegate: TabRow {
            required property int index
            required property var modelData
            objectName: "tabRow" + index
            width: ListView.view.width
            text: modelData.name
            detail: modelData.detail
            hasInfo: !page.list.deletedList
            canDelete: page.list.canEditRows
            onClicked: page.list.openRow(index)
            onInfoClicked: page.info = page.list.tabInfoFor(index)
            onDeleteClicked: page.list.deleteRow(index)
            onContextMenuRequested: (position) => {
                if (page.list.deletedList)
                    return
                rowMenu.row = index
                rowMenu.popup(this, position)
            }
        }
    }

    Menu {
        id: rowMenu
        objectName: "rowMenu"
        property int row: -1
        background: Rectangle {
            implicitWidth: 220
            color: Theme.raised
            radius: 10
            border.width: 1
            border.color: Theme.separator
        }
        MenuItem {
            id: newWindowItem
            objectName: "openInNewWindowButt"
            implicitHeight: Theme.touchTarget
            text: "Open in New Window"
            onTriggered: page.list.openRowInNewWindow(rowMenu.row)
            background: Rectangle {
                radius: 10
                color: newWindowItem.highlighted || newWindowItem.down ? Theme.pressed : "transparent"
            }
            contentItem: Text {
                leftPadding: 8
                text: newWindowItem.text
                color: Theme.label
                font.pixelSize: 16
                verticalAlignment: Text.AlignVCenter
            }
        }
    }

    Column {
        objectName: "emptyList"
        visible: page.list.emptyText.length > 0 && !page.list.busy
        anchors.centerIn: tabList
        width: Math.min(parent.width - 48, 420)
        spacing: 18
        Row {
            anchors.horizontalCenter: parent.horizontalCenter
            spacing: 4
            Text {
                objectName: "emptyText"
                width: Math.min(implicitWidth, page.width - 100)
                anchors.verticalCenter: parent.verticalCenter
                horizontalAlignment: Text.AlignHCenter
                text: page.list.emptyText
                wrapMode: Text.Wrap
                color: Theme.secondaryLabel
                font.pixelSize: 20
            }
            IconButton {
                objectName: "helpButt"
                visible: page.list.emptyHasHelp
                iconName: "info"
                tint: Theme.accent
                onClicked: page.list.showHelp()
            }
        }
        AbstractButton {
            visible: page.list.canMakeTabs && page.list.searchText.length === 0
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
        // An empty folder label can go.
        AbstractButton {
            objectName: "removeFolderButt"
            visible: page.list.title !== "All Tabs" && !page.list.deletedList
                     && page.list.emptyText.length > 0 && page.list.searchText.length === 0
                     && page.list.title !== "Unlabeled Tabs"
            anchors.horizontalCenter: parent.horizontalCenter
            implicitWidth: removeLabel.implicitWidth + 32
            implicitHeight: 44
            onClicked: page.list.deleteRow(-1)
            background: Rectangle { radius: 22; color: parent.down ? Theme.pressed : "transparent"; border.width: 1; border.color: Theme.destructive }
            contentItem: Text {
                id: removeLabel
                text: "Remove Folder"
                color: Theme.destructive
                font.pixelSize: 16
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

    Loader {
        anchors.fill: parent
        z: 10
        active: page.info !== null
        sourceComponent: TabInfoView { info: page.info }
    }
    Connections {
        target: page.info
        function onFinished() { page.info = null }
    }
    Loader {
        anchors.fill: parent
        z: 11
        active: page.choosingImport
        sourceComponent: FileChooserView {
            title: "Import a tab"
            suffixes: page.list.importSuffixes
            emptyText: "No tab files here"
            onCancelled: page.choosingImport = false
            onChosen: (path) => page.list.startImport(path)
        }
    }
    Loader {
        anchors.fill: parent
        z: 10
        active: page.importDialog !== null
        sourceComponent: ImportDialogView { dialog: page.importDialog }
    }
    Connections {
        target: page.importDialog
        function onFinished() { page.importDialog = null }
    }
}
