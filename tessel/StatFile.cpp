#include "StatFile.h"

#include <model_Tessel/SPSSDataImport.h>
#include <model_Tessel/STATADataImport.h>
#include <model_Tessel/StatDictionary.h>

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
    return checkWhole(path, file, isPartial);
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
