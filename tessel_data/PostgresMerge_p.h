#pragma once

#include <tessel_data/DatabaseMerge_p.h>
#include <tessel_data/PostgresConnection_p.h>
#include <tessel_data/PostgresTables_p.h>

namespace tessel {

/* An addition to the tables of a schema of PostgreSQL. */
class PostgresMerge : public MergeSession {
public:
    // schema: in quotes. All is kept as reference.
    PostgresMerge(PostgresConnection& server, const QString& schema, const DatabasePlan& plan,
        const PostgresTables& tables);

    // Asked from now on whether it should go on. When not, a statement ends in a DataError.
    void setGoesOn(const PostgresConnection::GoesOn& goesOn)
    {
        m_goesOn = goesOn;
    }
    bool isStopped() const
    {
        return m_isStopped;
    }

    QString name() const override
    {
        return m_server.name();
    }
    QString prefix(Place place) const override;
    qint64 run(const QString& sql) override;
    std::vector<QStringList> rows(const QString& sql) override;
    std::vector<TableColumn> columns(Place place, const QString& table) override;
    void filled(const QString& table) override;
    void makeTable(const DatabaseTable& table) override;
    void makeIndex(const DatabaseIndex& index) override;
    void makeViews(const DatabaseTable& table) override;

private:
    void makeIndex(const PostgresTables::Index& index);

    PostgresConnection& m_server;
    const QString m_schema;
    const DatabasePlan& m_plan;
    const PostgresTables& m_tables;
    PostgresConnection::GoesOn m_goesOn;
    bool m_isStopped = false;
};

} // namespace tessel
