#include <model_Tessel/DictionaryFile_p.h>

#include <model_Tessel/CSProDataImport.h>
#include <model_Tessel/InputFile.h>
#include <model_Tessel/StatDictionary.h>
#include <model_Tessel/StatInput.h>
#include <model_Tessel/TextEncoding.h>

#include <algorithm>
#include <new>

using namespace DictionaryFiles;

namespace {

// The largest real dictionary is half a megabyte; decoded, a file of this size still fits.
constexpr qint64 MebiByte = 1'048'576;
constexpr qint64 LargestDictionary = 256 * MebiByte;

// "$FL2", or "$FL3" for a compressed file.
bool isSpss(const QByteArray& head)
{
    return head.startsWith("$FL2") || head.startsWith("$FL3") || isEncryptedSpss(head);
}

// Marked text since format 117; before it the number of the format, the byte order (1 or 2), and 1.
bool isStata(const QByteArray& head)
{
    if (head.startsWith("<stata_dta>"))
        return true;
    if (head.size() < 4)
        return false;
    const auto format = static_cast<unsigned char>(head.at(0));
    return format >= 102 && format <= 116 && (head.at(1) == 1 || head.at(1) == 2)
        && head.at(2) == 1;
}

bool isSQLite(const QByteArray& head)
{
    return head.startsWith(QByteArray("SQLite format 3", 16)); // the zero at its end included
}

bool isStatKind(DictionaryFileKind kind)
{
    return kind == DictionaryFileKind::Spss || kind == DictionaryFileKind::Stata;
}

void note(DictionaryFile& file, Kind kind, const char* text)
{
    file.problems.append({ Severity::Note, kind, QString::fromLatin1(text) });
}

void noteUnused(DictionaryFile& file, DictionaryFileKind kind, const DictionaryFileOptions& options)
{
    const bool hasEncoding = !options.encoding.isEmpty();
    if (isStatKind(kind)) {
        if (hasEncoding)
            note(file, Kind::EncodingUnused,
                "an encoding is for CSPro dictionaries and does nothing here");
        if (!options.language.isEmpty())
            note(file, Kind::LanguageUnused,
                "a language is for CSPro dictionaries and does nothing here");
    } else if (file.kind == DictionaryFileKind::CSProDb && hasEncoding) {
        note(file, Kind::DbEncodingUnused,
            "an encoding does nothing here, as the texts of a CSPro DB are UTF-8");
    }
}

bool failOtherKind(DictionaryFile& file)
{
    return fail(file, Kind::OtherKind,
        file.kind == DictionaryFileKind::Spss
            ? QStringLiteral("is no CSPro dictionary but an SPSS file")
            : QStringLiteral("is no CSPro dictionary but a Stata file"));
}

bool failDb(DictionaryFile& file)
{
    return fail(file, Kind::DbNotOpened,
        QStringLiteral("is a CSPro DB or other SQLite file, which this program does not read; "
                       "open its dictionary (.dcf) instead"));
}

bool readBytes(DictionaryFile& file, TInputFile& input, QByteArray& bytes)
{
    if (input.size() > LargestDictionary) {
        return fail(file, Kind::UnreadableFile,
            QStringLiteral("is larger than %1 MiB, which no dictionary is")
                .arg(LargestDictionary / MebiByte));
    }
    return input.readAll(bytes) || fail(file, Kind::UnreadableFile, input.errorText());
}

void readText(DictionaryFile& file, TInputFile& input, const DictionaryFileOptions& options)
{
    QByteArray bytes;
    if (readBytes(file, input, bytes))
        readCSPro(file, bytes, options);
}

void readOpened(DictionaryFile& file, TInputFile& input, const DictionaryFileOptions& options)
{
    file.kind = dictionaryFileKind(input.head());
    const DictionaryFileKind kind =
        options.kind == DictionaryFileKind::Unknown ? file.kind : options.kind;
    noteUnused(file, kind, options);
    if (isStatKind(kind))
        readStat(file, kind, options);
    else if (isStatKind(file.kind))
        failOtherKind(file);
    else if (file.kind == DictionaryFileKind::CSProDb)
        failDb(file);
    else
        readText(file, input, options);
}

// Runs the reading of a file; what memory does not suffice for becomes a problem like others.
template <typename Read> DictionaryFile guarded(const QString& path, Read read)
{
    DictionaryFile file;
    file.path = path;
    try {
        read(file);
    } catch (const std::bad_alloc&) {
        file.importer.reset();
        file.description.reset();
        fail(file, Kind::OutOfMemory, QStringLiteral("needs more memory than there is"));
    }
    return file;
}

} // namespace

