#pragma once
#include "scan/SavedScan.h"

#include <QElapsedTimer>
#include <QString>
#include <functional>

class PartScan;

// Keeps a running scan saved in one file: at the scan's check points once
// every interval, and once more when the front end says the scan has ended
// (finished or stopped).
class ScanSaver {
public:
    // How often a long scan is saved unless told otherwise: a crash costs at most this much of it.
    static constexpr int kDefaultSeconds = 60;

    // header: the source, options and fingerprint; its point and tree are filled at each save.
    ScanSaver(const QString& path, const SavedScan& header, int intervalSeconds = kDefaultSeconds);

    // Saves from scanner's check points from now on.
    void attach(PartScan* scanner);
    // Saves the scanner's present point and tree.
    bool saveNow(const PartScan& scanner, QString* why);
    QString path() const { return m_path; }

    // Called on the scan's thread after each check point's look (and save, when one was due).
    std::function<void(PartScan& scanner)> afterPoint;

private:
    QString m_path;
    SavedScan m_saved;
    qint64 m_intervalMsecs;
    QElapsedTimer m_sinceSave;
    bool m_failed = false; // a failing target is reported once, not at every check point
};
