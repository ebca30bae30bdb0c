#include <tessel_data/CSProDbSource.h>

#include <tessel_data/CSProDb.h>
#include <tessel_data/DataError.h>
#include <tessel_data/LineText_p.h>
#include <tessel_data/RecordParser_p.h>
#include <tessel_data/Sqlite_p.h>

#include <model_Tessel/TrailingBlanks_p.h>

#include <QStringList>

#include <sqlite3.h>

#include <algorithm>
#include <cmath>

namespace tessel {

namespace {

constexpr int OldestSchema = 2;
constexpr int NewestSchema = 3;

// A record of the format has 32,000 columns; rows of more text than this are damage.
constexpr std::size_t MostRowBytes = 16'777'216;

// A special value without a code is kept as a number above this.
constexpr double SpecialBound = 1e50;

QString columnName(const DataVariable& variable)
{
    const QString name = variable.itemName.toLower();
    return variable.occurrence > 0 ? QStringLiteral("%1(%2)").arg(name).arg(variable.occurrence)
                                   : name;
}

// A column to select; binary items have none of their own name.
QString selected(const DataVariable& variable)
{
    if (variable.type == DataVariable::Type::Binary)
        return QStringLiteral("NULL");
    return QLatin1String("t.") + quotedName(columnName(variable));
}

QString levelTable(int level)
{
    return QStringLiteral("level-%1").arg(level);
}

QString idOf(const QString& table)
{
    return table + QLatin1String("-id");
}

QString schemaProblem(int version)
{
    return version > NewestSchema
        ? QStringLiteral("was written by a later version of CSPro (schema %1)").arg(version)
        : QStringLiteral("has schema %1, which is not read").arg(version);
}

} // namespace

class CSProDbSource::Job {
public:
    explicit Job(const QString& path)
        : db(path)
        , file(*db.m_file)
        , schema(db.schemaVersion())
    {
        SourceFile sourceFile;
        sourceFile.path = path;
        sourceFile.encoding = QStringLiteral("UTF-8");
        files.push_back(sourceFile);
        if (schema < OldestSchema || schema > NewestSchema)
            throw DataError(DataError::Code::NotThisFormat, path, schemaProblem(schema));
        if (!file.hasTable(QStringLiteral("cases"))) {
            throw DataError(DataError::Code::Damaged, path,
                QStringLiteral("is a CSPro DB without its table of cases"));
        }
        SqliteQuery count(file, QStringLiteral("SELECT count(*) FROM cases"));
        caseRows = count.step() ? count.integer(0) : 0;
    }

    void use(const DataDictionary& data)
    {
        dictionary = data;
        if (schema == OldestSchema) {
            parser = std::make_unique<RecordParser>(dictionary);
            parser->setCasesGiven(true);
        } else {
            prepareTables();
        }
    }

    void readCases(BatchSink& output);

private:
    // Statements for the rows of one level, and of the records of that level.
    struct LevelTable {
        std::unique_ptr<SqliteQuery> rows; // by the row above: its id, the identification items
        QVector<int> ids; // their variables
        std::vector<std::unique_ptr<SqliteQuery>> records;
        std::vector<int> recordIndexes;
    };
    // An identification item of the current row of a level.
    struct IdValue {
        ValueState state;
        qint64 number = 0;
        std::string text;
    };

