#include <tessel_data/Pipeline.h>

#include <array>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <thread>

namespace tessel {

namespace {

// One that is filled, one that is worked on, and two between them.
constexpr std::size_t BatchCount = 4;

constexpr std::chrono::milliseconds Patience(100); // with input that does not come

// A few batches that go round between two threads.
class BatchQueue : public BatchSink {
public:
    BatchQueue()
    {
        for (DataBatch& batch : m_batches)
            m_free.push_back(&batch);
        m_filling = m_free.front();
        m_free.pop_front();
    }

    DataBatch& batch() override
    {
        return *m_filling;
    }

    bool deliver() override
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_full.push_back(m_filling);
        m_changed.notify_all();
        m_changed.wait(lock, [this] { return m_isStopped || !m_free.empty(); });
        if (m_isStopped)
            return false;
        m_filling = m_free.front();
        m_free.pop_front();
        return true;
    }

    bool goesOn() override
    {
        const std::scoped_lock lock(m_mutex);
        return !m_isStopped;
    }

    // No batch comes any more.
    void end(std::exception_ptr failure)
    {
        const std::scoped_lock lock(m_mutex);
        m_failure = std::move(failure);
        m_hasEnded = true;
        m_changed.notify_all();
    }

    // Waits for the next batch or the end, and asks now and then whether that is still wanted.
    bool wait(const std::function<bool()>& isWanted)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        while (
            !m_changed.wait_for(lock, Patience, [this] { return m_hasEnded || !m_full.empty(); })) {
            lock.unlock();
            if (!isWanted())
                return false;
            lock.lock();
        }
        return true;
    }

    // The next batch; null at the end. After wait().
    DataBatch* next()
    {
        const std::scoped_lock lock(m_mutex);
        if (m_full.empty()) {
            if (m_failure)
                std::rethrow_exception(m_failure);
            return nullptr;
        }
        DataBatch* batch = m_full.front();
        m_full.pop_front();
        return batch;
    }

    void giveBack(DataBatch* batch)
    {
        batch->clear();
        const std::scoped_lock lock(m_mutex);
        m_free.push_back(batch);
        m_changed.notify_all();
    }

    void stop()
    {
        const std::scoped_lock lock(m_mutex);
        m_isStopped = true;
        m_changed.notify_all();
    }

private:
    std::array<DataBatch, BatchCount> m_batches;
    DataBatch* m_filling = nullptr;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<DataBatch*> m_free;
    std::deque<DataBatch*> m_full;
    std::exception_ptr m_failure;
    bool m_hasEnded = false;
    bool m_isStopped = false;
};

// Stops the reader and waits for it, however the consumer ended.
class Reader {
public:
    Reader(DataSource& source, BatchQueue& queue)
        : m_queue(queue)
        , m_thread([&source, &queue] { run(source, queue); })
    {
    }
    ~Reader()
    {
        m_queue.stop();
        m_thread.join();
    }

private:
    Q_DISABLE_COPY(Reader)

    static void run(DataSource& source, BatchQueue& queue) noexcept
    {
        std::exception_ptr failure;
        try {
            source.read(queue);
        } catch (...) {
            failure = std::current_exception();
        }
        queue.end(failure);
    }

    BatchQueue& m_queue;
    std::thread m_thread;
};

// False when progress cancelled.
bool takeAll(BatchQueue& queue, DataConsumer& consumer, qint64 size, const DataProgress& progress)
{
    qint64 done = 0;
    const auto isWanted = [&] { return !progress || progress(done, size); };
    while (queue.wait(isWanted)) {
        DataBatch* batch = queue.next();
        if (!batch)
            return true;
        done = batch->doneBytes;
        if (!isWanted())
            return false;
        consumer.take(*batch);
        queue.giveBack(batch);
    }
    return false;
}

} // namespace

DataConsumer::~DataConsumer() = default;

bool DataConsumer::finishWhile(const DataSource& source, const std::function<bool()>&)
{
    finish(source);
    return true;
}

bool runPipeline(DataSource& source, DataConsumer& consumer, const DataProgress& progress)
{
    BatchQueue queue;
    {
        const Reader reader(source, queue);
        if (!takeAll(queue, consumer, source.size(), progress))
            return false;
    }
    const qint64 size = source.size();
    return consumer.finishWhile(source, [&] { return !progress || progress(size, size); });
}

} // namespace tessel
