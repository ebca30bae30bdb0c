#pragma once

#include <cstring>
#include <memory>
#include <string_view>

namespace tessel {

/*
 * Bytes that are written at their end. Unlike a text it does not fill what is not written, and it
 * keeps its memory when it is cleared.
 */
class PostgresBytes {
public:
    PostgresBytes() = default;
    explicit PostgresBytes(std::size_t capacity)
        : m_bytes(new char[capacity])
        , m_capacity(capacity)
    {
    }

    std::size_t size() const
    {
        return m_size;
    }
    std::string_view view() const
    {
        return { m_bytes.get(), m_size };
    }
    // Room for size bytes behind the last one; endAt() tells how far it was used.
    char* room(std::size_t size)
    {
        if (m_capacity - m_size < size)
            grow(size);
        return m_bytes.get() + m_size;
    }
    void endAt(const char* end)
    {
        m_size = std::size_t(end - m_bytes.get());
    }
    void clear()
    {
        m_size = 0;
    }

private:
    void grow(std::size_t size)
    {
        const std::size_t capacity = 2 * m_capacity + size;
        std::unique_ptr<char[]> bytes(new char[capacity]);
        if (m_size > 0)
            std::memcpy(bytes.get(), m_bytes.get(), m_size);
        m_bytes = std::move(bytes);
        m_capacity = capacity;
    }

    std::unique_ptr<char[]> m_bytes;
    std::size_t m_size = 0;
    std::size_t m_capacity = 0;
};

} // namespace tessel
