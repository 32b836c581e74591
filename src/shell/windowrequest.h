#pragma once

#include <QByteArray>
#include <QMetaType>
#include <QString>
#include <QStringList>

#include <optional>

// What a start of the program asks for: a tab window with a new tab, the main window with the
// import picker, files opened from outside, or just the program in front. A second start hands
// it to the running instance in the wire form below.
struct WindowRequest {
    enum class Kind { Show, NewTab, Import, OpenFiles };

    Kind kind = Kind::Show;
    // Absolute paths, for OpenFiles.
    QStringList files;

    // The command line after the program's name; relative paths are taken from `workingDir`.
    // "file://" URLs, as a file manager may pass them, become paths.
    static WindowRequest fromArguments(const QStringList &arguments, const QString &workingDir);

    QByteArray toBytes() const;
    // Nothing for bytes that aren't a request: another process may write anything.
    static std::optional<WindowRequest> fromBytes(const QByteArray &bytes);

    // The longest message a running instance reads; anything longer is not ours.
    static constexpr qint64 maxBytes = 256 * 1024;

    bool operator==(const WindowRequest &other) const = default;
};

Q_DECLARE_METATYPE(WindowRequest)
