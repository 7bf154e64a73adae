#include "cli/console.h"

#include "app/report.h"

#include <QJsonDocument>

#include <cstdio>
#include <unistd.h>

Console::Console(bool json, QObject *parent)
    : QObject(parent), m_json(json), m_stderrIsTerminal(::isatty(STDERR_FILENO) == 1)
{
    connect(this, &Console::showResult, this, &Console::message, Qt::DirectConnection);
    connect(
        this, &Console::showError, this,
        [this](const QString &text) {
            ++m_errors;
            message(text);
        },
        Qt::DirectConnection);
    setReportTarget(this);
}

Console::~Console()
{
    setReportTarget(nullptr);
}

void Console::print(const QString &text)
{
    const QByteArray bytes = text.toUtf8();
    QMutexLocker lock(&m_mutex);
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stdout);
    std::fflush(stdout);
}

void Console::printJson(const QJsonObject &object)
{
    print(QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact)) +
          QLatin1Char('\n'));
}

void Console::message(const QString &text)
{
    QMutexLocker lock(&m_mutex);
    QByteArray bytes = m_progressShown ? QByteArrayLiteral("\r\033[K") : QByteArray();
    m_progressShown = false;
    writeErr(bytes + text.toUtf8() + '\n');
}

void Console::progress(const QString &line)
{
    if (!m_stderrIsTerminal)
        return;
    QMutexLocker lock(&m_mutex);
    writeErr(QByteArrayLiteral("\r\033[K") + line.toUtf8());
    m_progressShown = true;
}

void Console::endProgress()
{
    QMutexLocker lock(&m_mutex);
    if (m_progressShown)
        writeErr(QByteArrayLiteral("\r\033[K"));
    m_progressShown = false;
}

void Console::writeErr(const QByteArray &bytes)
{
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stderr);
    std::fflush(stderr);
}
