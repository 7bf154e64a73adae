#include "tcp/transferfigures.h"

#include <QCoreApplication>

namespace {

constexpr qint64 kLargestBytes = 999;
constexpr qint64 kLargestKiloBytes = 999999;
constexpr double kSizeDivisor = 1000.0;
constexpr int kSizeDigits = 6;

constexpr double kKiloBits = 1000.0;
constexpr double kMegaBits = 1000000.0;
constexpr int kRateDigits = 3;

constexpr qint64 kBarLimit = 2147483647;
constexpr qint64 kBarDivisor = 1000;

QString translated(const char *text)
{
    return QCoreApplication::translate("TransferFigures", text);
}

// `digits` significant digits as the 'g' format writes them, but never in e-notation: a value
// that rounds up to the next unit (999.7 kbps) or beyond the largest unit is written in full.
QString significant(double value, int digits)
{
    const QString text = QString::number(value, 'g', digits);
    return text.contains(QLatin1Char('e')) ? QString::number(value, 'f', 0) : text;
}

} // namespace

namespace TransferFigures {

TransferFigure sizeFigure(qint64 bytes)
{
    if (bytes <= kLargestBytes)
        return {significant(double(bytes), kSizeDigits), translated("Bytes")};
    if (bytes <= kLargestKiloBytes)
        return {significant(double(bytes) / kSizeDivisor, kSizeDigits), translated("KBytes")};
    return {significant(double(bytes) / (kSizeDivisor * kSizeDivisor), kSizeDigits),
            translated("MBytes")};
}

TransferFigure timeFigure(qint64 elapsedMs)
{
    return {QStringLiteral("%L1").arg(double(elapsedMs) / 1000.0), translated("sec")};
}

TransferFigure rateFigure(qint64 bytes, qint64 elapsedMs)
{
    const double bitsPerSecond = double(bytes) * 8.0 / double(qMax<qint64>(elapsedMs, 1)) * 1000.0;
    if (bitsPerSecond < kKiloBits)
        return {significant(bitsPerSecond, kRateDigits), translated("bps")};
    if (bitsPerSecond < kMegaBits)
        return {significant(bitsPerSecond / kKiloBits, kRateDigits), translated("kbps")};
    return {significant(bitsPerSecond / kMegaBits, kRateDigits), translated("Mbps")};
}

ProgressBarRange progressBarRange(qint64 fileSize, qint64 sentSize)
{
    qint64 maximum = qMax<qint64>(fileSize, 0);
    qint64 value = qBound<qint64>(0, sentSize, maximum);
    while (maximum > kBarLimit) {
        maximum /= kBarDivisor;
        value /= kBarDivisor;
    }
    return {int(maximum), int(value)};
}

QString lossText(qint64 sentSize, qint64 fileSize)
{
    const qint64 loss = fileSize - sentSize;
    const double percent = fileSize > 0 ? double(loss) * 100.0 / double(fileSize) : 0.0;
    return QCoreApplication::translate("TCPSendInfoDlg", "loss %1 / %2 bytes (%3%)")
        .arg(loss)
        .arg(fileSize)
        .arg(QString::number(percent, 'g'));
}

QString breakLongLines(const QString &text, qsizetype currentLineChars, qsizetype longestLineChars)
{
    if (longestLineChars <= 1)
        return text;
    QString out;
    out.reserve(text.size() + text.size() / longestLineChars + 1);
    qsizetype lineChars = currentLineChars;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar ch = text.at(i);
        if (ch == QLatin1Char('\n')) {
            lineChars = 0;
        } else {
            if (lineChars >= longestLineChars && !ch.isLowSurrogate()) {
                out += QLatin1Char('\n');
                lineChars = 0;
            }
            ++lineChars;
        }
        out += ch;
    }
    return out;
}

} // namespace TransferFigures
