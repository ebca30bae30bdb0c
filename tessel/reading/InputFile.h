#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

/*! Kinds of files whose fields are listed. */
enum class FileKind {
    Unknown,
    CSPro, /*!< CSPro data dictionary (.dcf), text form and JSON */
    CSProDb, /*!< CSPro DB (.csdb), which holds its dictionary; "cspro" to users, too */
    Spss, /*!< SPSS system file (.sav, .zsav) */
    Stata /*!< Stata data file (.dta) */
};

/*! "cspro", "spss" or "stata". */
QString kindName(FileKind kind);

/*! The kind that kindName() has this name for; Unknown when there is none. */
FileKind kindOfName(const QString& name);

/*!
 * The kind of a file by its content, whatever its name is. What has no mark of its own is taken for
 * a CSPro dictionary; what else it may be is for its reader to find out.
 */
FileKind kindOfContent(const QString& path);

/*! True for an encrypted SPSS file. */
bool isEncrypted(const QString& path);

/*!
 * True for a character that no text file holds; an end-of-file mark of old and an escape do occur.
 */
inline bool isBinaryCharacter(QChar character)
{
    const ushort code = character.unicode();
    return code < 0x20 && (code < 0x08 || (code > 0x0D && code != 0x1A && code != 0x1B));
}

/*! Tells an error and returns false. */
bool failInput(const QString& path, int line, const QString& text);

/*! A file that is opened once and read once, so that all who look at it see the same. */
class InputFile {
public:
    explicit InputFile(const QString& path);

    /*! False, and told, when it is no file that can be read, or empty. */
    bool open();

    /*! The kind of the opened file, by its content, as kindOfContent() says. */
    FileKind kind() const;

    /*! Reads all of the opened file. False, and told, when that fails or it is too large. */
    bool readAll(QByteArray& bytes);

    /*! Bytes of the file when it was opened. */
    qint64 size() const;

    /*! The file's name, as it was given. */
    const QString& path() const;

private:
    Q_DISABLE_COPY(InputFile)

    bool failReading() const;

    QString m_path;
    QFile m_file;
    qint64 m_size = 0;
    QByteArray m_head;
};
