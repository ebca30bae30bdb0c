#include "converting/ConvertTexts.h"

#include "checking/CountsText.h"
#include "text/ShownText.h"

#include <QMap>

#include <algorithm>
#include <iterator>

using namespace tessel;

namespace {

using Kind = ConversionNote::Kind;
using Reason = ConversionNote::Reason;
using Type = ConversionColumn::Type;

StatProgram programOf(ConversionFormat format)
{
    if (format == ConversionFormat::Csv)
        return StatProgram::R;
    return format == ConversionFormat::Spss ? StatProgram::Spss : StatProgram::Stata;
}

QString typeText(const ConversionColumn& column, ConversionFormat format)
{
    if (format == ConversionFormat::Csv)
        return column.isText() ? QStringLiteral("text") : QStringLiteral("number");
    if (format == ConversionFormat::Spss)
        return column.isText() ? QStringLiteral("A%1").arg(column.width) : column.format;
    switch (column.type) {
    case Type::Byte:
        return QStringLiteral("byte");
    case Type::Int:
        return QStringLiteral("int");
    case Type::Long:
        return QStringLiteral("long");
    case Type::Float:
        return QStringLiteral("float");
    case Type::Double:
        return QStringLiteral("double");
    case Type::Text:
        return QStringLiteral("str");
    case Type::LongText:
        break;
    }
    return QStringLiteral("strL");
}

QString missingText(const ConversionColumn& column)
{
    QStringList texts;
    for (const ConversionMissing& missing : column.missing) {
        const QString code =
            column.isText() ? shownCode(missing.text) : rangeText(missing.low, missing.high);
        texts.append(missing.tag == '\0'
                ? code
                : QStringLiteral("%1 is .%2").arg(code, QString(QLatin1Char(missing.tag))));
    }
    return texts.join(QLatin1String(", "));
}

QString columnLine(const ConversionPlan& plan, const ConversionColumn& column)
{
    QString line = QStringLiteral("  %1 %2").arg(column.name, typeText(column, plan.format));
    if (plan.format != ConversionFormat::Spss && !column.format.isEmpty())
        line += QLatin1Char(' ') + column.format;
    if (!column.label.isEmpty())
        line += QLatin1String("  ") + column.label;
    if (column.labelSet >= 0) {
        const ConversionLabelSet& set = plan.labelSets[std::size_t(column.labelSet)];
        line += QStringLiteral(" (%1: %2)")
                    .arg(plural(qint64(set.labels.size()), QStringLiteral("label")), set.name);
    }
    if (!column.missing.empty())
        line += QStringLiteral(" (missing: %1)").arg(missingText(column));
    return printable(line) + QLatin1Char('\n');
}

struct ReasonText {
    Reason reason;
    const char* one;
    const char* several;
};

const ReasonText ReasonTexts[] = {
    { Reason::TooLong, "it is too long", "they are too long" },
    { Reason::NotAllowed, "it has characters that are not allowed",
        "they have characters that are not allowed" },
    { Reason::TextCodes, "it is a text", "they are texts" },
    { Reason::DecimalCodes, "it has decimals", "they have decimals" },
    { Reason::LargeCodes, "it is too large", "they are too large" },
    { Reason::RangeCodes, "it is a range", "they are ranges" },
    { Reason::BlankCode, "blanks are missing values", "blanks are missing values" },
    { Reason::TooMany, "there are too many", "there are too many" },
    { Reason::Repeated, "it has a label already", "they have a label already" },
};

// Behind what happened to so many; nothing without a reason.
QString reasonText(Reason reason, int count)
{
    for (const ReasonText& known : ReasonTexts) {
        if (known.reason == reason)
            return QLatin1String(": ") + QLatin1String(count == 1 ? known.one : known.several);
    }
    return QString();
}

QString quoted(const QString& text)
{
    return QLatin1Char('"') + shortened(text) + QLatin1Char('"');
}

// What labels in place of codes lose.
QString labelSentence(const ConversionNote& note)
{
    switch (note.kind) {
    case Kind::LabelShared:
        return QStringLiteral("label %1 of %2 left out: missing and other codes share it")
            .arg(quoted(note.newText), note.text);
    case Kind::LabelLikeCode:
        return QStringLiteral("label %1 of %2 left out: it reads like a code without label")
            .arg(quoted(note.newText), note.text);
    case Kind::LabelsAlike:
        return QStringLiteral("all of %1 become %2").arg(note.text, quoted(note.newText));
    default:
        return QString();
    }
}

// What a note of a loss says of its variable or file.
QString lossSentence(const ConversionNote& note, ConversionFormat format)
{
    const QString codes = plural(note.count, QStringLiteral("code"));
    const QString reason = reasonText(note.reason, note.count);
    switch (note.kind) {
    case Kind::FileRenamed:
        return QStringLiteral("the file of record %1 is called so").arg(note.text) + reason;
    case Kind::VariableRenamed:
        return QStringLiteral("was %1: %2")
            .arg(note.text, tessel::reasonText(note.nameReasons, programOf(format)));
    case Kind::LabelSetRenamed:
        return QStringLiteral("value labels %1 are called %2: %3")
            .arg(note.text, note.newText, tessel::reasonText(note.nameReasons, programOf(format)));
    case Kind::FileLabelCut:
    case Kind::VariableLabelCut:
        return QStringLiteral("label %1 becomes %2").arg(quoted(note.text), quoted(note.newText))
            + reason;
    case Kind::ValueLabelCut:
        return QStringLiteral("value label %1 becomes %2")
                   .arg(quoted(note.text), quoted(note.newText))
            + reason;
    case Kind::ValuesUnlabelled:
        return QStringLiteral("%1 of %2 without label").arg(codes, note.text) + reason;
    case Kind::FurtherValueSet:
        return QStringLiteral("value set %1 is left out: only the first one of a variable is "
                              "written")
            .arg(note.text);
    case Kind::MissingNotHeld:
        return QStringLiteral("%1 of %2 not marked as missing (%3)")
                   .arg(codes, note.text, note.newText)
            + reason;
    case Kind::MissingMerged:
        return QStringLiteral("all of %1 become %2").arg(note.text, note.newText);
    case Kind::PrecisionAtRisk:
        return QStringLiteral("numbers of %1 digits may be rounded").arg(note.count);
    case Kind::TextAtRisk:
        return QStringLiteral("longer texts are cut");
    case Kind::NotesNotHeld:
        return QStringLiteral("%1 left out").arg(plural(note.count, QStringLiteral("note")))
            + reason;
    case Kind::NoVariables:
        return QStringLiteral("record %1 has no variables, and no file").arg(note.text);
    case Kind::WeightNotHeld:
        return QStringLiteral("weight %1 left out: the rows count alike").arg(note.text);
    case Kind::AttributesNotHeld:
        return QStringLiteral("%1 left out: %2")
            .arg(plural(note.count, QStringLiteral("attribute")), note.text);
    case Kind::RoleNotHeld:
        return QStringLiteral("role left out");
    case Kind::ResponseSetsNotHeld:
        return QStringLiteral("%1 left out: %2")
            .arg(plural(note.count, QStringLiteral("multiple response set")), note.text);
    case Kind::VariableSetsNotHeld:
        return QStringLiteral("%1 left out: %2")
            .arg(plural(note.count, QStringLiteral("set of variables"),
                     QStringLiteral("sets of variables")),
                note.text);
    default:
        return labelSentence(note);
    }
}

// What becomes of something that is not lost.
QString changeSentence(const ConversionNote& note)
{
    switch (note.kind) {
    case Kind::MissingRecoded:
        return QStringLiteral("%1 becomes %2").arg(note.text, note.newText);
    case Kind::KindsRecoded:
        return QStringLiteral("%1 without a label become codes of %2").arg(note.text, note.newText);
    case Kind::UnitChanged:
        return QStringLiteral("%1 becomes %2, counted anew").arg(note.text, note.newText);
    case Kind::FormatNotHeld:
        return QStringLiteral("shown as %2 in place of %1").arg(note.text, note.newText);
    case Kind::DisplayNotHeld:
        return QStringLiteral("measures, widths and alignments of %1 left out")
            .arg(plural(note.count, QStringLiteral("variable")));
    case Kind::NotesMoved:
        return QStringLiteral("%1 among the notes of the file, behind the name")
            .arg(
                plural(note.count, QStringLiteral("note of a variable, record or value set stands"),
                    QStringLiteral("notes of variables, records and value sets stand")));
    case Kind::MergedOnce:
        return QStringLiteral("variables of %1 that a case has once stand on each row")
            .arg(plural(note.count, QStringLiteral("record")));
    case Kind::DatesStay:
        return QStringLiteral("numbers as %1 counts them").arg(note.text);
    default:
        return QString();
    }
}

QString noteLine(const ConversionNote& note, ConversionFormat format)
{
    QString line = note.isLoss() ? QStringLiteral("changed: ") : QStringLiteral("note: ");
    if (!note.file.isEmpty())
        line += note.file + QLatin1Char(' ');
    if (!note.variable.isEmpty())
        line += note.variable + QLatin1Char(' ');
    return printable(line + (note.isLoss() ? lossSentence(note, format) : changeSentence(note)))
        + QLatin1Char('\n');
}

struct KindText {
    Kind kind;
    const char* one;
    const char* several;
};

const KindText KindTexts[] = {
    { Kind::FileRenamed, "file is renamed", "files are renamed" },
    { Kind::VariableRenamed, "variable is renamed", "variables are renamed" },
    { Kind::LabelSetRenamed, "set of value labels is renamed", "sets of value labels are renamed" },
    { Kind::FileLabelCut, "label of a file is cut", "labels of files are cut" },
    { Kind::VariableLabelCut, "label of a variable is cut", "labels of variables are cut" },
    { Kind::ValueLabelCut, "value label is cut", "value labels are cut" },
    { Kind::ValuesUnlabelled, "value set loses labels", "value sets lose labels" },
    { Kind::FurtherValueSet, "further value set is left out", "further value sets are left out" },
    { Kind::MissingNotHeld, "variable has codes that are no longer missing",
        "variables have codes that are no longer missing" },
    { Kind::MissingMerged, "range of missing codes becomes one kind",
        "ranges of missing codes become one kind each" },
    { Kind::PrecisionAtRisk, "variable may be rounded", "variables may be rounded" },
    { Kind::TextAtRisk, "variable may have cut texts", "variables may have cut texts" },
    { Kind::NotesNotHeld, "variable or file loses notes", "variables or files lose notes" },
    { Kind::NoVariables, "record without variables is left out",
        "records without variables are left out" },
    { Kind::WeightNotHeld, "file loses its weight", "files lose their weights" },
    { Kind::AttributesNotHeld, "variable or file loses attributes",
        "variables or files lose attributes" },
    { Kind::RoleNotHeld, "variable loses its role", "variables lose their roles" },
    { Kind::ResponseSetsNotHeld, "file loses multiple response sets",
        "files lose multiple response sets" },
    { Kind::VariableSetsNotHeld, "file loses sets of variables", "files lose sets of variables" },
    { Kind::LabelShared, "label of missing and other codes is left out",
        "labels of missing and other codes are left out" },
    { Kind::LabelLikeCode, "label that reads like a code is left out",
        "labels that read like codes are left out" },
    { Kind::LabelsAlike, "label stands for several values", "labels stand for several values" },
    { Kind::MissingRecoded, "missing code is recoded", "missing codes are recoded" },
    { Kind::KindsRecoded, "variable gets codes for missing values without a label",
        "variables get codes for missing values without a label" },
    { Kind::UnitChanged, "variable with dates is counted anew",
        "variables with dates are counted anew" },
    { Kind::FormatNotHeld, "variable is shown otherwise", "variables are shown otherwise" },
    { Kind::DisplayNotHeld, "file loses measures and widths", "files lose measures and widths" },
    { Kind::NotesMoved, "file has notes of variables among its own",
        "files have notes of variables among their own" },
    { Kind::MergedOnce, "file has merged variables", "files have merged variables" },
    { Kind::DatesStay, "variable with dates stays a number", "variables with dates stay numbers" },
};

// What a number of notes of one kind say together.
QString kindText(Kind kind, qint64 count)
{
    const auto* const text = std::find_if(std::begin(KindTexts), std::end(KindTexts),
        [kind](const KindText& known) { return known.kind == kind; });
    return QStringLiteral("%1 %2").arg(
        grouped(count), QLatin1String(count == 1 ? text->one : text->several));
}

struct Fault {
    qint64 ConversionCounts::*count;
    const char* one;
    const char* several;
};

constexpr Fault faults[] = {
    { &ConversionCounts::notNumbers, "value that is no number became missing",
        "values that are no numbers became missing" },
    { &ConversionCounts::roundedNumbers, "value was rounded, as it has more digits than fit",
        "values were rounded, as they have more digits than fit" },
    { &ConversionCounts::unheldNumbers, "value that is too large became missing",
        "values that are too large became missing" },
    { &ConversionCounts::cutTexts, "text was cut, as it is too long",
        "texts were cut, as they are too long" },
    { &ConversionCounts::datesAsTimes,
        "value is beyond one day and shown as a time from the first day of 1960 on",
        "values are beyond one day and shown as times from the first day of 1960 on" },
    { &ConversionCounts::valuesLikeLabels, "value without label reads like the label of a code",
        "values without label read like labels of codes" },
    { &ConversionCounts::nullCharacters, "text has a null character, which is written as U+2400",
        "texts have a null character, which is written as U+2400" },
};

// Those that are planned are told together.
void tellKinds(const ConversionFile& file, const std::vector<ConversionCounts>& counts)
{
    int planned = 0;
    for (std::size_t c = 0; c < counts.size(); ++c) {
        const ConversionColumn& column = file.columns.at(int(c));
        QStringList kinds;
        for (int kind = 0; kind <= 'z' - 'a'; ++kind) {
            if ((counts[c].recodedKinds & (quint32(1) << kind)) != 0)
                kinds.append(QStringLiteral(".%1 %2").arg(QString(QLatin1Char(char('a' + kind))),
                    realText(counts[c].missingBase + kind)));
        }
        if (kinds.isEmpty())
            continue;
        if (counts[c].missingBase == column.missingBase) {
            ++planned;
            continue;
        }
        Console::tell(file.name, 0, Console::Severity::Note,
            QStringLiteral("%1: missing values became other codes than planned, as the data have "
                           "those: %2")
                .arg(column.name, kinds.join(QLatin1String(", "))));
    }
    if (planned > 0) {
        Console::tell(file.name, 0, Console::Severity::Note,
            QStringLiteral("kinds of missing values of %1 became the codes that are planned")
                .arg(plural(planned, QStringLiteral("variable"))));
    }
}

} // namespace

