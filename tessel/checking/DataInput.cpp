#include "checking/DataInput.h"

#include "process/Console.h"
#include "reading/ReadInput.h"

#include <model_Tessel/CSProDataImport.h>
#include <model_Tessel/InputFile.h>

#include <tessel_data/CSProDb.h>
#include <tessel_data/CSProDbSource.h>
#include <tessel_data/CSProTextSource.h>
#include <tessel_data/DataError.h>
#include <tessel_data/StatSource.h>

#include <QFileInfo>

#include <optional>

using tessel::DataDictionary;
using tessel::DataSource;

namespace {

const QString& standardInput()
{
    static const QString name = QStringLiteral("-");
    return name;
}

// Encrypted, damaged or empty it is one all the same, and told as such.
bool isDbName(const QString& path)
{
    return path.endsWith(QLatin1String(".csdb"), Qt::CaseInsensitive)
        || path.endsWith(QLatin1String(".csdbe"), Qt::CaseInsensitive);
}

// The reader has told of a name that the dictionary does not have.
int languageOf(const DataDictionary& dictionary, const QString& name)
{
    for (int i = 0; i < dictionary.languages.size(); ++i) {
        if (dictionary.languages.at(i).name.compare(name, Qt::CaseInsensitive) == 0)
            return i;
    }
    return 0;
}

// Null, and told, when it cannot be read.
std::optional<DataDictionary> readDictionary(const QString& path, const DataInput& input)
{
    InputOptions options;
    options.dictionary = input.reading;
    const InputDictionary read = readInputDictionary(path, options);
    if (!read.file.hasDictionary())
        return std::nullopt;
    const TCSProDataImport* importer = read.file.csproImporter();
    if (!importer) {
        failInput(path, 0, QStringLiteral("is no CSPro dictionary"));
        return std::nullopt;
    }
    DataDictionary dictionary =
        DataDictionary::fromReader(*importer->dictionary, path, input.valueSets);
    dictionary.language = languageOf(dictionary, input.reading.language);
    return dictionary;
}

std::unique_ptr<DataSource> openCSProDb(const DataInput& input)
{
    const tessel::CSProDb db(input.first); // what is none is told so, not as a dictionary
    const auto dictionary =
        readDictionary(input.dictionary.isEmpty() ? input.first : input.dictionary, input);
    return dictionary ? std::make_unique<tessel::CSProDbSource>(input.first, *dictionary) : nullptr;
}

std::unique_ptr<DataSource> openText(const DataInput& input)
{
    const auto dictionary = readDictionary(input.first, input);
    return dictionary ? std::make_unique<tessel::CSProTextSource>(*dictionary, input.data)
                      : nullptr;
}

std::unique_ptr<DataSource> openStatFile(const DataInput& input, TStatFileKind kind)
{
    const auto tell = [&](const QString& value, const char* option) {
        if (!value.isEmpty()) {
            Console::tell(input.first, 0, Console::Severity::Note,
                QLatin1String(option)
                    + QLatin1String(" is for CSPro dictionaries and does nothing here"));
        }
    };
    tell(QString::fromLatin1(input.reading.encoding), "--encoding");
    tell(input.reading.language, "--language");
    return std::make_unique<tessel::StatSource>(input.first, kind);
}

std::unique_ptr<DataSource> open(const DataInput& input)
{
    switch (dataKindOf(input.first)) {
    case DataKind::CSProDb:
        return openCSProDb(input);
    case DataKind::Spss:
        return openStatFile(input, TStatFileKind::Spss);
    case DataKind::Stata:
        return openStatFile(input, TStatFileKind::Stata);
    case DataKind::Text:
        break;
    }
    return openText(input);
}

} // namespace

DataKind dataKindOf(const QString& path)
{
    if (!QFileInfo(path).isFile()) // a pipe gives its bytes only once
        return DataKind::Text;
    TInputFile file(path);
    if (!file.open()) // which is told when it is read
        return isDbName(path) ? DataKind::CSProDb : DataKind::Text;
    switch (dictionaryFileKind(file.head())) {
    case DictionaryFileKind::CSProDb:
        return DataKind::CSProDb;
    case DictionaryFileKind::Spss:
        return DataKind::Spss;
    case DictionaryFileKind::Stata:
        return DataKind::Stata;
    default:
        return isDbName(path) ? DataKind::CSProDb : DataKind::Text;
    }
}

QString checkDataInput(const DataInput& input)
{
    const DataKind kind = dataKindOf(input.first);
    if (!input.dictionary.isEmpty() && kind != DataKind::CSProDb)
        return QStringLiteral("--dictionary is for a CSPro DB; give the dictionary of text data "
                              "in front of them");
    if (kind != DataKind::Text) {
        return input.data.isEmpty()
            ? QString()
            : QStringLiteral("'%1' holds its own dictionary and is checked alone").arg(input.first);
    }
    if (input.first == standardInput())
        return QStringLiteral("the dictionary cannot be standard input");
    if (input.data.isEmpty() && QFileInfo::exists(input.first)) // else that is told
        return QStringLiteral("no data file given for the dictionary '%1'").arg(input.first);
    if (input.data.count(standardInput()) > 1)
        return QStringLiteral("standard input can be read only once");
    for (const QString& path : input.data) {
        if (path != standardInput() && dataKindOf(path) != DataKind::Text) {
            return QStringLiteral("'%1' holds its own dictionary; give it alone, a CSPro DB with "
                                  "--dictionary where another is wanted")
                .arg(path);
        }
    }
    return QString();
}

std::unique_ptr<DataSource> openDataSource(const DataInput& input)
{
    try {
        return open(input);
    } catch (const tessel::DataError& error) {
        failInput(error.file, 0, error.text);
        return nullptr;
    }
}

void tellAssumptions(const std::vector<tessel::SourceFile>& files)
{
    for (const tessel::SourceFile& file : files) {
        if (file.encoding == QLatin1String("windows-1252") && !file.hasByteOrderMark) {
            Console::tell(file.path, 0, Console::Severity::Note,
                QStringLiteral("has texts that are not valid UTF-8 and were read as windows-1252"));
        }
    }
}
