#include "process/Progress.h"

#include <QtTest>

Q_DECLARE_METATYPE(WorkUnit)

class tst_Progress : public QObject {
    Q_OBJECT

private slots:
    void text_data();
    void text();
};

void tst_Progress::text_data()
{
    QTest::addColumn<qint64>("done");
    QTest::addColumn<qint64>("total");
    QTest::addColumn<qint64>("milliseconds");
    QTest::addColumn<WorkUnit>("unit");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char* name, qint64 done, qint64 total, qint64 milliseconds,
                         WorkUnit unit, const QString& expected) {
        QTest::newRow(name) << done << total << milliseconds << unit << expected;
    };
    const QString half = QString(15, '#') + QString(15, '.');
    row("share alone", 50, 100, 1000, WorkUnit::None, "[" + half + "]  50%");
    row("bytes", 50'000'000, 100'000'000, 500, WorkUnit::Bytes,
        "[" + half + "]  50%  100 MB/s  0:01 left");
    row("rows", 1500, 3000, 1000, WorkUnit::Rows, "[" + half + "]  50%  1.5 krows/s  0:01 left");
    row("hours", 1, 7322, 1000, WorkUnit::Rows,
        "[" + QString(30, '.') + "]   0%  1 rows/s  2:02:01 left");
    row("all", 100, 100, 1000, WorkUnit::Bytes,
        "[" + QString(30, '#') + "] 100%  100 B/s  0:00 left");
    row("more than all", 300, 100, 1000, WorkUnit::None, "[" + QString(30, '#') + "] 100%");
    row("nothing yet", 0, 100, 1000, WorkUnit::Bytes, "[" + QString(30, '.') + "]   0%");
    row("no time yet", 50, 100, 0, WorkUnit::Bytes, "[" + half + "]  50%");
    row("total not known", 2'400'000'000, -1, 2000, WorkUnit::Bytes, "2.4 GB  1.2 GB/s");
    row("rounding up", 999'600, -1, 0, WorkUnit::Bytes, "1.0 MB");
}

void tst_Progress::text()
{
    QFETCH(qint64, done);
    QFETCH(qint64, total);
    QFETCH(qint64, milliseconds);
    QFETCH(WorkUnit, unit);
    QTEST(progressText(done, total, milliseconds, unit), "expected");
}

QTEST_APPLESS_MAIN(tst_Progress)
#include "tst_Progress.moc"
