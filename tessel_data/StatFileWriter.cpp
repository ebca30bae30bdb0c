#include <tessel_data/StatFileWriter_p.h>

#include <tessel_data/ConversionLimits_p.h>
#include <tessel_data/DataError.h>
#include <tessel_data/Writeback_p.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <unistd.h>

namespace tessel {

namespace {

using Type = ConversionColumn::Type;
using Role = ConversionColumn::Role;

constexpr std::size_t BufferSize = 1 << 20;
constexpr int StataVersion = 118; // of Stata 14 and later, the first in UTF-8
constexpr int ShortText = 8; // bytes, in SPSS
constexpr int Kinds = 26;

readstat_type_t typeOf(Type type)
{
    switch (type) {
    case Type::Byte:
        return READSTAT_TYPE_INT8;
    case Type::Int:
        return READSTAT_TYPE_INT16;
    case Type::Long:
        return READSTAT_TYPE_INT32;
    case Type::Float:
        return READSTAT_TYPE_FLOAT;
    case Type::Double:
        return READSTAT_TYPE_DOUBLE;
    case Type::Text:
        return READSTAT_TYPE_STRING;
    case Type::LongText:
        break;
    }
    return READSTAT_TYPE_STRING_REF;
}

readstat_measure_t measureOf(ConversionColumn::Measure measure)
{
    using Measure = ConversionColumn::Measure;
    switch (measure) {
    case Measure::Nominal:
        return READSTAT_MEASURE_NOMINAL;
    case Measure::Ordinal:
        return READSTAT_MEASURE_ORDINAL;
    case Measure::Scale:
        return READSTAT_MEASURE_SCALE;
    case Measure::Unknown:
        break;
    }
    return READSTAT_MEASURE_UNKNOWN;
}

readstat_alignment_t alignmentOf(ConversionColumn::Alignment alignment)
{
    using Alignment = ConversionColumn::Alignment;
    switch (alignment) {
    case Alignment::Left:
        return READSTAT_ALIGNMENT_LEFT;
    case Alignment::Center:
        return READSTAT_ALIGNMENT_CENTER;
    case Alignment::Right:
        return READSTAT_ALIGNMENT_RIGHT;
    case Alignment::Unknown:
        break;
    }
    return READSTAT_ALIGNMENT_UNKNOWN;
}

quint32 kindBit(int kind)
{
    return quint32(1) << kind;
}

} // namespace

StatFileWriter::StatFileWriter(const ConversionPlan& plan, const ConversionFile& file,
    const std::vector<StatColumn>& columns, int descriptor, const QString& path)
    : m_plan(plan)
    , m_file(file)
    , m_columns(columns)
    , m_descriptor(descriptor)
    , m_path(path)
    , m_isStata(plan.format == ConversionFormat::Stata)
    , m_writer(readstat_writer_init())
    , m_written(columns.size())
{
    m_buffer.reserve(BufferSize);
}

void StatFileWriter::fail(readstat_error_t error, int column)
{
    QString text = QStringLiteral("cannot be written: ");
    if (column >= 0)
        text += m_file.columns.at(column).name + QLatin1String(": ");
    text += m_error != 0 ? QString::fromLocal8Bit(std::strerror(m_error))
                         : QString::fromUtf8(readstat_error_message(error));
    throw DataError(DataError::Code::CannotWrite, m_path, text);
}

bool StatFileWriter::flush()
{
    for (std::size_t done = 0; done < m_buffer.size();) {
        const ssize_t written = ::write(m_descriptor, &m_buffer[done], m_buffer.size() - done);
        if (written < 0 && errno != EINTR) {
            m_error = errno;
            return false;
        }
        done += written > 0 ? std::size_t(written) : 0;
    }
    beginWriteback(m_descriptor, qint64(m_buffer.size()));
    m_buffer.clear();
    return true;
}

ssize_t StatFileWriter::take(const char* bytes, std::size_t size)
{
    if (m_buffer.size() + size > BufferSize && !flush())
        return -1;
    m_buffer.append(bytes, size);
    return ssize_t(size);
}

ssize_t StatFileWriter::onData(const void* data, size_t size, void* context)
{
    return static_cast<StatFileWriter*>(context)->take(static_cast<const char*>(data), size);
}

void StatFileWriter::addColumns()
{
    for (std::size_t c = 0; c < m_columns.size(); ++c)
        addColumn(c);
}

void StatFileWriter::addColumn(std::size_t index)
{
    const ConversionColumn& column = m_file.columns.at(int(index));
    const StatColumn& values = m_columns[index];
    Column& written = m_written[index];
    written.values = &values;
    written.type = values.type();
    written.missingBase = column.missingBase;
    if (!m_isStata && values.codedKinds() != 0)
        written.missingBase = freeBase(index);
    const std::size_t width =
        written.type == Type::Text ? std::size_t(values.textBytes()) : std::size_t(0);
    readstat_variable_t* const variable = readstat_add_variable(
        m_writer.get(), column.name.toUtf8().constData(), typeOf(written.type), width);
    written.variable = variable;
    readstat_variable_set_label(variable, column.label.toUtf8().constData());
    // Without a format libreadstat gives texts one of the width on the screen, which SPSS refuses.
    const QString format = m_isStata || !column.isText()
        ? column.format
        : QStringLiteral("A%1").arg(values.textBytes());
    readstat_variable_set_format(variable, format.toUtf8().constData());
    readstat_variable_set_measure(variable, measureOf(column.measure));
    readstat_variable_set_alignment(variable, alignmentOf(column.alignment));
    if (column.displayWidth > 0)
        readstat_variable_set_display_width(variable, column.displayWidth);
    if (!m_isStata)
        setMissing(index);
    if (readstat_label_set_t* const set = labelSet(index))
        readstat_variable_set_label_set(variable, set);
}

double StatFileWriter::freeBase(std::size_t index) const
{
    const double base = m_columns[index].missingBase();
    if (!std::isnan(base))
        return base;
    throw DataError(DataError::Code::CannotWrite, m_path,
        QStringLiteral("cannot be written: %1 has so many values that no codes are free for its "
                       "missing values; leave the variable out with --variables")
            .arg(m_file.columns.at(int(index)).name));
}

void StatFileWriter::setMissing(std::size_t index)
{
    const ConversionColumn& column = m_file.columns.at(int(index));
    readstat_variable_t* const variable = m_written[index].variable;
    for (const ConversionMissing& missing : column.missing) {
        readstat_error_t error = READSTAT_OK;
        if (column.isText()) {
            m_missingTexts.append(missing.text.toUtf8());
            error = readstat_variable_add_missing_string_value(
                variable, m_missingTexts.constLast().constData());
        } else if (missing.low == missing.high) {
            error = readstat_variable_add_missing_double_value(variable, missing.low);
        } else {
            error = readstat_variable_add_missing_double_range(variable, missing.low, missing.high);
        }
        check(error, m_written[index]);
    }
    if (m_columns[index].kinds() != 0)
        setKinds(index);
}

// Those that are there; more than three are a range.
void StatFileWriter::setKinds(std::size_t index)
{
    constexpr std::size_t mostCodes = 3;
    std::vector<double> codes;
    for (int kind = 0; kind < Kinds; ++kind) {
        if ((m_columns[index].kinds() & kindBit(kind)) != 0)
            codes.push_back(m_written[index].missingBase + kind);
    }
    readstat_variable_t* const variable = m_written[index].variable;
    if (codes.size() > mostCodes) {
        check(readstat_variable_add_missing_double_range(variable, codes.front(), codes.back()));
        return;
    }
    for (const double code : codes)
        check(readstat_variable_add_missing_double_value(variable, code));
}

readstat_label_set_t* StatFileWriter::labelSet(std::size_t index)
{
    const ConversionColumn& column = m_file.columns.at(int(index));
    const Column& written = m_written[index];
    const ConversionLabelSet none;
    const ConversionLabelSet& source =
        column.labelSet < 0 ? none : m_plan.labelSets[std::size_t(column.labelSet)];
    quint32 unlabelled = m_isStata ? 0 : m_columns[index].kinds();
    for (const ConversionLabel& label : source.labels) {
        if (label.tag != '\0')
            unlabelled &= ~kindBit(label.tag - 'a');
    }
    if (column.labelSet < 0 && unlabelled == 0)
        return nullptr;
    const bool isLong = column.isText() && m_columns[index].textBytes() > ShortText;
    readstat_label_set_t*& set =
        m_labelSets[{ column.labelSet, written.missingBase, unlabelled, isLong }];
    if (set)
        return set;
    const readstat_type_t type = source.isText ? READSTAT_TYPE_STRING
        : m_isStata                            ? READSTAT_TYPE_INT32
                                               : READSTAT_TYPE_DOUBLE;
    const QString name = m_isStata ? source.name : QString::number(m_labelSets.size());
    set = readstat_add_label_set(m_writer.get(), type, name.toUtf8().constData());
    for (const ConversionLabel& label : source.labels) {
        const QByteArray text = label.label.toUtf8();
        if (source.isText)
            readstat_label_string_value(set, label.text.toUtf8().constData(), text.constData());
        else if (label.tag != '\0' && m_isStata)
            readstat_label_tagged_value(set, label.tag, text.constData());
        else if (label.tag != '\0')
            readstat_label_double_value(
                set, written.missingBase + (label.tag - 'a'), text.constData());
        else if (m_isStata)
            readstat_label_int32_value(set, qint32(label.number), text.constData());
        else
            readstat_label_double_value(set, label.number, text.constData());
    }
    for (int kind = 0; kind < Kinds; ++kind) {
        const char text[] { '.', char('a' + kind), '\0' };
        if ((unlabelled & kindBit(kind)) != 0)
            readstat_label_double_value(set, written.missingBase + kind, text);
    }
    return set;
}

// Rows differ in size a thousandfold.
qint64 StatFileWriter::rowsBetweenAsking() const
{
    constexpr std::size_t cells = 1 << 18;
    return qint64(std::max<std::size_t>(1, cells / std::max<std::size_t>(1, m_written.size())));
}

void StatFileWriter::checkLongTexts() const
{
    qint64 bytes = 0;
    for (const StatColumn& column : m_columns)
        bytes += column.type() == Type::LongText ? column.allTextBytes() : 0;
    if (m_longTextBound == 0 || bytes <= m_longTextBound)
        return;
    throw DataError(DataError::Code::UnfitSelection, m_path,
        QStringLiteral("would have %1 MiB of texts in variables with texts of more than 2,045 "
                       "bytes, which wait in memory, and %2 MiB are the most; choose other "
                       "variables with --variables or a part of the rows, or another format")
            .arg(bytes >> 20)
            .arg(m_longTextBound >> 20));
}

// libreadstat wants all of them before the first row.
bool StatFileWriter::addStringRefs(
    RowSpool& spool, qint64 rows, const std::function<bool()>& goesOn)
{
    const bool hasAny = std::any_of(m_written.begin(), m_written.end(),
        [](const Column& column) { return column.type == Type::LongText; });
    if (!hasAny)
        return true;
    checkLongTexts();
    const qint64 between = rowsBetweenAsking();
    spool.rewind();
    RowSpool::Value value;
    for (qint64 row = 0; row < rows; ++row) {
        if (row % between == 0 && !goesOn())
            return false;
        for (const Column& column : m_written) {
            spool.read(value);
            if (column.type == Type::LongText && value.kind == RowSpool::Value::Kind::Text)
                readstat_add_string_ref(m_writer.get(), std::string(value.text).c_str());
        }
    }
    return true;
}

void StatFileWriter::begin(qint64 rows)
{
    readstat_writer_t* const writer = m_writer.get();
    check(readstat_set_data_writer(writer, onData));
    check(readstat_writer_set_file_label(writer, m_file.label.toUtf8().constData()));
    const QStringList notes = m_plan.fileNotes + m_file.notes;
    for (const QString& note : notes)
        readstat_add_note(writer, note.toUtf8().constData());
    if (m_file.weight >= 0) {
        check(readstat_writer_set_fweight_variable(
            writer, m_written[std::size_t(m_file.weight)].variable));
    }
    if (m_isStata) {
        check(readstat_writer_set_file_format_version(writer, StataVersion));
        check(readstat_begin_writing_dta(writer, this, long(rows)));
    } else {
        check(readstat_writer_set_compression(writer, READSTAT_COMPRESS_ROWS));
        check(readstat_begin_writing_sav(writer, this, long(rows)));
    }
    check(readstat_validate_metadata(writer));
    for (const Column& column : m_written)
        check(readstat_validate_variable(writer, column.variable), column);
}

void StatFileWriter::writeMissing(const Column& column, char tag)
{
    readstat_writer_t* const writer = m_writer.get();
    readstat_error_t error = READSTAT_OK;
    readstat_string_ref_t none {};
    if (column.type == Type::LongText)
        error = readstat_insert_string_ref(writer, column.variable, &none);
    else if (tag == '\0')
        error = readstat_insert_missing_value(writer, column.variable);
    else if (m_isStata)
        error = readstat_insert_tagged_missing_value(writer, column.variable, tag);
    else
        error =
            readstat_insert_double_value(writer, column.variable, column.missingBase + (tag - 'a'));
    check(error, column);
}

void StatFileWriter::writeText(const Column& column, const char* text)
{
    readstat_writer_t* const writer = m_writer.get();
    if (column.type == Type::LongText) {
        check(readstat_insert_string_ref(
                  writer, column.variable, readstat_get_string_ref(writer, m_nextRef++)),
            column);
    } else {
        check(readstat_insert_string_value(writer, column.variable, text), column);
    }
}

void StatFileWriter::writeValue(const Column& column, const RowSpool::Value& value)
{
    switch (value.kind) {
    case RowSpool::Value::Kind::Missing:
        return writeMissing(column, value.tag);
    case RowSpool::Value::Kind::Whole:
        return writeWhole(column, value.number);
    case RowSpool::Value::Kind::Real:
        return writeReal(column, value.real);
    case RowSpool::Value::Kind::Text:
        return writeText(column, value.text.data());
    }
}

void StatFileWriter::begin()
{
    addColumns();
    begin(0);
}

void StatFileWriter::finish(qint64 rows)
{
    checkRows(rows);
    m_writer->row_count = int(rows);
    end();
    setRows(rows);
}

void StatFileWriter::end()
{
    check(readstat_end_writing(m_writer.get()));
    if (!flush())
        check(READSTAT_ERROR_WRITE);
}

void StatFileWriter::setRows(qint64 rows)
{
    if (m_isStata)
        setStataRows(rows);
    else
        setSpssRows(rows);
}

// The number stands in the head, and the places of what follows the rows in the map behind it.
void StatFileWriter::setStataRows(qint64 rows)
{
    constexpr int places = 14;
    constexpr int behindRows = 10;
    write64(find("<N>"), rows);
    qint64 map = find("<map>");
    while (read64(map + qint64(sizeof(qint64))) + qint64(sizeof "<map>") - 1 != map)
        map = find("<map>", map); // a label may say so, too
    const qint64 bytes = rows * qint64(m_writer->row_len);
    for (int i = behindRows; i < places; ++i) {
        const qint64 place = map + i * qint64(sizeof(qint64));
        write64(place, read64(place) + bytes);
    }
}

// In 32 bits in the head, in 64 in a record of its own.
void StatFileWriter::setSpssRows(qint64 rows)
{
    constexpr qint64 inHead = 80;
    const qint32 number = qint32(rows);
    write(inHead, reinterpret_cast<const char*>(&number), sizeof number);
    const qint32 record[] = { 7, 16, 8, 2 };
    const qint64 place = find(QByteArray(reinterpret_cast<const char*>(record), sizeof record));
    write64(place + qint64(sizeof(qint64)), rows);
}

// Behind the first such mark from there on. It stands before the rows.
qint64 StatFileWriter::find(const QByteArray& mark, qint64 from)
{
    constexpr std::size_t piece = 1 << 16;
    QByteArray bytes;
    std::vector<char> next(piece);
    for (qint64 place = from;;) {
        const ssize_t count = ::pread(m_descriptor, next.data(), next.size(), place);
        if (count <= 0)
            break;
        bytes = bytes.right(mark.size() - 1) + QByteArray(next.data(), int(count));
        place += count;
        const int found = bytes.indexOf(mark);
        if (found >= 0)
            return place - bytes.size() + found + mark.size();
    }
    check(READSTAT_ERROR_WRITE);
    return 0;
}

qint64 StatFileWriter::read64(qint64 place)
{
    qint64 number = 0;
    if (::pread(m_descriptor, &number, sizeof number, place) != ssize_t(sizeof number))
        check(READSTAT_ERROR_READ);
    return number;
}

void StatFileWriter::write64(qint64 place, qint64 number)
{
    write(place, reinterpret_cast<const char*>(&number), sizeof number);
}

void StatFileWriter::write(qint64 place, const char* bytes, std::size_t size)
{
    if (::pwrite(m_descriptor, bytes, size, place) != ssize_t(size)) {
        m_error = errno;
        check(READSTAT_ERROR_WRITE);
    }
}

void StatFileWriter::checkRows(qint64 rows) const
{
    if (rows > std::numeric_limits<int>::max()) {
        throw DataError(DataError::Code::CannotWrite, m_path,
            QStringLiteral("cannot be written: it would have more than 2,147,483,647 rows"));
    }
}

bool StatFileWriter::write(RowSpool& spool, qint64 rows, const std::function<bool()>& goesOn)
{
    checkRows(rows);
    addColumns();
    if (!addStringRefs(spool, rows, goesOn))
        return false;
    const qint64 between = rowsBetweenAsking();
    begin(rows);
    spool.rewind();
    RowSpool::Value value;
    for (qint64 row = 0; row < rows; ++row) {
        if (row % between == 0 && !goesOn())
            return false;
        check(readstat_begin_row(m_writer.get()));
        for (const Column& column : m_written) {
            spool.read(value);
            writeValue(column, value);
        }
        check(readstat_end_row(m_writer.get()));
    }
    end();
    return true;
}

} // namespace tessel
