#pragma once
#include <QCoreApplication>
#include <QFile>
#include <QMap>
#include <QProcess>
#include <QStringList>
#include <gtest/gtest.h>

// Drives ostrel-cli from the build folder the way a user would.
struct CliRunner {
    // The build folder; test executables lie one level below it.
    static QString binaryDir()
    {
        const QString fromEnv = qEnvironmentVariable("OSTREL_BINARY_DIR");
        return fromEnv.isEmpty() ? QCoreApplication::applicationDirPath() + QStringLiteral("/..") : fromEnv;
    }

    // Runs ostrel-cli to its end and returns what it printed; a failing run fails the test.
    static QString run(const QStringList& arguments)
    {
        QProcess p;
        p.setProgram(binaryDir() + QStringLiteral("/ostrel-cli"));
        p.setArguments(arguments);
        p.start();
        const bool finished = p.waitForFinished(300000);
        EXPECT_TRUE(finished && p.exitStatus() == QProcess::NormalExit && p.exitCode() == 0)
            << p.program().toStdString() << " " << arguments.join(QLatin1Char(' ')).toStdString() << ": "
            << p.errorString().toStdString() << " exit " << p.exitCode() << " "
            << p.readAllStandardError().toStdString();
        return QString::fromUtf8(p.readAllStandardOutput());
    }

    // PATH -> SIZE of the file lines of a scan listing.
    static QMap<QString, quint64> listing(const QString& scanOutput)
    {
        QMap<QString, quint64> listed;
        for (const QString& line : scanOutput.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
            const QStringList fields = line.split(QLatin1Char('\t'));
            if (fields.size() == 3)
                listed.insert(fields[0], fields[1].toULongLong());
        }
        return listed;
    }

    static bool decompress(const QString& from, const QString& to)
    {
        QProcess xz;
        xz.setStandardOutputFile(to);
        xz.start(QStringLiteral("xz"), {QStringLiteral("-dc"), from});
        return xz.waitForFinished(120000) && xz.exitStatus() == QProcess::NormalExit && xz.exitCode() == 0;
    }

    static QByteArray readAll(const QString& path)
    {
        QFile f(path);
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
    }
};
