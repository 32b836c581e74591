#pragma once

#include <QQuickImageProvider>

// Our SVG icons in any colour and size: "image://icon/<name>/<colour>". The drawings use
// currentColor, which is filled in before the SVG is rendered, so one drawing serves light
// and dark and every state.
class IconProvider : public QQuickImageProvider {
public:
    IconProvider();
    QImage requestImage(const QString &id, QSize *size, const QSize &requestedSize) override;
};
