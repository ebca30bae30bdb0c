#include "reading/StatFile.h"

#include "process/Console.h"
#include "text/ShownText.h"

#include <model_Tessel/SPSSDataImport.h>
#include <model_Tessel/STATADataImport.h>
#include <model_Tessel/StatDictionary.h>
#include <model_Tessel/StatInput.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <new>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace {

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

QString describe(const TStatOutcome& outcome)
{
    if (outcome.errorText.isEmpty())
        return QStringLiteral("it ends early");
    QStringList texts { outcome.errorText };
    for (const QString& detail : outcome.errorDetails)
        texts += shortened(detail);
    return texts.join(QLatin1String("; "));
}

// libreadstat says the same where a piece is larger than it takes, 16 MiB. Where memory is lacking
// there is no room for a few of those. Direct calls, as the compiler may leave out expressions.
void checkMemory(const TStatOutcome& outcome)
{
    constexpr std::size_t SomePieces = 4 * 16 * 1024 * 1024;
    if (outcome.error == READSTAT_ERROR_MALLOC)
        ::operator delete(::operator new(SomePieces));
}

bool failRead(const QString& path, const QString& reason)
{
    return failInput(path, 0,
        QStringLiteral("cannot be read: %1; try again when nothing writes to it and the disk is in "
                       "order")
            .arg(reason));
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

QString unsupportedText(TStatFileKind kind, const QString& name, const TStatOutcome& outcome)
{
    return QStringLiteral("is a sound %1 file, but not supported by libreadstat, which reads it: "
                          "%2; save it %3")
        .arg(name, describe(outcome), wayAround(kind, outcome.error));
}

// False when there is nothing to list. Value labels may be damaged where the variables are not.
bool tellUnread(const QString& path, const TStatFileDescription& file, bool& isPartial)
{
    isPartial = file.variablesOutcome.isWhole();
    if (isPartial) {
        failInput(path, 0,
            QStringLiteral("the value labels cannot be read, the variables are listed without "
                           "those that are missing: %1")
                .arg(describe(file.outcome)));
        return true;
    }
    const QString name =
        file.kind == TStatFileKind::Spss ? QStringLiteral("SPSS") : QStringLiteral("Stata");
    const FileKind kind = file.kind == TStatFileKind::Spss ? FileKind::Spss : FileKind::Stata;
    if (kindOfContent(path) != kind) {
        return failInput(path, 0,
            QStringLiteral("is no %1 file; without --type its kind is found by its content")
                .arg(name));
    }
    if (file.variablesOutcome.isUnsupported) {
        return failInput(path, 0, unsupportedText(file.kind, name, file.variablesOutcome));
    }
    return failInput(path, 0,
        QStringLiteral("cannot be read as %1 file: %2; if it is damaged or cut off, get it anew")
            .arg(name, describe(file.variablesOutcome)));
}

bool checkWhole(const QString& path, const TStatFileDescription& file, bool& isPartial)
{
    if (file.isWhole())
        return true;
    if (!file.outcome.inputFailure.isEmpty())
        return failRead(path, file.outcome.inputFailure);
    checkMemory(file.outcome);
    checkMemory(file.variablesOutcome);
    return tellUnread(path, file, isPartial);
}

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
void tellAssumedEncoding(const TStatFileDescription& file)
{
    constexpr int FirstUnicodeFormat = 118;
    if (file.kind != TStatFileKind::Stata || file.formatVersion >= FirstUnicodeFormat
        || isAscii(file))
        return;
    Console::tell(file.path, 0, Console::Severity::Warning,
        QStringLiteral("Stata format %1 tells no encoding, so the texts were read as windows-1252; "
                       "if letters look wrong, save the file with Stata 14 or later")
            .arg(file.formatVersion));
}

template <typename Importer>
std::unique_ptr<TDataImport> opened(const QString& path, TStatInput& input)
{
    auto importer = std::make_unique<Importer>(path);
    importer->setInput(&input);
    const QuietOutput quiet;
    importer->openFile();
    importer->setInput(nullptr);
    return importer;
}

} // namespace

bool describeStatFile(const QString& path, FileKind kind, TStatInput& input,
    TStatFileDescription& file, bool& isPartial)
{
    if (!input.open(path))
        return failRead(path, input.failure());
    if (isEncrypted(path)) {
        return failInput(
            path, 0, QStringLiteral("is encrypted; save it without a password and try again"));
    }
    file = readStatDescription(
        input, kind == FileKind::Spss ? TStatFileKind::Spss : TStatFileKind::Stata);
    if (!checkWhole(path, file, isPartial))
        return false;
    tellAssumedEncoding(file);
    return true;
}

std::unique_ptr<TDataImport> importStatFile(
    const TStatFileDescription& file, TStatInput& input, bool& isPartial)
{
    const TStatOutcome outcome = readStatOutcome(input, file.kind);
    if (!checkRead(input))
        return nullptr;
    checkMemory(outcome);
    if (!outcome.isWhole() && !isPartial) {
        isPartial = true;
        failInput(file.path, 0,
            QStringLiteral("the importer does not read it whole: %1").arg(describe(outcome)));
    }
    std::unique_ptr<TDataImport> importer = file.kind == TStatFileKind::Spss
        ? opened<TSPSSDataImport>(file.path, input)
        : opened<TSTATADataImport>(file.path, input);
    return checkRead(input) ? std::move(importer) : nullptr;
}

bool checkRead(const TStatInput& input)
{
    const QString failure = input.failure();
    return failure.isEmpty() || failRead(input.path(), failure);
}
