#include <model_Tessel/MappedInput_p.h>

#include <algorithm>
#include <cstring>
#include <utility>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

int originOf(readstat_io_flags_t whence)
{
    switch (whence) {
    case READSTAT_SEEK_SET:
        return SEEK_SET;
    case READSTAT_SEEK_CUR:
        return SEEK_CUR;
    case READSTAT_SEEK_END:
        return SEEK_END;
    }
    return -1;
}

// True for a .dta file of format 117 or later.
bool isMarked(const char* bytes, readstat_off_t size)
{
    static constexpr char mark[] = "<stata_dta>";
    constexpr size_t length = sizeof mark - 1;
    return size >= readstat_off_t(length) && std::memcmp(bytes, mark, length) == 0;
}

} // namespace

MappedInput::~MappedInput()
{
    close();
}

void MappedInput::attachTo(readstat_parser_t* parser)
{
    readstat_set_open_handler(parser, openFile);
    readstat_set_close_handler(parser, closeFile);
    readstat_set_seek_handler(parser, seek);
    readstat_set_read_handler(parser, read);
    readstat_set_update_handler(parser, update);
    readstat_set_io_ctx(parser, this);
}

int MappedInput::openFile(const char* path, void* context)
{
    auto* input = static_cast<MappedInput*>(context);
    input->close();
    input->m_endedEarly = false;
    input->m_file = ::open(path, O_RDONLY | O_CLOEXEC);
    if (input->m_file < 0)
        return -1;
    input->map();
    return 0;
}

int MappedInput::closeFile(void* context)
{
    return static_cast<MappedInput*>(context)->close() ? 0 : -1;
}

readstat_off_t MappedInput::seek(readstat_off_t offset, readstat_io_flags_t whence, void* context)
{
    auto* input = static_cast<MappedInput*>(context);
    const int origin = originOf(whence);
    return input->m_bytes ? input->seekMapped(offset, origin)
                          : ::lseek(input->m_file, offset, origin);
}

ssize_t MappedInput::read(void* buffer, size_t size, void* context)
{
    auto* input = static_cast<MappedInput*>(context);
    if (!input->m_bytes)
        return ::read(input->m_file, buffer, size);
    const auto left =
        static_cast<size_t>(std::max<readstat_off_t>(input->m_size - input->m_position, 0));
    const size_t count = std::min(size, left);
    // Nothing more at the very end, where a length could stand, is how old .dta files tell that all
    // was read; those of today have a mark there.
    const bool isEnd = input->m_position == input->m_size && size <= sizeof(qint32)
        && !isMarked(input->m_bytes, input->m_size);
    if (count < size && (count > 0 || !isEnd))
        input->m_endedEarly = true;
    std::memcpy(buffer, input->m_bytes + std::min(input->m_position, input->m_size), count);
    input->m_position += static_cast<readstat_off_t>(count);
    return static_cast<ssize_t>(count);
}

readstat_error_t MappedInput::update(
    long fileSize, readstat_progress_handler progress, void* userContext, void* context)
{
    if (!progress)
        return READSTAT_OK;
    const readstat_off_t position = seek(0, READSTAT_SEEK_CUR, context);
    if (position < 0)
        return READSTAT_ERROR_SEEK;
    const double done = static_cast<double>(position) / static_cast<double>(fileSize);
    return progress(done, userContext) == READSTAT_HANDLER_OK ? READSTAT_OK
                                                              : READSTAT_ERROR_USER_ABORT;
}

void MappedInput::map()
{
    struct stat info = {};
    if (::fstat(m_file, &info) != 0 || info.st_size == 0)
        return;
    void* bytes =
        ::mmap(nullptr, static_cast<size_t>(info.st_size), PROT_READ, MAP_PRIVATE, m_file, 0);
    if (bytes == MAP_FAILED)
        return;
    m_bytes = static_cast<char*>(bytes);
    m_size = info.st_size;
}

bool MappedInput::close()
{
    if (m_bytes)
        ::munmap(m_bytes, static_cast<size_t>(m_size));
    m_bytes = nullptr;
    m_size = 0;
    m_position = 0;
    const int file = std::exchange(m_file, -1);
    return file < 0 || ::close(file) == 0;
}

readstat_off_t MappedInput::seekMapped(readstat_off_t offset, int origin)
{
    readstat_off_t start = 0;
    switch (origin) {
    case SEEK_SET:
        break;
    case SEEK_CUR:
        start = m_position;
        break;
    case SEEK_END:
        start = m_size;
        break;
    default:
        return -1;
    }
    readstat_off_t target = 0;
    if (__builtin_add_overflow(start, offset, &target) || target < 0)
        return -1;
    // How far beyond its end a file may be positioned depends on the file system.
    if (target > m_size && ::lseek(m_file, target, SEEK_SET) != target)
        return -1;
    m_position = target;
    return target;
}
