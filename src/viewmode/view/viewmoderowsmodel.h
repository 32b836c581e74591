#pragma once

#include <QAbstractListModel>
#include <QPointer>

class TabViewController;

// The entries of the page as a list model, so the screen's repeater makes only the new ones
// as each batch of rows comes in.
class ViewModeRowsModel : public QAbstractListModel {
    Q_OBJECT

public:
    explicit ViewModeRowsModel(TabViewController *controller, QObject *parent = nullptr);

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

private:
    QPointer<TabViewController> controller;
    int shown = 0;
};
