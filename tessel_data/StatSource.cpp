#include <tessel_data/StatSource.h>

#include <tessel_data/DataError.h>
#include <tessel_data/LineText_p.h>

#include <model_Tessel/StatInput.h>
#include <model_Tessel/TrailingBlanks_p.h>

#include <QFile>

#include <cmath>
#include <cstring>
#include <exception>
#include <readstat.h>

namespace tessel {

namespace {

struct FreeParser {
    void operator()(readstat_parser_t* parser) const
    {
        readstat_parser_free(parser);
    }
};

} // namespace

class StatSource::Job {
public:
    Job(const QString& path, TStatFileKind kind);

    void readRows(BatchSink& output);

    DataDictionary dictionary;
    qint64 rowCount = -1;
    std::vector<SourceFile> files;

private:
    static int onValue(
        int row, readstat_variable_t* variable, readstat_value_t value, void* context) noexcept;

    int takeValue(int row, int column, const readstat_value_t& value);
    void set(quint32 cell, int column, const readstat_value_t& value);
    void setText(quint32 cell, int column, const char* bytes);

    [[noreturn]] void fail(DataError::Code code, const QString& text) const;
    void checkInput() const;

    TStatInput m_input; // one opened file for the dictionary and the rows
    TStatFileKind m_kind;
    BatchSink* m_sink = nullptr;
    qint64 m_row = -1;
    quint32 m_firstCell = 0;
    bool m_isStopped = false;
    LineText m_text;
    std::exception_ptr m_failure; // no exception may cross the frames of libreadstat
};

StatSource::Job::Job(const QString& path, TStatFileKind kind)
    : m_kind(kind)
{
    SourceFile file;
    file.path = path;
    files.push_back(file);
    if (!m_input.open(path)) {
        fail(DataError::Code::CannotOpen, QStringLiteral("cannot be opened: ") + m_input.failure());
    }
    const TStatFileDescription description = readStatDescription(m_input, kind);
    checkInput();
    if (!description.isWhole()) {
        const QString reason = description.outcome.errorText;
        fail(DataError::Code::Damaged,
            reason.isEmpty() ? QStringLiteral("its dictionary ends too early")
                             : QStringLiteral("cannot be read: ") + reason);
    }
    files.front().bytes = m_input.size();
    files.front().encoding = description.encoding;
    dictionary = DataDictionary::fromDescription(description);
    rowCount = description.rowCount;
}

void StatSource::Job::fail(DataError::Code code, const QString& text) const
{
    throw DataError(code, files.front().path, text);
}

// libreadstat takes a failing read for the end of the file.
void StatSource::Job::checkInput() const
{
    const QString reason = m_input.failure();
    if (!reason.isEmpty())
        fail(DataError::Code::CannotRead, QStringLiteral("cannot be read to its end: ") + reason);
}

void StatSource::Job::readRows(BatchSink& output)
{
    m_sink = &output;
    const std::unique_ptr<readstat_parser_t, FreeParser> parser(readstat_parser_init());
    Q_CHECK_PTR(parser.get());
    m_input.attachTo(parser.get());
    readstat_set_value_handler(parser.get(), onValue);
    // Without one libreadstat sets up no variables, and crashes at the first row of a .sav file.
    readstat_set_variable_handler(parser.get(),
        [](int, readstat_variable_t*, const char*, void*) -> int { return READSTAT_HANDLER_OK; });
    const auto parse = m_kind == TStatFileKind::Spss ? readstat_parse_sav : readstat_parse_dta;
    const QByteArray path = QFile::encodeName(files.front().path);
    const readstat_error_t error = parse(parser.get(), path.constData(), this);
    if (m_failure)
        std::rethrow_exception(m_failure);
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
    try {
        return job.takeValue(row, readstat_variable_get_index(variable), value);
    } catch (...) {
        job.m_failure = std::current_exception();
        return READSTAT_HANDLER_ABORT;
    }
}

int StatSource::Job::takeValue(int row, int column, const readstat_value_t& value)
{
    const int count = dictionary.records.front().columns.size();
    if (row != m_row) {
        if (m_sink->batch().isFull() && !m_sink->deliver()) {
            m_isStopped = true;
            return READSTAT_HANDLER_ABORT;
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
    return READSTAT_HANDLER_OK;
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
    : m_job(std::make_unique<Job>(path, kind))
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
