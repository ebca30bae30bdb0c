#pragma once

#include "PostgreSqlServer.h"

// What tests of databases on a server do: builds into its schema b, of the example as a rule.
class PostgresBuilds {
protected:
    Outcome build(const QStringList& source, const QStringList& options = {}) const
    {
        return runTessel(QStringList { "build" } + source
            + QStringList { "--to", m_server.connection(), "--schema", "b" } + options);
    }
    // Of a connection with settings of the server, each "name=value".
    Outcome buildWith(const QStringList& settings, const QStringList& options = {}) const
    {
        return runTessel(
            QStringList { "build", m_dictionary, m_data, "--to", withSettings(settings) }
            + options);
    }
    QString withSettings(const QStringList& settings) const
    {
        QString connection = m_server.connection() + "&options=";
        for (QString setting : settings)
            connection += "-c" + setting.replace('=', "%3D") + "%20";
        return connection;
    }
    QByteArray ask(const QByteArray& statement) const
    {
        return m_server.answer(statement);
    }

    // Every table, view and index, and the rows of table person.
    QByteArray state() const
    {
        return ask("SELECT string_agg(relname || relkind::text, ' ' ORDER BY relname) FROM "
                   "pg_class "
                   "WHERE relnamespace::regnamespace::text NOT LIKE 'pg_%' AND "
                   "relnamespace::regnamespace::text <> 'information_schema';")
            + ask("SELECT count(*) FROM b.person;");
    }

    PostgreSqlServer m_server;
    QTemporaryDir m_folder;
    QString m_dictionary = QStringLiteral(TESSEL_EXAMPLES "/census.dcf");
    QString m_data = QStringLiteral(TESSEL_EXAMPLES "/census.dat");
};