bool DictionaryFiles::isEncryptedSpss(const QByteArray& head)
{
    return head.mid(8, 12) == "ENCRYPTEDSAV"; // behind eight bytes
}

bool DictionaryFiles::fail(DictionaryFile& file, Kind kind, const QString& text)
{
    file.problems.append({ Severity::Error, kind, text });
    return false;
}

void DictionaryFiles::warn(DictionaryFile& file, Kind kind, const QString& text)
{
    file.problems.append({ Severity::Warning, kind, text });
}

DictionaryFileKind dictionaryFileKind(const QByteArray& head)
{
    if (isSQLite(head))
        return DictionaryFileKind::CSProDb;
    if (isSpss(head))
        return DictionaryFileKind::Spss;
    return isStata(head) ? DictionaryFileKind::Stata : DictionaryFileKind::CSPro;
}

void DictionaryImporterDeleter::operator()(TDataImport* importer) const
{
    if (const auto* cspro = dynamic_cast<TCSProDataImport*>(importer))
        delete cspro->dictionary; // with its message box
    delete importer;
}

DictionaryFile::DictionaryFile() = default;
DictionaryFile::~DictionaryFile() = default;
DictionaryFile::DictionaryFile(DictionaryFile&& other) noexcept = default;
DictionaryFile& DictionaryFile::operator=(DictionaryFile&& other) noexcept = default;

bool DictionaryFile::hasDictionary() const
{
    return importer || description;
}

bool DictionaryFile::isWhole() const
{
    return hasDictionary()
        && std::none_of(
            problems.cbegin(), problems.cend(), [](const DictionaryFileProblem& problem) {
                return problem.severity == DictionaryFileProblem::Severity::Error;
            });
}

TCSProDataImport* DictionaryFile::csproImporter() const
{
    return dynamic_cast<TCSProDataImport*>(importer.get());
}

DictionaryPointer DictionaryFile::buildTree(const QVector<LookupDictionary>& lookups) const
{
    if (importer)
        return DictionaryPointer(buildDictionary(*importer, lookups));
    return DictionaryPointer(description ? buildDictionary(*description, lookups) : nullptr);
}

QByteArray DictionaryFile::text() const
{
    return decodeText(bytes, encoding.toLatin1()).text.toUtf8();
}

DictionaryFile readDictionaryFile(const QString& path, const DictionaryFileOptions& options)
{
    return guarded(path, [&](DictionaryFile& file) {
        TInputFile input(path);
        if (input.open())
            readOpened(file, input, options);
        else
            fail(file, Kind::UnreadableFile, input.errorText());
    });
}

DictionaryFile readDictionaryFile(
    const QString& path, const QByteArray& dictionary, const DictionaryFileOptions& options)
{
    return guarded(path, [&](DictionaryFile& file) {
        file.kind = DictionaryFileKind::CSProDb;
        noteUnused(file, DictionaryFileKind::CSProDb, options);
        readCSPro(file, dictionary, options);
    });
}

QString describeFailure(const TStatInput& input)
{
    const QString failure = input.failure();
    if (failure.isEmpty())
        return QString();
    return QStringLiteral("cannot be read: %1; try again when nothing writes to it and the disk is "
                          "in order")
        .arg(failure);
}
