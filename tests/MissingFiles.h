#pragma once

#include "StatFiles.h"

#include <QVector>

// Variables with labels, single missing codes and ranges of them, one of which is all numbers.
inline bool writeSpss(const QString& path)
{
    StatFileWriter writer;
    readstat_label_set_t* labels = writer.addLabels("labels0", READSTAT_TYPE_DOUBLE);
    readstat_label_double_value(labels, 1, "Yes");
    readstat_label_double_value(labels, 2, "No");
    readstat_label_double_value(labels, 99, "Refused");
    readstat_variable_t* coded = writer.add("CODED", READSTAT_TYPE_DOUBLE, "F8.1", labels);
    readstat_variable_add_missing_double_value(coded, 99);
    readstat_variable_add_missing_double_value(coded, 0.1);
    readstat_variable_t* low = writer.add("LOW", READSTAT_TYPE_DOUBLE, "F8.0");
    readstat_variable_add_missing_double_range(low, -HUGE_VAL, -1);
    readstat_variable_add_missing_double_value(low, 7);
    readstat_variable_t* high = writer.add("HIGH", READSTAT_TYPE_DOUBLE, "F8.0");
    readstat_variable_add_missing_double_range(high, 90, HUGE_VAL);
    readstat_variable_t* middle = writer.add("MIDDLE", READSTAT_TYPE_DOUBLE, "F8.0");
    readstat_variable_add_missing_double_range(middle, 5, 6.5);
    readstat_variable_t* whole = writer.add("WHOLE", READSTAT_TYPE_DOUBLE, "F8.0", labels);
    readstat_variable_add_missing_double_range(whole, -HUGE_VAL, HUGE_VAL);
    readstat_variable_t* text = writer.add("TEXT", READSTAT_TYPE_STRING, "A2", nullptr, 2);
    readstat_variable_add_missing_string_value(text, "x'");
    const QVector<QVector<double>> rows { { 1, -2, 89, 5, 2 }, { 99, -1, 90, 6.5, 0 },
        { 0.1, 7, 1e300, 4.9, -9 }, { 3, 0, 0, 7, 1 } };
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly)
        || readstat_begin_writing_sav(writer.get(), &file, rows.size()) != READSTAT_OK)
        return false;
    for (const QVector<double>& row : rows) {
        readstat_begin_row(writer.get());
        for (int c = 0; c < row.size(); ++c)
            readstat_insert_double_value(
                writer.get(), readstat_get_variable(writer.get(), c), row.at(c));
        readstat_insert_string_value(writer.get(), text, row.first() == 1 ? "x'" : "y");
        readstat_end_row(writer.get());
    }
    return readstat_end_writing(writer.get()) == READSTAT_OK;
}

// A column whose labels are those of some kinds and values, one without labels.
inline bool writeStata(const QString& path)
{
    StatFileWriter writer;
    readstat_label_set_t* labels = writer.addLabels("answers", READSTAT_TYPE_INT32);
    readstat_label_int32_value(labels, 1, "Yes");
    readstat_label_tagged_value(labels, 'a', "Won't say");
    writer.add("coded", READSTAT_TYPE_INT32, "%8.0g", labels);
    writer.add("plain", READSTAT_TYPE_DOUBLE, "%9.0g");
    QFile file(path);
    constexpr int rows = 5;
    if (!file.open(QIODevice::WriteOnly)
        || readstat_begin_writing_dta(writer.get(), &file, rows) != READSTAT_OK)
        return false;
    const char kinds[] = { 'a', 'z', '.', '1', '2' };
    for (const char kind : kinds) {
        readstat_begin_row(writer.get());
        for (int c = 0; c < 2; ++c) {
            const readstat_variable_t* variable = readstat_get_variable(writer.get(), c);
            if (kind == '.')
                readstat_insert_missing_value(writer.get(), variable);
            else if (kind >= 'a')
                readstat_insert_tagged_missing_value(writer.get(), variable, kind);
            else if (c == 0)
                readstat_insert_int32_value(writer.get(), variable, kind - '0');
            else
                readstat_insert_double_value(writer.get(), variable, kind - '0' + 0.5);
        }
        readstat_end_row(writer.get());
    }
    return readstat_end_writing(writer.get()) == READSTAT_OK;
}
