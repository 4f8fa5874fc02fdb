#include "cli/CliApp.h"
#include "cli/DeviceRows.h"
#include "cli/Interrupt.h"
#include "cli/ScanSession.h"
#include "cli/SourceSpec.h"
#include "cli/JsonLines.h"
#include "cli/TreeReport.h"
#include "results/CheckStates.h"
#include "results/FolderNode.h"
#include "scan/PartScan.h"
#include "scan/ScanSaver.h"
#include "volumes/VolumeOpener.h"
#include "scan/device/CombinedDeviceLayer.h"
#include "scan/device/Console.h"
#include "scan/device/DeviceLayer.h"
#include "scan/device/SourceGuard.h"

#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>

namespace {
const char* const kUnrecognised = "无法识别的文件系统。";
const char* const kDeviceFailed = "设备读取失败";
bool verbose = false;

// Fatal conditions of a scan end the process with their message and a status
// of their own instead of a core dump; progress traces only with --verbose.
void messageHandler(QtMsgType type, const QMessageLogContext&, const QString& message)
{
    if (type == QtDebugMsg && !verbose)
        return;
    std::fprintf(stderr, "%s%s\n", type == QtFatalMsg ? "ostrel-cli: fatal: " : "", message.toUtf8().constData());
    if (type == QtFatalMsg) {
        std::fflush(stderr);
        std::_Exit(CliApp::Fatal);
    }
}

void out(const QString& text)
{
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stdout);
    std::fflush(stdout);
}

// A line of a long listing: stdout's own buffer carries it, flushed at the end.
void outLine(const QString& text)
{
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stdout);
}

void err(const QString& text)
{
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stderr);
}

struct Failure {
    int code = CliApp::Ok;
    QString message;
};

// The device layer the commands use: the machine's disks and the images
// folder, or with --images-only just the image files the command names (so
// scripts and tests see neither the host's disks nor the images folder).
class Devices {
public:
    explicit Devices(bool imagesOnly)
    {
        if (imagesOnly) {
            m_own = std::make_unique<ImageDeviceLayer>();
            m_layer = m_own.get();
            DeviceLayer::setInstance(m_layer);
        } else {
            m_layer = &CombinedDeviceLayer::program();
        }
    }
    ~Devices() { DeviceLayer::setInstance(nullptr); }
    ImageDeviceLayer& layer() { return *m_layer; }

    Failure addImages(const QStringList& images)
    {
        for (const QString& path : images) {
            int error = 0;
            if (m_layer->addImageFile(path, &error) < 0)
                return {CliApp::NoSource, QStringLiteral("cannot open image %1: %2").arg(path, QString::fromLocal8Bit(strerror(error)))};
        }
        return {};
    }

private:
    std::unique_ptr<ImageDeviceLayer> m_own;
    ImageDeviceLayer* m_layer = nullptr;
};

void addCommonOptions(QCommandLineParser& parser)
{
    parser.addHelpOption();
    parser.addOption({QStringLiteral("json"), QStringLiteral("Print one JSON document.")});
    parser.addOption({QStringLiteral("image"), QStringLiteral("Add an image file to the device list."), QStringLiteral("FILE")});
    parser.addOption({QStringLiteral("images-only"), QStringLiteral("Use only the image files named here: not the machine's disks, not the images folder.")});
}

int devicesCommand(const QStringList& args)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("List disks and partitions as the wizard's device page shows them."));
    addCommonOptions(parser);
    parser.process(args);
    Devices devices(parser.isSet(QStringLiteral("images-only")));
    const Failure f = devices.addImages(parser.values(QStringLiteral("image")));
    if (f.code != CliApp::Ok) {
        err(QStringLiteral("ostrel-cli: %1\n").arg(f.message));
        return f.code;
    }
    const QList<DeviceRow> rows = DeviceRows::collect(devices.layer());
    if (parser.isSet(QStringLiteral("json")))
        out(QString::fromUtf8(QJsonDocument(QJsonObject{{"disks", DeviceRows::json(rows)}}).toJson()));
    else
        out(DeviceRows::text(rows));
    return CliApp::Ok;
}

struct Target {
    bool wholeDisk = false;
    QChar letter;
    int disk = -1;
    QString diskName;
};

