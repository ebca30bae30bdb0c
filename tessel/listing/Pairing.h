#pragma once

#include <QStringList>
#include <QVector>

/*! Which entry of one list is which of another. */
class Pairing {
public:
    Pairing(int beforeCount, int afterCount)
        : m_after(beforeCount, -1)
        , m_before(afterCount, -1)
    {
    }

    /*!
     * Pairs what has no partner yet and has the same key, the first with the first; a null key has
     * no partner.
     */
    void pair(const QStringList& before, const QStringList& after);

    /*! The same for keys that stand once in each list. */
    void pairUnique(const QStringList& before, const QStringList& after);

    /*! Pairs what is left over, the first with the first. */
    void pairInOrder();

    /*! Pairs two that have no partner yet. */
    void join(int before, int after);

    /*! -1: none */
    int afterOf(int before) const
    {
        return m_after.at(before);
    }

    /*! -1: none */
    int beforeOf(int after) const
    {
        return m_before.at(after);
    }

private:
    QVector<int> m_after;
    QVector<int> m_before;
};
