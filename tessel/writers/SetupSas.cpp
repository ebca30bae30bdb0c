#include "writers/SetupWriters.h"

#include "writers/SetupWriter.h"

namespace {

constexpr int LongestLine = 32'767; // bytes

// In single quotes nothing is expanded; a label has no line breaks here.
QString sasText(const QString& text)
{
    return QLatin1Char('\'') + QString(text).replace(QLatin1Char('\''), QLatin1String("''"))
        + QLatin1Char('\'');
}

QString informatOf(const SetupVariable& variable)
{
    if (variable.type == SetupType::Text)
        return QStringLiteral("$char%1.").arg(variable.width);
    return QStringLiteral("%1.%2").arg(QString::number(variable.width),
        variable.decimals > 0 ? QString::number(variable.decimals) : QString());
}

class SasWriter : private SetupWriter {
public:
    explicit SasWriter(const SetupPlan& plan)
        : SetupWriter(plan)
    {
    }

    QByteArray write();

private:
    void addHeading();
    void addFormats();
    void addFormat(const SetupLabels& labels);
    void addRecord(const SetupRecord& record);
    void addFilter(const SetupRecord& record);
    void addInput(const SetupRecord& record);
    void addMissing(const SetupVariable& variable);
    void addLabels(const SetupRecord& record);
    QString values(const SetupLabel& label, const SetupLabels& labels) const;
};

QByteArray SasWriter::write()
{
    addHeading();
    addFormats();
    for (const SetupRecord& record : m_plan.records)
        addRecord(record);
    return m_text.toUtf8();
}

void SasWriter::addHeading()
{
    const QStringList lines = m_plan.heading(
        { QStringLiteral(
              "The data file is named in the statement FILENAME, where it can be changed."),
            QStringLiteral("Each record type becomes a data set of its name."),
            QStringLiteral("Columns are bytes of the encoding of the session: at a line of more "
                           "bytes than characters the step ends.") });
    for (const QString& line : lines)
        add(QStringLiteral("/* %1 */").arg(setupComment(line)));
    add(QStringLiteral("\nfilename rawdata '%1' encoding='utf-8' termstr=lf lrecl=%2;")
            .arg(m_plan.dataFile, QString::number(LongestLine)));
}

// Letters of the missing values, in the order of the dictionary.
QString letterOf(int place)
{
    return QLatin1Char('.') + QString(QLatin1Char(char('A' + place)));
}

QString SasWriter::values(const SetupLabel& label, const SetupLabels& labels) const
{
    if (labels.isText)
        return label.isBlank ? QStringLiteral("' '") : sasText(label.text);
    if (label.isBlank)
        return QStringLiteral(".");
    const QString low = setupNumber(label.low, labels.decimals);
    return label.isRange() ? low + QLatin1String(" - ") + setupNumber(label.high, labels.decimals)
                           : low;
}

void SasWriter::addFormat(const SetupLabels& labels)
{
    add(QStringLiteral("  value %1").arg(labels.name));
    for (int i = 0; i < labels.missing.size(); ++i) {
        if (!labels.missing.at(i).label.isEmpty())
            add(QStringLiteral("    %1 = %2")
                    .arg(letterOf(i), sasText(labels.missing.at(i).label)));
    }
    for (const SetupLabel& label : labels.labels) {
        const bool isLetter = label.isMissing && !label.isBlank && !labels.isText;
        if (!isLetter && !label.label.isEmpty())
            add(QStringLiteral("    %1 = %2").arg(values(label, labels), sasText(label.label)));
    }
    add(QLatin1String("  ;"));
}

void SasWriter::addFormats()
{
    add(QLatin1String("\nproc format;"));
    for (const SetupLabels& labels : m_plan.labels) {
        if (labels.hasLabels())
            addFormat(labels);
    }
    add(QLatin1String("run;"));
}

void SasWriter::addRecord(const SetupRecord& record)
{
    add(QStringLiteral("\n/* %1: %2 */").arg(record.name, setupComment(record.label)));
    add(record.label.isEmpty()
            ? QStringLiteral("data %1;").arg(record.name)
            : QStringLiteral("data %1 (label=%2);").arg(record.name, sasText(record.label)));
    addFilter(record);
    addInput(record);
    for (const SetupVariable& variable : record.variables)
        addMissing(variable);
    addLabels(record);
    add(QLatin1String("run;"));
}

// The line without a byte-order mark and a carriage return.
void SasWriter::addFilter(const SetupRecord& record)
{
    add(QStringLiteral("  infile rawdata truncover lrecl=%1;").arg(LongestLine));
    add(QLatin1String("  input @;\n"
                      "  if _n_ = 1 and substr(_infile_, 1, 3) = 'EFBBBF'x then\n"
                      "    _infile_ = substr(_infile_, 4);\n"
                      "  _infile_ = translate(_infile_, ' ', '0D'x);\n"
                      "  if substr(_infile_, 1, 1) = '~' then delete;"));
    if (m_plan.typeWidth > 0) {
        add(QStringLiteral("  if substr(_infile_, %1, %2) ne %3 then delete;")
                .arg(QString::number(m_plan.typeStart), QString::number(m_plan.typeWidth),
                    sasText(record.typeCode)));
    }
    if (m_plan.needsLine(record))
        add(QLatin1String("  if _infile_ = ' ' then delete;"));
    add(QLatin1String("  if klength(_infile_) ne length(_infile_) then do;\n"
                      "    put 'ERROR: characters of several bytes, so columns are not found';\n"
                      "    abort;\n"
                      "  end;"));
}

void SasWriter::addInput(const SetupRecord& record)
{
    add(QLatin1String("  input"));
    for (const SetupVariable& variable : record.variables) {
        add(QStringLiteral("    @%1 %2 %3")
                .arg(QString::number(variable.start), variable.name, informatOf(variable)));
    }
    add(QLatin1String("  ;"));
}

void SasWriter::addMissing(const SetupVariable& variable)
{
    if (variable.labels < 0)
        return;
    const SetupLabels& labels = m_plan.labels[std::size_t(variable.labels)];
    for (int i = 0; i < labels.missing.size(); ++i) {
        const SetupLabel& label = labels.missing.at(i);
        const QString low = setupNumber(label.low, labels.decimals);
        const QString test = label.isRange()
            ? QStringLiteral("%1 <= %2 <= %3")
                  .arg(low, variable.name, setupNumber(label.high, labels.decimals))
            : QStringLiteral("%1 = %2").arg(variable.name, low);
        add(QStringLiteral("  if %1 then %2 = %3;").arg(test, variable.name, letterOf(i)));
    }
}

void SasWriter::addLabels(const SetupRecord& record)
{
    for (const SetupVariable& variable : record.variables) {
        if (!variable.label.isEmpty())
            add(QStringLiteral("  label %1 = %2;").arg(variable.name, sasText(variable.label)));
        if (variable.labels >= 0 && m_plan.labels[std::size_t(variable.labels)].hasLabels()) {
            add(QStringLiteral("  format %1 %2.")
                    .arg(variable.name, m_plan.labels[std::size_t(variable.labels)].name)
                + QLatin1Char(';'));
        }
    }
}

} // namespace

QByteArray writeSas(const SetupPlan& plan)
{
    return SasWriter(plan).write();
}
