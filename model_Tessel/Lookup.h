#pragma once

#include <model_Tessel/model_Tessel_global.h>

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <functional>
#include <map>

class QIODevice;

/*! What an import of a lookup file does besides reading it. */
enum econsistencyCheck : int {
    importOnly = 0,
    countFrequencies = 1, /*!< also list the values that occur */
    checkOnly = 2, /*!< also report what is wrong with the file */
    checkAndCount = 3
};

/*! Text of the last problem that any lookup reported, without its line number. */
extern MODEL_TESSEL_EXPORT QString MsgText;

/*! The value of one record of a lookup. */
class MODEL_TESSEL_EXPORT TOxLookupValue {
public:
    QString value;
};

/*!
 * Told how far an import is: the bytes taken from the file and the file's size. Returning false
 * cancels the import.
 */
using LookupProgress = std::function<bool(qint64 bytesRead, qint64 size)>;

/*! One problem that a check of a lookup found. */
struct TOxLookupProblem {
    /*! What is wrong. */
    enum class Kind { NoSeparator, WrongKeySize, DuplicateKey };
    int line; /*!< from 1 */
    Kind kind;
    QString key; /*!< of the line; empty where it has no separator */
    QString text; /*!< as in the messages, without the number of the line */
    int firstKeySize; /*!< characters of the first record's key; 0: there was none before */
};

/*! The text of \a problem with \a shownKey for its key, for example a part of a long one. */
MODEL_TESSEL_EXPORT QString lookupProblemText(
    const TOxLookupProblem& problem, const QString& shownKey);

/*! Given each problem when its message is issued. */
using LookupProblemSink = std::function<void(const TOxLookupProblem& problem)>;

/*!
 * Reads a lookup file, which maps codes (keys) to texts (values), and checks it.
 *
 * Format: a text file with one record to a line: key, separator, value. The first separator of the
 * line ends the key; the key is not trimmed. Lines end in line feed; carriage returns belong to no
 * line.
 *
 * Problems of the file are no failures: they become message lines in a list of the caller. Nothing
 * throws.
 *
 * Ownership: the value objects are made with \c new and never deleted by the library, neither when
 * the map is emptied nor by the destructor; a host may delete them. The counters of a frequency map
 * belong to whoever holds the map. Threads: one at a time, for all lookups, as they share
 * \c MsgText.
 */
class MODEL_TESSEL_EXPORT TOxLookup {
public:
    TOxLookup();
    /*! Shares the records of the other. */
    TOxLookup(const TOxLookup&) = default;
    /*! Shares the records of the other. */
    TOxLookup& operator=(const TOxLookup&) = default;
    virtual ~TOxLookup();

    /*! Identification of the lookup. */
    QString getId() const;
    /*! Sets the identification. */
    void setId(const QString& id);
    /*! Label of the lookup. */
    QString getLabel() const;
    /*! Sets the label. */
    void setLabel(const QString& label);
    /*! Path of the file. */
    QString getFfileName() const;
    /*! Sets the path of the file. */
    void setFfileName(const QString& fileName);
    /*! Number of the separator; see separatorCharacter(). */
    int getSeparator() const;
    /*! Sets the number of the separator. */
    void setSeparator(const int& separator);

    /*!
     * Takes \a name as the file name when there is such a file. An empty name keeps the file name
     * there is. Either way \c fileNameSet becomes true; otherwise nothing changes.
     */
    void updateFileName(const QString& name);

    /*!
     * False when \c fileName names no existing file. Otherwise takes its size, sets \c position to
     * 0 and clears \c cancelled.
     */
    bool openLookup();

    /*!
     * Reads the whole file into \c line, without the line ends; a file that cannot be opened gives
     * an empty text. Returns false when \c cancelled is set; otherwise counts one line, sets
     * \c position to the length of the text and returns true.
     */
    bool readLookup();

    /*!
     * Splits \c line into \c key and \c value. They keep what they held, and checks report it, when
     * the line has no separator or begins with it.
     */
    void splitKeyValueAVL(QStringList* messages);

