// Where results go: devices and pipes of the test's own, links, names of any bytes, full disks and
// terminals.
#include "RunTessel.h"
#include "process/Output.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QtTest>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace {

constexpr int NullDevice = 3;
constexpr int FullDevice = 7;

const QStringList listing { "fields", "--format", "csv", "basic.dcf" };

// "$0" is the program, "$1" the test's folder.
Outcome runShell(const QString& script, const QString& folder, const QString& locale = QString())
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    if (!locale.isEmpty())
        environment.insert("LC_ALL", locale);
    return runProgram("sh", { "-c", script, TESSEL_PROGRAM, folder }, {}, environment);
}

// A program whose standard output is a descriptor of the test.
class ProgramInto : public QProcess {
public:
    explicit ProgramInto(int descriptor)
        : m_descriptor(descriptor)
    {
    }

protected:
    void setupChildProcess() override
    {
        dup2(m_descriptor, STDOUT_FILENO);
    }

private:
    int m_descriptor;
};

// What the system tells of a process: the one that does the work of another, if it has one.
QByteArray stateOf(qint64 process)
{
    const QString folder = QStringLiteral("/proc/%1/").arg(process);
    const QByteArray children =
        readFile(folder + QStringLiteral("task/%1/children").arg(process)).trimmed();
    if (!children.isEmpty())
        return stateOf(children.split(' ').constLast().toLongLong());
    const QByteArray status = readFile(folder + QStringLiteral("stat"));
    return status.mid(status.lastIndexOf(')') + 2, 1);
}

int bytesIn(int descriptor)
{
    int count = -1;
    return ioctl(descriptor, FIONREAD, &count) == 0 ? count : -1;
}

bool isKind(const QString& path, mode_t kind)
{
    struct stat status { };
    return lstat(qPrintable(path), &status) == 0 && (status.st_mode & S_IFMT) == kind;
}

// A device that can be written to; not every user, and not every file system, may have one.
bool makeDevice(const QString& path, int minor)
{
    return mknod(qPrintable(path), S_IFCHR | 0666, makedev(1, unsigned(minor))) == 0
        && QFile(path).open(QIODevice::WriteOnly | QIODevice::ExistingOnly);
}

// An item whose labels drive a terminal, and turn the direction of what follows.
const QByteArray hostile = "A\x1B[31mB\xE2\x80\xAE"
                           "C\xC2\x9B"
                           "D";

QByteArray hostileDictionary()
{
    return "[Dictionary]\nName=D\nLabel=D\n[Level]\nName=L\nLabel=L\n[IdItems]\n"
           "[Item]\nName=ID\nLabel=ID\nStart=2\nLen=2\n"
           "[Record]\nName=R\nLabel=R\nRecordTypeValue='1'\n[Item]\nName=I\nLabel="
        + hostile + "\nStart=4\nLen=1\n[ValueSet]\nName=V\nLabel=V\nValue=1;" + hostile + "\n";
}

} // namespace

class tst_Output : public QObject {
    Q_OBJECT

private slots:
    void init();
    void deviceIsWrittenInto();
    void fullDeviceFails();
    void fifoIsWrittenInto();
    void pipeThatDoesNotBlock();
    void openDescriptorIsWrittenInto();
    void standardOutputByName();
    void linkStays();
    void linkLoopFails();
    void directoryFails();
    void colonInFront();
    void namesOutsideTheLocale();
    void namesOfAnyLocale();
    void linkToANameOutsideTheLocale();
    void fullDiskFails();
    void closedDescriptors();
    void helpIntoFullDevice_data();
    void helpIntoFullDevice();
    void terminalShowsMarks_data();
    void terminalShowsMarks();
    void terminalShowsMarksOfLookups_data();
    void terminalShowsMarksOfLookups();
    void tooLittleMemory();
    void unfinishedLeavesTheFileThatWas();
    void piecesOfAnySize();
    void failureIsKnownAtTheEnd();
    void sameFileByAnotherName();

private:
    QString path(const QString& name) const
    {
        return m_folder->path() + '/' + name; // filePath() takes a colon for a drive's
    }

