#pragma once

#include <model_Tessel/model_Tessel_global.h>

#include <QString>
#include <QStringList>

/*!
 * One variable of a data source, described without the importer that read it.
 *
 * Ownership: the list of provider type names is the field's own.
 */
class MODEL_TESSEL_EXPORT TOxSourceField {
public:
    TOxSourceField();
    virtual ~TOxSourceField();

    /*! Name of the field's type: "STRING", "REAL", "INTEGER" or empty. */
    QString getFieldType() const;
    /*! Stores \a name unchanged; \c fieldTypeIndex stays as it is. */
    void setFieldType(const QString& name);
    /*! Number of the field type: the index of its name. */
    int getFieldTypeIndex() const;
    /*! True when \c fieldTypeIndex is 3. */
    bool isString() const;

    /*! Name of the source's type; empty while it is none of the known ones. */
    QString getDataProviderType() const;
    /*! Number of the source's type: the index of its name, 0 while it is none of the known ones. */
    int getDataProviderTypeIndex() const;
    /*! Stores \a name and its number; does nothing when it is "NONE" or not in the list. */
    void setDataProviderType(const QString& name);

    /*!
     * The value of this field in the data line \a line, as far as the line reaches. Also compares
     * it with \c compareValue, for \c lastValueMatches.
     */
    QString getStringValue(const QString& line);

    QStringList* providerTypeNames; /*!< the index of a name is the number of the type */
    QString fieldName; /*!< name of the variable */
    QString fieldLabel; /*!< label of the variable */
    int decimals = 0; /*!< implied decimal places */
    int length = 0; /*!< width in characters */
    int start = 0; /*!< first column in a data line, from 1 */
    QString valueLabels; /*!< value labels as one text */
    QString minValue; /*!< lowest valid value */
    QString maxValue; /*!< highest valid value */
    QString notApplicableValue; /*!< text that stands for a question that did not apply */
    QString missingValue; /*!< text that stands for a missing value */
    QString compareValue; /*!< what getStringValue() compares with */
    bool lastValueMatches = false; /*!< the value cut last was \c compareValue */
    bool flagB = true; /*!< the application's */
    QString fieldTypeName;
    int fieldTypeIndex = 0; /*!< 0 none, 1 integer, 2 real, 3 string */
    QString dataProviderTypeName;
    int dataProviderTypeIndex = 0;
    QString dataProviderId; /*!< identifies the importer that read the field */
    QString record; /*!< record type that the field belongs to; empty: any */

private:
    Q_DISABLE_COPY(TOxSourceField)
};
