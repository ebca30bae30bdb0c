#pragma once

#include <tessel_data/CSProDbCells_p.h>
#include <tessel_data/CSProDbKey_p.h>
#include <tessel_data/CSProDbLayout_p.h>
#include <tessel_data/CSProDbRun_p.h>

#include <memory>
#include <string>
#include <vector>

namespace tessel {

/*
 * Schema 3: a case is a row of level 1, with the rows of its records and of the levels below. Each
 * row of these tables is read, or rejected and told, or belongs to a deleted case.
 */
class CSProDbTables : public CSProDbCases {
public:
    CSProDbTables(CSProDbRun& run, const DataDictionary& ofFile);

    void begin() override;
    void readCase(const SqliteQuery& caseRow, std::string_view key) override;
    void passDeleted(const SqliteQuery& caseRow) override;
    void end() override;

private:
    // A table, with the statements for the rows that belong to a row above.
    struct Table {
        QString name;
        int record = -1; // in the dictionary; -1: of a level, or the dictionary has none for it
        std::unique_ptr<SqliteQuery> values; // its id and what the dictionary has; may be null
        std::unique_ptr<SqliteQuery> whole; // its id and all columns
        qint64 seen = 0; // rows that were met so far
    };
    struct Level {
        Table table;
        QVector<int> ids; // variables
        std::vector<Table> records;
    };
    // An identification item of the current row of a level.
    struct IdValue {
        ValueState state;
        qint64 number = 0;
        std::string text;
    };
    // What becomes of rows that are not read: those of deleted cases, and those of no case.
    enum class Passing { Count, Reject };

    void addLevel(int level);
    void addRecord(int record);
    void addLeftOut(const DataRecord& record);
    Table tableFor(const QString& name, const QString& link) const;
    void prepareValues(Table& table, const QString& link, const QVector<int>& variables) const;
    void need(const QString& table, const QString& column, bool isThere) const;
    void needUnique(const QString& table, const QString& column) const;
    void needNumber(const SqliteQuery& row, const Table& table) const;
    void needAllSeen(const Table& table) const;

    void tellLeftOutItems();
    // False when there are none.
    bool readLevel(std::size_t level);
    void readRow(std::size_t level);
    void readIds(std::size_t level);
    void compareKey(const DataBatch& ids);
    void tellOfRow(std::size_t level, bool hasOthers);
    void readRecords(Table& table, int level);
    void addRow(const Table& table);
    quint32 addIds(DataBatch& batch, quint32 cell, int level) const;
    void rejectLeftOut(const Table& table, int level);
    std::string idText(int level);

    void pass(Table& table, const SqliteQuery& row, Passing passing);
    void passRow(std::size_t level, const SqliteQuery& row, Passing passing);
    void passLevel(std::size_t level, Passing passing);
    void passOrphans(std::size_t level);
    SqliteQuery orphansOf(const Table& table, const QString& link, const QString& parent,
        const QString& parentId) const;

    CSProDbRun& m_run;
    const DataDictionary& m_dictionary;
    CSProDbLeftOut m_leftOut;
    QHash<QString, QSet<QString>> m_ownColumns; // that the dictionary in the file asks for
    CSProDbKey m_comparison;
    CSProDbCells m_cells;
    std::vector<Level> m_levels;
    std::vector<std::vector<IdValue>> m_idValues; // of the current row of each level
    std::string m_key;
    qint64 m_met = 0; // rows of all tables that belong to a case
};

} // namespace tessel
