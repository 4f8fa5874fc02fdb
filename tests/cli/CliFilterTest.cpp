// The filters of the command line: what scan lists and restore writes is what
// the shared ResultFilter lets through, and its own rules hold.
#include "cli/CliApp.h"
#include "fixtures/CliRunner.h"
#include "results/NtfsFile.h"
#include "results/ResultFilter.h"
#include "tools/demo/DemoDisk.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <memory>

namespace {
QJsonArray listed(const QStringList& args)
{
    const CliResult r = CliRunner::run(QStringList{"scan", "--images-only", "--json"} + args);
    EXPECT_EQ(r.exitCode, 0) << r.errors.toStdString();
    return QJsonDocument::fromJson(r.lines.join('\n').toUtf8()).object()["files"].toArray();
}

std::unique_ptr<NtfsFile> record(const QJsonValue& f)
{
    auto file = std::make_unique<NtfsFile>();
    file->setName(f["name"].toString());
    file->size = quint64(f["size"].toDouble());
    const QString time = f["modified"].toString();
    file->modifiedMsecs = time.isEmpty() ? 0 : quint64(QDateTime::fromString(time, Qt::ISODate).toMSecsSinceEpoch());
    return file;
}
} // namespace

TEST(CliFilter, ListsAndRestoresWhatTheFilterLetsThrough)
{
    QTemporaryDir dir;
    const QString demo = dir.filePath("demo.img");
    ASSERT_TRUE(DemoDisk::save(DemoDisk::build(), demo));
    const QJsonArray all = listed({demo + "@2"});
    ASSERT_GT(all.size(), 2);
    struct Case {
        QStringList options;
        ResultFilter filter;
    };
    ResultFilter small, big, named, dated;
    small.maxSize = 1024;
    big.minSize = 2048;
    named.name = "*.TXT";
    ResultFilter::parseDate("2000-01-02", &dated.beforeMsecs); // --before takes in its whole day
    for (const Case& c : {Case{{"--max-size", "1K"}, small}, Case{{"--min-size", "2048"}, big},
                          Case{{"--name", "*.TXT"}, named}, Case{{"--before", "2000-01-01"}, dated}}) {
        SCOPED_TRACE(c.options.join(' ').toStdString());
        QStringList want;
        for (const QJsonValue& f : all) {
            if (c.filter.matches(*record(f)))
                want.append(f["path"].toString());
        }
        QStringList got;
        for (const QJsonValue& f : listed(c.options + QStringList{demo + "@2"}))
            got.append(f["path"].toString());
        EXPECT_EQ(got, want);
        EXPECT_LT(want.size(), all.size());

        QTemporaryDir target;
        const CliResult r = CliRunner::run(QStringList{"restore", "--images-only", "--to", target.path()} + c.options +
                                           QStringList{demo + "@2"});
        EXPECT_EQ(r.exitCode, 0) << r.errors.toStdString();
        EXPECT_EQ(CliRunner::filesBelow(target.path()).size(), want.size());
    }
    EXPECT_EQ(CliRunner::run({"scan", "--images-only", "--min-size", "lots", demo + "@2"}).exitCode, CliApp::Usage);
}

TEST(CliFilter, FilterRules)
{
    struct Case {
        const char* name;
        quint64 size;
        quint64 msecs;
        const char* option; // kind, size, date or name
        bool passes;
    };
    ResultFilter pictures;
    pictures.kinds = 1u << FileKind::Picture;
    const Case cases[] = {
        {"PHOTO.JPG", 10, 0, "kind", true},   {"notes.txt", 10, 0, "kind", false},
        {"a.bin", 99, 0, "size", false},      {"a.bin", 100, 0, "size", true},
        {"a.bin", 1, 0, "date", false},       {"a.bin", 1, 5000, "date", true},
        {"Report-2020.DOC", 1, 0, "name", true}, {"other.doc", 1, 0, "name", false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        ResultFilter f;
        if (!qstrcmp(c.option, "kind"))
            f = pictures;
        else if (!qstrcmp(c.option, "size"))
            f.minSize = 100;
        else if (!qstrcmp(c.option, "date"))
            f.afterMsecs = 1000; // an unknown time (0) never passes a date range
        else
            f.name = "report";
        NtfsFile file;
        file.setName(QString::fromUtf8(c.name));
        file.size = c.size;
        file.modifiedMsecs = c.msecs;
        EXPECT_EQ(f.matches(file), c.passes);
    }
    quint64 bytes = 0;
    EXPECT_TRUE(ResultFilter::parseSize("5M", &bytes));
    EXPECT_EQ(bytes, 5u << 20);
    EXPECT_FALSE(ResultFilter::parseSize("99999999999999999999G", &bytes));
}
