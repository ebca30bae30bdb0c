#pragma once

#include <model_Tessel/CSProProblem.h>
#include <model_Tessel/CSProReadingRules.h>
#include <model_Tessel/CSProStructure.h>
#include <model_Tessel/model_Tessel_global.h>

#include <QByteArray>
#include <QList>
#include <QMessageBox>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVector>

#include <functional>
#include <map>
#include <memory>

class CSProBuilder;
class TCSProRecord;
class TCSProValueSet;
class TValueSetItem;

/*!
 * One item of a CSPro dictionary, or one occurrence of a repeated item.
 *
 * Format: section "[Item]" of a CSPro data dictionary, text form.
 * Ownership: made by TCSPro and never deleted by the library, as are the value sets.
 */
class MODEL_TESSEL_EXPORT TCSProItem : public QObject {
public:
    TCSProItem();
    ~TCSProItem() override;

    /*! Number of value sets, also stored in \c valueSetCount. */
    int getCount();
    /*! True when the item has a value set. */
    bool getHasValueSet() const;
    /*! Value set \a index, from 0; the index is not checked. */
    TCSProValueSet* getValueSet(int index) const;
    /*!
     * The value set that bounds the numbers of the item: the first with an ordinary code that is a
     * number. Null when there is none.
     */
    const TCSProValueSet* boundingValueSet() const;
    /*! Gives the item its value set; a second one is ignored. */
    void addValueSet(TCSProValueSet* valueSet);

    int valueSetCount = 0; /*!< what getCount() returned last */
    QString label;
    QString missingCode; /*!< code of the missing value, with its blanks; empty: none */
    QString name; /*!< of an occurrence: ends in "_" and the character whose code is its number */
    QString notApplicableCode; /*!< code of the not-applicable value; empty: none */
    int isAlpha = 0; /*!< 1: alphanumeric, 0: numeric */
    int decimal = 0; /*!< implied decimal places */
    int isSubItem = 0; /*!< 1: describes columns of the item before it */
    int len = 0; /*!< width in columns, of one occurrence */
    int occurrences = 1;
    int start = 1; /*!< first column in the data line, from 1 */
    bool hasDecimalChar = false; /*!< the data carry the decimal point */
    bool isZeroFill = false;
    int firstOccurrenceIndex = 0; /*!< of an occurrence: index of the first one among all items */
    TCSProRecord* record = nullptr; /*!< record that holds the item; not owned */
    QList<TCSProValueSet*>* valueSets; /*!< at most one, unless the rules say otherwise */

    QString dictionaryName; /*!< \c name without what marks an occurrence */
    int occurrence = 0; /*!< number of the occurrence, from 1; 0 for an item that is not repeated */
    int sourceLine = 0; /*!< line of the item's header in the dictionary, from 1; 0: unknown */
    int level = 0; /*!< level of the questionnaire, from 1; 0: not read */
    QString refusedCode; /*!< code of a refused answer; empty: none */
    QString note;
    QString occurrenceLabel; /*!< of an occurrence */
    QVector<QString> occurrenceLabels; /*!< of the item, from the first occurrence on */
    TCSProItem* parent = nullptr; /*!< item that a subitem describes columns of; not owned */
    QString contentType; /*!< of a binary item, for example "image"; empty: text */

private:
    Q_DISABLE_COPY(TCSProItem)
};

/*!
 * One record of a CSPro dictionary. It does not hold its items: those link to it.
 *
 * Format: section "[Record]" of a CSPro data dictionary, text form.
 */
class MODEL_TESSEL_EXPORT TCSProRecord {
public:
    /*! Does nothing. */
    void addItem(TCSProItem* item);
    /*! 1, always. */
    int getCount() const;
    /*! Null, always. */
    TCSProItem* getItem(int index) const;

    QString label;
    QString name;
    QString recordTypeValue; /*!< code in the data line, without its quotes */
    QString required; /*!< "Required" as written */
    int maxRecords = 100; /*!< most records of this type in one case */
    int recordLen = 0; /*!< last column of the record */

