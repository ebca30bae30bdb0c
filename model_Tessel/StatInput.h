#pragma once

#include <model_Tessel/model_Tessel_global.h>

#include <QByteArray>
#include <QString>

#include <readstat.h>

#include <sys/stat.h>

/*!
 * The file that a libreadstat parser reads, in large pieces where libreadstat's own input makes one
 * system call a field. Results and error codes are those of its own input: what is no file with
 * contents (an empty one, a folder, a pipe) is read and refused in the same way.
 *
 * As constructed it opens the file that each parse names. Once open() has opened a file, every
 * parse reads that one, whatever stands under its name by then.
 */
class MODEL_TESSEL_EXPORT TStatInput {
public:
    TStatInput();
    ~TStatInput();

    /*! Opens \a path for everything that is read from now on; false: see failure(). */
    bool open(const QString& path);

    /*! As it was given to open(). */
    QString path() const
    {
        return m_path;
    }

    /*! Makes \a parser read through this input, which has to outlive the parse. */
    void attachTo(readstat_parser_t* parser);

    /*! Up to \a size bytes from \a position on; fewer at the end of the file or on a failure. */
    QByteArray bytes(qint64 position, int size);

    /*! Bytes of the file when it was opened; 0 when none is open, or it is no regular file. */
    qint64 size() const
    {
        return m_size;
    }

    /*!
     * True when the file ended in the middle of something that the last parse read, which
     * libreadstat passes over where the value labels of a .dta file stand.
     */
    bool endedEarly() const
    {
        return m_endedEarly;
    }

    /*!
     * Bytes that the name of a label set may take in the file opened last. libreadstat hands over
     * the names of damaged Stata files without a null at their end.
     */
    size_t setNameLimit() const;

    /*!
     * Why the file could not be opened or read, or that it was changed since it was opened; empty
     * when there was no such failure.
     */
    QString failure() const;

private:
    Q_DISABLE_COPY(TStatInput)

    static int openFile(const char* path, void* context);
    static int closeFile(void* context);
    static readstat_off_t seek(readstat_off_t offset, readstat_io_flags_t whence, void* context);
    static ssize_t read(void* buffer, size_t size, void* context);
    static readstat_error_t update(
        long fileSize, readstat_progress_handler progress, void* userContext, void* context);

    bool openNamed(const char* path);
    bool close();
    readstat_off_t seekInFile(readstat_off_t offset, int origin);
    ssize_t readPiece(char* buffer, size_t size, readstat_off_t position);
    bool fillWindow(readstat_off_t position);
    bool copyOut(char* buffer, size_t size, readstat_off_t position);
    void startParse();

    QString m_path;
    int m_file = -1;
    bool m_isKept = false; // opened by open(), for all parses
    struct stat m_info = {}; // of the file when it was opened
    readstat_off_t m_size = 0; // 0: read from m_file without a window
    readstat_off_t m_position = 0;
    readstat_off_t m_windowStart = 0;
    QByteArray m_window; // the bytes of the file from m_windowStart on
    QByteArray m_head; // the first bytes of the file
    bool m_endedEarly = false;
    bool m_hasShrunk = false;
    int m_error = 0; // errno of the first failure
};