QString diskNameOf(DeviceLayer& layer, int disk)
{
    const auto identity = layer.diskIdentity(disk);
    if (identity && !identity->model.isEmpty())
        return QString::fromUtf8(identity->model);
    return QString::fromUtf8(layer.diskFriendlyName(disk));
}

Failure letterOfImagePartition(DeviceLayer& layer, int disk, int partition, QChar* letter)
{
    const auto layout = layer.driveLayout(disk);
    const int count = layout ? int(layout->entries.size()) : 0;
    QList<QChar> letters(count);
    for (QChar c : layer.lettersOfDisk(disk)) {
        const auto entry = layer.partitionOfLetter(c);
        for (int i = 0; i < count && entry; ++i) {
            if (layout->entries[i].startingOffset == entry->startingOffset)
                letters[i] = c;
        }
    }
    if (partition == 0) {
        QList<int> lettered;
        for (int i = 0; i < count; ++i)
            if (!letters[i].isNull())
                lettered.append(i + 1);
        if (lettered.isEmpty())
            return {CliApp::Unrecognised, QString::fromUtf8(kUnrecognised)};
        if (lettered.size() > 1)
            return {CliApp::BadPartition, QStringLiteral("the image holds %1 volumes: choose one with IMAGE@N").arg(lettered.size())};
        partition = lettered.first();
    }
    if (partition < 1 || partition > count)
        return {CliApp::BadPartition, QStringLiteral("partition %1 out of range (the image has %2)").arg(partition).arg(count)};
    *letter = letters[partition - 1];
    if (letter->isNull())
        return {CliApp::Unrecognised, QString::fromUtf8(kUnrecognised)};
    return {};
}

Failure resolve(Devices& devices, const SourceSpec& source, bool wholeDisk, Target* t)
{
    DeviceLayer& layer = devices.layer();
    t->wholeDisk = wholeDisk;
    switch (source.kind) {
    case SourceSpec::Letter:
        t->letter = source.letter;
        t->disk = layer.deviceNumberOfLetter(source.letter);
        if (t->disk < 0)
            return {CliApp::NoSource, QStringLiteral("no volume has the letter %1").arg(source.letter)};
        break;
    case SourceSpec::Disk:
        if (!layer.listDisks().contains(source.disk))
            return {CliApp::NoSource, QStringLiteral("no disk %1").arg(source.disk)};
        if (!wholeDisk)
            return {CliApp::Usage, QStringLiteral("a whole disk is searched with --mode partition")};
        t->disk = source.disk;
        break;
    case SourceSpec::Image: {
        int error = 0;
        t->disk = devices.layer().addImageFile(source.imagePath, &error);
        if (t->disk < 0)
            return {CliApp::NoSource, QStringLiteral("cannot open image %1: %2").arg(source.imagePath, QString::fromLocal8Bit(strerror(error)))};
        if (!wholeDisk) {
            const Failure f = letterOfImagePartition(layer, t->disk, source.partition, &t->letter);
            if (f.code != CliApp::Ok)
                return f;
        }
        break;
    }
    }
    t->diskName = diskNameOf(layer, t->disk);
    return {};
}

struct ScanOptions {
    bool wholeDisk = false;
    bool doExtra = false;
    QString fileFilter = QStringLiteral("*");
};

Failure scanOptions(const QCommandLineParser& parser, ScanOptions* o)
{
    const QString mode = parser.value(QStringLiteral("mode"));
    if (mode == QLatin1String("file")) {
        o->doExtra = parser.isSet(QStringLiteral("deep"));
        if (parser.isSet(QStringLiteral("types")))
            o->fileFilter = parser.value(QStringLiteral("types"));
    } else if (mode == QLatin1String("format")) {
        o->doExtra = true;
    } else if (mode == QLatin1String("partition")) {
        o->wholeDisk = true;
    } else {
        return {CliApp::Usage, QStringLiteral("unknown mode %1 (file, format or partition)").arg(mode)};
    }
    return {};
}