    int level = 0; /*!< level of the questionnaire, from 1; 0: not read */
    QString note;
    QVector<QString> occurrenceLabels; /*!< from the first record of its type on */
    int sourceLine = 0; /*!< line of the record's header in the dictionary, from 1; 0: unknown */
};

/*!
 * Answers the question whether decimal codes become integers, in place of the modal dialog.
 *
 * Gets the value set concerned (kind DecimalCodesDropped) and returns QMessageBox::Yes, YesToAll,
 * No or NoToAll.
 */
using CSProDecimalQuestion = std::function<int(const CSProProblem&)>;

/*!
 * Reads a CSPro data dictionary into records, items and value sets: its text form, and its JSON
 * form where the reading rules say so.
 *
 * The reader is tolerant: unknown sections and keys are passed over, missing and malformed values
 * give defaults; what it passed over is listed in problems(). Only an exception ends a load, with
 * an error object of code 242.
 *
 * Ownership: records, items, value sets and the two lists are never deleted by the library, so
 * pointers to them outlive the parser. Threads: the GUI thread, for the dialogs.
 */
class MODEL_TESSEL_EXPORT TCSPro : public QObject {
public:
    TCSPro();
    ~TCSPro() override;

    /*!
     * Reads the file \a path and parses its lines; a file that cannot be read has none. The text is
     * decoded as setTextCodec() says, without it with the locale's codec or as its byte-order mark
     * says. A second load appends to what is there.
     */
    void loadFromFile(const QString& path);
    /*!
     * Reads a dictionary as loadFromFile() does, from the bytes of its file: for hosts that have
     * them from elsewhere, or that must know of a file that cannot be read.
     */
    void loadFromData(const QByteArray& bytes);
    /*! Parses \a lines; throws an error object of code 242 when an exception ends the load. */
    void loadFromStr(QStringList* lines);
    /*! Loads nothing; \a path is not opened. */
    void loadFromCSDB(const QString& path);

    /*! Name of the codec that loadFromFile() decodes with, for example "UTF-8"; empty: as above. */
    void setTextCodec(const QByteArray& name);
    /*! Who answers the decimal-code question; empty: the user, in a modal dialog. */
    void setDecimalQuestion(CSProDecimalQuestion question);
    /*! How the loads after it read; the established rules without it. */
    void setReadingRules(const CSProReadingRules& rules);
    const CSProReadingRules& readingRules() const;
    /*! Name of the codec that the last file was decoded with; empty before. */
    QByteArray textEncoding() const;
    /*! The dictionary's languages, in the order of their texts in a label. */
    const QVector<CSProLanguage>& languages() const;
    /*!
     * Chooses the language of labelText() by its name, in any case; false when the dictionary has
     * no such language. Without a choice it is the first.
     */
    bool setLanguage(const QString& name);
    /*!
     * The text of \a label in the chosen language; where that has none, the first. A label of a
     * dictionary without languages is its own text.
     */
    QString labelText(const QString& label) const;
    /*! The levels of the questionnaire, in order. */
    const QVector<CSProLevel>& levels() const;
    const QVector<CSProRelation>& relations() const;
    /*! Note of the dictionary itself. */
    QString note() const;
    /*! What the loads so far passed over, dropped or changed, in order of the lines. */
    const QVector<CSProProblem>& problems() const;

    /*!
     * Kind of the section that \a header opens: 1 dictionary, 2 record, 3 item, 4 value set,
     * 0 any other, after which items belong to the common record.
     */
    int getItemType(const QString& header);
    /*!
     * The trimmed non-empty lines between \a index and the next line that begins with "[", as a new
     * list that the caller owns; \a index moves to the last line before that one.
     */
    QStringList* getSection(QStringList* lines, int& index);
    /*!
     * Value of the first line of \a section that contains \a key anywhere; empty when there is none
     * or when that line has not exactly one "=".
     */
    QString processLine(const QStringList& section, const QString& key, const QString& scratch);
    /*! processLine() as a decimal integer, \a defaultValue where it is none. */
    int processLineToInt(const QStringList& section, const QString& key, int defaultValue);

