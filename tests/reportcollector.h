// Stands in for the main window as the target of reportResult()/reportError(), keeping every text
// so that a test can assert what the user was shown.
#pragma once

#include "app/report.h"

#include <QtTest>

class ReportCollector : public QObject
{
    Q_OBJECT

public:
    explicit ReportCollector(QObject *parent = nullptr) : QObject(parent)
    {
        connect(this, &ReportCollector::showResult, this,
                [this](const QString &text) { results << text; });
        connect(this, &ReportCollector::showError, this,
                [this](const QString &text) { errors << text; });
        setReportTarget(this);
    }
    ~ReportCollector() override
    {
        if (reportTarget() == this)
            setReportTarget(nullptr);
    }

    void clear() { results.clear(), errors.clear(); }

    QStringList results;
    QStringList errors;

signals:
    void showResult(QString text);
    void showError(QString text);
};
