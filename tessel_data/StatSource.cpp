#include <tessel_data/StatSource.h>

#include <tessel_data/DataError.h>
#include <tessel_data/DictionaryErrors_p.h>
#include <tessel_data/LineText_p.h>

#include <model_Tessel/DictionaryFile.h>
#include <model_Tessel/StatParser_p.h>
#include <model_Tessel/TrailingBlanks_p.h>

#include <QFile>

#include <cmath>
#include <cstring>
#include <readstat.h>

namespace tessel {

namespace {

DictionaryFile openStatFile(const QString& path, TStatFileKind kind)
{
    DictionaryFileOptions options;
    options.kind =
        kind == TStatFileKind::Spss ? DictionaryFileKind::Spss : DictionaryFileKind::Stata;
    return readDictionaryFile(path, options);
}

} // namespace

class StatSource::Job {
public:
    explicit Job(const DictionaryFile& file);

    void readRows(BatchSink& output);

    DataDictionary dictionary;
    qint64 rowCount = -1;
    std::vector<SourceFile> files;

private:
    static int onValue(
        int row, readstat_variable_t* variable, readstat_value_t value, void* context) noexcept;

    void takeValue(int row, int column, const readstat_value_t& value);
    void set(quint32 cell, int column, const readstat_value_t& value);
    void setText(quint32 cell, int column, const char* bytes);

    [[noreturn]] void fail(DataError::Code code, const QString& text) const;
    void checkInput() const;

