#include "writers/SetupWriters.h"

#include "writers/SetupWriter.h"

#include <algorithm>

namespace {

constexpr int LongestString = 2045; // of the types "str1" and so on
constexpr int DefaultVariables = 5000;

bool isPlain(const QString& text)
{
    for (int i = 0; i < text.size(); ++i) {
        if (isStataSpecial(text, i))
            return false;
    }
    return true;
}

// As an expression, of Mata too.
QString stataText(const QString& text)
{
    QStringList parts;
    QString plain;
    const auto endPlain = [&parts, &plain] {
        if (!plain.isEmpty())
            parts.append(QLatin1Char('"') + plain + QLatin1Char('"'));
        plain.clear();
    };
    for (int i = 0; i < text.size(); ++i) {
        if (!isStataSpecial(text, i)) {
            plain += text.at(i);
            continue;
        }
        endPlain();
        parts.append(QStringLiteral("char(%1)").arg(text.at(i).unicode()));
    }
    endPlain();
    return parts.isEmpty() ? QStringLiteral("\"\"") : parts.join(QLatin1String(" + "));
}

QString storageOf(const SetupVariable& variable)
{
    constexpr int byteDigits = 2;
    constexpr int intDigits = 4;
    constexpr int longDigits = 9;
    if (variable.type != SetupType::Whole) {
        return variable.width > LongestString ? QStringLiteral("strL")
                                              : QStringLiteral("str%1").arg(variable.width);
    }
    if (variable.width <= byteDigits)
        return QStringLiteral("byte");
    if (variable.width <= intDigits)
        return QStringLiteral("int");
    return variable.width <= longDigits ? QStringLiteral("long") : QStringLiteral("double");
}

// Mata, as macros would take characters of the data for code.
const char dataLines[] = R"(
* The data without a byte-order mark. It stops at a line with a NUL or other characters than ASCII:
* these take several bytes, which are no columns
capture mata: mata drop tessel_lines()
mata:
void tessel_lines(string scalar from, string scalar to)
{
    real scalar source, target, number
    real rowvector codes
    string matrix line

    source = fopen(from, "r")
    target = fopen(to, "w")
    number = 0
    while ((line = fget(source)) != J(0, 0, "")) {
        number = number + 1
        if (number == 1 && substr(line, 1, 3) == char((239, 187, 191))) {
            line = substr(line, 4, .)
        }
        if (line != "" && substr(line, 1, 1) != "~") {
            codes = ascii(line)
            if (min(codes) == 0 || max(codes) > 127) {
                fclose(source)
                fclose(target)
                errprintf("line %s holds a NUL or other ", strofreal(number, "%18.0f"))
                errprintf("characters than ASCII, so columns are not found\n")
                exit(459)
            }
        }
        fput(target, line)
    }
    fclose(source)
    fclose(target)
}
end

tempfile data
mata: tessel_lines(st_local("file"), st_local("data"))
)";

class StataWriter : private SetupWriter {
public:
    explicit StataWriter(const SetupPlan& plan)
        : SetupWriter(plan)
    {
    }

    QByteArray write();

private:
    void addHeading();
    void addRecord(const SetupRecord& record);
    void addReading(const SetupRecord& record);
    void addColumns(const QString& type, const QString& name, int start, int end);
    QString condition(const SetupRecord& record) const;
    void addChecks(const SetupRecord& record);
    void addMissing(const SetupVariable& variable);
    void addVariableLabel(const SetupVariable& variable);
    void addLabels(const SetupLabels& labels);
    void addLabel(const QString& name, const QString& code, const QString& label);
};

QByteArray StataWriter::write()
{
    addHeading();
    for (const SetupRecord& record : m_plan.records)
        addRecord(record);
    return m_text.toUtf8();
}

void StataWriter::addHeading()
{
    const QStringList lines = m_plan.heading(
        { QStringLiteral("Carry it out with the name of the data file: do PROGRAM DATAFILE"),
            QStringLiteral(
                "Each record type is saved as a file of its name, over one that is there."),
            QStringLiteral(
                "Columns are bytes: at a line with a NUL or other characters than ASCII the "
                "program stops."),
            QStringLiteral("Texts lose blanks at their ends, and what is no number is missing.") });
    for (const QString& line : lines)
        add(QLatin1String("* ") + setupComment(line));
    add(QLatin1String("\nversion 14"));
    add(QLatin1String("args file"));
    add(QStringLiteral("if `\"`file'\"' == \"\" local file \"%1\"").arg(m_plan.dataFile));
    add(QLatin1String("clear"));
    std::size_t most = 0;
    for (const SetupRecord& record : m_plan.records)
        most = std::max(most, record.variables.size());
    if (most + 3 > std::size_t(DefaultVariables)) // those of the program itself among them
        add(QStringLiteral("set maxvar %1").arg(most + 3));
    add(QLatin1String("\n* Numbers without a point have the last DECIMALS digits behind it\n"
                      "capture program drop tessel_decimals\n"
                      "program define tessel_decimals\n"
                      "    args name decimals\n"
                      "    tempvar number\n"
                      "    quietly replace `name' = subinstr(`name', \",\", \".\", 1)\n"
                      "    quietly generate double `number' = real(`name')\n"
                      "    quietly replace `number' = `number' / 10^`decimals' ///\n"
                      "        if strpos(`name', \".\") == 0\n"
                      "    order `number', after(`name')\n"
                      "    drop `name'\n"
                      "    rename `number' `name'\n"
                      "end\n"));
    m_text += QLatin1String(dataLines);
}

