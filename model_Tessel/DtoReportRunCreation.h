#pragma once

#include <model_Tessel/HostTypes.h>
#include <model_Tessel/model_Tessel_global.h>

#include <QObject>
#include <QString>
#include <QStringList>

#include <memory>

/*!
 * The report on the lookups of one database creation: its captions and its data. The captions are
 * translated in the context "QObject".
 *
 * Ownership: the data are shared with the host application; the messages are the host's own.
 */
class MODEL_TESSEL_EXPORT DtoReportRunCreation : public QObject {
public:
    DtoReportRunCreation();
    ~DtoReportRunCreation() override;

    QString titleReport() const;
    void setTitleReport(const QString& text);
    QString idLabel() const;
    void setIdLabel(const QString& text);
    QString labelLabel() const;
    void setLabelLabel(const QString& text);
    QString dataFileLabel() const;
    void setDataFileLabel(const QString& text);
    QString idValue() const;
    void setIdValue(const QString& text);
    QString labelValue() const;
    void setLabelValue(const QString& text);
    QString dataFileValue() const;
    void setDataFileValue(const QString& text);
    QStringList* errorMessages() const;
    void setErrorMessages(QStringList* value);
    std::shared_ptr<TMavDataset> getReport() const;
    void setReport(const std::shared_ptr<TMavDataset>& value);
    std::shared_ptr<TMavDictionary> getDic() const;
    void setDic(const std::shared_ptr<TMavDictionary>& value);
    std::shared_ptr<TMavDatabaseCreationInfo> getInfo() const;
    void setInfo(const std::shared_ptr<TMavDatabaseCreationInfo>& value);

private:
    Q_DISABLE_COPY(DtoReportRunCreation)

    QString m_titleReport = tr("Pelix Lookup Checking");
    QString m_idLabel = tr("Lookup Identification");
    QString m_labelLabel = tr("Lookup Label");
    QString m_dataFileLabel = tr("Lookup File");
    QString m_idValue;
    QString m_labelValue;
    QString m_dataFileValue;
    QStringList* m_errorMessages = nullptr; /*!< not owned */
    std::shared_ptr<TMavDataset> m_report;
    std::shared_ptr<TMavDictionary> m_dic;
    std::shared_ptr<TMavDatabaseCreationInfo> m_info;
};
