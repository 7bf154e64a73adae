// The failure of one register access, thrown by WrenAgent and caught by each caller around each
// access. A plain value: the code says what went wrong with the reply.
#pragma once

#include <QString>
#include <QtGlobal>

struct WrenError
{
    // Codes
    static constexpr quint32 Timeout = 0;    // no reply within the time-out (or the wait failed)
    static constexpr quint32 BadReply = 1;   // VerType, acknowledge, packet ID or R/W flag wrong
    static constexpr quint32 ShortReply = 2; // fewer data bytes than the length field announces
    static constexpr quint32 BusError = 3;   // well-formed reply with the bus-error bit set

    quint32 code = Timeout;
    // Why, in the user's language, for the message area: the agent's own words for a bad reply
    // ("WREN Recv, Bus Error occured", ...), or why the wait ended. May be empty for a time-out,
    // which each caller reports in its own words.
    QString reason;
    // The request never left the program (no socket, no route): nothing can have reached the
    // device, and no reply was waited for.
    bool unsent = false;
};
