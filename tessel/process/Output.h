#pragma once

#include <QByteArray>
#include <QCommandLineOption>
#include <QString>
#include <QStringList>

class QCommandLineParser;

/*! Where a command's result goes: standard output, or a file that is written whole or not at all.
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

    /*! \param path empty: standard output */
    explicit Output(const QString& path);

    /*! Writes \a bytes; tells on standard error and returns false when that fails. */
    bool write(const QByteArray& bytes) const;

private:
    QString m_path;
};
