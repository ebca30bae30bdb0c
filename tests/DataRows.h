#pragma once

#include <tessel_data/CSProTextSource.h>
#include <tessel_data/Checker.h>

#include <QFile>
#include <QStringList>
#include <QTemporaryDir>
#include <QtTest>

// A value as a text: numbers with their point, texts in quotes, specials by their first letter.
inline QString shownValue(
    const tessel::DataBatch& batch, quint32 cell, const tessel::DataVariable& variable)
{
    using tessel::ValueKind;
    const tessel::ValueState state = batch.states[cell];
    const QString mark = QStringLiteral(" MNRD").mid(int(state.special()), 1).trimmed()
        + (state.isOutOfRange()     ? QStringLiteral("<>")
                : state.isOutside() ? QStringLiteral("?")
                                    : QString());
    const auto text = [&] {
        const std::string_view bytes = batch.textOf(cell);
        return QString::fromUtf8(bytes.data(), int(bytes.size()));
    };
    switch (state.kind()) {
    case ValueKind::Blank:
        return mark + QLatin1Char('-');
    case ValueKind::Number:
        return mark + tessel::numberText(batch.numbers[cell], variable.decimals);
    case ValueKind::Real:
        return mark + QString::number(batch.realOf(cell), 'g', 15);
    case ValueKind::Text:
        return mark + QLatin1Char('"') + text() + QLatin1Char('"');
    case ValueKind::NotANumber:
        return QLatin1String("!") + text();
    case ValueKind::Unfit:
        break;
    }
    return QLatin1String("~") + text();
}

// Every record as one text: case, line, record, values.
class RowCollector : public tessel::DataConsumer {
public:
    explicit RowCollector(const tessel::DataDictionary& dictionary)
        : m_dictionary(dictionary)
    {
    }

    void take(const tessel::DataBatch& batch) override
    {
        ++batches;
        for (const auto& begun : batch.cases) {
            const std::string_view key = batch.text(begun.key);
            keys.append(QString::fromUtf8(key.data(), int(key.size())));
        }
        for (const auto& told : batch.told)
            this->told.append(QStringLiteral("%1:%2").arg(told.line).arg(int(told.problem)));
        for (const auto& record : batch.records) {
            const auto& type = m_dictionary.records[std::size_t(record.record)];
            QStringList values;
            for (int c = 0; c < type.columns.size(); ++c)
                values.append(shownValue(
                    batch, record.firstCell + quint32(c), m_dictionary.variable(record.record, c)));
            rows.append(QStringLiteral("%1 %2 %3: %4")
                            .arg(record.caseNumber)
                            .arg(record.line)
                            .arg(type.name, values.join(QLatin1Char(' '))));
        }
    }
    void finish(const tessel::DataSource&) override
    {
        isFinished = true;
    }

    QStringList rows;
    QStringList keys;
    QStringList told; // line:problem
    int batches = 0;
    bool isFinished = false;

private:
    const tessel::DataDictionary& m_dictionary;
};

inline QString writeFile(const QTemporaryDir& folder, const QString& name, const QByteArray& bytes)
{
    QFile file(folder.filePath(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write %s", qPrintable(file.fileName()));
    return file.fileName();
}

// A household survey of two records; AGE has a missing and a blank code, WEIGHT two decimals.
inline QByteArray surveyDictionary()
{
    return "[Dictionary]\nVersion=CSPro 7.7\nLabel=Survey\nName=SURVEY_DICT\nRecordTypeStart=1\n"
           "RecordTypeLen=1\nPositions=Relative\nZeroFill=No\nDecimalChar=No\n\n"
           "[Level]\nLabel=Q\nName=Q\n\n[IdItems]\n\n"
           "[Item]\nLabel=Place\nName=PLACE\nStart=2\nLen=2\nDataType=Numeric\n\n"
           "[Item]\nLabel=Number\nName=NUMBER\nStart=4\nLen=2\nDataType=Numeric\n\n"
           "[Record]\nLabel=House\nName=HOUSE\nRecordTypeValue='1'\nRecordLen=14\n\n"
           "[Item]\nLabel=Rooms\nName=ROOMS\nStart=6\nLen=2\nDataType=Numeric\n\n"
           "[ValueSet]\nLabel=R\nName=ROOMS_VS1\nValue=1:5;Few\nValue=7 9;Odd\n\n"
           "[ValueSet]\nLabel=R\nName=ROOMS_VS2\nValue=0:20;All\n\n"
           "[Item]\nLabel=Weight\nName=WEIGHT\nStart=8\nLen=5\nDataType=Numeric\nDecimal=2\n\n"
           "[Item]\nLabel=Kind\nName=KIND\nStart=13\nLen=2\nDataType=Alpha\n\n"
           "[ValueSet]\nLabel=K\nName=KIND_VS1\nValue='A ';A\nValue='BB';B\n\n"
           "[Record]\nLabel=Person\nName=PERSON\nRecordTypeValue='2'\nRequired=No\nMaxRecords=3\n"
           "RecordLen=14\n\n"
           "[Item]\nLabel=Age\nName=AGE\nStart=6\nLen=3\nDataType=Numeric\n\n"
           "[ValueSet]\nLabel=A\nName=AGE_VS1\nValue=0:120\nValue=999;None\nName=MISSING,Special\n"
           "Value='   ';NA\nName=NOTAPPL,Special\n\n"
           "[Item]\nLabel=Name\nName=NAME\nStart=9\nLen=6\nDataType=Alpha\n\n"
           "[Item]\nLabel=First\nName=FIRST\nStart=9\nLen=2\nItemType=SubItem\nDataType=Alpha\n";
}
