#pragma once

#include <tessel_data/DatabasePlan.h>
#include <tessel_data/SqlNames.h>

#include <QStringList>

#include <vector>

namespace tessel {

/*
 * A transaction in a database that holds tables of a build and, as temporary tables of the same
 * names, those of a batch that is added to it.
 */
class MergeSession {
public:
    enum class Place { Kept, Staged };
    struct TableColumn {
        QString name;
        QString type; // as the database says it
    };

    virtual ~MergeSession();

    // What the database is called in messages.
    virtual QString name() const = 0;
    // What stands in front of the names of tables.
    virtual QString prefix(Place place) const = 0;
    // Returns how many rows were changed.
    virtual qint64 run(const QString& sql) = 0;
    // The values as texts.
    virtual std::vector<QStringList> rows(const QString& sql) = 0;
    // None where there is no such table.
    virtual std::vector<TableColumn> columns(Place place, const QString& table) = 0;
    // Tells the database that a temporary table has its rows, so that it can plan for their number.
    virtual void filled(const QString& table);

    // Their names in a statement.
    QString kept(const QString& table) const
    {
        return prefix(Place::Kept) + sqlIdentifier(table);
    }
    QString staged(const QString& table) const
    {
        return prefix(Place::Staged) + sqlIdentifier(table);
    }
    // The first value of a query, as a number.
    qint64 number(const QString& sql);

    // These make what the plan says among the kept tables.
    virtual void makeTable(const DatabaseTable& table) = 0;
    virtual void makeIndex(const DatabaseIndex& index) = 0;
    virtual void makeViews(const DatabaseTable& table) = 0;
};

} // namespace tessel
