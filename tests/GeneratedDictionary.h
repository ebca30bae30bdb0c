#pragma once

#include <QRandomGenerator>
#include <QStringList>

#include <algorithm>

// Writes dictionaries that are right in the main and odd in the details.
class DictionaryWriter {
public:
    explicit DictionaryWriter(quint32 seed)
        : m_random(seed)
    {
    }

    QStringList lines()
    {
        m_lines.clear();
        const int sections = below(14) + 1;
        for (int i = 0; i < sections; ++i)
            writeSection();
        return m_lines;
    }

    int below(int limit)
    {
        return m_random.bounded(limit);
    }

    QString oneOf(const QStringList& list)
    {
        return list.at(below(list.size()));
    }

private:
    bool chance(int percent)
    {
        return below(100) < percent;
    }

    void writeSection()
    {
        static const QStringList headers { "[Dictionary]", "[Record]", "[Item]", "[Item]", "[Item]",
            "[ValueSet]", "[ValueSet]", "[ValueSet]", "[IdItems]" };
        static const QStringList oddHeaders { "[Level]", "[Relation]", "[ITEM]", "[item", "[Item]x",
            "  [Item]", "\t[Record]", " [ValueSet] ", "[", "[]", "[record]", "[VALUESET", "[Items]",
            "x[Item]", "", "; comment" };
        const QString header = oneOf(chance(80) ? headers : oddHeaders);
        m_lines.append(header);
        const QString body = chance(90) ? header : oneOf(headers);
        if (body.contains(QLatin1String("Dict")))
            writeKeys({ "Version", "Label", "Name", "RecordTypeStart", "RecordTypeLen", "Positions",
                "ZeroFill", "DecimalChar", "Note" });
        else if (body.contains(QLatin1String("ecord")))
            writeKeys(
                { "Label", "Name", "RecordTypeValue", "Required", "MaxRecords", "RecordLen" });
        else if (body.contains(QLatin1String("tem"), Qt::CaseInsensitive))
            writeKeys({ "Label", "Name", "Start", "Len", "DataType", "ItemType", "Occurrences",
                "Decimal", "DecimalChar", "ZeroFill", "RecordTypeStart" });
        else
            writeValues();
    }

    void writeKeys(QStringList keys)
    {
        if (chance(30))
            std::shuffle(keys.begin(), keys.end(), m_random);
        for (const QString& key : qAsConst(keys)) {
            if (chance(85))
                writeKey(key);
        }
    }

    void writeKey(const QString& key)
    {
        static const QStringList numbers { "1", "2", "3", "4", "007", "-1", "0", " 3", "+2" };
        static const QStringList words { "", "x", "a=b", "Yes", "YES", "no", "Alpha", "ALPHA",
            "Numeric", "SubItem", "'1'", "'H'", "'", "'AB'", "Label", "Name of it", "Start", "Len",
            "Decimal", "0x1", "1.5", "9999999999", "\u00dcberschrift", "Occurrences" };
        static const QStringList signs { "=", "=", "=", "=", "=", "=", " = ", "==", "", "= " };
        static const QStringList flags { "Yes", "yes", "YES", "No", " Yes" };
        QString value = oneOf(chance(50) ? numbers : words);
        if (key == QLatin1String("DataType") && chance(80))
            value = oneOf({ "Alpha", "ALPHA", "Numeric", "alpha" });
        else if ((key == QLatin1String("DecimalChar") || key == QLatin1String("ZeroFill"))
            && chance(70))
            value = oneOf(flags);
        else if (key == QLatin1String("RecordTypeValue") && chance(80))
            value = oneOf({ "'1'", "'2'", "'H'", "''", "12" });
        const QString indent = chance(10) ? QStringLiteral("  ") : QString();
        m_lines.append(indent + key + oneOf(signs) + value + (chance(10) ? " " : ""));
        if (chance(5))
            m_lines.append(chance(50) ? QString() : QStringLiteral("  "));
    }

    void writeValues()
    {
        writeKeys({ "Label", "Name" });
        const Codes codes = chance(50) ? Integers : chance(50) ? Numbers : AnyCodes;
        const int count = below(4);
        for (int i = 0; i < count; ++i) {
            writeValue(codes);
            if (chance(25))
                writeName();
        }
    }

    enum Codes { Integers, Numbers, AnyCodes };

    QString code(Codes codes)
    {
        static const QStringList integers { "1", "2", "3", "10", "-4", "007", "+5", "100000" };
        static const QStringList decimals { "1.5", "2.", ".5", "10.25" };
        static const QStringList odd { ".", "'A'", "B", "'", "''", "", "\u00c4", "'A B'",
            "99999999999", "\t7", "'x" };
        if (codes == Integers || chance(60))
            return oneOf(integers);
        return oneOf(codes == Numbers ? decimals : odd);
    }

    void writeValue(Codes codes)
    {
        QString text = oneOf({ "Value=", "VALUE=", "value=", "Value =", " Value=" });
        text += code(codes);
        if (chance(25))
            text += oneOf({ " ", "  " }) + code(codes);
        if (chance(25))
            text += QLatin1Char(':') + code(codes);
        if (chance(80))
            text += QLatin1Char(';') + oneOf({ "Yes", "No", "", "a:b", "x;y", " z ", "Name" });
        if (chance(3))
            text.insert(6, oneOf({ ";", ":" }));
        m_lines.append(text);
    }

    void writeName()
    {
        m_lines.append(oneOf({ "Name=MISSING ,Special", "NAME=NOTAPPL ,Special",
            "name=missing ,SPECIAL", "Name=MISSING,Special", "Name=DEFAULT ,Special",
            "Name=MISSING", "Name=,Special", "Name=NOTAPPLx,", "Name= MISSING ,Special" }));
    }

    QRandomGenerator m_random;
    QStringList m_lines;
};
