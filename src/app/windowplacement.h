#pragma once

#include <QRect>
#include <QString>

class QWindow;

// The main window's size and place, kept between runs in a small file of its own. A first run
// on a desktop opens at a size that suits a mouse and a wide screen, not a phone's.
namespace WindowPlacement {

// "window.json" in the app's config folder.
QString placementFile();
// The saved frame, or an empty rect when there is none or the file is unreadable.
QRect savedGeometry(const QString &file = placementFile());
bool saveGeometry(const QRect &geometry, const QString &file = placementFile());
// The saved frame if it still lies on `available`, else `preferred` centred on `available`;
// always clamped to `available`.
QRect chooseGeometry(const QRect &saved, const QRect &available,
                     QSize preferred = QSize(1100, 760));
// Puts the window where it was (or at the first-run size) and saves its frame as it closes.
void restoreAndTrack(QWindow *window, const QString &file = placementFile());

} // namespace WindowPlacement
