// Loaded before a program: its reads of the file that FAILING_READ_FILE names fail behind the
// first FAILING_READ_BYTES bytes, or find the file's end there when FAILING_READ_ENDS is set, or go
// on when FAILING_READ_GROWS is set, and each adds a byte to the file.
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/types.h>
#include <unistd.h>

namespace {

bool isFailing(int file)
{
    const char* const name = std::getenv("FAILING_READ_FILE");
    char link[64] = "/proc/self/fd/";
    char path[4096] = {};
    std::size_t length = std::strlen(link);
    char digits[16];
    int count = 0;
    for (int rest = file; count == 0 || rest > 0; rest /= 10)
        digits[count++] = static_cast<char>('0' + rest % 10);
    while (count > 0)
        link[length++] = digits[--count];
    return name && file >= 0 && readlink(link, path, sizeof path - 1) > 0
        && std::strcmp(name, path) == 0;
}

void grow(const char* name)
{
    const int file = open(name, O_WRONLY | O_APPEND);
    if (file < 0 || write(file, "", 1) != 1)
        std::abort();
    close(file);
}

// What a read of size bytes at an offset may take; -1: it fails.
ssize_t allowed(int file, off_t offset, std::size_t size)
{
    if (!isFailing(file))
        return static_cast<ssize_t>(size);
    const char* const after = std::getenv("FAILING_READ_BYTES");
    const off_t left = (after ? std::strtoll(after, nullptr, 10) : 0) - offset;
    if (left > 0)
        return left < static_cast<off_t>(size) ? left : static_cast<ssize_t>(size);
    if (std::getenv("FAILING_READ_ENDS"))
        return 0;
    if (std::getenv("FAILING_READ_GROWS")) {
        grow(std::getenv("FAILING_READ_FILE"));
        return static_cast<ssize_t>(size);
    }
    errno = EIO;
    return -1;
}

template <typename Function> Function* next(const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

ssize_t readAt(const char* name, int file, void* bytes, std::size_t size, off_t offset)
{
    const ssize_t count = allowed(file, offset, size);
    return count <= 0
        ? count
        : next<ssize_t(int, void*, std::size_t, off_t)>(name)(file, bytes, count, offset);
}

} // namespace

extern "C" {

#pragma GCC visibility push(default)

ssize_t read(int file, void* bytes, std::size_t size)
{
    const ssize_t count = isFailing(file) ? allowed(file, lseek(file, 0, SEEK_CUR), size)
                                          : static_cast<ssize_t>(size);
    return count < 0 || (count == 0 && size > 0)
        ? count
        : next<ssize_t(int, void*, std::size_t)>("read")(file, bytes, count);
}

ssize_t pread(int file, void* bytes, std::size_t size, off_t offset)
{
    return readAt("pread", file, bytes, size, offset);
}

ssize_t pread64(int file, void* bytes, std::size_t size, off64_t offset)
{
    return readAt("pread64", file, bytes, size, offset);
}

#pragma GCC visibility pop
}
