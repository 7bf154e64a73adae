// The one folder whose files the remote-control commands may read and write. A name is taken
// relative to it; absolute names, "..", links leading out, and anything but a regular file are
// refused, and opening never blocks (a FIFO or a device is never opened for real).
#pragma once

#include <QByteArray>
#include <QString>

class FileFolder
{
public:
    // The working directory at the time of the call when `path` is empty. False when the folder
    // does not exist.
    bool setPath(const QString &path);
    [[nodiscard]] QString path() const { return m_path; }

    // At most maxBytes of the file's contents; false when it may not or cannot be read.
    [[nodiscard]] bool read(const QString &name, qint64 maxBytes, QByteArray *contents) const;
    // Creates or truncates the file; false when it may not or cannot be written.
    [[nodiscard]] bool write(const QString &name, const QByteArray &contents) const;

private:
    // The full path of `name` inside the folder, or empty when the name leads elsewhere.
    [[nodiscard]] QString resolve(const QString &name) const;

    QString m_path; // canonical
};
