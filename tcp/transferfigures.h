// The figures both transfer dialogs show: size, time and rate with their units, the progress bar
// range, the loss report of a stopped send, and where long received lines are broken.
// Widget-free so that the rules can be checked on their own.
#pragma once

#include <QString>
#include <QtGlobal>

// A number as shown in a dialog's read-only field and the text of the unit label beside it.
struct TransferFigure
{
    QString value;
    QString unit;
};

// Range and position of a progress bar, both within the bar's int range.
struct ProgressBarRange
{
    int maximum = 0;
    int value = 0;
};

namespace TransferFigures {

// Bytes, "KBytes" or "MBytes" with divisor 1000, six significant digits.
[[nodiscard]] TransferFigure sizeFigure(qint64 bytes);
// Seconds with the locale's digits; the unit is always "sec".
[[nodiscard]] TransferFigure timeFigure(qint64 elapsedMs);
// Bits per second as "bps", "kbps" or "Mbps", three significant digits. An elapsed time below
// one millisecond counts as one.
[[nodiscard]] TransferFigure rateFigure(qint64 bytes, qint64 elapsedMs);

// A QProgressBar holds ints: sizes above 2 GiB are divided by 1000 until the maximum fits.
[[nodiscard]] ProgressBarRange progressBarRange(qint64 fileSize, qint64 sentSize);

// "loss %1 / %2 bytes (%3%)" for a send stopped after `sentSize` of `fileSize` bytes.
[[nodiscard]] QString lossText(qint64 sentSize, qint64 fileSize);

// `text` (line feeds as line ends) with a line feed added wherever a line would grow beyond
// `longestLineChars`, given that the line it continues already holds `currentLineChars`. A
// surrogate pair is never split.
[[nodiscard]] QString breakLongLines(const QString &text, qsizetype currentLineChars,
                                     qsizetype longestLineChars);

} // namespace TransferFigures
