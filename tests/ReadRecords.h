#pragma once

#include "RunTessel.h"

#include <QHash>
#include <QMap>
#include <QStandardPaths>
#include <QVector>

// What a program for statistics read of the text data of a dictionary.
struct ReadColumn {
    QString name;
    QString label;
    QMap<QString, QString> labels; // by value
    QStringList missing; // values, and "low:high"
};

struct ReadRecord {
    QVector<ReadColumn> columns;
    QVector<QStringList> rows; // numbers in 17 digits

    const ReadColumn* column(const QString& name) const
    {
        for (const ReadColumn& column : columns) {
            if (column.name == name)
                return &column;
        }
        return nullptr;
    }
};

using ReadRecords = QHash<QString, ReadRecord>;

inline QString unescaped(const QString& text)
{
    QString result;
    for (int i = 0; i < text.size(); ++i) {
        const bool isMark = text.at(i) == '\\' && i + 1 < text.size();
        if (isMark)
            ++i;
        result += isMark && text.at(i) == 'n' ? QChar('\n') : text.at(i);
    }
    return result;
}

// The lines that data/dump_records.R writes.
inline ReadRecords parsedRecords(const QByteArray& lines)
{
    ReadRecords records;
    ReadRecord* record = nullptr;
    for (const QString& line : QString::fromUtf8(lines).split('\n', Qt::SkipEmptyParts)) {
        QStringList fields = line.split(QChar(0x1F));
        const QString kind = fields.takeFirst();
        for (QString& field : fields)
            field = unescaped(field);
        if (kind == "record")
            record = &records[fields.at(0)];
        else if (kind == "column")
            record->columns.append({ fields.at(0), fields.at(1), {}, {} });
        else if (kind == "label")
            record->columns.last().labels.insert(fields.at(0), fields.at(1));
        else if (kind == "missing" || kind == "range")
            record->columns.last().missing.append(fields.join(':'));
        else if (kind == "row")
            record->rows.append(fields);
    }
    return records;
}

// Runs a program in a folder of its own, with texts in UTF-8.
inline Outcome runIn(const QString& folder, const QString& program, const QStringList& arguments)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("LC_ALL", "C.UTF-8");
    process.setProcessEnvironment(environment);
    process.setWorkingDirectory(folder);
    process.start(program, arguments);
    if (!process.waitForFinished(240'000) || process.exitStatus() != QProcess::NormalExit)
        return {};
    return { process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError() };
}

inline const QString& rscript()
{
    static const QString path = QStandardPaths::findExecutable(QStringLiteral("Rscript"));
    return path;
}

// False where R or one of its packages is not installed.
inline bool hasR()
{
    static const bool has = !rscript().isEmpty()
        && runIn(QStringLiteral("/"), rscript(),
               { "-e", "stopifnot(requireNamespace('readr'), requireNamespace('haven'))" })
                .status
            == 0;
    return has;
}

// What the R script "p.R" in a folder reads of the data beside it.
inline Outcome runRScript(const QString& folder, const QString& data)
{
    return runIn(folder, rscript(), { TESSEL_TEST_DATA "/dump_records.R", "script", "p.R", data });
}