void StataWriter::addRecord(const SetupRecord& record)
{
    add(QLatin1String("\n* ") + setupComment(record.name + QLatin1String(": ") + record.label));
    addReading(record);
    addChecks(record);
    for (const SetupVariable& variable : record.variables)
        addMissing(variable);
    for (const int labels : record.labels)
        addLabels(m_plan.labels[std::size_t(labels)]);
    for (const SetupVariable& variable : record.variables)
        addVariableLabel(variable);
    if (!record.label.isEmpty())
        add(QStringLiteral("label data \"%1\"").arg(record.label));
    add(QStringLiteral("save \"%1.dta\", replace orphans").arg(record.name));
}

void StataWriter::addColumns(const QString& type, const QString& name, int start, int end)
{
    add(QStringLiteral("    %1 %2 %3-%4 ///")
            .arg(type, name, QString::number(start), QString::number(end)));
}

void StataWriter::addReading(const SetupRecord& record)
{
    add(QLatin1String("clear")); // value labels too
    add(QLatin1String("infix ///"));
    addColumns(QStringLiteral("str1"), record.firstName, 1, 1);
    if (m_plan.typeWidth > 0) {
        addColumns(QStringLiteral("str%1").arg(std::min(m_plan.typeWidth, LongestString)),
            record.typeName, m_plan.typeStart, m_plan.typeStart + m_plan.typeWidth - 1);
    }
    if (m_plan.needsLine(record)) {
        const SetupVariable line { {}, {}, SetupType::Text, 1, record.width, 0, -1 };
        addColumns(storageOf(line), record.lineName, 1, record.width);
    }
    for (const SetupVariable& variable : record.variables)
        addColumns(storageOf(variable), variable.name, variable.start, variable.end());
    add(QStringLiteral("    using \"`data'\" if %1, clear").arg(condition(record)));
}

QString StataWriter::condition(const SetupRecord& record) const
{
    QStringList parts { QStringLiteral("%1 != \"~\"").arg(record.firstName) };
    if (m_plan.typeWidth > 0) { // which is read without the blanks at its ends
        parts.append(QStringLiteral("strtrim(%1) == %2")
                         .arg(record.typeName, stataText(record.typeCode.trimmed())));
    }
    if (m_plan.needsLine(record))
        parts.append(QStringLiteral("strtrim(%1) != \"\"").arg(record.lineName));
    return parts.join(QLatin1String(" & "));
}

void StataWriter::addChecks(const SetupRecord& record)
{
    QString own = record.firstName;
    if (m_plan.typeWidth > 0)
        own += QLatin1Char(' ') + record.typeName;
    if (m_plan.needsLine(record))
        own += QLatin1Char(' ') + record.lineName;
    for (const SetupVariable& variable : record.variables) {
        if (variable.type == SetupType::Decimals)
            add(QStringLiteral("tessel_decimals %1 %2")
                    .arg(variable.name, QString::number(variable.decimals)));
    }
    add(QStringLiteral("drop %1").arg(own));
}

void StataWriter::addMissing(const SetupVariable& variable)
{
    if (variable.labels < 0)
        return;
    const SetupLabels& labels = m_plan.labels[std::size_t(variable.labels)];
    char letter = 'a';
    for (const SetupLabel& label : labels.missing) {
        const QString low = setupNumber(label.low, labels.decimals);
        const QString test = label.isRange()
            ? QStringLiteral("inrange(%1, %2, %3)")
                  .arg(variable.name, low, setupNumber(label.high, labels.decimals))
            : QStringLiteral("%1 == %2").arg(variable.name, low);
        add(QStringLiteral("quietly replace %1 = .%2 if %3")
                .arg(variable.name, QString(QLatin1Char(letter++)), test));
    }
}

void StataWriter::addVariableLabel(const SetupVariable& variable)
{
    if (!variable.label.isEmpty()) {
        add(isPlain(variable.label)
                ? QStringLiteral("label variable %1 \"%2\"").arg(variable.name, variable.label)
                : QStringLiteral("mata: st_varlabel(\"%1\", %2)")
                      .arg(variable.name, stataText(variable.label)));
    }
    if (variable.labels >= 0 && m_plan.labels[std::size_t(variable.labels)].hasLabels()) {
        add(QStringLiteral("label values %1 %2")
                .arg(variable.name, m_plan.labels[std::size_t(variable.labels)].name));
    }
}

void StataWriter::addLabels(const SetupLabels& labels)
{
    const qint64 unit = tessel::powerOfTen(labels.decimals);
    char letter = 'a';
    for (const SetupLabel& label : labels.missing)
        addLabel(labels.name, QStringLiteral(".%1").arg(QLatin1Char(letter++)), label.label);
    for (const SetupLabel& label : labels.labels) {
        if (!label.isMissing)
            addLabel(labels.name, QString::number(label.low / unit), label.label);
    }
}

void StataWriter::addLabel(const QString& name, const QString& code, const QString& label)
{
    if (label.isEmpty())
        return;
    add(isPlain(label) ? QStringLiteral("label define %1 %2 \"%3\", add").arg(name, code, label)
                       : QStringLiteral("mata: st_vlmodify(\"%1\", %2, %3)")
                             .arg(name, code, stataText(label)));
}

} // namespace

QByteArray writeStataDo(const SetupPlan& plan)
{
    return StataWriter(plan).write();
}
