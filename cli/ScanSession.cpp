#include "cli/ScanSession.h"
#include "results/FolderNode.h"
#include "scan/PartScan.h"

#include <QCoreApplication>
#include "cli/Interrupt.h"
#include "cli/ProgressLine.h"

#include <QEventLoop>
#include <QTimer>
#include <cstdio>

namespace {
// How often the progress line is redrawn and Ctrl-C looked for.
constexpr int kTickMsecs = 200;
}

ScanSession::ScanSession(PartScan* scanner, const QString& rootName, bool fat32Root)
    : m_nodes(rootName, !fat32Root), m_scanner(scanner)
{
    m_scanner->rootFolder = m_nodes.root();
    connect(m_scanner, &PartScan::scanBegin, this, [this](int total) {
        m_progressTotal = total;
        emit progress();
    });
    connect(m_scanner, &PartScan::scanOne, this, [this](int done) {
        m_progressDone = done;
        emit progress();
    });
    connect(m_scanner, &PartScan::diskScanBegin, this, [this](int partition, const QString&) {
        m_partition = partition;
        emit progress();
    });
    connect(m_scanner, &PartScan::scanDone, this, [this](quint64 results, quint64 size) {
        m_results = results;
        m_totalSize = size;
    });
    connect(m_scanner, &PartScan::undeleteProgress, this, [this](quint64 files, quint64 bytes) {
        m_restoredFiles += files;
        m_restoredBytes += bytes;
        emit progress();
    });
}

ScanSession::~ScanSession()
{
    // The scanner owns the visible root and everything below it.
    delete m_scanner;
}

void ScanSession::setOptions(const QString& fileFilter, bool doExtra)
{
    m_scanner->fileFilter = fileFilter;
    m_scanner->doExtra = doExtra;
}

void ScanSession::runThread()
{
    QEventLoop loop;
    connect(m_scanner, &QThread::finished, &loop, &QEventLoop::quit);
    ProgressLine line(this);
    QTimer tick;
    connect(&tick, &QTimer::timeout, this, [&] {
        if (Interrupt::count() > 0 && !m_interrupted) {
            m_interrupted = true;
            m_scanner->stop();
        }
        if (m_showProgress)
            std::fprintf(stderr, "\r%s", line.render().toUtf8().constData());
    });
    tick.start(kTickMsecs);
    m_scanner->start();
    // finished() reaches this loop queued, so it cannot be missed.
    loop.exec();
    // A Ctrl-C the tick had no time to see still stopped the scan.
    m_interrupted = m_interrupted || Interrupt::count() > 0;
    if (m_showProgress)
        std::fprintf(stderr, "\r%s\n", line.render().toUtf8().constData());
    // Signals queued just before the thread ended are delivered here.
    QCoreApplication::sendPostedEvents(this);
}

void ScanSession::scan()
{
    runThread();
}

void ScanSession::restore(const QString& dir, bool keepBoth)
{
    m_scanner->setRestoreDir(dir);
    m_scanner->keepBoth = keepBoth;
    runThread();
}

void ScanSession::stop()
{
    m_scanner->stop();
}
