#include "tcp/tcpoutputoption.h"

#include "app/report.h"

#include <QFileInfo>

QString TCPOutputOption::defaultFormat()
{
    return QStringLiteral("1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1");
}

TCPOutputOption::TCPOutputOption(int kind, QObject *parent) : QObject(parent), m_kind(kind)
{
    (void)setFormat(defaultFormat());
}

QString TCPOutputOption::format() const
{
    QMutexLocker lock(&m_mutex);
    return m_layout.format();
}

std::optional<QString> TCPOutputOption::setFormat(const QString &text)
{
    const QString refusal = tr("Format must include at least one number");
    {
        QMutexLocker lock(&m_mutex);
        if (text == m_layout.format() && !m_layout.items().isEmpty())
            return m_layout.bytesPerLine() != 0 ? std::nullopt : std::optional(refusal);
    }
    const HexLayout parsed = HexLayout::parse(text);
    if (parsed.bytesPerLine() == 0)
        return refusal;
    {
        QMutexLocker lock(&m_mutex);
        m_layout = parsed;
    }
    emit formatChanged();
    return std::nullopt;
}

int TCPOutputOption::bytesPerLine() const
{
    QMutexLocker lock(&m_mutex);
    return m_layout.bytesPerLine();
}

HexLayout TCPOutputOption::layout() const
{
    QMutexLocker lock(&m_mutex);
    return m_layout;
}

QString TCPOutputOption::fileName() const
{
    QMutexLocker lock(&m_mutex);
    return m_file.fileName();
}

void TCPOutputOption::setFileName(const QString &name)
{
    QMutexLocker lock(&m_mutex);
    m_file.setFileName(name);
}

TCPOutputOption::FileCheck TCPOutputOption::checkFile() const
{
    const QString name = fileName();
    if (name.isEmpty()) {
        if (m_kind == kKindRecv)
            return {true, tr("Save To is empty: received data will not be saved.")};
        return {false, tr("Send file is not chosen.")};
    }
    const QString problem = problemWith(name);
    if (problem.isEmpty())
        return {};
    return {false, QStringLiteral("%1: %2 (%3)").arg(tr("File cannot open"), name, problem)};
}

QString TCPOutputOption::problemWith(const QString &name) const
{
    const QFileInfo info(name);
    if (info.isDir())
        return tr("it is a folder");
    if (m_kind == kKindSend) {
        QFile probe(name);
        return probe.open(QIODevice::ReadOnly) ? QString() : probe.errorString();
    }
    if (info.exists())
        return info.isWritable() ? QString() : tr("it cannot be written");
    const QFileInfo folder(info.absolutePath());
    if (!folder.isDir())
        return tr("the folder %1 does not exist").arg(folder.filePath());
    return folder.isWritable() ? QString() : tr("no file can be made in %1").arg(folder.filePath());
}

int TCPOutputOption::utf8CharLength(char leadByte)
{
    const auto byte = static_cast<unsigned char>(leadByte);
    if ((byte & 0xC0) == 0x80)
        return 0;
    if ((byte & 0x80) == 0x00)
        return 1;
    if ((byte & 0xE0) == 0xC0)
        return 2;
    if ((byte & 0xF0) == 0xE0)
        return 3;
    if ((byte & 0xF8) == 0xF0)
        return 4;
    return -1;
}
