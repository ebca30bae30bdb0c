#include <tessel_data/DatabasePlan.h>

#include <tessel_data/QuantityLabel_p.h>

#include <tessel_data/RecordGroups_p.h>
#include <tessel_data/SqlNames.h>

#include <QHash>

#include <algorithm>

namespace tessel {

namespace SystemTable {
const QString cases = QStringLiteral("cases");
const QString records = QStringLiteral("tessel_records");
const QString variables = QStringLiteral("tessel_variables");
const QString values = QStringLiteral("tessel_values");
const QString sources = QStringLiteral("tessel_sources");
const QString builds = QStringLiteral("tessel_builds");
const QString problems = QStringLiteral("tessel_problems");
const QString rejects = QStringLiteral("tessel_rejects");
const QString missing = QStringLiteral("tessel_missing");
const QString deleted = QStringLiteral("tessel_deleted");
} // namespace SystemTable

namespace {

using Role = DatabaseColumn::Role;
using Type = DatabaseColumn::Type;
using Kind = DatabaseTable::Kind;

struct SystemColumn {
    const char* name;
    Type type;
};

using SystemColumns = std::vector<SystemColumn>;

SystemColumns columnsOfRecords()
{
    return { { "table_name", Type::Text }, { "name", Type::Text }, { "label", Type::Text },
        { "type_code", Type::Text }, { "level", Type::Integer }, { "required", Type::Integer },
        { "maximum", Type::Integer }, { "row_count", Type::Integer }, { "label_view", Type::Text },
        { "valid_view", Type::Text } };
}

SystemColumns columnsOfVariables()
{
    return { { "table_name", Type::Text }, { "column_name", Type::Text },
        { "position", Type::Integer }, { "record", Type::Text }, { "name", Type::Text },
        { "item", Type::Text }, { "label", Type::Text }, { "type", Type::Text },
        { "width", Type::Integer }, { "decimals", Type::Integer }, { "level", Type::Integer },
        { "is_id", Type::Integer }, { "occurrence", Type::Integer }, { "value_set", Type::Text },
        { "value_table", Type::Text } };
}

SystemColumns columnsOfValues()
{
    return { { "value_set", Type::Text }, { "value_set_label", Type::Text },
        { "value_table", Type::Text }, { "position", Type::Integer }, { "code", Type::Text },
        { "code_to", Type::Text }, { "label", Type::Text }, { "special", Type::Text } };
}

SystemColumns columnsOfSources()
{
    return { { "source_id", Type::Integer }, { "build_id", Type::Integer }, { "file", Type::Text },
        { "path", Type::Text }, { "bytes", Type::Integer }, { "sha256", Type::Text },
        { "encoding", Type::Text }, { "lines", Type::Integer }, { "records", Type::Integer },
        { "deleted_lines", Type::Integer }, { "blank_lines", Type::Integer },
        { "rejected_lines", Type::Integer }, { "left_out_lines", Type::Integer },
        { "cases_read", Type::Integer }, { "cases", Type::Integer },
        { "deleted_cases", Type::Integer }, { "partly_saved_cases", Type::Integer },
        { "left_out_cases", Type::Integer }, { "dictionary", Type::Text } };
}

SystemColumns columnsOfBuilds()
{
    return { { "build_id", Type::Integer }, { "form", Type::Integer }, { "started", Type::Text },
        { "finished", Type::Text }, { "version", Type::Text }, { "options", Type::Text },
        { "lines", Type::Integer }, { "row_count", Type::Integer },
        { "rejected_lines", Type::Integer }, { "deleted_lines", Type::Integer },
        { "blank_lines", Type::Integer }, { "left_out_lines", Type::Integer },
        { "cases", Type::Integer }, { "deleted_cases", Type::Integer },
        { "left_out_cases", Type::Integer }, { "new_cases", Type::Integer },
        { "changed_cases", Type::Integer }, { "unchanged_cases", Type::Integer },
        { "withdrawn_cases", Type::Integer }, { "problems", Type::Integer } };
}

SystemColumns columnsOfProblems()
{
    return { { "kind", Type::Text }, { "source_id", Type::Integer }, { "line", Type::Integer },
        { "case_id", Type::Integer }, { "case_key", Type::Text }, { "record", Type::Text },
        { "variable", Type::Text }, { "value", Type::Text }, { "first_source_id", Type::Integer },
        { "first_line", Type::Integer }, { "first_case_id", Type::Integer } };
}

SystemColumns columnsOfRejects()
{
    return { { "source_id", Type::Integer }, { "line", Type::Integer }, { "reason", Type::Text },
        { "text", Type::Text }, { "is_whole", Type::Integer } };
}

SystemColumns columnsOfMissing()
{
    return { { "table_name", Type::Text }, { "column_name", Type::Text }, { "row", Type::Integer },
        { "kind", Type::Text } };
}

struct SystemDefinition {
    const QString& name;
    SystemColumns columns;
};

const std::vector<SystemDefinition>& systemTables()
{
    static const std::vector<SystemDefinition> tables {
        { SystemTable::records, columnsOfRecords() },
        { SystemTable::variables, columnsOfVariables() },
        { SystemTable::values, columnsOfValues() },
        { SystemTable::sources, columnsOfSources() },
        { SystemTable::builds, columnsOfBuilds() },
        { SystemTable::problems, columnsOfProblems() },
        { SystemTable::rejects, columnsOfRejects() },
        { SystemTable::missing, columnsOfMissing() },
    };
    return tables;
}

SqlShape shapeOf(const DataVariable& variable)
{
    using VariableType = DataVariable::Type;
    SqlShape shape;
    shape.isText = variable.type == VariableType::Text || variable.type == VariableType::Binary;
    shape.isWhole = variable.decimals == 0;
    shape.isFixed = variable.type == VariableType::Number;
    shape.width = variable.width;
    shape.decimals = variable.decimals;
    shape.hasDecimalMark = variable.hasDecimalMark;
    return shape;
}

Type typeOf(const DataVariable& variable)
{
    switch (variable.type) {
    case DataVariable::Type::Real:
        return Type::Real;
    case DataVariable::Type::Text:
    case DataVariable::Type::Binary:
        return Type::Text;
    case DataVariable::Type::Number:
        break;
    }
    if (variable.decimals > 0)
        return Type::Decimal;
    return variable.width > LongestSqlInteger ? Type::Digits : Type::Integer;
}

// Values that are wider than their item, as a CSPro DB may hold them, and the fractions that SPSS
// and Stata files may hold in a column of whole numbers: SQLite takes them all the same, in
// PostgreSQL the type has no bounds. Where widths hold, small integers make rows half as long.
QString sqlTypeOf(const DataVariable& variable, SqlDialect dialect, int digits)
{
    if (dialect == SqlDialect::PostgreSql) {
        if (digits > 0)
            return postgresIntegerName(sqlIntegerBytes(digits));
        return variable.type == DataVariable::Type::Real
            ? QStringLiteral("DOUBLE PRECISION")
            : sqlTypeName(tessel::sqlTypeOf(shapeOf(variable), dialect), dialect);
    }
    if (variable.type == DataVariable::Type::Real && variable.decimals == 0)
        return sqlTypeName(SqlType::Integer, dialect);
    return sqlTypeName(shapeOf(variable), dialect);
}

QString plainTypeName(Type type, SqlDialect dialect)
{
    switch (type) {
    case Type::Integer:
        return sqlTypeName(SqlType::Integer, dialect);
    case Type::Decimal:
        return sqlTypeName(SqlType::Real, dialect);
    case Type::Real:
        return dialect == SqlDialect::Sqlite ? QStringLiteral("REAL")
                                             : QStringLiteral("DOUBLE PRECISION");
    case Type::Digits:
        return dialect == SqlDialect::Sqlite ? QStringLiteral("TEXT") : QStringLiteral("NUMERIC");
    case Type::Text:
        break;
    }
    return QStringLiteral("TEXT");
}

// What a value takes at most in a row of PostgreSQL, with the blank bytes before the next one:
// longer texts and numbers are kept apart from 25 bytes on.
int mostRowBytes(Type type)
{
    constexpr int number = 8;
    constexpr int decimal = 16; // of 18 digits
    constexpr int longest = 24;
    if (type == Type::Integer || type == Type::Real)
        return number;
    return type == Type::Decimal ? decimal : longest;
}

bool isInvalid(Special special)
{
    return special == Special::Missing || special == Special::NotApplicable;
}

std::vector<DatabaseCode> invalidCodes(const CodeTable& codes)
{
    std::vector<DatabaseCode> invalid;
    for (const auto& segment : codes.numbers()) {
        if (isInvalid(segment.special))
            invalid.push_back({ false, segment.low, segment.high, 0, 0, {} });
    }
    for (const auto& segment : codes.reals()) {
        if (isInvalid(segment.special))
            invalid.push_back({ false, 0, 0, segment.low, segment.high, {} });
    }
    QStringList texts;
    for (const auto& [text, match] : codes.texts()) {
        if (isInvalid(match.special))
            texts.append(QString::fromUtf8(text.data(), int(text.size())));
    }
    texts.sort();
    for (const QString& text : qAsConst(texts))
        invalid.push_back({ false, 0, 0, 0, 0, text });
    return invalid;
}

// The codes and labels of a set, the same for sets that are equal.
QString keyOf(const DataValueSet& set, Type type, int decimals)
{
    QString key = QStringLiteral("%1 %2 ").arg(int(type)).arg(decimals);
    for (const DataCode& code : set.codes) {
        key += QString::number(int(code.special));
        for (const QString& part : { code.code, code.highCode, code.label })
            key += QString::number(part.isNull() ? -1 : part.size()) + QLatin1Char(':') + part;
    }
    return key;
}

} // namespace

int DatabaseTable::column(const QString& columnName) const
{
    for (int c = 0; c < columns.size(); ++c) {
        if (columns.at(c).name == columnName)
            return c;
    }
    return -1;
}

namespace {

// Makes a plan; names are given out in the order of importance to the user.
class DatabasePlanner {
public:
    DatabasePlanner(
        const DataDictionary& dictionary, const PlanOptions& options, DatabasePlan& plan)
        : m_dictionary(dictionary)
        , m_options(options)
        , m_plan(plan)
        , m_names(plan.notes)
    {
    }

