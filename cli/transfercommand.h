// The transfer commands of the tool, recv and send: one run of the GUI's transfer worker, with a
// progress line on a terminal, a one-line summary at the end and Ctrl+C as the stop button.
#pragma once

#include "tcp/transferrunner.h"

#include <QObject>
#include <QString>

struct CommandContext;

class TransferCommand : public QObject
{
    Q_OBJECT

public:
    using Direction = TransferRunner::Direction;

    TransferCommand(const CommandContext &context, Direction direction, QObject *parent = nullptr);

    // Runs the transfer to its end and returns the exit code.
    int run();

private:
    [[nodiscard]] bool readLimits();
    void showProgress();
    void printSummary();
    [[nodiscard]] int exitCode() const;
    [[nodiscard]] bool receiving() const { return m_direction == Direction::Receive; }

    const CommandContext &m_context;
    Direction m_direction;
    QString m_fileName;
    qint64 m_byteLimit = -1;
    qint64 m_timeLimitMs = -1;
    TransferRunner *m_runner = nullptr; // while the run lasts
    TransferResult m_result;
    int m_errorsBefore = 0;
    int m_refusedExitCode = 0;
};
