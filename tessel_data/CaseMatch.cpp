#include <tessel_data/CaseMatch_p.h>

#include <tessel_data/DataError.h>
#include <tessel_data/SqlNames.h>
#include <tessel_data/SqlTypes.h>
#include <tessel_data/TargetForm_p.h>

namespace tessel {

namespace {

const QString& usualPrefix()
{
    static const QString prefix = QStringLiteral("tessel_add_");
    return prefix;
}

} // namespace

CaseMatch::CaseMatch(MergeSession& session, const DatabasePlan& plan)
    : m_session(session)
    , m_plan(plan)
    , m_prefix(freePrefix(plan, usualPrefix()))
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

QString CaseMatch::sql(const char* text) const
{
    return QString::fromLatin1(text).replace(usualPrefix(), m_prefix);
}

void CaseMatch::find()
{
    matchCases();
    findWithdrawn();
    findTouched();
}

DatabaseChanges CaseMatch::changes() const
{
    const auto ofKind = [this](Kind kind) {
        return m_session.number(
            sql("SELECT count(*) FROM tessel_add_match WHERE kind = %1").arg(kind));
    };
    DatabaseChanges changes;
    changes.added = ofKind(Added);
    changes.changed = ofKind(Changed);
    changes.unchanged = ofKind(Unchanged);
    changes.withdrawn = m_session.number(sql("SELECT count(*) FROM tessel_add_withdrawn"));
    changes.absent = m_absent;
    return changes;
}

// ---- what makes cases the same

// Cases without identification items are the same when they are equal. PostgreSQL's indexes do not
// find nulls, which few identifications have: the rows of the table, whose name in the query is
// second, tell.
QString CaseMatch::sameCase(const QString& first, const QString& second, const QString& table) const
{
    if (m_ids.isEmpty())
        return QStringLiteral("%1.content = %2.content").arg(first, second);
    const bool isPostgres = m_plan.dialect == SqlDialect::PostgreSql;
    if (isPostgres
        && m_session.number(
               QStringLiteral("SELECT count(*) FROM %1 WHERE %2").arg(table, isPartlyBlank()))
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

QString CaseMatch::isPartlyBlank() const
{
    QStringList conditions;
    for (const QString& id : m_ids)
        conditions.append(id + QLatin1String(" IS NULL"));
    return conditions.join(QLatin1String(" OR "));
}

QString CaseMatch::isBlank(const QString& table) const
{
    QStringList conditions;
    for (const QString& id : m_ids)
        conditions.append(QStringLiteral("%1.%2 IS NULL").arg(table, id));
    return conditions.isEmpty() ? QStringLiteral("1 = 1") : conditions.join(QLatin1String(" AND "));
}

QString CaseMatch::idList(const QString& table) const
{
    QStringList columns;
    for (const QString& id : m_ids)
        columns.append(table + QLatin1Char('.') + id);
    return columns.join(QLatin1String(", "));
}

// ---- which case is which

void CaseMatch::matchCases()
{
    const QString cases = m_session.staged(SystemTable::cases);
    const QString group =
        m_ids.isEmpty() ? QStringLiteral("b.content") : idList(QStringLiteral("b"));
    m_session.run(
        sql("CREATE TEMP TABLE tessel_add_batch AS SELECT b.case_id AS batch_id, b.uuid, "
            "b.content, first_value(b.case_id) OVER (PARTITION BY %1 ORDER BY b.case_id) AS "
            "first_id, CASE WHEN %2 THEN 1 ELSE 0 END AS is_blank FROM %3 b")
            .arg(group, isBlank(QStringLiteral("b")), cases));
    m_session.filled(sql("tessel_add_batch"));
    m_session.run(sql("CREATE TEMP TABLE tessel_add_known AS SELECT c.case_id, b.case_id AS "
                      "first_id, c.uuid, c.content FROM tessel_add_batch g CROSS JOIN %1 b CROSS "
                      "JOIN %2 c WHERE g.batch_id = g.first_id AND b.case_id = g.first_id AND %3")
                      .arg(cases, m_session.kept(SystemTable::cases),
                          sameCase(QStringLiteral("c"), QStringLiteral("b"), cases)));
    m_session.filled(sql("tessel_add_known"));
    m_session.run(sql("CREATE TEMP TABLE tessel_add_match (batch_id %1 PRIMARY KEY, case_id %1 "
                      "NOT NULL UNIQUE, kind %1 NOT NULL)")
                      .arg(m_integer));
    matchByUuid();
    m_session.filled(sql("tessel_add_match"));
    // Two UUIDs are two cases, also of one identification.
    const char* hasUuid = "uuid IS NOT NULL";
    const char* hasNone = "uuid IS NULL";
    for (const bool byContent : { true, false }) {
        matchById({ hasNone, "1 = 1", byContent });
        matchById({ hasUuid, hasNone, byContent });
    }
    numberNewCases();
    m_session.filled(sql("tessel_add_match"));
}

void CaseMatch::matchByUuid()
{
    m_session.run(
        sql("INSERT INTO tessel_add_match SELECT b.batch_id, c.case_id, CASE WHEN b.content = "
            "c.content THEN 0 ELSE 1 END FROM (SELECT batch_id, uuid, content, row_number() OVER "
            "(PARTITION BY uuid ORDER BY batch_id) AS place FROM tessel_add_batch WHERE uuid IS "
            "NOT NULL) b JOIN (SELECT case_id, uuid, content, row_number() OVER (PARTITION BY uuid "
            "ORDER BY case_id) AS place FROM %1 WHERE uuid IN (SELECT uuid FROM tessel_add_batch "
            "WHERE uuid IS NOT NULL)) c ON b.uuid = c.uuid AND b.place = c.place")
            .arg(m_session.kept(SystemTable::cases)));
}

// Cases of one identification are duplicates; the first of the batch is the first of the database.
void CaseMatch::matchById(const Pass& pass)
{
    const QString part =
        pass.byContent ? QStringLiteral("first_id, content") : QStringLiteral("first_id");
    const QString ranked =
        sql("(SELECT t.*, row_number() OVER (PARTITION BY %1 ORDER BY %2) AS place FROM "
            "%3 t WHERE %4 AND NOT EXISTS (SELECT 1 FROM tessel_add_match m WHERE m.%2 "
            "= t.%2))");
    const QString named = QLatin1String(pass.batch)
        + (pass.byContent ? QString() : QStringLiteral(" AND is_blank = 0"));
    const QString batch =
        ranked.arg(part, QStringLiteral("batch_id"), sql("tessel_add_batch"), named);
    const QString known = ranked.arg(
        part, QStringLiteral("case_id"), sql("tessel_add_known"), QLatin1String(pass.known));
    m_session.run(
        sql("INSERT INTO tessel_add_match SELECT b.batch_id, c.case_id, CASE WHEN "
            "b.content = c.content THEN 0 ELSE 1 END FROM %1 b JOIN %2 c ON b.first_id "
            "= c.first_id AND b.place = c.place%3")
            .arg(batch, known,
                pass.byContent ? QStringLiteral(" AND b.content = c.content") : QString()));
}

void CaseMatch::numberNewCases()
{
    m_session.run(
        sql("INSERT INTO tessel_add_match SELECT b.batch_id, %1 + row_number() OVER "
            "(ORDER BY b.batch_id), %2 FROM tessel_add_batch b WHERE NOT EXISTS (SELECT "
            "1 FROM tessel_add_match m WHERE m.batch_id = b.batch_id)")
            .arg(m_session.number(QStringLiteral("SELECT coalesce(max(case_id), 0) FROM %1")
                                      .arg(m_session.kept(SystemTable::cases))))
            .arg(Added));
}

// Whether a file of the batch is one that came before, in another version: only when it has some of
// the cases that came from its path. Tablets may give their files one name.
void CaseMatch::comparePaths()
{
    m_session.run(sql("CREATE TEMP TABLE tessel_add_path (source_id %1 PRIMARY KEY, batch_source "
                      "%1 NOT NULL, is_known %1 NOT NULL)")
                      .arg(m_integer));
    m_session.run(
        sql("INSERT INTO tessel_add_path SELECT k.source_id, min(s.source_id), "
            "0 FROM %1 k JOIN %2 s ON s.path = k.path GROUP BY k.source_id")
            .arg(m_session.kept(SystemTable::sources), m_session.staged(SystemTable::sources)));
    const auto files = m_session.rows(
        sql("SELECT s.source_id, s.file, count(*) - count(m.case_id) - "
            "count(w.case_id), count(m.case_id) + count(w.case_id) FROM %1 c CROSS JOIN "
            "tessel_add_path p CROSS JOIN %2 s LEFT JOIN tessel_add_match m ON "
            "m.case_id = c.case_id LEFT JOIN tessel_add_withdrawn w ON w.case_id = "
            "c.case_id WHERE p.source_id = c.source_id AND s.source_id = "
            "p.batch_source GROUP BY s.source_id, s.file ORDER BY s.source_id")
            .arg(m_session.kept(SystemTable::cases), m_session.staged(SystemTable::sources)));
    for (const QStringList& file : files)
        compareCases({ file.at(0), file.at(1), file.at(2).toLongLong(), file.at(3).toLongLong() });
}

void CaseMatch::compareCases(const KnownPath& path)
{
    if (path.present > 0) {
        m_session.run(sql("UPDATE tessel_add_path SET is_known = 1 WHERE batch_source = %1")
                          .arg(path.source));
    } else if (m_plan.addition == Addition::Withdrawing) {
        throw DataError(DataError::Code::UnfitSelection, path.file,
            QStringLiteral("holds none of the %1 cases that came from this path before, so that it "
                           "seems to be another file; nothing is changed. Give the file another "
                           "name to add it, or --overwrite to make the database of it alone")
                .arg(path.absent));
    }
    if (path.absent > 0 && m_plan.addition == Addition::Cases)
        m_absent.append({ path.file, path.absent });
}

void CaseMatch::findWithdrawn()
{
    const auto withdraw = [this](const QString& from, const QString& condition) {
        m_session.run(sql("INSERT INTO tessel_add_withdrawn SELECT DISTINCT c.case_id FROM %1%2 c "
                          "WHERE %3 AND NOT EXISTS (SELECT 1 FROM tessel_add_match m WHERE "
                          "m.case_id = c.case_id) AND NOT EXISTS (SELECT 1 FROM "
                          "tessel_add_withdrawn w WHERE w.case_id = c.case_id)")
                          .arg(from, m_session.kept(SystemTable::cases), condition));
    };
    m_session.run(
        sql("CREATE TEMP TABLE tessel_add_withdrawn (case_id %1 PRIMARY KEY)").arg(m_integer));
    const QString deleted =
        m_session.staged(SystemTable::deleted) + QLatin1String(" d CROSS JOIN ");
    withdraw(deleted, QStringLiteral("c.uuid = d.uuid"));
    if (!m_ids.isEmpty()) {
        withdraw(deleted,
            QStringLiteral("c.uuid IS NULL AND NOT (%1) AND %2")
                .arg(isBlank(QStringLiteral("d")),
                    sameCase(QStringLiteral("c"), QStringLiteral("d"),
                        m_session.staged(SystemTable::deleted))));
    }
    comparePaths();
    if (m_plan.addition == Addition::Withdrawing) {
        withdraw(QString(), sql("c.source_id IN (SELECT p.source_id FROM tessel_add_path p)"));
    }
    m_session.run(sql("CREATE TEMP TABLE tessel_add_gone (case_id %1 PRIMARY KEY)").arg(m_integer));
    m_session.run(sql("INSERT INTO tessel_add_gone SELECT case_id FROM tessel_add_match "
                      "WHERE kind = %1 UNION SELECT case_id FROM tessel_add_withdrawn")
                      .arg(Changed));
    m_session.filled(sql("tessel_add_gone"));
}

// Identifications of which duplicates may have come or gone.
void CaseMatch::findTouched()
{
    if (m_ids.isEmpty())
        return;
    m_session.run(sql("CREATE TEMP TABLE tessel_add_touched AS SELECT %1 FROM tessel_add_gone g "
                      "CROSS JOIN %2 c WHERE c.case_id = g.case_id UNION SELECT %3 FROM "
                      "tessel_add_match m CROSS JOIN %4 b WHERE b.case_id = m.batch_id AND m.kind "
                      "<> %5")
                      .arg(idList(QStringLiteral("c")), m_session.kept(SystemTable::cases),
                          idList(QStringLiteral("b")), m_session.staged(SystemTable::cases),
                          QString::number(Unchanged)));
    m_session.filled(sql("tessel_add_touched"));
}

// ---- which case repeats which

// The first case of an identification is the one that the others repeat, as in a build of all.
void CaseMatch::markDuplicates()
{
    if (m_ids.isEmpty())
        return;
    m_session.run(sql("CREATE TEMP TABLE tessel_add_first (case_id %1 PRIMARY KEY, duplicate_of "
                      "%1)")
                      .arg(m_integer));
    m_session.run(
        sql("INSERT INTO tessel_add_first SELECT c.case_id, nullif(min(c.case_id) OVER "
            "(PARTITION BY %1), c.case_id) FROM tessel_add_touched t CROSS JOIN %2 c "
            "WHERE %3")
            .arg(idList(QStringLiteral("t")), m_session.kept(SystemTable::cases),
                sameCase(QStringLiteral("c"), QStringLiteral("t"), sql("tessel_add_touched"))));
    m_session.filled(sql("tessel_add_first"));
    m_session.run(sql("UPDATE %1 AS c SET duplicate_of = (SELECT f.duplicate_of FROM "
                      "tessel_add_first f WHERE f.case_id = c.case_id) WHERE c.case_id IN (SELECT "
                      "case_id FROM tessel_add_first)")
                      .arg(m_session.kept(SystemTable::cases)));
    tellDuplicates();
}

// Those of two batches are told as those of one are; what is told of no duplicate goes.
void CaseMatch::tellDuplicates()
{
    const QString kinds = QStringLiteral("kind IN ('duplicate-case', 'scattered-case')");
    m_session.run(sql("DELETE FROM %1 WHERE %2 AND case_id IN (SELECT f.case_id FROM "
                      "tessel_add_first f) AND NOT EXISTS (SELECT 1 FROM tessel_add_first f WHERE "
                      "f.case_id = %3.case_id AND f.duplicate_of = %3.first_case_id)")
                      .arg(m_session.kept(SystemTable::problems), kinds,
                          sqlIdentifier(SystemTable::problems)));
    m_session.run(
        sql("INSERT INTO %1 (kind, source_id, line, case_id, first_source_id, first_line, "
            "first_case_id) SELECT 'duplicate-case', c.source_id, c.line, c.case_id, o.source_id, "
            "o.line, o.case_id FROM tessel_add_first f JOIN %2 c ON c.case_id = f.case_id JOIN %2 "
            "o ON o.case_id = f.duplicate_of WHERE c.case_id NOT IN (SELECT p.case_id FROM %1 p "
            "WHERE p.case_id IS NOT NULL AND p.%3)")
            .arg(m_session.kept(SystemTable::problems), m_session.kept(SystemTable::cases), kinds));
}

} // namespace tessel