    void prepareTables();
    void needTable(const QString& name) const;
    void needOnlyParents() const;
    void needUnique(const QString& table, const QString& column) const;
    void needNumber(const SqliteQuery& row, const QString& table) const;
    void readCase(const SqliteQuery& row, qint64 number);
    void readText(std::string_view text, qint64 number);
    // False when there are none.
    bool readLevel(std::size_t level, SqliteQuery& rows, qint64 number);
    void readIds(std::size_t level, const SqliteQuery& row);
    void tellUnreadableId(std::size_t level, qint64 number);
    void addRow(const SqliteQuery& row, int record, qint64 number);
    void rejectRow(DataBatch::Told told, const std::string& text);
    std::string idText(std::size_t levelCount);
    std::string filledColumns(const SqliteQuery& row, int first);
    std::string_view textOf(const SqliteQuery& row, int column);
    void setCell(DataBatch& batch, quint32 cell, const DataVariable& variable,
        const SqliteQuery& row, int column);
    void setNumber(DataBatch& batch, quint32 cell, const DataVariable& variable,
        const SqliteQuery& row, int column);
    void setText(
        DataBatch& batch, quint32 cell, const DataVariable& variable, std::string_view text);
    void tellEncoding(DataBatch& batch, const DataVariable& variable, TextRef text) const;
    void tellOrphans();
    void tellOrphans(const QString& table, const QString& parent, const QString& parentId);
    DataBatch& batch();

public:
    CSProDb db;
    SqliteFile& file;
    int schema;
    qint64 caseRows = 0;
    DataDictionary dictionary;
    std::vector<SourceFile> files;

private:
    std::unique_ptr<RecordParser> parser; // of schema 2
    std::vector<LevelTable> levels; // of schema 3
    std::vector<std::vector<IdValue>> idValues; // of the current row of each level
    BatchSink* sink = nullptr;
    bool isWanted = true;
    qint64 row = 0; // of cases
    std::size_t rowBytes = 0; // of the current row's texts
    LineText decoded;
};

void CSProDbSource::Job::needTable(const QString& name) const
{
    if (!file.hasTable(name)) {
        throw DataError(DataError::Code::Damaged, file.path(),
            QStringLiteral("has no table %1, which its dictionary asks for").arg(name));
    }
}

// Rows of two parents would be read twice.
void CSProDbSource::Job::needOnlyParents() const
{
    needUnique(QStringLiteral("cases"), QStringLiteral("id"));
    for (int level = 1; level <= int(levels.size()); ++level)
        needUnique(levelTable(level), idOf(levelTable(level)));
}

void CSProDbSource::Job::needUnique(const QString& table, const QString& column) const
{
    SqliteQuery repeated(file,
        QStringLiteral("SELECT t.%1 FROM %2 t WHERE t.%1 IS NOT NULL GROUP BY t.%1 "
                       "HAVING count(*) > 1 LIMIT 1")
            .arg(quotedName(column), quotedName(table)));
    if (repeated.step()) {
        const std::string_view text = repeated.text(0).substr(0, 100);
        throw DataError(DataError::Code::Damaged, file.path(),
            QStringLiteral("has several rows of %1 with the same %2, %3")
                .arg(table, column, QString::fromUtf8(text.data(), int(text.size()))));
    }
}

// Another value would be taken for the number 0.
void CSProDbSource::Job::needNumber(const SqliteQuery& source, const QString& table) const
{
    if (source.type(0) != SQLITE_INTEGER) {
        throw DataError(DataError::Code::Damaged, file.path(),
            QStringLiteral("has a row of %1 whose %2 is no whole number").arg(table, idOf(table)));
    }
}

void CSProDbSource::Job::prepareTables()
{
    const auto byIndex = SqliteQuery::Plan::ByIndex;
    int deepest = 1;
    for (const DataRecord& record : dictionary.records)
        deepest = std::max(deepest, record.level);
    levels.resize(std::size_t(deepest));
    idValues.resize(std::size_t(deepest));
    for (int level = 1; level <= deepest; ++level) {
        LevelTable& table = levels[std::size_t(level) - 1];
        const QString name = levelTable(level);
        needTable(name);
        QStringList columns { QLatin1String("t.") + quotedName(idOf(name)) };
        for (const int id : qAsConst(dictionary.ids)) {
            if (dictionary.variables[std::size_t(id)].level != level)
                continue;
            table.ids.append(id);
            columns.append(selected(dictionary.variables[std::size_t(id)]));
        }
        const QString above = level == 1 ? QStringLiteral("case-id") : idOf(levelTable(level - 1));
        const QString sql = QStringLiteral("SELECT %1 FROM %2 t WHERE t.%3 = ?1 ORDER BY %4");
        table.rows = std::make_unique<SqliteQuery>(file,
            sql.arg(columns.join(QLatin1Char(',')), quotedName(name), quotedName(above),
                columns.first()),
            byIndex);
        for (std::size_t r = 0; r < dictionary.records.size(); ++r) {
            const DataRecord& record = dictionary.records[r];
            if (record.level != level)
                continue;
            const QString recordName = record.name.toLower();
            needTable(recordName);
            QStringList items { QLatin1String("t.") + quotedName(idOf(recordName)) };
            for (int c = record.idCount; c < record.columns.size(); ++c)
                items.append(selected(dictionary.variable(int(r), c)));
            table.records.push_back(std::make_unique<SqliteQuery>(file,
                sql.arg(items.join(QLatin1Char(',')), quotedName(recordName),
                    quotedName(idOf(name)), items.first()),
                byIndex));
            table.recordIndexes.push_back(int(r));
        }
    }
}

DataBatch& CSProDbSource::Job::batch()
{
    if (sink->batch().isFull() && isWanted)
        isWanted = sink->deliver();
    sink->batch().doneBytes = row;
    return sink->batch();
}

void CSProDbSource::Job::readCases(BatchSink& output)
{
    sink = &output;
    if (schema == NewestSchema)
        needOnlyParents();
    SqliteQuery cases(file,
        QStringLiteral("SELECT t.id, t.key, t.deleted, t.partial_save_mode, t.questionnaire "
                       "FROM cases t ORDER BY t.file_order"));
    SourceCounts& counts = files.front().counts;
    while (isWanted && cases.step()) {
        ++row;
        ++counts.casesRead;
        if (cases.integer(2) == 0) {
            readCase(cases, counts.cases++);
            continue;
        }
        ++counts.deletedCases;
        rowBytes = 0;
        DataBatch& current = batch();
        const TextRef key = current.keep(textOf(cases, 1));
        current.deleted.push_back({ key, current.keep(textOf(cases, 0)) });
    }
    if (isWanted && schema == NewestSchema)
        tellOrphans();
    if (isWanted && !sink->batch().isEmpty())
        sink->deliver();
}

void CSProDbSource::Job::readCase(const SqliteQuery& caseRow, qint64 number)
{
    const bool isPartlySaved = !caseRow.isNull(3);
    files.front().counts.partlySavedCases += isPartlySaved ? 1 : 0;
    DataBatch& current = batch();
    rowBytes = 0;
    const TextRef key = current.keep(textOf(caseRow, 1));
    const TextRef uuid = current.keep(textOf(caseRow, 0));
    current.cases.push_back(
        { number, quint32(current.records.size()), 0, row, key, uuid, isPartlySaved });
    if (schema == OldestSchema)
        return readText(caseRow.text(4), number);
    SqliteQuery& rows = *levels.front().rows;
    rows.bind(1, caseRow.text(0));
    if (!readLevel(0, rows, number))
        rejectRow({ LineProblem::DamagedRecord, 0, -1, row, number, {} },
            "the case has no row in level-1");
}

void CSProDbSource::Job::readText(std::string_view text, qint64 number)
{
    parser->beginCase(number);
    SourceCounts& counts = files.front().counts;
    while (!text.empty() && isWanted) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        if (!line.empty() && line.back() == '\r')
            line.remove_suffix(1);
        ++counts.lines;
        switch (parser->parse(line, row, 0, batch())) {
        case RecordParser::Outcome::Record:
            ++counts.records;
            break;
        case RecordParser::Outcome::Deleted:
            ++counts.deletedLines;
            break;
        case RecordParser::Outcome::Blank:
            ++counts.blankLines;
            break;
        case RecordParser::Outcome::Rejected:
            ++counts.rejectedLines;
            break;
        }
    }
}

