#pragma once

#include <tessel_data/DatabasePlan.h>
#include <tessel_data/PostgresConnection_p.h>

namespace tessel {

// As the catalog has a name: in small letters where it needs no quotes.
QString catalogName(const QString& name);

/*
 * The schema that tables are built in: what a former build left there, and how the new tables take
 * its place.
 */
class PostgresSchema {
public:
    // Empty: the first of the search path.
    PostgresSchema(PostgresConnection& server, const QString& name);

    // Locks the schema against other builds, makes it where it is missing and looks what it holds.
    // Refuses to begin where the tables of the plan would not have their place at the end.
    void prepare(const DatabasePlan& plan, bool mayReplace);
    // Locks the tables of the former build, which must be there, against all who write.
    void openFormer();
    // Drops the tables and views of the former build.
    QString dropStatements() const;
    // In quotes.
    QString name() const;

private:
    struct Relation {
        QString name; // as in the catalog
        bool isOwned = false;
    };

    void choose();
    void lock();
    void make();
    bool isThere() const;
    bool hasRight(const char* right) const;
    void enter() const;
    void readRelations();
    void readFormer();
    bool has(const QString& relation) const;
    void checkFormer() const;
    void checkDependents() const;
    void checkNames(const DatabasePlan& plan) const;

    PostgresConnection& m_server;
    QString m_name;
    std::vector<Relation> m_relations;
    QStringList m_formerTables; // as in the catalog
    QStringList m_formerViews;
};

} // namespace tessel
