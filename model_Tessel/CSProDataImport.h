#pragma once

#include <model_Tessel/CSPro.h>
#include <model_Tessel/DataImport.h>
#include <model_Tessel/GenericField.h>
#include <model_Tessel/model_Tessel_global.h>

#include <QByteArray>
#include <QString>
#include <QStringList>

/*!
 * Importer of a CSPro source: reads the dictionary and describes, field by field, the fixed-width
 * data file that belongs to it. The lines of the data file are read by the caller.
 *
 * Format: CSPro data dictionary (.dcf), text form.
 * Ownership: the dictionary, the groups and the fields are never deleted by the library.
 */
class MODEL_TESSEL_EXPORT TCSProDataImport : public TDataImport {
public:
    TCSProDataImport();
    /*! \param dictionaryFile is read by openFile(); stored unchanged */
    explicit TCSProDataImport(const QString& dictionaryFile);
    ~TCSProDataImport() override;

    /*! "CSPRO_" and the name of the dictionary file. */
    QString getDataProviderId() override;
    /*! "CSPRO". */
    QString getDataProviderType() override;
    /*! Reads the dictionary anew; true, or an error object of code 242 is thrown. */
    bool openFile() override;
    QStringList* selectLayoutSource() override;
    /*! True when the dictionary has a record type of some width. */
    bool isMultiple() override;
    int getGroupCount() override;
    /*! Entry \a index of \c groups, from 0. */
    QString getGroupName(int index) override;
    /*! The first entry of \c groups that contains entry \a index. */
    QString getGroupValue(int index) override;
    /*! Index of the last record with exactly that record-type value; -1 when there is none. */
    int getRecordTypeIndex(QString value) override;
    int getRecordTypeStart() override;
    int getRecordTypeSize() override;

    /*! Index of the first record whose value is \c currentRecordType; -1 when there is none. */
    int getRecordTypeIndex();

    /*! Reads \a dictionaryFile into \c dictionary and builds groups and fields from it. */
    void openRead(const QString& dictionaryFile);
    /*!
     * As openFile(), from the \a bytes of a dictionary: the file that \c sourceName names is not
     * opened. Throws an error object of code 242 as openFile() does.
     */
    void openData(const QByteArray& bytes);
    /*! Adds one field for each item of the dictionary. */
    void copyDataFromDictionary();
    /*! Copies the missing code of the item of \a field, a TCSProVariable, into the field. */
    void getVarMissingValue(TGenericField* field);
    /*! Copies the not-applicable code of the item of \a field, a TCSProVariable, into the field. */
    void getNotApplicable(TGenericField* field);
    /*! \a count copies of \a character; none for a count below 1. */
    QString StringOfChar(char character, int count);

    /*! As TCSPro::setTextCodec(), for the dictionaries opened after it. */
    void setTextCodec(const QByteArray& name);
    /*! As TCSPro::setReading(), for the dictionaries opened after it. */
    void setReading(CSProReading reading);
    /*! Chooses the language of the fields' labels as TCSPro::setLanguage() does. */
    void setLanguage(const QString& name);
    /*! As TCSPro::setDecimalQuestion(), for the dictionaries opened after it. */
    void setDecimalQuestion(const CSProDecimalQuestion& question);

    QStringList* groups; /*!< one entry a record: its name, "=" and its record-type value */
    bool dictionaryPending = true; /*!< no dictionary was read yet */
    int recordTypeStart = 0; /*!< column of the record-type code, from 1; 0 until read */
    int recordTypeLen = 0; /*!< width of the record-type code; above 0: several record types */
    qint64 openState = 0; /*!< 1 once openFile() was called */
    TCSPro* dictionary = nullptr; /*!< read by openRead(); null before */
    QString currentRecordType; /*!< record-type value of the current data line, set by its reader */

private:
    void beginOpening();
    void beginReading();
    void finishReading();

    QByteArray m_codec;
    CSProReading m_reading = CSProReading::Established;
    QString m_language;
    CSProDecimalQuestion m_decimalQuestion;
};

/*! One item of a CSPro dictionary, or one of its occurrences, as a field. */
class MODEL_TESSEL_EXPORT TCSProVariable : public TGenericField {
public:
    /*! A field without an item yet. */
    explicit TCSProVariable(TDataImport* owner);
    ~TCSProVariable() override;

    /*! True when a conversion failed or the value is the missing code, blanks included. */
    bool isMissing() override;
    /*! True when the value is the not-applicable code, blanks included. */
    bool isNotApplicable() override;
    /*! True when the value holds white space only. */
    bool isBlank() override;
    /*! Name of the field's record when the dictionary has several record types; else empty. */
    QString getGroup() override;

    /*!
     * As the base, but the item says whether the text has a decimal point of its own, and
     * \c conversionFailed is left alone.
     */
    void setAsString(QString value);

    QString group;
    TCSProItem* item = nullptr; /*!< what the field stands for; not owned */
    /*!
     * The item was read as written: codes compare as numbers or without trailing blanks, and
     * implied decimals scale a text without a point of its own.
     */
    bool isAsWritten = false;

private:
    bool isCode(const QString& code) const;
    void assignScaled(const QString& value);
};