    std::shared_ptr<TStatInput> m_input; // one opened file for the dictionary and the rows
    TStatFileKind m_kind = TStatFileKind::Spss;
    BatchSink* m_sink = nullptr;
    qint64 m_row = -1;
    quint32 m_firstCell = 0;
    bool m_isStopped = false;
    LineText m_text;
    CallbackGuard m_guard;
};

StatSource::Job::Job(const DictionaryFile& file)
    : m_input(file.input)
{
    SourceFile source;
    source.path = file.path;
    files.push_back(source);
    if (file.csproImporter())
        fail(DataError::Code::NotThisFormat, QStringLiteral("is no SPSS or Stata file"));
    if (!file.isWhole())
        throw errorOf(file);
    checkInput();
    files.front().bytes = m_input->size();
    files.front().encoding = file.encoding;
    m_kind = file.description->kind;
    dictionary = DataDictionary::fromDescription(*file.description);
    rowCount = file.description->rowCount;
}

void StatSource::Job::fail(DataError::Code code, const QString& text) const
{
    throw DataError(code, files.front().path, text);
}

// libreadstat takes a failing read for the end of the file.
void StatSource::Job::checkInput() const
{
    const QString reason = describeFailure(*m_input);
    if (!reason.isEmpty())
        fail(DataError::Code::CannotRead, reason);
}

void StatSource::Job::readRows(BatchSink& output)
{
    m_sink = &output;
    const StatParser parser(m_input.get());
    readstat_set_value_handler(parser.get(), onValue);
    // Without one libreadstat sets up no variables, and crashes at the first row of a .sav file.
    readstat_set_variable_handler(parser.get(),
        [](int, readstat_variable_t*, const char*, void*) -> int { return READSTAT_HANDLER_OK; });
    const auto parse = m_kind == TStatFileKind::Spss ? readstat_parse_sav : readstat_parse_dta;
    const QByteArray path = QFile::encodeName(files.front().path);
    const readstat_error_t error = parse(parser.get(), path.constData(), this);
    m_guard.rethrow();
    if (m_isStopped)
        return;
    checkInput();
    if (error != READSTAT_OK) {
        fail(DataError::Code::CannotRead,
            QStringLiteral("cannot be read on behind row %1: %2")
                .arg(m_row + 1)
                .arg(QString::fromUtf8(readstat_error_message(error))));
    }
    const bool hasRows = !dictionary.variables.empty();
    if (hasRows && rowCount >= 0 && m_row + 1 != rowCount) {
        fail(DataError::Code::Damaged,
            QStringLiteral("has %1 rows, but says that it has %2").arg(m_row + 1).arg(rowCount));
    }
    if (!output.batch().isEmpty())
        output.deliver();
}

int StatSource::Job::onValue(
    int row, readstat_variable_t* variable, readstat_value_t value, void* context) noexcept
{
    auto& job = *static_cast<Job*>(context);
    const int result =
        job.m_guard.run([&] { job.takeValue(row, readstat_variable_get_index(variable), value); });
    return job.m_isStopped ? READSTAT_HANDLER_ABORT : result;
}

void StatSource::Job::takeValue(int row, int column, const readstat_value_t& value)
{
    const int count = dictionary.records.front().columns.size();
    if (row != m_row) {
        if (m_sink->batch().isFull() && !m_sink->deliver()) {
            m_isStopped = true;
            return;
        }
        DataBatch& batch = m_sink->batch();
        m_row = row;
        m_firstCell = batch.addCells(std::size_t(count));
        batch.records.push_back({ m_row + 1, 0, 0, 0, m_firstCell, {} });
        batch.doneBytes = m_row + 1;
        ++files.front().counts.lines;
        ++files.front().counts.records;
    }
    if (column >= 0 && column < count)
        set(m_firstCell + quint32(column), column, value);
}

void StatSource::Job::set(quint32 cell, int column, const readstat_value_t& value)
{
    DataBatch& batch = m_sink->batch();
    const CodeTable* codes = dictionary.variable(0, column).codes.get();
    const readstat_type_t type = readstat_value_type(value);
    if (type == READSTAT_TYPE_STRING || type == READSTAT_TYPE_STRING_REF) {
        if (const char* const bytes = readstat_string_value(value))
            setText(cell, column, bytes);
        return;
    }
    if (readstat_value_is_tagged_missing(value)) {
        return batch.set(
            cell, ValueState(ValueKind::Blank, Special::Missing), uchar(readstat_value_tag(value)));
    }
    const double number = readstat_double_value(value);
    if (readstat_value_is_system_missing(value) || std::isnan(number))
        return;
    batch.setReal(cell, codes ? codes->stateOf(number) : ValueState(ValueKind::Real), number);
}

// A file may say that it is UTF-8 and hold a text that is not.
void StatSource::Job::setText(quint32 cell, int column, const char* bytes)
{
    DataBatch& batch = m_sink->batch();
    m_text.set({ bytes, std::strlen(bytes) });
    const std::string_view text = trailingBlanksCut(m_text.text());
    if (text.empty())
        return;
    const CodeTable* codes = dictionary.variable(0, column).codes.get();
    const TextRef kept = batch.keep(text);
    batch.setText(cell, codes ? codes->stateOf(text) : ValueState(ValueKind::Text), kept);
    if (m_text.encoding() == LineEncoding::Windows1252) {
        batch.told.push_back({ LineProblem::OtherEncoding, 0,
            dictionary.records.front().columns.at(column), m_row + 1, -1, kept });
    }
}

StatSource::StatSource(const QString& path, TStatFileKind kind)
    : StatSource(openStatFile(path, kind))
{
}

StatSource::StatSource(const DictionaryFile& file)
    : m_job(std::make_unique<Job>(file))
{
}

StatSource::~StatSource() = default;

const DataDictionary& StatSource::dictionary() const
{
    return m_job->dictionary;
}

void StatSource::read(BatchSink& sink)
{
    m_job->readRows(sink);
}

qint64 StatSource::size() const
{
    return m_job->rowCount;
}

bool StatSource::countsRows() const
{
    return true;
}

const std::vector<SourceFile>& StatSource::files() const
{
    return m_job->files;
}

bool StatSource::hasCases() const
{
    return false;
}

} // namespace tessel
