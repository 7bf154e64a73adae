#include "server/filefolder.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// Opens without blocking and without following a final link, then keeps only a regular file.
int openRegular(const QString &path, int flags)
{
    const QByteArray native = QFile::encodeName(path);
    const int fd = ::open(native.constData(), flags | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC, 0666);
    if (fd < 0)
        return -1;
    struct stat status = {};
    if (::fstat(fd, &status) != 0 || !S_ISREG(status.st_mode)) {
        ::close(fd);
        return -1;
    }
    return fd;
}

} // namespace

bool FileFolder::setPath(const QString &path)
{
    const QString canonical =
        QFileInfo(path.isEmpty() ? QDir::currentPath() : path).canonicalFilePath();
    if (canonical.isEmpty() || !QFileInfo(canonical).isDir())
        return false;
    m_path = canonical;
    return true;
}

QString FileFolder::resolve(const QString &name) const
{
    if (m_path.isEmpty() || name.isEmpty() || QDir::isAbsolutePath(name) ||
        name.contains(QLatin1Char('\0')))
        return {};
    const QStringList parts = name.split(QLatin1Char('/'), Qt::SkipEmptyParts);
    if (parts.isEmpty() || parts.contains(QStringLiteral("..")))
        return {};
    // Links inside the folder are followed; wherever they lead, the result must stay inside.
    const QFileInfo info(m_path + QLatin1Char('/') + parts.join(QLatin1Char('/')));
    const QString parent = QFileInfo(info.absolutePath()).canonicalFilePath();
    const bool parentInside = parent == m_path || parent.startsWith(m_path + QLatin1Char('/'));
    if (!parentInside || info.fileName() == QLatin1String("."))
        return {};
    const QString file = parent + QLatin1Char('/') + info.fileName();
    if (!QFileInfo(file).isSymLink())
        return file;
    const QString target = QFileInfo(file).canonicalFilePath();
    return target.startsWith(m_path + QLatin1Char('/')) ? target : QString();
}

bool FileFolder::read(const QString &name, qint64 maxBytes, QByteArray *contents) const
{
    const QString path = resolve(name);
    if (path.isEmpty() || !QFileInfo(path).isFile())
        return false;
    const int fd = openRegular(path, O_RDONLY);
    if (fd < 0)
        return false;
    QFile file;
    if (!file.open(fd, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)) {
        ::close(fd);
        return false;
    }
    *contents = file.read(maxBytes);
    return file.error() == QFileDevice::NoError;
}

bool FileFolder::write(const QString &name, const QByteArray &contents) const
{
    const QString path = resolve(name);
    if (path.isEmpty())
        return false;
    // A FIFO or a device in the way is refused before anything is opened or truncated.
    const QFileInfo existing(path);
    if (existing.exists() && !existing.isFile())
        return false;
    const int fd = openRegular(path, O_WRONLY | O_CREAT | O_TRUNC);
    if (fd < 0)
        return false;
    QFile file;
    if (!file.open(fd, QIODevice::WriteOnly, QFileDevice::AutoCloseHandle)) {
        ::close(fd);
        return false;
    }
    return file.write(contents) == contents.size() && file.flush();
}
