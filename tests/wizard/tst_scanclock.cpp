#include "wizard/ScanClock.h"

#include <QtTest>

class TestScanClock : public QObject {
    Q_OBJECT
private slots:
    void labels_data();
    void labels();
    void percent();
};

void TestScanClock::labels_data()
{
    QTest::addColumn<int>("seconds");
    QTest::addColumn<QString>("elapsed");
    QTest::addColumn<QString>("remaining");
    QTest::newRow("first tick") << 1 << "00:00:01" << "00:09:59";
    QTest::newRow("ten minutes") << 600 << "00:10:00" << "00:00:00";
    QTest::newRow("past the countdown") << 601 << "00:10:01" << "23:59:59";
    QTest::newRow("a day wraps") << 86400 + 61 << "00:01:01" << "00:08:59";
}

void TestScanClock::labels()
{
    QFETCH(int, seconds);
    QFETCH(QString, elapsed);
    QFETCH(QString, remaining);
    QCOMPARE(ScanClock::elapsedText(seconds), elapsed);
    QCOMPARE(ScanClock::remainingText(seconds), remaining);
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
