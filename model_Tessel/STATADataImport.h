#pragma once

#include <model_Tessel/DataImport.h>
#include <model_Tessel/GenericField.h>
#include <model_Tessel/StatValueLabel.h>
#include <model_Tessel/model_Tessel_global.h>

#include <QString>
#include <QStringList>

#include <readstat.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

class StatImport;
class TStatInput;
class TSTATAVariable;

/*! \name Callbacks of libreadstat
 * The context is the TSTATADataImport that reads. They return 0, or READSTAT_HANDLER_ABORT when
 * memory is short; nothing is thrown through them.
 */
/*! @{ */
/*!
 * Adds the value label to its set; one without a text is dropped. An unsupported value type ends
 * the process with exit status 1 and a line on standard error.
 */
MODEL_TESSEL_EXPORT int handle_value_label_stata(
    const char* labelSetName, readstat_value_t value, const char* label, void* ctx);
/*! Adds a field for \a variable, whose labels are those read before it. */
MODEL_TESSEL_EXPORT int handle_variable_stata(
    int index, readstat_variable_t* variable, const char* labelSetName, void* ctx);
/*! @} */

/*! \name Callbacks that no parser calls
 * handle_metadata_stata() stores the numbers of rows and of variables in \c importSlotA and
 * \c importSlotB of the importer; the others do nothing. All return 0.
 */
/*! @{ */
MODEL_TESSEL_EXPORT int handle_metadata_stata(readstat_metadata_t* metadata, void* ctx);
MODEL_TESSEL_EXPORT int handle_metadata(readstat_metadata_t* metadata, void* ctx);
MODEL_TESSEL_EXPORT int handle_variable(
    int index, readstat_variable_t* variable, const char* labelSetName, void* ctx);
MODEL_TESSEL_EXPORT int handle_variablexx(
    int index, readstat_variable_t* variable, const char* labelSetName, void* ctx);
/*! @} */

/*!
 * Importer of the dictionary of a Stata file; its rows are passed over.
 *
 * A file that cannot be read gives no fields, or those before the damage, and a line with
 * libreadstat's error code on standard output; readStatDescription() tells more.
 *
 * Format: Stata data file (.dta).
 * Ownership: the fields are never deleted by the library; the value labels live until the next
 * openRead() or the end of the importer.
 */
class MODEL_TESSEL_EXPORT TSTATADataImport : public TDataImport {
public:
    TSTATADataImport();
    /*! \param fileName is read by openFile(); stored unchanged */
    explicit TSTATADataImport(const QString& fileName);
    ~TSTATADataImport() override;

    /*! "STATA_" and the name of the file. */
    QString getDataProviderId() override;
    /*! "STATA". */
    QString getDataProviderType() override;
    /*! Reads the file anew; true, always. */
    bool openFile() override;
    QStringList* selectLayoutSource() override;

    /*!
     * Reads the value labels and then the variables of \a fileName into the fields, behind those
     * collected before. When the variables could not be read whole, a line on standard output says
     * "Error processing", the file and libreadstat's error code.
     */
    void openRead(const QString& fileName);

    /*!
     * Makes openRead() read from \a input, whatever file it is given; null: from that file. The
     * input stays the caller's and has to live as long as it is set.
     */
    void setInput(TStatInput* input);
    /*! Keeps openRead() from telling a failure on standard output. */
    void setQuiet(bool isQuiet);

    std::vector<TGenericField*> collectedFields; /*!< variables in the order of the file */
    /*! Variables by the address of the name buffer they came in, which may be gone by now. */
    std::map<const char*, TSTATAVariable*> variablesByName;
    std::map<std::string, std::vector<TStatValueLabel*>> labelSets; /*!< by name of the set */

private:
    friend int handle_value_label_stata(const char*, readstat_value_t, const char*, void*);
    friend int handle_variable_stata(int, readstat_variable_t*, const char*, void*);

    std::unique_ptr<StatImport> m_import;
};

/*! One variable of a Stata file as a field. */
class MODEL_TESSEL_EXPORT TSTATAVariable : public TGenericField {
public:
    /*! A field without a variable yet. */
    explicit TSTATAVariable(TDataImport* owner);
    ~TSTATAVariable() override;

    /*! \c missing, which the library never sets. */
    bool isMissing() override;
    /*! False, always. */
    bool isNotApplicable() override;
    /*! True for a string field whose value holds white space only. */
    bool isBlank() override;

    bool missing = false;
};
