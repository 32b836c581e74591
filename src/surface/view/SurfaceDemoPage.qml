import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Layouts
import Lutegrid.Surface

// A page to see and try the editing surface on a sample tab.
Rectangle {
    id: page
    color: SurfacePalette.colorSystemBg
    property alias surface: area

    ColumnLayout {
        anchors.fill: parent
        anchors.margins: 8
        spacing: 6

        Flow {
            Layout.fillWidth: true
            spacing: 4
            Repeater {
                model: ["Undo", "Redo", "+Col", "-Col", "Bar", "Clear", "+Row", "Notes", "Dark"]
                delegate: Button {
                    required property string modelData
                    objectName: "demo" + modelData
                    text: modelData
                    checkable: modelData === "Notes" || modelData === "Dark"
                    enabled: modelData === "Undo" ? area.canUndo
                           : modelData === "Redo" ? area.canRedo : true
                    onClicked: {
                        switch (modelData) {
                        case "Undo": area.undo(); break
                        case "Redo": area.redo(); break
                        case "+Col": area.addColumn(); break
                        case "-Col": area.removeColumn(); break
                        case "Bar": area.toggleBar(); break
                        case "Clear": area.clearColumn(); break
                        case "+Row": area.addRow(); break
                        case "Notes": area.notesOnTab = checked; break
                        case "Dark": SurfacePalette.dark = checked; break
                        }
                    }
                }
            }
        }

        Label {
            objectName: "demoMessage"
            Layout.fillWidth: true
            text: area.message
            color: SurfacePalette.colorEditColItemIndicator
            visible: text.length > 0
        }

        RowLayout {
            Layout.fillWidth: true
            Layout.fillHeight: true
            spacing: 0

            LetterStringSpacedView {
                Layout.preferredWidth: 28
                Layout.fillHeight: true
                letters: area.stringNotes
                numItemGroups: area.shownRowCount
                topPadding: area.headerBandHeight
                itemSpacing: area.tabRowVertSpacing
            }

            TabEditArea {
                id: area
                objectName: "surface"
                rowsWanted: 2
                Layout.fillWidth: true
                Layout.fillHeight: true
                Component.onCompleted: loadTab("qrc:/Lutegrid/Surface/demo.lgrd")
            }
        }

        Flow {
            Layout.fillWidth: true
            spacing: 4
            Repeater {
                model: 13
                delegate: Button {
                    required property int index
                    objectName: "fret" + index
                    text: index
                    width: 40
                    onClicked: area.tapFret(index)
                }
            }
        }
    }
}
