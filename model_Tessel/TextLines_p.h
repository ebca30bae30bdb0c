#pragma once

#include <QString>
#include <QStringView>

#include <vector>

class QIODevice;
class QTextCodec;

/*
 * The text of a device and views of its lines, the same that QTextStream::readLine() reads one by
 * one, in text mode, until the stream is at its end. A byte-order mark wins over the codec.
 */
class TextLines {
public:
    TextLines(QIODevice& device, QTextCodec* codec);

    const std::vector<QStringView>& lines() const
    {
        return m_lines;
    }

private:
    Q_DISABLE_COPY(TextLines)

    bool decode(QIODevice& device, QTextCodec* codec);
    bool split();

    QString m_text;
    std::vector<QStringView> m_lines;
};
