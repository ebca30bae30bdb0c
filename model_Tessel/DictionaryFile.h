#pragma once

#include <model_Tessel/CSPro.h>
#include <model_Tessel/DictionaryBuilder.h>
#include <model_Tessel/model_Tessel_global.h>

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVector>

#include <memory>

class TCSProDataImport;
class TDataImport;
class TStatInput;
struct TStatFileDescription;

/*!
 * \file DictionaryFile.h
 * Opens any file that holds a dictionary, whatever its name is, and tells all that a person has to
 * know of how it was read:
 *
 * \code
 * const DictionaryFile file = readDictionaryFile(path);
 * for (const DictionaryFileProblem& problem : file.problems)
 *     show(problem.line, problem.text);
 * if (file.hasDictionary())
 *     use(file.buildTree());
 * \endcode
 *
 * Nothing is printed and nothing is thrown. The importers by themselves are silent where this is
 * not: for them a missing file is an empty dictionary.
 */

/*! Kinds of files that hold a dictionary. */
enum class DictionaryFileKind {
    Unknown, /*!< none of the others */
    CSPro, /*!< CSPro data dictionary (.dcf), text form and JSON */
    CSProDb, /*!< CSPro DB (.csdb), an SQLite file that holds its dictionary */
    Spss, /*!< SPSS system file (.sav, .zsav) */
    Stata /*!< Stata data file (.dta) */
};

/*!
 * The kind of a file that begins with \a head, 32 bytes or more where it has as many. CSPro
 * dictionaries have no mark, so a file without any mark may be one: it is CSPro here.
 */
MODEL_TESSEL_EXPORT DictionaryFileKind dictionaryFileKind(const QByteArray& head);

/*! How a dictionary is read. */
struct DictionaryFileOptions {
    DictionaryFileKind kind = DictionaryFileKind::Unknown; /*!< Unknown: as the content says */
    CSProReading reading = CSProReading::Established; /*!< of a CSPro dictionary */
    QByteArray encoding; /*!< of a CSPro dictionary, name of the codec; empty: it is found */
    QString language; /*!< of the labels of a CSPro dictionary, by name; empty: the first */
    /*! Asked by the established rules; without it they ask the user with a dialog. */
    CSProDecimalQuestion decimalQuestion;
    /*!
     * SPSS and Stata files are opened with their importers too, and buildTree() is made of these.
     * Such an importer ends the process at a value label of a type that it does not know.
     */
    bool withStatImporter = false;
};

/*! One thing to know of how a file was read. */
struct DictionaryFileProblem {
    /*! How much it matters. */
    enum class Severity {
        Note, /*!< nothing is lost */
        Warning, /*!< something may be other than it seems */
        Error /*!< something could not be read, or nothing */
    };

    /*! What it is. */
    enum class Kind {
        UnreadableFile, /*!< missing, no file, empty, too large, or its reading failed */
        Encrypted,
        Binary, /*!< no kind of file that is known, and no text */
        NoDictionary, /*!< a text, but none of a dictionary; \c details: its first lines */
        UnreadableDb, /*!< by its name a CSPro DB, by its content none */
        DbNotOpened, /*!< a CSPro DB, whose dictionary the program has to hand over */
        OtherKind, /*!< not of the kind that the options name; \c DictionaryFile::kind tells it */
        EncodingUnused, /*!< the options name one for a file that tells its own */
        DbEncodingUnused, /*!< the options name one for a CSPro DB, whose texts are UTF-8 */
        LanguageUnused, /*!< the options name one for a file that has none */
        InvalidEncoding, /*!< the text is not valid in the encoding that was named */
        AssumedEncoding, /*!< the text tells none and is no UTF-8; that of before it was taken */
        JsonByEstablishedRules, /*!< which read none */
        JsonEncoding, /*!< JSON that is no UTF-8 */
        Dictionary, /*!< described by describeProblem(); more of it in TCSPro::problems() */
        DecimalCodesDropped, /*!< the same for CSProProblem::Kind::DecimalCodesDropped */
        ReadingStopped, /*!< at the problem before it */
        LanguageByEstablishedRules, /*!< which know none */
        NoSuchLanguage,
        OddItem, /*!< read as it is written: no name, a repeated one, columns that cannot be */
        OddRecord, /*!< the same of a record */
        NoItems,
        LabelsMissing, /*!< the value labels of an SPSS or Stata file are damaged */
        Damaged, /*!< an SPSS or Stata file that cannot be read */
        Unsupported, /*!< an SPSS or Stata file that is sound but not taken by libreadstat */
        ImporterStopped, /*!< the importer reads less of the file than is described */
        AssumedStataEncoding, /*!< an older Stata file has letters of some encoding */
        OutOfMemory
    };

