// A failure on its way to Python: which exception of the mavix.Error family it becomes, and the
// message the window would have shown. Thrown by the binding's C++ code, translated at the border.
#pragma once

#include <QString>

#include <exception>
#include <string>

struct WrenError;

class PythonFailure : public std::exception
{
public:
    // The names of the Python exception classes in mavix._errors.
    enum class Kind { Error, Timeout, BadReply, BusError, Refused, ConnectionFailed };

    PythonFailure(Kind kind, const QString &message)
        : m_kind(kind), m_message(message.toStdString())
    {
    }

    // A failed register access, with the text the tabs show for it.
    [[nodiscard]] static PythonFailure of(const WrenError &error, const QString &timeoutText);

    [[nodiscard]] Kind kind() const { return m_kind; }
    [[nodiscard]] const char *className() const;
    [[nodiscard]] const char *what() const noexcept override { return m_message.c_str(); }

private:
    Kind m_kind;
    std::string m_message;
};
