// A small plot drawn with QPainter: values over time as a line, or changes as marks, with round
// grid lines, the value's unit and seconds on the time axis. The data and its scaling live in
// PlotData; this widget only draws what it is given.
#pragma once

#include "ui/plotdata.h"

#include <QWidget>

class PlotWidget : public QWidget
{
    Q_OBJECT

public:
    enum class Style { Line, Marks };
    Q_ENUM(Style)

    explicit PlotWidget(QWidget *parent = nullptr);

    void setStyle(Style style);
    [[nodiscard]] Style style() const { return m_style; }
    // The unit shown above the value axis ("MB/s").
    void setUnit(const QString &unit);
    void setZeroBased(bool zeroBased);
    void setWholeRun(bool wholeRun);

    void append(double seconds, double value);
    void clear();
    [[nodiscard]] const PlotData &data() const { return m_data; }

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    [[nodiscard]] static QString number(double value, double step);

    PlotData m_data;
    Style m_style = Style::Line;
    QString m_unit;
};
