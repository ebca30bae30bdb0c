#include "Output.h"

#include "Console.h"

#include <QCommandLineParser>
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
    const QString path = QFileInfo(first).canonicalFilePath();
    return !path.isEmpty() && path == QFileInfo(second).canonicalFilePath();
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
    for (const QString& input : inputs) {
        if (isSameFile(path, input))
            return QStringLiteral("--output %1 would replace an input").arg(path);
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