    QStringList names() const
    {
        return QDir(m_folder->path())
            .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    QByteArray m_expected;
};

void tst_Output::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_expected = runTessel(listing).output;
    QVERIFY(m_expected.size() > 100);
}

void tst_Output::deviceIsWrittenInto()
{
    const QString device = path("null");
    if (!makeDevice(device, NullDevice))
        QSKIP("no device can be made here");
    const Outcome outcome = runTessel(listing + QStringList { "-o", device });
    QCOMPARE(outcome.errors, QByteArray());
    QCOMPARE(outcome.status, 0);
    QVERIFY(isKind(device, S_IFCHR));
    QCOMPARE(names(), QStringList("null"));
}

void tst_Output::fullDeviceFails()
{
    const QString device = path("full");
    if (!makeDevice(device, FullDevice))
        QSKIP("no device can be made here");
    const QStringList large { "fields", "--values", "--format", "json",
        "../../examples/census.dcf" };
    for (const QStringList& arguments : { listing, large }) {
        const Outcome written = runTessel(arguments + QStringList { "-o", device });
        QCOMPARE(written.status, 1);
        QCOMPARE(written.errors,
            device.toUtf8() + ": error: cannot be written: No space left on device\n");
        QVERIFY(isKind(device, S_IFCHR));
        const Outcome printed =
            runShell("exec \"$0\" " + arguments.join(' ') + " > \"$1/full\"", m_folder->path());
        QCOMPARE(printed.status, 1);
        QCOMPARE(printed.errors,
            QByteArray("standard output: error: cannot be written: No space left on device\n"));
    }
}

void tst_Output::fifoIsWrittenInto()
{
    const QString fifo = path("fifo");
    QCOMPARE(mkfifo(qPrintable(fifo), 0600), 0);
    const Outcome outcome = runShell("cat \"$1/fifo\" & \"$0\" " + listing.join(' ')
            + " -o \"$1/fifo\"; status=$?; wait; exit $status",
        m_folder->path());
    QCOMPARE(outcome.status, 0);
    QCOMPARE(outcome.output, m_expected);
    QVERIFY(isKind(fifo, S_IFIFO));
}

