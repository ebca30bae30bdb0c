#include "reading/InputFile.h"

#include "process/Console.h"

#include <QFile>
#include <QFileInfo>

namespace {

struct KindName {
    FileKind kind;
    const char* name;
};

constexpr KindName kindNames[] = { { FileKind::CSPro, "cspro" }, { FileKind::Spss, "spss" },
    { FileKind::Stata, "stata" } };

QByteArray headOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.read(32) : QByteArray();
}

// Said behind eight bytes.
bool isEncryptedSpss(const QByteArray& head)
{
    return head.mid(8, 12) == "ENCRYPTEDSAV";
}

// "$FL2", or "$FL3" for a compressed file.
bool isSpss(const QByteArray& head)
{
    return head.startsWith("$FL2") || head.startsWith("$FL3") || isEncryptedSpss(head);
}

// Marked text since format 117; before it the number of the format, the byte order (1 or 2), and 1.
bool isStata(const QByteArray& head)
{
    if (head.startsWith("<stata_dta>"))
        return true;
    if (head.size() < 4)
        return false;
    const auto format = static_cast<unsigned char>(head.at(0));
    return format >= 102 && format <= 116 && (head.at(1) == 1 || head.at(1) == 2)
        && head.at(2) == 1;
}

} // namespace

QString kindName(FileKind kind)
{
    for (const KindName& entry : kindNames) {
        if (entry.kind == kind)
            return QLatin1String(entry.name);
    }
    return QStringLiteral("unknown");
}

FileKind kindOfName(const QString& name)
{
    for (const KindName& entry : kindNames) {
        if (name == QLatin1String(entry.name))
            return entry.kind;
    }
    return FileKind::Unknown;
}

FileKind kindOfContent(const QString& path)
{
    const QByteArray head = headOf(path);
    if (isSpss(head))
        return FileKind::Spss;
    return isStata(head) ? FileKind::Stata : FileKind::CSPro;
}

bool isEncrypted(const QString& path)
{
    return isEncryptedSpss(headOf(path));
}

bool checkInput(const QString& path)
{
    const QFileInfo info(path);
    if (!info.exists())
        return failInput(path, 0, QStringLiteral("no such file"));
    if (!info.isFile()) {
        return failInput(
            path, 0, QStringLiteral("is a directory or a device; give the name of a file"));
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return failInput(path, 0, QStringLiteral("cannot be read: %1").arg(file.errorString()));
    return info.size() > 0 || failInput(path, 0, QStringLiteral("is empty"));
}

bool failInput(const QString& path, int line, const QString& text)
{
    Console::tell(path, line, Console::Severity::Error, text);
    return false;
}
