#pragma once

#include <QString>
#include <QStringList>

/*! Names of files as the command line gives them: bytes, which need not be text. */
namespace FileNames {

/*! Has names taken for UTF-8 where the locale, being "C", knows nothing beyond ASCII. */
void useLocale();

/*! True when \a bytes become text and the same bytes again, so that no other file is meant. */
bool isExpressible(const char* bytes);

/*! What is wrong when isExpressible() is false. */
QString mistake(const char* bytes);

/*! \a name so that Qt takes it for a file's also when it begins with a colon. */
QString path(const QString& name);
QStringList paths(const QStringList& names);

/*! True when \a name is a file's and counts from a folder; "-", standard input, is none. */
bool isRelative(const QString& name);

/*! \a name as one that means the same file in whatever folder the program runs. */
QString absolute(const QString& name);

} // namespace FileNames