// Full, such a pipe is an error to whoever does not wait; who asks again and again never sleeps.
void tst_Output::pipeThatDoesNotBlock()
{
    const QStringList arguments { "fields", "-f", "json", "--values", "../../examples/census.dcf" };
    const QByteArray expected = runTessel(arguments).output;
    int ends[2] = {};
    QCOMPARE(pipe2(ends, O_CLOEXEC), 0);
    const int capacity = fcntl(ends[1], F_SETPIPE_SZ, 4096);
    QVERIFY(capacity > 0 && expected.size() > 2 * capacity);
    QCOMPARE(fcntl(ends[1], F_SETFL, O_NONBLOCK), 0);
    ProgramInto process(ends[1]);
    process.setWorkingDirectory(dataFolder());
    process.start(TESSEL_PROGRAM, arguments);
    QVERIFY(process.waitForStarted());
    close(ends[1]);
    QTRY_VERIFY_WITH_TIMEOUT(bytesIn(ends[0]) > 0, 60'000);
    QTRY_COMPARE_WITH_TIMEOUT(stateOf(process.processId()), QByteArray("S"), 10'000);
    QFile pipe;
    QVERIFY(pipe.open(ends[0], QIODevice::ReadOnly, QFileDevice::AutoCloseHandle));
    QCOMPARE(pipe.readAll(), expected);
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.readAllStandardError(), QByteArray());
    QCOMPARE(process.exitCode(), 0);
}

void tst_Output::openDescriptorIsWrittenInto()
{
    const Outcome outcome = runShell(
        "(\"$0\" " + listing.join(' ') + " -o /proc/self/fd/3 3>&1 >&2) | cat", m_folder->path());
    QCOMPARE(outcome.errors, QByteArray());
    QCOMPARE(outcome.output, m_expected);
    // An open file without a name is nothing that can be replaced.
    const Outcome nameless = runShell(
        "exec 3>\"$1/x\"; rm \"$1/x\"; \"$0\" " + listing.join(' ') + " -o /proc/self/fd/3",
        m_folder->path());
    QCOMPARE(nameless.status, 1);
    QVERIFY(nameless.errors.contains("has no name any more"));
    QCOMPARE(names(), QStringList());
}

void tst_Output::standardOutputByName()
{
    const Outcome outcome = runShell("{ echo before; \"$0\" " + listing.join(' ')
            + " -o /proc/self/fd/1; echo after; } > \"$1/out\"",
        m_folder->path());
    QCOMPARE(outcome.errors, QByteArray());
    QCOMPARE(readFile(path("out")), "before\n" + m_expected + "after\n");
}

void tst_Output::linkStays()
{
    QVERIFY(QDir(m_folder->path()).mkdir("below"));
    QVERIFY(writeFile(path("below/file"), "earlier"));
    QVERIFY(QFile::link("second", path("first")));
    QVERIFY(QFile::link("below/third", path("second")));
    QVERIFY(QFile::link("../below/file", path("below/third")));
    QCOMPARE(runTessel(listing + QStringList { "-o", path("first") }).status, 0);
    QCOMPARE(readFile(path("below/file")), m_expected);
    QVERIFY(!QFileInfo(path("below/file")).isSymLink());
    for (const char* link : { "first", "second", "below/third" })
        QVERIFY2(isKind(path(link), S_IFLNK), link);

    QVERIFY(QFile::link("below/none", path("dangling")));
    QCOMPARE(runTessel(listing + QStringList { "-o", path("dangling") }).status, 0);
    QCOMPARE(readFile(path("below/none")), m_expected);
    QVERIFY(isKind(path("dangling"), S_IFLNK));
}

void tst_Output::linkLoopFails()
{
    QVERIFY(QFile::link("second", path("first")));
    QVERIFY(QFile::link("first", path("second")));
    const Outcome outcome = runTessel(listing + QStringList { "-o", path("first") });
    QCOMPARE(outcome.status, 1);
    QVERIFY2(
        outcome.errors.contains("Too many levels of symbolic links"), outcome.errors.constData());
    QVERIFY(isKind(path("first"), S_IFLNK));
    QVERIFY(isKind(path("second"), S_IFLNK));
}

void tst_Output::directoryFails()
{
    const Outcome outcome = runTessel(listing + QStringList { "-o", m_folder->path() });
    QCOMPARE(outcome.status, 1);
    QVERIFY2(
        outcome.errors.contains("cannot be written: Is a directory"), outcome.errors.constData());
}

void tst_Output::colonInFront()
{
    const QString copies =
        "cp basic.dcf lookup_comma.txt \"$1\" && cd \"$1\" && mv basic.dcf :b.dcf"
        " && mv lookup_comma.txt :l.txt && ";
    const Outcome written =
        runShell(copies + "\"$0\" fields -f csv :b.dcf -o :out.csv", m_folder->path());
    QCOMPARE(written.errors, QByteArray());
    QCOMPARE(written.status, 0);
    QCOMPARE(readFile(path(":out.csv")).replace("./:b.dcf", "basic.dcf"), m_expected);
    for (const char* command : { "export --to ddi :b.dcf", "tree :b.dcf", "diff :b.dcf :b.dcf",
             "lookup -s comma :l.txt --report :r.html", "tree :b.dcf -o :l" }) {
        const Outcome outcome =
            runShell("cd \"$1\" && \"$0\" " + QString(command), m_folder->path());
        QVERIFY2(outcome.status == 0, outcome.errors.constData());
    }
    QVERIFY(readFile(path(":r.html")).contains("<html"));
    // Behind a link, too.
    QCOMPARE(symlink(":behind", qPrintable(path("link"))), 0);
    QCOMPARE(runShell("cd \"$1\" && \"$0\" tree :b.dcf -o link", m_folder->path()).status, 0);
    QVERIFY(isKind(path(":behind"), S_IFREG));
}

// 0xE9 alone is no UTF-8.
void tst_Output::namesOutsideTheLocale()
{
    const QString name = "name=$(printf 'd\\351'); cp basic.dcf \"$1/$name.dcf\"; cd \"$1\"; ";
    const QStringList commands { "fields", "tree", "export --to ddi", "diff basic.dcf",
        "lookup -s comma" };
    for (const QString& command : commands) {
        const Outcome read =
            runShell(name + "\"$0\" " + command + " \"$name.dcf\"", m_folder->path(), "C.UTF-8");
        QCOMPARE(read.status, 2);
        QVERIFY2(read.errors.contains("'d\xEF\xBF\xBD.dcf' is not written in the locale's"),
            read.errors.constData());
    }
    const Outcome written = runShell(
        name + "rm \"$name.dcf\"; \"$0\" tree basic.dcf -o \"$name\"", m_folder->path(), "C.UTF-8");
    QCOMPARE(written.status, 2);
    QVERIFY(names().isEmpty());
}

void tst_Output::namesOfAnyLocale()
{
    for (const QString locale : { "C", "POSIX", "C.UTF-8" }) {
        const Outcome outcome =
            runShell(QString::fromUtf8(
                         "cp basic.dcf \"$1/dé.dcf\"; cd \"$1\"; \"$0\" fields -f csv dé.dcf -o "
                         "oé.csv; status=$?; cat oé.csv; rm oé.csv dé.dcf; exit $status"),
                m_folder->path(), locale);
        QCOMPARE(outcome.errors, QByteArray());
        QCOMPARE(outcome.status, 0);
        QCOMPARE(QByteArray(outcome.output).replace("d\xC3\xA9.dcf", "basic.dcf"), m_expected);
        QVERIFY(names().isEmpty());
    }
}

void tst_Output::linkToANameOutsideTheLocale()
{
    const Outcome outcome = runShell(
        "ln -s \"$(printf 'd\\351')\" \"$1/link\"; \"$0\" " + listing.join(' ') + " -o \"$1/link\"",
        m_folder->path(), "C.UTF-8");
    QCOMPARE(outcome.status, 1);
    QVERIFY2(outcome.errors.contains("is not written in the locale's encoding"),
        outcome.errors.constData());
    QCOMPARE(names(), QStringList("link"));
}

// The limit of the size of files stands for the end of the disk.
void tst_Output::fullDiskFails()
{
    const QString many = QStringLiteral(" ../../examples/census.dcf").repeated(20);
    const Outcome outcome =
        runShell("ulimit -f 100; exec \"$0\" fields --values -f json -o \"$1/out\"" + many,
            m_folder->path());
    QCOMPARE(outcome.status, 1);
    QCOMPARE(outcome.errors, path("out").toUtf8() + ": error: cannot be written: File too large\n");
    QCOMPARE(names(), QStringList());
}

void tst_Output::closedDescriptors()
{
    const QString command = "\"$0\" " + listing.join(' ');
    const Outcome closed = runShell(command + " >&-", m_folder->path());
    QCOMPARE(closed.status, 1);
    QVERIFY2(closed.errors.contains("standard output: error: cannot be written"),
        closed.errors.constData());
    // Messages are not written into the result, which would else be the third file opened.
    const Outcome silent =
        runShell("\"$0\" fields -f csv problems.dcf -o \"$1/out\" <&- 2>&-", m_folder->path());
    QCOMPARE(silent.status, 0);
    QCOMPARE(readFile(path("out")), runTessel({ "fields", "-f", "csv", "problems.dcf" }).output);
}

void tst_Output::helpIntoFullDevice_data()
{
    QTest::addColumn<QString>("arguments");
    for (const char* arguments : { "--help", "--version", "help", "fields --help", "help tree" })
        QTest::newRow(arguments) << arguments;
}

void tst_Output::helpIntoFullDevice()
{
    QFETCH(QString, arguments);
    if (!makeDevice(path("full"), FullDevice))
        QSKIP("no device can be made here");
    const Outcome outcome =
        runShell("exec \"$0\" " + arguments + " > \"$1/full\"", m_folder->path());
    QCOMPARE(outcome.status, 1);
    QVERIFY(outcome.errors.contains("No space left on device"));
}

void tst_Output::terminalShowsMarks_data()
{
    QTest::addColumn<QString>("command");
    for (const char* command :
        { "fields --values", "fields --values -f csv", "fields --values -f json", "export --to ddi",
            "export --to sql", "export --to html", "export --to csv", "export --to json",
            "tree --values", "tree --values -f json", "diff plain.dcf", "diff -f json plain.dcf" })
        QTest::newRow(command) << command;
}

void tst_Output::terminalShowsMarks()
{
    QFETCH(QString, command);
    // "script" gives the program a terminal of its own.
    if (QProcess::execute("script", { "-qec", "true", path("typescript") }) != 0)
        QSKIP("no terminal can be had here");
    QVERIFY(writeFile(path("hostile.dcf"), hostileDictionary()));
    QVERIFY(writeFile(path("plain.dcf"), hostileDictionary().replace(hostile, "plain")));
    const QByteArray mark = QString(QChar::ReplacementCharacter).toUtf8();
    const QByteArray escape = QString(QChar(0x241B)).toUtf8();
    const QByteArray turn = "\xE2\x80\xAE";

    const QByteArray piped =
        runShell("cd \"$1\" && \"$0\" " + command + " hostile.dcf", m_folder->path()).output;
    const bool isForPeople =
        command.contains("html") || (!command.contains("-f ") && !command.startsWith("export"));
    QVERIFY(piped.contains("B" + (isForPeople ? mark : turn) + "C"));
    const bool isMarkup = command.contains("ddi") || command.contains("html");
    const bool isJson = command.contains("json");
    if (!isMarkup && !isJson && !isForPeople)
        QVERIFY(piped.contains(hostile));

    const QString inner = QStringLiteral("cd '%1' && '%2' %3 hostile.dcf")
                              .arg(m_folder->path(), TESSEL_PROGRAM, command);
    const QByteArray shown = runProgram("script", { "-qec", inner, path("typescript") }).output;
    QVERIFY(!shown.contains('\x1B'));
    QVERIFY(!shown.contains(turn));
    QVERIFY(!shown.contains("\xC2\x9B"));
    QVERIFY(shown.contains("B" + mark + "C"));
    QVERIFY(isJson || shown.contains("A" + escape + "[31mB"));
    // All lines end as they do elsewhere, the terminal adding its carriage returns.
    QCOMPARE(shown.count('\n'), piped.count('\n'));
}

void tst_Output::terminalShowsMarksOfLookups_data()
{
    QTest::addColumn<QString>("options");
    QTest::newRow("table") << QString();
    QTest::newRow("csv") << "-f csv";
    QTest::newRow("json") << "-f json";
    QTest::newRow("report") << "-o rest --report /proc/self/fd/1";
}

// Keys and texts stand in messages, in the comparison and among the frequencies.
void tst_Output::terminalShowsMarksOfLookups()
{
    QFETCH(QString, options);
    if (QProcess::execute("script", { "-qec", "true", "/dev/null" }) != 0)
        QSKIP("no terminal can be had here");
    QVERIFY(writeFile(path("hostile.dcf"), hostileDictionary()));
    QVERIFY(writeFile(
        path("lookup.txt"), "1,plain\n2," + hostile + "\n" + hostile + ",x\n" + hostile + ",x\n"));
    const QString command = "lookup -s comma --frequencies --against hostile.dcf:I " + options;
    const QByteArray escape = QString(QChar(0x241B)).toUtf8();
    const QByteArray mark = QString(QChar::ReplacementCharacter).toUtf8();
    const QString inner = QStringLiteral("cd '%1' && '%2' %3 lookup.txt")
                              .arg(m_folder->path(), TESSEL_PROGRAM, command);
    const QByteArray shown = runProgram("script", { "-qec", inner, "/dev/null" }).output;
    QVERIFY(!shown.contains('\x1B'));
    QVERIFY(!shown.contains("\xE2\x80\xAE"));
    QVERIFY(!shown.contains("\xC2\x9B"));
    // Two messages of another length, one of a key twice, a key without a label, a label, two
    // values.
    QVERIFY2(shown.count("B" + mark + "C") >= 6, shown.constData());
    QVERIFY(options.contains("json") || shown.contains(escape) || options.contains("report"));
}

void tst_Output::tooLittleMemory()
{
#ifdef __SANITIZE_ADDRESS__
    QSKIP("the sanitizer's own memory has no limit");
#endif
    QByteArray dictionary = hostileDictionary();
    for (int i = 0; i < 1'000'000; ++i)
        dictionary += "Value=" + QByteArray::number(i) + ";a label that takes some memory\n";
    QVERIFY(writeFile(path("large.dcf"), dictionary));
    for (const char* command : { "fields -f csv --values", "export --to ddi", "tree" }) {
        const Outcome outcome =
            runShell("ulimit -v 400000; exec \"$0\" " + QString(command) + " \"$1/large.dcf\"",
                m_folder->path());
        QCOMPARE(outcome.status, 1);
        QCOMPARE(outcome.output, QByteArray());
        QVERIFY2(outcome.errors.startsWith(path("large.dcf").toUtf8()), outcome.errors.constData());
        QVERIFY2(outcome.errors.contains("takes more memory than there is; end other programs"),
            outcome.errors.constData());
    }
}

void tst_Output::unfinishedLeavesTheFileThatWas()
{
    QVERIFY(writeFile(path("result"), "old"));
    const QStringList before = names();
    {
        Output output(path("result"));
        output.add(QByteArray(5'000'000, 'x'));
        output.add("new");
    }
    QCOMPARE(readFile(path("result")), QByteArray("old"));
    QCOMPARE(names(), before);
}

// Small pieces wait and large ones do not, but none overtakes another.
void tst_Output::piecesOfAnySize()
{
    QByteArray expected;
    Output output(path("result"));
    const ByteSink sink = output.sink();
    for (const int size : { 1, 0, 7, 3'000'000, 2, 65'535, 65'536, 65'537, 1, 200'000, 5 }) {
        const QByteArray piece(size, char('a' + expected.size() % 26));
        expected += piece;
        sink(piece);
    }
    QVERIFY(output.finish());
    QVERIFY(readFile(path("result")) == expected);
}

void tst_Output::failureIsKnownAtTheEnd()
{
    Output output(path("missing/result"));
    output.add("lost");
    output.add(QByteArray(1'000'000, 'x'));
    QVERIFY(!output.finish());
    QVERIFY(!QFile::exists(path("missing")));
}

void tst_Output::sameFileByAnotherName()
{
    QVERIFY(writeFile(path("input"), "text"));
    QVERIFY(QFile::link(path("input"), path("link")));
    const QString option = "--report";
    QVERIFY(!Output::checkPath(option, path("./input"), { path("input") }).isNull());
    QVERIFY(!Output::checkPath(option, path("link"), { path("other"), path("input") }).isNull());
    QVERIFY(Output::checkPath(option, path("other"), { path("input") }).isNull());
    QVERIFY(Output::checkPath(option, path("input"), {}).isNull());
}

QTEST_GUILESS_MAIN(tst_Output)
#include "tst_Output.moc"
