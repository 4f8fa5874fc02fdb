#include "cli/TreeReport.h"
#include "results/FolderNode.h"

#include <QDateTime>
#include <QJsonArray>
#include <QXmlStreamWriter>
#include <algorithm>

namespace {
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

QString TreeReport::isoTime(quint64 msecs)
{
    if (msecs == 0)
        return {};
    return QDateTime::fromMSecsSinceEpoch(qint64(msecs), Qt::UTC).toString(Qt::ISODate);
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
