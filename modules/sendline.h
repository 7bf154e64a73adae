// What a send line typed by the user stands for, in bytes: text with the escapes \r, \n, \t, \\ and
// \xNN (UTF-8 otherwise), or hex digit pairs, contiguous or separated by blanks. A line that cannot
// be read says where, and nothing is sent.
#pragma once

#include <QByteArray>
#include <QCoreApplication>
#include <QString>

class SendLine
{
    Q_DECLARE_TR_FUNCTIONS(SendLine)

public:
    enum class Form { Text, Hex };

    struct Parsed
    {
        QByteArray bytes;
        QString error; // empty when the line was read whole
    };

    [[nodiscard]] static Parsed parse(const QString &line, Form form);

private:
    [[nodiscard]] static Parsed parseText(const QString &line);
    [[nodiscard]] static Parsed parseHex(const QString &line);
};