std::unique_ptr<ScanSession> makeSession(const Target& t, const ScanOptions& o, Failure* f)
{
    const OpenedSource opened = t.wholeDisk ? VolumeOpener::openDisk(t.disk) : VolumeOpener::openLetter(t.letter, o.doExtra);
    if (!opened.scanner) {
        if (opened.unopenable)
            *f = {CliApp::Fatal, QStringLiteral("fatal: ") + opened.problem};
        else
            *f = {CliApp::Unrecognised, opened.problem};
        return nullptr;
    }
    auto session = std::make_unique<ScanSession>(opened.scanner, t.wholeDisk ? t.diskName : opened.rootName, !opened.ntfsTree);
    session->setOptions(o.fileFilter, o.doExtra);
    return session;
}

void addScanOptions(QCommandLineParser& parser)
{
    addCommonOptions(parser);
    parser.addOption({QStringLiteral("mode"), QStringLiteral("file (quick scan), format (deep scan, all types) or partition (whole-disk search)."),
                      QStringLiteral("MODE"), QStringLiteral("file")});
    parser.addOption({QStringLiteral("deep"), QStringLiteral("File mode: also find files by their signatures.")});
    parser.addOption({QStringLiteral("types"), QStringLiteral("File mode: name endings joined by \";\"."), QStringLiteral("LIST")});
    parser.addOption({QStringLiteral("csv"), QStringLiteral("Also write the found files to FILE as CSV (UTF-8, for spreadsheets)."), QStringLiteral("FILE")});
    parser.addOption({QStringLiteral("dfxml"), QStringLiteral("Also write the found files to FILE as a DFXML listing."), QStringLiteral("FILE")});
    parser.addOption({QStringLiteral("min-size"), QStringLiteral("List and restore only files of at least SIZE (bytes, or with K, M, G)."), QStringLiteral("SIZE")});
    parser.addOption({QStringLiteral("max-size"), QStringLiteral("List and restore only files of at most SIZE."), QStringLiteral("SIZE")});
    parser.addOption({QStringLiteral("after"), QStringLiteral("List and restore only files modified on or after DATE (yyyy-MM-dd, UTC)."), QStringLiteral("DATE")});
    parser.addOption({QStringLiteral("before"), QStringLiteral("List and restore only files modified on or before DATE."), QStringLiteral("DATE")});
    parser.addOption({QStringLiteral("name"), QStringLiteral("List and restore only files whose name contains TEXT, or matches it with * and ?, in any case."), QStringLiteral("TEXT")});
    parser.addOption({QStringLiteral("save"), QStringLiteral("Keep the scan saved in FILE (every minute and when it ends or is stopped), to go on with --resume."), QStringLiteral("FILE")});
    parser.addOption({QStringLiteral("resume"), QStringLiteral("Go on with the scan saved in FILE: its source and options, from where it stood. It is saved there again as it goes."), QStringLiteral("FILE")});
    parser.addOption({QStringLiteral("save-every"), QStringLiteral("Save every SECONDS instead of every 60."), QStringLiteral("SECONDS")});
    parser.addPositionalArgument(QStringLiteral("SOURCE"), QStringLiteral("E, disk:N, IMAGE or IMAGE@N (not with --resume)"));
}

// The options that narrow what is listed and restored, as the wizard's filters do.
Failure filterOptions(const QCommandLineParser& parser, ResultFilter* filter)
{
    const struct {
        const char* option;
        quint64* value;
        bool (*parse)(const QString&, quint64*);
    } fields[] = {
        {"min-size", &filter->minSize, ResultFilter::parseSize},
        {"max-size", &filter->maxSize, ResultFilter::parseSize},
        {"after", &filter->afterMsecs, ResultFilter::parseDate},
        {"before", &filter->beforeMsecs, ResultFilter::parseDate},
    };
    for (const auto& field : fields) {
        const QString text = parser.value(QLatin1String(field.option));
        if (!text.isEmpty() && !field.parse(text, field.value))
            return {CliApp::Usage, QStringLiteral("--%1: cannot read \"%2\"").arg(QLatin1String(field.option), text)};
    }
    if (filter->beforeMsecs)
        filter->beforeMsecs += 24ull * 3600 * 1000; // the whole last day
    filter->name = parser.value(QStringLiteral("name"));
    return {CliApp::Ok, QString()};
}

