#include "app/log.h"

#include <QDateTime>
#include <QFile>
#include <QRecursiveMutex>

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <map>
#include <set>
#include <unistd.h>

namespace {

constexpr qint64 kRotateAboveBytes = 10485760;
constexpr int kRotatedFiles = 10;
constexpr int kFormatBufferBytes = 8192;
// Lines from one call site in a row that are written in full; the rest are counted, and the count
// is written when another site logs (or every kRepeatSummaryEvery lines, or at closing), so that a
// flood of alike events cannot fill the disk.
constexpr int kRepeatsWritten = 20;
constexpr qint64 kRepeatSummaryEvery = 100000;

struct LogState
{
    QRecursiveMutex mutex;
    std::atomic<FILE *> file{nullptr};
    std::atomic<int> threshold{0};
    qint64 nextBlock = 1;
    std::map<quint64, std::set<qint64>> openBlocks;
    QString path;
    qint64 rotateAboveBytes = kRotateAboveBytes;
    // The current run of lines from one call site.
    QByteArray site;
    QByteArray siteWord, siteFile;
    unsigned siteLine = 0;
    int siteRun = 0;
    qint64 suppressed = 0;
};

LogState &state()
{
    static LogState *s = new LogState; // lives until exit: threads may log while statics die
    return *s;
}

quint64 currentThreadId()
{
    return static_cast<quint64>(gettid());
}

QByteArray buildLine(const char *word, const char *file, unsigned line, const QByteArray &text)
{
    const QByteArray stamp =
        QDateTime::currentDateTime().toString(QStringLiteral("yyyy/MM/dd HH:mm:ss.zzz")).toLatin1();
    char thread[24];
    std::snprintf(thread, sizeof thread, "0x%llx",
                  static_cast<unsigned long long>(currentThreadId()));
    char head[512];
    const int headSize = std::snprintf(head, sizeof head, "%s %25s:%4u %8s [%4s] ",
                                       stamp.constData(), file, line, thread, word);
    QByteArray out;
    out.reserve(headSize + text.size() + 1);
    out.append(head, qMin<int>(headSize, int(sizeof head) - 1));
    out += text;
    out += '\n';
    return out;
}

void rotate(const QString &path);

// Called with the mutex held.
void writeRaw(LogState &s, const QByteArray &line)
{
    FILE *f = s.file.load();
    if (!f)
        return;
    std::fwrite(line.constData(), 1, size_t(line.size()), f);
    std::fflush(f);
    // Rotated while running too: a long session never grows one file without end.
    if (s.path.isEmpty() || std::ftell(f) <= s.rotateAboveBytes)
        return;
    std::fclose(f);
    rotate(s.path);
    s.file = std::fopen(QFile::encodeName(s.path).constData(), "a");
}

void writeRepeatSummary(LogState &s)
{
    if (s.suppressed == 0)
        return;
    const QByteArray text = QByteArrayLiteral("\xe2\x80\xa6 ") + QByteArray::number(s.suppressed) +
                            QByteArrayLiteral(" more like this");
    s.suppressed = 0;
    writeRaw(s, buildLine(s.siteWord.constData(), s.siteFile.constData(), s.siteLine, text));
}

void writeLine(const char *word, const char *file, unsigned line, const QByteArray &text)
{
    LogState &s = state();
    QMutexLocker lock(&s.mutex);
    if (!s.file.load())
        return;
    const QByteArray site = QByteArray(file) + ':' + QByteArray::number(line) + ':' + word;
    if (site == s.site) {
        if (++s.siteRun > kRepeatsWritten) {
            if (++s.suppressed >= kRepeatSummaryEvery)
                writeRepeatSummary(s);
            return;
        }
    } else {
        writeRepeatSummary(s);
        s.site = site;
        s.siteWord = word;
        s.siteFile = file;
        s.siteLine = line;
        s.siteRun = 1;
    }
    writeRaw(s, buildLine(word, file, line, text));
}

QString numberedName(const QString &path, int n)
{
    const int dot = path.lastIndexOf(QLatin1Char('.'));
    if (dot < 0)
        return path + QLatin1Char('.') + QString::number(n);
    return path.left(dot) + QLatin1Char('.') + QString::number(n) + path.mid(dot);
}

void rotate(const QString &path)
{
    QFile::remove(numberedName(path, kRotatedFiles));
    for (int n = kRotatedFiles - 1; n >= 1; --n)
        QFile::rename(numberedName(path, n), numberedName(path, n + 1));
    QFile::rename(path, numberedName(path, 1));
}

} // namespace

