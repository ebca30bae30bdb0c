#include <model_Tessel/DtoReportRunCreation.h>

DtoReportRunCreation::DtoReportRunCreation() = default;

DtoReportRunCreation::~DtoReportRunCreation() = default;

// clang-format off
QString DtoReportRunCreation::titleReport() const { return m_titleReport; }
void DtoReportRunCreation::setTitleReport(const QString& text) { m_titleReport = text; }
QString DtoReportRunCreation::idLabel() const { return m_idLabel; }
void DtoReportRunCreation::setIdLabel(const QString& text) { m_idLabel = text; }
QString DtoReportRunCreation::labelLabel() const { return m_labelLabel; }
void DtoReportRunCreation::setLabelLabel(const QString& text) { m_labelLabel = text; }
QString DtoReportRunCreation::dataFileLabel() const { return m_dataFileLabel; }
void DtoReportRunCreation::setDataFileLabel(const QString& text) { m_dataFileLabel = text; }
QString DtoReportRunCreation::idValue() const { return m_idValue; }
void DtoReportRunCreation::setIdValue(const QString& text) { m_idValue = text; }
QString DtoReportRunCreation::labelValue() const { return m_labelValue; }
void DtoReportRunCreation::setLabelValue(const QString& text) { m_labelValue = text; }
QString DtoReportRunCreation::dataFileValue() const { return m_dataFileValue; }
void DtoReportRunCreation::setDataFileValue(const QString& text) { m_dataFileValue = text; }
QStringList* DtoReportRunCreation::errorMessages() const { return m_errorMessages; }
void DtoReportRunCreation::setErrorMessages(QStringList* value) { m_errorMessages = value; }
std::shared_ptr<TMavDataset> DtoReportRunCreation::getReport() const { return m_report; }
void DtoReportRunCreation::setReport(const std::shared_ptr<TMavDataset>& value) { m_report = value; }
std::shared_ptr<TMavDictionary> DtoReportRunCreation::getDic() const { return m_dic; }
void DtoReportRunCreation::setDic(const std::shared_ptr<TMavDictionary>& value) { m_dic = value; }
std::shared_ptr<TMavDatabaseCreationInfo> DtoReportRunCreation::getInfo() const { return m_info; }
void DtoReportRunCreation::setInfo(const std::shared_ptr<TMavDatabaseCreationInfo>& value) { m_info = value; }
// clang-format on
