#include "listing/Pairing.h"

#include <QHash>

namespace {

QStringList uniqueOnly(QStringList keys)
{
    QHash<QString, int> counts;
    for (const QString& key : qAsConst(keys))
        ++counts[key];
    for (QString& key : keys) {
        if (counts.value(key) != 1)
            key = QString();
    }
    return keys;
}

} // namespace

void Pairing::join(int before, int after)
{
    m_after[before] = after;
    m_before[after] = before;
}

void Pairing::pair(const QStringList& before, const QStringList& after)
{
    QHash<QString, QVector<int>> waiting;
    for (int i = after.size() - 1; i >= 0; --i) {
        if (m_before.at(i) < 0 && !after.at(i).isNull())
            waiting[after.at(i)].append(i);
    }
    for (int i = 0; i < before.size(); ++i) {
        const auto found = waiting.find(before.at(i));
        if (m_after.at(i) < 0 && found != waiting.end() && !found->isEmpty())
            join(i, found->takeLast());
    }
}

void Pairing::pairUnique(const QStringList& before, const QStringList& after)
{
    pair(uniqueOnly(before), uniqueOnly(after));
}

void Pairing::pairInOrder()
{
    int after = 0;
    for (int before = 0; before < m_after.size(); ++before) {
        if (m_after.at(before) >= 0)
            continue;
        while (after < m_before.size() && m_before.at(after) >= 0)
            ++after;
        if (after == m_before.size())
            return;
        join(before, after);
    }
}
