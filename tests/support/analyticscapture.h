#pragma once

#include <QByteArrayView>
#include <QStringList>
#include <QtGlobal>

// Analytics events go to a logging category; a test installs this handler to read them.
inline QStringList analyticsEvents;
inline QtMessageHandler previousHandler = nullptr;

inline void captureAnalytics(QtMsgType type, const QMessageLogContext &context,
                             const QString &message)
{
    if (context.category && QByteArrayView(context.category) == "lutegrid.analytics")
        analyticsEvents.append(message);
    else if (previousHandler)
        previousHandler(type, context, message);
}
