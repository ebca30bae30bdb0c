#include <model_Tessel/DictionaryFile_p.h>

#include <model_Tessel/ProblemText.h>
#include <model_Tessel/SPSSDataImport.h>
#include <model_Tessel/STATADataImport.h>
#include <model_Tessel/StatDictionary.h>
#include <model_Tessel/StatInput.h>

#include <algorithm>
#include <cstddef>
#include <new>

namespace DictionaryFiles {

namespace {

constexpr int HeadSize = 32;

QString describe(const TStatOutcome& outcome)
{
    if (outcome.errorText.isEmpty())
        return QStringLiteral("it ends early");
    QStringList texts { outcome.errorText };
    for (const QString& detail : outcome.errorDetails)
        texts += quotedText(detail);
    return texts.join(QLatin1String("; "));
}

// libreadstat says the same where a piece is larger than it takes, 16 MiB. Where memory is lacking
// there is no room for a few of those. Direct calls, as the compiler may leave out expressions.
void checkMemory(const TStatOutcome& outcome)
{
    constexpr std::size_t SomePieces = std::size_t(64) * 1024 * 1024;
    if (outcome.error == READSTAT_ERROR_MALLOC)
        ::operator delete(::operator new(SomePieces));
}

QString nameOf(TStatFileKind kind)
{
    return kind == TStatFileKind::Spss ? QStringLiteral("SPSS") : QStringLiteral("Stata");
}

// False, and told, when the file could not be read until now.
bool checkInput(DictionaryFile& file)
{
    const QString failure = describeFailure(*file.input);
    return failure.isEmpty() || fail(file, Kind::UnreadableFile, failure);
}

// The usual reasons are sizes: libreadstat takes no text or set of labels above 16 MiB.
QString wayAround(TStatFileKind kind, readstat_error_t error)
{
    switch (error) {
    case READSTAT_ERROR_UNSUPPORTED_CHARSET:
        return QStringLiteral("in Unicode");
    case READSTAT_ERROR_BAD_TIMESTAMP_STRING:
        return QStringLiteral("anew with another program, which writes another date");
    default:
        return kind == TStatFileKind::Spss
            ? QStringLiteral("with fewer labels in one set")
            : QStringLiteral("with shorter texts (strL) or fewer labels in one set");
    }
}

QString unsupportedText(TStatFileKind kind, const TStatOutcome& outcome)
{
    return QStringLiteral("is a sound %1 file, but not supported by libreadstat, which reads it: "
                          "%2; save it %3")
        .arg(nameOf(kind), describe(outcome), wayAround(kind, outcome.error));
}

bool failVariables(DictionaryFile& file, const TStatFileDescription& description)
{
    const TStatFileKind kind = description.kind;
    const QString name = nameOf(kind);
    const auto wanted =
        kind == TStatFileKind::Spss ? DictionaryFileKind::Spss : DictionaryFileKind::Stata;
    if (file.kind != wanted)
        return fail(file, Kind::OtherKind, QStringLiteral("is no %1 file").arg(name));
    const TStatOutcome& outcome = description.variablesOutcome;
    if (outcome.isUnsupported)
        return fail(file, Kind::Unsupported, unsupportedText(kind, outcome));
    return fail(file, Kind::Damaged,
        QStringLiteral("cannot be read as %1 file: %2; if it is damaged or cut off, get it anew")
            .arg(name, describe(outcome)));
}

// False when nothing can be read. Value labels may be damaged where the variables are not.
bool tellUnread(DictionaryFile& file, const TStatFileDescription& description)
{
    if (!description.variablesOutcome.isWhole())
        return failVariables(file, description);
    fail(file, Kind::LabelsMissing,
        QStringLiteral("the value labels cannot be read, and those that are missing are left out: "
                       "%1")
            .arg(describe(description.outcome)));
    return true;
}

bool checkDescription(DictionaryFile& file, const TStatFileDescription& description)
{
    if (description.isWhole())
        return true;
    if (!checkInput(file))
        return false;
    checkMemory(description.outcome);
    checkMemory(description.variablesOutcome);
    return tellUnread(file, description);
}

// ---- the encoding

bool isAscii(const QString& text)
{
    return std::all_of(
        text.begin(), text.end(), [](QChar character) { return character.unicode() < 128; });
}

bool isAscii(const TStatFileDescription& file)
{
    return isAscii(file.fileLabel) && isAscii(file.notes.join(QString()))
        && std::all_of(file.variables.begin(), file.variables.end(),
            [](const TStatVariableDescription& variable) {
                return isAscii(variable.name) && isAscii(variable.label);
            })
        && std::all_of(
            file.labelSets.begin(), file.labelSets.end(), [](const TStatLabelSet& labelSet) {
                return std::all_of(labelSet.labels.begin(), labelSet.labels.end(),
                    [](const TStatLabelledValue& label) {
                        return isAscii(label.value.text) && isAscii(label.label);
                    });
            });
}

// Stata files say nothing of their encoding, which is UTF-8 since format 118.
void checkEncoding(DictionaryFile& file)
{
    constexpr int FirstUnicodeFormat = 118;
    const TStatFileDescription& description = *file.description;
    file.encoding = description.encoding;
    if (description.kind != TStatFileKind::Stata)
        return;
    const bool isUnicode = description.formatVersion >= FirstUnicodeFormat;
    file.encoding = isUnicode ? QStringLiteral("UTF-8") : QStringLiteral("windows-1252");
    if (isUnicode)
        return;
    file.isEncodingAssumed = !isAscii(description);
    if (!file.isEncodingAssumed)
        return;
    warn(file, Kind::AssumedStataEncoding,
        QStringLiteral("Stata format %1 tells no encoding, so the texts were read as windows-1252; "
                       "if letters look wrong, save the file with Stata 14 or later")
            .arg(description.formatVersion));
}

// ---- the importer

template <typename Importer> void openThrough(TStatInput& input, Importer& importer)
{
    importer.setInput(&input);
    importer.openFile();
    importer.setInput(nullptr);
}

void openImporter(DictionaryFile& file)
{
    if (file.description->kind == TStatFileKind::Spss) {
        auto* importer = new TSPSSDataImport(file.path);
        file.importer.reset(importer);
        openThrough(*file.input, *importer);
    } else {
        auto* importer = new TSTATADataImport(file.path);
        file.importer.reset(importer);
        importer->setQuiet(true); // checkImport() has told
        openThrough(*file.input, *importer);
    }
}

// libreadstat passes over damage in one way for the description and in another for the importers.
bool checkImport(DictionaryFile& file)
{
    const TStatOutcome outcome = readStatOutcome(*file.input, file.description->kind);
    if (!checkInput(file))
        return false;
    checkMemory(outcome);
    if (!outcome.isWhole() && file.isWhole()) {
        fail(file, Kind::ImporterStopped,
            QStringLiteral("the importer does not read it whole: %1").arg(describe(outcome)));
    }
    return true;
}

bool import(DictionaryFile& file)
{
    if (!checkImport(file))
        return false;
    openImporter(file);
    return checkInput(file);
}

bool openInput(DictionaryFile& file)
{
    file.input = std::make_shared<TStatInput>();
    if (!file.input->open(file.path))
        return checkInput(file);
    const QByteArray head = file.input->bytes(0, HeadSize);
    if (isEncryptedSpss(head)) {
        return fail(file, Kind::Encrypted,
            QStringLiteral("is encrypted; save it without a password and try again"));
    }
    file.kind = dictionaryFileKind(head);
    return true;
}

bool readDescription(DictionaryFile& file, TStatFileKind kind)
{
    auto description =
        std::make_unique<TStatFileDescription>(readStatDescription(*file.input, kind));
    if (!checkDescription(file, *description))
        return false;
    file.description = std::move(description);
    checkEncoding(file);
    return true;
}

} // namespace

void readStat(DictionaryFile& file, DictionaryFileKind kind, const DictionaryFileOptions& options)
{
    const TStatFileKind statKind =
        kind == DictionaryFileKind::Spss ? TStatFileKind::Spss : TStatFileKind::Stata;
    if (!openInput(file) || !readDescription(file, statKind))
        return;
    if (options.withStatImporter && !import(file)) {
        file.importer.reset();
        file.description.reset();
    }
}

} // namespace DictionaryFiles
