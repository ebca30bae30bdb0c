// Feeds bytes to the reader of data lines and to the check over it. The dictionary has two levels,
// repeats, a subitem, decimals and value sets of each kind.
#include <tessel_data/CSProTextSource.h>
#include <tessel_data/Checker.h>

#include <QTemporaryFile>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace {

const char dictionaryText[] =
    "[Dictionary]\nVersion=CSPro 7.7\nName=D\nRecordTypeStart=2\nRecordTypeLen=1\n\n"
    "[Level]\nName=L1\n\n[IdItems]\n\n[Item]\nName=H\nStart=3\nLen=2\n\n"
    "[Item]\nName=T\nStart=5\nLen=1\nDataType=Alpha\n\n"
    "[Record]\nName=HOUSE\nRecordTypeValue='1'\n\n"
    "[Item]\nName=ROOF\nStart=7\nLen=2\nDecimal=1\nOccurrences=2\n\n"
    "[ValueSet]\nName=V\nValue=0.5:3.0;Low\nValue=9.9;None\nName=MISSING,Special\n\n"
    "[Item]\nName=PART\nStart=8\nLen=1\nItemType=SubItem\n\n"
    "[Item]\nName=KIND\nStart=11\nLen=3\nDataType=Alpha\n\n"
    "[ValueSet]\nName=K\nValue='A  ';A\nValue='   ';None\nName=NOTAPPL,Special\n\n"
    "[Level]\nName=L2\n\n[IdItems]\n\n[Item]\nName=W\nStart=6\nLen=1\n\n"
    "[Record]\nName=WOMAN\nRecordTypeValue='2'\nMaxRecords=2\n\n"
    "[Item]\nName=KIDS\nStart=7\nLen=1\n\n";

const tessel::DataDictionary& dictionary()
{
    static const tessel::DataDictionary read =
        tessel::DataDictionary::fromBytes(dictionaryText, QStringLiteral("dictionary"));
    return read;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    QTemporaryFile file;
    if (!file.open() || file.write(reinterpret_cast<const char*>(data), qint64(size)) < 0)
        return 0;
    file.close();
    tessel::CSProTextSource source(dictionary(), { file.fileName() });
    tessel::Checker checker(source.dictionary());
    tessel::runPipeline(source, checker);
    if (!checker.report().addsUp)
        std::abort();
    return 0;
}
