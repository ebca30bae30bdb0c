#include <tessel_data/MergeSession_p.h>

namespace tessel {

MergeSession::~MergeSession() = default;

void MergeSession::filled(const QString&)
{
}

qint64 MergeSession::number(const QString& sql)
{
    const std::vector<QStringList> found = rows(sql);
    return found.empty() ? 0 : found.front().front().toLongLong();
}

} // namespace tessel
