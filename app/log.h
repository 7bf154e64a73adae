// Process-wide text log: one line per call, flushed at once, rotated when opened and when full;
// a run of lines from one call site is cut short and summarised.
#pragma once

#include <QByteArray>
#include <QString>
#include <QtGlobal>

enum LogLevel : int {
    LOG_DBG = 0,
    LOG_INFO = 10,
    LOG_WRN = 20,
    LOG_ERR = 30,
};

// Life cycle
bool logOpen(const QString &path, int threshold); // false: the log stays off
void logClose();
// Size above which the file is rotated, at opening and while running (default 10 MiB).
void logSetRotateAboveBytes(qint64 bytes);
[[nodiscard]] bool logEnabled(int level);

// Writing. `file` is the caller's source file base name, `line` the line of the call.
void logWrite(int level, const char *word, const char *file, unsigned line, const QString &text);
void logWrite(int level, const char *word, const char *file, unsigned line, const QByteArray &text);
void logWrite(int level, const char *word, const char *file, unsigned line, const char *text);
void logWriteF(int level, const char *word, const char *file, unsigned line, const char *format,
               ...) Q_ATTRIBUTE_FORMAT_PRINTF(5, 6);

// Writes an entry line when constructed and an exit line when destroyed, numbering the blocks
// process-wide and listing those still open on the same thread.
class TraceBlock
{
public:
    TraceBlock(const char *file, unsigned line, const char *label, int level = LOG_DBG);
    ~TraceBlock();
    TraceBlock(const TraceBlock &) = delete;
    TraceBlock &operator=(const TraceBlock &) = delete;

private:
    qint64 m_number = 0;
    QByteArray m_file;
    unsigned m_line = 0;
    int m_level = LOG_DBG;
};

// Call-site helpers: they fill in the level word, the file and the line, and skip all formatting
// while the level is off.
#define MAVIX_LOG_AT(level, word, msg)                                                             \
    do {                                                                                           \
        if (logEnabled(level))                                                                     \
            logWrite(level, word, __FILE_NAME__, __LINE__, msg);                                   \
    } while (0)
#define LOG_DEBUG(msg) MAVIX_LOG_AT(LOG_DBG, "DBG", msg)
#define LOG_INFO_MSG(msg) MAVIX_LOG_AT(LOG_INFO, "INFO", msg)
#define LOG_WARN(msg) MAVIX_LOG_AT(LOG_WRN, "WRN", msg)
#define LOG_ERROR(msg) MAVIX_LOG_AT(LOG_ERR, "ERR", msg)

#define MAVIX_LOGF_AT(level, word, ...)                                                            \
    do {                                                                                           \
        if (logEnabled(level))                                                                     \
            logWriteF(level, word, __FILE_NAME__, __LINE__, __VA_ARGS__);                          \
    } while (0)
#define LOGF_DEBUG(...) MAVIX_LOGF_AT(LOG_DBG, "DBG", __VA_ARGS__)
#define LOGF_INFO(...) MAVIX_LOGF_AT(LOG_INFO, "INFO", __VA_ARGS__)
#define LOGF_WARN(...) MAVIX_LOGF_AT(LOG_WRN, "WRN", __VA_ARGS__)
#define LOGF_ERROR(...) MAVIX_LOGF_AT(LOG_ERR, "ERR", __VA_ARGS__)

#define MAVIX_CONCAT_INNER(a, b) a##b
#define MAVIX_CONCAT(a, b) MAVIX_CONCAT_INNER(a, b)
#define TRACE_BLOCK(label)                                                                         \
    TraceBlock MAVIX_CONCAT(mavixTraceBlock_, __LINE__)(__FILE_NAME__, __LINE__, label)
