#include <tessel_data/DatabaseMerge_p.h>

#include <tessel_data/DataError.h>
#include <tessel_data/SqlNames.h>
#include <tessel_data/SqlTypes.h>

#include <algorithm>

namespace tessel {

namespace {

using Kind = DatabaseTable::Kind;
using Place = MergeSession::Place;

enum CaseKind { Unchanged, Changed, Added };

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

MergeSession::~MergeSession() = default;

void MergeSession::filled(const QString&)
{
}

DatabaseMerge::DatabaseMerge(MergeSession& session, const DatabasePlan& plan)
    : m_session(session)
    , m_plan(plan)
    , m_integer(sqlTypeName(SqlType::Integer, plan.dialect))
{
    const int cases = plan.table(SystemTable::cases);
    if (cases < 0)
        return;
    for (const DatabaseColumn& column : plan.tables[std::size_t(cases)].columns) {
        if (column.isId)
            m_ids.append(sqlIdentifier(column.name));
    }
}

QString DatabaseMerge::kept(const QString& table) const
{
    return m_session.prefix(Place::Kept) + sqlIdentifier(table);
}

QString DatabaseMerge::staged(const QString& table) const
{
    return m_session.prefix(Place::Staged) + sqlIdentifier(table);
}

// Cases without identification items are the same when they are equal. PostgreSQL's indexes do not
// find nulls, which few identifications have: the rows of the table, whose name in the query is
// second, tell.
QString DatabaseMerge::sameCase(const QString& first, const QString& second, const QString& table)
{
    if (m_ids.isEmpty())
        return QStringLiteral("%1.content = %2.content").arg(first, second);
    const bool isPostgres = m_plan.dialect == SqlDialect::PostgreSql;
    if (isPostgres
        && number(QStringLiteral("SELECT count(*) FROM %1 WHERE %2").arg(table, isPartlyBlank()))
            > 0) {
        return QStringLiteral("CAST(ROW(%1) AS TEXT) = CAST(ROW(%2) AS TEXT)")
            .arg(idList(first), idList(second));
    }
    const QString equal =
        isPostgres ? QStringLiteral("%1.%3 = %2.%3") : QStringLiteral("%1.%3 IS %2.%3");
    QStringList conditions;
    for (const QString& id : qAsConst(m_ids))
        conditions.append(equal.arg(first, second, id));
    return conditions.join(QLatin1String(" AND "));
}

QString DatabaseMerge::isPartlyBlank() const
{
    QStringList conditions;
    for (const QString& id : m_ids)
        conditions.append(id + QLatin1String(" IS NULL"));
    return conditions.join(QLatin1String(" OR "));
}

QString DatabaseMerge::isBlank(const QString& table) const
{
    QStringList conditions;
    for (const QString& id : m_ids)
        conditions.append(QStringLiteral("%1.%2 IS NULL").arg(table, id));
    return conditions.isEmpty() ? QStringLiteral("1 = 1") : conditions.join(QLatin1String(" AND "));
}

QString DatabaseMerge::idList(const QString& table) const
{
    QStringList columns;
    for (const QString& id : m_ids)
        columns.append(table + QLatin1Char('.') + id);
    return columns.join(QLatin1String(", "));
}

qint64 DatabaseMerge::number(const QString& sql)
{
    const std::vector<QStringList> rows = m_session.rows(sql);
    return rows.empty() ? 0 : rows.front().first().toLongLong();
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
        ? number(QStringLiteral("SELECT max(form) FROM %1").arg(kept(SystemTable::builds)))
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
                           .arg(kept(SystemTable::variables)))) {
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
        const QString before = QStringLiteral("SELECT %1 FROM %2").arg(columns, kept(table));
        const QString after = QStringLiteral("SELECT %1 FROM %2").arg(columns, staged(table));
        const QString lost = QStringLiteral("SELECT count(*) FROM (%1 EXCEPT %2) AS d");
        return number(lost.arg(before, after)) > 0 || number(lost.arg(after, before)) > 0;
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
    for (const QString& name : narrowColumns(table)) {
        changes.append(QStringLiteral("ALTER COLUMN %1 TYPE %2")
                           .arg(sqlIdentifier(name), table.columns.at(table.column(name)).sqlType));
    }
    if (!changes.isEmpty()) {
        m_session.run(QStringLiteral("ALTER TABLE %1 %2")
                          .arg(kept(table.name), changes.join(QLatin1String(", "))));
    }
}

void DatabaseMerge::updateDefinitions()
{
    for (const QStringList& row : m_session.rows(QStringLiteral("SELECT table_name, row_count "
                                                                "FROM %1")
                                                     .arg(kept(SystemTable::records))))
        m_rows.insert(row.at(0), row.at(1).toLongLong());
    if (hasSameDefinitions() && !isNarrow())
        return;
    for (const DatabaseTable& table : m_plan.tables) {
        for (const QString& view : { table.labelView, table.validView }) {
            if (!view.isEmpty())
                m_session.run(QStringLiteral("DROP VIEW IF EXISTS ") + kept(view));
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
                m_session.run(
                    QStringLiteral("ALTER TABLE %1 ADD COLUMN %2 %3")
                        .arg(kept(table.name), sqlIdentifier(column.name), column.sqlType));
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
                 .arg(kept(SystemTable::values))))
        m_session.run(QStringLiteral("DROP TABLE IF EXISTS ") + kept(row.first()));
    for (const DatabaseTable& table : m_plan.tables) {
        if (table.kind != Kind::Values)
            continue;
        m_session.makeTable(table);
        m_session.run(insertion(table.name, staged(table.name) + QLatin1String(" t"), {}, {}));
    }
}

void DatabaseMerge::copyAll(const QString& table)
{
    m_session.run(QStringLiteral("DELETE FROM ") + kept(table));
    m_session.run(insertion(table, staged(table) + QLatin1String(" t"), {}, {}));
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
    QString sql = QStringLiteral("INSERT INTO %1 (").arg(kept(table))
        + names.join(QLatin1String(", ")) + QLatin1String(") SELECT ")
        + values.join(QLatin1String(", ")) + QLatin1String(" FROM ") + from;
    if (!condition.isEmpty())
        sql += QLatin1String(" WHERE ") + condition;
    return sql;
}

// ---- which case is which

void DatabaseMerge::matchCases()
{
    const QString cases = staged(SystemTable::cases);
    const QString group =
        m_ids.isEmpty() ? QStringLiteral("b.content") : idList(QStringLiteral("b"));
    m_session.run(QStringLiteral(
        "CREATE TEMP TABLE tessel_add_batch AS SELECT b.case_id AS batch_id, b.uuid, "
        "b.content, first_value(b.case_id) OVER (PARTITION BY %1 ORDER BY b.case_id) AS "
        "first_id, CASE WHEN %2 THEN 1 ELSE 0 END AS is_blank FROM %3 b")
                      .arg(group, isBlank(QStringLiteral("b")), cases));
    m_session.filled(QStringLiteral("tessel_add_batch"));
    m_session.run(
        QStringLiteral("CREATE TEMP TABLE tessel_add_known AS SELECT c.case_id, b.case_id AS "
                       "first_id, c.uuid, c.content FROM tessel_add_batch g CROSS JOIN %1 b CROSS "
                       "JOIN %2 c WHERE g.batch_id = g.first_id AND b.case_id = g.first_id AND %3")
            .arg(cases, kept(SystemTable::cases),
                sameCase(QStringLiteral("c"), QStringLiteral("b"), cases)));
    m_session.filled(QStringLiteral("tessel_add_known"));
    m_session.run(
        QStringLiteral("CREATE TEMP TABLE tessel_add_match (batch_id %1 PRIMARY KEY, case_id %1 "
                       "NOT NULL UNIQUE, kind %1 NOT NULL)")
            .arg(m_integer));
    matchByUuid();
    m_session.filled(QStringLiteral("tessel_add_match"));
    // Two UUIDs are two cases, also of one identification.
    const char* hasUuid = "uuid IS NOT NULL";
    const char* hasNone = "uuid IS NULL";
    for (const bool byContent : { true, false }) {
        matchById({ hasNone, "1 = 1", byContent });
        matchById({ hasUuid, hasNone, byContent });
    }
    numberNewCases();
    m_session.filled(QStringLiteral("tessel_add_match"));
}

void DatabaseMerge::matchByUuid()
{
    m_session.run(QStringLiteral(
        "INSERT INTO tessel_add_match SELECT b.batch_id, c.case_id, CASE WHEN b.content = "
        "c.content THEN 0 ELSE 1 END FROM (SELECT batch_id, uuid, content, row_number() OVER "
        "(PARTITION BY uuid ORDER BY batch_id) AS place FROM tessel_add_batch WHERE uuid IS "
        "NOT NULL) b JOIN (SELECT case_id, uuid, content, row_number() OVER (PARTITION BY uuid "
        "ORDER BY case_id) AS place FROM %1 WHERE uuid IN (SELECT uuid FROM tessel_add_batch "
        "WHERE uuid IS NOT NULL)) c ON b.uuid = c.uuid AND b.place = c.place")
                      .arg(kept(SystemTable::cases)));
}

// Cases of one identification are duplicates; the first of the batch is the first of the database.
void DatabaseMerge::matchById(const Pass& pass)
{
    const QString part =
        pass.byContent ? QStringLiteral("first_id, content") : QStringLiteral("first_id");
    const QString ranked =
        QStringLiteral("(SELECT t.*, row_number() OVER (PARTITION BY %1 ORDER BY %2) AS place FROM "
                       "%3 t WHERE %4 AND NOT EXISTS (SELECT 1 FROM tessel_add_match m WHERE m.%2 "
                       "= t.%2))");
    const QString named = QLatin1String(pass.batch)
        + (pass.byContent ? QString() : QStringLiteral(" AND is_blank = 0"));
    const QString batch =
        ranked.arg(part, QStringLiteral("batch_id"), QStringLiteral("tessel_add_batch"), named);
    const QString known = ranked.arg(part, QStringLiteral("case_id"),
        QStringLiteral("tessel_add_known"), QLatin1String(pass.known));
    m_session.run(
        QStringLiteral("INSERT INTO tessel_add_match SELECT b.batch_id, c.case_id, CASE WHEN "
                       "b.content = c.content THEN 0 ELSE 1 END FROM %1 b JOIN %2 c ON b.first_id "
                       "= c.first_id AND b.place = c.place%3")
            .arg(batch, known,
                pass.byContent ? QStringLiteral(" AND b.content = c.content") : QString()));
}

void DatabaseMerge::numberNewCases()
{
    m_session.run(
        QStringLiteral("INSERT INTO tessel_add_match SELECT b.batch_id, %1 + row_number() OVER "
                       "(ORDER BY b.batch_id), %2 FROM tessel_add_batch b WHERE NOT EXISTS (SELECT "
                       "1 FROM tessel_add_match m WHERE m.batch_id = b.batch_id)")
            .arg(number(QStringLiteral("SELECT coalesce(max(case_id), 0) FROM %1")
                            .arg(kept(SystemTable::cases))))
            .arg(Added));
}

// Whether a file of the batch is one that came before, in another version: only when it has some of
// the cases that came from its path. Tablets may give their files one name.
void DatabaseMerge::comparePaths()
{
    m_session.run(
        QStringLiteral("CREATE TEMP TABLE tessel_add_path (source_id %1 PRIMARY KEY, batch_source "
                       "%1 NOT NULL, is_known %1 NOT NULL)")
            .arg(m_integer));
    m_session.run(
        QStringLiteral("INSERT INTO tessel_add_path SELECT k.source_id, min(s.source_id), "
                       "0 FROM %1 k JOIN %2 s ON s.path = k.path GROUP BY k.source_id")
            .arg(kept(SystemTable::sources), staged(SystemTable::sources)));
    const auto files = m_session.rows(
        QStringLiteral("SELECT s.source_id, s.file, count(*) - count(m.case_id) - "
                       "count(w.case_id), count(m.case_id) + count(w.case_id) FROM %1 c CROSS JOIN "
                       "tessel_add_path p CROSS JOIN %2 s LEFT JOIN tessel_add_match m ON "
                       "m.case_id = c.case_id LEFT JOIN tessel_add_withdrawn w ON w.case_id = "
                       "c.case_id WHERE p.source_id = c.source_id AND s.source_id = "
                       "p.batch_source GROUP BY s.source_id, s.file ORDER BY s.source_id")
            .arg(kept(SystemTable::cases), staged(SystemTable::sources)));
    for (const QStringList& file : files)
        compareCases({ file.at(0), file.at(1), file.at(2).toLongLong(), file.at(3).toLongLong() });
}

void DatabaseMerge::compareCases(const KnownPath& path)
{
    if (path.present > 0) {
        m_session.run(
            QStringLiteral("UPDATE tessel_add_path SET is_known = 1 WHERE batch_source = %1")
                .arg(path.source));
    } else if (m_plan.addition == Addition::Withdrawing) {
        throw DataError(DataError::Code::UnfitSelection, path.file,
            QStringLiteral("holds none of the %1 cases that came from this path before, so that it "
                           "seems to be another file; nothing is changed. Give the file another "
                           "name to add it, or --overwrite to make the database of it alone")
                .arg(path.absent));
    }
    if (path.absent > 0 && m_plan.addition == Addition::Cases)
        m_changes.absent.append({ path.file, path.absent });
}

void DatabaseMerge::findWithdrawn()
{
    const auto withdraw = [this](const QString& from, const QString& condition) {
        m_session.run(
            QStringLiteral("INSERT INTO tessel_add_withdrawn SELECT DISTINCT c.case_id FROM %1%2 c "
                           "WHERE %3 AND NOT EXISTS (SELECT 1 FROM tessel_add_match m WHERE "
                           "m.case_id = c.case_id) AND NOT EXISTS (SELECT 1 FROM "
                           "tessel_add_withdrawn w WHERE w.case_id = c.case_id)")
                .arg(from, kept(SystemTable::cases), condition));
    };
    m_session.run(QStringLiteral("CREATE TEMP TABLE tessel_add_withdrawn (case_id %1 PRIMARY KEY)")
                      .arg(m_integer));
    const QString deleted = staged(SystemTable::deleted) + QLatin1String(" d CROSS JOIN ");
    withdraw(deleted, QStringLiteral("c.uuid = d.uuid"));
    if (!m_ids.isEmpty()) {
        withdraw(deleted,
            QStringLiteral("c.uuid IS NULL AND NOT (%1) AND %2")
                .arg(isBlank(QStringLiteral("d")),
                    sameCase(
                        QStringLiteral("c"), QStringLiteral("d"), staged(SystemTable::deleted))));
    }
    comparePaths();
    if (m_plan.addition == Addition::Withdrawing) {
        withdraw(QString(),
            QStringLiteral("c.source_id IN (SELECT p.source_id FROM tessel_add_path p)"));
    }
    m_session.run(QStringLiteral("CREATE TEMP TABLE tessel_add_gone (case_id %1 PRIMARY KEY)")
                      .arg(m_integer));
    m_session.run(QStringLiteral("INSERT INTO tessel_add_gone SELECT case_id FROM tessel_add_match "
                                 "WHERE kind = %1 UNION SELECT case_id FROM tessel_add_withdrawn")
                      .arg(Changed));
    m_session.filled(QStringLiteral("tessel_add_gone"));
}

// Identifications of which duplicates may have come or gone.
void DatabaseMerge::findTouched()
{
    if (m_ids.isEmpty())
        return;
    m_session.run(
        QStringLiteral("CREATE TEMP TABLE tessel_add_touched AS SELECT %1 FROM tessel_add_gone g "
                       "CROSS JOIN %2 c WHERE c.case_id = g.case_id UNION SELECT %3 FROM "
                       "tessel_add_match m CROSS JOIN %4 b WHERE b.case_id = m.batch_id AND m.kind "
                       "<> %5")
            .arg(idList(QStringLiteral("c")), kept(SystemTable::cases), idList(QStringLiteral("b")),
                staged(SystemTable::cases), QString::number(Unchanged)));
    m_session.filled(QStringLiteral("tessel_add_touched"));
}

// A case keeps the UUID it has, and gets one where it had none.
void DatabaseMerge::keepUuids()
{
    m_session.run(
        QStringLiteral("UPDATE %1 AS b SET uuid = (SELECT c.uuid FROM tessel_add_match m JOIN %2 c "
                       "ON c.case_id = m.case_id WHERE m.batch_id = b.case_id) WHERE b.uuid IS "
                       "NULL AND b.case_id IN (SELECT m.batch_id FROM tessel_add_match m WHERE "
                       "m.kind = %3)")
            .arg(staged(SystemTable::cases), kept(SystemTable::cases), QString::number(Changed)));
    m_session.run(
        QStringLiteral("UPDATE %1 AS c SET uuid = (SELECT b.uuid FROM tessel_add_match m JOIN %2 b "
                       "ON b.case_id = m.batch_id WHERE m.case_id = c.case_id) WHERE c.uuid IS "
                       "NULL AND c.case_id IN (SELECT m.case_id FROM tessel_add_match m JOIN %2 b "
                       "ON b.case_id = m.batch_id WHERE m.kind = %3 AND b.uuid IS NOT NULL)")
            .arg(kept(SystemTable::cases), staged(SystemTable::cases), QString::number(Unchanged)));
}

// ---- changes

void DatabaseMerge::removeGone()
{
    const QString gone =
        QStringLiteral("DELETE FROM %1 WHERE case_id IN (SELECT case_id FROM tessel_add_gone)");
    for (const DatabaseTable& table : m_plan.tables) {
        if (hasRows(table))
            m_rows[table.name] -= m_session.run(gone.arg(kept(table.name)));
    }
    m_session.run(gone.arg(kept(SystemTable::problems)));
    m_session.run(gone.arg(kept(SystemTable::cases)));
}

void DatabaseMerge::addCases()
{
    m_session.run(insertion(SystemTable::cases,
        QStringLiteral("%1 t JOIN tessel_add_match m ON m.batch_id = t.case_id")
            .arg(staged(SystemTable::cases)),
        { { QStringLiteral("case_id"), QStringLiteral("m.case_id") },
            { QStringLiteral("source_id"), QStringLiteral("t.source_id + %1").arg(m_sources) },
            { QStringLiteral("duplicate_of"), QStringLiteral("NULL") } },
        QStringLiteral("m.kind <> %1 ORDER BY m.case_id").arg(Unchanged)));
}

void DatabaseMerge::addRows()
{
    for (const DatabaseTable& table : m_plan.tables) {
        if (!hasRows(table))
            continue;
        m_rows[table.name] += m_session.run(insertion(table.name,
            QStringLiteral("%1 t JOIN tessel_add_match m ON m.batch_id = t.case_id")
                .arg(staged(table.name)),
            { { QStringLiteral("case_id"), QStringLiteral("m.case_id") } },
            QStringLiteral("m.kind <> %1").arg(Unchanged)));
    }
}

void DatabaseMerge::addSources()
{
    m_session.run(
        insertion(SystemTable::sources, staged(SystemTable::sources) + QLatin1String(" t"),
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
    const QString newer =
        QStringLiteral("source_id IN (SELECT p.source_id FROM tessel_add_path p)");
    const QString corrected = isWhole
        ? newer
        : QStringLiteral("source_id IN (SELECT p.source_id FROM tessel_add_path p WHERE p.is_known "
                         "= 1)");
    const QString same = QStringLiteral(
        "source_id IN (SELECT k.source_id FROM %1 k JOIN %2 s ON s.sha256 = k.sha256)")
                             .arg(kept(SystemTable::sources), staged(SystemTable::sources));
    m_session.run(QStringLiteral("DELETE FROM %1 WHERE %2 AND (%3 OR %4 OR (%5 AND (%6) IN (SELECT "
                                 "%6 FROM %7)))")
                      .arg(kept(table), condition, corrected, same, newer, columns, staged(table)));
}

void DatabaseMerge::addProblems()
{
    removeRepeated(SystemTable::problems, QStringLiteral("case_id IS NULL"),
        QStringLiteral("kind, coalesce(value, '')"));
    const QString places = QStringLiteral("t.%1 + %2");
    m_session.run(insertion(SystemTable::problems,
        QStringLiteral("%1 t LEFT JOIN tessel_add_match m ON m.batch_id = t.case_id LEFT JOIN "
                       "tessel_add_match f ON f.batch_id = t.first_case_id LEFT JOIN %2 c ON "
                       "c.case_id = f.case_id")
            .arg(staged(SystemTable::problems), kept(SystemTable::cases)),
        { { QStringLiteral("case_id"), QStringLiteral("m.case_id") },
            { QStringLiteral("source_id"), places.arg(QStringLiteral("source_id")).arg(m_sources) },
            { QStringLiteral("first_source_id"), QStringLiteral("c.source_id") },
            { QStringLiteral("first_line"), QStringLiteral("c.line") },
            { QStringLiteral("first_case_id"), QStringLiteral("f.case_id") } },
        QStringLiteral("m.kind IS NULL OR m.kind <> %1").arg(Unchanged)));
}

void DatabaseMerge::addRejects()
{
    removeRepeated(SystemTable::rejects, QStringLiteral("1 = 1"), QStringLiteral("reason, text"));
    m_session.run(
        insertion(SystemTable::rejects, staged(SystemTable::rejects) + QLatin1String(" t"),
            { { QStringLiteral("source_id"), QStringLiteral("t.source_id + %1").arg(m_sources) } },
            {}));
}

void DatabaseMerge::addBuild()
{
    m_session.run(insertion(SystemTable::builds, staged(SystemTable::builds) + QLatin1String(" t"),
        { { QStringLiteral("build_id"), QString::number(m_build) },
            { QStringLiteral("new_cases"), QString::number(m_changes.added) },
            { QStringLiteral("changed_cases"), QString::number(m_changes.changed) },
            { QStringLiteral("unchanged_cases"), QString::number(m_changes.unchanged) },
            { QStringLiteral("withdrawn_cases"), QString::number(m_changes.withdrawn) } },
        {}));
}

// The first case of an identification is the one that the others repeat, as in a build of all.
void DatabaseMerge::markDuplicates()
{
    if (m_ids.isEmpty())
        return;
    m_session.run(
        QStringLiteral("CREATE TEMP TABLE tessel_add_first (case_id %1 PRIMARY KEY, duplicate_of "
                       "%1)")
            .arg(m_integer));
    m_session.run(
        QStringLiteral("INSERT INTO tessel_add_first SELECT c.case_id, nullif(min(c.case_id) OVER "
                       "(PARTITION BY %1), c.case_id) FROM tessel_add_touched t CROSS JOIN %2 c "
                       "WHERE %3")
            .arg(idList(QStringLiteral("t")), kept(SystemTable::cases),
                sameCase(QStringLiteral("c"), QStringLiteral("t"),
                    QStringLiteral("tessel_add_touched"))));
    m_session.filled(QStringLiteral("tessel_add_first"));
    m_session.run(
        QStringLiteral("UPDATE %1 AS c SET duplicate_of = (SELECT f.duplicate_of FROM "
                       "tessel_add_first f WHERE f.case_id = c.case_id) WHERE c.case_id IN (SELECT "
                       "case_id FROM tessel_add_first)")
            .arg(kept(SystemTable::cases)));
    tellDuplicates();
}

// Those of two batches are told as those of one are; what is told of no duplicate goes.
void DatabaseMerge::tellDuplicates()
{
    const QString kinds = QStringLiteral("kind IN ('duplicate-case', 'scattered-case')");
    m_session.run(
        QStringLiteral("DELETE FROM %1 WHERE %2 AND case_id IN (SELECT f.case_id FROM "
                       "tessel_add_first f) AND NOT EXISTS (SELECT 1 FROM tessel_add_first f WHERE "
                       "f.case_id = %3.case_id AND f.duplicate_of = %3.first_case_id)")
            .arg(kept(SystemTable::problems), kinds, sqlIdentifier(SystemTable::problems)));
    m_session.run(QStringLiteral(
        "INSERT INTO %1 (kind, source_id, line, case_id, first_source_id, first_line, "
        "first_case_id) SELECT 'duplicate-case', c.source_id, c.line, c.case_id, o.source_id, "
        "o.line, o.case_id FROM tessel_add_first f JOIN %2 c ON c.case_id = f.case_id JOIN %2 "
        "o ON o.case_id = f.duplicate_of WHERE c.case_id NOT IN (SELECT p.case_id FROM %1 p "
        "WHERE p.case_id IS NOT NULL AND p.%3)")
                      .arg(kept(SystemTable::problems), kept(SystemTable::cases), kinds));
}

void DatabaseMerge::countRows()
{
    for (const DatabaseTable& table : m_plan.tables) {
        if (!hasRows(table))
            continue;
        m_session.run(QStringLiteral("UPDATE %1 SET row_count = %2 WHERE table_name = %3")
                          .arg(kept(SystemTable::records),
                              QString::number(m_rows.value(table.name)), sqlText(table.name)));
    }
}

DatabaseChanges DatabaseMerge::run()
{
    const QString count = QStringLiteral("SELECT count(*) FROM ");
    const qint64 before = number(count + kept(SystemTable::cases));
    m_build = 1
        + number(QStringLiteral("SELECT coalesce(max(build_id), 0) FROM %1")
                     .arg(kept(SystemTable::builds)));
    m_sources = number(QStringLiteral("SELECT coalesce(max(source_id), 0) FROM %1")
                           .arg(kept(SystemTable::sources)));
    updateDefinitions();
    matchCases();
    findWithdrawn();
    findTouched();
    keepUuids();
    const auto ofKind = [&](int kind) {
        return number(count + QStringLiteral("tessel_add_match WHERE kind = %1").arg(kind));
    };
    m_changes.added = ofKind(Added);
    m_changes.changed = ofKind(Changed);
    m_changes.unchanged = ofKind(Unchanged);
    m_changes.withdrawn = number(count + QStringLiteral("tessel_add_withdrawn"));
    removeGone();
    addCases();
    addRows();
    addProblems();
    addRejects();
    markDuplicates();
    addSources();
    addBuild();
    countRows();
    const qint64 batch = number(count + staged(SystemTable::cases));
    if (m_changes.added + m_changes.changed + m_changes.unchanged != batch
        || number(count + kept(SystemTable::cases))
            != before + m_changes.added - m_changes.withdrawn) {
        throw DataError(DataError::Code::DoesNotAddUp, m_session.name(),
            QStringLiteral("is as it was: its cases and those of the batch do not add up; this is "
                           "an error of the program"));
    }
    return m_changes;
}

} // namespace tessel
