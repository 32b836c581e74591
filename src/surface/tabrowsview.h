#pragma once

#include "model/tabdata.h"

#include <QList>

class TabEditView;

// The rows the surface shows, to read: they are the tab's own, held by its TabData, and every
// change goes through the surface's operations and so through TabEdits.
class TabRowsView {
public:
    explicit TabRowsView(const TabEditView &view) : view(view) {}
    TabRowsView(const TabRowsView &) = delete;
    TabRowsView &operator=(const TabRowsView &) = delete;

    const QList<TabRowData> &list() const;
    operator const QList<TabRowData> &() const { return list(); }
    qsizetype size() const { return list().size(); }
    bool isEmpty() const { return list().isEmpty(); }
    const TabRowData &operator[](qsizetype row) const { return list()[row]; }
    const TabRowData &first() const { return list().first(); }
    const TabRowData &last() const { return list().last(); }
    QList<TabRowData>::const_iterator begin() const { return list().cbegin(); }
    QList<TabRowData>::const_iterator end() const { return list().cend(); }

private:
    const TabEditView &view;
};
