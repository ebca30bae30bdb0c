#include <tessel_data/RowWriter_p.h>

namespace tessel {

namespace {

std::string_view view(const QByteArray& bytes)
{
    return { bytes.constData(), std::size_t(bytes.size()) };
}

bool hasText(ValueKind kind)
{
    return kind == ValueKind::Text || kind == ValueKind::NotANumber || kind == ValueKind::Unfit;
}

} // namespace

OwnValue OwnValue::of(const DataBatch& batch, quint32 cell)
{
    OwnValue value;
    value.state = batch.states[cell];
    if (hasText(value.state.kind()))
        value.text = batch.textOf(cell);
    else
        value.number = batch.numbers[cell];
    return value;
}

OwnValue OwnValue::read(const QByteArray& text, const DataVariable& variable)
{
    OwnValue value;
    if (variable.type == DataVariable::Type::Number) {
        if (readNumber(view(text), variable.decimals, value.number) == NumberStatus::Number)
            value.state = ValueState(ValueKind::Number);
        return value;
    }
    value.text = text.toStdString();
    value.text.erase(value.text.find_last_not_of(' ') + 1);
    if (!value.text.empty())
        value.state = ValueState(ValueKind::Text);
    return value;
}

RowWriter::RowWriter(DatabaseTarget& target, const DatabasePlan& plan, const QString& table,
    std::vector<qint64>& rows)
    : m_target(target)
    , m_plan(plan)
    , m_table(plan.table(table))
    , m_counts(rows)
{
}

quint32 RowWriter::addCell()
{
    return m_batch.addCells(1);
}

void RowWriter::null()
{
    addCell();
}

void RowWriter::number(qint64 number)
{
    m_batch.set(addCell(), ValueState(ValueKind::Number), number);
}

void RowWriter::numberOrNull(qint64 value)
{
    if (value == 0)
        null();
    else
        number(value);
}

void RowWriter::real(double number)
{
    m_batch.setReal(addCell(), ValueState(ValueKind::Real), number);
}

void RowWriter::text(std::string_view text)
{
    m_batch.setText(addCell(), ValueState(ValueKind::Text), m_batch.keep(text));
}

void RowWriter::text(const QByteArray& bytes)
{
    text(view(bytes));
}

void RowWriter::text(const QString& string)
{
    text(string.toUtf8());
}

void RowWriter::textOrNull(std::string_view bytes)
{
    if (bytes.empty())
        null();
    else
        text(bytes);
}

void RowWriter::textOrNull(const QByteArray& bytes)
{
    textOrNull(view(bytes));
}

void RowWriter::textOrNull(const QString& string)
{
    textOrNull(string.toUtf8());
}

void RowWriter::value(const OwnValue& value)
{
    const quint32 cell = addCell();
    if (hasText(value.state.kind()))
        m_batch.setText(cell, value.state, m_batch.keep(value.text));
    else
        m_batch.set(cell, value.state, value.number);
}

void RowWriter::endRow(qint64 caseId)
{
    m_rows.push_back({ m_firstCell, 0, caseId, 0 });
    m_firstCell = quint32(m_batch.states.size());
    if (m_batch.isFull())
        flush();
}

void RowWriter::flush()
{
    if (m_table < 0 || m_rows.empty())
        return;
    const DatabaseTable& table = m_plan.tables[std::size_t(m_table)];
    m_counts[std::size_t(m_table)] +=
        m_target.append(m_table, DatabaseRows(table, m_batch, m_rows));
    m_rows.clear();
    m_batch.clear();
    m_firstCell = 0;
}

} // namespace tessel
