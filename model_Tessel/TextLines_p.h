#pragma once

#include <QString>
#include <QStringView>

#include <vector>

class QByteArray;
class QTextCodec;

/*
 * The text of a file and views of its lines. With line feeds as ends they are the ones that
 * QTextStream::readLine() reads one by one, in text mode, until the stream is at its end.
 */
class TextLines {
public:
    // Carriage returns end lines too, or go wherever they stand.
    enum class Ends { LineFeeds, All };

    TextLines(const QByteArray& bytes, const QTextCodec& codec, Ends ends);

    const std::vector<QStringView>& lines() const
    {
        return m_lines;
    }

private:
    Q_DISABLE_COPY(TextLines)

    bool decode(const QByteArray& bytes, const QTextCodec& codec);
    bool split(Ends ends);
    void splitAtReturns(QStringView text);

    QString m_text;
    std::vector<QStringView> m_lines;
};