// Made when missing; refused when it lies on the source device, in every mode.
Failure checkTarget(const QString& targetDir, const Target& target)
{
    const QString refusal = SourceGuard::refusalForDisk(targetDir, target.disk);
    if (!refusal.isEmpty())
        return {CliApp::BadTarget, refusal};
    // Where the device layer knows only a mount point (no device node), the
    // canonical paths are compared, so a symlink to it is seen through too.
    const QString mount = target.letter.isNull() ? QString() : DeviceLayer::instance().mountPointOfLetter(target.letter);
    const QString canonicalMount = mount.isEmpty() ? QString() : QFileInfo(mount).canonicalFilePath();
    if (!QDir().mkpath(targetDir))
        return {CliApp::BadTarget, QStringLiteral("cannot create %1").arg(targetDir)};
    const QString canonicalTarget = QFileInfo(targetDir).canonicalFilePath();
    if (!canonicalMount.isEmpty() && (canonicalTarget + '/').startsWith(QString(canonicalMount + '/').replace("//", "/")))
        return {CliApp::BadTarget, QStringLiteral("%1 lies on the volume being recovered (mounted at %2): "
                                                  "restoring there would overwrite lost files").arg(targetDir, mount)};
    return {};
}

QJsonArray badRangesJson(const QList<BadRange>& ranges)
{
    QJsonArray list;
    for (const BadRange& r : ranges)
        list.append(QJsonObject{{"offset", double(r.offset)}, {"length", double(r.length)}});
    return list;
}

// Ticks only the folders named (paths as the listing shows them), when any are.
Failure selectOnly(const QStringList& only, FolderNode* top)
{
    if (only.isEmpty())
        return {};
    // The top node keeps its state; what hangs below it is unticked.
    for (FolderNode* child : top->children)
        CheckStates::set(child, 0);
    for (FoundFile* file : top->files)
        CheckStates::setFile(top, file, false, [](FolderNode*) {});
    for (const QString& path : only) {
        FolderNode* folder = TreeReport::find(top, path);
        if (!folder)
            return {CliApp::Usage, QStringLiteral("no folder %1 in the results").arg(path)};
        CheckStates::set(folder, 2);
    }
    return {};
}

// Restores what is ticked. With a JSON document, its "restore" object lists
// every file as it is written (none is kept in memory), then the problem
// files and the counts; otherwise only the problem files are kept.
void restoreListed(ScanSession& session, const QString& targetDir, bool keepBoth, JsonLines* doc)
{
    RestoreReport& report = session.scanner()->restoreReport;
    if (doc) {
        doc->openObject(QStringLiteral("restore"));
        doc->openArray(QStringLiteral("files"));
        report.setWholeSink([doc](const RestoredFile& file) { doc->element(RestoreReport::fileJson(file)); });
    }
    session.restore(targetDir, keepBoth);
    if (!doc)
        return;
    report.setWholeSink({});
    for (const RestoredFile& file : report.files())
        doc->element(RestoreReport::fileJson(file));
    doc->closeArray();
    doc->members({{"written", double(report.written())},
                  {"damaged", double(report.damaged())},
                  {"failed", double(report.failed())}});
    doc->closeObject();
}

QString restoreSummary(const RestoreReport& report, const QString& targetDir)
{
    QString text = QStringLiteral("restored %1 files, %2 bytes to %3\n")
                       .arg(report.written() + report.damaged()).arg(report.bytesWritten()).arg(targetDir);
    for (const QString& line : report.problemLines())
        text += line + QLatin1Char('\n');
    if (report.failed() + report.damaged() > 0)
        text += QStringLiteral("%1 whole, %2 damaged, %3 not written\n").arg(report.written()).arg(report.damaged()).arg(report.failed());
    return text;
}

// A device that stopped answering outranks files left unwritten.
int exitStatus(const PartScan& scanner, bool restore)
{
    if (scanner.deviceFailed()) {
        err(QStringLiteral("ostrel-cli: %1\n").arg(QString::fromUtf8(kDeviceFailed)));
        return CliApp::Fatal;
    }
    // A scan that read zeros in place of unreadable sectors found less than the disk held: say so.
    const QList<BadRange> bad = scanner.badRanges();
    if (!bad.isEmpty())
        err(QStringLiteral("ostrel-cli: %1 bytes in %2 stretches could not be read and were taken as zeros\n")
                .arg(badBytes(bad)).arg(bad.size()));
    if (restore && scanner.restoreReport.failed() > 0)
        return CliApp::NotRestored;
    return CliApp::Ok;
}

