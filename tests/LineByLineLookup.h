#pragma once

#include <model_Tessel/MLDB.h>

#include <QFile>
#include <QString>
#include <QStringList>
#include <QTextStream>

#include <map>

// What an import of a lookup file is to come to, worked out one line after the other with no regard
// to speed.
class LineByLineLookup {
public:
    void import(const QString& path, const char* codec)
    {
        values.clear();
        lineNumber = 0;
        line.clear();
        position = 0;
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
            return;
        QTextStream stream(&file);
        stream.setCodec(codec);
        stream.setAutoDetectUnicode(true);
        int firstKeyLength = 0;
        while (!stream.atEnd()) {
            line = stream.readLine();
            ++lineNumber;
            position = line.length();
            split();
            if (isChecking())
                checkKeyLength(firstKeyLength);
            if (values.find(key) == values.end())
                addRecord();
            else if (isChecking())
                report(filled("Key [%1] already exists", key));
        }
    }

    int separator = 0;
    int consistency = 0;
    int maxMessages = 0;

    std::map<QString, QString> values;
    std::map<QString, int> frequencies;
    QStringList messages;
    QString lastMessage;
    QString key;
    QString value;
    QString line;
    int lineNumber = 0;
    int errorCount = 0;
    bool limitNoticeIssued = false;
    qint64 position = 0;

private:
    bool isChecking() const
    {
        return consistency == 2 || consistency == 3;
    }

    void split()
    {
        const std::map<int, QString> separators = { { 1, "\t" }, { 2, "," }, { 3, ";" },
            { 4, ":" } };
        const auto found = separators.find(separator);
        const QString text = found == separators.end() ? QString(" ") : found->second;
        const int at = line.indexOf(text);
        if (at < 1) {
            if (isChecking())
                report(filled("Separator [%1] does not exist", text));
            return;
        }
        key = line.mid(0, at);
        value = line.mid(at + 1);
        while (separator == 0 && !value.isEmpty() && value.at(0).isSpace())
            value.remove(0, 1);
    }

    void checkKeyLength(int& firstKeyLength)
    {
        if (firstKeyLength == 0) {
            firstKeyLength = key.length();
        } else if (key.length() != firstKeyLength) {
            report(filled("Key [%1] has a different key size [%2] from the first record [%3]", key,
                QString::number(key.length()), QString::number(firstKeyLength)));
        }
    }

    void addRecord()
    {
        values.insert({ key, value });
        if (consistency == 1 || consistency == 3)
            frequencies.insert({ value, 1 });
    }

    void report(QString text)
    {
        lastMessage = text;
        ++errorCount;
        if (errorCount > maxMessages && !limitNoticeIssued) {
            limitNoticeIssued = true;
            text = filled("Too many error messages [%1], only the first [%2] will be shown",
                QString(QChar(ushort(errorCount))), QString(QChar(ushort(maxMessages))));
        }
        messages << QString::number(lineNumber) + "_" + text;
    }

    static QString filled(const char* text, const QString& arg1, const QString& arg2 = QString(),
        const QString& arg3 = QString())
    {
        return MLDBGetMessage(QString(), QString::fromLatin1(text), arg1, arg2, arg3, QString(),
            QString(), QString());
    }
};
