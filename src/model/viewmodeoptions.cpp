#include "viewmodeoptions.h"

#include "model/jsoninteger.h"

#include <QJsonDocument>
#include <QJsonObject>

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
    const auto speed = jsonInteger(object.value(u"playbackSpeed"_qs));
    const auto columnsInBeat = jsonInteger(object.value(u"playbackColumnsInBeat"_qs));
    const auto beatsPerMeasure = jsonInteger(object.value(u"playbackBeatsPerMeasure"_qs));
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
