#pragma once

#include <tessel_data/DataBatch.h>

#include <QStringList>

#include <atomic>
#include <thread>

namespace tessel {

/* SHA-256 of files, which are read once more on a thread of its own beside their reader. */
class FileDigests {
public:
    explicit FileDigests(const std::vector<SourceFile>& files);
    ~FileDigests();

    // In the order of the files; empty for what cannot be read again, as standard input.
    const QStringList& wait();

private:
    Q_DISABLE_COPY(FileDigests)

    QString digestOf(const QString& path) const;

    QStringList m_digests;
    std::atomic<bool> m_isStopped { false };
    std::thread m_thread; // last: it uses the others
};

} // namespace tessel
