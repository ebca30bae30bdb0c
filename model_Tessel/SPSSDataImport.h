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
class TSPSSVariable;

/*! \name Callbacks of libreadstat
 * The context is the TSPSSDataImport that reads, but for handle_metadata_spss(). They return 0, or
 * READSTAT_HANDLER_ABORT when memory is short; nothing is thrown through them.
 */
/*! @{ */
/*!
 * Adds the value label to its set; one without a text is dropped. An unsupported value type ends
 * the process with exit status 1 and a line on standard error.
 */
MODEL_TESSEL_EXPORT int handle_value_label_spss(
    const char* labelSetName, readstat_value_t value, const char* label, void* ctx);
/*! Adds a field for \a variable, whose labels are those read before it. */
MODEL_TESSEL_EXPORT int handle_variable_spss(
    int index, readstat_variable_t* variable, const char* labelSetName, void* ctx);
/*! Stores the number of rows in the int at \a ctx. No parser calls it. */
MODEL_TESSEL_EXPORT int handle_metadata_spss(readstat_metadata_t* metadata, void* ctx);
/*! @} */

/*!
 * Importer of the dictionary of an SPSS file; its rows are passed over.
 *
 * A file that cannot be read gives no fields, or those before the damage, and no error;
 * readStatDescription() tells whether and why.
 *
 * Format: SPSS system file (.sav, and .zsav where libreadstat reads it).
 * Ownership: the fields are never deleted by the library; the value labels live until the next
 * openRead() or the end of the importer.
 */
class MODEL_TESSEL_EXPORT TSPSSDataImport : public TDataImport {
public:
    TSPSSDataImport();
    /*! \param fileName is read by openFile(); stored unchanged */
    explicit TSPSSDataImport(const QString& fileName);
    ~TSPSSDataImport() override;

    /*! "SPSS_" and the name of the file. */
    QString getDataProviderId() override;
    /*! "SPSS". */
    QString getDataProviderType() override;
    /*! Reads the file; true, always. A second call adds the variables once more. */
    bool openFile() override;
    QStringList* selectLayoutSource() override;

    /*! Reads the value labels and then the variables of \a fileName into the fields. */
    void openRead(const QString& fileName);

    /*!
     * Makes openRead() read from \a input, whatever file it is given; null: from that file. The
     * input stays the caller's and has to live as long as it is set.
     */
    void setInput(TStatInput* input);

    std::vector<TGenericField*> collectedFields; /*!< variables in the order of the file */
    /*! Variables by the address of the name buffer they came in, which may be gone by now. */
    std::map<const char*, TSPSSVariable*> variablesByName;
    std::map<std::string, std::vector<TStatValueLabel*>> labelSets; /*!< by name of the set */

private:
    friend int handle_value_label_spss(const char*, readstat_value_t, const char*, void*);
    friend int handle_variable_spss(int, readstat_variable_t*, const char*, void*);

    std::unique_ptr<StatImport> m_import;
};

/*! One variable of an SPSS file as a field. */
class MODEL_TESSEL_EXPORT TSPSSVariable : public TGenericField {
public:
    /*! A field without a variable yet. */
    explicit TSPSSVariable(TDataImport* owner);
    ~TSPSSVariable() override;

    /*! True, always. */
    bool isMissing() override;
    /*! False, always. */
    bool isNotApplicable() override;
    /*! True for a string field whose value holds white space only. */
    bool isBlank() override;
};
