#include "windowplacement.h"

#include "services/apppaths.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>
#include <QScreen>
#include <QWindow>

namespace WindowPlacement {

QString placementFile()
{
    return QDir(AppPaths::configDirectory()).filePath(u"window.json"_qs);
}

QRect savedGeometry(const QString &file)
{
    QFile in(file);
    if (!in.open(QIODevice::ReadOnly))
        return {};
    const QJsonObject object = QJsonDocument::fromJson(in.read(4096)).object();
    const QRect rect(object.value(u"x"_qs).toInt(), object.value(u"y"_qs).toInt(),
                     object.value(u"width"_qs).toInt(), object.value(u"height"_qs).toInt());
    // Anything a hand or another program broke counts as no saved place.
    if (rect.width() < 100 || rect.height() < 100 || rect.width() > 100000
        || rect.height() > 100000)
        return {};
    return rect;
}

bool saveGeometry(const QRect &geometry, const QString &file)
{
    if (!geometry.isValid() || !AppPaths::ensureDirectory(QFileInfo(file).absolutePath()))
        return false;
    QSaveFile out(file);
    if (!out.open(QIODevice::WriteOnly))
        return false;
    const QJsonObject object{{u"x"_qs, geometry.x()},
                             {u"y"_qs, geometry.y()},
                             {u"width"_qs, geometry.width()},
                             {u"height"_qs, geometry.height()}};
    out.write(QJsonDocument(object).toJson(QJsonDocument::Compact));
    return out.commit();
}

QRect chooseGeometry(const QRect &saved, const QRect &available, QSize preferred)
{
    if (!available.isValid())
        return saved.isValid() ? saved : QRect(QPoint(0, 0), preferred);
    // A screen that went away leaves the window nowhere to be seen: start afresh then.
    if (saved.isValid() && available.intersects(saved)) {
        QRect rect(saved.topLeft(), saved.size().boundedTo(available.size()));
        rect.moveLeft(qBound(available.left(), rect.left(), available.right() - rect.width() + 1));
        rect.moveTop(qBound(available.top(), rect.top(), available.bottom() - rect.height() + 1));
        return rect;
    }
    QRect rect(QPoint(0, 0), preferred.boundedTo(available.size()));
    rect.moveCenter(available.center());
    return rect;
}

void restoreAndTrack(QWindow *window, const QString &file)
{
    if (!window)
        return;
    const QRect available = window->screen() ? window->screen()->availableGeometry() : QRect();
    const QRect chosen = chooseGeometry(savedGeometry(file), available);
    window->setGeometry(chosen);
    // Saved as the window is hidden, which is how it leaves at quit.
    QObject::connect(window, &QWindow::visibleChanged, window, [window, file](bool visible) {
        if (!visible)
            saveGeometry(window->geometry(), file);
    });
}

} // namespace WindowPlacement
