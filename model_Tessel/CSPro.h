#pragma once

#include <model_Tessel/CSProItem.h>
#include <model_Tessel/CSProModel.h>
#include <model_Tessel/CSProProblem.h>
#include <model_Tessel/CSProReading.h>
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
#include <memory>

class CSProBuilder;
class CSProTextReader;
class TValueSetItem;

/*!
 * Answers the question whether decimal codes become integers, in place of the modal dialog.
 *
 * Gets the value set concerned (kind DecimalCodesDropped) and returns QMessageBox::Yes, YesToAll,
 * No or NoToAll.
 */
using CSProDecimalQuestion = std::function<int(const CSProProblem&)>;

/*!
 * Reads a CSPro data dictionary into records, items and value sets: its text form, and its JSON
 * form when it is read as written.
 *
 * The reader is tolerant: unknown sections and keys are passed over, missing and malformed values
 * give defaults; what it passed over is listed in problems(). Only an exception ends a load, with
 * an error object of code 242.
 *
 * Ownership: records, items, value sets and the two lists are never deleted by the library, so
 * pointers to them outlive the parser. Threads: the GUI thread, for the dialogs.
 */
class MODEL_TESSEL_EXPORT TCSPro : public QObject, public CSProModel {
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
    /*! How the loads after it read; the established reading without it. */
    void setReading(CSProReading reading);
    /*! How the loads read. */
    CSProReading reading() const;
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
    /*!
     * The name that tells \a item from the other occurrences of its item: \a fieldName, the name of
     * its field, which by the established rules all of them have.
     */
    QString nameOfOccurrence(const TCSProItem& item, const QString& fieldName) const;
    /*! The levels of the questionnaire, in order. */
    const QVector<CSProLevel>& levels() const;
    /*! The relations between records and items, in order. */
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
    /*! Reads "[Dictionary]". */
    void processDictionary(QStringList* lines, int& index);
    /*! Reads "[Record]", to which the next items belong. */
    void processRecord(QStringList* lines, int& index);
    /*! Reads "[Item]", which the next value sets describe. */
    void processItem(QStringList* lines, int& index);
    /*! Reads "[ValueSet]" for the item added last. */
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
    /*! The list \c items itself. */
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

private:
    Q_DISABLE_COPY(TCSPro)

    template <typename Load> void guarded(Load load);
    template <typename Lines> void parse(const Lines& lines);
    template <typename Lines> void parseSection(const Lines& lines, int& index);
    void createMessageBox();
    void askAboutDecimals(const CSProProblem& valueSet);
    void useReading(CSProReading reading);

    QByteArray m_codec;
    CSProDecimalQuestion m_decimalQuestion;
    CSProProblem m_decimalCase; // what showMessageBoxDecimal() asks about
    CSProReading m_reading = CSProReading::Established;
    CSProFindings m_findings;
    std::unique_ptr<CSProBuilder> m_builder;
    std::unique_ptr<CSProTextReader> m_reader;
    QByteArray m_encoding;
    int m_language = 0; // index among the languages
};
