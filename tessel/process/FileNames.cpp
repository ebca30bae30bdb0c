#include "process/FileNames.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTextCodec>

#include <clocale>
#include <langinfo.h>

void FileNames::useLocale()
{
    std::setlocale(LC_CTYPE, "");
    if (qstrcmp(nl_langinfo(CODESET), "ANSI_X3.4-1968") == 0)
        QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
}

bool FileNames::isExpressible(const char* bytes)
{
    return QFile::encodeName(QFile::decodeName(bytes)) == bytes;
}

QString FileNames::mistake(const char* bytes)
{
    return QStringLiteral("'%1' is not written in the locale's encoding, %2; rename the file, or "
                          "set LC_ALL to a locale of its encoding")
        .arg(QFile::decodeName(bytes), QString::fromLatin1(QTextCodec::codecForLocale()->name()));
}

QString FileNames::path(const QString& name)
{
    return name.startsWith(QLatin1Char(':')) ? QStringLiteral("./") + name : name;
}

QStringList FileNames::paths(const QStringList& names)
{
    QStringList result;
    for (const QString& name : names)
        result.append(path(name));
    return result;
}

bool FileNames::isRelative(const QString& name)
{
    return !name.isEmpty() && name != QLatin1String("-") && !name.startsWith(QLatin1Char('/'));
}

// Links to folders are followed, since ".." behind one leads elsewhere; that to a file stays.
QString FileNames::absolute(const QString& name)
{
    if (!isRelative(name))
        return name;
    const QFileInfo file(path(name));
    const QString folder = file.dir().canonicalPath();
    return QDir::cleanPath(
        folder.isEmpty() ? file.absoluteFilePath() : folder + QLatin1Char('/') + file.fileName());
}