    void make();

private:
    void reserveNames();
    void nameLabels();
    void addRecord(int record);
    void addGroup(int record, const RecordGroup& group);
    int countOfPart(int record, const RecordGroup& group, int first, int own) const;
    void addPart(int record, const RecordGroup& group, int first, int count, int part);
    DatabaseColumn column(const DataVariable& variable, int index, const QString& name);
    DatabaseColumn ownColumn(const QString& name, Role role, const QString& label) const;
    DatabaseColumn systemColumn(const QString& name, Type type) const;
    void addCases();
    void addCaseIds(DatabaseTable& table);
    void addDeleted();
    void addSystemTables();
    void addViews();
    void addIndexes();
    int valueTableOf(int set, const DataVariable& variable);
    int addValueTable(int set, const DataVariable& variable);
    void fillEntries(DatabaseValueTable& table, const CodeTable& codes, int set) const;
    QString nameOfView(const DatabaseTable& table, const char* suffix);

    const DataDictionary& m_dictionary;
    const PlanOptions& m_options;
    DatabasePlan& m_plan;
    SqlNames m_names;
    QStringList m_recordNames; // value sets get theirs after them
    QHash<QString, int> m_valueTables; // by keyOf()
    QVector<int> m_languages;
};

} // namespace

void DatabasePlanner::make()
{
    m_plan.dialect = m_options.dialect;
    m_plan.hasCases = m_options.hasCases;
    m_plan.hasMissingKinds = m_dictionary.hasMissingKinds;
    m_plan.addition = m_options.addition;
    m_languages = m_options.languages.isEmpty() ? QVector<int> { 0 } : m_options.languages;
    nameLabels();
    reserveNames();
    for (int record = 0; record < int(m_dictionary.records.size()); ++record)
        addRecord(record);
    if (m_plan.hasCases)
        addCases();
    if (m_plan.addition != Addition::None)
        addDeleted();
    addViews();
    addSystemTables();
    addIndexes();
}

void DatabasePlanner::reserveNames()
{
    if (m_plan.hasCases)
        m_names.take(SystemTable::cases);
    for (const SystemDefinition& table : systemTables())
        m_names.take(table.name);
    m_names.take(SystemTable::deleted);
    for (const DataRecord& record : m_dictionary.records)
        m_recordNames.append(
            m_names.take(record.name, { SqlThing::Kind::Table, record.name, QString() }));
}

void DatabasePlanner::nameLabels()
{
    UniqueNames names;
    for (const int language : qAsConst(m_languages)) {
        const QString suffix = m_plan.labelColumns.isEmpty()
            ? QString()
            : QLatin1Char('_') + m_dictionary.languages.value(language).name.toLower();
        m_plan.labelColumns.append(names.take(QLatin1String("label") + suffix));
    }
}

void DatabasePlanner::addRecord(int record)
{
    const QVector<RecordGroup> groups =
        recordGroups(m_dictionary, record, m_options.hasRepeatTables, m_languages.first());
    for (const RecordGroup& group : groups)
        addGroup(record, group);
}

void DatabasePlanner::addGroup(int record, const RecordGroup& group)
{
    const int own = (m_plan.hasCases ? 2 : 1) + (group.isRepeat ? 1 : 0);
    const int count = group.places.first().size();
    int part = 0;
    for (int first = 0; part == 0 || first < count;) {
        const int taken = countOfPart(record, group, first, own);
        addPart(record, group, first, taken, ++part);
        first += taken;
    }
    if (part > 1) {
        m_plan.notes.append({ SqlNote::Kind::InParts,
            { SqlThing::Kind::Table, group.name, QString() }, QString(), SqlNote::Reason::None,
            count, 0, { QStringLiteral("case_id"), QStringLiteral("row") } });
    }
}

// The columns from first on that one table takes, also when all of them are filled.
int DatabasePlanner::countOfPart(int record, const RecordGroup& group, int first, int own) const
{
    const QVector<int>& places = group.places.first();
    const int end = std::min(places.size(), first + mostSqlColumns(m_options.dialect) - own);
    if (m_options.dialect == SqlDialect::Sqlite)
        return end - first;
    int bytes = own * mostRowBytes(Type::Integer);
    for (int i = first; i < end; ++i) {
        bytes += mostRowBytes(typeOf(m_dictionary.variable(record, places.at(i))));
        if (bytes > MostSqlRowBytes)
            return i - first;
    }
    return end - first;
}

void DatabasePlanner::addPart(int record, const RecordGroup& group, int first, int count, int part)
{
    const QString wanted =
        part == 1 ? group.name : QStringLiteral("%1_%2").arg(group.name).arg(part);
    DatabaseTable table;
    table.name = part == 1 && !group.isRepeat
        ? m_recordNames.at(record)
        : m_names.take(wanted, { SqlThing::Kind::Table, wanted, QString() });
    table.label = group.label;
    table.kind = group.isRepeat ? Kind::Repeat : Kind::Record;
    table.record = record;
    QVector<DatabaseColumn>& columns = table.columns;
    if (m_plan.hasCases)
        columns.append(ownColumn(QStringLiteral("case_id"), Role::CaseId,
            QStringLiteral("Number of the case, see table cases")));
    columns.append(ownColumn(QStringLiteral("row"), Role::Row,
        m_plan.hasCases ? QStringLiteral("Number of the row within its case")
                        : QStringLiteral("Number of the row in its file")));
    if (group.isRepeat)
        columns.append(ownColumn(QStringLiteral("occurrence"), Role::Occurrence,
            QStringLiteral("Number of the occurrence, from 1")));
    const int own = columns.size();
    SqlNames names(m_plan.notes);
    for (const DatabaseColumn& taken : qAsConst(columns))
        names.take(taken.name);
    for (int i = first; i < first + count; ++i) {
        const int place = group.places.first().at(i);
        const int index = m_dictionary.records[std::size_t(record)].columns.at(place);
        const QString& name = group.columnNames.at(i);
        DatabaseColumn made = column(m_dictionary.variables[std::size_t(index)], index,
            names.take(name, { SqlThing::Kind::Column, name, table.name }));
        made.isId = place < m_dictionary.records[std::size_t(record)].idCount;
        columns.append(made);
    }
    for (const QVector<int>& places : group.places)
        table.cells.push_back(QVector<int>(own, -1) + places.mid(first, count));
    m_plan.tables.push_back(std::move(table));
}

DatabaseColumn DatabasePlanner::ownColumn(
    const QString& name, Role role, const QString& label) const
{
    DatabaseColumn own;
    own.name = name;
    own.label = label;
    own.role = role;
    own.sqlType = sqlTypeName(SqlType::Integer, m_options.dialect);
    return own;
}

DatabaseColumn DatabasePlanner::column(const DataVariable& variable, int index, const QString& name)
{
    DatabaseColumn made;
    made.name = name;
    made.label = m_dictionary.labelText(variable.label, m_languages.first());
    made.type = typeOf(variable);
    made.decimals = made.type == Type::Decimal ? variable.decimals : 0;
    made.digits = m_options.hasWidths && made.type == Type::Integer ? variable.width : 0;
    made.sqlType = sqlTypeOf(variable, m_options.dialect, made.digits);
    made.variable = index;
    if (variable.codes)
        made.invalid = invalidCodes(*variable.codes);
    for (const int set : variable.valueSets) {
        const int table = valueTableOf(set, variable);
        if (made.valueTable < 0)
            made.valueTable = table;
    }
    return made;
}

DatabaseColumn DatabasePlanner::systemColumn(const QString& name, Type type) const
{
    DatabaseColumn made;
    made.name = name;
    made.type = type;
    made.sqlType = plainTypeName(type, m_options.dialect);
    return made;
}

// Equal sets share a table; -1 for sets without codes.
int DatabasePlanner::valueTableOf(int set, const DataVariable& variable)
{
    const DataValueSet& source = m_dictionary.valueSets[std::size_t(set)];
    const Type type = typeOf(variable);
    if (source.codes.isEmpty() || variable.type == DataVariable::Type::Binary)
        return -1;
    const QString key = keyOf(source, type, type == Type::Decimal ? variable.decimals : 0);
    const auto known = m_valueTables.constFind(key);
    const int index = known != m_valueTables.constEnd() ? *known : addValueTable(set, variable);
    m_valueTables.insert(key, index);
    QVector<int>& sets = m_plan.valueTables[std::size_t(index)].sets;
    if (!sets.contains(set))
        sets.append(set);
    return index;
}

int DatabasePlanner::addValueTable(int set, const DataVariable& variable)
{
    const DataValueSet& source = m_dictionary.valueSets[std::size_t(set)];
    DatabaseValueTable values;
    values.type = typeOf(variable);
    values.decimals = values.type == Type::Decimal ? variable.decimals : 0;
    if (m_plan.hasMissingKinds) {
        for (const DataCode& code : source.codes) {
            if (code.special == Special::Missing)
                values.missingLabels.insert(code.code, code.label);
        }
    }
    values.quantityLabel = m_dictionary.labelText(quantityLabelOf(source), m_languages.first());
    fillEntries(values, m_dictionary.codesOf(set, variable), set);
    values.table = int(m_plan.tables.size());
    DatabaseTable table;
    const QString wanted =
        source.name.isEmpty() ? variable.itemName + QLatin1String("_labels") : source.name;
    table.name = m_names.take(wanted, { SqlThing::Kind::ValueTable, wanted, variable.name });
    table.label = m_dictionary.labelText(source.label, m_languages.first());
    table.kind = Kind::Values;
    const QStringList codeColumns = values.hasRanges
        ? QStringList { QStringLiteral("code_from"), QStringLiteral("code_to") }
        : QStringList { QStringLiteral("code") };
    for (const QString& name : codeColumns) {
        DatabaseColumn code = systemColumn(name, values.type);
        code.decimals = values.decimals;
        table.columns.append(code);
    }
    for (const QString& name : qAsConst(m_plan.labelColumns))
        table.columns.append(systemColumn(name, Type::Text));
    table.columns.append(systemColumn(QStringLiteral("special"), Type::Text));
    m_plan.tables.push_back(std::move(table));
    m_plan.valueTables.push_back(std::move(values));
    return int(m_plan.valueTables.size()) - 1;
}

void DatabasePlanner::fillEntries(DatabaseValueTable& table, const CodeTable& codes, int set) const
{
    using Entry = DatabaseValueTable::Entry;
    const auto entryOf = [&](int place, Special special) {
        Entry entry;
        entry.special = special;
        const QString& label = m_dictionary.valueSets[std::size_t(set)].codes.at(place).label;
        for (const int language : m_languages)
            entry.labels.append(m_dictionary.labelText(label, language));
        return entry;
    };
    for (const auto& segment : codes.numbers()) {
        Entry entry = entryOf(segment.entry, segment.special);
        entry.low = segment.low;
        entry.high = segment.high;
        table.hasRanges = table.hasRanges || segment.low != segment.high;
        table.entries.push_back(entry);
    }
    for (const auto& segment : codes.reals()) {
        Entry entry = entryOf(segment.entry, segment.special);
        entry.lowReal = segment.low;
        entry.highReal = segment.high;
        table.hasRanges = table.hasRanges || segment.low != segment.high;
        table.entries.push_back(entry);
    }
    std::vector<std::pair<int, Entry>> texts; // by their places in the set
    for (const auto& [text, match] : codes.texts()) {
        Entry entry = entryOf(match.entry, match.special);
        entry.text = QString::fromUtf8(text.data(), int(text.size()));
        texts.emplace_back(match.entry, entry);
    }
    std::sort(texts.begin(), texts.end(),
        [](const auto& first, const auto& second) { return first.first < second.first; });
    for (const auto& [place, entry] : texts)
        table.entries.push_back(entry);
    if (codes.blank().isCode) {
        table.entries.push_back(entryOf(codes.blank().entry, codes.blank().special));
        table.entries.back().isBlank = true;
    }
}

void DatabasePlanner::addCases()
{
    DatabaseTable table;
    table.name = SystemTable::cases;
    table.label = QStringLiteral("The cases, in the order of the sources");
    table.kind = Kind::Cases;
    table.columns.append(ownColumn(
        QStringLiteral("case_id"), Role::CaseId, QStringLiteral("Number of the case, from 1")));
    const SystemColumn own[] = { { "source_id", Type::Integer }, { "line", Type::Integer },
        { "uuid", Type::Text }, { "records", Type::Integer }, { "partly_saved", Type::Integer },
        { "duplicate_of", Type::Integer }, { "content", Type::Integer } };
    for (const SystemColumn& entry : own)
        table.columns.append(systemColumn(QLatin1String(entry.name), entry.type));
    addCaseIds(table);
    QVector<int> cells { -1 };
    for (int c = 1; c < table.columns.size(); ++c)
        cells.append(c - 1);
    table.cells.push_back(cells);
    m_plan.tables.push_back(std::move(table));
}

// Same names as in the table of cases.
void DatabasePlanner::addDeleted()
{
    const DatabaseTable& cases = m_plan.tables[std::size_t(m_plan.table(SystemTable::cases))];
    DatabaseTable table;
    table.name = SystemTable::deleted;
    table.kind = Kind::Deleted;
    table.columns.append(systemColumn(QStringLiteral("uuid"), Type::Text));
    for (const DatabaseColumn& column : cases.columns) {
        if (column.isId)
            table.columns.append(column);
    }
    m_plan.tables.push_back(std::move(table));
}

void DatabasePlanner::addCaseIds(DatabaseTable& table)
{
    SqlNames names(m_plan.notes);
    for (const DatabaseColumn& taken : qAsConst(table.columns))
        names.take(taken.name);
    for (const int id : m_dictionary.ids) {
        const DataVariable& variable = m_dictionary.variables[std::size_t(id)];
        if (variable.level != 1)
            continue;
        const QString name = names.take(
            variable.name, { SqlThing::Kind::Column, variable.name, SystemTable::cases });
        table.columns.append(column(variable, id, name));
        table.columns.last().isId = true;
    }
}

void DatabasePlanner::addSystemTables()
{
    for (const SystemDefinition& definition : systemTables()) {
        if (definition.name == SystemTable::missing && !m_plan.hasMissingKinds)
            continue;
        DatabaseTable table;
        table.name = definition.name;
        for (const SystemColumn& source : definition.columns)
            table.columns.append(systemColumn(QLatin1String(source.name), source.type));
        if (definition.name == SystemTable::values) {
            const QStringList further = m_plan.labelColumns.mid(1);
            for (const QString& name : further)
                table.columns.append(systemColumn(name, Type::Text));
        }
        m_plan.tables.push_back(std::move(table));
    }
    for (DatabaseTable& table : m_plan.tables) {
        if (!table.cells.empty())
            continue;
        QVector<int> cells;
        for (int c = 0; c < table.columns.size(); ++c)
            cells.append(c);
        table.cells.push_back(cells);
    }
}

QString DatabasePlanner::nameOfView(const DatabaseTable& table, const char* suffix)
{
    const QString wanted = table.name + QLatin1String(suffix);
    return m_names.take(wanted, { SqlThing::Kind::View, wanted, QString() });
}

void DatabasePlanner::addViews()
{
    for (DatabaseTable& table : m_plan.tables) {
        if (table.kind != Kind::Record && table.kind != Kind::Repeat)
            continue;
        table.labelView = nameOfView(table, "_labels");
        table.validView = nameOfView(table, "_valid");
    }
}

void DatabasePlanner::addIndexes()
{
    const auto add = [this](int table, const char* suffix, const QStringList& columns) {
        const QString wanted = m_plan.tables[std::size_t(table)].name + QLatin1String(suffix);
        const QString name = m_names.take(wanted, { SqlThing::Kind::Index, wanted, QString() });
        m_plan.indexes.push_back({ name, table, columns, false });
    };
    if (m_plan.hasMissingKinds) {
        add(m_plan.table(SystemTable::missing), "_place",
            { QStringLiteral("table_name"), QStringLiteral("column_name"), QStringLiteral("row"),
                QStringLiteral("kind") });
    }
    for (int t = 0; m_plan.hasCases && t < int(m_plan.tables.size()); ++t) {
        const DatabaseTable& table = m_plan.tables[std::size_t(t)];
        if (table.kind == Kind::Record || table.kind == Kind::Repeat)
            add(t, "_case", { QStringLiteral("case_id") });
        if (table.kind != Kind::Cases)
            continue;
        QStringList ids;
        for (const DatabaseColumn& column : table.columns) {
            if (column.isId)
                ids.append(column.name);
        }
        constexpr int mostKeys = 32; // of PostgreSQL
        if (!ids.isEmpty())
            add(t, "_key", ids.mid(0, mostKeys));
        add(t, "_uuid", { QStringLiteral("uuid") });
        m_plan.indexes.back().skipsNull = true;
    }
}

DatabasePlan::DatabasePlan(const DataDictionary& dictionary, const PlanOptions& options)
{
    DatabasePlanner(dictionary, options, *this).make();
}

int DatabasePlan::table(const QString& name) const
{
    for (std::size_t t = 0; t < tables.size(); ++t) {
        if (tables[t].name == name)
            return int(t);
    }
    return -1;
}

QVector<int> DatabasePlan::tablesOf(int record) const
{
    QVector<int> found;
    for (std::size_t t = 0; t < tables.size(); ++t) {
        if (tables[t].record == record)
            found.append(int(t));
    }
    return found;
}

} // namespace tessel
