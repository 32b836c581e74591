#pragma once

#include "surface/stringspacedview.h"

#include <QQuickPaintedItem>
#include <QStringList>
#include <QVariantList>

// The tuning letters beside the tab or the fretboard, with open-string marks and the capo.
class LetterStringSpacedViewItem : public QQuickPaintedItem {
    Q_OBJECT
    QML_NAMED_ELEMENT(LetterStringSpacedView)
    Q_PROPERTY(QStringList letters READ letters WRITE setLetters NOTIFY changed)
    Q_PROPERTY(int numItemGroups READ numItemGroups WRITE setNumItemGroups NOTIFY changed)
    Q_PROPERTY(qreal topPadding READ topPadding WRITE setTopPadding NOTIFY changed)
    Q_PROPERTY(qreal itemSpacing READ itemSpacing WRITE setItemSpacing NOTIFY changed)
    Q_PROPERTY(int capoNum READ capoNum WRITE setCapo NOTIFY changed)
    Q_PROPERTY(bool forceBlack MEMBER forceBlack NOTIFY changed)

public:
    explicit LetterStringSpacedViewItem(QQuickItem *parent = nullptr);

    QStringList letters() const { return letterList; }
    void setLetters(const QStringList &letters);
    int numItemGroups() const { return layout.numItemGroups; }
    void setNumItemGroups(int count);
    qreal topPadding() const { return layout.topPadding; }
    void setTopPadding(qreal padding);
    qreal itemSpacing() const { return layout.itemSpacing; }
    void setItemSpacing(qreal spacing);
    int capoNum() const { return capo; }
    void setCapo(int fret);
    // Strings counted from 1 at the top line whose open string is held.
    Q_INVOKABLE void showOpenStringHighlights(const QVariantList &stringNums);
    bool forceBlack = false;

    void paint(QPainter *painter) override;

Q_SIGNALS:
    void changed();
    // A touch on a letter: the string from 1 at the top, and the row group.
    void stringTouched(int stringNum, int group);

protected:
    void mousePressEvent(QMouseEvent *event) override;

private:
    StringSpacedView layout;
    QStringList letterList;
    QList<bool> fretHighlights;
    int capo = 0;
};
