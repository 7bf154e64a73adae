// Helpers shared by the fuzz targets: turning the fuzzer's bytes into the inputs a target takes.
#pragma once

#include <QByteArray>
#include <QCoreApplication>
#include <QString>

#include <cstddef>
#include <cstdint>

inline QByteArray fuzzBytes(const uint8_t *data, size_t size)
{
    return QByteArray(reinterpret_cast<const char *>(data), qsizetype(size));
}

// The bytes before the first NUL, and those after it.
inline QPair<QByteArray, QByteArray> splitAtNul(const QByteArray &bytes)
{
    const qsizetype nul = bytes.indexOf('\0');
    if (nul < 0)
        return {bytes, QByteArray()};
    return {bytes.left(nul), bytes.mid(nul + 1)};
}

// Targets that use sockets need an application object and its event loop.
inline QCoreApplication *fuzzApplication()
{
    static int argc = 1;
    static char name[] = "fuzz";
    static char *argv[] = {name, nullptr};
    static QCoreApplication *app = new QCoreApplication(argc, argv);
    return app;
}
