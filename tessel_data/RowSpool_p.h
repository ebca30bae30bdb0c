#pragma once

#include <QString>

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace tessel {

/*
 * Values of rows in a file without a name, as short as they are: written once from the beginning to
 * the end, then read as often as wanted in the same order. Throws DataError.
 */
class RowSpool {
public:
    // What begins a value. Small numbers are one byte.
    enum Mark : unsigned char {
        Missing = 0, // 1 to 26: of the kinds 'a' to 'z'
        Real = 27,
        Int16 = 28,
        Int32 = 29,
        Int64 = 30,
        ShortText = 31,
        LongText = 32,
        FirstSmall = 40,
    };
    static constexpr std::int64_t LowestSmall = -15;
    static constexpr std::int64_t HighestSmall = LowestSmall + 255 - FirstSmall;

    // A value that was read.
    struct Value {
        enum class Kind { Missing, Whole, Real, Text };
        Kind kind = Kind::Missing;
        char tag = '\0'; // of Missing
        std::int64_t number = 0;
        double real = 0;
        std::string_view text; // until the next value is read; ends with a null character
    };

    explicit RowSpool(const QString& folder);
    ~RowSpool();
    RowSpool(const RowSpool&) = delete;
    RowSpool& operator=(const RowSpool&) = delete;

    void addMissing(char tag = '\0')
    {
        addByte(static_cast<unsigned char>(tag == '\0' ? Missing : tag - 'a' + 1));
    }
    void addWhole(std::int64_t number)
    {
        if (number >= LowestSmall && number <= HighestSmall)
            addByte(static_cast<unsigned char>(number - LowestSmall + FirstSmall));
        else
            addLarge(number);
    }
    void addReal(double number)
    {
        add(Real, number);
    }
    void addText(std::string_view text);

    // Begins to read.
    void rewind();
    void read(Value& value)
    {
        if (m_end - m_at < LongestHead)
            refill();
        const unsigned char mark = static_cast<unsigned char>(m_buffer[m_at++]);
        if (mark >= FirstSmall) {
            value.kind = Value::Kind::Whole;
            value.number = std::int64_t(mark) - FirstSmall + LowestSmall;
        } else if (mark <= 'z' - 'a' + 1) {
            value.kind = Value::Kind::Missing;
            value.tag = mark == Missing ? '\0' : char('a' + mark - 1);
        } else {
            readLarge(mark, value);
        }
    }

private:
    static constexpr std::size_t LongestHead = 16; // a mark and a number

    void addByte(unsigned char byte)
    {
        m_buffer[m_at++] = char(byte);
        if (m_at + LongestHead > m_buffer.size())
            flush();
    }
    template <typename Number> void add(Mark mark, Number number)
    {
        m_buffer[m_at] = char(mark);
        std::memcpy(&m_buffer[m_at + 1], &number, sizeof number);
        m_at += sizeof number;
        addByte(static_cast<unsigned char>(m_buffer[m_at]));
    }
    template <typename Number> Number take()
    {
        Number number;
        std::memcpy(&number, &m_buffer[m_at], sizeof number);
        m_at += sizeof number;
        return number;
    }
    void addLarge(std::int64_t number);
    void addBytes(std::string_view bytes);
    void readLarge(unsigned char mark, Value& value);
    void readText(std::size_t size, Value& value);
    void refill();
    void flush();
    std::size_t readSome(char* bytes, std::size_t size);
    [[noreturn]] void fail(int error) const;

    QString m_folder;
    int m_file = -1;
    std::string m_buffer;
    std::size_t m_at = 0;
    std::size_t m_end = 0; // of what was read
    std::string m_text;
};

} // namespace tessel
