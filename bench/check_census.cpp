// Reads and checks CSPro data, for comparison with a program that knows the columns beforehand.
//
// usage: check_census MODE DICTIONARY DATA...
//
// MODE  parse   read the values and drop them, on one thread
//       serial  check them on the thread that reads
//       check   check them on a second thread
#include <tessel_data/CSProTextSource.h>
#include <tessel_data/Checker.h>

#include <QStringList>

#include <chrono>
#include <cstdio>
#include <exception>

namespace {

class Dropper : public tessel::DataConsumer {
public:
    void take(const tessel::DataBatch&) override
    {
    }
    void finish(const tessel::DataSource&) override
    {
    }
};

// Hands each batch to the consumer at once.
class DirectSink : public tessel::BatchSink {
public:
    explicit DirectSink(tessel::DataConsumer& consumer)
        : m_consumer(consumer)
    {
    }
    tessel::DataBatch& batch() override
    {
        return m_batch;
    }
    bool deliver() override
    {
        m_consumer.take(m_batch);
        m_batch.clear();
        return true;
    }

private:
    tessel::DataConsumer& m_consumer;
    tessel::DataBatch m_batch;
};

void run(const QString& mode, const QString& dictionary, const QStringList& files)
{
    tessel::CSProTextSource source(tessel::DataDictionary::fromFile(dictionary), files);
    tessel::Checker checker(source.dictionary());
    Dropper dropper;
    const auto begin = std::chrono::steady_clock::now();
    if (mode == QLatin1String("check")) {
        tessel::runPipeline(source, checker);
    } else {
        const bool isParse = mode == QLatin1String("parse");
        DirectSink sink(isParse ? static_cast<tessel::DataConsumer&>(dropper) : checker);
        source.read(sink);
    }
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - begin;
    const tessel::SourceCounts counts = source.counts();
    std::printf("%lld lines, %lld rejected, %.3f s, %.2f M lines/s\n",
        static_cast<long long>(counts.lines), static_cast<long long>(counts.rejectedLines),
        time.count(), double(counts.lines) / time.count() / 1e6);
}

} // namespace

int main(int argc, char** argv)
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    if (arguments.size() < 3)
        return std::fprintf(stderr, "usage: check_census MODE DICTIONARY DATA...\n"), 2;
    try {
        run(arguments.at(0), arguments.at(1), arguments.mid(2));
    } catch (const std::exception& error) {
        return std::fprintf(stderr, "%s\n", error.what()), 1;
    }
    return 0;
}
