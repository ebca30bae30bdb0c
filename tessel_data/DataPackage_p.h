#pragma once

#include <tessel_data/ConversionPlan.h>
#include <tessel_data/CsvColumn_p.h>
#include <tessel_data/UniqueNames.h>

#include <QJsonArray>
#include <QJsonObject>
#include <QHash>
#include <QStringList>

namespace tessel {

/*
 * The description of CSV files that lies beside them: Data Package, version 2. What that has no
 * place for stands in properties that begin with "tessel:": value sets, whose ranges and codes that
 * data may leave are no categories, formats and levels.
 */
class DataPackage {
public:
    DataPackage(const DataDictionary& dictionary, const CsvForm& form, CsvCodeSets& codes);

    static QString fileName()
    {
        return QStringLiteral("datapackage.json");
    }

    void addFile(const ConversionFile& file, const std::vector<CsvColumn>& columns, qint64 rows,
        qint64 bytes);
    void write(int descriptor, const QString& path) const;

private:
    QJsonObject field(const ConversionColumn& column, const CsvColumn& values);
    void addCodes(QJsonObject& field, int index, const CsvColumn& values);
    QJsonArray categories(int index, const QString& type) const;
    QJsonArray missingValues(int index) const;
    QJsonArray missingRanges(int index) const;
    QStringList missingInFile(int index) const;
    QJsonObject valueSet(int set) const;
    QString valueSetName(int set);
    QStringList primaryKey(const ConversionFile& file, const std::vector<CsvColumn>& columns) const;
    bool areWhole(const ConversionColumn& column) const;
    QString typeOf(const ConversionColumn& column, const DataVariable* variable) const;

    const DataDictionary& m_dictionary;
    const CsvForm m_form;
    CsvCodeSets& m_codes;
    QJsonArray m_resources;
    UniqueNames m_resourceNames;
    UniqueNames m_setNames;
    QHash<int, QString> m_sets; // names of those in use
    QJsonArray m_valueSets;
};

} // namespace tessel
