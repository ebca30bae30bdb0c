// What opening an SPSS or Stata file costs beside two bare passes of libreadstat over it, whose
// handlers only count. Compare the figures within one run.
#include <model_Tessel/SPSSDataImport.h>
#include <model_Tessel/STATADataImport.h>
#include <model_Tessel/StatDictionary.h>

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QFile>
#include <QLoggingCategory>
#include <QTemporaryDir>

#include <readstat.h>

#include <cstdint>
#include <memory>
#include <string>

namespace {

constexpr int LabelsOfASet = 20;

struct Shape {
    const char* name;
    int variables;
    int labelSets; // each variable has one of them
    int rows;
};

constexpr Shape shapes[] = {
    { "short", 200, 20, 10 },
    { "long", 200, 20, 500'000 },
    { "wide", 10'000, 10'000, 10 },
};

// ---- the files

void check(readstat_error_t error)
{
    if (error != READSTAT_OK)
        qFatal("libreadstat: %s", readstat_error_message(error));
}

ssize_t writeBytes(const void* bytes, size_t size, void* file)
{
    return static_cast<QFile*>(file)->write(
        static_cast<const char*>(bytes), static_cast<qint64>(size));
}

// SPSS numbers are doubles; small numbers keep the Stata file small too.
readstat_type_t typeOf(TStatFileKind kind)
{
    return kind == TStatFileKind::Spss ? READSTAT_TYPE_DOUBLE : READSTAT_TYPE_INT8;
}

void addLabelSets(readstat_writer_t* writer, const Shape& shape, TStatFileKind kind)
{
    const bool isSpss = kind == TStatFileKind::Spss;
    for (int number = 0; number < shape.labelSets; ++number) {
        const QByteArray name = "set" + QByteArray::number(number);
        readstat_label_set_t* set = readstat_add_label_set(
            writer, isSpss ? READSTAT_TYPE_DOUBLE : READSTAT_TYPE_INT32, name.constData());
        for (int code = 1; code <= LabelsOfASet; ++code) {
            const QByteArray label = "Answer number " + QByteArray::number(code);
            if (isSpss)
                readstat_label_double_value(set, code, label.constData());
            else
                readstat_label_int32_value(set, code, label.constData());
        }
    }
}

void addVariables(readstat_writer_t* writer, const Shape& shape, TStatFileKind kind)
{
    for (int number = 0; number < shape.variables; ++number) {
        const QByteArray name = "Q" + QByteArray::number(number);
        const QByteArray label = "Question number " + QByteArray::number(number);
        readstat_variable_t* variable =
            readstat_add_variable(writer, name.constData(), typeOf(kind), 0);
        readstat_variable_set_label(variable, label.constData());
        readstat_variable_set_format(variable, kind == TStatFileKind::Spss ? "F2.0" : "%8.0g");
        readstat_variable_set_label_set(variable, writer->label_sets[number % shape.labelSets]);
    }
}

void writeRow(readstat_writer_t* writer, int row, TStatFileKind kind)
{
    check(readstat_begin_row(writer));
    for (int index = 0; index < writer->variables_count; ++index) {
        const readstat_variable_t* variable = writer->variables[index];
        const int code = 1 + (row + index) % LabelsOfASet;
        check(kind == TStatFileKind::Spss
                ? readstat_insert_double_value(writer, variable, code)
                : readstat_insert_int8_value(writer, variable, static_cast<std::int8_t>(code)));
    }
    check(readstat_end_row(writer));
}

void writeFile(const Shape& shape, TStatFileKind kind, const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        qFatal("cannot write %s", qUtf8Printable(path));
    const std::unique_ptr<readstat_writer_t, decltype(&readstat_writer_free)> owner(
        readstat_writer_init(), readstat_writer_free);
    readstat_writer_t* writer = owner.get();
    check(readstat_set_data_writer(writer, writeBytes));
    addLabelSets(writer, shape, kind);
    addVariables(writer, shape, kind);
    if (kind == TStatFileKind::Spss) {
        check(readstat_writer_set_compression(writer, READSTAT_COMPRESS_ROWS));
        check(readstat_begin_writing_sav(writer, &file, shape.rows));
    } else {
        check(readstat_begin_writing_dta(writer, &file, shape.rows));
    }
    for (int row = 0; row < shape.rows; ++row)
        writeRow(writer, row, kind);
    check(readstat_end_writing(writer));
}

// ---- what is measured

struct Counts {
    int labels = 0;
    int variables = 0;
};

int countLabel(const char*, readstat_value_t, const char*, void* counts)
{
    ++static_cast<Counts*>(counts)->labels;
    return READSTAT_HANDLER_OK;
}

int countVariable(int, readstat_variable_t*, const char*, void* counts)
{
    ++static_cast<Counts*>(counts)->variables;
    return READSTAT_HANDLER_OK;
}

void parse(const QString& path, TStatFileKind kind, Counts& counts,
    readstat_value_label_handler onLabel, readstat_variable_handler onVariable)
{
    const std::unique_ptr<readstat_parser_t, decltype(&readstat_parser_free)> parser(
        readstat_parser_init(), readstat_parser_free);
    readstat_set_value_label_handler(parser.get(), onLabel);
    readstat_set_variable_handler(parser.get(), onVariable);
    const auto parseFile = kind == TStatFileKind::Spss ? readstat_parse_sav : readstat_parse_dta;
    check(parseFile(parser.get(), QFile::encodeName(path).constData(), &counts));
}

// Two, as fields need the labels of the whole file before the variables.
void passes(benchmark::State& state, const QString& path, TStatFileKind kind)
{
    for (auto _ : state) {
        Counts counts;
        parse(path, kind, counts, countLabel, nullptr);
        parse(path, kind, counts, nullptr, countVariable);
        benchmark::DoNotOptimize(counts);
    }
}

// The fields are never freed, so a few turns are enough and more would only fill the memory.
void import(benchmark::State& state, const QString& path, TStatFileKind kind)
{
    for (auto _ : state) {
        std::unique_ptr<TDataImport> importer;
        if (kind == TStatFileKind::Spss)
            importer = std::make_unique<TSPSSDataImport>(path);
        else
            importer = std::make_unique<TSTATADataImport>(path);
        importer->openFile();
        benchmark::DoNotOptimize(importer->fields->size());
    }
}

void describe(benchmark::State& state, const QString& path, TStatFileKind kind)
{
    for (auto _ : state) {
        const TStatFileDescription description = readStatDescription(path, kind);
        benchmark::DoNotOptimize(description.variables.size());
    }
}

void registerAll(const std::string& name, const QString& path, TStatFileKind kind)
{
    const auto inMilliseconds = [&](const char* what,
                                    void (*run)(benchmark::State&, const QString&, TStatFileKind)) {
        benchmark::RegisterBenchmark((name + what).c_str(),
            [run, path, kind](benchmark::State& state) { run(state, path, kind); })
            ->Unit(benchmark::kMillisecond)
            ->Iterations(7);
    };
    inMilliseconds("/passes", passes);
    inMilliseconds("/import", import);
    inMilliseconds("/describe", describe);
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
    const QTemporaryDir folder;
    for (const Shape& shape : shapes) {
        const QString path = folder.filePath(QLatin1String(shape.name));
        const std::string name = shape.name;
        writeFile(shape, TStatFileKind::Spss, path + QLatin1String(".sav"));
        registerAll(name + ".sav", path + QLatin1String(".sav"), TStatFileKind::Spss);
        writeFile(shape, TStatFileKind::Stata, path + QLatin1String(".dta"));
        registerAll(name + ".dta", path + QLatin1String(".dta"), TStatFileKind::Stata);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
