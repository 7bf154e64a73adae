// Qt's own diagnostics, filtered from start-up on: one message is dropped everywhere, the font
// engine's complaint about control characters it cannot shape, which received binary data shown as
// text would otherwise repeat hundreds of times on the terminal. The rest go to the log's handler
// while logging is on, otherwise to the terminal as Qt would print them.
#pragma once

#include <QString>
#include <QtGlobal>

// toLog: the handler that writes into the log, or null while logging is off.
void installQtMessageHandler(QtMessageHandler toLog);
[[nodiscard]] bool isDroppedQtMessage(const QString &message);
