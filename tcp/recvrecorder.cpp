#include "tcp/recvrecorder.h"

#include "tcp/tcpoutputoption.h"

#include <cstring>

bool RecvRecorder::open(const QString &name, bool hexText, const HexLayout &layout)
{
    m_layout = hexText ? layout : HexLayout();
    m_block.resize(kBlockBytes);
    m_used = 0;
    m_position = 0;
    m_saved = 0;
    m_error.clear();
    m_file.setFileName(name);
    // Unbuffered: the bytes are gathered into large blocks here, not in 16 KiB pieces by QFile.
    if (m_file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered))
        return true;
    m_error = m_file.errorString();
    return false;
}

bool RecvRecorder::close()
{
    const bool written = writeOut();
    m_file.close();
    return written;
}

char *RecvRecorder::space(qsizetype size)
{
    if (m_block.size() < m_used + size)
        m_block.resize(m_used + size);
    return m_block.data() + m_used;
}

bool RecvRecorder::add(const char *data, qsizetype size)
{
    if (m_layout.bytesPerLine() == 0) {
        std::memcpy(space(size), data, size);
        m_used += size;
        m_position += size;
        return m_used < kBlockBytes || writeOut();
    }
    QByteArray text;
    m_layout.render(data, size, &m_position, QByteArrayView(TCPOutputOption::kRecvLineEnd), &text);
    std::memcpy(space(text.size()), text.constData(), text.size());
    m_used += text.size();
    return m_used < kBlockBytes || writeOut();
}

bool RecvRecorder::add(const QByteArray &bytes)
{
    if (m_used > 0 || bytes.size() < kDirectBytes || m_layout.bytesPerLine() != 0)
        return add(bytes.constData(), bytes.size());
    m_position += bytes.size();
    return writeAll(bytes.constData(), bytes.size());
}

bool RecvRecorder::writeOut()
{
    const bool complete = writeAll(m_block.constData(), m_used);
    m_used = 0;
    return complete;
}

bool RecvRecorder::writeAll(const char *data, qsizetype size)
{
    if (size == 0 || !m_file.isOpen())
        return true;
    qsizetype done = 0;
    while (done < size) {
        const qint64 written = m_file.write(data + done, size - done);
        if (written <= 0)
            break;
        done += written;
        m_saved += written;
    }
    if (done == size)
        return true;
    m_error = m_file.errorString();
    return false;
}
