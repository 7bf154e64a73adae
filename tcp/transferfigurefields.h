// The size, time and rate rows and the data area that the receive and send dialogs share.
#pragma once

#include <QtGlobal>

class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QString;

struct TransferFigureFields
{
    QLineEdit *size = nullptr;
    QLabel *sizeUnit = nullptr;
    QLineEdit *time = nullptr;
    QLabel *timeUnit = nullptr;
    QLineEdit *rate = nullptr;
    QLabel *rateUnit = nullptr;

    // Lines the data area keeps; the oldest go first, so a long stream never slows the window.
    static constexpr int kMaximumLineCount = 5000;

    // Fixed-width figures and data area.
    void prepare(QPlainTextEdit *dataArea) const;
    // Shows `bytes` moved in `elapsedMs`.
    void show(qint64 bytes, qint64 elapsedMs) const;

    // The file of the run and how it ended go under `fileLabel`; a failure, in red, into
    // `errorLabel`. Returns whether `text` reports a failure.
    static bool showRunReport(QLabel *fileLabel, QLabel *errorLabel, const QString &text,
                              bool error);
};
