// Imports bytes as a lookup file and compares the outcome with that of the plain way, one line
// after the other.
#include "../tests/LineByLineLookup.h"

#include <model_Tessel/Lookup.h>

#include <QTemporaryFile>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace {

void expect(bool holds)
{
    if (!holds)
        std::abort();
}

bool isSame(const TOxLookup& lookup, const LineByLineLookup& plain)
{
    const auto isSameRecord = [](const auto& a, const auto& b) {
        return a.first == b.first && a.second->value == b.second;
    };
    return std::equal(lookup.values.begin(), lookup.values.end(), plain.values.begin(),
               plain.values.end(), isSameRecord)
        && lookup.key == plain.key && lookup.value == plain.value && lookup.line == plain.line
        && lookup.lineNumber == plain.lineNumber && lookup.position == plain.position
        && lookup.errorCount == plain.errorCount
        && lookup.limitNoticeIssued == plain.limitNoticeIssued;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size == 0)
        return 0;
    // The first byte chooses separator, checks and limit, so that one corpus serves all.
    LineByLineLookup plain;
    plain.separator = data[0] % 6;
    plain.consistency = data[0] / 8 % 4;
    plain.maxMessages = data[0] / 32;
    QTemporaryFile file;
    if (!file.open() || file.write(reinterpret_cast<const char*>(data + 1), qint64(size - 1)) < 0)
        return 0;
    file.close();

    TOxLookup lookup;
    lookup.setFfileName(file.fileName());
    lookup.setSeparator(plain.separator);
    lookup.setTextCodec("UTF-8");
    lookup.maxMessages = plain.maxMessages;
    MsgText.clear();
    std::map<QString, int*> frequencies;
    QStringList messages;
    expect(lookup.consistencyCheck(econsistencyCheck(plain.consistency), frequencies, &messages));
    plain.import(file.fileName(), "UTF-8");
    expect(isSame(lookup, plain));
    expect(messages == plain.messages && MsgText == plain.lastMessage);
    expect(frequencies.size() == plain.frequencies.size());

    expect(lookup.readLookup());
    for (const auto& record : lookup.values)
        delete record.second;
    for (const auto& frequency : frequencies)
        delete frequency.second;
    return 0;
}
