#include <tessel_data/WriteBytes_p.h>

#include <tessel_data/DataError.h>

#include <cerrno>
#include <cstring>
#include <unistd.h>

namespace tessel {

void writeBytes(int descriptor, const char* bytes, std::size_t size, const QString& path)
{
    for (std::size_t done = 0; done < size;) {
        const ssize_t count = ::write(descriptor, bytes + done, size - done);
        if (count < 0 && errno != EINTR) {
            throw DataError(DataError::Code::CannotWrite, path,
                QStringLiteral("cannot be written: ")
                    + QString::fromLocal8Bit(std::strerror(errno)));
        }
        done += count > 0 ? std::size_t(count) : 0;
    }
}

} // namespace tessel
