#pragma once

#include "archivevalue.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <optional>

// The keyed-archive layout over a binary property list: "$archiver", "$version", "$top" and
// "$objects", with objects referenced by UID and classes described by "$classname" and
// "$classes". Tab documents, the settings file and the label file all use it.
class KeyedArchiver
{
public:
    // The archive of one root object, under "$top" / "root".
    static QByteArray archivedData(const ArchiveValue &rootObject);
    // An archive written key by key straight into "$top", as the settings file is.
    static QByteArray archivedDataKeyedDirectly(const ArchiveFields &topLevel);
};

class KeyedUnarchiver
{
public:
    // Deepest chain of references that an archive may hold before it counts as unreadable.
    static constexpr int maximumDepth = 200;

    // Gives the root object, or nothing with the reason in `error`.
    static std::optional<ArchiveValue> unarchivedRootObject(QByteArrayView bytes,
                                                            QString *error = nullptr);
    // Gives all of "$top" as a dictionary.
    static std::optional<ArchiveValue> unarchivedTopLevel(QByteArrayView bytes,
                                                          QString *error = nullptr);
};
