#include "scan/ScanSaver.h"
#include "scan/PartScan.h"

#include <QDebug>

ScanSaver::ScanSaver(const QString& path, const SavedScan& header, int intervalSeconds)
    : m_path(path), m_saved(header), m_intervalMsecs(qint64(qMax(intervalSeconds, 0)) * 1000)
{
    m_sinceSave.start();
}

void ScanSaver::attach(PartScan* scanner)
{
    scanner->onResumePoint = [this, scanner] {
        if (m_sinceSave.elapsed() >= m_intervalMsecs) {
            QString why;
            if (!saveNow(*scanner, &why) && !m_failed)
                qCritical("%s", qUtf8Printable(why));
            m_failed = m_failed || !why.isEmpty();
        }
        if (afterPoint)
            afterPoint(*scanner);
    };
}

bool ScanSaver::saveNow(const PartScan& scanner, QString* why)
{
    m_sinceSave.restart();
    m_saved.capture(scanner);
    return m_saved.write(m_path, why);
}
