pragma Singleton
import QtQuick
import Lutegrid.Surface

// The colours and measures of the app's chrome, in step with the surface's light or dark.
QtObject {
    readonly property bool dark: SurfacePalette.dark
    readonly property color background: SurfacePalette.colorSystemBg
    readonly property color raised: dark ? "#1f2026" : "#ffffff"
    readonly property color toolbar: dark ? "#1b1c21" : "#f3f0e9"
    readonly property color separator: dark ? "#33343b" : "#e2ddd3"
    readonly property color label: SurfacePalette.colorLabel
    readonly property color secondaryLabel: SurfacePalette.colorSecondaryLabel
    readonly property color accent: dark ? "#5aa2ff" : "#1f6fd6"
    readonly property color accentSoft: dark ? "#263a57" : "#dce9fb"
    readonly property color destructive: dark ? "#ff6b5e" : "#d23b2e"
    readonly property color pressed: dark ? "#2c2d35" : "#e9e4da"
    readonly property color dim: dark ? "#b3000000" : "#73000000"
    readonly property color fretboardWood: dark ? "#2a1d15" : "#3b2a1e"
    readonly property color fretboardWoodLight: dark ? "#35251a" : "#4a3526"
    readonly property int touchTarget: 44
    readonly property int radius: 14
    readonly property string fontFamily: "League Spartan"
}
