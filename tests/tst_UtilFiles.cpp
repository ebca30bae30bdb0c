#include <model_Tessel/UtilFiles.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <unistd.h>

namespace {

// File modes bind the real user, but not root: a test that runs as root becomes nobody for a while.
class OrdinaryUser {
public:
    OrdinaryUser()
        : m_switched(getuid() == 0 && setreuid(Nobody, Unchanged) == 0)
    {
    }
    ~OrdinaryUser()
    {
        if (m_switched && setreuid(0, Unchanged) != 0)
            qFatal("The test cannot become root again");
    }

    bool isActive() const
    {
        return getuid() != 0;
    }

private:
    Q_DISABLE_COPY(OrdinaryUser)

    static constexpr uid_t Nobody = 65534;
    static constexpr uid_t Unchanged = static_cast<uid_t>(-1);

    const bool m_switched;
};

} // namespace

class tst_UtilFiles : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();

    void exists_data();
    void exists();
    void getFileDir_data();
    void getFileDir();
    void fileSizeReachedInKB_data();
    void fileSizeReachedInKB();
    void status_data();
    void status();
    void statusOfModes_data();
    void statusOfModes();
    void saveIgnoresTheSecondArgument();
    void saveCreatesNothing();

private:
    QString inRoot(const QString& path) const;
    void create(const QString& path, int size = 0) const;

    QString m_workingDirectory;
    QTemporaryDir m_directory;
};

QString tst_UtilFiles::inRoot(const QString& path) const
{
    return path.startsWith("@") ? m_directory.path() + path.mid(1) : path;
}

void tst_UtilFiles::create(const QString& path, int size) const
{
    QFile file(inRoot(path));
    QVERIFY2(file.open(QIODevice::WriteOnly), qPrintable(file.fileName()));
    QVERIFY(file.resize(size));
}

void tst_UtilFiles::initTestCase()
{
    QVERIFY(m_directory.isValid());
    m_workingDirectory = QDir::currentPath();
    QVERIFY(QDir(m_directory.path()).mkpath("sub"));
    create("@/file");
    create("@/sub/file");
    create("@/\u00f1and\u00fa \u00e9t\u00e9.dcf");
    QVERIFY(QFile::link(inRoot("@/file"), inRoot("@/link")));
    QVERIFY(QFile::link(inRoot("@/sub"), inRoot("@/dirlink")));
    QVERIFY(QFile::link(inRoot("@/nowhere"), inRoot("@/broken")));
    QVERIFY(QDir::setCurrent(m_directory.path()));
}

void tst_UtilFiles::cleanupTestCase()
{
    QVERIFY(QDir::setCurrent(m_workingDirectory));
}

void tst_UtilFiles::exists_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("isFile");
    QTest::addColumn<bool>("isDir");

    QTest::newRow("empty path") << "" << false << false;
    QTest::newRow("file") << "@/file" << true << false;
    QTest::newRow("relative file") << "sub/file" << true << false;
    QTest::newRow("file, accents and blank")
        << "@/\u00f1and\u00fa \u00e9t\u00e9.dcf" << true << false;
    QTest::newRow("directory") << "@/sub" << false << true;
    QTest::newRow("directory, trailing slash") << "@/sub/" << false << true;
    QTest::newRow("working directory") << "." << false << true;
    QTest::newRow("missing") << "@/nothing" << false << false;
    QTest::newRow("below a missing directory") << "@/nothing/file" << false << false;
    QTest::newRow("below a file") << "@/file/file" << false << false;
    QTest::newRow("other case") << "@/FILE" << false << false;
    QTest::newRow("link to a file") << "@/link" << true << false;
    QTest::newRow("link to a directory") << "@/dirlink" << false << true;
    QTest::newRow("link to nothing") << "@/broken" << false << false;
}

void tst_UtilFiles::exists()
{
    QFETCH(QString, path);
    QFETCH(bool, isFile);
    QFETCH(bool, isDir);
    QCOMPARE(UtilFiles::FileExists(inRoot(path)), isFile);
    QCOMPARE(UtilFiles::DirExists(inRoot(path)), isDir);
}

void tst_UtilFiles::getFileDir_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("dir");

    QTest::newRow("empty path") << ""
                                << "";
    QTest::newRow("file") << "@/sub/file"
                          << "@/sub";
    QTest::newRow("missing file") << "@/sub/nothing"
                                  << "@/sub";
    QTest::newRow("missing directory") << "@/nothing/file"
                                       << "@/nothing";
    QTest::newRow("directory") << "@/sub"
                               << "@";
    QTest::newRow("relative file") << "sub/file"
                                   << "@/sub";
    QTest::newRow("bare name") << "file"
                               << "@";
    QTest::newRow("dots are resolved") << "@/sub/../sub/./file"
                                       << "@/sub";
    QTest::newRow("in the root directory") << "/file"
                                           << "/";
}

void tst_UtilFiles::getFileDir()
{
    QFETCH(QString, path);
    QFETCH(QString, dir);
    QCOMPARE(UtilFiles::GetFileDir(inRoot(path)), inRoot(dir));
}

