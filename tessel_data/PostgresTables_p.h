#pragma once

#include <tessel_data/DatabasePlan.h>

namespace tessel {

class UniqueNames;

/*
 * The tables of a plan in PostgreSQL's words, with the indexes that the plan leaves to the
 * database.
 */
class PostgresTables {
public:
    struct Index {
        enum class Kind { Plain, Unique, Key };

        QString name;
        int table = 0;
        Kind kind = Kind::Plain;
        QString columns;
        QString condition; // of the rows that it has
        bool isPlanned = true; // false: a key, or the codes of a value set

        // Makes it under a name, for a table called so.
        QString statement(const QString& name, const QString& table) const;
    };

    explicit PostgresTables(const DatabasePlan& plan);

    // The columns in brackets.
    QString definition(const DatabaseTable& table) const;
    const std::vector<Index>& indexes() const
    {
        return m_indexes;
    }
    // Statements that make the views of a table.
    QString views(const DatabaseTable& table) const;
    // Statements that tell of a table, its columns and its views.
    static QString comments(const DatabaseTable& table);

private:
    void planKey(int table, UniqueNames& names);
    void planCodeIndex(const DatabaseValueTable& values, UniqueNames& names);

    const DatabasePlan& m_plan;
    std::vector<Index> m_indexes;
};

} // namespace tessel
