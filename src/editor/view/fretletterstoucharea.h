#pragma once

#include <QPointer>
#include <QQuickItem>

class TabEditViewController;

// The touch side of the letters left of the fretboard: a finger on a letter holds that open
// string until it lifts. Drawing is the letter strip's; this only names the string.
class FretLettersTouchArea : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(
        QObject *controller READ controllerObject WRITE setController NOTIFY controllerChanged)
    Q_PROPERTY(int numStrings MEMBER numStrings NOTIFY controllerChanged)

public:
    explicit FretLettersTouchArea(QQuickItem *parent = nullptr);
    QObject *controllerObject() const;
    void setController(QObject *object);

Q_SIGNALS:
    void controllerChanged();

protected:
    void touchEvent(QTouchEvent *event) override;
    void touchUngrabEvent() override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseUngrabEvent() override;

private:
    int stringAt(double y) const;
    void press(int id, double y);
    void release(int id);
    void cancel();

    QPointer<TabEditViewController> controller;
    int numStrings = 6;
    // The finger that holds the open string; others on the strip count for nothing.
    int heldId = -2;
};
