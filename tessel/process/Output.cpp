#include "process/Output.h"

#include "process/Console.h"

#include <QCommandLineParser>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <cstdio>

namespace {

bool writeAll(QFileDevice& device, const QByteArray& bytes)
{
    return device.write(bytes) == bytes.size() && device.flush();
}

bool failed(const QString& name, const QFileDevice& device)
{
    Console::tell(name, 0, Console::Severity::Error,
        QStringLiteral("cannot be written: %1").arg(device.errorString()));
    return false;
}

bool isSameFile(const QString& first, const QString& second)
{
    if (first.isEmpty() || second.isEmpty())
        return false;
    const QFileInfo one(first);
    const QFileInfo other(second);
    if (one.exists() && other.exists())
        return one.canonicalFilePath() == other.canonicalFilePath();
    return QDir::cleanPath(one.absoluteFilePath()) == QDir::cleanPath(other.absoluteFilePath());
}

} // namespace

const QCommandLineOption& Output::option()
{
    static const QCommandLineOption option({ QStringLiteral("o"), QStringLiteral("output") },
        QStringLiteral("Write to a file, whole or not at all."), QStringLiteral("file"));
    return option;
}

QString Output::readOption(
    const QCommandLineParser& parser, const QStringList& inputs, QString& path)
{
    path = parser.value(option());
    if (parser.isSet(option()) && path.isEmpty())
        return QStringLiteral("--output needs the name of a file");
    return checkPath(QStringLiteral("--output"), path, inputs);
}

QString Output::checkPath(const QString& option, const QString& path, const QStringList& others)
{
    for (const QString& other : others) {
        if (isSameFile(path, other))
            return QStringLiteral("%1 %2 would replace an input").arg(option, path);
    }
    return QString();
}

Output::Output(const QString& path)
    : m_path(path)
{
}

bool Output::write(const QByteArray& bytes) const
{
    if (m_path.isEmpty()) {
        QFile file;
        const bool written = file.open(stdout, QIODevice::WriteOnly) && writeAll(file, bytes);
        return written || failed(QStringLiteral("standard output"), file);
    }
    QSaveFile file(m_path);
    const bool written = file.open(QIODevice::WriteOnly) && writeAll(file, bytes) && file.commit();
    return written || failed(m_path, file);
}
