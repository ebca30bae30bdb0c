#include "Output.h"

#include "Console.h"

#include <QFile>
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

} // namespace

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
