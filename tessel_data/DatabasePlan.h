#pragma once

#include <tessel_data/DataDictionary.h>
#include <tessel_data/SqlNotes.h>
#include <tessel_data/SqlTypes.h>

#include <QMap>
#include <QStringList>
#include <QVector>

#include <vector>

namespace tessel {

/*! A code, or a range of them, as values of a column. */
struct DatabaseCode {
    bool isBlank = false; /*!< the code of blanks, which are null */
    qint64 low = 0; /*!< scaled, where the values are exact numbers */
    qint64 high = 0;
    double lowReal = 0;
    double highReal = 0;
    QString text;
};

/*! One column of a table. */
struct DatabaseColumn {
    /*! What a column is for. */
    enum class Role { CaseId, Row, Occurrence, Value };
    /*! What a column holds. */
    enum class Type {
        Integer, /*!< whole, to 18 digits */
        Decimal, /*!< exact: the number times 10 to the decimals */
        Real,
        Text,
        Digits, /*!< a whole number of more than 18 digits */
    };

    QString name;
    QString label;
    Role role = Role::Value;
    Type type = Type::Integer;
    int decimals = 0;
    int digits = 0; /*!< of Integer: no value has more; 0: not known */
    QString sqlType; /*!< in the dialect of the plan */
    bool isId = false; /*!< an identification item */
    int variable = -1; /*!< index in the dictionary; -1: none */
    int valueTable = -1; /*!< index in DatabasePlan::valueTables of its labels; -1: none */
    std::vector<DatabaseCode> invalid; /*!< codes that mean missing or not applicable */
};

/*! One table, whose rows come from the cells of a batch. */
struct DatabaseTable {
    /*! What a table is for. */
    enum class Kind {
        Record,
        Repeat,
        Cases,
        Values,
        System,
        Deleted, /*!< of an addition: cases that its sources hold as deleted; not kept */
    };

    QString name;
    QString label;
    Kind kind = Kind::System;
    int record = -1; /*!< index in the dictionary; -1: none */
    QVector<DatabaseColumn> columns;
    /*! By occurrence, one but for Repeat: the cell of each column in its row; -1: none. */
    std::vector<QVector<int>> cells;
    QString labelView; /*!< labels in place of codes; empty: none */
    QString validView; /*!< without missing and not-applicable codes; empty: none */

    /*! Index of the column called \a columnName; -1: none. */
    int column(const QString& columnName) const;
};

/*! The codes of one value set, or of several that are equal, as a table. */
struct DatabaseValueTable {
    /*! A code with its labels. */
    struct Entry : DatabaseCode {
        QStringList labels; /*!< one for each label column */
        Special special = Special::None;
    };

    int table = 0; /*!< index in DatabasePlan::tables */
    DatabaseColumn::Type type = DatabaseColumn::Type::Integer;
    int decimals = 0;
    bool hasRanges = false; /*!< columns code_from and code_to in place of code */
    /*!
     * The label of its ranges, where they have one in common, such as "Age in years": it says what
     * the numbers count, which stand for themselves; empty: none.
     */
    QString quantityLabel;
    QVector<int> sets; /*!< in the dictionary, those that it stands for */
    std::vector<Entry> entries; /*!< disjoint, in order; blanks last */
    /*! By kind of missing values, for example ".a", of which no column holds a code. */
    QMap<QString, QString> missingLabels;
};

/*! An index of a table. */
struct DatabaseIndex {
    QString name;
    int table = 0;
    QStringList columns;
    bool skipsNull = false; /*!< rows without a value in the column are not wanted */
};

/*! What is done to a database that is there. */
enum class Addition {
    None, /*!< it is made anew */
    Cases, /*!< cases are added, replaced, or withdrawn where the sources hold them as deleted */
    Withdrawing, /*!< and withdrawn where they came from the same file and are gone from it */
};

/*! Form of the tables; only databases of the same form are added to. */
constexpr int DatabaseForm = 1;

/*! What a plan is to be like. */
struct PlanOptions {
    SqlDialect dialect = SqlDialect::Sqlite;
    bool hasRepeatTables = false; /*!< repeated items in tables of their own */
    bool hasCases = true; /*!< false: a table of rows, as from SPSS and Stata */
    Addition addition = Addition::None;
    bool hasWidths = false; /*!< no value is wider than its item, as in lines of columns */
    QVector<int> languages; /*!< of the labels, by index; empty: the first. The first one's column
                                 is "label" */
};

/*!
 * What a database will hold: tables, columns, indexes and views, with the names that the database
 * takes. Made from the dictionary alone, so that it can be shown before anything is done.
 */
class TESSEL_DATA_EXPORT DatabasePlan {
public:
    /*! The plan for data of \a dictionary. */
    explicit DatabasePlan(const DataDictionary& dictionary, const PlanOptions& options = {});

    /*! Index of the table called \a name; -1: none. */
    int table(const QString& name) const;
    /*! Indexes of the tables with the values of record \a record, parts and repeats among them. */
    QVector<int> tablesOf(int record) const;

    SqlDialect dialect = SqlDialect::Sqlite;
    bool hasCases = true;
    bool hasMissingKinds = false; /*!< there is a table of the kinds of missing values */
    Addition addition = Addition::None;
    QStringList labelColumns; /*!< "label", then one for each further language */
    std::vector<DatabaseTable> tables; /*!< in the order in which they are made */
    std::vector<DatabaseValueTable> valueTables;
    std::vector<DatabaseIndex> indexes; /*!< made when all rows are there */
    SqlNotes notes; /*!< one for each name that is not the dictionary's, and why */
};

/*!
 * \name Names of the tables that every database has, but for \c cases, which data with cases have,
 * and \c missing, which Stata's have.
 */
/*! @{ */
namespace SystemTable {
TESSEL_DATA_EXPORT extern const QString cases;
TESSEL_DATA_EXPORT extern const QString records;
TESSEL_DATA_EXPORT extern const QString variables;
TESSEL_DATA_EXPORT extern const QString values;
TESSEL_DATA_EXPORT extern const QString sources;
TESSEL_DATA_EXPORT extern const QString builds;
TESSEL_DATA_EXPORT extern const QString problems;
TESSEL_DATA_EXPORT extern const QString rejects;
TESSEL_DATA_EXPORT extern const QString missing;
TESSEL_DATA_EXPORT extern const QString deleted; /*!< of an addition only */
} // namespace SystemTable
/*! @} */

} // namespace tessel
