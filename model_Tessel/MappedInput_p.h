#pragma once

#include <readstat.h>

#include <QtGlobal>

/*
 * Input of a libreadstat parser that reads a file from memory, where libreadstat's own input makes
 * one system call a field. Results and error codes are those of its own input: what cannot be
 * mapped (an empty file, a folder, a pipe) is read and refused in the same way.
 */
class MappedInput {
public:
    MappedInput() = default;
    ~MappedInput();

    // Makes parser read through this input, which has to outlive the parse.
    void attachTo(readstat_parser_t* parser);

    // True when a mapped file ended in the middle of something that was read from it, which
    // libreadstat passes over where the value labels of a .dta file stand.
    bool endedEarly() const
    {
        return m_endedEarly;
    }

private:
    Q_DISABLE_COPY(MappedInput)

    static int openFile(const char* path, void* context);
    static int closeFile(void* context);
    static readstat_off_t seek(readstat_off_t offset, readstat_io_flags_t whence, void* context);
    static ssize_t read(void* buffer, size_t size, void* context);
    static readstat_error_t update(
        long fileSize, readstat_progress_handler progress, void* userContext, void* context);

    void map();
    bool close();
    readstat_off_t seekMapped(readstat_off_t offset, int origin);

    int m_file = -1;
    char* m_bytes = nullptr; // null: not mapped, read from m_file
    readstat_off_t m_size = 0;
    readstat_off_t m_position = 0;
    bool m_endedEarly = false;
};
