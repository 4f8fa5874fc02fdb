#include "cli/TreeReport.h"
#include "results/FolderNode.h"

#include <QDateTime>
#include <QJsonArray>
#include <QXmlStreamWriter>
#include <algorithm>

namespace {
constexpr quint64 kSecondsPerDay = 86400;
constexpr quint64 kDaysPerEra = 146097;              // 400 Gregorian years
constexpr quint64 kDaysFrom0000To1970 = 719468;      // from 0000-03-01, the start of an era
constexpr quint64 kYear10000Msecs = 253402300800000; // ISO dates have four-digit years

// One found file as every report shows it.
struct Entry {
    QString path; // of the file, from the visible root
    const FoundFile* file;
    QString modified;
    const char* status;
};

// What became of a file, told by where the scan filed it.
const char* statusOf(const FolderNode* folder)
{
    for (const FolderNode* f = folder; f; f = f->parent) { // bounded by the tree's depth
        if (f->name == QLatin1String("额外文件"))
            return "carved";
        if (f->name.startsWith(QLatin1String("孤立文件-")))
            return "orphaned";
    }
    return "deleted";
}

// Visits folders depth first, a folder's files before its subfolders; visit
// gets each folder with its path, then each of its files.
template <typename VisitFolder, typename VisitFile>
void walk(const FolderNode* root, const ResultFilter& filter, VisitFolder visitFolder, VisitFile visitFile)
{
    QList<QPair<const FolderNode*, QString>> work{{root, root->name}};
    while (!work.isEmpty()) {
        const auto [folder, path] = work.takeLast();
        visitFolder(folder, path);
        const char* status = folder->files.isEmpty() ? "" : statusOf(folder);
        for (const FoundFile* f : folder->files) {
            if (filter.matches(*f))
                visitFile(Entry{path + QLatin1Char('/') + f->name(), f, TreeReport::isoTime(f->modifiedMsecs),
                                f->nameOnly ? "name only" : status});
        }
        for (auto it = folder->children.crbegin(); it != folder->children.crend(); ++it)
            work.append({*it, path + QLatin1Char('/') + (*it)->name});
    }
}

template <typename VisitFile>
void walkFiles(const FolderNode* root, VisitFile visitFile, const ResultFilter& filter = ResultFilter())
{
    walk(root, filter, [](const FolderNode*, const QString&) {}, visitFile);
}

// A CSV field, quoted when it holds a separator, a quote or a line break.
QString csvField(QString text)
{
    if (!text.contains(QLatin1Char(',')) && !text.contains(QLatin1Char('"')) && !text.contains(QLatin1Char('\n'))
        && !text.contains(QLatin1Char('\r')))
        return text;
    return QLatin1Char('"') + text.replace(QLatin1Char('"'), QLatin1String("\"\"")) + QLatin1Char('"');
}
} // namespace

// Written by hand: a listing of a million files spent most of its time in
// QDateTime's formatting. Years past 9999 go through QDateTime, as before.
QString TreeReport::isoTime(quint64 msecs)
{
    if (msecs == 0)
        return {};
    if (msecs >= kYear10000Msecs)
        return QDateTime::fromMSecsSinceEpoch(qint64(msecs), Qt::UTC).toString(Qt::ISODate);
    const quint64 seconds = msecs / 1000;
    const quint64 inDay = seconds % kSecondsPerDay;
    // Days since 1970 to a civil date, counted in 400-year eras from 0000-03-01.
    const quint64 days = seconds / kSecondsPerDay + kDaysFrom0000To1970;
    const quint64 era = days / kDaysPerEra;
    const quint64 dayOfEra = days % kDaysPerEra;
    const quint64 yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const quint64 dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const quint64 monthFromMarch = (5 * dayOfYear + 2) / 153;
    const quint64 day = dayOfYear - (153 * monthFromMarch + 2) / 5 + 1;
    const quint64 month = monthFromMarch < 10 ? monthFromMarch + 3 : monthFromMarch - 9;
    const quint64 year = yearOfEra + era * 400 + (month <= 2 ? 1 : 0);
    char text[] = "0000-00-00T00:00:00Z";
    const auto put = [&text](int at, quint64 value, int digits) {
        for (int i = digits - 1; i >= 0; --i, value /= 10)
            text[at + i] = char('0' + value % 10);
    };
    put(0, year, 4);
    put(5, month, 2);
    put(8, day, 2);
    put(11, inDay / 3600, 2);
    put(14, inDay / 60 % 60, 2);
    put(17, inDay % 60, 2);
    return QString::fromLatin1(text, qsizetype(sizeof text - 1));
}

void TreeReport::text(const FolderNode* root, const ResultFilter& filter, const LineSink& line)
{
    walkFiles(
        root,
        [&](const Entry& e) {
            line(e.path + QLatin1Char('\t') + QString::number(e.file->size) + QLatin1Char('\t')
                 + (e.modified.isEmpty() ? QStringLiteral("-") : e.modified) + QLatin1Char('\n'));
        },
        filter);
}

