#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

#include <sqlite3.h>

// A database that is read as it stands.
class SqliteRows {
public:
    explicit SqliteRows(const QString& path)
    {
        sqlite3_open_v2(path.toUtf8().constData(), &m_database, SQLITE_OPEN_READONLY, nullptr);
    }
    ~SqliteRows()
    {
        sqlite3_close(m_database);
    }

    // All rows; null for null. Doubles as they are read again.
    QVector<QStringList> rows(const QString& sql) const
    {
        QVector<QStringList> result;
        sqlite3_stmt* statement = nullptr;
        if (sqlite3_prepare_v2(m_database, sql.toUtf8().constData(), -1, &statement, nullptr)
            != SQLITE_OK)
            return { { QString::fromUtf8(sqlite3_errmsg(m_database)) } };
        while (sqlite3_step(statement) == SQLITE_ROW) {
            QStringList row;
            for (int c = 0; c < sqlite3_column_count(statement); ++c)
                row.append(cell(statement, c));
            result.append(row);
        }
        sqlite3_finalize(statement);
        return result;
    }
    QString value(const QString& sql) const
    {
        return rows(sql).value(0).value(0);
    }

private:
    Q_DISABLE_COPY(SqliteRows)

    static QString cell(sqlite3_stmt* statement, int column)
    {
        if (sqlite3_column_type(statement, column) == SQLITE_NULL)
            return QString();
        if (sqlite3_column_type(statement, column) == SQLITE_FLOAT)
            return QString::number(sqlite3_column_double(statement, column), 'g', 17);
        const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
        const QString value = QString::fromUtf8(text, sqlite3_column_bytes(statement, column));
        return value.isNull() ? QLatin1String("") : value;
    }

    sqlite3* m_database = nullptr;
};
