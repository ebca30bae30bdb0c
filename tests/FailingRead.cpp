// Stands in for read(): the file FAILING_READ_FILE fails behind its first FAILING_READ_BYTES bytes,
// as a disk with a bad sector does.
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <dlfcn.h>
#include <unistd.h>

namespace {

bool isChosen(int file)
{
    const char* chosen = std::getenv("FAILING_READ_FILE");
    char link[64];
    char path[PATH_MAX];
    std::snprintf(link, sizeof link, "/proc/self/fd/%d", file);
    const ssize_t size = ::readlink(link, path, sizeof path);
    return chosen && size > 0 && std::strlen(chosen) == std::size_t(size)
        && std::memcmp(chosen, path, std::size_t(size)) == 0;
}

} // namespace

extern "C" __attribute__((visibility("default"))) ssize_t read(int file, void* buffer, size_t size)
{
    using Read = ssize_t (*)(int, void*, size_t);
    static const Read next = reinterpret_cast<Read>(::dlsym(RTLD_NEXT, "read"));
    const char* limit = std::getenv("FAILING_READ_BYTES");
    if (limit && isChosen(file)) {
        const off_t end = ::lseek(file, 0, SEEK_CUR) + off_t(size);
        if (end > std::atoll(limit) && size > 64) {
            errno = EIO;
            return -1;
        }
    }
    return next(file, buffer, size);
}