void TreeReport::json(const FolderNode* root, const ResultFilter& filter, JsonLines& doc)
{
    doc.members({{"root", root->name}});
    // Two walks, so each list goes out whole as it is met.
    doc.openArray(QStringLiteral("folders"));
    walk(
        root, filter,
        [&](const FolderNode* folder, const QString& path) {
            doc.element({{"path", path}, {"checkState", folder->checkState}, {"files", int(folder->files.size())}});
        },
        [](const Entry&) {});
    doc.closeArray();
    doc.openArray(QStringLiteral("files"));
    walkFiles(
        root,
        [&](const Entry& e) {
            QJsonObject file{{"path", e.path},
                             {"name", e.file->name()},
                             {"size", double(e.file->size)},
                             {"modified", e.modified.isEmpty() ? QJsonValue() : QJsonValue(e.modified)}};
            if (e.file->nameOnly)
                file.insert("nameOnly", true); // no content: only the name is left
            doc.element(file);
        },
        filter);
    doc.closeArray();
}

QByteArray TreeReport::csv(const FolderNode* root)
{
    // Spreadsheets take the line ending of RFC 4180.
    QString out = QStringLiteral("path,name,size,modified,status\r\n");
    walkFiles(root, [&](const Entry& e) {
        out += QStringList{csvField(e.path), csvField(e.file->name()), QString::number(e.file->size), e.modified,
                           QLatin1String(e.status)}.join(QLatin1Char(',')) + QLatin1String("\r\n");
    });
    return QByteArray("\xEF\xBB\xBF") + out.toUtf8();
}

QByteArray TreeReport::dfxml(const FolderNode* root, const QString& imageName, const RunLookup& runs)
{
    QByteArray out;
    QXmlStreamWriter xml(&out);
    xml.setAutoFormatting(true);
    xml.writeStartDocument();
    xml.writeDefaultNamespace(QStringLiteral("http://www.forensicswiki.org/wiki/Category:Digital_Forensics_XML"));
    xml.writeStartElement(QStringLiteral("dfxml"));
    xml.writeAttribute(QStringLiteral("version"), QStringLiteral("1.0"));
    xml.writeStartElement(QStringLiteral("creator"));
    xml.writeTextElement(QStringLiteral("program"), QStringLiteral("ostrel-cli"));
    xml.writeTextElement(QStringLiteral("version"), QStringLiteral(OSTREL_VERSION));
    xml.writeEndElement();
    xml.writeStartElement(QStringLiteral("source"));
    xml.writeTextElement(QStringLiteral("image_filename"), imageName);
    xml.writeEndElement();
    walkFiles(root, [&](const Entry& e) {
        xml.writeStartElement(QStringLiteral("fileobject"));
        xml.writeTextElement(QStringLiteral("filename"), e.path);
        xml.writeTextElement(QStringLiteral("filesize"), QString::number(e.file->size));
        xml.writeTextElement(QStringLiteral("alloc"), QStringLiteral("0")); // every found file is deleted or lost
        const QList<ByteRuns::Run> found = runs ? runs(e.file) : QList<ByteRuns::Run>();
        if (std::any_of(found.cbegin(), found.cend(), [](const ByteRuns::Run& r) { return r.uncompressedLength != 0; }))
            xml.writeTextElement(QStringLiteral("compressed"), QStringLiteral("1"));
        if (!e.modified.isEmpty())
            xml.writeTextElement(QStringLiteral("mtime"), e.modified);
        if (!found.isEmpty()) {
            xml.writeStartElement(QStringLiteral("byte_runs"));
            for (const ByteRuns::Run& r : found) {
                xml.writeEmptyElement(QStringLiteral("byte_run"));
                xml.writeAttribute(QStringLiteral("file_offset"), QString::number(r.fileOffset));
                xml.writeAttribute(QStringLiteral("img_offset"), QString::number(r.imageOffset));
                xml.writeAttribute(QStringLiteral("len"), QString::number(r.length));
                if (r.uncompressedLength)
                    xml.writeAttribute(QStringLiteral("uncompressed_len"), QString::number(r.uncompressedLength));
            }
            xml.writeEndElement();
        }
        xml.writeEndElement();
    });
    xml.writeEndDocument();
    return out;
}

FolderNode* TreeReport::find(FolderNode* root, const QString& path)
{
    QStringList parts = path.split(QLatin1Char('/'), Qt::SkipEmptyParts);
    if (!parts.isEmpty() && parts.first() == root->name)
        parts.removeFirst();
    FolderNode* folder = root;
    for (const QString& part : parts) {
        folder = folder->findChild(part);
        if (!folder)
            return nullptr;
    }
    return folder;
}
