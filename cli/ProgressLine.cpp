#include "cli/ProgressLine.h"
#include "cli/ScanSession.h"
#include "diskscan/DiskScan.h"
#include "results/ResultTree.h"

namespace {
constexpr int kBarWidth = 30;
constexpr double kMiB = 1024.0 * 1024.0;
} // namespace

ProgressLine::ProgressLine(const ScanSession* session) : m_session(session)
{
    m_clock.start();
}

int ProgressLine::percent() const
{
    if (const auto* disk = qobject_cast<const DiskScan*>(m_session->scanner())) {
        const quint64 end = disk->searchEnd;
        return end ? int(disk->searchPosition * 100 / end) : 0;
    }
    const int total = m_session->progressTotal();
    if (total <= 0)
        return 0;
    return int(qBound<qint64>(qint64(0), qint64(m_session->progressDone()) * 100 / total, qint64(100)));
}

QString ProgressLine::bar(int percent, int width)
{
    const int filled = qBound(0, percent, 100) * width / 100;
    return QStringLiteral("[%1%2]").arg(QString(filled, QLatin1Char('#')), QString(width - filled, QLatin1Char('.')));
}

QString ProgressLine::duration(qint64 msecs)
{
    const qint64 s = msecs / 1000;
    return QStringLiteral("%1:%2:%3").arg(s / 3600, 2, 10, QLatin1Char('0')).arg(s / 60 % 60, 2, 10, QLatin1Char('0')).arg(s % 60, 2, 10, QLatin1Char('0'));
}

QString ProgressLine::render() const
{
    const qint64 elapsed = m_clock.elapsed();
    const quint64 bytes = m_session->scanner()->bytesRead;
    const double rate = elapsed > 0 ? double(bytes) / kMiB / (double(elapsed) / 1000.0) : 0.0;
    const int p = percent();
    QString line = QStringLiteral("%1 %2%  %3 files  %4  %5 MiB/s")
                       .arg(bar(p, kBarWidth)).arg(p, 3).arg(m_session->tree().files())
                       .arg(duration(elapsed)).arg(rate, 0, 'f', 1);
    if (m_session->currentPartition() >= 0)
        line += QStringLiteral("  partition %1").arg(m_session->currentPartition());
    return line;
}
