#include <tessel_data/CSProTextSource.h>
#include <tessel_data/DataError.h>
#include <tessel_data/DatabaseBuilder.h>
#include <tessel_data/SqliteTarget.h>

#include <QCoreApplication>
#include <QTextStream>

using namespace tessel;

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList names = QCoreApplication::arguments().mid(1); // dictionary, data, database
    QTextStream out(stdout);
    try {
        CSProTextSource source(DataDictionary::fromFile(names.value(0)), { names.value(1) });
        SqliteTarget target(names.value(2), SqliteTarget::Existing::Replace);
        BuildReport report;
        const auto progress = [](qint64 done, qint64 size) {
            QTextStream(stderr) << done << " of " << size << " bytes\n";
            return true; // false: cancel, and leave nothing behind
        };
        if (buildDatabase(source, target, BuildOptions(), report, progress))
            out << report.cases << " cases, " << report.problems << " problems\n";
    } catch (const DataError& error) {
        out << error.file << ' ' << error.text << '\n';
        return 1;
    }
    return 0;
}
