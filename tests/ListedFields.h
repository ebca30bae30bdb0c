#pragma once

#include "RunTessel.h"

#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

// The fields with the value sets that later occurrences have of the first one.
inline QJsonArray withAllValueSets(const QJsonArray& fields)
{
    QHash<QString, QJsonValue> known; // by record and name
    QJsonArray all;
    for (const QJsonValue& value : fields) {
        QJsonObject field = value.toObject();
        const QString record = field.value("record").toString() + '.';
        if (field.contains("valueSetsOf")) {
            field.insert("valueSets", known.value(record + field.take("valueSetsOf").toString()));
        }
        known.insert(record + field.value("name").toString(), field.value("valueSets"));
        all.append(field);
    }
    return all;
}

// What "tessel fields" lists of a file, with its values; options may follow the file.
inline QJsonObject listedFile(const QStringList& arguments)
{
    const QStringList command { "fields", "--values", "--format", "json" };
    const QJsonObject root =
        QJsonDocument::fromJson(runTessel(command + arguments).output).object();
    QJsonObject file = root.value("files").toArray().at(0).toObject();
    file.insert("fields", withAllValueSets(file.value("fields").toArray()));
    return file;
}
