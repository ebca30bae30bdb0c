#pragma once

#include <model_Tessel/Lookup.h>

#include <QFile>
#include <QTemporaryDir>
#include <QTextCodec>
#include <QtTest>

#include <sys/resource.h>

using Pairs = QVector<QPair<QString, QString>>;

// Until it dies no file can be opened, though it can be seen; modes would not stop root.
class NoMoreFiles {
public:
    NoMoreFiles()
    {
        getrlimit(RLIMIT_NOFILE, &m_before);
        const rlimit none = { 0, m_before.rlim_max };
        m_active = setrlimit(RLIMIT_NOFILE, &none) == 0;
    }
    ~NoMoreFiles()
    {
        setrlimit(RLIMIT_NOFILE, &m_before);
    }

    bool isActive() const
    {
        return m_active;
    }

private:
    Q_DISABLE_COPY(NoMoreFiles)

    rlimit m_before = {};
    bool m_active = false;
};

// A lookup, its messages and its counters, with a host's duties at the end of them.
class Checked {
public:
    explicit Checked(const QString& path = QString(), int separator = 2)
    {
        lookup.setFfileName(path);
        lookup.setSeparator(separator);
        lookup.setTextCodec("UTF-8");
        lookup.maxMessages = 1000000;
    }
    ~Checked()
    {
        deleteValues();
        for (const auto& frequency : frequencies)
            delete frequency.second;
    }

    bool run(econsistencyCheck mode)
    {
        return lookup.consistencyCheck(mode, frequencies, &messages);
    }

    void deleteValues()
    {
        for (const auto& record : lookup.values)
            delete record.second;
        lookup.values.clear();
    }

    Pairs pairs() const
    {
        Pairs result;
        for (const auto& record : lookup.values)
            result.append({ record.first, record.second->value });
        return result;
    }

    TOxLookup lookup;
    std::map<QString, int*> frequencies;
    QStringList messages;

private:
    Q_DISABLE_COPY(Checked)
};

inline QString asCharacter(int number)
{
    return QString(QChar(ushort(number)));
}

inline QString limitNotice(int count, int limit)
{
    return "Too many error messages [" + asCharacter(count) + "], only the first ["
        + asCharacter(limit) + "] will be shown";
}

inline const QByteArray utf8Mark = "\xEF\xBB\xBF";

inline QByteArray encoded(const char* codec, const QString& text)
{
    QTextCodec::ConverterState withoutMark(QTextCodec::IgnoreHeader);
    return QTextCodec::codecForName(codec)->fromUnicode(
        text.constData(), text.size(), &withoutMark);
}

// A test whose files stand in a folder of its own.
class LookupTest : public QObject {
protected:
    QString path(const QString& name) const
    {
        return m_directory.filePath(name);
    }

    void write(const QString& name, const QByteArray& bytes) const
    {
        QFile file(path(name));
        QVERIFY2(file.open(QIODevice::WriteOnly), qPrintable(file.fileName()));
        QCOMPARE(file.write(bytes), qint64(bytes.size()));
    }

    // Rows of paths where there is no file.
    void addNoFiles() const
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("missing") << path("nothing");
        QTest::newRow("directory") << path("folder");
        QTest::newRow("no name") << QString();
    }

    QTemporaryDir m_directory;
};
