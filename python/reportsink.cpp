#include "python/reportsink.h"

#include "app/report.h"

namespace {
// A call reports a handful of errors at most; a flood (a transfer's) keeps only the first ones.
constexpr int kKeptErrors = 16;
} // namespace

ReportSink::ReportSink(QObject *parent) : QObject(parent)
{
    connect(
        this, &ReportSink::showError, this,
        [this](const QString &text) {
            QMutexLocker lock(&m_mutex);
            if (m_errors.size() < kKeptErrors)
                m_errors << text;
        },
        Qt::DirectConnection);
}

ReportSink *ReportSink::instance()
{
    // Lives as long as the process: the engines may report until the interpreter ends.
    static ReportSink *sink = [] {
        auto *made = new ReportSink;
        if (!reportTarget())
            setReportTarget(made);
        return made;
    }();
    return sink;
}

void ReportSink::clear()
{
    QMutexLocker lock(&m_mutex);
    m_errors.clear();
}

QString ReportSink::firstError(const QString &fallback) const
{
    QMutexLocker lock(&m_mutex);
    return m_errors.isEmpty() ? fallback : m_errors.first();
}

bool ReportSink::hasErrors() const
{
    QMutexLocker lock(&m_mutex);
    return !m_errors.isEmpty();
}
