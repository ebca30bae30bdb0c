#include <tessel_data/DatabaseMerge_p.h>

#include <tessel_data/DataError.h>
#include <tessel_data/SqlNames.h>
#include <tessel_data/SqlTypes.h>

#include <algorithm>

namespace tessel {

namespace {

using Kind = DatabaseTable::Kind;
using Place = MergeSession::Place;

bool hasRows(const DatabaseTable& table)
{
    return table.kind == Kind::Record || table.kind == Kind::Repeat;
}

// Of a whole number in PostgreSQL; 0: it is none.
int integerBytes(const QString& type)
{
    for (const int bytes : { int(sizeof(qint16)), int(sizeof(qint32)), int(sizeof(qint64)) }) {
        if (type.compare(postgresIntegerName(bytes), Qt::CaseInsensitive) == 0)
            return bytes;
    }
    return 0;
}

// SQLite keeps texts of any width in a column, whatever it says; PostgreSQL's integers are made
// wider where they have to be.
QString comparedType(const MergeSession::TableColumn& column, SqlDialect dialect)
{
    if (dialect == SqlDialect::Sqlite)
        return column.type.section(QLatin1Char('('), 0, 0);
    return integerBytes(column.type) > 0 ? postgresIntegerName(sizeof(qint64)) : column.type;
}

const MergeSession::TableColumn* find(
    const std::vector<MergeSession::TableColumn>& columns, const QString& name)
{
    const auto found = std::find_if(columns.begin(), columns.end(),
        [&](const MergeSession::TableColumn& column) { return column.name == name; });
    return found == columns.end() ? nullptr : &*found;
}

} // namespace

DatabaseMerge::DatabaseMerge(MergeSession& session, const DatabasePlan& plan)
    : m_session(session)
    , m_plan(plan)
    , m_match(session, plan)
{
}

// ---- what is there

void DatabaseMerge::check()
{
    checkForm();
    const QStringList unfit = checkVariables();
    if (unfit.isEmpty())
        return;
    throw DataError(DataError::Code::UnfitDictionary, m_session.name(),
        QStringLiteral("cannot be added to, and is as it was; make it anew, or add with the "
                       "dictionary and the options that it was made with"),
        unfit);
}

// Tables that only look alike are of another program, or of another version of this one.
void DatabaseMerge::checkForm()
{
    QStringList missing;
    for (const DatabaseTable& table : m_plan.tables) {
        if (table.kind == Kind::System && m_session.columns(Place::Kept, table.name).empty())
            missing.append(table.name);
    }
    if (!missing.isEmpty()) {
        throw DataError(DataError::Code::NotThisFormat, m_session.name(),
            QStringLiteral("was not made by tessel build and cannot be added to: it has no table ")
                + missing.join(QLatin1String(", ")));
    }
    const auto& builds = m_session.columns(Place::Kept, SystemTable::builds);
    const qint64 form = find(builds, QStringLiteral("form"))
        ? m_session.number(
            QStringLiteral("SELECT max(form) FROM %1").arg(m_session.kept(SystemTable::builds)))
        : 0;
    if (form != DatabaseForm) {
        throw DataError(DataError::Code::NotThisFormat, m_session.name(),
            QStringLiteral("was made by another version of tessel build (form %1, not %2) and "
                           "cannot be added to; make it anew from its sources")
                .arg(form)
                .arg(DatabaseForm));
    }
}

// Every column of the database must still be filled, with values of the same type.
QStringList DatabaseMerge::checkVariables()
{
    QStringList unfit;
    for (const QStringList& row :
        m_session.rows(QStringLiteral("SELECT DISTINCT table_name FROM %1 ORDER BY table_name")
                           .arg(m_session.kept(SystemTable::variables)))) {
        const int table = m_plan.table(row.first());
        if (table < 0 || m_plan.tables[std::size_t(table)].kind == Kind::Values)
            unfit.append(QStringLiteral("table %1 would get no rows").arg(row.first()));
    }
    for (const DatabaseTable& table : m_plan.tables) {
        if (table.kind != Kind::Values && table.kind != Kind::Deleted)
            unfit += checkColumns(table);
    }
    return unfit;
}

QStringList DatabaseMerge::checkColumns(const DatabaseTable& table)
{
    const auto before = m_session.columns(Place::Kept, table.name);
    const auto after = m_session.columns(Place::Staged, table.name);
    const bool isFixed = table.kind == Kind::System || table.kind == Kind::Cases;
    QStringList unfit;
    for (const MergeSession::TableColumn& column : before) {
        const MergeSession::TableColumn* now = find(after, column.name);
        if (!now) {
            unfit.append(
                QStringLiteral("column %1.%2 would get no values").arg(table.name, column.name));
        } else if (comparedType(*now, m_plan.dialect) != comparedType(column, m_plan.dialect)) {
            unfit.append(QStringLiteral("column %1.%2 is of type %3 and would have to be %4")
                             .arg(table.name, column.name, column.type, now->type));
        }
    }
    for (const MergeSession::TableColumn& column : after) {
        const int place = table.column(column.name);
        const bool isId = place >= 0 && table.columns.at(place).isId;
        if (!before.empty() && (isFixed || isId) && !find(before, column.name)) {
            unfit.append(
                (isId ? QStringLiteral("table %1 has no column %2, by which cases are known")
                      : QStringLiteral("table %1 has no column %2"))
                    .arg(table.name, column.name));
        }
    }
    return unfit;
}

// ---- tables, columns and labels

bool DatabaseMerge::hasSameDefinitions()
{
    const auto differ = [this](const QString& table, const QString& columns) {
        const QString before =
            QStringLiteral("SELECT %1 FROM %2").arg(columns, m_session.kept(table));
        const QString after =
            QStringLiteral("SELECT %1 FROM %2").arg(columns, m_session.staged(table));
        const QString lost = QStringLiteral("SELECT count(*) FROM (%1 EXCEPT %2) AS d");
        return m_session.number(lost.arg(before, after)) > 0
            || m_session.number(lost.arg(after, before)) > 0;
    };
    return !differ(SystemTable::variables, QStringLiteral("*"))
        && !differ(SystemTable::values, QStringLiteral("*"))
        && !differ(SystemTable::records,
            QStringLiteral("table_name, name, label, type_code, level, required, maximum"));
}

// The columns whose integers are smaller than those that the batch may bring; none in SQLite.
QStringList DatabaseMerge::narrowColumns(const DatabaseTable& table)
{
    QStringList narrow;
    const bool isKept = hasRows(table) || table.kind == Kind::Cases;
    if (m_plan.dialect == SqlDialect::Sqlite || !isKept)
        return narrow;
    const auto before = m_session.columns(Place::Kept, table.name);
    for (const DatabaseColumn& column : table.columns) {
        const MergeSession::TableColumn* known = find(before, column.name);
        if (known && integerBytes(known->type) < integerBytes(column.sqlType))
            narrow.append(column.name);
    }
    return narrow;
}

bool DatabaseMerge::isNarrow()
{
    return std::any_of(m_plan.tables.begin(), m_plan.tables.end(),
        [this](const DatabaseTable& table) { return !narrowColumns(table).isEmpty(); });
}

void DatabaseMerge::widen(const DatabaseTable& table)
{
    QStringList changes;
    const QStringList names = narrowColumns(table);
    for (const QString& name : names) {
        changes.append(QStringLiteral("ALTER COLUMN %1 TYPE %2")
                           .arg(sqlIdentifier(name), table.columns.at(table.column(name)).sqlType));
    }
    if (!changes.isEmpty()) {
        m_session.run(QStringLiteral("ALTER TABLE %1 %2")
                          .arg(m_session.kept(table.name), changes.join(QLatin1String(", "))));
    }
}

void DatabaseMerge::updateDefinitions()
{
    for (const QStringList& row : m_session.rows(QStringLiteral("SELECT table_name, row_count "
                                                                "FROM %1")
                                                     .arg(m_session.kept(SystemTable::records))))
        m_rows.insert(row.at(0), row.at(1).toLongLong());
    if (hasSameDefinitions() && !isNarrow())
        return;
    for (const DatabaseTable& table : m_plan.tables) {
        for (const QString& view : { table.labelView, table.validView }) {
            if (!view.isEmpty())
                m_session.run(QStringLiteral("DROP VIEW IF EXISTS ") + m_session.kept(view));
        }
    }
    for (const DatabaseTable& table : m_plan.tables) {
        widen(table);
        if (hasRows(table))
            makeMissing(table);
    }
    renewValueTables();
    copyAll(SystemTable::records);
    copyAll(SystemTable::variables);
    copyAll(SystemTable::values);
    for (const DatabaseTable& table : m_plan.tables)
        m_session.makeViews(table);
}

void DatabaseMerge::makeMissing(const DatabaseTable& table)
{
    const auto before = m_session.columns(Place::Kept, table.name);
    if (!before.empty()) {
        for (const DatabaseColumn& column : table.columns) {
            if (!find(before, column.name)) {
                m_session.run(QStringLiteral("ALTER TABLE %1 ADD COLUMN %2 %3")
                                  .arg(m_session.kept(table.name), sqlIdentifier(column.name),
                                      column.sqlType));
            }
        }
        return;
    }
    m_session.makeTable(table);
    for (const DatabaseIndex& index : m_plan.indexes) {
        if (m_plan.tables[std::size_t(index.table)].name == table.name)
            m_session.makeIndex(index);
    }
}

void DatabaseMerge::renewValueTables()
{
    for (const QStringList& row : m_session.rows(
             QStringLiteral("SELECT DISTINCT value_table FROM %1 WHERE value_table IS NOT NULL")
                 .arg(m_session.kept(SystemTable::values))))
        m_session.run(QStringLiteral("DROP TABLE IF EXISTS ") + m_session.kept(row.first()));
    for (const DatabaseTable& table : m_plan.tables) {
        if (table.kind != Kind::Values)
            continue;
        m_session.makeTable(table);
        m_session.run(
            insertion(table.name, m_session.staged(table.name) + QLatin1String(" t"), {}, {}));
    }
}

void DatabaseMerge::copyAll(const QString& table)
{
    m_session.run(QStringLiteral("DELETE FROM ") + m_session.kept(table));
    m_session.run(insertion(table, m_session.staged(table) + QLatin1String(" t"), {}, {}));
}

// Copies the rows t of a temporary table; replaced: by column, what stands in place of its value.
QString DatabaseMerge::insertion(const QString& table, const QString& from,
    const QHash<QString, QString>& replaced, const QString& condition) const
{
    QStringList names;
    QStringList values;
    for (const DatabaseColumn& column : m_plan.tables[std::size_t(m_plan.table(table))].columns) {
        names.append(sqlIdentifier(column.name));
        values.append(replaced.value(column.name, QLatin1String("t.") + names.last()));
    }
    QString sql = QStringLiteral("INSERT INTO %1 (").arg(m_session.kept(table))
        + names.join(QLatin1String(", ")) + QLatin1String(") SELECT ")
        + values.join(QLatin1String(", ")) + QLatin1String(" FROM ") + from;
    if (!condition.isEmpty())
        sql += QLatin1String(" WHERE ") + condition;
    return sql;
}

// ---- changes

// A case keeps the UUID it has, and gets one where it had none.
void DatabaseMerge::keepUuids()
{
    m_session.run(
        m_match
            .sql("UPDATE %1 AS b SET uuid = (SELECT c.uuid FROM tessel_add_match m JOIN %2 c "
                 "ON c.case_id = m.case_id WHERE m.batch_id = b.case_id) WHERE b.uuid IS "
                 "NULL AND b.case_id IN (SELECT m.batch_id FROM tessel_add_match m WHERE "
                 "m.kind = %3)")
            .arg(m_session.staged(SystemTable::cases), m_session.kept(SystemTable::cases),
                QString::number(CaseMatch::Changed)));
    m_session.run(
        m_match
            .sql("UPDATE %1 AS c SET uuid = (SELECT b.uuid FROM tessel_add_match m JOIN %2 b "
                 "ON b.case_id = m.batch_id WHERE m.case_id = c.case_id) WHERE c.uuid IS "
                 "NULL AND c.case_id IN (SELECT m.case_id FROM tessel_add_match m JOIN %2 b "
                 "ON b.case_id = m.batch_id WHERE m.kind = %3 AND b.uuid IS NOT NULL)")
            .arg(m_session.kept(SystemTable::cases), m_session.staged(SystemTable::cases),
                QString::number(CaseMatch::Unchanged)));
}

void DatabaseMerge::removeGone()
{
    const QString gone =
        m_match.sql("DELETE FROM %1 WHERE case_id IN (SELECT case_id FROM tessel_add_gone)");
    for (const DatabaseTable& table : m_plan.tables) {
        if (hasRows(table))
            m_rows[table.name] -= m_session.run(gone.arg(m_session.kept(table.name)));
    }
    m_session.run(gone.arg(m_session.kept(SystemTable::problems)));
    m_session.run(gone.arg(m_session.kept(SystemTable::cases)));
}

void DatabaseMerge::addCases()
{
    m_session.run(insertion(SystemTable::cases,
        m_match.sql("%1 t JOIN tessel_add_match m ON m.batch_id = t.case_id")
            .arg(m_session.staged(SystemTable::cases)),
        { { QStringLiteral("case_id"), QStringLiteral("m.case_id") },
            { QStringLiteral("source_id"), QStringLiteral("t.source_id + %1").arg(m_sources) },
            { QStringLiteral("duplicate_of"), QStringLiteral("NULL") } },
        QStringLiteral("m.kind <> %1 ORDER BY m.case_id").arg(CaseMatch::Unchanged)));
}

void DatabaseMerge::addRows()
{
    for (const DatabaseTable& table : m_plan.tables) {
        if (!hasRows(table))
            continue;
        m_rows[table.name] += m_session.run(insertion(table.name,
            m_match.sql("%1 t JOIN tessel_add_match m ON m.batch_id = t.case_id")
                .arg(m_session.staged(table.name)),
            { { QStringLiteral("case_id"), QStringLiteral("m.case_id") } },
            QStringLiteral("m.kind <> %1").arg(CaseMatch::Unchanged)));
    }
}

void DatabaseMerge::addSources()
{
    m_session.run(insertion(SystemTable::sources,
        m_session.staged(SystemTable::sources) + QLatin1String(" t"),
        { { QStringLiteral("source_id"), QStringLiteral("t.source_id + %1").arg(m_sources) },
            { QStringLiteral("build_id"), QString::number(m_build) } },
        {}));
}

// A file that comes again, or a newer version of it, says again what it said before: everything, or
// what is equal where it may be another file of the same path.
void DatabaseMerge::removeRepeated(
    const QString& table, const QString& condition, const QString& columns)
{
    const bool isWhole = m_plan.addition == Addition::Withdrawing;
    const QString newer = m_match.sql("source_id IN (SELECT p.source_id FROM tessel_add_path p)");
    const QString corrected = isWhole
        ? newer
        : m_match.sql("source_id IN (SELECT p.source_id FROM tessel_add_path p WHERE p.is_known "
                      "= 1)");
    const QString same =
        QStringLiteral(
            "source_id IN (SELECT k.source_id FROM %1 k JOIN %2 s ON s.sha256 = k.sha256)")
            .arg(m_session.kept(SystemTable::sources), m_session.staged(SystemTable::sources));
    m_session.run(QStringLiteral("DELETE FROM %1 WHERE %2 AND (%3 OR %4 OR (%5 AND (%6) IN (SELECT "
                                 "%6 FROM %7)))")
                      .arg(m_session.kept(table), condition, corrected, same, newer, columns,
                          m_session.staged(table)));
}

void DatabaseMerge::addProblems()
{
    removeRepeated(SystemTable::problems, QStringLiteral("case_id IS NULL"),
        QStringLiteral("kind, coalesce(value, '')"));
    const QString places = QStringLiteral("t.%1 + %2");
    m_session.run(insertion(SystemTable::problems,
        m_match
            .sql("%1 t LEFT JOIN tessel_add_match m ON m.batch_id = t.case_id LEFT JOIN "
                 "tessel_add_match f ON f.batch_id = t.first_case_id LEFT JOIN %2 c ON "
                 "c.case_id = f.case_id")
            .arg(m_session.staged(SystemTable::problems), m_session.kept(SystemTable::cases)),
        { { QStringLiteral("case_id"), QStringLiteral("m.case_id") },
            { QStringLiteral("source_id"), places.arg(QStringLiteral("source_id")).arg(m_sources) },
            { QStringLiteral("first_source_id"), QStringLiteral("c.source_id") },
            { QStringLiteral("first_line"), QStringLiteral("c.line") },
            { QStringLiteral("first_case_id"), QStringLiteral("f.case_id") } },
        QStringLiteral("m.kind IS NULL OR m.kind <> %1").arg(CaseMatch::Unchanged)));
}

void DatabaseMerge::addRejects()
{
    removeRepeated(SystemTable::rejects, QStringLiteral("1 = 1"), QStringLiteral("reason, text"));
    m_session.run(insertion(SystemTable::rejects,
        m_session.staged(SystemTable::rejects) + QLatin1String(" t"),
        { { QStringLiteral("source_id"), QStringLiteral("t.source_id + %1").arg(m_sources) } },
        {}));
}

void DatabaseMerge::addBuild()
{
    m_session.run(
        insertion(SystemTable::builds, m_session.staged(SystemTable::builds) + QLatin1String(" t"),
            { { QStringLiteral("build_id"), QString::number(m_build) },
                { QStringLiteral("new_cases"), QString::number(m_changes.added) },
                { QStringLiteral("changed_cases"), QString::number(m_changes.changed) },
                { QStringLiteral("unchanged_cases"), QString::number(m_changes.unchanged) },
                { QStringLiteral("withdrawn_cases"), QString::number(m_changes.withdrawn) } },
            {}));
}

void DatabaseMerge::countRows()
{
    for (const DatabaseTable& table : m_plan.tables) {
        if (!hasRows(table))
            continue;
        m_session.run(QStringLiteral("UPDATE %1 SET row_count = %2 WHERE table_name = %3")
                          .arg(m_session.kept(SystemTable::records),
                              QString::number(m_rows.value(table.name)), sqlText(table.name)));
    }
}

DatabaseChanges DatabaseMerge::run()
{
    const QString count = QStringLiteral("SELECT count(*) FROM ");
    const qint64 before = m_session.number(count + m_session.kept(SystemTable::cases));
    m_build = 1
        + m_session.number(QStringLiteral("SELECT coalesce(max(build_id), 0) FROM %1")
                               .arg(m_session.kept(SystemTable::builds)));
    m_sources = m_session.number(QStringLiteral("SELECT coalesce(max(source_id), 0) FROM %1")
                                     .arg(m_session.kept(SystemTable::sources)));
    updateDefinitions();
    m_match.find();
    m_changes = m_match.changes();
    keepUuids();
    removeGone();
    addCases();
    addRows();
    addProblems();
    addRejects();
    m_match.markDuplicates();
    addSources();
    addBuild();
    countRows();
    const qint64 batch = m_session.number(count + m_session.staged(SystemTable::cases));
    if (m_changes.added + m_changes.changed + m_changes.unchanged != batch
        || m_session.number(count + m_session.kept(SystemTable::cases))
            != before + m_changes.added - m_changes.withdrawn) {
        throw DataError(DataError::Code::DoesNotAddUp, m_session.name(),
            QStringLiteral("is as it was: its cases and those of the batch do not add up; this is "
                           "an error of the program"));
    }
    return m_changes;
}

} // namespace tessel
