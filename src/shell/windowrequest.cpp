#include "windowrequest.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QUrl>

namespace {

const QString magicKey = u"lutegridRequest"_qs;
constexpr int wireVersion = 1;

QString kindName(WindowRequest::Kind kind)
{
    switch (kind) {
    case WindowRequest::Kind::NewTab:
        return u"newtab"_qs;
    case WindowRequest::Kind::Import:
        return u"import"_qs;
    case WindowRequest::Kind::OpenFiles:
        return u"open"_qs;
    case WindowRequest::Kind::Show:
        break;
    }
    return u"show"_qs;
}

std::optional<WindowRequest::Kind> kindFromName(const QString &name)
{
    for (auto kind : {WindowRequest::Kind::Show, WindowRequest::Kind::NewTab,
                      WindowRequest::Kind::Import, WindowRequest::Kind::OpenFiles}) {
        if (kindName(kind) == name)
            return kind;
    }
    return std::nullopt;
}

} // namespace

WindowRequest WindowRequest::fromArguments(const QStringList &arguments, const QString &workingDir)
{
    WindowRequest request;
    const QDir base(workingDir);
    bool newTab = false;
    bool import = false;
    for (const QString &argument : arguments) {
        if (argument == u"--new-tab")
            newTab = true;
        else if (argument == u"--import")
            import = true;
        else if (argument.startsWith(u'-') || argument.isEmpty())
            continue;
        else if (argument.startsWith(u"file:"))
            request.files.append(QUrl(argument).toLocalFile());
        else
            request.files.append(QDir::cleanPath(base.absoluteFilePath(argument)));
    }
    request.files.removeAll(QString());
    // Files say most about what the user wants; then the explicit actions.
    if (!request.files.isEmpty())
        request.kind = Kind::OpenFiles;
    else if (newTab)
        request.kind = Kind::NewTab;
    else if (import)
        request.kind = Kind::Import;
    return request;
}

QByteArray WindowRequest::toBytes() const
{
    QJsonObject object;
    object.insert(magicKey, wireVersion);
    object.insert(u"kind"_qs, kindName(kind));
    object.insert(u"files"_qs, QJsonArray::fromStringList(files));
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

std::optional<WindowRequest> WindowRequest::fromBytes(const QByteArray &bytes)
{
    if (bytes.size() > maxBytes)
        return std::nullopt;
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(bytes, &error);
    if (error.error != QJsonParseError::NoError || !document.isObject())
        return std::nullopt;
    const QJsonObject object = document.object();
    if (object.value(magicKey).toInt(-1) != wireVersion)
        return std::nullopt;
    const auto kind = kindFromName(object.value(u"kind"_qs).toString());
    if (!kind)
        return std::nullopt;
    WindowRequest request;
    request.kind = *kind;
    const QJsonValue files = object.value(u"files"_qs);
    if (!files.isUndefined() && !files.isArray())
        return std::nullopt;
    for (const QJsonValue &file : files.toArray()) {
        // Only absolute paths: the sender's working folder is not ours.
        if (!file.isString() || !QDir::isAbsolutePath(file.toString()))
            return std::nullopt;
        request.files.append(file.toString());
    }
    if (request.kind == Kind::OpenFiles && request.files.isEmpty())
        return std::nullopt;
    return request;
}
