#include <model_Tessel/InputFile.h>

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

#include <sys/stat.h>
#include <unistd.h>

class tst_InputFile : public QObject {
    Q_OBJECT

private slots:
    void init();
    void reads();
    void headOfAShortFile();
    void isNoFile_data();
    void isNoFile();
    void mayNotBeRead();
    void isTooLarge();
    void becameShorter();
    void becameLonger();
    void staysOpen();

private:
    QString path(const QString& name) const
    {
        return QDir(m_folder->path()).filePath(name);
    }

    QString newFile(const QByteArray& bytes) const
    {
        QFile file(path("file"));
        const bool isWritten = file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
        return isWritten ? file.fileName() : QString();
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_InputFile::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
}

void tst_InputFile::reads()
{
    const QByteArray bytes = QByteArray("0123456789abcdef").repeated(10'000) + '\0' + "end";
    TInputFile file(newFile(bytes));
    QCOMPARE(file.path(), path("file"));
    QCOMPARE(file.size(), 0);
    QVERIFY(file.open());
    QCOMPARE(file.size(), bytes.size());
    QCOMPARE(file.head(), bytes.left(32));
    QByteArray read = "what stood there";
    QVERIFY(file.readAll(read));
    QCOMPARE(read, bytes);
    QCOMPARE(file.head(), bytes.left(32));
    QCOMPARE(file.errorText(), QString());
}

void tst_InputFile::headOfAShortFile()
{
    TInputFile file(newFile("x"));
    QVERIFY(file.open());
    QCOMPARE(file.head(), QByteArray("x"));
    QByteArray read;
    QVERIFY(file.readAll(read));
    QCOMPARE(read, QByteArray("x"));
}

void tst_InputFile::isNoFile_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("reason");

    const QString noFile =
        QStringLiteral("is a directory, a pipe or a device; give the name of a file");
    QTest::newRow("missing") << "missing"
                             << "no such file";
    QTest::newRow("a link to nothing") << "link"
                                       << "no such file";
    QTest::newRow("a directory") << "." << noFile;
    QTest::newRow("a pipe that nobody writes into") << "pipe" << noFile;
    QTest::newRow("empty") << "empty"
                           << "is empty";
}

void tst_InputFile::isNoFile()
{
    QFETCH(const QString, name);
    QVERIFY(QFile::link("nothing", path("link")));
    QCOMPARE(mkfifo(qPrintable(path("pipe")), 0600), 0);
    QVERIFY(QFile(path("empty")).open(QIODevice::WriteOnly));
    TInputFile file(path(name));
    QVERIFY(!file.open());
    QTEST(file.errorText(), "reason");
    QCOMPARE(file.head(), QByteArray());
}

void tst_InputFile::mayNotBeRead()
{
    if (geteuid() == 0)
        QSKIP("root may read every file");
    const QString name = newFile("x");
    QVERIFY(QFile::setPermissions(name, QFile::WriteOwner));
    TInputFile file(name);
    QVERIFY(!file.open());
    QVERIFY2(file.errorText().startsWith("cannot be read: "), qPrintable(file.errorText()));
}

// The file has no blocks, so it takes no room.
void tst_InputFile::isTooLarge()
{
    const QString name = newFile("x");
    if (!QFile::resize(name, 2'000'000'001))
        QSKIP("no file of this size can be made");
    TInputFile file(name);
    QVERIFY(file.open());
    QCOMPARE(file.size(), 2'000'000'001);
    QByteArray read;
    QVERIFY(!file.readAll(read));
    QCOMPARE(file.errorText(), QString("is larger than 2000000000 bytes, more than can be read"));
}

void tst_InputFile::becameShorter()
{
    const QString name = newFile(QByteArray(1'000'000, 'x'));
    TInputFile file(name);
    QVERIFY(file.open());
    QVERIFY(QFile::resize(name, 500'000));
    QByteArray read;
    QVERIFY(!file.readAll(read));
    QCOMPARE(file.errorText(),
        QString("became shorter while it was read; try again when nothing writes it"));
}

void tst_InputFile::becameLonger()
{
    const QString name = newFile(QByteArray(100'000, 'x'));
    TInputFile file(name);
    QVERIFY(file.open());
    QFile more(name);
    QVERIFY(more.open(QIODevice::Append) && more.write("more") == 4);
    more.close();
    QByteArray read;
    QVERIFY(file.readAll(read));
    QCOMPARE(read, QByteArray(100'000, 'x') + "more");
    QCOMPARE(file.size(), 100'000);
}

// What is read is the file that was opened, whatever has its name by then.
void tst_InputFile::staysOpen()
{
    const QString name = newFile("first");
    TInputFile file(name);
    QVERIFY(file.open());
    QVERIFY(QFile::rename(name, path("other")));
    QCOMPARE(newFile("second"), name);
    QByteArray read;
    QVERIFY(file.readAll(read));
    QCOMPARE(read, QByteArray("first"));
}

QTEST_APPLESS_MAIN(tst_InputFile)

#include "tst_InputFile.moc"
