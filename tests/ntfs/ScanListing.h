#pragma once
#include "fixtures/CliRunner.h"

#include <QMap>
#include <gtest/gtest.h>

// PATH -> SIZE of the file lines of an `ostrel-cli scan`, which must have succeeded.
inline QMap<QString, quint64> scanListing(const QStringList& args)
{
    const CliResult r = CliRunner::run(QStringList{QStringLiteral("scan"), QStringLiteral("--images-only")} + args);
    EXPECT_EQ(r.exitCode, 0) << r.errors.toStdString();
    QMap<QString, quint64> listed;
    for (const QString& line : r.lines) {
        const QStringList fields = line.split(QLatin1Char('\t'));
        if (fields.size() == 3)
            listed.insert(fields[0], fields[1].toULongLong());
    }
    return listed;
}

// Runs `ostrel-cli restore --to target` and expects it to succeed.
inline void restoreAll(const QString& target, const QStringList& args)
{
    const CliResult r = CliRunner::run(QStringList{QStringLiteral("restore"), QStringLiteral("--images-only"), QStringLiteral("--to"), target} + args);
    EXPECT_EQ(r.exitCode, 0) << r.errors.toStdString();
}
