// What an import of a lookup file costs beside the least that a Qt program does to get the same
// table: for keys in order a loop that reads lines and inserts each at the end, for keys in any
// order one that puts the lines in order first. Then what the command makes of the same import: its
// check, and the listing of all frequencies in each format, with the text that it prints. Compare
// them within one run.
#include "lookups/LookupCheck.h"
#include "lookups/LookupWriters.h"

#include <model_Tessel/Lookup.h>

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>
#include <QTextStream>

#include <algorithm>
#include <map>
#include <numeric>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace {

struct Shape {
    std::string name;
    int lines;
    bool isShuffled;
};

using Table = std::map<QString, QString*>;

// The path of the shape's file, which is written when it is asked for first.
QString fileOf(const Shape& shape)
{
    static const QTemporaryDir folder;
    QString path = folder.filePath(QString::fromStdString(shape.name));
    QFile file(path);
    if (file.exists())
        return path;
    std::vector<int> keys(static_cast<std::size_t>(shape.lines));
    std::iota(keys.begin(), keys.end(), 1);
    if (shape.isShuffled)
        std::shuffle(keys.begin(), keys.end(), std::mt19937(1));
    if (!file.open(QIODevice::WriteOnly))
        qFatal("cannot write %s", qUtf8Printable(path));
    for (const int key : keys) {
        file.write(QByteArray::number(key).rightJustified(8, '0'));
        file.write(",Place name Santa Rosa ");
        file.write(QByteArray::number(key));
        file.write("\n");
    }
    return path;
}

template <typename Values> void clear(benchmark::State& state, Values& values)
{
    state.PauseTiming();
    for (const auto& record : values)
        delete record.second;
    values.clear();
    state.ResumeTiming();
}

void hint(benchmark::State& state, const Shape& shape)
{
    QString path = fileOf(shape);
    for (auto _ : state) {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
            qFatal("cannot read %s", qUtf8Printable(path));
        QTextStream stream(&file);
        stream.setCodec("UTF-8");
        Table table;
        while (!stream.atEnd()) {
            const QString line = stream.readLine();
            const int at = line.indexOf(QLatin1Char(','));
            const auto place = table.try_emplace(table.end(), line.left(at), nullptr);
            place->second = new QString(line.mid(at + 1));
        }
        clear(state, table);
    }
    state.SetItemsProcessed(state.iterations() * shape.lines);
}

void order(benchmark::State& state, const Shape& shape)
{
    struct Line {
        std::string_view key;
        std::string_view value;
    };
    const auto decoded = [](std::string_view text) {
        return QString::fromUtf8(text.data(), static_cast<int>(text.size()));
    };
    QString path = fileOf(shape);
    for (auto _ : state) {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly))
            qFatal("cannot read %s", qUtf8Printable(path));
        std::string_view text(
            reinterpret_cast<const char*>(file.map(0, file.size())), std::size_t(file.size()));
        std::vector<Line> lines;
        while (!text.empty()) {
            const std::size_t end = text.find('\n');
            const std::size_t at = text.find(',');
            lines.push_back({ text.substr(0, at), text.substr(at + 1, end - at - 1) });
            text.remove_prefix(end + 1);
        }
        std::stable_sort(
            lines.begin(), lines.end(), [](const Line& a, const Line& b) { return a.key < b.key; });
        Table table;
        for (const Line& line : lines) {
            const auto place = table.try_emplace(table.end(), decoded(line.key), nullptr);
            place->second = new QString(decoded(line.value));
        }
        clear(state, table);
    }
    state.SetItemsProcessed(state.iterations() * shape.lines);
}

void import(benchmark::State& state, const Shape& shape)
{
    QString path = fileOf(shape);
    for (auto _ : state) {
        TOxLookup lookup;
        lookup.setFfileName(path);
        lookup.setSeparator(2);
        lookup.setTextCodec("UTF-8");
        std::map<QString, int*> frequencies;
        QStringList messages;
        if (!lookup.consistencyCheck(checkOnly, frequencies, &messages) || !messages.isEmpty())
            qFatal("cannot import %s", qUtf8Printable(path));
        clear(state, lookup.values);
    }
    state.SetItemsProcessed(state.iterations() * shape.lines);
}

void command(benchmark::State& state, const Shape& shape, bool countsValues,
    ListingFormat::Kind kind = ListingFormat::Kind::Table)
{
    ListingFormat format;
    format.kind = kind;
    QString path = fileOf(shape);
    for (auto _ : state) {
        LookupTask task;
        TOxLookup lookup;
        LookupOutcome outcome;
        task.separator = 2;
        task.countsValues = countsValues;
        if (!examineLookup(path, QByteArray(), task.file) || !checkLookup(task, lookup, outcome))
            qFatal("cannot check %s", qUtf8Printable(path));
        writeLookup(outcome, format,
            [](const QByteArray& piece) { benchmark::DoNotOptimize(piece.constData()); });
        state.PauseTiming(); // the command deletes nothing
        outcome = {};
        state.ResumeTiming();
        clear(state, lookup.values);
    }
    state.SetItemsProcessed(state.iterations() * shape.lines);
}

void check(benchmark::State& state, const Shape& shape)
{
    command(state, shape, false);
}

void frequencies(benchmark::State& state, const Shape& shape)
{
    command(state, shape, true);
}

void frequenciesCsv(benchmark::State& state, const Shape& shape)
{
    command(state, shape, true, ListingFormat::Kind::Csv);
}

void frequenciesJson(benchmark::State& state, const Shape& shape)
{
    command(state, shape, true, ListingFormat::Kind::Json);
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    std::vector<Shape> shapes = {
        { "sorted/50000", 50000, false },
        { "sorted/500000", 500000, false },
        { "sorted/5000000", 5000000, false },
        { "shuffled/50000", 50000, true },
        { "shuffled/500000", 500000, true },
        { "shuffled/5000000", 5000000, true },
    };
    for (Shape& shape : shapes) {
        const std::string label = shape.name;
        std::replace(shape.name.begin(), shape.name.end(), '/', '_');
        const auto inMilliseconds = [&](const char* what,
                                        void (*run)(benchmark::State&, const Shape&)) {
            benchmark::RegisterBenchmark((label + what).c_str(),
                [run, shape](benchmark::State& state) { run(state, shape); })
                ->Unit(benchmark::kMillisecond)
                ->Iterations(3);
        };
        if (shape.isShuffled)
            inMilliseconds("/order", order);
        else
            inMilliseconds("/hint", hint);
        inMilliseconds("/import", import);
        inMilliseconds("/check", check);
        inMilliseconds("/frequencies", frequencies);
        inMilliseconds("/frequencies_csv", frequenciesCsv);
        inMilliseconds("/frequencies_json", frequenciesJson);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
