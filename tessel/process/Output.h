#pragma once

#include "text/ByteSink.h"

#include <QByteArray>
#include <QCommandLineOption>
#include <QString>
#include <QStringList>

#include <memory>

class QCommandLineParser;
class QSaveFile;
struct stat;

/*!
 * Where a command's result goes: standard output, a device or pipe, or a file that is written whole
 * or not at all. On a terminal control characters are shown as marks.
 */
class Output {
public:
    /*! The option -o, --output of every command. */
    static const QCommandLineOption& option();
    /*!
     * Reads it into \a path; it must be none of \a inputs. Null when it makes sense, else what is
     * wrong.
     */
    static QString readOption(
        const QCommandLineParser& parser, const QStringList& inputs, QString& path);
    /*!
     * Null when \a path, which \a option names, is none of \a others, else what is wrong.
     */
    static QString checkPath(const QString& option, const QString& path, const QStringList& others);

    /*!
     * Opens it; tells on standard error when that fails.
     * \param path empty: standard output
     */
    explicit Output(const QString& path);
    /*! Without finish() no file is written. */
    ~Output();

    /*! Writes a piece of the result. A failure is told, once, and known by finish(). */
    void add(const QByteArray& bytes);
    /*! add() for a writer. */
    ByteSink sink();
    /*! Ends the result; false when something of it could not be written. */
    bool finish();

    /*! Writes \a bytes as the whole result; tells on standard error and returns false when that
     * fails. */
    bool write(const QByteArray& bytes);

private:
    Q_DISABLE_COPY(Output)

    void open();
    void openSpecial(const QByteArray& path);
    void openFile(const QByteArray& path, const struct stat* status);
    void flush(int size);
    void put(const QByteArray& bytes);
    void fail(const QString& reason);

    QString m_name; // for messages
    std::unique_ptr<QSaveFile> m_file; // null for what is no file
    int m_descriptor = -1;
    bool m_isTerminal = false;
    bool m_hasFailed = false;
    QByteArray m_waiting; // small pieces that are written together
};
