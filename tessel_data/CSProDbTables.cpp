#include <tessel_data/CSProDbTables_p.h>

#include <tessel_data/DataError.h>
#include <tessel_data/RecordParser_p.h>

#include <QStringList>

#include <sqlite3.h>

#include <algorithm>

namespace tessel {

using namespace CSProDbLayout;

namespace {

QString fieldOf(const QString& column)
{
    return QLatin1String("t.") + quotedName(column);
}

} // namespace

CSProDbTables::CSProDbTables(CSProDbRun& run, const DataDictionary& ofFile)
    : m_run(run)
    , m_dictionary(run.dictionary)
    , m_leftOut(m_dictionary, ofFile)
    , m_ownColumns(columnsOf(ofFile))
    , m_comparison(m_dictionary, ofFile)
    , m_cells(run)
{
    addLevel(1);
    for (std::size_t r = 0; r < m_dictionary.records.size(); ++r)
        addRecord(int(r));
    for (const DataRecord& record : qAsConst(m_leftOut.records))
        addLeftOut(record);
    m_idValues.resize(m_levels.size());
}

// ---- tables and their statements

// With the levels above it.
void CSProDbTables::addLevel(int level)
{
    if (level <= int(m_levels.size()))
        return;
    if (level > 1)
        addLevel(level - 1);
    Level added;
    for (const int id : m_dictionary.ids) {
        if (m_dictionary.variables[std::size_t(id)].level == level)
            added.ids.append(id);
    }
    added.table = tableFor(levelTable(level), linkOf(level));
    prepareValues(added.table, linkOf(level), added.ids);
    m_levels.push_back(std::move(added));
}

void CSProDbTables::addRecord(int record)
{
    const DataRecord& type = m_dictionary.records[std::size_t(record)];
    addLevel(type.level);
    const QString link = idOf(levelTable(type.level));
    Table table = tableFor(tableOf(type), link);
    table.record = record;
    prepareValues(table, link, type.columns.mid(type.idCount));
    m_levels[std::size_t(type.level) - 1].records.push_back(std::move(table));
}

// A file without its table has no rows of it.
void CSProDbTables::addLeftOut(const DataRecord& record)
{
    for (int level = 1; level <= record.level; ++level) {
        if (!m_run.file.hasTable(levelTable(level)))
            return;
    }
    if (!m_run.file.hasTable(tableOf(record)))
        return;
    addLevel(record.level);
    m_levels[std::size_t(record.level) - 1].records.push_back(
        tableFor(tableOf(record), idOf(levelTable(record.level))));
}

CSProDbTables::Table CSProDbTables::tableFor(const QString& name, const QString& link) const
{
    need(name, QString(), m_run.file.hasTable(name));
    const QSet<QString> columns = m_run.file.columnsOf(name);
    for (const QString& column : { idOf(name), link })
        need(name, column, columns.contains(column));
    Table table;
    table.name = name;
    table.whole = std::make_unique<SqliteQuery>(m_run.file,
        QStringLiteral("SELECT %1, t.* FROM %2 t WHERE %3 = ?1 ORDER BY %1")
            .arg(fieldOf(idOf(name)), quotedName(name), fieldOf(link)),
        SqliteQuery::Plan::ByIndex);
    return table;
}

// Binary items have no column of their own name.
void CSProDbTables::prepareValues(
    Table& table, const QString& link, const QVector<int>& variables) const
{
    const QSet<QString> present = m_run.file.columnsOf(table.name);
    QStringList fields { fieldOf(idOf(table.name)) };
    for (const int index : variables) {
        const DataVariable& variable = m_dictionary.variables[std::size_t(index)];
        const QString column = columnOf(variable);
        const bool isBinary = variable.type == DataVariable::Type::Binary;
        need(table.name, column, isBinary || present.contains(column));
        fields.append(isBinary ? QStringLiteral("NULL") : fieldOf(column));
    }
    table.values = std::make_unique<SqliteQuery>(m_run.file,
        QStringLiteral("SELECT %1 FROM %2 t WHERE %3 = ?1 ORDER BY %4")
            .arg(fields.join(QLatin1Char(',')), quotedName(table.name), fieldOf(link),
                fields.first()),
        SqliteQuery::Plan::ByIndex);
}

// The file is damaged when its own dictionary asks for what is not there.
void CSProDbTables::need(const QString& table, const QString& column, bool isThere) const
{
    if (isThere)
        return;
    const auto own = m_ownColumns.constFind(table);
    const bool isOwn = own != m_ownColumns.constEnd() && (column.isNull() || own->contains(column));
    const QString missing = column.isNull()
        ? QStringLiteral("table %1").arg(table)
        : QStringLiteral("column %1 in its table %2").arg(column, table);
    if (isOwn) {
        throw DataError(DataError::Code::Damaged, m_run.file.path(),
            QStringLiteral("has no %1, which its dictionary asks for").arg(missing));
    }
    throw DataError(DataError::Code::UnfitDictionary, m_run.file.path(),
        QStringLiteral("has no %1, which the dictionary %2 that was given asks for; give one of "
                       "these data")
            .arg(missing, m_dictionary.name));
}

// Rows of two parents would be read twice.
void CSProDbTables::needUnique(const QString& table, const QString& column) const
{
    SqliteQuery repeated(m_run.file,
        QStringLiteral("SELECT t.%1 FROM %2 t WHERE t.%1 IS NOT NULL GROUP BY t.%1 "
                       "HAVING count(*) > 1 LIMIT 1")
            .arg(quotedName(column), quotedName(table)));
    if (repeated.step()) {
        const std::string_view text = repeated.text(0).substr(0, 100);
        throw DataError(DataError::Code::Damaged, m_run.file.path(),
            QStringLiteral("has several rows of %1 with the same %2, %3")
                .arg(table, column, QString::fromUtf8(text.data(), int(text.size()))));
    }
}

// Another value would be taken for the number 0.
void CSProDbTables::needNumber(const SqliteQuery& row, const Table& table) const
{
    if (row.type(0) != SQLITE_INTEGER) {
        throw DataError(DataError::Code::Damaged, m_run.file.path(),
            QStringLiteral("has a row of %1 whose %2 is no whole number")
                .arg(table.name, idOf(table.name)));
    }
}

// A link may be of another type than what it refers to, so that it leads nowhere.
void CSProDbTables::needAllSeen(const Table& table) const
{
    SqliteQuery count(
        m_run.file, QStringLiteral("SELECT count(*) FROM %1").arg(quotedName(table.name)));
    const qint64 rows = count.step() ? count.integer(0) : 0;
    if (rows != table.seen) {
        throw DataError(DataError::Code::Damaged, m_run.file.path(),
            QStringLiteral("has %1 rows of %2, but the links between its tables lead to %3 of them")
                .arg(rows)
                .arg(table.name)
                .arg(table.seen));
    }
}

// ---- cases

void CSProDbTables::begin()
{
    needUnique(QStringLiteral("cases"), QStringLiteral("id"));
    for (const Level& level : m_levels)
        needUnique(level.table.name, idOf(level.table.name));
    for (const Level& level : m_levels) {
        for (const Table& table : level.records) {
            if (table.record >= 0)
                continue;
            SqliteQuery count(
                m_run.file, QStringLiteral("SELECT count(*) FROM %1").arg(quotedName(table.name)));
            const qint64 rows = count.step() ? count.integer(0) : 0;
            m_run.tell(m_run.told(LineProblem::NotInDictionary),
                QStringLiteral("record %1: %2 rows")
                    .arg(table.name.toUpper())
                    .arg(rows)
                    .toStdString());
        }
    }
    tellLeftOutItems();
}

void CSProDbTables::tellLeftOutItems()
{
    for (const CSProDbLeftOut::Item& item : qAsConst(m_leftOut.items)) {
        const QSet<QString> present = m_run.file.columnsOf(item.table);
        QStringList counts;
        for (const QString& column : item.columns) {
            if (present.contains(column))
                counts.append(QStringLiteral("count(%1)").arg(fieldOf(column)));
        }
        if (counts.isEmpty())
            continue;
        SqliteQuery filled(m_run.file,
            QStringLiteral("SELECT %1 FROM %2 t")
                .arg(counts.join(QLatin1Char(',')), quotedName(item.table)));
        filled.step();
        qint64 values = 0;
        for (int i = 0; i < counts.size(); ++i)
            values += filled.integer(i);
        m_run.tell(m_run.told(LineProblem::NotInDictionary),
            QStringLiteral("item %1: %2 values").arg(item.name).arg(values).toStdString());
    }
}

void CSProDbTables::readCase(const SqliteQuery& caseRow, std::string_view key)
{
    m_key = key;
    m_levels.front().table.values->bind(1, caseRow.text(Id));
    if (!readLevel(0)) {
        m_run.reject(m_run.told(LineProblem::DamagedRecord), "the case has no row in level-1");
    }
}

void CSProDbTables::passDeleted(const SqliteQuery& caseRow)
{
    m_levels.front().table.whole->bind(1, caseRow.text(Id));
    passLevel(0, Passing::Count);
}

// The rows of a level, with the records of each and the rows of the level below.
bool CSProDbTables::readLevel(std::size_t level)
{
    Table& table = m_levels[level].table;
    bool hasRows = false;
    while (m_run.isWanted && table.values->step()) {
        hasRows = true;
        ++table.seen;
        ++m_met;
        needNumber(*table.values, table);
        readRow(level);
    }
    return hasRows || !m_run.isWanted;
}

void CSProDbTables::readRow(std::size_t level)
{
    const qint64 id = m_levels[level].table.values->integer(0);
    const qint64 rejectedBefore = m_run.counts().rejectedLines;
    const qint64 metBefore = m_met;
    readIds(level);
    for (Table& table : m_levels[level].records) {
        (table.record >= 0 ? table.values : table.whole)->bind(1, id);
        readRecords(table, int(level) + 1);
    }
    if (level + 1 < m_levels.size()) {
        m_levels[level + 1].table.values->bind(1, id);
        readLevel(level + 1);
    }
    if (m_run.counts().rejectedLines == rejectedBefore)
        tellOfRow(level, m_met > metBefore);
}

// Keeps the identification items of a row of a level for the rows that belong to it.
void CSProDbTables::readIds(std::size_t level)
{
    const QVector<int>& ids = m_levels[level].ids;
    std::vector<IdValue>& values = m_idValues[level];
    values.assign(std::size_t(ids.size()), {});
    m_cells.beginRow();
    DataBatch scratch;
    scratch.addCells(values.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        const auto cell = quint32(i);
        m_cells.set(scratch, cell, m_dictionary.variables[std::size_t(ids.at(int(i)))],
            *m_levels[level].table.values, int(i) + 1);
        values[i].state = scratch.states[i];
        values[i].number = scratch.numbers[i];
        const ValueKind kind = scratch.states[i].kind();
        if (kind != ValueKind::Number && kind != ValueKind::Blank)
            values[i].text = std::string(scratch.textOf(cell));
    }
    for (const DataBatch::Told& told : scratch.told)
        m_run.tell(told, scratch.text(told.text));
    if (level == 0)
        compareKey(scratch);
}

void CSProDbTables::compareKey(const DataBatch& ids)
{
    if (m_comparison.differs(m_key, ids, 0))
        m_run.tell(m_run.told(LineProblem::KeyDiffers), m_comparison.idsText(ids, 0));
}

// A row of a level without any record is told itself, as no record of it can be: when its
// identification is unreadable, and when nothing else would have it. The key of a case has that of
// the first level.
void CSProDbTables::tellOfRow(std::size_t level, bool hasOthers)
{
    const std::vector<IdValue>& values = m_idValues[level];
    const auto found = std::find_if(values.begin(), values.end(),
        [](const IdValue& value) { return isUnreadable(value.state); });
    const bool isReadable = found == values.end();
    if (!m_run.isWanted || (isReadable && (hasOthers || level == 0)))
        return;
    m_cells.beginRow();
    const std::string text =
        m_levels[level].table.name.toStdString() + ": " + idText(int(level) + 1);
    if (isReadable) {
        m_run.reject(m_run.told(LineProblem::DamagedRecord),
            "a row with neither records nor rows below it: " + text);
    } else {
        const int id = m_levels[level].ids.at(int(found - values.begin()));
        m_run.reject(m_run.told(LineProblem::IdNotANumber, id), text);
    }
}

void CSProDbTables::readRecords(Table& table, int level)
{
    SqliteQuery& rows = table.record >= 0 ? *table.values : *table.whole;
    while (m_run.isWanted && rows.step()) {
        ++table.seen;
        ++m_met;
        m_cells.beginRow();
        if (table.record >= 0)
            addRow(table);
        else
            rejectLeftOut(table, level);
    }
}

void CSProDbTables::addRow(const Table& table)
{
    const DataRecord& type = m_dictionary.records[std::size_t(table.record)];
    DataBatch& batch = m_run.batch();
    const quint32 firstCell = batch.addCells(std::size_t(type.columns.size()));
    quint32 cell = addIds(batch, firstCell, type.level);
    const int id = unreadableId(batch, firstCell, type.idCount);
    if (id >= 0) {
        batch.states.resize(firstCell);
        batch.numbers.resize(firstCell);
        return m_run.reject(m_run.told(LineProblem::IdNotANumber, type.columns.at(id)),
            table.name.toStdString() + ": " + idText(type.level)
                + m_cells.filledColumns(*table.values, 1));
    }
    for (int c = type.idCount; c < type.columns.size(); ++c) {
        m_cells.set(batch, cell++, m_dictionary.variable(table.record, c), *table.values,
            c - type.idCount + 1);
    }
    ++m_run.counts().lines;
    ++m_run.counts().records;
    batch.records.push_back({ m_run.row, m_run.caseNumber, 0, table.record, firstCell, {} });
}

// Those of the current rows of the levels; the cell behind them.
quint32 CSProDbTables::addIds(DataBatch& batch, quint32 cell, int level) const
{
    for (int above = 0; above < level; ++above) {
        for (const IdValue& value : m_idValues[std::size_t(above)]) {
            if (value.text.empty())
                batch.set(cell, value.state, value.number);
            else
                batch.setText(cell, value.state, batch.keep(value.text));
            ++cell;
        }
    }
    return cell;
}

// As a line whose record type the dictionary does not have.
void CSProDbTables::rejectLeftOut(const Table& table, int level)
{
    m_run.reject(m_run.told(LineProblem::UnknownRecordType),
        table.name.toStdString() + ": " + idText(level) + m_cells.filledColumns(*table.whole, 1));
}

// Identification items of the current rows of the first levels.
std::string CSProDbTables::idText(int level)
{
    std::string text;
    for (int above = 0; above < level; ++above)
        text += m_cells.filledColumns(*m_levels[std::size_t(above)].table.values, 1);
    return text;
}

// ---- rows that are not read

void CSProDbTables::pass(Table& table, const SqliteQuery& row, Passing passing)
{
    ++table.seen;
    if (passing == Passing::Count)
        return;
    m_cells.beginRow();
    m_run.reject({ LineProblem::DamagedRecord, 0, -1, 0, -1, {} },
        "a row of " + table.name.toStdString()
            + " belongs to no case: " + m_cells.filledColumns(row, 1));
}

// A row of a level and all below it.
void CSProDbTables::passRow(std::size_t level, const SqliteQuery& row, Passing passing)
{
    needNumber(row, m_levels[level].table);
    pass(m_levels[level].table, row, passing);
    const qint64 id = row.integer(0);
    for (Table& table : m_levels[level].records) {
        table.whole->bind(1, id);
        while (m_run.isWanted && table.whole->step())
            pass(table, *table.whole, passing);
    }
    if (level + 1 < m_levels.size()) {
        m_levels[level + 1].table.whole->bind(1, id);
        passLevel(level + 1, passing);
    }
}

void CSProDbTables::passLevel(std::size_t level, Passing passing)
{
    const SqliteQuery& rows = *m_levels[level].table.whole;
    while (m_run.isWanted && m_levels[level].table.whole->step())
        passRow(level, rows, passing);
}

// Rows that no case leads to would be lost without a word.
void CSProDbTables::end()
{
    for (std::size_t level = 0; level < m_levels.size(); ++level)
        passOrphans(level);
    for (const Level& level : m_levels) {
        if (!m_run.isWanted)
            return;
        needAllSeen(level.table);
        for (const Table& table : level.records)
            needAllSeen(table);
    }
}

void CSProDbTables::passOrphans(std::size_t level)
{
    Table& table = m_levels[level].table;
    const int number = int(level) + 1;
    SqliteQuery rows = orphansOf(table, linkOf(number), tableAbove(number), idAbove(number));
    while (m_run.isWanted && rows.step())
        passRow(level, rows, Passing::Reject);
    for (Table& record : m_levels[level].records) {
        SqliteQuery orphans = orphansOf(record, idOf(table.name), table.name, idOf(table.name));
        while (m_run.isWanted && orphans.step())
            pass(record, orphans, Passing::Reject);
    }
}

// Needs no index: SQLite looks the links up in a list of its own.
SqliteQuery CSProDbTables::orphansOf(
    const Table& table, const QString& link, const QString& parent, const QString& parentId) const
{
    return SqliteQuery(m_run.file,
        QStringLiteral("SELECT %1, t.* FROM %2 t WHERE %3 IS NULL OR %3 NOT IN "
                       "(SELECT p.%4 FROM %5 p WHERE p.%4 IS NOT NULL)")
            .arg(fieldOf(idOf(table.name)), quotedName(table.name), fieldOf(link),
                quotedName(parentId), quotedName(parent)));
}

} // namespace tessel