bool logOpen(const QString &path, int threshold)
{
    LogState &s = state();
    QMutexLocker lock(&s.mutex);
    const QByteArray native = QFile::encodeName(path);
    FILE *f = std::fopen(native.constData(), "a");
    if (!f)
        return false; // the log stays off; the program goes on without it
    s.threshold = threshold;
    // The separator stays in the stream's buffer, so the size asked for next is that of the
    // previous runs alone; when rotating, closing puts it at the end of the old file.
    std::fputs("\n\n", f);
    if (QFile(path).size() > s.rotateAboveBytes) {
        std::fclose(f);
        rotate(path);
        f = std::fopen(native.constData(), "a");
    }
    s.file = f;
    s.path = path;
    s.site.clear();
    s.siteRun = 0;
    s.suppressed = 0;
    return f != nullptr;
}

void logSetRotateAboveBytes(qint64 bytes)
{
    LogState &s = state();
    QMutexLocker lock(&s.mutex);
    s.rotateAboveBytes = bytes;
}

void logClose()
{
    LogState &s = state();
    QMutexLocker lock(&s.mutex);
    writeRepeatSummary(s);
    s.site.clear();
    if (FILE *f = s.file.exchange(nullptr))
        std::fclose(f);
}

bool logEnabled(int level)
{
    const LogState &s = state();
    return s.file.load(std::memory_order_relaxed) &&
           s.threshold.load(std::memory_order_relaxed) <= level;
}

void logWrite(int level, const char *word, const char *file, unsigned line, const QByteArray &text)
{
    if (!logEnabled(level))
        return;
    writeLine(word, file, line, text);
}

void logWrite(int level, const char *word, const char *file, unsigned line, const QString &text)
{
    if (!logEnabled(level))
        return;
    logWrite(level, word, file, line, text.toUtf8());
}

void logWrite(int level, const char *word, const char *file, unsigned line, const char *text)
{
    if (!logEnabled(level))
        return;
    logWrite(level, word, file, line, QByteArray(text));
}

void logWriteF(int level, const char *word, const char *file, unsigned line, const char *format,
               ...)
{
    if (!logEnabled(level))
        return;
    char buffer[kFormatBufferBytes];
    va_list args;
    va_start(args, format);
    std::vsnprintf(buffer, sizeof buffer, format, args);
    va_end(args);
    logWrite(level, word, file, line, QByteArray(buffer));
}

TraceBlock::TraceBlock(const char *file, unsigned line, const char *label, int level)
    : m_file(file), m_line(line), m_level(level)
{
    if (!logEnabled(level))
        return;
    LogState &s = state();
    QMutexLocker lock(&s.mutex);
    m_number = s.nextBlock++;
    s.openBlocks[currentThreadId()].insert(m_number);
    logWriteF(m_level, "BLCK", m_file.constData(), m_line, "%s -> %lld", label, m_number);
}

TraceBlock::~TraceBlock()
{
    if (!logEnabled(m_level))
        return;
    LogState &s = state();
    QMutexLocker lock(&s.mutex);
    std::set<qint64> &open = s.openBlocks[currentThreadId()];
    open.erase(m_number);
    if (open.empty()) {
        logWriteF(m_level, "<", m_file.constData(), m_line, "    <- %lld", m_number);
        return;
    }
    QByteArray others;
    for (qint64 n : open) {
        if (!others.isEmpty())
            others += ',';
        others += QByteArray::number(n);
    }
    logWriteF(m_level, "<", m_file.constData(), m_line, "    <- %lld (%s)", m_number,
              others.constData());
}
