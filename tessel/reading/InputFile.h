#pragma once

#include <QByteArray>
#include <QString>

/*! Kinds of files whose fields are listed. */
enum class FileKind {
    Unknown,
    CSPro, /*!< CSPro data dictionary (.dcf), text form and JSON */
    Spss, /*!< SPSS system file (.sav, .zsav) */
    Stata /*!< Stata data file (.dta) */
};

/*! "cspro", "spss" or "stata". */
QString kindName(FileKind kind);

/*! The kind that kindName() has this name for; Unknown when there is none. */
FileKind kindOfName(const QString& name);

/*!
 * The kind of a file by its content, whatever its name is. Text is taken for a CSPro dictionary;
 * what else it may be is for its reader to find out.
 */
FileKind kindOfContent(const QString& path);

/*! True for an encrypted SPSS file. */
bool isEncrypted(const QString& path);

/*! True when \a path is a file that can be read and is not empty; else tells why not. */
bool checkInput(const QString& path);

/*! Tells an error and returns false. */
bool failInput(const QString& path, int line, const QString& text);
