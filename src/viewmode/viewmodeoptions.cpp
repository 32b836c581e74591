#include "viewmodeoptions.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>

namespace {

std::optional<qint64> integerMember(const QJsonObject &object, const QString &key)
{
    const QJsonValue value = object.value(key);
    if (!value.isDouble())
        return std::nullopt;
    const double number = value.toDouble();
    // 2^63 as a double: anything at or past it does not fit.
    if (number != std::trunc(number) || number < -9223372036854775808.0
        || number >= 9223372036854775808.0)
        return std::nullopt;
    return static_cast<qint64>(number);
}

} // namespace

QByteArray ViewModePlaybackOptions::toJson() const
{
    QJsonObject object;
    object.insert(u"playbackSpeed"_qs, playbackSpeed);
    object.insert(u"playbackColumnsInBeat"_qs, playbackColumnsInBeat);
    object.insert(u"playbackByMeasure"_qs, playbackByMeasure);
    object.insert(u"playbackBeatsPerMeasure"_qs, playbackBeatsPerMeasure);
    object.insert(u"loopPlayback"_qs, loopPlayback);
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

std::optional<ViewModePlaybackOptions> ViewModePlaybackOptions::fromJson(const QByteArray &json,
                                                                         QString *error)
{
    auto fail = [error](const QString &message) -> std::optional<ViewModePlaybackOptions> {
        if (error)
            *error = message;
        return std::nullopt;
    };
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(json, &parseError);
    if (parseError.error != QJsonParseError::NoError)
        return fail(parseError.errorString());
    if (!document.isObject())
        return fail(u"playback options are not a JSON object"_qs);
    const QJsonObject object = document.object();

    ViewModePlaybackOptions options;
    const auto speed = integerMember(object, u"playbackSpeed"_qs);
    const auto columnsInBeat = integerMember(object, u"playbackColumnsInBeat"_qs);
    const auto beatsPerMeasure = integerMember(object, u"playbackBeatsPerMeasure"_qs);
    const QJsonValue byMeasure = object.value(u"playbackByMeasure"_qs);
    const QJsonValue loop = object.value(u"loopPlayback"_qs);
    if (!speed || !columnsInBeat || !beatsPerMeasure || !byMeasure.isBool() || !loop.isBool())
        return fail(u"playback options lack a key or hold a wrong type"_qs);
    options.playbackSpeed = *speed;
    options.playbackColumnsInBeat = *columnsInBeat;
    options.playbackBeatsPerMeasure = *beatsPerMeasure;
    options.playbackByMeasure = byMeasure.toBool();
    options.loopPlayback = loop.toBool();
    return options;
}