QString conversionPlanText(const ConversionPlan& plan)
{
    QString text;
    for (const ConversionFile& file : plan.files) {
        QString line = QStringLiteral("file %1").arg(file.name);
        if (!file.label.isEmpty())
            line += QLatin1String("  ") + file.label;
        text += printable(line) + QLatin1Char('\n');
        for (const ConversionColumn& column : file.columns)
            text += columnLine(plan, column);
    }
    for (const ConversionNote& note : plan.notes)
        text += noteLine(note, plan.format);
    return text;
}

void tellPlan(const ConversionPlan& plan, Console::Severity severity)
{
    QMap<Kind, qint64> counts;
    for (const ConversionNote& note : plan.notes)
        ++counts[note.kind];
    for (auto kind = counts.constBegin(); kind != counts.constEnd(); ++kind) {
        ConversionNote example;
        example.kind = kind.key();
        Console::tell(QStringLiteral("plan"), 0,
            example.isLoss() ? severity : Console::Severity::Note,
            kindText(kind.key(), *kind) + QStringLiteral("; --plan lists all"));
    }
}

void tellReport(
    const ConversionPlan& plan, const ConversionReport& report, Console::Severity severity)
{
    for (std::size_t f = 0; f < report.counts.size(); ++f) {
        const ConversionFile& file = plan.files[f];
        tellKinds(file, report.counts[f]);
        for (std::size_t c = 0; c < report.counts[f].size(); ++c) {
            for (const Fault& fault : faults) {
                const qint64 count = report.counts[f][c].*fault.count;
                if (count == 0)
                    continue;
                Console::tell(file.name, 0, severity,
                    QStringLiteral("%1: %2").arg(file.columns.at(int(c)).name,
                        plural(count, QLatin1String(fault.one), QLatin1String(fault.several))),
                    QLatin1String(fault.several));
            }
        }
    }
    if (report.rejects > 0) {
        Console::tell(QStringLiteral("data"), 0, severity,
            QStringLiteral("%1 no place in any file; --problems lists them")
                .arg(plural(
                    report.rejects, QStringLiteral("line has"), QStringLiteral("lines have"))));
    }
    if (report.surplusRecords > 0) {
        Console::tell(QStringLiteral("data"), 0, severity,
            QStringLiteral("%1 in a case that has one already and not merged")
                .arg(plural(report.surplusRecords, QStringLiteral("record is"),
                    QStringLiteral("records are"))));
    }
}

QString conversionSummary(const DataSource& source, const ConvertSettings& settings,
    const ConversionPlan& plan, const ConversionReport& report)
{
    QString text = printable(settings.folder) + QLatin1String(" is made.\n");
    for (std::size_t f = 0; f < plan.files.size(); ++f) {
        int widened = 0;
        for (const ConversionCounts& counts : report.counts[f])
            widened += counts.isWidened ? 1 : 0;
        text +=
            QStringLiteral("  %1: %2, %3")
                .arg(printable(plan.files[f].name), plural(report.rows[f], QStringLiteral("row")),
                    plural(plan.files[f].columns.size(), QStringLiteral("variable")));
        if (widened > 0)
            text += QStringLiteral(", %1 of a wider type than planned").arg(widened);
        text += QLatin1Char('\n');
    }
    text += countsText(source, report.read, report.rejects);
    return text;
}
