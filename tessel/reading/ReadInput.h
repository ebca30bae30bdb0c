#pragma once

#include <model_Tessel/DictionaryFile.h>

#include <QByteArray>
#include <QString>

/*! "cspro", "spss" or "stata"; a CSPro DB is "cspro" to users, too. */
QString kindName(DictionaryFileKind kind);

/*! The kind that kindName() has this name for; Unknown when there is none. */
DictionaryFileKind kindOfName(const QString& name);

/*! Tells an error and returns false. */
bool failInput(const QString& path, int line, const QString& text);

/*! As above, with what belongs to the error: each of \a items is told for itself. */
bool failInput(const QString& path, const QString& text, const QStringList& items);

/*! Reads all of the file \a path. False, and told, when that fails. */
bool readInput(const QString& path, QByteArray& bytes);
