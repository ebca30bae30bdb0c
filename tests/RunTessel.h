#pragma once

#include <QByteArray>
#include <QFile>
#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

// What a program that was run left behind.
struct Outcome {
    int status = -1; // below 0: it did not end by itself
    QByteArray output;
    QByteArray errors;
};

// Runs a program in the folder of the test data.
inline Outcome runProgram(const QString& program, const QStringList& arguments,
    const QByteArray& input = QByteArray(),
    const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment())
{
    QProcess process;
    process.setWorkingDirectory(QStringLiteral(TESSEL_TEST_DATA));
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
