#include "cli/streampath.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

QString StreamPath::writeAll(const QString &name, const QByteArray &bytes)
{
    const QFileInfo info(name);
    if (isStandardStream(name) || (info.exists() && !info.isFile())) {
        QFile out;
        const bool opened = isStandardStream(name)
                                ? out.open(stdout, QIODevice::WriteOnly)
                                : (out.setFileName(name), out.open(QIODevice::WriteOnly));
        if (opened && out.write(bytes) == bytes.size() && out.flush())
            return {};
        return out.errorString();
    }
    QSaveFile out(name);
    if (out.open(QIODevice::WriteOnly) && out.write(bytes) == bytes.size() && out.commit())
        return {};
    return out.errorString();
}

std::optional<QByteArray> StreamPath::readAll(const QString &name, qint64 maxBytes, QString *error)
{
    int fd = STDIN_FILENO;
    if (!isStandardStream(name)) {
        // O_NONBLOCK: a FIFO opens at once even without a writer; reads then block as usual.
        fd = ::open(QFile::encodeName(name).constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
        if (fd < 0 || ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) & ~O_NONBLOCK) != 0) {
            *error = QString::fromLocal8Bit(std::strerror(errno));
            if (fd >= 0)
                ::close(fd);
            return std::nullopt;
        }
    }
    QFile in;
    if (!in.open(fd, QIODevice::ReadOnly,
                 isStandardStream(name) ? QFileDevice::DontCloseHandle
                                        : QFileDevice::AutoCloseHandle)) {
        *error = in.errorString();
        return std::nullopt;
    }
    QByteArray bytes = in.read(maxBytes);
    if (in.error() != QFileDevice::NoError) {
        *error = in.errorString();
        return std::nullopt;
    }
    return bytes;
}
