#include <model_Tessel/Variable.h>

ValueLabelElement::ValueLabelElement() = default;

VarWipChoice::VarWipChoice() = default;

Range::Range() = default;

MetadataVariables::MetadataVariables() = default;

TOxVariable::TOxVariable() = default;

// clang-format off
QString ValueLabelElement::getValue() const { return m_value; }
void ValueLabelElement::setValue(const QString& text) { m_value = text; }
QString ValueLabelElement::getLabel() const { return m_label; }
void ValueLabelElement::setLabel(const QString& text) { m_label = text; }

QString VarWipChoice::getRecType() const { return m_recType; }
void VarWipChoice::setRecType(const QString& text) { m_recType = text; }
QString VarWipChoice::getField() const { return m_field; }
void VarWipChoice::setField(const QString& text) { m_field = text; }
QString VarWipChoice::getDataProvider() const { return m_dataProvider; }
void VarWipChoice::setDataProvider(const QString& text) { m_dataProvider = text; }
int VarWipChoice::getStart() const { return m_start; }
void VarWipChoice::setStart(int value) { m_start = value; }
QString VarWipChoice::getFormat() const { return m_format; }
void VarWipChoice::setFormat(const QString& text) { m_format = text; }

double Range::getRangeMin() const { return m_rangeMin; }
void Range::setRangeMin(double value) { m_rangeMin = value; }
double Range::getRangeMax() const { return m_rangeMax; }
void Range::setRangeMax(double value) { m_rangeMax = value; }

QString MetadataVariables::getRecord() const { return m_record; }
void MetadataVariables::setRecord(const QString& text) { m_record = text; }
QString MetadataVariables::getField() const { return m_field; }
void MetadataVariables::setField(const QString& text) { m_field = text; }
int MetadataVariables::getStart() const { return m_start; }
void MetadataVariables::setStart(int value) { m_start = value; }
int MetadataVariables::getLength() const { return m_length; }
void MetadataVariables::setLength(int value) { m_length = value; }
bool MetadataVariables::getLookup() const { return m_lookup; }
void MetadataVariables::setLookup(bool value) { m_lookup = value; }
QList<Range*>* MetadataVariables::getRange() const { return m_range; }
void MetadataVariables::setRange(QList<Range*>* value) { m_range = value; }
void MetadataVariables::addItemRange(Range* item) { m_range->append(item); }

const QString& TOxVariable::getEntity() const { return m_entity; }
void TOxVariable::setEntity(const QString& text) { m_entity = text; }
const QString& TOxVariable::getPath() const { return m_path; }
void TOxVariable::setPath(const QString& text) { m_path = text; }
const QString& TOxVariable::getStorage() const { return m_storage; }
void TOxVariable::setStorage(const QString& text) { m_storage = text; }
const QString& TOxVariable::getFullName() const { return m_fullName; }
void TOxVariable::setFullName(const QString& text) { m_fullName = text; }
QString TOxVariable::getName() const { return m_name; }
void TOxVariable::setName(const QString& text) { m_name = text; }
QString TOxVariable::getAlias() const { return m_alias; }
void TOxVariable::setAlias(const QString& text) { m_alias = text; }
QString TOxVariable::getLabel() const { return m_label; }
void TOxVariable::setLabel(const QString& text) { m_label = text; }
QString TOxVariable::getGroup() const { return m_group; }
void TOxVariable::setGroup(const QString& text) { m_group = text; }
QString TOxVariable::getVarType() const { return m_varType; }
void TOxVariable::setVarType(const QString& text) { m_varType = text; }
QString TOxVariable::getDocumentation() const { return m_documentation; }
void TOxVariable::setDocumentation(const QString& text) { m_documentation = text; }
QString TOxVariable::getRecType() const { return m_recType; }
void TOxVariable::setRecType(const QString& text) { m_recType = text; }
QString TOxVariable::getField() const { return m_field; }
void TOxVariable::setField(const QString& text) { m_field = text; }
const QString& TOxVariable::getFieldName() const { return m_fieldName; }
void TOxVariable::setFieldName(const QString& text) { m_fieldName = text; }
const bool& TOxVariable::getLocal() const { return m_local; }
void TOxVariable::setLocal(const bool& value) { m_local = value; }
int TOxVariable::getStart() const { return m_start; }
void TOxVariable::setStart(int value) { m_start = value; }
QString TOxVariable::getDataProvider() const { return m_dataProvider; }
void TOxVariable::setDataProvider(const QString& text) { m_dataProvider = text; }
int TOxVariable::getTag() const { return m_tag; }
void TOxVariable::setTag(int value) { m_tag = value; }
double TOxVariable::getNotappl() const { return m_notappl; }
void TOxVariable::setNotappl(double value) { m_notappl = value; }
double TOxVariable::getMissing() const { return m_missing; }
void TOxVariable::setMissing(double value) { m_missing = value; }
int TOxVariable::getDecimals() const { return m_decimals; }
void TOxVariable::setDecimals(int value) { m_decimals = value; }
int TOxVariable::getSize() const { return m_size; }
void TOxVariable::setSize(int value) { m_size = value; }
int TOxVariable::getFieldSize() const { return m_fieldSize; }
void TOxVariable::setFieldSize(int value) { m_fieldSize = value; }
int TOxVariable::getFieldRelativePosition() const { return m_fieldRelativePosition; }
void TOxVariable::setFieldRelativePosition(int value) { m_fieldRelativePosition = value; }
QString TOxVariable::getDatasetID() const { return m_datasetID; }
void TOxVariable::setDatasetID(const QString& text) { m_datasetID = text; }
QList<ValueLabelElement*>* TOxVariable::getValueLabelElementList() const { return m_valueLabelElementList; }
void TOxVariable::setValueLabelElementList(QList<ValueLabelElement*>* value) { m_valueLabelElementList = value; }
void TOxVariable::addValueLabelElement(ValueLabelElement* element) { m_valueLabelElementList->append(element); }
VarWipChoice TOxVariable::getVarWipChoice() const { return m_varWipChoice; }
void TOxVariable::setVarWipChoice(const VarWipChoice& value) { m_varWipChoice = value; }
MetadataVariables* TOxVariable::getMetadataVariables() const { return m_metadataVariables; }
void TOxVariable::setMetadataVariables(MetadataVariables* value) { m_metadataVariables = value; }
int TOxVariable::getLevel() const { return m_level; }
void TOxVariable::setLevel(int value) { m_level = value; }
int TOxVariable::getChecked() const { return m_checked; }
void TOxVariable::setChecked(int value) { m_checked = value; }
// clang-format on