Failure writeFile(const QString& path, const QByteArray& data)
{
    QFile file(path);
    if (file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(data) == data.size() && file.flush())
        return {};
    return {CliApp::BadTarget, QStringLiteral("cannot write %1: %2").arg(path, file.errorString())};
}

// The listings --csv and --dfxml ask for, written once the scan is over.
Failure writeListings(const QCommandLineParser& parser, const ScanSession& session, const QString& sourceName)
{
    Failure f;
    if (parser.isSet(QStringLiteral("csv")))
        f = writeFile(parser.value(QStringLiteral("csv")), TreeReport::csv(session.root()));
    if (f.code == CliApp::Ok && parser.isSet(QStringLiteral("dfxml"))) {
        const PartScan* scanner = session.scanner();
        const auto runs = [scanner](const FoundFile* file) { return ByteRuns::of(scanner, file); };
        f = writeFile(parser.value(QStringLiteral("dfxml")), TreeReport::dfxml(session.root(), sourceName, runs));
    }
    return f;
}

int fail(const Failure& f)
{
    err(QStringLiteral("ostrel-cli: %1\n").arg(f.message));
    return f.code;
}

// What a command scans and how: from its arguments, or from the saved scan it resumes.
struct ScanRequest {
    QString sourceText;
    QString mode;
    ScanOptions options;
    std::optional<SavedScan> resumed;
    QString savePath;
    int saveEvery = ScanSaver::kDefaultSeconds;
};

Failure scanRequest(const QCommandLineParser& parser, ScanRequest* r)
{
    const QString resume = parser.value(QStringLiteral("resume"));
    const QStringList positional = parser.positionalArguments();
    r->savePath = resume.isEmpty() ? parser.value(QStringLiteral("save")) : resume;
    if (parser.isSet(QStringLiteral("save-every"))) {
        bool ok = false;
        r->saveEvery = parser.value(QStringLiteral("save-every")).toInt(&ok);
        if (!ok || r->saveEvery < 0)
            return {CliApp::Usage, QStringLiteral("--save-every: give a number of seconds")};
    }
    if (resume.isEmpty()) {
        if (positional.size() != 1)
            return {CliApp::Usage, QStringLiteral("give exactly one SOURCE (see --help)")};
        r->sourceText = positional.first();
        r->mode = parser.value(QStringLiteral("mode"));
        return scanOptions(parser, &r->options);
    }
    if (!positional.isEmpty() || parser.isSet(QStringLiteral("save")))
        return {CliApp::Usage, QStringLiteral("--resume takes the source and the scan options from FILE")};
    SavedScan saved;
    QString why;
    if (!SavedScan::read(resume, &saved, &why))
        return {CliApp::BadSave, why};
    r->sourceText = saved.source;
    r->mode = saved.mode;
    r->options = {saved.mode == QLatin1String("partition"), saved.doExtra, saved.fileFilter};
    r->resumed = saved;
    return {};
}

// How a saved scan names its source: an image by its absolute path, so a
// resume from another folder finds it.
QString savedSourceName(const SourceSpec& source, const QString& text)
{
    if (source.kind != SourceSpec::Image)
        return text;
    const QString path = QFileInfo(source.imagePath).absoluteFilePath();
    return source.partition ? QStringLiteral("%1@%2").arg(path).arg(source.partition) : path;
}

// Tests stop a saving scan about half way through its pass, as a Ctrl-C
// (OSTREL_TEST_HALT=INT) or a crash (KILL) would, at a check point.
void haltForTests(PartScan& scanner)
{
    static const QByteArray how = qgetenv("OSTREL_TEST_HALT");
    static bool halted = false;
    const ResumePoint& p = scanner.resumePoint;
    if (how.isEmpty() || halted || p.phase == ResumePoint::Start || p.phase == ResumePoint::Done || p.position * 2 < p.end)
        return;
    halted = true;
    if (how == "KILL")
        std::raise(SIGKILL);
    std::raise(SIGINT);
    scanner.stop(); // at once, as the progress tick would a moment later
}

