#include "tcp/transferfigurefields.h"

#include "tcp/transferfigures.h"

#include <QFontDatabase>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>

void TransferFigureFields::prepare(QPlainTextEdit *dataArea) const
{
    for (QLineEdit *field : {size, time, rate}) {
        QFont font = field->font();
        font.setStyleHint(QFont::Monospace);
        field->setFont(font);
    }
    dataArea->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    dataArea->setMaximumBlockCount(kMaximumLineCount);
}

void TransferFigureFields::show(qint64 bytes, qint64 elapsedMs) const
{
    const TransferFigure sizeFigure = TransferFigures::sizeFigure(bytes);
    const TransferFigure timeFigure = TransferFigures::timeFigure(elapsedMs);
    const TransferFigure rateFigure = TransferFigures::rateFigure(bytes, elapsedMs);
    size->setText(sizeFigure.value);
    sizeUnit->setText(sizeFigure.unit);
    time->setText(timeFigure.value);
    timeUnit->setText(timeFigure.unit);
    rate->setText(rateFigure.value);
    rateUnit->setText(rateFigure.unit);
}

bool TransferFigureFields::showRunReport(QLabel *fileLabel, QLabel *errorLabel, const QString &text,
                                         bool error)
{
    if (error) {
        errorLabel->setText(text);
    } else {
        const QString shown = fileLabel->text();
        fileLabel->setText(shown.isEmpty() ? text : shown + QLatin1Char('\n') + text);
    }
    return error;
}
