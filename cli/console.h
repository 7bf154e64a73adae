// Where the command-line tool says things: results on stdout (text or one JSON object a line),
// the program's messages on stderr, and a progress line on stderr only when it is a terminal. It
// is the report target of the process, so the messages of the shared code (agent, transfer worker,
// validators) reach stderr from any thread.
#pragma once

#include <QJsonObject>
#include <QMutex>
#include <QObject>
#include <QString>

#include <atomic>

class Console : public QObject
{
    Q_OBJECT

public:
    explicit Console(bool json, QObject *parent = nullptr);
    ~Console() override;

    [[nodiscard]] bool json() const { return m_json; }
    void setJson(bool json) { m_json = json; }

    // Results
    void print(const QString &text);
    void printJson(const QJsonObject &object);

    // Messages; errors are counted so that a command can tell whether shared code reported one.
    void message(const QString &text);
    [[nodiscard]] int errorCount() const { return m_errors.load(); }

    // Progress: rewritten in place on a terminal, never written elsewhere.
    [[nodiscard]] bool showsProgress() const { return m_stderrIsTerminal; }
    void progress(const QString &line);
    void endProgress();

signals:
    // Emitted by reportResult()/reportError() on whichever thread reports.
    void showResult(QString text);
    void showError(QString text);

private:
    void writeErr(const QByteArray &bytes);

    bool m_json = false;
    bool m_stderrIsTerminal = false;
    bool m_progressShown = false;
    std::atomic<int> m_errors{0};
    QMutex m_mutex;
};
