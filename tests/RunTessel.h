#pragma once

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

// What a program that was run left behind.
struct Outcome {
    int status = -1; // below 0: it did not end by itself
    QByteArray output;
    QByteArray errors;
};

inline void copyFiles(const QString& from, const QDir& to)
{
    to.mkpath(QStringLiteral("."));
    const QDir folder(from);
    for (const QString& name : folder.entryList(QDir::Files))
        QFile::copy(folder.filePath(name), to.filePath(name));
}

// Copies of the test data, with the examples at the same place beside them: a program that writes
// where it must not finds no file of the source tree.
inline QString dataFolder()
{
    static const QTemporaryDir folder;
    static const QString data = [] {
        const QDir top(folder.path());
        copyFiles(QStringLiteral(TESSEL_TEST_DATA), top.filePath(QStringLiteral("tests/data")));
        copyFiles(QStringLiteral(TESSEL_EXAMPLES), top.filePath(QStringLiteral("examples")));
        return top.filePath(QStringLiteral("tests/data"));
    }();
    return data;
}

// Runs a program in the folder of copied test data.
inline Outcome runProgram(const QString& program, const QStringList& arguments,
    const QByteArray& input = QByteArray(),
    const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment())
{
    QProcess process;
    process.setWorkingDirectory(dataFolder());
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    process.write(input);
    process.closeWriteChannel();
    if (!process.waitForFinished(120'000) || process.exitStatus() != QProcess::NormalExit)
        return {};
    return { process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError() };
}

inline Outcome runTessel(const QStringList& arguments, const QByteArray& input = QByteArray(),
    const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment())
{
    return runProgram(QStringLiteral(TESSEL_PROGRAM), arguments, input, environment);
}

// The bytes of a file; none where it cannot be read.
inline QByteArray readFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

inline bool writeFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}
