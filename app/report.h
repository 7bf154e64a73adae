// The one road by which every part tells the user something: a log line plus an entry in the main
// window's message area (blue for results, red for errors).
#pragma once

#include <QObject>
#include <QString>

void reportResult(const QString &text);
void reportError(const QString &text);

// The window that shows reports: it must declare the signals showResult(QString) and
// showError(QString). Reports made while none is set reach only the log.
void setReportTarget(QObject *window);
QObject *reportTarget();
