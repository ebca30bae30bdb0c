#pragma once

#include <model_Tessel/model_Tessel_global.h>

#include <QList>
#include <QString>

/*! One code of a variable and its label. */
class MODEL_TESSEL_EXPORT ValueLabelElement {
public:
    ValueLabelElement();

    QString getValue() const;
    void setValue(const QString& text);
    QString getLabel() const;
    void setLabel(const QString& text);

private:
    QString m_value;
    QString m_label;
};

/*! What was chosen as the source of a variable. */
class MODEL_TESSEL_EXPORT VarWipChoice {
public:
    VarWipChoice();

    QString getRecType() const;
    void setRecType(const QString& text);
    QString getField() const;
    void setField(const QString& text);
    QString getDataProvider() const;
    void setDataProvider(const QString& text);
    int getStart() const;
    void setStart(int value);
    QString getFormat() const;
    void setFormat(const QString& text);

private:
    QString m_recType;
    QString m_field;
    QString m_dataProvider;
    int m_start = 0;
    QString m_format;
};

/*! Valid values of a variable, both bounds among them. */
class MODEL_TESSEL_EXPORT Range {
public:
    Range();

    double getRangeMin() const;
    void setRangeMin(double value);
    double getRangeMax() const;
    void setRangeMax(double value);

private:
    double m_rangeMin = 0.0;
    double m_rangeMax = 0.0;
};

/*!
 * Where a variable was imported from, and its valid values.
 *
 * Ownership: the list comes with the record and outlives it, as its ranges do; setters delete
 * nothing, and a copy shares the list.
 */
class MODEL_TESSEL_EXPORT MetadataVariables {
public:
    MetadataVariables();

    QString getRecord() const;
    void setRecord(const QString& text);
    QString getField() const;
    void setField(const QString& text);
    int getStart() const;
    void setStart(int value);
    int getLength() const;
    void setLength(int value);
    bool getLookup() const;
    void setLookup(bool value);
    QList<Range*>* getRange() const;
    void setRange(QList<Range*>* value);
    void addItemRange(Range* item);

private:
    QString m_record;
    QString m_field;
    int m_start = 0; /*!< column in the source record, from 1 */
    int m_length = 0;
    bool m_lookup = false; /*!< the labels of its codes are in a lookup file */
    QList<Range*>* m_range = new QList<Range*>; /*!< in order */
};

/*!
 * One variable of an entity: its names, its place in the source, its type and its codes.
 *
 * Ownership: the value labels and the metadata come with the variable and outlive it; setters
 * delete nothing, and a copy shares them.
 */
class MODEL_TESSEL_EXPORT TOxVariable {
public:
    TOxVariable();

    const QString& getEntity() const;
    void setEntity(const QString& text);
    const QString& getPath() const;
    void setPath(const QString& text);
    const QString& getStorage() const;
    void setStorage(const QString& text);
    const QString& getFullName() const;
    void setFullName(const QString& text);
    QString getName() const;
    void setName(const QString& text);
    QString getAlias() const;
    void setAlias(const QString& text);
    QString getLabel() const;
    void setLabel(const QString& text);
    QString getGroup() const;
    void setGroup(const QString& text);
    QString getVarType() const;
    void setVarType(const QString& text);
    QString getDocumentation() const;
    void setDocumentation(const QString& text);
    QString getRecType() const;
    void setRecType(const QString& text);
    QString getField() const;
    void setField(const QString& text);
    const QString& getFieldName() const;
    void setFieldName(const QString& text);
    const bool& getLocal() const;
    void setLocal(const bool& value);
    int getStart() const;
    void setStart(int value);
    QString getDataProvider() const;
    void setDataProvider(const QString& text);
    int getTag() const;
    void setTag(int value);
    double getNotappl() const;
    void setNotappl(double value);
    double getMissing() const;
    void setMissing(double value);
    int getDecimals() const;
    void setDecimals(int value);
    int getSize() const;
    void setSize(int value);
    int getFieldSize() const;
    void setFieldSize(int value);
    int getFieldRelativePosition() const;
    void setFieldRelativePosition(int value);
    QString getDatasetID() const;
    void setDatasetID(const QString& text);
    QList<ValueLabelElement*>* getValueLabelElementList() const;
    void setValueLabelElementList(QList<ValueLabelElement*>* value);
    void addValueLabelElement(ValueLabelElement* element);
    VarWipChoice getVarWipChoice() const;
    void setVarWipChoice(const VarWipChoice& value);
    MetadataVariables* getMetadataVariables() const;
    void setMetadataVariables(MetadataVariables* value);
    int getLevel() const;
    void setLevel(int value);
    int getChecked() const;
    void setChecked(int value);

private:
    QString m_entity; /*!< name of the entity that has it */
    QString m_path;
    QString m_storage;
    QString m_fullName;
    QString m_name;
    QString m_alias;
    QString m_label;
    QString m_group;
    QString m_varType; /*!< "STRING", "REAL" or "INTEGER" */
    QString m_documentation;
    QString m_recType; /*!< record type in the source */
    QString m_field; /*!< source field */
    QString m_fieldName;
    bool m_local = false;
    int m_start = 0; /*!< column in the source record, from 1 */
    QString m_dataProvider; /*!< identifies the data provider */
    int m_tag = 0; /*!< the application's */
    double m_notappl = 0.0; /*!< not-applicable code */
    double m_missing = 0.0; /*!< missing-value code */
    int m_decimals = 0;
    int m_size = 0;
    int m_fieldSize = 0;
    int m_fieldRelativePosition = 0;
    QString m_datasetID;
    QList<ValueLabelElement*>* m_valueLabelElementList = new QList<ValueLabelElement*>;
    VarWipChoice m_varWipChoice; /*!< source choice made for it */
    MetadataVariables* m_metadataVariables = new MetadataVariables;
    int m_level = 1;
    int m_checked = 0;
};
