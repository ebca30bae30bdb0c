#include "checking/DataInput.h"

#include "process/Console.h"
#include "reading/ReadDataDictionary.h"
#include "reading/ReadInput.h"
#include "text/ShownText.h"

#include <model_Tessel/InputFile.h>

#include <tessel_data/CSProDb.h>
#include <tessel_data/CSProDbSource.h>
#include <tessel_data/CSProTextSource.h>
#include <tessel_data/DataError.h>
#include <tessel_data/StatSource.h>

#include <QFileInfo>

using tessel::DataDictionary;

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

DictionaryFile readDictionary(const QString& path, const DataInput& input)
{
    InputOptions options;
    options.dictionary = input.reading;
    options.isTold = input.isDictionaryTold;
    return readInputDictionary(path, options).file;
}

tessel::LineEncoding encodingOf(const QString& name)
{
    if (name == QLatin1String("utf-8"))
        return tessel::LineEncoding::Utf8;
    return name == QLatin1String("windows-1252") ? tessel::LineEncoding::Windows1252
                                                 : tessel::LineEncoding::Unknown;
}

OpenedData openCSPro(const DataInput& input)
{
    if (input.kind == DataKind::CSProDb) { // what is none is told so, not as a dictionary
        const tessel::CSProDb db(input.first);
    }
    const QString path = input.dictionary.isEmpty() ? input.first : input.dictionary;
    const DictionaryFile file = readDictionary(path, input);
    if (!file.csproImporter()) {
        if (file.hasDictionary())
            failInput(path, 0, QStringLiteral("is no CSPro dictionary"));
        return {};
    }
    const DataDictionary dictionary =
        dataDictionaryOf(file, path, input.valueSets, input.reading.language);
    if (input.kind == DataKind::CSProDb)
        return { std::make_unique<tessel::CSProDbSource>(input.first, dictionary), file.text() };
    return { std::make_unique<tessel::CSProTextSource>(
                 dictionary, input.data, encodingOf(input.dataEncoding)),
        file.text() };
}

OpenedData openStatFile(const DataInput& input)
{
    const DictionaryFile file = readDictionary(input.first, input);
    if (file.hasDictionary() && !file.isWhole()) {
        failInput(input.first, 0,
            QStringLiteral("its data are not read, as labels of their values are missing"));
    }
    if (!file.isWhole())
        return {};
    return { std::make_unique<tessel::StatSource>(file), QByteArray() };
}

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

} // namespace

QString checkDataInput(DataInput& input)
{
    input.kind = dataKindOf(input.first);
    if (!input.dictionary.isEmpty() && input.kind != DataKind::CSProDb)
        return QStringLiteral("--dictionary is for a CSPro DB; give the dictionary of text data "
                              "in front of them");
    if (input.kind != DataKind::Text) {
        return input.data.isEmpty()
            ? QString()
            : QStringLiteral("'%1' holds its own dictionary; give it alone").arg(input.first);
    }
    if (input.first == standardInput())
        return QStringLiteral("the dictionary cannot be standard input");
    if (input.data.isEmpty() && QFileInfo::exists(input.first)) // else that is told
        return QStringLiteral("no data file given for the dictionary '%1'").arg(input.first);
    if (input.data.count(standardInput()) > 1)
        return QStringLiteral("standard input can be read only once");
    for (const QString& path : qAsConst(input.data)) {
        if (path != standardInput() && dataKindOf(path) != DataKind::Text) {
            return QStringLiteral("'%1' holds its own dictionary; give it alone, a CSPro DB with "
                                  "--dictionary where another is wanted")
                .arg(path);
        }
    }
    return QString();
}

OpenedData openData(const DataInput& input)
{
    const bool isCSPro = input.kind == DataKind::Text || input.kind == DataKind::CSProDb;
    if (input.kind != DataKind::Text && !input.dataEncoding.isEmpty()) {
        Console::tell(input.first, 0, Console::Severity::Note,
            QStringLiteral("--data-encoding is for CSPro text data and does nothing here"));
    }
    try {
        return isCSPro ? openCSPro(input) : openStatFile(input);
    } catch (const tessel::DataError& error) {
        failInput(error.file, 0, error.text);
        return {};
    }
}

bool isDataEncoding(const QString& name)
{
    return encodingOf(name) != tessel::LineEncoding::Unknown;
}

void tellAssumptions(const DataInput& input, const std::vector<tessel::SourceFile>& files)
{
    if (input.kind != DataKind::Text) // their dictionary tells, or nothing has to be assumed
        return;
    const auto tell = [](const tessel::SourceFile& file, const QString& text) {
        Console::tell(file.path, 0, Console::Severity::Note, text);
    };
    for (const tessel::SourceFile& file : files) {
        if (file.encoding == QLatin1String("windows-1252") && input.dataEncoding.isEmpty()) {
            tell(file,
                QStringLiteral("has texts that are not valid UTF-8 and was read as windows-1252; "
                               "--data-encoding says what it is"));
        }
        if (file.hasByteOrderMark && input.dataEncoding == QLatin1String("windows-1252")) {
            tell(file,
                QStringLiteral("has a byte-order mark and was read as UTF-8, not as "
                               "--data-encoding says"));
        }
        if (file.linesWithCr > 0) {
            tell(file,
                QStringLiteral("has %1 with carriage returns before the end, each read as one "
                               "record; where carriage returns end the lines, convert them to "
                               "line feeds")
                    .arg(plural(file.linesWithCr, QStringLiteral("line"))));
        }
    }
}
