#pragma once

#include <model_Tessel/StatInput.h>

#include <QtEndian>

/*
 * Goes through the bytes of a file, for what libreadstat does not tell of it. Nothing is read
 * beyond the end of the file: the first step over it ends the walk, and isFine() is false then.
 */
class StatBytes {
public:
    // Bytes that are read at once.
    static constexpr quint64 Most = quint64(16) * 1024 * 1024;

    explicit StatBytes(TStatInput& input)
        : m_input(input)
    {
    }

    void setBigEndian(bool isBigEndian)
    {
        m_isBigEndian = isBigEndian;
    }

    bool isFine() const
    {
        return m_isFine;
    }

    qint64 position() const
    {
        return m_position;
    }

    bool isAtEnd() const
    {
        return m_position == m_input.size();
    }

    // False, as is all from then on, when expected is false.
    bool require(bool expected)
    {
        m_isFine = m_isFine && expected;
        return m_isFine;
    }

    void seek(qint64 position)
    {
        if (require(position >= 0 && position <= m_input.size()))
            m_position = position;
    }

    void skip(quint64 count)
    {
        if (require(count <= quint64(m_input.size() - m_position)))
            m_position += qint64(count);
    }

    // No more than a few megabytes: names and notes.
    QByteArray read(quint64 count)
    {
        if (!require(count <= Most && count <= quint64(m_input.size() - m_position)))
            return {};
        const QByteArray bytes = m_input.bytes(m_position, int(count));
        require(quint64(bytes.size()) == count);
        m_position += bytes.size();
        return bytes;
    }

    template <typename Number> Number number()
    {
        const QByteArray bytes = read(sizeof(Number));
        if (!m_isFine)
            return 0;
        return m_isBigEndian ? qFromBigEndian<Number>(bytes.constData())
                             : qFromLittleEndian<Number>(bytes.constData());
    }

    // Passes over text that has to stand here.
    void expect(const char* text)
    {
        require(read(qstrlen(text)) == text);
    }

private:
    TStatInput& m_input;
    qint64 m_position = 0;
    bool m_isBigEndian = false;
    bool m_isFine = true;
};