// The fingerprint check and the saved tree for a resume; the saver for --save and --resume.
Failure prepareSave(const ScanRequest& r, const Target& t, ScanSession& session, std::unique_ptr<ScanSaver>* saver)
{
    if (r.savePath.isEmpty())
        return {};
    PartScan* scanner = session.scanner();
    SavedScan header;
    header.fingerprint = SavedScan::fingerprintOf(scanner->handle);
    if (r.resumed) {
        if (r.resumed->fingerprint != header.fingerprint)
            return {CliApp::BadSave, QStringLiteral("%1 was saved from another source: %2 differs in size or content")
                                         .arg(r.savePath, r.sourceText)};
        QString why;
        if (!r.resumed->applyTo(scanner, &why))
            return {CliApp::BadSave, QStringLiteral("%1: %2").arg(r.savePath, why)};
    }
    const QString refusal = SourceGuard::refusalForDisk(QFileInfo(r.savePath).absolutePath(), t.disk);
    if (!refusal.isEmpty())
        return {CliApp::BadTarget, refusal};
    header.source = r.sourceText;
    header.mode = r.mode;
    header.fileFilter = r.options.fileFilter;
    header.doExtra = r.options.doExtra;
    *saver = std::make_unique<ScanSaver>(r.savePath, header, r.saveEvery);
    (*saver)->afterPoint = haltForTests;
    (*saver)->attach(scanner);
    return {};
}

int scanOrRestore(const QStringList& args, bool restore)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(restore ? QStringLiteral("Scan SOURCE, then write the found files below DIR. Files that could not be written, "
                                                            "and files written with unreadable stretches filled with zeros, are listed; "
                                                            "exit status 8 when any file could not be written.")
                                             : QStringLiteral("Scan SOURCE and print the rebuilt tree."));
    addScanOptions(parser);
    if (restore) {
        parser.addOption({QStringLiteral("to"), QStringLiteral("Target folder."), QStringLiteral("DIR")});
        parser.addOption({QStringLiteral("only"), QStringLiteral("Restore only this folder of the tree (repeatable)."), QStringLiteral("PATH")});
        parser.addOption({QStringLiteral("keep-both"), QStringLiteral("A file whose name is taken in DIR is written as \"name (2).ext\" instead of replacing it.")});
    }
    parser.process(args);
    if (restore && parser.value(QStringLiteral("to")).isEmpty())
        return fail({CliApp::Usage, QStringLiteral("restore needs --to DIR")});

    ScanRequest request;
    Failure f = scanRequest(parser, &request);
    if (f.code != CliApp::Ok)
        return fail(f);
    const ScanOptions& options = request.options;
    ResultFilter filter;
    f = filterOptions(parser, &filter);
    if (f.code != CliApp::Ok)
        return fail(f);
    SourceSpec source;
    QString parseError;
    if (!SourceSpec::parse(request.sourceText, &source, &parseError))
        return fail({CliApp::BadPartition, parseError});
    const QString shownSource = request.sourceText;
    if (!request.resumed)
        request.sourceText = savedSourceName(source, request.sourceText);
    Devices devices(parser.isSet(QStringLiteral("images-only")));
    f = devices.addImages(parser.values(QStringLiteral("image")));
    if (f.code != CliApp::Ok)
        return fail(f);
    Target target;
    f = resolve(devices, source, options.wholeDisk, &target);
    if (f.code != CliApp::Ok)
        return fail(f);

    QString targetDir;
    if (restore) {
        targetDir = QDir(parser.value(QStringLiteral("to"))).absolutePath();
        f = checkTarget(targetDir, target);
        if (f.code != CliApp::Ok)
            return fail(f);
    }

    std::unique_ptr<ScanSession> session = makeSession(target, options, &f);
    if (!session)
        return fail(f);
    session->setShowProgress(Console::stderrIsTerminal());
    std::unique_ptr<ScanSaver> saver;
    f = prepareSave(request, target, *session, &saver);
    if (f.code != CliApp::Ok)
        return fail(f);
    session->scan();
    QString saveProblem;
    if (saver && !saver->saveNow(*session->scanner(), &saveProblem))
        return fail({CliApp::BadTarget, saveProblem});
    if (saver && session->interrupted())
        err(QStringLiteral("ostrel-cli: the scan is saved in %1; go on with: ostrel-cli scan --resume %1\n").arg(saver->path()));
    f = writeListings(parser, *session, shownSource);
    if (f.code != CliApp::Ok)
        return fail(f);

    if (restore) {
        f = selectOnly(parser.values(QStringLiteral("only")), session->root());
        if (f.code != CliApp::Ok)
            return fail(f);
        session->scanner()->filter = filter;
    }
    const bool json = parser.isSet(QStringLiteral("json"));
    JsonLines doc([](const QString& text) { outLine(text); });
    if (json)
        doc.openDocument();
    else if (!restore)
        TreeReport::text(session->root(), filter, [](const QString& line) { outLine(line); });
    if (restore)
        restoreListed(*session, targetDir, parser.isSet(QStringLiteral("keep-both")), json ? &doc : nullptr);
    if (session->interrupted())
        err(QStringLiteral("ostrel-cli: stopped; the results so far follow\n"));
    const PartScan& scanner = *session->scanner();
    if (json) {
        TreeReport::json(session->root(), filter, doc);
        doc.members({{"results", double(session->results())},
                     {"totalSize", double(session->totalSize())},
                     {"unreadable", badRangesJson(scanner.badRanges())},
                     {"bytesRead", double(scanner.bytesRead)}});
        if (restore)
            doc.members({{"restoredFiles", double(session->restoredFiles())},
                         {"restoredBytes", double(session->restoredBytes())},
                         {"target", targetDir}});
        doc.closeDocument();
        std::fflush(stdout);
    } else {
        out(QStringLiteral("results=%1,totalsize=%2\n").arg(session->results()).arg(session->totalSize()));
        if (restore)
            out(restoreSummary(scanner.restoreReport, targetDir));
    }
    return exitStatus(scanner, restore);
}

