#include "wizard/ScanClock.h"

#include <QtTest>

class TestScanClock : public QObject {
    Q_OBJECT
private slots:
    void labels_data();
    void labels();
    void percent();
    void timeLeftFollowsMeasuredSpeed_data();
    void timeLeftFollowsMeasuredSpeed();
};

void TestScanClock::labels_data()
{
    QTest::addColumn<int>("seconds");
    QTest::addColumn<QString>("elapsed");
    QTest::newRow("first tick") << 1 << "00:00:01";
    QTest::newRow("ten minutes") << 600 << "00:10:00";
    QTest::newRow("past a day") << 86400 + 61 << "24:01:01";
}

void TestScanClock::labels()
{
    QFETCH(int, seconds);
    QFETCH(QString, elapsed);
    QCOMPARE(ScanClock::elapsedText(seconds), elapsed);
    QCOMPARE(ScanClock::durationText(-1), QStringLiteral("--:--:--"));
}

void TestScanClock::timeLeftFollowsMeasuredSpeed_data()
{
    // A scan of 10000 units; each row: msecs per unit before and after the
    // half, a pause (msecs) at the half, and when the estimate is read.
    QTest::addColumn<int>("firstRate");
    QTest::addColumn<int>("pauseMsecs");
    QTest::addColumn<int>("readAtUnits");
    QTest::addColumn<qint64>("expected"); // -1: no estimate yet
    QTest::newRow("steady, half way") << 2 << 0 << 5000 << qint64(10000);
    QTest::newRow("a pause does not count") << 2 << 60000 << 5000 << qint64(10000);
    QTest::newRow("three quarters") << 1 << 0 << 7500 << qint64(2500);
    QTest::newRow("too early to say") << 1 << 0 << 100 << qint64(-1);
    QTest::newRow("done") << 1 << 0 << 10000 << qint64(0);
}

void TestScanClock::timeLeftFollowsMeasuredSpeed()
{
    QFETCH(int, firstRate);
    QFETCH(int, pauseMsecs);
    QFETCH(int, readAtUnits);
    QFETCH(qint64, expected);
    qint64 now = 1000;
    ScanClock clock([&now] { return now; });
    clock.start();
    const quint64 total = 10000;
    for (quint64 done = 0; done < quint64(readAtUnits);) {
        done += 100;
        now += 100 * firstRate;
        clock.progress(done, total);
        if (done == total / 2 && pauseMsecs) {
            clock.setRunning(false);
            now += pauseMsecs;
            clock.setRunning(true);
        }
    }
    const qint64 left = clock.remainingMsecs();
    if (expected <= 0)
        QCOMPARE(left, expected);
    else
        QVERIFY2(qAbs(left - expected) <= expected / 4, qPrintable(QString::number(left)));
}

void TestScanClock::percent()
{
    QCOMPARE(ScanClock::percent(1, 3), 33);
    QCOMPARE(ScanClock::percent(9999999, 10000000), 99);
    QCOMPARE(ScanClock::percent(quint64(1) << 40, quint64(1) << 41), 50);
    QCOMPARE(ScanClock::percent(5, 0), 0);
    QCOMPARE(ScanClock::percent(12, 10), 100);
}

QTEST_MAIN(TestScanClock)
#include "tst_scanclock.moc"
