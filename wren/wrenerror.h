// The failure of one register access, thrown by WrenAgent and caught by each caller around each
// access. A plain value: the code says what went wrong with the reply.
#pragma once

#include <QtGlobal>

struct WrenError
{
    // Codes
    static constexpr quint32 Timeout = 0;    // no reply within the time-out (or the wait failed)
    static constexpr quint32 BadReply = 1;   // VerType, acknowledge, packet ID or R/W flag wrong
    static constexpr quint32 ShortReply = 2; // fewer data bytes than the length field announces
    static constexpr quint32 BusError = 3;   // well-formed reply with the bus-error bit set

    quint32 code = Timeout;
};