// The rows of a level, with the records of each and the rows of the level below.
bool CSProDbSource::Job::readLevel(std::size_t level, SqliteQuery& rows, qint64 number)
{
    LevelTable& table = levels[level];
    bool hasRows = false;
    while (isWanted && rows.step()) {
        hasRows = true;
        const qint64 id = rows.integer(0);
        const qint64 rejectedBefore = files.front().counts.rejectedLines;
        needNumber(rows, levelTable(int(level) + 1));
        readIds(level, rows);
        for (std::size_t r = 0; r < table.records.size(); ++r) {
            SqliteQuery& record = *table.records[r];
            record.bind(1, id);
            while (record.step())
                addRow(record, table.recordIndexes[r], number);
        }
        if (level + 1 < levels.size()) {
            levels[level + 1].rows->bind(1, id);
            readLevel(level + 1, *levels[level + 1].rows, number);
        }
        if (files.front().counts.rejectedLines == rejectedBefore)
            tellUnreadableId(level, number);
    }
    return hasRows || !isWanted;
}

// A row of a level without any record is told itself, as no record of it can be.
void CSProDbSource::Job::tellUnreadableId(std::size_t level, qint64 number)
{
    const std::vector<IdValue>& values = idValues[level];
    const auto found = std::find_if(values.begin(), values.end(),
        [](const IdValue& value) { return isUnreadable(value.state); });
    if (found == values.end())
        return;
    const int id = levels[level].ids.at(int(found - values.begin()));
    rowBytes = 0;
    rejectRow({ LineProblem::IdNotANumber, 0, id, row, number, {} },
        levelTable(int(level) + 1).toStdString() + ": " + idText(level + 1));
}

