#pragma once

#include <model_Tessel/model_Tessel_global.h>

#include <QString>

/*!
 * Tests of files and directories. Symbolic links are followed; nothing throws.
 */
class MODEL_TESSEL_EXPORT UtilFiles {
public:
    /*! What GetFileStatus() and its relatives return. */
    enum FileStatus : int {
        FileWritable = 0, /*!< the file exists and is writable */
        PathEmpty = 1,
        DirMissing = 2, /*!< the directory of the path does not exist */
        FileMissing = 3, /*!< the directory exists, the file does not */
        FileNotWritable = 4
    };

    /*! True for an existing file; false for a directory. */
    static bool FileExists(const QString& path);
    /*! True for an existing directory. */
    static bool DirExists(const QString& path);
    /*! Absolute path of the directory that contains \a path; empty for an empty path. */
    static QString GetFileDir(const QString& path);
    /*!
     * True when the size of the file in whole KB of 1024 bytes is above \a limitKB. A missing file
     * has size 0.
     */
    static bool FileSizeReachedInKB(const QString& path, int limitKB);
    /*! The FileStatus of \a path. */
    static int GetFileStatus(const QString& path);
    /*! As GetFileStatus(), but 0 for a missing file, which can be saved; \a other is not used. */
    static int GetFileSaveStatus(const QString& path, const QString& other);
    /*! As GetFileStatus(). */
    static int CheckFileStatus(const QString& path);
    /*! True when \a path is writable or can be created in its directory; \a other is not used. */
    static bool CheckFileSave(const QString& path, const QString& other);
};
