#include "checking/ProblemTexts.h"

#include "text/JsonWriter.h"

using tessel::ProblemKind;

namespace {

struct KindText {
    ProblemKind kind;
    const char* text;
};

constexpr KindText kindTexts[] = {
    { ProblemKind::UnknownRecordType, "Lines with an unknown record type (rejected)" },
    { ProblemKind::EndsInIdentification, "Lines that end within their identification (rejected)" },
    { ProblemKind::IdNotANumber, "Identification items that are no numbers (line rejected)" },
    { ProblemKind::EndlessLine, "Lines that are too long (rejected)" },
    { ProblemKind::DamagedRecord, "Rows that belong nowhere (rejected)" },
    { ProblemKind::TextBeyondRecord, "Lines with text behind the last column of their record" },
    { ProblemKind::ControlCharacters, "Lines with control characters" },
    { ProblemKind::OtherEncoding, "Lines in another encoding than those before them" },
    { ProblemKind::NotUtf8, "Lines with bytes that are no UTF-8" },
    { ProblemKind::NotInDictionary, "Records and items that the dictionary does not have" },
    { ProblemKind::TooWideValue, "Values wider than their item" },
    { ProblemKind::KeyDiffers, "Cases whose identification is not that of their key" },
    { ProblemKind::SpecialWithoutCode, "Special values without a code, taken for missing" },
    { ProblemKind::FileChanged, "Files that changed while they were read" },
    { ProblemKind::IdBlank, "Blank identification items" },
    { ProblemKind::BlankIdentification, "Records without any identification" },
    { ProblemKind::NotANumber, "Texts where numbers are due" },
    { ProblemKind::UnfitNumber, "Numbers with more decimals or digits than fit" },
    { ProblemKind::OutOfRange, "Values below or above all codes" },
    { ProblemKind::OutsideValueSet, "Values between the codes" },
    { ProblemKind::MissingRecord, "Cases without a required record" },
    { ProblemKind::TooManyRecords, "More records than a case may have" },
    { ProblemKind::LevelWithoutParent, "Records whose level above has none" },
    { ProblemKind::DuplicateCase, "Cases that come again" },
    { ProblemKind::ScatteredCase, "Cases that go on elsewhere" },
    { ProblemKind::PartlySavedCase, "Cases saved before they were complete" },
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

// Appends a member with the comma before it.
void append(QByteArray& json, const char* name, const QString& text)
{
    json.append(json.size() == 1 ? "\"" : ",\"").append(name).append("\":");
    if (text.isNull())
        json.append("null");
    else
        appendJsonString(json, text);
}

void append(QByteArray& json, const char* name, qint64 number)
{
    json.append(",\"").append(name).append("\":");
    json.append(number > 0 ? QByteArray::number(number) : QByteArrayLiteral("null"));
}

} // namespace

QString describeKind(ProblemKind kind)
{
    return QLatin1String(textsOf(kind).text);
}

ShownProblem::ShownProblem(const tessel::DataProblem& problem,
    const tessel::DataDictionary& dictionary, const std::vector<tessel::SourceFile>& files)
    : kind(tessel::problemKindName(problem.kind))
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

QByteArray ShownProblem::json() const
{
    QByteArray json("{");
    append(json, "case", caseKey);
    append(json, "file", file);
    append(json, "firstFile", otherFile);
    append(json, "firstLine", otherLine);
    append(json, "kind", kind);
    append(json, "line", line);
    append(json, "record", record);
    append(json, "value", value);
    append(json, "variable", variable);
    return json.append('}');
}
