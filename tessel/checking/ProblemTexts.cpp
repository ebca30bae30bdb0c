#include "checking/ProblemTexts.h"

#include "text/JsonWriter.h"

using tessel::ProblemKind;

namespace {

struct KindText {
    ProblemKind kind;
    const char* name;
    const char* text;
};

constexpr KindText kindTexts[] = {
    { ProblemKind::UnknownRecordType, "unknown-record-type",
        "Lines with an unknown record type (rejected)" },
    { ProblemKind::EndsInIdentification, "ends-in-identification",
        "Lines that end within their identification (rejected)" },
    { ProblemKind::IdNotANumber, "id-not-a-number",
        "Identification items that are no numbers (line rejected)" },
    { ProblemKind::EndlessLine, "too-long-line", "Lines that are too long (rejected)" },
    { ProblemKind::DamagedRecord, "damaged-record", "Rows that belong nowhere (rejected)" },
    { ProblemKind::TextBeyondRecord, "text-beyond-record",
        "Lines with text behind the last column of their record" },
    { ProblemKind::ControlCharacters, "control-characters", "Lines with control characters" },
    { ProblemKind::OtherEncoding, "other-encoding",
        "Lines in another encoding than those before them" },
    { ProblemKind::FileChanged, "file-changed", "Files that changed while they were read" },
    { ProblemKind::IdBlank, "blank-id-item", "Blank identification items" },
    { ProblemKind::BlankIdentification, "blank-identification",
        "Records without any identification" },
    { ProblemKind::NotANumber, "not-a-number", "Texts where numbers are due" },
    { ProblemKind::UnfitNumber, "unfit-number", "Numbers with more decimals or digits than fit" },
    { ProblemKind::OutOfRange, "out-of-range", "Values below or above all codes" },
    { ProblemKind::OutsideValueSet, "outside-value-set", "Values between the codes" },
    { ProblemKind::MissingRecord, "missing-record", "Cases without a required record" },
    { ProblemKind::TooManyRecords, "too-many-records", "More records than a case may have" },
    { ProblemKind::LevelWithoutParent, "level-without-parent",
        "Records whose level above has none" },
    { ProblemKind::DuplicateCase, "duplicate-case", "Cases that come again" },
    { ProblemKind::ScatteredCase, "scattered-case", "Cases that go on elsewhere" },
    { ProblemKind::PartlySavedCase, "partly-saved-case", "Cases saved before they were complete" },
};

static_assert(sizeof(kindTexts) / sizeof(kindTexts[0]) == tessel::ProblemKindCount);

const KindText& textsOf(ProblemKind kind)
{
    for (const KindText& texts : kindTexts) {
        if (texts.kind == kind)
            return texts;
    }
    return kindTexts[0];
}

QString pathOf(const std::vector<tessel::SourceFile>& files, int index)
{
    return index < 0 ? QString() : files[std::size_t(index)].path;
}

QJsonValue numberOrNull(qint64 number)
{
    return number > 0 ? QJsonValue(number) : QJsonValue();
}

} // namespace

QString problemName(ProblemKind kind)
{
    return QLatin1String(textsOf(kind).name);
}

QString describeKind(ProblemKind kind)
{
    return QLatin1String(textsOf(kind).text);
}

ShownProblem::ShownProblem(const tessel::DataProblem& problem,
    const tessel::DataDictionary& dictionary, const std::vector<tessel::SourceFile>& files)
    : kind(problemName(problem.kind))
    , file(pathOf(files, problem.file))
    , line(problem.line)
    , caseKey(problem.caseKey)
    , value(problem.value)
    , otherFile(pathOf(files, problem.otherFile))
    , otherLine(problem.otherLine)
{
    if (problem.record >= 0)
        record = dictionary.records[std::size_t(problem.record)].name;
    if (problem.variable >= 0)
        variable = dictionary.variables[std::size_t(problem.variable)].name;
}

QJsonObject ShownProblem::toJson() const
{
    return { { QStringLiteral("file"), file }, { QStringLiteral("line"), numberOrNull(line) },
        { QStringLiteral("case"), textOrNull(caseKey) },
        { QStringLiteral("record"), textOrNull(record) },
        { QStringLiteral("variable"), textOrNull(variable) },
        { QStringLiteral("value"), textOrNull(value) }, { QStringLiteral("kind"), kind },
        { QStringLiteral("firstFile"), textOrNull(otherFile) },
        { QStringLiteral("firstLine"), numberOrNull(otherLine) } };
}
