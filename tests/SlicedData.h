#pragma once

#include "RunTessel.h"

#include <model_Tessel/CSPro.h>
#include <model_Tessel/CSProValueSet.h>

#include <QHash>
#include <QTextCodec>

inline QString decoded(const QByteArray& bytes)
{
    QTextCodec::ConverterState state;
    const QString text =
        QTextCodec::codecForName("UTF-8")->toUnicode(bytes.constData(), bytes.size(), &state);
    return state.invalidChars == 0 ? text
                                   : QTextCodec::codecForName("windows-1252")->toUnicode(bytes);
}

// What the tables of the records are to hold.
class Slice {
public:
    Slice(const QString& dictionary, const QString& data)
    {
        m_reader.setReading(CSProReading::AsWritten);
        m_reader.loadFromFile(dictionary);
        for (QByteArray line : readFile(data).split('\n')) {
            if (line.endsWith('\r'))
                line.chop(1);
            if (isFirst && line.startsWith("\xEF\xBB\xBF"))
                line.remove(0, 3);
            isFirst = false;
            add(decoded(line));
        }
    }

    QStringList recordNames() const
    {
        QStringList names;
        for (const TCSProRecord* record : qAsConst(*m_reader.records))
            names.append(record->name);
        return names;
    }
    QVector<QStringList> rowsOf(const QString& record) const
    {
        return m_rows.value(record);
    }
    // The same with labels in place of codes.
    QVector<QStringList> labelRowsOf(const QString& record) const
    {
        return m_labelRows.value(record);
    }
    // The items behind the columns of those rows, after case and number.
    QVector<const TCSProItem*> itemsOf(const QString& record) const
    {
        QVector<const TCSProItem*> ids;
        QVector<const TCSProItem*> own;
        for (const TCSProItem* item : qAsConst(*m_reader.items)) {
            const bool isOwn = item->record && item->record->name == record;
            const bool isId = !m_reader.records->contains(item->record);
            if (isOwn)
                own.append(item);
            else if (isId && item->detail().level <= std::max(1, levelOf(record)))
                ids.append(item);
        }
        return ids + own;
    }
    int rejected = 0;

    // Label of a value, or the value where its first set has none.
    static QString labelOf(const TCSProItem& item, const QString& cell)
    {
        if (!item.getHasValueSet())
            return cell;
        const TCSProValueSet& set = *item.getValueSet(0);
        for (const TValueSetItem* entry : qAsConst(*set.items)) {
            if (isCode(item, set, *entry, cell)) {
                const QString label = entry->label.section('|', 0, 0);
                const bool isItsOwnLabel = label.isEmpty() || label == quantityOf(set);
                return isItsOwnLabel && !cell.isNull() ? cell : label;
            }
        }
        return cell;
    }

private:
    void add(const QString& line)
    {
        if (line.trimmed().isEmpty() || line.startsWith('~'))
            return;
        const TCSProRecord* record = recordOf(line);
        if (!record) {
            ++rejected;
            return;
        }
        QStringList ids;
        QStringList own;
        QStringList labels;
        QStringList idLabels;
        QString key;
        for (const TCSProItem* item : qAsConst(*m_reader.items)) {
            const int level = item->detail().level;
            if (item->record == record)
                own.append(cellOf(line, *item));
            if (item->record == record)
                labels.append(labelOf(*item, own.constLast()));
            if (m_reader.records->contains(item->record) || level > std::max(1, record->level))
                continue;
            ids.append(cellOf(line, *item));
            idLabels.append(labelOf(*item, ids.constLast()));
            if (level <= 1)
                key += ids.constLast() + '|';
        }
        if (key != m_key || m_case == 0) {
            ++m_case;
            m_counts.clear();
        }
        m_key = key;
        const int row = ++m_counts[record->name];
        const QStringList place { QString::number(m_case), QString::number(row) };
        m_rows[record->name].append(place + ids + own);
        m_labelRows[record->name].append(place + idLabels + labels);
    }
    int levelOf(const QString& name) const
    {
        for (const TCSProRecord* record : qAsConst(*m_reader.records)) {
            if (record->name == name)
                return record->level;
        }
        return 1;
    }
    const TCSProRecord* recordOf(const QString& line) const
    {
        const QString type =
            line.mid(m_reader.recordTypeStart - 1, m_reader.recordTypeLen).trimmed();
        for (const TCSProRecord* record : qAsConst(*m_reader.records)) {
            if (m_reader.recordTypeLen == 0 || record->recordTypeValue.trimmed() == type)
                return record;
        }
        return nullptr;
    }

    static bool isCode(const TCSProItem& item, const TCSProValueSet& set,
        const TValueSetItem& entry, const QString& cell)
    {
        QString code = entry.code;
        while (code.endsWith(' '))
            code.chop(1);
        if (code.trimmed().isEmpty() || cell.isNull())
            return code.trimmed().isEmpty() && cell.isNull();
        if (item.isAlpha)
            return code == cell;
        const QString high = set.detail(&entry).highCode;
        const double number = cell.toDouble();
        return high.isNull() ? code.toDouble() == number
                             : code.toDouble() <= number && number <= high.toDouble();
    }
    // Ranges of one label, such as "Age", hold numbers that need none.
    static QString quantityOf(const TCSProValueSet& set)
    {
        QStringList labels;
        for (const TValueSetItem* entry : qAsConst(*set.items)) {
            if (!set.detail(entry).highCode.isNull() && !entry->special)
                labels.append(entry->label.section('|', 0, 0));
        }
        labels.removeDuplicates();
        return labels.size() == 1 ? labels.first() : QString();
    }
    static QString cellOf(const QString& line, const TCSProItem& item)
    {
        QString text = line.mid(item.start - 1, item.len);
        while (text.endsWith(' '))
            text.chop(1);
        if (text.isEmpty())
            return QString();
        if (item.isAlpha)
            return text.replace(QChar(0x2424), QChar('\n'));
        bool isNumber = false;
        text = text.trimmed();
        if (item.decimal == 0) {
            const qlonglong number = text.toLongLong(&isNumber);
            return isNumber ? QString::number(number) : QString();
        }
        if (!text.contains('.')) {
            const bool isNegative = text.startsWith('-');
            text = text.mid(isNegative ? 1 : 0).rightJustified(item.decimal + 1, '0');
            text.insert(text.size() - item.decimal, '.');
            text.prepend(isNegative ? "-" : "");
        }
        const double number = text.toDouble(&isNumber);
        return isNumber ? QString::number(number, 'g', 17) : QString();
    }

    TCSPro m_reader;
    QHash<QString, QVector<QStringList>> m_rows;
    QHash<QString, QVector<QStringList>> m_labelRows;
    QHash<QString, int> m_counts;
    QString m_key;
    int m_case = 0;
    bool isFirst = true;
};

// Numbers that have no label are texts of 15 digits in a view with labels.
inline bool areSameLabels(const QStringList& found, const QStringList& expected)
{
    for (int i = 0; i < expected.size(); ++i) {
        bool isNumber = false;
        const double number = expected.at(i).toDouble(&isNumber);
        const bool isSame = found.value(i) == expected.at(i)
            || (isNumber
                && QString::number(number, 'g', 15)
                    == QString::number(found.value(i).toDouble(), 'g', 15));
        if (!isSame || found.value(i).isNull() != expected.at(i).isNull())
            return false;
    }
    return found.size() == expected.size();
}
