#pragma once

#include <QtQml/qqmlextensionplugin.h>

// The app's QML modules are static: every program that loads them imports them once.
Q_IMPORT_QML_PLUGIN(Lutegrid_SurfacePlugin)
Q_IMPORT_QML_PLUGIN(Lutegrid_ShellPlugin)
Q_IMPORT_QML_PLUGIN(Lutegrid_EditorPlugin)
Q_IMPORT_QML_PLUGIN(Lutegrid_LibraryPlugin)
Q_IMPORT_QML_PLUGIN(Lutegrid_ExportPlugin)
Q_IMPORT_QML_PLUGIN(Lutegrid_ViewModePlugin)
Q_IMPORT_QML_PLUGIN(Lutegrid_AppPlugin)
