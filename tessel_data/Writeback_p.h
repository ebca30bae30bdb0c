#pragma once

#include <QtGlobal>

#include <fcntl.h>
#include <unistd.h>

namespace tessel {

/*
 * Has the system begin to write the last bytes of a file to the disk, so that little is left to
 * wait for when the file is synchronised. Whether that worked is known then.
 */
inline void beginWriteback(int descriptor, qint64 bytes)
{
    const off_t end = ::lseek(descriptor, 0, SEEK_CUR);
    if (end >= bytes)
        ::sync_file_range(descriptor, end - bytes, bytes, SYNC_FILE_RANGE_WRITE);
}

} // namespace tessel
