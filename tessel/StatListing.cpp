#include "StatListing.h"

#include <model_Tessel/DataProvider.h>
#include <model_Tessel/Record.h>
#include <model_Tessel/SPSSDataImport.h>
#include <model_Tessel/STATADataImport.h>
#include <model_Tessel/SourceField.h>
#include <model_Tessel/StatDictionary.h>

#include <QHash>

#include <algorithm>
#include <cstdio>
#include <memory>

#include <fcntl.h>
#include <unistd.h>

namespace {

// ---- as written

QString measureName(readstat_measure_t measure)
{
    switch (measure) {
    case READSTAT_MEASURE_NOMINAL:
        return QStringLiteral("nominal");
    case READSTAT_MEASURE_ORDINAL:
        return QStringLiteral("ordinal");
    case READSTAT_MEASURE_SCALE:
        return QStringLiteral("scale");
    default:
        return QString();
    }
}

bool isText(const TStatVariableDescription& variable)
{
    return variable.type == READSTAT_TYPE_STRING || variable.type == READSTAT_TYPE_STRING_REF;
}

// The width and the decimals in a format, for example 8 and 2 in "F8.2" and "%8.2f".
struct FormatNumbers {
    int width = 0;
    int decimals = 0;

    explicit FormatNumbers(const QString& format)
    {
        const auto isDigit = [](QChar character) { return character.isDigit(); };
        const auto start = std::find_if(format.begin(), format.end(), isDigit);
        const auto point = std::find_if_not(start, format.end(), isDigit);
        width = QString(start, int(point - start)).toInt();
        if (point != format.end() && (*point == QLatin1Char('.') || *point == QLatin1Char(','))) {
            const auto end = std::find_if_not(point + 1, format.end(), isDigit);
            decimals = QString(point + 1, int(end - point - 1)).toInt();
        }
    }
};

// SPSS has no integers of its own; numbers shown without decimals are taken for them, dates are
// not.
bool isWhole(const TStatVariableDescription& variable, FileKind kind)
{
    switch (variable.type) {
    case READSTAT_TYPE_INT8:
    case READSTAT_TYPE_INT16:
    case READSTAT_TYPE_INT32:
        return true;
    default:
        break;
    }
    const bool isPlain = variable.format.startsWith(QLatin1Char('F'))
        || variable.format.startsWith(QLatin1Char('N'));
    return kind == FileKind::Spss && isPlain && FormatNumbers(variable.format).decimals == 0;
}

QString typeName(const TStatVariableDescription& variable, FileKind kind)
{
    if (isText(variable))
        return QStringLiteral("string");
    return isWhole(variable, kind) ? QStringLiteral("integer") : QStringLiteral("real");
}

bool isMissing(const TStatValue& value, const QVector<TStatMissingRange>& ranges)
{
    if (value.tag != '\0' || value.isSystemMissing)
        return true;
    const bool isString = value.type == READSTAT_TYPE_STRING;
    return std::any_of(ranges.cbegin(), ranges.cend(), [&](const TStatMissingRange& range) {
        if (isString)
            return range.low.text.trimmed() == value.text.trimmed();
        return value.number >= range.low.number && value.number <= range.high.number;
    });
}

ListedValueSet listLabels(
    const TStatLabelSet& labels, const QVector<TStatMissingRange>& missingRanges)
{
    ListedValueSet listed;
    listed.name = labels.name;
    listed.codes.reserve(labels.labels.size());
    for (const TStatLabelledValue& entry : labels.labels) {
        listed.codes.append({ entry.value.text, QString(), entry.label,
            isMissing(entry.value, missingRanges) ? QStringLiteral("missing") : QString() });
    }
    return listed;
}

void takeMissing(ListedField& field, const QVector<TStatMissingRange>& ranges)
{
    QStringList texts;
    for (const TStatMissingRange& range : ranges) {
        const bool isRange = range.low.text != range.high.text;
        field.missingRanges.append(
            { range.low.text, isRange ? range.high.text : QString(), QString(), QString() });
        texts.append(
            isRange ? range.low.text + QLatin1String("..") + range.high.text : range.low.text);
    }
    if (!texts.isEmpty())
        field.missing = texts.join(QLatin1String(", "));
}

// In characters of the format; storage is padded, and a format ends at 255 where a string is
// longer.
int valueWidth(const TStatVariableDescription& variable, FileKind kind)
{
    constexpr quint64 LongestFormat = 255;
    const int formatWidth = FormatNumbers(variable.format).width;
    if (isText(variable) && kind == FileKind::Stata) // libreadstat counts a null at the end
        return int(std::max<quint64>(variable.storageWidth, 1) - 1);
    if (isText(variable) && variable.userWidth > LongestFormat)
        return int(variable.userWidth);
    return formatWidth > 0 ? formatWidth : variable.displayWidth;
}

// Variables of one label set and the same missing values share its codes, and what follows of them.
class LabelSetLister {
public:
    explicit LabelSetLister(const TStatFileDescription& file)
        : m_file(file)
    {
    }

