#pragma once

#include <QPointer>
#include <QQuickItem>

class TabEditViewController;

// Over the rows in magic edit: fingers and the mouse draw the band and drag the selection,
// and a tap on the string letters at the left selects a whole string. Points reach the editor
// in the surface's frame. A press the editor doesn't take (a lyric field, say) goes on to what
// lies below. With Ctrl or Alt held at the drop, the mouse copies instead of moving.
class MagicTouchArea : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(
        QObject *controller READ controllerObject WRITE setController NOTIFY controllerChanged)
    Q_PROPERTY(QQuickItem *surface MEMBER surface NOTIFY controllerChanged)

public:
    explicit MagicTouchArea(QQuickItem *parent = nullptr);
    QObject *controllerObject() const;
    void setController(QObject *object);

Q_SIGNALS:
    void controllerChanged();

protected:
    void touchEvent(QTouchEvent *event) override;
    void touchUngrabEvent() override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseUngrabEvent() override;

private:
    bool press(int id, const QPointF &position);
    QPointF inSurface(const QPointF &position) const;
    void cancelAll();

    QPointer<TabEditViewController> controller;
    QPointer<QQuickItem> surface;
    QList<int> heldIds;
};
