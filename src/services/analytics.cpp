#include "analytics.h"

#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcAnalytics, "lutegrid.analytics")

namespace Analytics {

QString eventName(const QString &text)
{
    QString name = text;
    name.replace(u' ', u'_');
    return name;
}

void logEvent(const QString &text, const QVariantMap &parameters)
{
    if (parameters.isEmpty())
        qCInfo(lcAnalytics).noquote() << eventName(text);
    else
        qCInfo(lcAnalytics).noquote() << eventName(text) << parameters;
}

} // namespace Analytics