    void listFor(const TStatVariableDescription& variable, ListedField& field)
    {
        if (variable.labelSet < 0)
            return;
        const QString key = QStringLiteral("%1 %2 %3")
                                .arg(QString::number(variable.labelSet), field.type, field.missing);
        const auto known = m_known.constFind(key);
        if (known != m_known.constEnd()) {
            field.valueSets = known->valueSets;
            field.min = known->min;
            field.max = known->max;
            return;
        }
        field.valueSets.append(
            listLabels(m_file.labelSets.at(variable.labelSet), variable.missingRanges));
        if (!isText(variable))
            takeRange(field);
        m_known.insert(key, { field.valueSets, field.min, field.max });
    }

private:
    struct Listed {
        QVector<ListedValueSet> valueSets;
        QString min;
        QString max;
    };

    const TStatFileDescription& m_file;
    QHash<QString, Listed> m_known;
};

ListedField listVariable(
    const TStatVariableDescription& variable, FileKind kind, LabelSetLister& labelSets)
{
    const FormatNumbers format(variable.format);
    ListedField field;
    field.name = variable.name;
    field.item = variable.name;
    field.label = variable.label;
    field.type = typeName(variable, kind);
    field.length = valueWidth(variable, kind);
    field.decimals = isText(variable) ? 0 : format.decimals;
    field.format = variable.format;
    field.measure = measureName(variable.measure);
    takeMissing(field, variable.missingRanges);
    labelSets.listFor(variable, field);
    return field;
}

void listWritten(const TStatFileDescription& file, FileKind kind, Listing& listing)
{
    LabelSetLister labelSets(file);
    listing.fields.reserve(file.variables.size());
    for (const TStatVariableDescription& variable : file.variables)
        listing.fields.append(listVariable(variable, kind, labelSets));
}

// ---- as the importers give it

// "1 Male\t2 Female\t": each entry's code ends at its first blank.
ListedValueSet cutLabels(const QString& valueLabels)
{
    ListedValueSet listed;
    const QStringList entries = valueLabels.split(QLatin1Char('\t'), Qt::SkipEmptyParts);
    for (const QString& entry : entries) {
        const int blank = entry.indexOf(QLatin1Char(' '));
        listed.codes.append({ entry.left(blank), QString(), entry.mid(blank + 1), QString() });
    }
    return listed;
}

// The Stata importer reports on standard output, which is for the listing.
class QuietOutput {
public:
    QuietOutput()
        : m_output(dup(STDOUT_FILENO))
    {
        std::fflush(stdout);
        const int nowhere = open("/dev/null", O_WRONLY);
        dup2(nowhere, STDOUT_FILENO);
        close(nowhere);
    }

    ~QuietOutput()
    {
        std::fflush(stdout);
        dup2(m_output, STDOUT_FILENO);
        close(m_output);
    }

private:
    Q_DISABLE_COPY(QuietOutput)