    Severity severity = Severity::Error;
    Kind kind = Kind::UnreadableFile;
    QString text; /*!< what is wrong and what to do, to follow the file's name */
    int line = 0; /*!< from 1; 0: none */
    QString group {}; /*!< problems of one group are alike and may be counted; null: its own */
    QStringList details {}; /*!< lines to show below the text */
};

/*! Deletes an importer and the reader of its dictionary; records, items and fields stay. */
struct MODEL_TESSEL_EXPORT DictionaryImporterDeleter {
    /*! Deletes \a importer, which may be null. */
    void operator()(TDataImport* importer) const;
};

/*! A file that was opened, with what it holds. */
struct MODEL_TESSEL_EXPORT DictionaryFile {
    DictionaryFile();
    ~DictionaryFile();
    /*! Takes over what \a other has. */
    DictionaryFile(DictionaryFile&& other) noexcept;
    /*! Takes over what \a other has. */
    DictionaryFile& operator=(DictionaryFile&& other) noexcept;

    /*! False when nothing of the file could be read. */
    bool hasDictionary() const;
    /*! False when something of the file could not be read. */
    bool isWhole() const;
    /*! The importer of a CSPro dictionary, opened; null for other files. */
    TCSProDataImport* csproImporter() const;
    /*!
     * Builds the tree of entities and variables with buildDictionary(): of the importer or, without
     * one, of the description. Null without a dictionary.
     */
    DictionaryPointer buildTree(const QVector<LookupDictionary>& lookups = {}) const;
    /*! The text of a CSPro dictionary, in UTF-8 and without a byte-order mark; empty: none. */
    QByteArray text() const;

    QString path; /*!< as it was given */
    DictionaryFileKind kind = DictionaryFileKind::Unknown; /*!< as the content says */
    QString encoding; /*!< name of that which the texts were read with; empty: not known */
    bool isEncodingAssumed = false; /*!< nothing tells it, and there are letters of it */
    QVector<DictionaryFileProblem> problems; /*!< in the order of reading */
    std::unique_ptr<TDataImport, DictionaryImporterDeleter> importer; /*!< null: none was opened */
    std::unique_ptr<TStatFileDescription> description; /*!< of an SPSS or Stata file; else null */
    std::shared_ptr<TStatInput> input; /*!< that reads the rows of such a file; else null */
    QByteArray bytes; /*!< the text of a CSPro dictionary as it was read; else null */
};

/*!
 * Opens the file \a path and reads its dictionary. The dictionary of a CSPro DB is not read, as
 * that takes SQLite: the problem DbNotOpened tells so, and the other overload reads what the
 * program takes out of it.
 */
MODEL_TESSEL_EXPORT DictionaryFile readDictionaryFile(
    const QString& path, const DictionaryFileOptions& options = {});

/*! Reads the \a dictionary, text or JSON, that the CSPro DB \a path holds; opens no file. */
MODEL_TESSEL_EXPORT DictionaryFile readDictionaryFile(
    const QString& path, const QByteArray& dictionary, const DictionaryFileOptions& options = {});

/*! Why a file that was opened can be read no further, to follow its name; null when it can. */
MODEL_TESSEL_EXPORT QString describeFailure(const TStatInput& input);
