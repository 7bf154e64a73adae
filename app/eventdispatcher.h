// Choice of event dispatcher for the programs that move device traffic.
#pragma once

#include <QByteArray>
#include <QtGlobal>

// Qt's GLib-based dispatcher wakes up slowly on an otherwise idle machine: a register round trip
// through it took four to five times longer than through the plain poll() dispatcher. Nothing here
// needs GLib integration, so ask for the plain one unless the user chose otherwise. Call it before
// the application object (and any thread) is created.
inline void preferPlainEventDispatcher()
{
    if (!qEnvironmentVariableIsSet("QT_NO_GLIB"))
        qputenv("QT_NO_GLIB", QByteArrayLiteral("1"));
}
