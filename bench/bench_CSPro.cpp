// What reading a CSPro dictionary costs beside reading the same file line by line, which is the
// least that a Qt program does with a text file, and beside making the same objects of its lines
// without looking at them any closer. Compare them within one run.
#include <model_Tessel/CSPro.h>
#include <model_Tessel/CSProDataImport.h>
#include <model_Tessel/CSProValueSet.h>

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

QStringList linesOf(const QString& path)
{
    QStringList lines;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        qFatal("cannot read %s", qUtf8Printable(path));
    QTextStream stream(&file);
    stream.setCodec("UTF-8");
    while (!stream.atEnd())
        lines.append(stream.readLine());
    return lines;
}

void readLines(benchmark::State& state, const QString& path)
{
    for (auto _ : state) {
        const QStringList lines = linesOf(path);
        benchmark::DoNotOptimize(lines.size());
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * QFile(path).size());
}

/*
 * Makes the objects of the generated dictionaries, in which every key has its place: items, sets,
 * entries and fields with their texts, which stay as those of a load do. No field has the joined
 * text of its labels, and nothing is checked, sorted or converted.
 */
class Objects {
public:
    explicit Objects(const QString& path)
        : m_lines(linesOf(path))
        , m_importer(new TCSProDataImport(path))
    {
        for (int i = 0; i < m_lines.size(); ++i) {
            const QString& line = m_lines.at(i);
            if (line == QLatin1String("[Item]"))
                addItem(i);
            else if (line == QLatin1String("[ValueSet]"))
                i = addValueSet(i);
        }
        for (TCSProItem* item : qAsConst(m_items))
            addField(*item);
    }

    int fieldCount() const
    {
        return m_importer->fields->size();
    }

private:
    QString text(int line) const
    {
        const QString& text = m_lines.at(line);
        return text.mid(text.indexOf(QLatin1Char('=')) + 1);
    }

    void addItem(int line)
    {
        const QString label = text(line + 1);
        const QString name = text(line + 2);
        const int start = text(line + 3).toInt();
        const int length = text(line + 4).toInt();
        const bool isRepeated = m_lines.at(line + 5).startsWith(QLatin1String("Occurrences="));
        const int count = isRepeated ? text(line + 5).toInt() : 1;
        m_first = m_items.size();
        for (int number = 1; number <= count; ++number) {
            auto* item = new TCSProItem;
            item->label = label;
            item->name = isRepeated ? name + QChar(ushort(number)) : name;
            item->dictionaryName = name;
            item->start = start + (number - 1) * length;
            item->len = length;
            m_items.append(item);
        }
    }

    // The last line of the set whose header is line.
    int addValueSet(int line)
    {
        auto* valueSet = new TCSProValueSet;
        valueSet->label = text(++line);
        valueSet->name = text(++line);
        while (
            line + 1 < m_lines.size() && m_lines.at(line + 1).startsWith(QLatin1String("Value=")))
            valueSet->items->append(makeEntry(m_lines.at(++line)));
        for (int i = m_first; i < m_items.size(); ++i)
            m_items.at(i)->valueSets->append(valueSet);
        return line;
    }

    static TValueSetItem* makeEntry(const QString& line)
    {
        const int separator = line.indexOf(QLatin1Char(';'));
        auto* entry = new TValueSetItem;
        entry->code = line.mid(6, separator - 6);
        entry->label = line.mid(separator + 1);
        return entry;
    }

    void addField(TCSProItem& item)
    {
        auto* field = new TCSProVariable(m_importer);
        field->item = &item;
        field->name = item.name;
        field->label = item.label;
        field->start = item.start;
        field->length = item.len;
        m_importer->addField(field);
    }

    QStringList m_lines;
    TCSProDataImport* m_importer;
    QList<TCSProItem*> m_items;
    int m_first = 0; // of the item's occurrences
};

void makeObjects(benchmark::State& state, const QString& path)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(Objects(path).fieldCount());
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
        inMilliseconds("/objects", makeObjects);
        inMilliseconds("/parse", parse);
        inMilliseconds("/written", parseAsWritten);
        inMilliseconds("/import", import);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
