#include "iconprovider.h"

#include <QBuffer>
#include <QFile>
#include <QImageReader>

IconProvider::IconProvider() : QQuickImageProvider(QQuickImageProvider::Image) {}

QImage IconProvider::requestImage(const QString &id, QSize *size, const QSize &requestedSize)
{
    const qsizetype slash = id.indexOf(u'/');
    const QString name = slash < 0 ? id : id.left(slash);
    const QString color = slash < 0 ? u"#000000"_qs : id.mid(slash + 1);
    QFile file(u":/icons/"_qs + name + u".svg"_qs);
    if (!file.open(QIODevice::ReadOnly))
        return QImage();
    QByteArray svg = file.readAll();
    svg.replace("currentColor", color.toUtf8());
    QBuffer buffer(&svg);
    QImageReader reader(&buffer, "svg");
    const QSize wanted =
        requestedSize.isValid() && !requestedSize.isEmpty() ? requestedSize : QSize(24, 24);
    reader.setScaledSize(wanted);
    QImage image = reader.read();
    if (size)
        *size = image.size();
    return image;
}
