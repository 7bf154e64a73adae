// Lets a test write "version.txt" beside its own executable and puts back whatever was there before
// (or nothing) when it goes out of scope.
#pragma once

#include <QCoreApplication>
#include <QDir>
#include <QFile>

class VersionFileGuard
{
public:
    VersionFileGuard()
        : m_path(
              QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("version.txt")))
    {
        QFile file(m_path);
        if (file.open(QIODevice::ReadOnly)) {
            m_hadFile = true;
            m_saved = file.readAll();
        }
    }
    ~VersionFileGuard()
    {
        removeAny();
        if (m_hadFile && !write(m_saved))
            qWarning("could not put back %s", qPrintable(m_path));
    }
    VersionFileGuard(const VersionFileGuard &) = delete;
    VersionFileGuard &operator=(const VersionFileGuard &) = delete;

    [[nodiscard]] QString path() const { return m_path; }

    [[nodiscard]] bool write(const QByteArray &content) const
    {
        removeAny();
        QFile file(m_path);
        return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
    }

    // Whatever stands at the path, file or folder, is gone afterwards.
    void removeAny() const
    {
        QFile::remove(m_path);
        QDir().rmdir(m_path);
    }

private:
    QString m_path;
    QByteArray m_saved;
    bool m_hadFile = false;
};
