#include "writers/SetupWriters.h"

#include "writers/SetupWriter.h"

#include <algorithm>

namespace {

constexpr int LongestLine = 200; // bytes; SPSS reads at most 251 of a line
constexpr int LongestString = 32'767;
constexpr int BytesOfCharacter = 4;
constexpr int MarkBytes = 3;
const auto handle = QLatin1String("tessel_data");

QString quoted(const QString& text)
{
    return QLatin1Char('\'') + QString(text).replace(QLatin1Char('\''), QLatin1String("''"))
        + QLatin1Char('\'');
}

// In pieces that fit a line, with control characters as their bytes.
QString spssText(const QString& text)
{
    QStringList parts;
    QString plain;
    int bytes = 0;
    const auto endPlain = [&] {
        if (!plain.isEmpty())
            parts.append(quoted(plain));
        plain.clear();
        bytes = 0;
    };
    for (int i = 0; i < text.size(); ++i) {
        const QChar character = text.at(i);
        if (character.unicode() < 0x20) {
            endPlain();
            parts.append(
                QStringLiteral("X'%1'").arg(int(character.unicode()), 2, 16, QLatin1Char('0')));
            continue;
        }
        constexpr int most = 4; // of any character, and of both quotes
        if (bytes + most > LongestLine / 2 && !character.isLowSurrogate())
            endPlain();
        plain += character;
        bytes += most / 2;
    }
    endPlain();
    return parts.isEmpty() ? QStringLiteral("''") : parts.join(QLatin1String(" +\n      "));
}

// Ends in the point that ends it.
QString comment(const QString& text)
{
    QString line = QLatin1String("* ") + setupComment(text);
    if (!line.endsWith(QLatin1Char('.')))
        line += QLatin1Char('.');
    return line;
}

class SpssWriter : private SetupWriter {
public:
    explicit SpssWriter(const SetupPlan& plan)
        : SetupWriter(plan)
    {
    }

