#include "reading/StatFile.h"

#include "process/Console.h"

#include <model_Tessel/SPSSDataImport.h>
#include <model_Tessel/STATADataImport.h>
#include <model_Tessel/StatDictionary.h>

#include <algorithm>
#include <cstdio>

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
    texts += outcome.errorDetails;
    return texts.join(QLatin1String("; "));
}

// False when there is nothing to list. Value labels may be damaged where the variables are not.
bool checkWhole(const QString& path, const TStatFileDescription& file, bool& isPartial)
{
    if (file.isWhole())
        return true;
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
    return failInput(path, 0,
        QStringLiteral("cannot be read as %1 file: %2; if it is damaged or cut off, get it anew")
            .arg(name, describe(file.variablesOutcome)));
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

} // namespace

bool describeStatFile(
    const QString& path, FileKind kind, TStatFileDescription& file, bool& isPartial)
{
    if (isEncrypted(path)) {
        return failInput(
            path, 0, QStringLiteral("is encrypted; save it without a password and try again"));
    }
    file = readStatDescription(
        path, kind == FileKind::Spss ? TStatFileKind::Spss : TStatFileKind::Stata);
    if (!checkWhole(path, file, isPartial))
        return false;
    tellAssumedEncoding(file);
    return true;
}

std::unique_ptr<TDataImport> importStatFile(const TStatFileDescription& file, bool& isPartial)
{
    const TStatOutcome outcome = readStatOutcome(file.path, file.kind);
    if (!outcome.isWhole() && !isPartial) {
        isPartial = true;
        failInput(file.path, 0,
            QStringLiteral("the importer does not read it whole: %1").arg(describe(outcome)));
    }
    std::unique_ptr<TDataImport> importer;
    if (file.kind == TStatFileKind::Spss)
        importer = std::make_unique<TSPSSDataImport>(file.path);
    else
        importer = std::make_unique<TSTATADataImport>(file.path);
    const QuietOutput quiet;
    importer->openFile();
    return importer;
}
