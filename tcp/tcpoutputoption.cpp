#include "tcp/tcpoutputoption.h"

#include "app/report.h"

#include <QFileInfo>

QString TCPOutputOption::defaultFormat()
{
    return QStringLiteral("1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1");
}

TCPOutputOption::TCPOutputOption(int kind, QObject *parent) : QObject(parent), m_kind(kind)
{
    setFormat(defaultFormat());
}

QString TCPOutputOption::format() const
{
    QMutexLocker lock(&m_mutex);
    return m_layout.format();
}

bool TCPOutputOption::setFormat(const QString &text)
{
    {
        QMutexLocker lock(&m_mutex);
        if (text == m_layout.format() && !m_layout.items().isEmpty())
            return m_layout.bytesPerLine() != 0;
    }
    const HexLayout parsed = HexLayout::parse(text);
    if (parsed.bytesPerLine() == 0) {
        reportError(tr("Format must include at least one number"));
        return false;
    }
    {
        QMutexLocker lock(&m_mutex);
        m_layout = parsed;
    }
    emit formatChanged();
    return true;
}

int TCPOutputOption::bytesPerLine() const
{
    QMutexLocker lock(&m_mutex);
    return m_layout.bytesPerLine();
}

QStringList TCPOutputOption::formatItems() const
{
    QMutexLocker lock(&m_mutex);
    return m_layout.items();
}

HexLayout TCPOutputOption::layout() const
{
    QMutexLocker lock(&m_mutex);
    return m_layout;
}

QByteArray TCPOutputOption::render(const QByteArray &bytes, qint64 *position,
                                   const char *lineEnd) const
{
    return layout().render(bytes, position, QByteArrayView(lineEnd));
}

QString TCPOutputOption::fileName() const
{
    QMutexLocker lock(&m_mutex);
    return m_file.fileName();
}

bool TCPOutputOption::setFileName(const QString &name)
{
    {
        QMutexLocker lock(&m_mutex);
        m_file.setFileName(name);
    }
    // An empty name is a valid choice: receiving then only displays, and a send refuses to start.
    if (name.isEmpty() || canOpen(name))
        return true;
    reportError(tr("File cannot open"));
    return false;
}

// Tries the file the way the transfer will use it. The receive check neither truncates an
// existing file nor leaves a new empty one behind.
bool TCPOutputOption::canOpen(const QString &name) const
{
    QFile probe(name);
    if (m_kind == kKindSend)
        return probe.open(QIODevice::ReadOnly);
    const bool existed = QFileInfo::exists(name);
    if (!probe.open(QIODevice::WriteOnly | QIODevice::Append))
        return false;
    probe.close();
    if (!existed)
        probe.remove();
    return true;
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