    /*!
     * Reads the file into \c values, which is emptied first; of several records with one key the
     * first is kept.
     *
     * Checks report a line without separator, a key of another length than the first one, in 16-bit
     * units, and a key that was there before. Counting puts the value of every kept record into
     * \a frequencies with a new counter of 1; a value that is there keeps its counter as it is.
     *
     * Kept: a line without separator stands for the pair split last, even by an import before. The
     * counts of messages go on over all imports of the object.
     *
     * \param frequencies gets the values with their counters, when the check counts
     * \param messages gets the message lines; may be null
     * \return false when there is no such file, \c status is 1 and \c errorText says so then; also
     *     when the progress function cancelled the import, and when reading failed on the way, of
     *     which \c status and \c errorText tell as well. True for a file that cannot be opened.
     */
    bool importAVL(std::map<QString, int*>& frequencies, QStringList* messages);

    /*!
     * As importAVL(), from the \a bytes of a file, which is not opened; \c consistency says what is
     * checked and counted. False only when the progress function cancelled.
     */
    bool importData(
        const QByteArray& bytes, std::map<QString, int*>& frequencies, QStringList* messages);

    /*! importAVL() with \a mode, which is stored. */
    bool consistencyCheck(
        econsistencyCheck mode, std::map<QString, int*>& frequencies, QStringList* messages);

    /*!
     * Appends \c lineNumber, "_" and \a text to \a messages, unless that is null. The first message
     * beyond \c maxMessages is replaced by a notice that there are too many, in which the two
     * numbers appear as the one character with that 16-bit code; those after it are appended again.
     */
    void issueErrorMessage(QStringList* messages, const QString& text);

    /*!
     * Name of the codec that files are decoded with, for example "UTF-8"; empty or unknown: the
     * locale's. A byte-order mark wins over either.
     */
    void setTextCodec(const QByteArray& name);

    /*!
     * Who is told how far importAVL() is, each time that the percentage of the file's bytes has
     * changed; empty: nobody. Records out of key order are put in place after the last call.
     *
     * An import that it cancels leaves everything as if the file ended behind the line read last:
     * the records and messages of the lines so far are there. \c cancelled is set then.
     */
    void setImportProgress(LookupProgress progress);

    /*!
     * Who gets the problems as records, beside the messages: in the same order, all of them, as no
     * limit holds for them. Empty: nobody. Whoever needs no messages gives a null list for them.
     */
    void setProblemSink(LookupProblemSink sink);

    /*! The character that stands between key and value for separator code \a code. */
    static QChar separatorCharacter(int code);
    /*! What the separators are called, in the order of their codes. */
    static QStringList separatorNames();

    QString id;
    QString label;
    QString errorText; /*!< message of the last failure to find the file */
    int status = -1; /*!< 1 after the file was not found, never set back */
    int separator = 0; /*!< 0 space, 1 tab, 2 ",", 3 ";", 4 ":", any other space; only with 0 the
                          value's leading white space is removed */
    int maxMessages = 0; /*!< messages before the notice that there are too many */
    std::map<QString, TOxLookupValue*> values; /*!< the records by their keys */
    bool cancelled = false; /*!< set by the host to stop readLookup() */
    bool fileNameSet = false; /*!< updateFileName() set or confirmed the file name */
    QString key; /*!< of the line split last */
    QString value; /*!< of the line split last */
    econsistencyCheck consistency = importOnly;
    QString fileName;
    int lineNumber = 0; /*!< lines read so far; the number, from 1, of the line read last */
    int errorCount = 0; /*!< messages issued so far, by all imports */
    bool limitNoticeIssued = false;
    QString line; /*!< the line read last; after readLookup() the whole text */
    qint64 fileSize = 0; /*!< in bytes, as openLookup() found it */
    qint64 position = 0; /*!< length of the text read last, in 16-bit units */

private:
    bool importLines(
        QIODevice& device, std::map<QString, int*>& frequencies, QStringList* messages);
    bool tellProgress(qint64 bytesRead, int& percentage) const;
    void report(const TOxLookupProblem& problem, QStringList* messages);

    QByteArray m_codec;
    LookupProgress m_progress;
    LookupProblemSink m_problemSink;
};
