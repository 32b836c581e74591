#include "viewmoderowsmodel.h"

#include "viewmode/tabviewcontroller.h"

ViewModeRowsModel::ViewModeRowsModel(TabViewController *c, QObject *parent)
    : QAbstractListModel(parent), controller(c)
{
    shown = c->entryCount();
    connect(c, &TabViewController::entriesAppended, this, [this] {
        const int count = controller->entryCount();
        if (count <= shown)
            return;
        beginInsertRows({}, shown, count - 1);
        shown = count;
        endInsertRows();
    });
    connect(c, &TabViewController::entriesReset, this, [this] {
        beginResetModel();
        shown = controller->entryCount();
        endResetModel();
    });
}

int ViewModeRowsModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : shown;
}

QVariant ViewModeRowsModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= shown || role != Qt::UserRole)
        return {};
    return index.row();
}

QHash<int, QByteArray> ViewModeRowsModel::roleNames() const
{
    return {{Qt::UserRole, "entry"}};
}
