#pragma once

#include <tessel_data/DatabaseTarget.h>

#include <QByteArray>
#include <QString>

#include <string>
#include <string_view>
#include <vector>

namespace tessel {

// A value with its own text.
struct OwnValue {
    ValueState state;
    qint64 number = 0;
    std::string text;

    static OwnValue of(const DataBatch& batch, quint32 cell);
    // As a field of the variable reads it.
    static OwnValue read(const QByteArray& text, const DataVariable& variable);
};

/*
 * Fills one table value by value, row by row; many rows go to the target at once. flush() after the
 * last.
 */
class RowWriter {
public:
    // rows: by table, counts what the target took. Nothing happens where the plan has no such
    // table.
    RowWriter(DatabaseTarget& target, const DatabasePlan& plan, const QString& table,
        std::vector<qint64>& rows);

    void null();
    void number(qint64 number);
    void numberOrNull(qint64 number); // null: 0
    void real(double number);
    void text(std::string_view text);
    void text(const QByteArray& text);
    void text(const QString& text);
    void textOrNull(std::string_view text); // null: empty
    void textOrNull(const QByteArray& text);
    void textOrNull(const QString& text);
    void value(const OwnValue& value);
    void endRow(qint64 caseId = 0);
    void flush();

private:
    quint32 addCell();

    DatabaseTarget& m_target;
    const DatabasePlan& m_plan;
    int m_table;
    std::vector<qint64>& m_counts;
    DataBatch m_batch;
    std::vector<DatabaseRows::Row> m_rows;
    quint32 m_firstCell = 0;
};

} // namespace tessel
