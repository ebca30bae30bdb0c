#pragma once

#include "ErrorOf.h"

#include <model_Tessel/CSPro.h>
#include <model_Tessel/CSProDataImport.h>
#include <model_Tessel/CSProValueSet.h>
#include <model_Tessel/ErrorManager.h>

#include <QFile>
#include <QTemporaryDir>

#include <algorithm>

// Dictionaries in the JSON form, made of a few members.

using Kind = CSProProblem::Kind;

// JSON is easier to read here with its quotes written as apostrophes.
inline QByteArray json(const QString& text)
{
    return QString(text).replace(QLatin1Char('\''), QLatin1Char('"')).toUtf8();
}

// A dictionary read from a file.
class Loaded {
public:
    explicit Loaded(const QByteArray& bytes, CSProReading reading = CSProReading::AsWritten)
    {
        QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("census.dcf"));
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            qFatal("No dictionary could be written");
        file.close();
        load(path, reading);
    }

    Loaded(const QString& path, CSProReading reading)
    {
        load(path, reading);
    }

    TCSProItem& item(const QString& name) const
    {
        for (TCSProItem* item : qAsConst(*parser.items)) {
            if (item->name == name)
                return *item;
        }
        qFatal("No item %s", qPrintable(name));
    }

    const TCSProValueSet& valueSet(const QString& name) const
    {
        for (const TCSProItem* item : qAsConst(*parser.items)) {
            for (const TCSProValueSet* valueSet : qAsConst(*item->valueSets)) {
                if (valueSet->name == name)
                    return *valueSet;
            }
        }
        qFatal("No value set %s", qPrintable(name));
    }

    bool hasProblem(Kind kind) const
    {
        const QVector<CSProProblem>& problems = parser.problems();
        return std::any_of(problems.begin(), problems.end(),
            [kind](const CSProProblem& problem) { return problem.kind == kind; });
    }

    // The paths of members with another type.
    QStringList wrongTypes() const
    {
        QStringList paths;
        for (const CSProProblem& problem : parser.problems()) {
            if (problem.kind == Kind::WrongJsonType)
                paths.append(problem.text);
        }
        return paths;
    }

    // Name and column of every field.
    QStringList positions() const
    {
        QStringList texts;
        for (const TGenericField* field : qAsConst(*import.fields))
            texts.append(field->name + '@' + QString::number(field->start));
        return texts;
    }

    TCSPro parser;
    TCSProDataImport import;
    ErrorPointer error;

private:
    void load(const QString& path, CSProReading reading)
    {
        parser.setReading(reading);
        try {
            parser.loadFromFile(path);
        } catch (OxErrorManager* thrown) {
            error.reset(thrown);
            return;
        }
        import.dictionary = &parser;
        import.recordTypeLen = parser.recordTypeLen;
        import.copyDataFromDictionary();
    }
};

// A dictionary of one level with one record; members of the root may be added.
inline QByteArray dictionary(
    const QString& ids, const QString& items, const QString& more = QString())
{
    return json(
        "{ 'software': 'CSPro', 'version': 8.0, 'fileType': 'dictionary', 'name': 'D', "
        "'labels': [ { 'text': 'Survey' } ], 'recordType': { 'start': 1, 'length': 1 }, "
        "'defaults': { 'decimalMark': false, 'zeroFill': false }, 'relativePositions': true, "
        + more
        + " 'levels': [ { 'name': 'L', 'labels': [ { 'text': 'Level' } ], 'ids': { 'items': [ "
        + ids
        + " ] }, 'records': [ { 'name': 'R', 'labels': [ { 'text': 'Record' } ], "
          "'recordType': '1', 'occurrences': { 'required': true, 'maximum': 1 }, 'items': [ "
        + items + " ] } ] } ] }");
}

inline QString numeric(const QString& name, int length, const QString& more = QString())
{
    return "{ 'name': '" + name + "', 'labels': [ { 'text': 'Item " + name
        + "' } ], 'contentType': 'numeric', 'zeroFill': false, 'length': " + QString::number(length)
        + more + " }";
}

inline const char identification[] = "{ 'name': 'ID', 'labels': [ { 'text': 'Number' } ], "
                                     "'contentType': 'numeric', 'start': 2, 'length': 4, "
                                     "'zeroFill': true }";

// One item A of five columns with one value set V of the values.
inline QByteArray values(
    const QString& values, const QString& contentType = QStringLiteral("numeric"))
{
    return dictionary(QLatin1String(identification),
        "{ 'name': 'A', 'labels': [ { 'text': 'Item' } ], 'contentType': '" + contentType
            + "', 'length': 5, 'valueSets': [ { 'name': 'V', 'labels': [ { 'text': 'Set' } ], "
              "'values': [ "
            + values + " ] } ] }");
}