void usage()
{
    err(QStringLiteral("usage: ostrel-cli devices [--json] [--image FILE]...\n"
                       "       ostrel-cli scan [--mode file|format|partition] [--deep] [--types \".jpg;.png\"] [--json]\n"
                       "                       [--csv FILE] [--dfxml FILE] [--save FILE] SOURCE\n"
                       "       ostrel-cli scan --resume FILE [--json]\n"
                       "       ostrel-cli restore [scan options] [--only PATH]... [--keep-both] --to DIR SOURCE\n"
                       "SOURCE is a drive letter (E), a disk (disk:N), or an image file, optionally with a\n"
                       "1-based partition (card.img@1). Run a command with --help for its options;\n"
                       "--verbose shows the scanners' progress traces.\n"
                       "Exit status: 0 done, 2 usage, 3 no such source, 4 partition out of range,\n"
                       "5 bad target folder (or on the source device), 6 unrecognised file system,\n"
                       "7 the volume cannot be opened or the device stopped answering,\n"
                       "8 some files could not be restored (they are listed),\n"
                       "9 the saved scan is damaged or was saved from another source.\n"));
}
} // namespace

int CliApp::run(const QStringList& args)
{
    QStringList arguments = args;
    verbose = arguments.removeAll(QStringLiteral("--verbose")) > 0;
    qInstallMessageHandler(messageHandler);
    Interrupt::install();
    if (arguments.size() < 2) {
        usage();
        return Usage;
    }
    const QString command = arguments.at(1);
    QStringList rest = arguments;
    rest.removeAt(1);
    rest[0] = rest[0] + QLatin1Char(' ') + command;
    if (command == QLatin1String("devices"))
        return devicesCommand(rest);
    if (command == QLatin1String("scan"))
        return scanOrRestore(rest, false);
    if (command == QLatin1String("restore"))
        return scanOrRestore(rest, true);
    if (command == QLatin1String("--help") || command == QLatin1String("-h") || command == QLatin1String("help")) {
        usage();
        return Ok;
    }
    err(QStringLiteral("ostrel-cli: unknown command %1\n").arg(command));
    usage();
    return Usage;
}