// Keeps the identification items of a row of a level for the rows that belong to it.
void CSProDbSource::Job::readIds(std::size_t level, const SqliteQuery& source)
{
    const QVector<int>& ids = levels[level].ids;
    std::vector<IdValue>& values = idValues[level];
    values.assign(std::size_t(ids.size()), {});
    rowBytes = 0;
    DataBatch scratch;
    scratch.addCells(values.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        const auto cell = quint32(i);
        setCell(
            scratch, cell, dictionary.variables[std::size_t(ids.at(int(i)))], source, int(i) + 1);
        values[i].state = scratch.states[i];
        values[i].number = scratch.numbers[i];
        const ValueKind kind = scratch.states[i].kind();
        if (kind != ValueKind::Number && kind != ValueKind::Blank)
            values[i].text = std::string(scratch.textOf(cell));
    }
    for (DataBatch::Told& told : scratch.told) {
        DataBatch& current = batch();
        told.text = current.keep(scratch.text(told.text));
        current.told.push_back(told);
    }
}

void CSProDbSource::Job::addRow(const SqliteQuery& source, int record, qint64 number)
{
    rowBytes = 0;
    DataBatch& current = batch();
    const DataRecord& type = dictionary.records[std::size_t(record)];
    const quint32 firstCell = current.addCells(std::size_t(type.columns.size()));
    quint32 cell = firstCell;
    for (int level = 1; level <= type.level; ++level) {
        for (const IdValue& value : idValues[std::size_t(level) - 1]) {
            if (value.text.empty())
                current.set(cell, value.state, value.number);
            else
                current.setText(cell, value.state, current.keep(value.text));
            ++cell;
        }
    }
    const int id = unreadableId(current, firstCell, type.idCount);
    if (id >= 0) {
        current.states.resize(firstCell);
        current.numbers.resize(firstCell);
        return rejectRow({ LineProblem::IdNotANumber, 0, type.columns.at(id), row, number, {} },
            type.name.toLower().toStdString() + ": " + idText(std::size_t(type.level))
                + filledColumns(source, 1));
    }
    for (int c = type.idCount; c < type.columns.size(); ++c)
        setCell(current, cell++, dictionary.variable(record, c), source, c - type.idCount + 1);
    ++files.front().counts.lines;
    ++files.front().counts.records;
    current.records.push_back({ row, number, 0, record, firstCell, {} });
}

