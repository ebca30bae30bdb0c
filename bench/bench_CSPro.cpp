// What reading a CSPro dictionary costs beside reading the same file line by line, which is the
// least that a Qt program does with a text file. Compare the two within one run.
#include <model_Tessel/CSPro.h>
#include <model_Tessel/CSProDataImport.h>

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QFile>
#include <QLoggingCategory>
#include <QTemporaryDir>
#include <QTextStream>

#include <algorithm>
#include <numeric>
#include <random>
#include <vector>

namespace {

struct Shape {
    const char* name;
    int items;
    int occurrences; // of each item
    int codes; // of each item
    bool isAlpha;
};

constexpr Shape shapes[] = {
    { "small", 120, 1, 15, false },
    { "large", 6000, 1, 10, false },
    { "codes", 1, 1, 200000, false },
    { "words", 1, 1, 20000, true },
    { "occurrences", 20, 500, 1000, false },
};

QString headerText()
{
    return QStringLiteral("[Dictionary]\r\nVersion=CSPro 7.7\r\nLabel=Census\r\nName=CENSUS\r\n"
                          "RecordTypeStart=1\r\nRecordTypeLen=1\r\n\r\n[Record]\r\nLabel=Person\r\n"
                          "Name=PERSON\r\nRecordTypeValue='1'\r\n\r\n");
}

QString itemText(const Shape& shape, int number, std::mt19937& random)
{
    QString text = QStringLiteral("[Item]\r\nLabel=Question number %1\r\nName=Q%1\r\nStart=%2\r\n"
                                  "Len=8\r\n")
                       .arg(number)
                       .arg(number * 8);
    if (shape.isAlpha)
        text += QLatin1String("DataType=Alpha\r\n");
    if (shape.occurrences > 1)
        text += QStringLiteral("Occurrences=%1\r\n").arg(shape.occurrences);
    text += QStringLiteral("\r\n[ValueSet]\r\nLabel=Answers\r\nName=Q%1_VS1\r\n").arg(number);
    std::vector<int> codes(static_cast<std::size_t>(shape.codes));
    std::iota(codes.begin(), codes.end(), 1);
    std::shuffle(codes.begin(), codes.end(), random);
    const QString value = shape.isAlpha ? QStringLiteral("Value='W%1';Answer number %1\r\n")
                                        : QStringLiteral("Value=%1;Answer number %1\r\n");
    for (const int code : codes)
        text += value.arg(code);
    return text + QLatin1String("\r\n");
}

void writeDictionary(const Shape& shape, const QString& path)
{
    std::mt19937 random(1);
    QString text = headerText();
    for (int number = 1; number <= shape.items; ++number)
        text += itemText(shape, number, random);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(text.toUtf8()) < 0)
        qFatal("cannot write %s", qUtf8Printable(path));
}

void readLines(benchmark::State& state, const QString& path)
{
    for (auto _ : state) {
        QStringList lines;
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
            qFatal("cannot read %s", qUtf8Printable(path));
        QTextStream stream(&file);
        stream.setCodec("UTF-8");
        while (!stream.atEnd())
            lines.append(stream.readLine());
        benchmark::DoNotOptimize(lines.size());
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * QFile(path).size());
}

// What is read is never freed, so a few turns are enough and more would only fill the memory.
void parse(benchmark::State& state, const QString& path)
{
    for (auto _ : state) {
        TCSPro parser;
        parser.setTextCodec("UTF-8");
        parser.loadFromFile(path);
        benchmark::DoNotOptimize(parser.getItemsCount());
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * QFile(path).size());
}

void parseAsWritten(benchmark::State& state, const QString& path)
{
    for (auto _ : state) {
        TCSPro parser;
        parser.setReading(CSProReading::AsWritten);
        parser.loadFromFile(path);
        benchmark::DoNotOptimize(parser.getItemsCount());
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * QFile(path).size());
}

void import(benchmark::State& state, const QString& path)
{
    for (auto _ : state) {
        TCSProDataImport importer(path);
        importer.setTextCodec("UTF-8");
        importer.openFile();
        benchmark::DoNotOptimize(importer.fields->size());
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * QFile(path).size());
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
    const QTemporaryDir folder;
    for (const Shape& shape : shapes) {
        const QString path = folder.filePath(QLatin1String(shape.name));
        writeDictionary(shape, path);
        const std::string name = shape.name;
        const auto inMilliseconds = [&](const char* what,
                                        void (*run)(benchmark::State&, const QString&)) {
            benchmark::RegisterBenchmark(
                (name + what).c_str(), [run, path](benchmark::State& state) { run(state, path); })
                ->Unit(benchmark::kMillisecond)
                ->Iterations(7);
        };
        inMilliseconds("/lines", readLines);
        inMilliseconds("/parse", parse);
        inMilliseconds("/written", parseAsWritten);
        inMilliseconds("/import", import);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
