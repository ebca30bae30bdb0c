#pragma once

#include "ListedFields.h"

#include <QJsonObject>
#include <QString>
#include <QStringList>
#include <QXmlStreamReader>
#include <QtTest>

inline Outcome exportTo(const QString& target, const QString& file, const QStringList& more = {})
{
    return runTessel(QStringList { "export", file, "--to", target } + more);
}

// The fields as "tessel fields" lists them.
inline QJsonObject listed(const QString& file)
{
    return listedFile({ file });
}

inline void addExportedFiles()
{
    QTest::addColumn<QString>("file");
    const QDir examples(QStringLiteral(TESSEL_EXAMPLES));
    for (const char* name : { "census.dcf", "household.sav", "person.sav", "person.dta" })
        QTest::newRow(name) << examples.filePath(QString::fromLatin1(name));
    for (const char* name : { "basic.dcf", "decimals.dcf", "export_names.dcf", "no_items.dcf",
             "problems.dcf", "json_household.dcf", "written_household.dcf" })
        QTest::newRow(name) << QString::fromLatin1(name);
}

// The attribute of each element of one name.
inline QStringList attributesOf(
    const QByteArray& xml, const QString& element, const QString& attribute)
{
    QStringList values;
    QXmlStreamReader reader(xml);
    while (!reader.atEnd()) {
        if (reader.readNext() == QXmlStreamReader::StartElement && reader.name() == element
            && reader.attributes().hasAttribute(attribute))
            values.append(reader.attributes().value(attribute).toString());
    }
    return reader.hasError() ? QStringList { reader.errorString() } : values;
}

inline QString textOf(const QByteArray& xml)
{
    QString text;
    QXmlStreamReader reader(xml);
    while (!reader.atEnd()) {
        if (reader.readNext() == QXmlStreamReader::Characters)
            text += reader.text();
    }
    return reader.hasError() ? QString() : text;
}

// The start of a dictionary: an identification item and no record.
inline QByteArray dictionaryStart(int recordTypeLength = 1)
{
    return "[Dictionary]\nVersion=CSPro "
           "7.7\nLabel=Made\nName=MADE\nRecordTypeStart=1\nRecordTypeLen="
        + QByteArray::number(recordTypeLength)
        + "\nPositions=Absolute\nZeroFill=No\nDecimalChar=No\n\n[Level]\nLabel=Level\nName="
          "LEVEL\n\n"
          "[IdItems]\n\n[Item]\nLabel=Id\nName=ID\nStart=7\nLen=4\n\n";
}

inline QByteArray record(const QByteArray& name, const QByteArray& type = "1", int length = 100000)
{
    return "[Record]\nLabel=" + name + "\nName=" + name + "\nRecordTypeValue='" + type
        + "'\nRecordLen=" + QByteArray::number(length) + "\n\n";
}

inline QByteArray item(const QByteArray& name, int start, int length, const QByteArray& more = {})
{
    return "[Item]\nLabel=" + name + "\nName=" + name + "\nStart=" + QByteArray::number(start)
        + "\nLen=" + QByteArray::number(length) + '\n' + more + '\n';
}
