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
    QByteArray ask(const QByteArray& statement) const
    {
        return m_server.answer(statement);
    }

    PostgreSqlServer m_server;
    QTemporaryDir m_folder;
    QString m_dictionary = QStringLiteral(TESSEL_EXAMPLES "/census.dcf");
    QString m_data = QStringLiteral(TESSEL_EXAMPLES "/census.dat");
};
