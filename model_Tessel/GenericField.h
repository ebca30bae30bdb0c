#pragma once

#include <model_Tessel/model_Tessel_global.h>

#include <QString>

class TDataImport;

/*!
 * One variable of an importer, with its current value.
 *
 * The importer fills the description; whoever reads the data assigns the raw text of one value of
 * one case, and then asks for it as text, real or integer.
 *
 * Ownership: the importer that created a field owns it; the field only points at its importer.
 */
class MODEL_TESSEL_EXPORT TGenericField {
public:
    /*! Codes of \c fieldType. */
    enum FieldType : int { NoType = 0, IntegerType = 1, RealType = 2, StringType = 3 };

    /*! Characters that \c text holds at most. */
    static constexpr int TextCapacity = 255;

    /*! Marks a real value that was never set: the smallest normal double. */
    static constexpr double NoRealValue = 2.2250738585072014e-308;

    /*! A field of \a owner, which it does not own. */
    explicit TGenericField(TDataImport* owner);
    virtual ~TGenericField();

    /*! True when the current value is the missing value. */
    virtual bool isMissing() = 0;
    /*! True when the current value means that the question did not apply. */
    virtual bool isNotApplicable() = 0;
    /*! True when the current value is blank. */
    virtual bool isBlank() = 0;
    /*! Records a code and its label; does nothing here. */
    virtual void addValueLabel(QString code, QString label);
    /*! Record type that the field belongs to; empty here. */
    virtual QString getGroup();

    /*!
     * The current value as text: the missing or not-applicable code where the value is one, an
     * empty text where it is blank, and numbers in the shortest form of six significant digits.
     */
    QString getAsString();

    /*!
     * Assigns the current value from text. A text that is not a number gives 0 in a numeric field.
     * A \c length above TextCapacity stops the process.
     */
    void setAsString(QString value);
    /*! As setAsString(), from a null-terminated wide text whose blanks do not matter to a number.
     */
    void setAsStringChar(const wchar_t* value);

    /*! The current value as a real number; 0 where it is none. */
    double getAsFloat();
    /*! Sets the real value only. */
    void setAsFloat(double value);

    /*! The current value as an integer, truncated toward zero; 0 where it is none. */
    int getAsInteger();
    /*! Sets the integer value only. */
    void setAsInteger(int value);

    /*! True for a field of type 3. */
    bool isString() const;

    /*!
     * Label of \a code in \c valueLabels, which is taken as one entry whose first character is
     * passed over; an empty text when the entry's code is another. Tabs in \c valueLabels become
     * newlines.
     */
    QString getValueLabel(const QString& code);

    bool auxFlag = false;
    QString name; /*!< name of the variable */
    QString label; /*!< label of the variable */
    int fieldType = NoType; /*!< 0 none, 1 integer, 2 real, 3 string */
    int length = 0; /*!< width in characters; at most so many are copied into \c text */
    int start = 0; /*!< first column in a fixed-width record, from 1 */
    QString valueLabels; /*!< value labels as one text */
    QString missingValue; /*!< text that stands for a missing value */
    QString notApplicableValue; /*!< text that stands for a question that did not apply */
    QString minValue; /*!< lowest valid value */
    QString maxValue; /*!< highest valid value */
    QString decimals; /*!< number of implied decimal places, as text */
    bool hasDecimalChar = true; /*!< the raw text has its own decimal point */
    bool conversionFailed = false; /*!< the last assignment threw while it converted */
    wchar_t
        text[TextCapacity] = {}; /*!< current value; terminated only when shorter than \c length */
    double realValue = NoRealValue; /*!< current value of a real field */
    double integerValue = 0; /*!< current value of an integer field */
    TDataImport* owner = nullptr; /*!< importer that owns the field; not owned */

protected:
    /*! Copies at most \c length characters of a null-terminated text into \c text. */
    void copyText(const wchar_t* value);
    /*! \c text up to its first null or its end. */
    QString currentText() const;
    /*!
     * Sets the numeric values from \a value as the field's type asks, unless the text is missing,
     * not applicable or blank. With \a scaled, a real value is divided by 10 raised to \c decimals.
     */
    void assignNumber(const QString& value, bool scaled);

private:
    Q_DISABLE_COPY(TGenericField)

    void convert(const QString& value);
};
