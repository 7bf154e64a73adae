#include "python/pythonfailure.h"

#include "wren/wrenerror.h"
#include "wren/wrenreport.h"

PythonFailure PythonFailure::of(const WrenError &error, const QString &timeoutText)
{
    const QString text = wrenErrorText(error, timeoutText);
    switch (error.code) {
    case WrenError::Timeout:
        return {Kind::Timeout, text};
    case WrenError::BusError:
        return {Kind::BusError, text};
    default:
        return {Kind::BadReply, text};
    }
}

const char *PythonFailure::className() const
{
    switch (m_kind) {
    case Kind::Timeout:
        return "Timeout";
    case Kind::BadReply:
        return "BadReply";
    case Kind::BusError:
        return "BusError";
    case Kind::Refused:
        return "Refused";
    case Kind::ConnectionFailed:
        return "ConnectionFailed";
    case Kind::Error:
        break;
    }
    return "Error";
}
