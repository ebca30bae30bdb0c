#pragma once

#include <model_Tessel/model_Tessel_global.h>

#include <QByteArray>
#include <QFile>
#include <QString>

/*!
 * A file that is opened once and read once, so that all who look at it see the same, and whole or
 * not at all.
 */
class MODEL_TESSEL_EXPORT TInputFile {
public:
    /*! The file \a path, not yet opened. */
    explicit TInputFile(const QString& path);

    /*! False, see errorText(), when it is no file that can be read, or empty. */
    bool open();

    /*! Reads all of the opened file. False, see errorText(), when that fails or it is too large. */
    bool readAll(QByteArray& bytes);

    /*! What is wrong with the file, to follow its name; null when nothing is. */
    QString errorText() const;

    /*! The first bytes of the opened file, 32 where it has as many. */
    QByteArray head() const;

    /*! Bytes of the file when it was opened. */
    qint64 size() const;

    /*! The file's name, as it was given. */
    const QString& path() const;

private:
    Q_DISABLE_COPY(TInputFile)

    bool fail(const QString& text);
    bool failReading();

    QString m_path;
    QFile m_file;
    qint64 m_size = 0;
    QByteArray m_head;
    QString m_error;
};
