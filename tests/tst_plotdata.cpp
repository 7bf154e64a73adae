// The plot's data handling without painting: ranges, windows, decimation and the ring; and the
// rate samples the transfer dialogs feed it.
#include "tcp/ratesampler.h"
#include "testtable.h"
#include "ui/plotdata.h"

#include <QtTest>

template <typename T> static T cell(const char *column)
{
    return *static_cast<T *>(QTest::qData(column, qMetaTypeId<T>()));
}

// "t:v t:v ..." into `data`; "N*t:v" appends N samples from t on, one a second, all valued v,
// and a "!" before a value makes it a spike of that value in the middle of the run.
static void feed(PlotData *data, const QString &samples)
{
    for (const QString &sample : samples.split(' ', Qt::SkipEmptyParts)) {
        const QStringList repeat = sample.split('*');
        const int count = repeat.size() == 2 ? repeat[0].toInt() : 1;
        const QStringList pair = repeat.last().split(':');
        const bool spike = pair[1].startsWith('!');
        for (int i = 0; i < count; ++i)
            data->append(pair[0].toDouble() + i,
                         spike && i != count / 2 + 7 ? 1 : pair[1].mid(spike ? 1 : 0).toDouble());
    }
}

static QString text(const PlotRange &range)
{
    return QStringLiteral("%1..%2/%3").arg(range.low).arg(range.high).arg(range.step);
}

class TestPlotData : public QObject
{
    Q_OBJECT

private slots:
    void ranges_data()
    {
        // clang-format off
        columns<QString, bool, bool, int, QString, QString, QString>("samples", "wholeRun", "zeroBased", "capacity", "time", "value", "shown");
        QTest::addRow("empty: the window and 0..1") << "" << false << true << 100 << "0..60/20" << "0..1/0.25" << "";
        QTest::addRow("a flat 0.262 MB/s line") << "3*1:0.262144" << false << true << 100 << "0..60/20" << "0..0.3/0.1" << "1:0.262144 2:0.262144 3:0.262144";
        QTest::addRow("the window scrolls after a minute") << "100*0:5" << false << true << 1000 << "39..99/20" << "0..6/2" << "61 samples";
        QTest::addRow("the whole run") << "100*0:5" << true << true << 1000 << "0..100/25" << "0..6/2" << "100 samples";
        QTest::addRow("register values hug the line") << "0:1000 1:1010 2:1020" << false << false << 100 << "0..60/20" << "1000..1020/5" << "0:1000 1:1010 2:1020";
        QTest::addRow("one register value: a band around it") << "0:200" << false << false << 100 << "0..60/20" << "100..300/50" << "0:200";
        QTest::addRow("negative values") << "0:-3 1:2" << false << true << 100 << "0..60/20" << "-4..2/2" << "0:-3 1:2";
        QTest::addRow("an older sample is dropped") << "5:1 4:9" << false << true << 100 << "0..60/20" << "0..1/0.25" << "5:1";
        QTest::addRow("the ring keeps the newest") << "10*0:7" << true << true << 4 << "6..9/1" << "0..8/2" << "6:7 7:7 8:7 9:7";
        QTest::addRow("a long run: one or two a pixel, the spike kept") << "3000*0:!50" << true << true << 100000 << "0..3000/1000" << "0..60/20" << "10 pixels: 11 samples, highest 50";
        // clang-format on
    }
    void ranges()
    {
        PlotData data(cell<int>("capacity"));
        data.setWholeRun(cell<bool>("wholeRun"));
        data.setZeroBased(cell<bool>("zeroBased"));
        feed(&data, cell<QString>("samples"));
        QTEST(text(data.timeRange()), "time");
        QTEST(text(data.valueRange()), "value");
        const bool decimated = data.size() > 1000;
        const QList<QPointF> points = data.visible(decimated ? 10 : 1000);
        QStringList shown;
        for (const QPointF &point : points)
            shown << QStringLiteral("%1:%2").arg(point.x()).arg(point.y());
        double highest = 0;
        for (const QPointF &point : points)
            highest = std::max(highest, point.y());
        if (decimated)
            QTEST(
                QStringLiteral("10 pixels: %1 samples, highest %2").arg(points.size()).arg(highest),
                "shown");
        else if (points.size() > 10)
            QTEST(QStringLiteral("%1 samples").arg(points.size()), "shown");
        else
            QTEST(shown.join(' '), "shown");
    }
    // "bytes@ms" progress reports, then the end of the run; the samples taken.
    void rateSamples_data()
    {
        // clang-format off
        columns<QString, QString, QString>("reports", "end", "samples");
        QTest::addRow("one a second, not one a report") << "262144@500 524288@1000 786432@1500 1048576@2000" << "1048576@2000" << "1:0.524 2:0.524";
        QTest::addRow("a short last stretch") << "1000000@1000" << "1200000@1100" << "1:1 1.1:2";
        QTest::addRow("a run shorter than a step: its average") << "500@10" << "2000@200" << "0.2:0.01";
        QTest::addRow("a new run starts over") << "1000000@1000 10@5 2000010@1005" << "2000010@1005" << "1:1 1.005:1.99";
        // clang-format on
    }
    void rateSamples()
    {
        RateSampler sampler;
        QStringList samples;
        const auto note = [&samples](std::optional<QPointF> point) {
            if (point)
                samples << QStringLiteral("%1:%2").arg(point->x()).arg(point->y(), 0, 'g', 3);
        };
        for (const QString &report : cell<QString>("reports").split(' ')) {
            const QStringList at = report.split('@');
            note(sampler.take(at[0].toLongLong(), at[1].toLongLong()));
        }
        const QStringList end = cell<QString>("end").split('@');
        note(sampler.finish(end[0].toLongLong(), end[1].toLongLong()));
        QTEST(samples.join(' '), "samples");
    }
};

QTEST_GUILESS_MAIN(TestPlotData)
#include "tst_plotdata.moc"
