#include <model_Tessel/ReportLookup.h>

ReportLookup::ReportLookup()
    : m_titleReport(tr("Pelix Lookup Checking"))
    , m_idLabel(tr("Lookup Identification"))
    , m_labelLabel(tr("Lookup Label"))
    , m_dataFileLabel(tr("Lookup File"))
{
}

ReportLookup::~ReportLookup() = default;

QString ReportLookup::titleReport() const
{
    return m_titleReport;
}

QString ReportLookup::idLabel() const
{
    return m_idLabel;
}

QString ReportLookup::labelLabel() const
{
    return m_labelLabel;
}

QString ReportLookup::getLabelLabel() const
{
    return m_labelLabel;
}

QString ReportLookup::dataFileLabel() const
{
    return m_dataFileLabel;
}

QString ReportLookup::idValue() const
{
    return m_idValue;
}

void ReportLookup::setIdValue(const QString& id)
{
    m_idValue = id;
}

QString ReportLookup::labelValue() const
{
    return m_labelValue;
}

void ReportLookup::setLabelValue(const QString& label)
{
    m_labelValue = label;
}

QString ReportLookup::dataFileValue() const
{
    return m_dataFileValue;
}

void ReportLookup::setDataFileValue(const QString& path)
{
    m_dataFileValue = path;
}

std::map<QString, int*> ReportLookup::frequenciesTree() const
{
    return m_frequenciesTree;
}

void ReportLookup::setFrequenciesTree(const std::map<QString, int*>& frequencies)
{
    m_frequenciesTree = frequencies;
}

QStringList* ReportLookup::errorMessages() const
{
    return m_errorMessages;
}

void ReportLookup::setErrorMessages(QStringList* messages)
{
    m_errorMessages = messages;
}

econsistencyCheck ReportLookup::getConsistency() const
{
    return m_consistency;
}

void ReportLookup::setConsistency(const econsistencyCheck& consistency)
{
    m_consistency = consistency;
}
