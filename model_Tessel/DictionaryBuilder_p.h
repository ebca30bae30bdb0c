#pragma once

#include <model_Tessel/Config.h>
#include <model_Tessel/DataProvider.h>
#include <model_Tessel/DictionaryRelease.h>

#include <QHash>
#include <QSet>
#include <QString>
#include <QVector>

class MetadataVariables;
class TCSPro;
class TDataImport;
class TOxEntity;
class TOxSourceField;
class TOxVariable;
class ValueLabelElement;
struct TStatFileDescription;

// The fields of an importer, deleted with what else the provider made.
class ImportedFields : public TOxDataProvider {
public:
    explicit ImportedFields(TDataImport& importer);
    ~ImportedFields() override;

private:
    Q_DISABLE_COPY(ImportedFields)
};

/*
 * Builds a dictionary of the fields of any provider. Builders for sources that tell more than their
 * fields do are derived from it.
 */
class DictionaryTreeBuilder {
public:
    DictionaryTreeBuilder(
        const TOxDataProvider& provider, const QVector<LookupDictionary>& lookups);
    virtual ~DictionaryTreeBuilder();

    DictionaryPointer build();

protected:
    using LabelList = QList<ValueLabelElement*>;

    virtual void describeRoot();
    // Those that the source tells before its fields.
    virtual void addEntities();
    virtual void addField(const TOxSourceField& source, int index);

    TOxEntity& root() const;
    TOxEntity& addEntity(const QString& name, const QString& recType);
    TOxEntity& entityOf(const TOxSourceField& source);
    TOxVariable& addVariable(TOxEntity& entity, const TOxSourceField& source);
    void takeJoinedLabels(TOxVariable& variable, const TOxSourceField& source);
    static void takeBounds(TOxVariable& variable, const TOxSourceField& source);

    // Gives the variable the labels of an earlier one; false for the first, which fills its own.
    static bool sharesLabels(TOxVariable& variable, LabelList*& labels);
    static void addLabel(TOxVariable& variable, const QString& value, const QString& label);
    // A range of numbers; what is none is left out.
    static void addRange(MetadataVariables& metadata, const QString& low, const QString& high);

    const TOxDataProvider& m_provider;
    TDataImport* const m_importer; // the provider's; may be null
    QSet<QString> m_lookupNames;
    QHash<QString, TOxEntity*> m_entitiesByName; // the first of each name

private:
    Q_DISABLE_COPY(DictionaryTreeBuilder)

    void addLookups(const QVector<LookupDictionary>& lookups);
    void describeSource();

    DictionaryPointer m_dictionary { new Dictionary };
    // By the text that fields share; to compare texts would read each once a field.
    QHash<const QChar*, LabelList*> m_labelsOfTexts;
};

// Builds of the fields of a CSPro importer, which read cspro.
DictionaryPointer buildCSProTree(
    const TOxDataProvider& provider, const TCSPro& cspro, const QVector<LookupDictionary>& lookups);

DictionaryPointer buildStatTree(
    const TStatFileDescription& file, const QVector<LookupDictionary>& lookups);
