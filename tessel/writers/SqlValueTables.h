#pragma once

#include "writers/ExportWriters.h"

#include <tessel_data/SqlNames.h>

#include <QHash>
#include <QPair>
#include <QSet>
#include <QStringList>
#include <QVector>

using tessel::SqlDialect;
using tessel::SqlNames;
using tessel::SqlType;

/*! What decides on the type of the column for \a field. */
tessel::SqlShape sqlShapeOf(const ListedField& field);

/*! Type of the column for \a field. */
SqlType sqlTypeOf(const ListedField& field, SqlDialect dialect);

/*! The tables of value labels; fields with the same codes and labels share one. */
class SqlValueTables {
public:
    SqlValueTables(SqlDialect dialect, SqlNames& tableNames)
        : m_dialect(dialect)
        , m_tableNames(tableNames)
    {
    }

    /*! Adds the value sets of \a field. */
    void add(const ListedField& field);

    /*! Names of the tables with the value sets of \a field, which was added. */
    QStringList tablesOf(const ListedField& field) const;

    /*!
     * The table that the values of \a field must be in. Null when they were not all found there, as
     * for every field of a file without rows; when its codes are ranges or all special, when some
     * value or missing value has no code that a column holds, when its value sets are alternatives,
     * and for measures: their labels mark only some values.
     */
    QString referenceOf(const ListedField& field) const;

    /*! The statements that make the tables and their rows. */
    QString statements() const;

private:
    struct Table {
        QString name;
        QString label;
        SqlType type;
        bool hasRanges;
        QVector<ListedCode> codes;
        QStringList fields;
        QSet<QString> knownFields;
        QSet<QString> literals; // of the codes
        bool isClosed; // lists all values of some field
    };

    using CodesId = QPair<const ListedCode*, int>;

    CodesId idOf(const ListedField& field, const ListedValueSet& valueSet) const;
    QString keyOf(const ListedField& field, const ListedValueSet& valueSet) const;
    int addTable(const ListedField& field, const ListedValueSet& valueSet);
    bool lacksMissing(const ListedField& field, const Table& table) const;
    QString literal(const QString& code, SqlType type) const;
    QString uniqueKey(const QString& literal, SqlType type) const;
    QString definition(const Table& table) const;
    QStringList rows(const Table& table) const;

    SqlDialect m_dialect;
    SqlNames& m_tableNames;
    QHash<QString, int> m_indexes; // by type, codes and labels
    QHash<CodesId, int> m_known; // of codes that fields share
    QVector<Table> m_tables;
};
