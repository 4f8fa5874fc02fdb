#pragma once
#include <QElapsedTimer>
#include <QString>

class ScanSession;

// The progress line on stderr while a scan runs: a bar with the percentage,
// files found so far, elapsed time, throughput, and in a disk search the
// partition being scanned.
class ProgressLine {
public:
    explicit ProgressLine(const ScanSession* session);
    // The line as it stands now (no line break).
    QString render() const;
    static QString bar(int percent, int width);
    static QString duration(qint64 msecs);

private:
    int percent() const;
    const ScanSession* m_session;
    QElapsedTimer m_clock;
};
