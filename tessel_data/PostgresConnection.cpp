#include <tessel_data/PostgresConnection_p.h>

#include <tessel_data/DataError.h>

#include <QUrl>

#include <algorithm>
#include <initializer_list>
#include <libpq-fe.h>
#include <poll.h>

namespace tessel {

namespace {

constexpr int OldestServer = 120000;
constexpr int WaitMilliseconds = 100; // until the user is asked again

struct FreeOptions {
    void operator()(PQconninfoOption* options) const
    {
        PQconninfoFree(options);
    }
};

using Options = std::unique_ptr<PQconninfoOption, FreeOptions>;

// The message is not shown where it may hold a password.
Options optionsOf(const QString& connection, QString& message)
{
    char* text = nullptr;
    Options options(PQconninfoParse(connection.toUtf8().constData(), &text));
    const bool mayHoldPassword = connection.contains(QLatin1Char('@'))
        || connection.contains(QLatin1String("password"), Qt::CaseInsensitive);
    if (text && !mayHoldPassword)
        message = QString::fromUtf8(text).trimmed();
    PQfreemem(text);
    return options;
}

QString valueOf(const Options& options, const char* keyword)
{
    for (const PQconninfoOption* option = options.get(); option->keyword; ++option) {
        if (qstrcmp(option->keyword, keyword) == 0 && option->val)
            return QString::fromUtf8(option->val);
    }
    return QString();
}

QString encoded(const QString& text)
{
    return QString::fromLatin1(QUrl::toPercentEncoding(text, ",/"));
}

// Without password, and with what tells the database from another only.
QString nameOf(const Options& options)
{
    const QString user = valueOf(options, "user");
    const QString host = valueOf(options, "host");
    const QString port = valueOf(options, "port");
    const bool isSocket = host.startsWith(QLatin1Char('/')) || host.startsWith(QLatin1Char('@'));
    QString name = QStringLiteral("postgresql://");
    if (!user.isEmpty())
        name += encoded(user) + QLatin1Char('@');
    if (!isSocket)
        name += host.contains(QLatin1Char(':')) ? QLatin1Char('[') + host + QLatin1Char(']') : host;
    if (!port.isEmpty() && !isSocket)
        name += QLatin1Char(':') + port;
    name += QLatin1Char('/') + encoded(valueOf(options, "dbname"));
    if (isSocket)
        name += QLatin1String("?host=") + encoded(host);
    if (isSocket && !port.isEmpty())
        name += QLatin1String("&port=") + port;
    return name;
}

// Parts of a password that was written with characters which end it would be taken for other parts
// of the address.
QString addressMistake(const Options& options, const QString& connection)
{
    const QString rest = connection.section(QLatin1String("://"), 1);
    const int at = rest.indexOf(QLatin1Char('@'));
    const bool hasCredentials = at >= 0 && !rest.leftRef(at).contains(QLatin1Char('/'));
    const QString address = rest.mid(hasCredentials ? at + 1 : 0).section(QLatin1Char('?'), 0, 0);
    if (address.contains(QLatin1Char('@'))
        || valueOf(options, "host").lastIndexOf(QLatin1Char('@')) > 0) {
        return QStringLiteral("has an @ where none can be; write @ in a password as %40, and / as "
                              "%2F");
    }
    const QStringList ports = valueOf(options, "port").split(QLatin1Char(','));
    for (const QString& port : ports) {
        if (!port.isEmpty() && port.toUShort() == 0)
            return QStringLiteral("has a port that is no number from 1 to 65535");
    }
    return QString();
}

bool isIn(const char* keyword, std::initializer_list<const char*> keywords)
{
    return std::any_of(keywords.begin(), keywords.end(),
        [&](const char* known) { return qstrcmp(known, keyword) == 0; });
}

// With all that was given beside the name, but for passwords.
QString addressOf(const Options& options)
{
    QString address = nameOf(options);
    for (const PQconninfoOption* option = options.get(); option->keyword; ++option) {
        const bool isTold =
            isIn(option->keyword, { "user", "host", "port", "dbname", "password", "sslpassword" });
        if (isTold || !option->val)
            continue;
        address += QLatin1Char(address.contains(QLatin1Char('?')) ? '&' : '?')
            + QLatin1String(option->keyword) + QLatin1Char('=')
            + encoded(QString::fromUtf8(option->val));
    }
    return address;
}

// What the user can do about an error, by its SQLSTATE.
QString adviceFor(const QByteArray& state)
{
    if (state.startsWith("42501"))
        return QStringLiteral("; the right has to be granted by the owner of the database");
    if (state.startsWith("53100"))
        return QStringLiteral("; the server's disk is full");
    if (state.startsWith("25006"))
        return QStringLiteral("; the server takes no changes");
    if (state.startsWith("55P03"))
        return QStringLiteral("; another program writes to the tables, wait for its end and try "
                              "again");
    if (state.startsWith("2BP01"))
        return QStringLiteral("; drop what depends on the former tables, then build again");
    return QString();
}

void ignoreNotice(void*, const PGresult*)
{
}

} // namespace

void PostgresConnection::CloseConnection::operator()(pg_conn* connection) const
{
    PQfinish(connection);
}

void PostgresConnection::ClearResult::operator()(pg_result* result) const
{
    PQclear(result);
}

PostgresConnection::PostgresConnection(const QString& connection)
    : m_connection(connection)
    , m_name(QStringLiteral("postgresql://"))
{
    QString message;
    const Options options = optionsOf(connection, message);
    if (!options || !addressMistake(options, connection).isNull())
        return; // open() tells
    m_name = nameOf(options);
    for (const char* keyword : { "password", "sslpassword" }) {
        const QString secret = valueOf(options, keyword);
        if (!secret.isEmpty())
            m_secrets.append(secret);
    }
}

PostgresConnection::~PostgresConnection()
{
    close();
}

QString PostgresConnection::mistakeIn(const QString& connection)
{
    QString message;
    if (const Options options = optionsOf(connection, message))
        return addressMistake(options, connection);
    return QStringLiteral("is no connection that PostgreSQL takes")
        + (message.isEmpty() ? QString() : QLatin1String(": ") + message);
}

bool PostgresConnection::hasKeyword(const QString& text)
{
    const Options known(PQconndefaults());
    const QByteArray keyword = text.section(QLatin1Char('='), 0, 0).trimmed().toUtf8();
    for (const PQconninfoOption* option = known.get(); option && option->keyword; ++option) {
        if (text.contains(QLatin1Char('=')) && keyword == option->keyword)
            return true;
    }
    return false;
}

QString PostgresConnection::withoutPasswords(const QString& connection)
{
    QString message;
    const Options options = optionsOf(connection, message);
    return options && addressMistake(options, connection).isNull()
        ? addressOf(options)
        : QStringLiteral("postgresql://");
}

QString PostgresConnection::safe(const char* message) const
{
    QString text = QString::fromUtf8(message).trimmed();
    for (const QString& secret : m_secrets)
        text.replace(secret, QLatin1String("***"));
    return text.replace(QLatin1Char('\n'), QLatin1Char(' '));
}

void PostgresConnection::fail(const QString& text) const
{
    throw DataError(
        DataError::Code::CannotWrite, m_name, QLatin1String("cannot be written: ") + text);
}

void PostgresConnection::fail(const pg_result* result) const
{
    const char* primary = result ? PQresultErrorField(result, PG_DIAG_MESSAGE_PRIMARY) : nullptr;
    const QString message = safe(primary ? primary : PQerrorMessage(m_server.get()));
    if (PQstatus(m_server.get()) != CONNECTION_OK) {
        fail(QStringLiteral("the connection to the server was lost (%1); nothing was changed, "
                            "build again when the server runs")
                 .arg(message));
    }
    const char* detail = result ? PQresultErrorField(result, PG_DIAG_MESSAGE_DETAIL) : nullptr;
    const QByteArray state = result ? PQresultErrorField(result, PG_DIAG_SQLSTATE) : nullptr;
    fail(message + (detail ? QLatin1String(" (") + safe(detail) + QLatin1Char(')') : QString())
        + adviceFor(state));
}

void PostgresConnection::open()
{
    const QString mistake = mistakeIn(m_connection);
    if (!mistake.isNull())
        throw DataError(DataError::Code::CannotOpen, m_name, mistake);
    const QByteArray connection = m_connection.toUtf8();
    const char* const keywords[] = { "application_name", "connect_timeout", "keepalives_idle",
        "dbname", "client_encoding", nullptr };
    const char* const values[] = { "tessel", "30", "60", connection.constData(), "UTF8", nullptr };
    m_server.reset(PQconnectdbParams(keywords, values, 1));
    if (PQstatus(m_server.get()) != CONNECTION_OK) {
        throw DataError(DataError::Code::CannotOpen, m_name,
            QLatin1String("cannot be reached: ") + safe(PQerrorMessage(m_server.get())));
    }
    PQsetNoticeReceiver(m_server.get(), ignoreNotice, nullptr);
    checkServer();
}

void PostgresConnection::checkServer() const
{
    const int version = PQserverVersion(m_server.get());
    if (version < OldestServer) {
        fail(QStringLiteral("the server is PostgreSQL %1, 12 or later is needed")
                 .arg(version / 10000));
    }
    const QByteArray encoding = PQparameterStatus(m_server.get(), "server_encoding");
    if (encoding != "UTF8") {
        fail(QStringLiteral("the texts of the database are %1, which does not hold all characters; "
                            "make one with ENCODING 'UTF8'")
                 .arg(QString::fromLatin1(encoding)));
    }
}

void PostgresConnection::cancel() noexcept
{
    constexpr int size = 256;
    char error[size];
    PGcancel* request = PQgetCancel(m_server.get());
    PQcancel(request, error, size);
    PQfreeCancel(request);
}

// The server's locks are free when this returns.
void PostgresConnection::close() noexcept
{
    if (m_server && PQstatus(m_server.get()) == CONNECTION_OK) {
        PQputCopyEnd(m_server.get(), "the build was stopped"); // fails where there is no COPY
        if (PQtransactionStatus(m_server.get()) == PQTRANS_ACTIVE)
            cancel();
        while (PGresult* result = PQgetResult(m_server.get()))
            PQclear(result);
        PQclear(PQexec(m_server.get(), "ROLLBACK"));
    }
    m_server.reset();
}

void PostgresConnection::send(const QString& statements)
{
    if (PQsendQuery(m_server.get(), statements.toUtf8().constData()) == 0)
        fail(static_cast<const pg_result*>(nullptr));
}

// Asks between the server's answers whether it should go on.
bool PostgresConnection::waitFor(const GoesOn& goesOn)
{
    bool isStopped = false;
    while (PQisBusy(m_server.get()) != 0) {
        pollfd answer { PQsocket(m_server.get()), POLLIN, 0 };
        poll(&answer, 1, WaitMilliseconds);
        if (PQconsumeInput(m_server.get()) == 0)
            break; // result() tells
        if (!isStopped && !goesOn()) {
            isStopped = true;
            cancel();
        }
    }
    return !isStopped;
}

PostgresConnection::Result PostgresConnection::result()
{
    Result kept;
    while (Result next { PQgetResult(m_server.get()) }) {
        const ExecStatusType status = PQresultStatus(next.get());
        if (!kept || PQresultStatus(kept.get()) != PGRES_FATAL_ERROR)
            kept = std::move(next);
        if (status == PGRES_COPY_IN)
            break;
    }
    return kept;
}

PostgresConnection::Result PostgresConnection::succeeded(Result result) const
{
    const ExecStatusType status = PQresultStatus(result.get());
    if (status != PGRES_COMMAND_OK && status != PGRES_TUPLES_OK && status != PGRES_COPY_IN)
        fail(result.get());
    return result;
}

bool PostgresConnection::run(const QString& statements, const GoesOn& goesOn, qint64* changed)
{
    send(statements);
    if (goesOn && !waitFor(goesOn))
        return false;
    const Result done = succeeded(result());
    if (changed)
        *changed = QByteArray(PQcmdTuples(done.get())).toLongLong();
    return true;
}

std::vector<QStringList> PostgresConnection::query(const QString& statement)
{
    send(statement);
    const Result found = succeeded(result());
    std::vector<QStringList> rows;
    for (int r = 0; r < PQntuples(found.get()); ++r) {
        QStringList row;
        for (int c = 0; c < PQnfields(found.get()); ++c) {
            row.append(PQgetisnull(found.get(), r, c) != 0
                    ? QString()
                    : QString::fromUtf8(PQgetvalue(found.get(), r, c)));
        }
        rows.push_back(row);
    }
    return rows;
}

void PostgresConnection::commit()
{
    send(QStringLiteral("COMMIT"));
    const Result done = result();
    if (PQstatus(m_server.get()) != CONNECTION_OK) {
        fail(QStringLiteral("the connection to the server was lost when all was written (%1); "
                            "look in its table tessel_builds whether this build is there")
                 .arg(safe(PQerrorMessage(m_server.get()))));
    }
    // A transaction that failed ends in a ROLLBACK that succeeds.
    if (qstrcmp(PQcmdStatus(done.get()), "COMMIT") != 0)
        fail(done.get());
}

void PostgresConnection::beginCopy(const QString& statement)
{
    send(statement);
    const Result answer = succeeded(result());
    if (PQresultStatus(answer.get()) != PGRES_COPY_IN)
        fail(answer.get());
}

void PostgresConnection::copy(std::string_view bytes)
{
    if (PQputCopyData(m_server.get(), bytes.data(), int(bytes.size())) != 1)
        fail(result().get());
}

qint64 PostgresConnection::endCopy()
{
    if (PQputCopyEnd(m_server.get(), nullptr) != 1)
        fail(result().get());
    const Result done = succeeded(result());
    return QByteArray(PQcmdTuples(done.get())).toLongLong();
}

} // namespace tessel