    QByteArray write();

private:
    void addHeading();
    void addRecord(const SetupRecord& record);
    void addReading(const SetupRecord& record);
    void addColumnSearch(int columns, int bytes);
    void addFilter(const SetupRecord& record);
    void addVariable(const SetupRecord& record, const SetupVariable& variable);
    static QString partOf(const SetupRecord& record, int start, int width);
    static QString typeText(const SetupRecord& record);
    static QString formatOf(const SetupVariable& variable);
    void addNames(const QStringList& names);
    void addLabels(const SetupRecord& record);
    void addMissing(const SetupRecord& record);
    QString code(const SetupLabel& label, const SetupLabels& labels) const;
};

QByteArray SpssWriter::write()
{
    addHeading();
    for (const SetupRecord& record : m_plan.records)
        addRecord(record);
    return m_text.toUtf8();
}

void SpssWriter::addHeading()
{
    add(QLatin1String("* Encoding: UTF-8."));
    const QStringList lines = m_plan.heading(
        { QStringLiteral("The data file is named in FILE HANDLE, where it can be changed."),
            QStringLiteral(
                "Each record type is saved as a file of its name, over one that is there."),
            QStringLiteral("Texts are right where the program runs with UTF-8, in PSPP with such a "
                           "locale.") });
    for (const QString& line : lines)
        add(comment(line));
    add(QLatin1String("\nSET MXERRS=1000000000."));
    add(QStringLiteral("FILE HANDLE %1 /NAME=%2 /LRECL=%3 /ENCODING='UTF8'.")
            .arg(handle, quoted(m_plan.dataFile), QString::number(LongestString)));
}

void SpssWriter::addRecord(const SetupRecord& record)
{
    add(QLatin1Char('\n') + comment(record.name + QLatin1String(": ") + record.label));
    addReading(record);
    addLabels(record);
    addMissing(record);
    add(QStringLiteral("SAVE OUTFILE=%1.").arg(quoted(record.name + QLatin1String(".sav"))));
}

// A line is read whole and cut by SUBSTR, as both count bytes; without a byte-order mark, which is
// no column. PSPP loses its file after REREAD.
void SpssWriter::addReading(const SetupRecord& record)
{
    const int columns = record.width + 1; // behind the last one as well
    const int bytes = record.hasText ? std::min(columns * BytesOfCharacter, LongestString)
                                     : std::min(columns + MarkBytes, LongestString);
    add(QLatin1String("INPUT PROGRAM."));
    add(QStringLiteral("DATA LIST FILE=%1 FIXED NOTABLE /#line 1-%2 (A).")
            .arg(handle, QString::number(bytes)));
    add(QLatin1String("IF (NUMBER(SUBSTR(#line, 1, 1), PIB1) = 239 AND\n"
                      "    NUMBER(SUBSTR(#line, 2, 1), PIB1) = 187 AND\n"
                      "    NUMBER(SUBSTR(#line, 3, 1), PIB1) = 191) #line = SUBSTR(#line, 4)."));
    if (record.hasText)
        addColumnSearch(columns, bytes);
    addFilter(record);
    for (const SetupVariable& variable : record.variables)
        addVariable(record, variable);
    add(QLatin1String("  END CASE.\nEND IF.\nEND INPUT PROGRAM."));
}

// Where each column begins: at a byte that does not continue a character.
void SpssWriter::addColumnSearch(int columns, int bytes)
{
    add(QStringLiteral("VECTOR #at(%1).").arg(columns));
    add(QLatin1String("COMPUTE #column = 0."));
    add(QStringLiteral("LOOP #i = 1 TO %1 IF (#column < %2).")
            .arg(QString::number(bytes), QString::number(columns)));
    add(QLatin1String("  COMPUTE #byte = NUMBER(SUBSTR(#line, #i, 1), PIB1).\n"
                      "  DO IF (#byte < 128 OR #byte > 191).\n"
                      "    COMPUTE #column = #column + 1.\n"
                      "    COMPUTE #at(#column) = #i.\n"
                      "  END IF.\n"
                      "END LOOP."));
}

void SpssWriter::addFilter(const SetupRecord& record)
{
    QString condition = QStringLiteral("SUBSTR(#line, 1, 1) <> '~'");
    if (m_plan.typeWidth > 0) {
        condition += QStringLiteral(" AND\n    %1 = %2")
                         .arg(partOf(record, m_plan.typeStart, m_plan.typeWidth), typeText(record));
    }
    if (m_plan.needsLine(record))
        condition += QLatin1String(" AND #line <> ''");
    add(QStringLiteral("DO IF (%1).").arg(condition));
}

// Asterisks, which stand for no number, are missing without a message for each.
void SpssWriter::addVariable(const SetupRecord& record, const SetupVariable& variable)
{
    const QString part = partOf(record, variable.start, variable.width);
    if (variable.type == SetupType::Text) {
        add(QStringLiteral("  STRING %1 (%2).\n  COMPUTE %1 = %3.")
                .arg(variable.name, formatOf(variable), part));
        return;
    }
    const QString width = QString::number(std::max(variable.width, variable.decimals + 1));
    add(QStringLiteral(
        "  NUMERIC %1 (%2).\n  IF (INDEX(%3, '*') = 0)\n    %1 = NUMBER(%3, F%4.%5).")
            .arg(variable.name, formatOf(variable), part, width,
                QString::number(variable.decimals)));
}

QString SpssWriter::partOf(const SetupRecord& record, int start, int width)
{
    const QString text = record.hasText ? QStringLiteral("SUBSTR(#line, #at%1, #at%2 - #at%1)")
                                        : QStringLiteral("SUBSTR(#line, %1, %3)");
    return QString(text)
        .replace(QLatin1String("%1"), QString::number(start))
        .replace(QLatin1String("%2"), QString::number(start + width))
        .replace(QLatin1String("%3"), QString::number(width));
}

// Comparing fills up with blanks at the end.
QString SpssWriter::typeText(const SetupRecord& record)
{
    return record.typeCode.isEmpty() ? QStringLiteral("' '") : spssText(record.typeCode);
}

// Room for the point, which stands in no column, and for characters of several bytes.
QString SpssWriter::formatOf(const SetupVariable& variable)
{
    if (variable.type == SetupType::Text)
        return QStringLiteral("A%1").arg(spssWidth(variable.width));
    const int width =
        variable.decimals > 0 ? std::max(variable.width, variable.decimals) + 1 : variable.width;
    return QStringLiteral("F%1.%2").arg(QString::number(width), QString::number(variable.decimals));
}

void SpssWriter::addNames(const QStringList& names)
{
    QString line = QStringLiteral("   ");
    for (const QString& name : names) {
        if (line.toUtf8().size() + name.toUtf8().size() > LongestLine) {
            add(line);
            line = QStringLiteral("   ");
        }
        line += QLatin1Char(' ') + name;
    }
    add(line);
}

void SpssWriter::addLabels(const SetupRecord& record)
{
    for (const SetupVariable& variable : record.variables) {
        if (!variable.label.isEmpty()) {
            add(QStringLiteral("VARIABLE LABELS %1\n    %2.")
                    .arg(variable.name, spssText(variable.label)));
        }
    }
    for (const int index : record.labels) {
        const SetupLabels& labels = m_plan.labels[std::size_t(index)];
        const QStringList names = record.namesWith(index);
        if (!labels.hasLabels() || names.isEmpty())
            continue;
        add(QLatin1String("VALUE LABELS"));
        addNames(names);
        for (const SetupLabel& label : labels.labels) {
            if (!label.label.isEmpty())
                add(QStringLiteral("    %1\n      %2")
                        .arg(code(label, labels), spssText(label.label)));
        }
        add(QLatin1String("    ."));
    }
}

void SpssWriter::addMissing(const SetupRecord& record)
{
    for (const int index : record.labels) {
        const SetupLabels& labels = m_plan.labels[std::size_t(index)];
        const QStringList names = record.namesWith(index);
        if (labels.missing.isEmpty() || names.isEmpty())
            continue;
        QStringList values;
        for (const SetupLabel& label : labels.missing) {
            values.append(label.isRange()
                    ? QStringLiteral("%1 THRU %2")
                          .arg(code(label, labels), setupNumber(label.high, labels.decimals))
                    : code(label, labels));
        }
        add(QLatin1String("MISSING VALUES"));
        addNames(names);
        add(QStringLiteral("    (%1).").arg(values.join(QLatin1String(", "))));
    }
}

QString SpssWriter::code(const SetupLabel& label, const SetupLabels& labels) const
{
    if (!labels.isText)
        return setupNumber(label.low, labels.decimals);
    return label.isBlank ? QStringLiteral("' '") : spssText(label.text);
}

} // namespace

QByteArray writeSpssSyntax(const SetupPlan& plan)
{
    return SpssWriter(plan).write();
}