// Identification items of the current rows of the first levels.
std::string CSProDbSource::Job::idText(std::size_t levelCount)
{
    std::string text;
    for (std::size_t level = 0; level < levelCount; ++level)
        text += filledColumns(*levels[level].rows, 1);
    return text;
}

// The columns of a row from first on that are not null, as "name=number " or "name='text' ".
std::string CSProDbSource::Job::filledColumns(const SqliteQuery& source, int first)
{
    std::string text;
    for (int column = first; column < source.columnCount(); ++column) {
        if (source.isNull(column))
            continue;
        const bool isText =
            source.type(column) != SQLITE_INTEGER && source.type(column) != SQLITE_FLOAT;
        const std::string_view value = textOf(source, column);
        const std::string_view quote = isText ? "'" : "";
        text.append(source.columnName(column).toStdString()).append("=").append(quote);
        text.append(value).append(quote).append(" ");
    }
    return text;
}

// As UTF-8, until the next text.
std::string_view CSProDbSource::Job::textOf(const SqliteQuery& source, int column)
{
    const std::string_view text = source.text(column);
    rowBytes += text.size();
    if (rowBytes > MostRowBytes) {
        throw DataError(DataError::Code::Damaged, file.path(),
            QStringLiteral("holds more text in a row than any record has"));
    }
    decoded.set(text);
    return decoded.text();
}

void CSProDbSource::Job::rejectRow(DataBatch::Told told, const std::string& text)
{
    DataBatch& current = batch();
    ++files.front().counts.lines;
    ++files.front().counts.rejectedLines;
    told.text = current.keep(text);
    current.told.push_back(told);
}

void CSProDbSource::Job::setCell(DataBatch& target, quint32 cell, const DataVariable& variable,
    const SqliteQuery& source, int column)
{
    if (source.isNull(column) || variable.type == DataVariable::Type::Binary)
        target.set(cell, variable.codes ? variable.codes->stateOfBlank() : ValueState());
    else if (variable.type == DataVariable::Type::Text)
        setText(target, cell, variable, textOf(source, column));
    else
        setNumber(target, cell, variable, source, column);
}

void CSProDbSource::Job::setText(
    DataBatch& target, quint32 cell, const DataVariable& variable, std::string_view text)
{
    const std::string_view value = trailingBlanksCut(text);
    const CodeTable* codes = variable.codes.get();
    if (value.empty())
        return target.set(cell, codes ? codes->stateOfBlank() : ValueState());
    const TextRef kept = target.keep(value);
    target.setText(cell, codes ? codes->stateOf(value) : ValueState(ValueKind::Text), kept);
    if (decoded.encoding() == LineEncoding::Windows1252)
        tellEncoding(target, variable, kept);
}

// The texts of a database are UTF-8, unless another program wrote one.
void CSProDbSource::Job::tellEncoding(
    DataBatch& target, const DataVariable& variable, TextRef text) const
{
    const auto index = int(&variable - dictionary.variables.data());
    target.told.push_back(
        { LineProblem::OtherEncoding, 0, index, row, files.front().counts.cases - 1, text });
}

// Numbers stand with their decimals in place, whole ones as integers.
void CSProDbSource::Job::setNumber(DataBatch& target, quint32 cell, const DataVariable& variable,
    const SqliteQuery& source, int column)
{
    const qint64 scale = powerOfTen(variable.decimals);
    qint64 number = 0;
    auto status = NumberStatus::Number;
    switch (source.type(column)) {
    case SQLITE_INTEGER:
        if (__builtin_mul_overflow(source.integer(column), scale, &number))
            status = NumberStatus::Unfit;
        break;
    case SQLITE_FLOAT: {
        const double real = source.real(column);
        if (real > SpecialBound)
            return target.set(cell, ValueState(ValueKind::Blank, Special::Missing));
        constexpr double most = 1e18;
        const double scaled = std::nearbyint(real * double(scale));
        if (!(std::abs(scaled) <= most) || scaled / double(scale) != real)
            status = NumberStatus::Unfit;
        else
            number = qint64(scaled);
        break;
    }
    default:
        status = readCode(trailingBlanksCut(source.text(column)), variable.decimals, number);
        break;
    }
    const CodeTable* codes = variable.codes.get();
    if (status == NumberStatus::Number) {
        return target.set(
            cell, codes ? codes->stateOf(number) : ValueState(ValueKind::Number), number);
    }
    if (status == NumberStatus::Blank)
        return target.set(cell, codes ? codes->stateOfBlank() : ValueState());
    target.setText(cell,
        ValueState(status == NumberStatus::Unfit ? ValueKind::Unfit : ValueKind::NotANumber),
        target.keep(textOf(source, column)));
}

