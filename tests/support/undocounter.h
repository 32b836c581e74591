#pragma once

#include "services/lgundomanager.h"

#include <QList>

// A tiny model edited the way the tab is edited: each change registers its inverse, which
// goes through the same operation and so registers the redo.
struct Counter {
    LgUndoManager *manager;
    QList<int> values;

    void set(int index, int value)
    {
        const int old = values[index];
        values[index] = value;
        manager->registerUndo([this, index, old] { set(index, old); });
    }
};
