#pragma once

#include "tabeditsurface.h"

#include <QPointer>
#include <QQuickPaintedItem>

// The ring of the note menu, drawn over the surface while a held note's menu is open.
class ForceContextMenuView : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(TabEditSurface *surface READ surface WRITE setSurface NOTIFY surfaceChanged)
    Q_PROPERTY(bool open READ isOpen NOTIFY openChanged)

public:
    explicit ForceContextMenuView(QQuickItem *parent = nullptr);

    TabEditSurface *surface() const { return host; }
    void setSurface(TabEditSurface *surface);
    bool isOpen() const;

    void paint(QPainter *painter) override;

Q_SIGNALS:
    void surfaceChanged();
    void openChanged();

private:
    QPointer<TabEditSurface> host;
};
