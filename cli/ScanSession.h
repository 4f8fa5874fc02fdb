#pragma once
#include <QObject>
#include "results/ResultTree.h"

#include <QString>

struct FolderNode;
class PartScan;

// One scanner run from the command line, the way the wizard runs it: the
// invisible top node and the visible root, the options, the signals, and a
// wait in the event loop until the scanner reports the end.
class ScanSession : public QObject {
    Q_OBJECT
public:
    // Takes ownership of the scanner; rootName names the visible root folder.
    ScanSession(PartScan* scanner, const QString& rootName, bool fat32Root);
    ~ScanSession() override;

    void setOptions(const QString& fileFilter, bool doExtra);
    // Draw a progress line on stderr while the thread runs.
    void setShowProgress(bool show) { m_showProgress = show; }
    // Ctrl-C reached the scan (it was asked to stop).
    bool interrupted() const { return m_interrupted; }
    void scan();
    // Writes the fully checked folders below dir through the scanner's own
    // restore; keepBoth numbers a file whose name is taken instead of replacing it.
    void restore(const QString& dir, bool keepBoth = false);
    void stop();

    FolderNode* root() const { return m_nodes.root(); }
    const ResultTree& tree() const { return m_nodes; }
    quint64 results() const { return m_results; }
    quint64 totalSize() const { return m_totalSize; }
    quint64 restoredFiles() const { return m_restoredFiles; }
    quint64 restoredBytes() const { return m_restoredBytes; }
    int progressTotal() const { return m_progressTotal; }
    int progressDone() const { return m_progressDone; }
    int currentPartition() const { return m_partition; }
    PartScan* scanner() const { return m_scanner; }

signals:
    void progress();

private:
    void runThread();
    ResultTree m_nodes; // declared before the scanner, so it is freed after it
    PartScan* m_scanner;
    quint64 m_results = 0;
    quint64 m_totalSize = 0;
    quint64 m_restoredFiles = 0;
    quint64 m_restoredBytes = 0;
    int m_progressTotal = 0;
    int m_progressDone = 0;
    int m_partition = -1;
    bool m_showProgress = false;
    bool m_interrupted = false;
};
