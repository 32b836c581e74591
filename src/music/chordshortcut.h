#pragma once

#include "model/archivevalue.h"
#include "model/columnitemtype.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

// A named chord shape: one item per string, highest string first.
struct ChordShortcut {
    QString name;
    QList<ColumnItemType> colItems;
    bool isCustom = false;

    // Name and origin make a chord; its shape does not.
    friend bool operator==(const ChordShortcut &a, const ChordShortcut &b)
    {
        return a.name == b.name && a.isCustom == b.isCustom;
    }

    // Archive form: "nmkey" and "colikey". isCustom is not stored and reads as false.
    ArchiveValue toArchiveValue() const;
    static std::optional<ChordShortcut> fromArchiveValue(const ArchiveValue &value);
    // One chord as an archive of its own, as the cloud store keeps them.
    QByteArray archivedData() const;
    static std::optional<ChordShortcut> fromArchivedData(const QByteArray &data);
};
