// The report target of a Python process: the engines tell the user things through reportResult()
// and reportError() (from any thread, the transfer worker's too); the binding keeps the errors so
// that a failed call raises an exception carrying the message the window would have shown.
#pragma once

#include <QMutex>
#include <QObject>
#include <QString>
#include <QStringList>

class ReportSink : public QObject
{
    Q_OBJECT

public:
    // The one sink of the process, made the report target when no other part set one.
    static ReportSink *instance();

    // Forgets the errors so far: the next call's are its own.
    void clear();
    // The first error reported since clear(), or `fallback` when none was.
    [[nodiscard]] QString firstError(const QString &fallback = QString()) const;
    [[nodiscard]] bool hasErrors() const;

signals:
    void showResult(QString text);
    void showError(QString text);

private:
    explicit ReportSink(QObject *parent = nullptr);

    mutable QMutex m_mutex;
    QStringList m_errors;
};