    int m_output;
};

void listEstablished(TDataImport& importer, Listing& listing)
{
    {
        const QuietOutput quiet;
        importer.openFile();
    }
    QHash<const QChar*, QVector<ListedValueSet>> known; // by the text that variables share
    TOxDataProvider provider;
    provider.genericGetFieldsFrom(&importer);
    const std::unique_ptr<TOxRecord> tree(provider.recordTree);
    for (const TOxSourceField* sourceField : qAsConst(*provider.fields)) {
        const std::unique_ptr<const TOxSourceField> source(sourceField);
        ListedField field;
        field.name = source->fieldName;
        field.item = source->fieldName;
        field.label = source->fieldLabel;
        field.type = source->getFieldType().toLower();
        field.length = source->length;
        field.min = source->minValue;
        field.max = source->maxValue;
        if (!source->valueLabels.isEmpty()) {
            QVector<ListedValueSet>& valueSets = known[source->valueLabels.constData()];
            if (valueSets.isEmpty())
                valueSets.append(cutLabels(source->valueLabels));
            field.valueSets = valueSets;
        }
        listing.fields.append(field);
    }
}

QString versionText(const TStatFileDescription& file, FileKind kind)
{
    const QString name = kind == FileKind::Spss ? QStringLiteral("SPSS system file, format %1")
                                                : QStringLiteral("Stata data file, format %1");
    return name.arg(file.formatVersion);
}

QString describe(const TStatOutcome& outcome)
{
    if (outcome.errorText.isEmpty())
        return QStringLiteral("it ends early");
    QStringList texts { outcome.errorText };
    texts += outcome.errorDetails;
    return texts.join(QLatin1String("; "));
}

// False when there is nothing to list. Value labels may be damaged where the variables are not.
bool checkWhole(
    const QString& path, const TStatFileDescription& file, FileKind kind, Listing& listing)
{
    if (file.isWhole())
        return true;
    listing.isPartial = file.variablesOutcome.isWhole();
    if (listing.isPartial) {
        failInput(path, 0,
            QStringLiteral("the value labels cannot be read, the variables are listed without "
                           "those that are missing: %1")
                .arg(describe(file.outcome)));
        return true;
    }
    return failInput(path, 0,
        QStringLiteral("cannot be read as %1 file: %2")
            .arg(kind == FileKind::Spss ? QStringLiteral("SPSS") : QStringLiteral("Stata"),
                describe(file.variablesOutcome)));
}

} // namespace

bool listStatFile(const QString& path, FileKind kind, bool asWritten, Listing& listing)
{
    const bool isSpss = kind == FileKind::Spss;
    const TStatFileKind statKind = isSpss ? TStatFileKind::Spss : TStatFileKind::Stata;
    if (isEncrypted(path)) {
        return failInput(
            path, 0, QStringLiteral("is encrypted; save it without a password and try again"));
    }
    const TStatFileDescription file = readStatDescription(path, statKind);
    if (!checkWhole(path, file, kind, listing))
        return false;
    listing.file = path;
    listing.kind = kindName(kind);
    listing.label = file.fileLabel;
    listing.version = versionText(file, kind);
    listing.encoding = file.encoding;
    listing.rowCount = file.rowCount;
    listing.notes = file.notes;
    if (asWritten) {
        listWritten(file, kind, listing);
        return true;
    }
    const TStatOutcome outcome = readStatOutcome(path, statKind);
    if (!outcome.isWhole() && !listing.isPartial) {
        listing.isPartial = true;
        failInput(path, 0,
            QStringLiteral("the importer does not read it whole: %1").arg(describe(outcome)));
    }
    if (isSpss) {
        TSPSSDataImport importer(path);
        listEstablished(importer, listing);
    } else {
        TSTATADataImport importer(path);
        listEstablished(importer, listing);
    }
    return true;
}
