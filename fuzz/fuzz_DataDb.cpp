// Feeds bytes to the reader of CSPro DB files and to the check over it.
#include <tessel_data/CSProDbSource.h>
#include <tessel_data/Checker.h>
#include <tessel_data/DataError.h>

#include <QTemporaryFile>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace {

void check(const QString& path)
{
    tessel::CSProDbSource source(path);
    tessel::Checker checker(source.dictionary());
    tessel::runPipeline(source, checker);
    if (!checker.report().addsUp)
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    QTemporaryFile file;
    if (!file.open() || file.write(reinterpret_cast<const char*>(data), qint64(size)) < 0)
        return 0;
    file.close();
    try {
        check(file.fileName());
    } catch (const tessel::DataError&) { // what is wrong with the file
    }
    return 0;
}
