#include <tessel_data/FileDigests_p.h>

#include <QByteArray>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <memory>
#include <openssl/evp.h>

namespace tessel {

namespace {

struct FreeContext {
    void operator()(EVP_MD_CTX* context) const
    {
        EVP_MD_CTX_free(context);
    }
};

// Of libcrypto, which uses what the processor has for it and is several times faster than Qt's.
class Sha256 {
public:
    Sha256()
        : m_context(EVP_MD_CTX_new())
        , m_isSound(m_context && EVP_DigestInit_ex(m_context.get(), EVP_sha256(), nullptr) == 1)
    {
    }

    void add(const char* bytes, qint64 size)
    {
        m_isSound = m_isSound && EVP_DigestUpdate(m_context.get(), bytes, std::size_t(size)) == 1;
    }

    // In hexadecimal digits; null when there is none.
    QString result()
    {
        unsigned char bytes[EVP_MAX_MD_SIZE];
        unsigned size = 0;
        m_isSound = m_isSound && EVP_DigestFinal_ex(m_context.get(), bytes, &size) == 1;
        if (!m_isSound)
            return QString();
        const auto* first = reinterpret_cast<const char*>(bytes);
        return QString::fromLatin1(QByteArray(first, int(size)).toHex());
    }

private:
    std::unique_ptr<EVP_MD_CTX, FreeContext> m_context;
    bool m_isSound;
};

} // namespace

FileDigests::FileDigests(const std::vector<SourceFile>& files)
{
    QStringList paths;
    for (const SourceFile& file : files)
        paths.append(file.path);
    m_thread = std::thread([this, paths] {
        for (const QString& path : paths)
            m_digests.append(digestOf(path));
    });
}

FileDigests::~FileDigests()
{
    m_isStopped = true;
    wait();
}

const QStringList& FileDigests::wait()
{
    if (m_thread.joinable())
        m_thread.join();
    return m_digests;
}

QString FileDigests::digestOf(const QString& path) const
{
    constexpr qint64 blockSize = 131'072; // which stays in the cache
    if (!QFileInfo(path).isFile()) // a pipe gives its bytes only once
        return QString();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return QString();
    Sha256 digest;
    QByteArray block(int(blockSize), Qt::Uninitialized);
    qint64 size = 1;
    while (!m_isStopped && size > 0) {
        size = file.read(block.data(), blockSize);
        digest.add(block.constData(), std::max<qint64>(0, size));
    }
    return size == 0 ? digest.result() : QString();
}

} // namespace tessel
