#pragma once

#include <tessel_data/StatColumn_p.h>

#include <QByteArrayList>

#include <functional>
#include <map>
#include <memory>
#include <readstat.h>
#include <tuple>
#include <vector>

namespace tessel {

/* Writes one SPSS or Stata file through libreadstat. Throws DataError. */
class StatFileWriter {
public:
    /* Into the open file descriptor, which is called path in messages. */
    StatFileWriter(const ConversionPlan& plan, const ConversionFile& file,
        const std::vector<StatColumn>& columns, int descriptor, const QString& path);

    /* How many bytes of long texts of Stata may wait in memory. */
    void setLongTextBound(qint64 bytes)
    {
        m_longTextBound = bytes;
    }
    /* Writes all of the spool's rows; false when goesOn says so. */
    bool write(RowSpool& spool, qint64 rows, const std::function<bool()>& goesOn);

    /* Row by row, where the columns are settled: the number of rows follows at the end. */
    /* @{ */
    void begin();
    void beginRow()
    {
        check(readstat_begin_row(m_writer.get()));
        m_column = m_written.data();
    }
    void addMissing(char tag = '\0')
    {
        writeMissing(*m_column++, tag);
    }
    void addWhole(qint64 number)
    {
        writeWhole(*m_column++, number);
    }
    void addReal(double number)
    {
        writeReal(*m_column++, number);
    }
    void addText(std::string_view text)
    {
        m_text = text;
        writeText(*m_column++, m_text.c_str());
    }
    void endRow()
    {
        check(readstat_end_row(m_writer.get()));
    }
    void finish(qint64 rows);
    /* @} */

private:
    struct Column {
        readstat_variable_t* variable = nullptr;
        const StatColumn* values = nullptr;
        ConversionColumn::Type type = ConversionColumn::Type::Double;
        double missingBase = 0; // of SPSS
    };

    void addColumns();
    void addColumn(std::size_t index);
    double freeBase(std::size_t index) const;
    void setMissing(std::size_t index);
    void setKinds(std::size_t index);
    readstat_label_set_t* labelSet(std::size_t index);
    bool addStringRefs(RowSpool& spool, qint64 rows, const std::function<bool()>& goesOn);
    void checkLongTexts() const;
    qint64 rowsBetweenAsking() const;
    void begin(qint64 rows);
    void writeValue(const Column& column, const RowSpool::Value& value);
    void writeMissing(const Column& column, char tag);
    void writeWhole(const Column& column, qint64 number)
    {
        using Type = ConversionColumn::Type;
        readstat_writer_t* const writer = m_writer.get();
        switch (column.type) {
        case Type::Byte:
            return check(
                readstat_insert_int8_value(writer, column.variable, std::int8_t(number)), column);
        case Type::Int:
            return check(
                readstat_insert_int16_value(writer, column.variable, std::int16_t(number)), column);
        case Type::Long:
            return check(
                readstat_insert_int32_value(writer, column.variable, std::int32_t(number)), column);
        default:
            return writeReal(column, column.values->numberOf(number));
        }
    }
    void writeReal(const Column& column, double number)
    {
        readstat_writer_t* const writer = m_writer.get();
        if (column.type == ConversionColumn::Type::Float)
            check(readstat_insert_float_value(writer, column.variable, float(number)), column);
        else
            check(readstat_insert_double_value(writer, column.variable, number), column);
    }
    void writeText(const Column& column, const char* text);
    void checkRows(qint64 rows) const;
    void end();
    void setRows(qint64 rows);
    void setStataRows(qint64 rows);
    void setSpssRows(qint64 rows);
    qint64 read64(qint64 place);
    void write64(qint64 place, qint64 number);
    void write(qint64 place, const char* bytes, std::size_t size);
    qint64 find(const QByteArray& mark, qint64 from = 0);
    void check(readstat_error_t error)
    {
        if (error != READSTAT_OK)
            fail(error, -1);
    }
    void check(readstat_error_t error, const Column& column)
    {
        if (error != READSTAT_OK)
            fail(error, int(&column - m_written.data()));
    }
    [[noreturn]] void fail(readstat_error_t error, int column);
    ssize_t take(const char* bytes, std::size_t size);
    bool flush();
    static ssize_t onData(const void* data, size_t size, void* context);

    struct WriterDeleter {
        void operator()(readstat_writer_t* writer) const
        {
            readstat_writer_free(writer);
        }
    };

    const ConversionPlan& m_plan;
    const ConversionFile& m_file;
    const std::vector<StatColumn>& m_columns;
    int m_descriptor;
    QString m_path;
    bool m_isStata;
    qint64 m_longTextBound = 0; // 0: any number
    std::unique_ptr<readstat_writer_t, WriterDeleter> m_writer;
    std::vector<Column> m_written;
    // By set of the plan, first code of missing kinds, those without a label, and length of texts.
    std::map<std::tuple<int, double, quint32, bool>, readstat_label_set_t*> m_labelSets;
    QByteArrayList m_missingTexts; // libreadstat keeps no copies
    int m_nextRef = 0;
    const Column* m_column = nullptr; // of the row that is written
    std::string m_text;
    std::string m_buffer;
    int m_error = 0; // of writing
};

} // namespace tessel
