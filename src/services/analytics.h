#pragma once

#include <QString>
#include <QVariantMap>

// Usage events. They go to the logging category "lutegrid.analytics" and nowhere else, and
// nothing depends on them.
namespace Analytics {

// "Conflict detected" is logged as "Conflict_detected".
QString eventName(const QString &text);
void logEvent(const QString &text, const QVariantMap &parameters = {});

} // namespace Analytics
