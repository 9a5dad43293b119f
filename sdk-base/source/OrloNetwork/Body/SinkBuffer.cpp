#include "SinkBuffer.h"

#include "../Engine/Workers.h"

#include <mutex>
#include <utility>
#include <vector>

namespace orlo::http {

namespace {

/// So much is written at a time, and as much comes in meanwhile.
constexpr std::size_t runSize = std::size_t{256} << 10;

} // namespace

struct SinkBuffer::Runs : std::enable_shared_from_this<Runs>
{
    Runs(Write function, Place where) : write(std::move(function)), place(where) {}

    const Write write;

    bool offer(const uint8_t* bytes, std::size_t count, const Wake& wakeSender)
    {
        // A thread that may wait writes by itself.
        if (place == Place::inPlace || !wakeSender) {
            write(bytes, count);
            return true;
        }
        const std::lock_guard lock(mutex);
        if (thrown)
            std::rethrow_exception(thrown);
        if (!hasRoom()) {
            wake = wakeSender;
            return false;
        }
        if (coming.capacity() == 0)
            coming.reserve(runSize + count);
        coming.insert(coming.end(), bytes, bytes + count);
        if (!isWriting && coming.size() >= runSize)
            startWriting();
        return true;
    }

    void flush(Flushed whenFlushed)
    {
        std::unique_lock lock(mutex);
        if (!isWriting && (coming.empty() || thrown)) {
            const std::exception_ptr failure = thrown;
            lock.unlock();
            whenFlushed(failure);
            return;
        }
        flushed = std::move(whenFlushed);
        if (!isWriting)
            startWriting();
    }

private:
    bool hasRoom() const { return thrown || coming.size() < runSize; }

    void startWriting()
    {
        isWriting = true;
        coming.swap(going);
        Workers::instance().run([self = shared_from_this()] { self->writeAll(); });
    }

    /// Until nothing more than a part of a run is there, and all of it when that is wanted.
    void writeAll()
    {
        std::unique_lock lock(mutex);
        while (true) {
            lock.unlock();
            const std::exception_ptr failure = writeRun();
            lock.lock();
            going.clear();
            thrown = thrown ? thrown : failure;
            const bool goesOn = !thrown && (coming.size() >= runSize || (flushed && !coming.empty()));
            if (goesOn)
                coming.swap(going);
            isWriting = goesOn;
            const Wake woken = std::exchange(wake, nullptr);
            const Flushed ended = goesOn ? nullptr : std::exchange(flushed, nullptr);
            const std::exception_ptr end = thrown;
            lock.unlock();
            if (woken)
                woken();
            if (ended)
                ended(end);
            if (!goesOn)
                return;
            lock.lock();
        }
    }

    std::exception_ptr writeRun() noexcept
    {
        try {
            write(going.data(), going.size());
        }
        catch (...) {
            return std::current_exception();
        }
        return {};
    }

    const Place place;
    std::mutex mutex;
    std::vector<uint8_t> coming;
    std::vector<uint8_t> going; ///< of the thread that writes, while one does
    bool isWriting = false;
    std::exception_ptr thrown;
    Wake wake;
    Flushed flushed;
};

SinkBuffer::SinkBuffer(Write write, Place place, Begin begin)
    : streambuf_state_manager(std::ios_base::out), m_begin(std::move(begin)), m_runs(std::make_shared<Runs>(std::move(write), place))
{}

SinkBuffer::~SinkBuffer() = default;

concurrency::streams::ostream SinkBuffer::stream(Write write, Place place, Begin begin)
{
    std::shared_ptr<concurrency::streams::details::basic_streambuf<uint8_t>> buffer =
        std::make_shared<SinkBuffer>(std::move(write), place, std::move(begin));
    return concurrency::streams::ostream(concurrency::streams::streambuf<uint8_t>(buffer));
}

void SinkBuffer::begin(const web::http::http_response& response)
{
    if (m_begin)
        m_begin(response);
}

bool SinkBuffer::offer(const uint8_t* bytes, std::size_t count, const Wake& wake)
{
    return m_runs->offer(bytes, count, wake);
}

void SinkBuffer::flush(Flushed flushed)
{
    m_runs->flush(std::move(flushed));
}

bool SinkBuffer::acquire(uint8_t*& bytes, std::size_t& count)
{
    bytes = nullptr;
    count = 0;
    return false;
}

pplx::task<SinkBuffer::int_type> SinkBuffer::_putc(uint8_t byte)
{
    return _putn(&byte, 1).then([byte](std::size_t) { return static_cast<int_type>(byte); });
}

// Those who write here without the engine expect it to be done, and flush nothing.
pplx::task<std::size_t> SinkBuffer::_putn(const uint8_t* bytes, std::size_t count)
{
    try {
        m_runs->write(bytes, count);
    }
    catch (...) {
        return pplx::task_from_exception<std::size_t>(std::current_exception());
    }
    return pplx::task_from_result(count);
}

pplx::task<bool> SinkBuffer::_sync()
{
    return pplx::task_from_result(true);
}

pplx::task<std::size_t> SinkBuffer::_getn(uint8_t*, std::size_t)
{
    return pplx::task_from_result<std::size_t>(0);
}

pplx::task<SinkBuffer::int_type> SinkBuffer::ended()
{
    return pplx::task_from_result<int_type>(traits::eof());
}

} // namespace orlo::http