    /*! \name One section each; \a index is its header and becomes its last line. */
    /*! @{ */
    void processDictionary(QStringList* lines, int& index);
    void processRecord(QStringList* lines, int& index);
    void processItem(QStringList* lines, int& index);
    void processValueSet(QStringList* lines, int& index);
    /*! @} */

    /*! Stores the values of \a entry, whose code holds several, as entries of their own. */
    void processOtherRanges(TCSProValueSet* valueSet, TValueSetItem* entry);

    /*! Number of records, also stored in \c recordsCount. */
    int getRecordsCount();
    /*! Record \a index, from 0; the index is not checked. */
    TCSProRecord* getRecord(int index) const;
    /*! Number of items of all records, occurrences counted one by one. */
    int getItemsCount() const;
    /*! Item \a index, from 0; the index is not checked. */
    TCSProItem* getItem(int index) const;
    QList<TCSProItem*>* getItemsList() const;
    /*! The latest record with exactly that record-type value; null when there is none. */
    TCSProRecord* findRecordByValue(const QString& value) const;

    /*!
     * Shows the message box modally, with the buttons Yes, Yes to All, No (the default) and No to
     * All, and returns the one pressed. A program without widgets gets No.
     */
    int showMessageBox(const QString& text, const QString& informativeText, const QString& title,
        QMessageBox::Icon icon);
    /*! Asks what becomes of decimal codes, unless that was answered for all. */
    void showMessageBoxDecimal(const QString& text, const QString& informativeText,
        const QString& title, QMessageBox::Icon icon);
    /*! Asks what becomes of undefined values, unless that was answered for all. */
    void showMessageBoxUndefined(const QString& text, const QString& informativeText,
        const QString& title, QMessageBox::Icon icon);

    static const QString CSPRO_VER; /*!< "CSPRO" */

    int recordTypeStart = 1; /*!< column of the record-type code in a data line, from 1 */
    int recordTypeLen = 1; /*!< width of the record-type code; 0: one record type */
    QMessageBox* msgBox = nullptr; /*!< the one dialog; owned; null in a program without widgets */
    int recordsCount = 0; /*!< what getRecordsCount() returned last */
    int decimalAnswer = 0; /*!< 0 none, 1 yes to all, 2 no to all */
    int undefinedAnswer = 0; /*!< 0 none, 1 yes to all, 2 no to all */
    int decimalButton = 0; /*!< QMessageBox::StandardButton pressed last */
    int undefinedButton = 0; /*!< QMessageBox::StandardButton pressed last */
    QString version;
    QString label;
    QString name;
    QString positions; /*!< "Positions" as written */
    QString zeroFill; /*!< "ZeroFill" as written */
    QString decimalChar; /*!< "DecimalChar" as written */
    TCSProRecord* commonRecord; /*!< holds the identification items; not among \c records */
    QList<TCSProRecord*>* records; /*!< in file order */
    std::map<QString, TCSProRecord*> recordsByValue; /*!< latest record of each value */
    QList<TCSProItem*>* items; /*!< of all records, in file order, occurrences one by one */
    TCSProItem* lastItem = nullptr; /*!< item added last, which the next value set describes */
    TCSProRecord* currentRecord; /*!< record that receives the next items */
    bool lastItemNumeric = false; /*!< the last "[Item]" section is not alphanumeric */

private:
    Q_DISABLE_COPY(TCSPro)

    friend class CSProBuilder;

    template <typename Load> void guarded(Load load);
    template <typename Lines> void parse(const Lines& lines);
    template <typename Lines> void parseSection(const Lines& lines, int& index);
    void createMessageBox();

    QByteArray m_codec;
    CSProDecimalQuestion m_decimalQuestion;
    CSProProblem m_decimalCase; // what showMessageBoxDecimal() asks about
    CSProReadingRules m_rules;
    std::unique_ptr<CSProBuilder> m_builder;
    QByteArray m_encoding;
    QString m_note;
    QVector<CSProLanguage> m_languages;
    int m_language = 0; // index among the languages
    QVector<CSProLevel> m_levels;
    QVector<CSProRelation> m_relations;
    QVector<CSProProblem> m_problems;
};
