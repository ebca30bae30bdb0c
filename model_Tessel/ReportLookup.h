#pragma once

#include <model_Tessel/Lookup.h>
#include <model_Tessel/model_Tessel_global.h>

#include <QObject>
#include <QString>
#include <QStringList>

#include <map>

/*!
 * What a report on the check of a lookup file shows: captions, which lookup it was, how it was
 * checked, and what came of it. It computes nothing.
 *
 * Ownership: neither the message lines nor the counters are the report's; both stay shared with
 * whoever gave them.
 */
class MODEL_TESSEL_EXPORT ReportLookup : public QObject {
public:
    ReportLookup();
    ~ReportLookup() override;

    /*! \name Captions, translated when the report was made. */
    /*! @{ */
    QString titleReport() const;
    QString idLabel() const;
    QString labelLabel() const;
    /*! The same as labelLabel(). */
    QString getLabelLabel() const;
    QString dataFileLabel() const;
    /*! @} */

    /*! Identification of the lookup. */
    QString idValue() const;
    void setIdValue(const QString& id);
    /*! Label of the lookup. */
    QString labelValue() const;
    void setLabelValue(const QString& label);
    /*! Path of the lookup file. */
    QString dataFileValue() const;
    void setDataFileValue(const QString& path);

    /*! The values that occur, with their counters. */
    std::map<QString, int*> frequenciesTree() const;
    void setFrequenciesTree(const std::map<QString, int*>& frequencies);
    /*! The message lines of the check; null: none were given. */
    QStringList* errorMessages() const;
    void setErrorMessages(QStringList* messages);
    /*! How the lookup was checked. */
    econsistencyCheck getConsistency() const;
    void setConsistency(const econsistencyCheck& consistency);

private:
    Q_DISABLE_COPY(ReportLookup)

    QString m_titleReport;
    QString m_idLabel;
    QString m_labelLabel;
    QString m_dataFileLabel;
    QString m_idValue;
    QString m_labelValue;
    QString m_dataFileValue;
    std::map<QString, int*> m_frequenciesTree;
    QStringList* m_errorMessages = nullptr;
    econsistencyCheck m_consistency = importOnly;
};
