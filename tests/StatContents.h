#pragma once

#include "StatFiles.h"

#include <QFile>
#include <QMap>
#include <QStringList>
#include <QVector>

#include <readstat.h>

// What an SPSS or Stata file holds, by callbacks of libreadstat alone.
struct StatContents {
    struct Variable {
        QString name;
        QString label;
        QString format;
        QString set; // its value labels
        QStringList missing; // codes, "low:high" for ranges
        readstat_type_t type = READSTAT_TYPE_DOUBLE;
        readstat_measure_t measure = READSTAT_MEASURE_UNKNOWN;
    };

    int error = 0;
    QString label;
    QStringList notes;
    QVector<Variable> variables;
    QMap<QString, QMap<QString, QString>> labels; // by set and code
    QVector<QStringList> rows; // null: missing; ".a" for its kinds

    int column(const QString& name) const
    {
        for (int i = 0; i < variables.size(); ++i) {
            if (variables.at(i).name == name)
                return i;
        }
        return -1;
    }
    QMap<QString, QString> labelsOf(const QString& name) const
    {
        return labels.value(variables.value(column(name)).set);
    }

    static StatContents read(const QString& path)
    {
        StatContents contents;
        readstat_parser_t* parser = readstat_parser_init();
        readstat_set_metadata_handler(parser, onMetadata);
        readstat_set_note_handler(parser, onNote);
        readstat_set_variable_handler(parser, onVariable);
        readstat_set_value_handler(parser, onValue);
        readstat_set_value_label_handler(parser, onLabel);
        const auto parse =
            kindOf(path) == TStatFileKind::Stata ? readstat_parse_dta : readstat_parse_sav;
        contents.error = parse(parser, QFile::encodeName(path).constData(), &contents);
        readstat_parser_free(parser);
        return contents;
    }

    // A number in the form that tells doubles apart.
    static QString numberText(double number)
    {
        return QString::number(number, 'g', 17);
    }

private:
    static StatContents& of(void* context)
    {
        return *static_cast<StatContents*>(context);
    }
    static bool isText(readstat_type_t type)
    {
        return type == READSTAT_TYPE_STRING || type == READSTAT_TYPE_STRING_REF;
    }
    static QString textOf(const readstat_value_t& value)
    {
        if (isText(readstat_value_type(value))) {
            QString text = QString::fromUtf8(readstat_string_value(value));
            while (text.endsWith(' '))
                text.chop(1);
            return text.isEmpty() ? QString() : text;
        }
        if (readstat_value_is_tagged_missing(value))
            return QString(".") + readstat_value_tag(value);
        return readstat_value_is_system_missing(value) ? QString()
                                                       : numberText(readstat_double_value(value));
    }
    static int onMetadata(readstat_metadata_t* metadata, void* context)
    {
        of(context).label = readstat_get_file_label(metadata);
        return READSTAT_HANDLER_OK;
    }
    static int onNote(int, const char* note, void* context)
    {
        of(context).notes.append(note);
        return READSTAT_HANDLER_OK;
    }
    static int onVariable(int, readstat_variable_t* source, const char* set, void* context)
    {
        Variable variable;
        variable.name = readstat_variable_get_name(source);
        variable.label = readstat_variable_get_label(source);
        variable.format = readstat_variable_get_format(source);
        variable.set = set;
        variable.type = readstat_variable_get_type(source);
        variable.measure = readstat_variable_get_measure(source);
        for (int i = 0; i < readstat_variable_get_missing_ranges_count(source); ++i) {
            const QString low = textOf(readstat_variable_get_missing_range_lo(source, i));
            const QString high = textOf(readstat_variable_get_missing_range_hi(source, i));
            variable.missing.append(low == high ? low : low + ':' + high);
        }
        of(context).variables.append(variable);
        return READSTAT_HANDLER_OK;
    }
    static int onValue(int row, readstat_variable_t*, readstat_value_t value, void* context)
    {
        QVector<QStringList>& rows = of(context).rows;
        if (rows.size() <= row)
            rows.append(QStringList());
        rows.last().append(textOf(value));
        return READSTAT_HANDLER_OK;
    }
    static int onLabel(const char* set, readstat_value_t value, const char* label, void* context)
    {
        of(context).labels[set].insert(textOf(value), QString::fromUtf8(label));
        return READSTAT_HANDLER_OK;
    }
};