void tst_UtilFiles::fileSizeReachedInKB_data()
{
    QTest::addColumn<qint64>("size");
    QTest::addColumn<int>("limitKB");
    QTest::addColumn<bool>("reached");

    constexpr qint64 sixGB = Q_INT64_C(6) << 30;
    QTest::newRow("one byte short of 2 KB, limit 1") << Q_INT64_C(2047) << 1 << false;
    QTest::newRow("2 KB, limit 1") << Q_INT64_C(2048) << 1 << true;
    QTest::newRow("2 KB, limit 2") << Q_INT64_C(2048) << 2 << false;
    QTest::newRow("one byte short of 1 KB, limit 0") << Q_INT64_C(1023) << 0 << false;
    QTest::newRow("1 KB, limit 0") << Q_INT64_C(1024) << 0 << true;
    QTest::newRow("empty, limit 0") << Q_INT64_C(0) << 0 << false;
    QTest::newRow("empty, limit below 0") << Q_INT64_C(0) << -1 << true;
    QTest::newRow("missing, limit 0") << Q_INT64_C(-1) << 0 << false;
    QTest::newRow("missing, limit below 0") << Q_INT64_C(-1) << -1 << true;
    QTest::newRow("6 GB, its size less 1") << sixGB << (6 << 20) - 1 << true;
    QTest::newRow("6 GB, its size") << sixGB << (6 << 20) << false;
}

void tst_UtilFiles::fileSizeReachedInKB()
{
    QFETCH(qint64, size);
    QFETCH(int, limitKB);
    const QString path = inRoot("@/sized");
    QFile::remove(path);
    if (size >= 0) {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        if (!file.resize(size))
            QSKIP("This file system has no files of that size");
    }
    QTEST(UtilFiles::FileSizeReachedInKB(path, limitKB), "reached");
    QFile::remove(path);
}

void tst_UtilFiles::status_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<int>("status");
    QTest::addColumn<int>("saveStatus");
    QTest::addColumn<bool>("canSave");

    QTest::newRow("writable file") << "@/file" << 0 << 0 << true;
    QTest::newRow("writable file, relative") << "file" << 0 << 0 << true;
    QTest::newRow("empty path") << "" << 1 << 1 << false;
    QTest::newRow("null path") << QString() << 1 << 1 << false;
    QTest::newRow("missing directory") << "@/nothing/file" << 2 << 2 << false;
    QTest::newRow("file as directory") << "@/file/file" << 2 << 2 << false;
    QTest::newRow("missing file") << "@/nothing" << 3 << 0 << true;
    QTest::newRow("missing file, relative") << "nothing" << 3 << 0 << true;
    QTest::newRow("directory, which is no file") << "@/sub" << 3 << 0 << true;
    QTest::newRow("link to nothing") << "@/broken" << 3 << 0 << true;
}

void tst_UtilFiles::status()
{
    QFETCH(QString, path);
    QFETCH(int, status);
    QFETCH(int, saveStatus);
    QFETCH(bool, canSave);
    path = inRoot(path);
    QCOMPARE(UtilFiles::GetFileStatus(path), status);
    QCOMPARE(UtilFiles::CheckFileStatus(path), status);
    QCOMPARE(UtilFiles::GetFileSaveStatus(path, QString()), saveStatus);
    QCOMPARE(UtilFiles::CheckFileSave(path, QString()), canSave);
}

void tst_UtilFiles::statusOfModes_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<int>("status");
    QTest::addColumn<bool>("canSave");

    constexpr int read = QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther;
    constexpr int write = QFile::WriteOwner | QFile::WriteGroup | QFile::WriteOther;
    QTest::newRow("read and write") << (read | write) << 0 << true;
    QTest::newRow("read only") << read << 4 << false;
    QTest::newRow("write only") << write << 0 << true;
    QTest::newRow("neither") << 0 << 4 << false;
}

void tst_UtilFiles::statusOfModes()
{
    QFETCH(int, mode);
    QFETCH(int, status);
    QFETCH(bool, canSave);
    const QString path = inRoot("@/modes");
    create("@/modes");
    QVERIFY(QFile::setPermissions(path, QFile::Permissions(mode)));
    QVERIFY(QFile::setPermissions(m_directory.path(),
        QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner | QFile::ExeGroup
            | QFile::ExeOther));
    {
        const OrdinaryUser user;
        if (!user.isActive())
            QSKIP("Root ignores file modes and cannot become another user here");
        QCOMPARE(UtilFiles::GetFileStatus(path), status);
        QCOMPARE(UtilFiles::CheckFileStatus(path), status);
        QCOMPARE(UtilFiles::GetFileSaveStatus(path, QString()), status);
        QCOMPARE(UtilFiles::CheckFileSave(path, QString()), canSave);
    }
    QFile::remove(path);
}

void tst_UtilFiles::saveIgnoresTheSecondArgument()
{
    QCOMPARE(UtilFiles::GetFileSaveStatus(inRoot("@/nothing"), inRoot("@/nothing/file")), 0);
    QCOMPARE(UtilFiles::GetFileSaveStatus(inRoot("@/nothing/file"), inRoot("@/file")), 2);
    QVERIFY(UtilFiles::CheckFileSave(inRoot("@/nothing"), inRoot("@/nothing/file")));
    QVERIFY(!UtilFiles::CheckFileSave(inRoot("@/nothing/file"), inRoot("@/file")));
}

void tst_UtilFiles::saveCreatesNothing()
{
    QVERIFY(UtilFiles::CheckFileSave(inRoot("@/nothing"), QString()));
    QVERIFY(!QFile::exists(inRoot("@/nothing")));
}

QTEST_GUILESS_MAIN(tst_UtilFiles)

#include "tst_UtilFiles.moc"