// Rows that no case leads to would be lost without a word.
void CSProDbSource::Job::tellOrphans()
{
    for (std::size_t level = 0; level < levels.size(); ++level) {
        const QString table = levelTable(int(level) + 1);
        if (level == 0)
            tellOrphans(table, QStringLiteral("cases"), QStringLiteral("id"));
        else
            tellOrphans(table, levelTable(int(level)), idOf(levelTable(int(level))));
        for (const int record : levels[level].recordIndexes)
            tellOrphans(dictionary.records[std::size_t(record)].name.toLower(), table, idOf(table));
    }
}

void CSProDbSource::Job::tellOrphans(
    const QString& table, const QString& parent, const QString& parentId)
{
    const QString link = parent == QLatin1String("cases") ? QStringLiteral("case-id") : parentId;
    // Needs no index: SQLite looks the links up in a list of its own.
    SqliteQuery orphans(file,
        QStringLiteral("SELECT t.%1, t.* FROM %2 t WHERE t.%5 IS NULL OR t.%5 NOT IN "
                       "(SELECT p.%4 FROM %3 p WHERE p.%4 IS NOT NULL)")
            .arg(quotedName(idOf(table)), quotedName(table), quotedName(parent),
                quotedName(parentId), quotedName(link)));
    while (isWanted && orphans.step()) {
        rowBytes = 0;
        rejectRow({ LineProblem::DamagedRecord, 0, -1, orphans.integer(0), -1, {} },
            "a row of " + table.toStdString()
                + " belongs to no case: " + filledColumns(orphans, 1));
    }
}

CSProDbSource::CSProDbSource(const QString& path, ValueSetChoice choice)
    : m_job(std::make_unique<Job>(path))
{
    m_job->use(DataDictionary::fromBytes(m_job->db.dictionary(), path, choice));
}

CSProDbSource::CSProDbSource(const QString& path, const DataDictionary& dictionary)
    : m_job(std::make_unique<Job>(path))
{
    m_job->use(dictionary);
}

CSProDbSource::~CSProDbSource() = default;

const DataDictionary& CSProDbSource::dictionary() const
{
    return m_job->dictionary;
}

void CSProDbSource::read(BatchSink& sink)
{
    SqliteFile& file = m_job->file;
    file.stopUnless([&sink] { return sink.goesOn(); });
    try {
        m_job->readCases(sink);
    } catch (const SqliteStopped&) {
        return;
    } catch (const DataError& error) {
        if (error.code != DataError::Code::Damaged || !file.hasChanged())
            throw;
        throw DataError(DataError::Code::Busy, error.file,
            QStringLiteral("was changed by another program while it was read; wait until no other "
                           "program writes to it"));
    }
    m_job->files.front().changedWhileRead = file.hasChanged();
}

qint64 CSProDbSource::size() const
{
    return m_job->caseRows;
}

bool CSProDbSource::countsRows() const
{
    return true;
}

const std::vector<SourceFile>& CSProDbSource::files() const
{
    return m_job->files;
}

bool CSProDbSource::hasCases() const
{
    return true;
}

int CSProDbSource::schemaVersion() const
{
    return m_job->schema;
}

} // namespace tessel
