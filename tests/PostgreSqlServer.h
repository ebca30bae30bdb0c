#pragma once

#include "RunTessel.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <pwd.h>
#include <unistd.h>

// A server of its own without a network, and the rights of nobody where the test has all.
class PostgreSqlServer {
public:
    ~PostgreSqlServer()
    {
        stop();
    }

    // Why there is none; empty when it runs.
    QString start()
    {
        const QDir versions("/usr/lib/postgresql");
        for (const QString& version : versions.entryList(QDir::Dirs | QDir::NoDotAndDotDot))
            m_programs = versions.filePath(version + "/bin/");
        if (!QFile::exists(m_programs + "initdb") || m_psql.isEmpty())
            return QStringLiteral("no PostgreSQL server is installed");
        if (geteuid() == 0 && !giveFolderToNobody())
            return QStringLiteral("the server does not run as root, and setpriv is not installed");
        const Outcome made = run("initdb",
            { "-D", data(), "-A", "trust", "-U", "tessel", "-E", "UTF8", "--locale=C",
                "--no-sync" });
        if (made.status != 0)
            return "initdb fails: " + QString::fromUtf8(made.errors);
        return resume() ? QString() : QStringLiteral("pg_ctl cannot start the server");
    }

    // fileBytes: none of the server's files can become larger; 0: all can.
    bool resume(int fileBytes = 0)
    {
        constexpr int unit = 512; // of ulimit
        const QString limit = fileBytes > 0 ? QString::number(fileBytes / unit) : "unlimited";
        const QString options = "-c listen_addresses= -c fsync=off -k " + m_folder.path();
        m_isRunning = runProgram("sh",
                          QStringList { "-c", "ulimit -f " + limit + " && exec \"$@\"", "sh" }
                              + asNobody(m_programs + "pg_ctl")
                              + QStringList { "start", "-w", "-D", data(), "-l", data() + "/log",
                                  "-o", options })
                          .status
            == 0;
        return m_isRunning;
    }

    // As when its machine loses power.
    void stop()
    {
        if (m_isRunning)
            run("pg_ctl", { "stop", "-D", data(), "-m", "immediate" });
        m_isRunning = false;
    }

    // Asks the users of a role for their passwords, all others for none.
    bool askForPassword(const QString& role) const
    {
        QFile rules(data() + "/pg_hba.conf");
        return rules.open(QIODevice::WriteOnly)
            && rules.write("local all " + role.toUtf8() + " scram-sha-256\nlocal all all trust\n")
            > 0
            && rules.flush() && run("pg_ctl", { "reload", "-D", data() }).status == 0;
    }

    // user: with a password behind a colon, as in a URL
    QString connection(const QString& database = QStringLiteral("postgres"),
        const QString& user = QStringLiteral("tessel")) const
    {
        return QStringLiteral("postgresql://%1@/%2?host=%3").arg(user, database, m_folder.path());
    }

    // Tuples without padding, "|" between values.
    Outcome ask(const QByteArray& statements) const
    {
        return runProgram(m_psql,
            { "-qAtX", "-v", "ON_ERROR_STOP=1", "-h", m_folder.path(), "-U", "tessel", "postgres" },
            statements);
    }

    // What it answers; an error as its message.
    QByteArray answer(const QByteArray& statement) const
    {
        const Outcome outcome = ask(statement);
        return outcome.status == 0 ? outcome.output.trimmed() : outcome.errors;
    }

    // In an empty schema; tuples without padding.
    Outcome carryOut(const QByteArray& statements) const
    {
        return ask("SET client_min_messages = warning;\nDROP SCHEMA public CASCADE;\n"
                   "CREATE SCHEMA public;\n"
            + statements);
    }

private:
    QString data() const
    {
        return m_folder.filePath("data");
    }

    bool giveFolderToNobody()
    {
        const passwd* nobody = getpwnam("nobody");
        m_setpriv = QStandardPaths::findExecutable("setpriv");
        return nobody && !m_setpriv.isEmpty()
            && chown(QFile::encodeName(m_folder.path()).constData(), nobody->pw_uid, nobody->pw_gid)
            == 0;
    }

    Outcome run(const QString& program, const QStringList& arguments) const
    {
        const QStringList words = asNobody(m_programs + program) + arguments;
        return runProgram(words.first(), words.mid(1));
    }

    // Where the test has all rights.
    QStringList asNobody(const QString& program) const
    {
        if (m_setpriv.isEmpty())
            return { program };
        return { m_setpriv, "--reuid=nobody", "--regid=nogroup", "--clear-groups", program };
    }

    QTemporaryDir m_folder;
    QString m_programs;
    QString m_psql = QStandardPaths::findExecutable("psql");
    QString m_setpriv;
    bool m_isRunning = false;
};
