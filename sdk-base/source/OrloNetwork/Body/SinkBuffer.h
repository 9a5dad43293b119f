#pragma once

#include <OrloNetwork/Export.h>

#include <cpprest/astreambuf.h>
#include <cpprest/http_msg.h>
#include <cpprest/streams.h>

#include <cstddef>
#include <exception>
#include <functional>
#include <memory>

namespace orlo::http {

/// Hands the bytes that a transfer receives to a function, one run at a time and before much more is asked for; so a slow
/// receiver slows the sender down instead of filling the memory. What the function throws fails the transfer.
/// It stands in for cpprestsdk's file streams, which crash the process when a write fails.
class ORLO_NETWORK_API SinkBuffer : public concurrency::streams::details::streambuf_state_manager<uint8_t>
{
public:
    using Write = std::function<void(const uint8_t* bytes, std::size_t count)>;
    using Wake = std::function<void()>;
    using Flushed = std::function<void(const std::exception_ptr&)>;

    /// Where the function is called. It may wait for a disk or a lock `apart`, on a thread for that; `inPlace`, on the thread that
    /// carries the bytes, it must not, unless that is the caller's own.
    enum class Place { apart, inPlace };

    /// Hears the head of the answer before any of its body, and waits for nothing.
    using Begin = std::function<void(const web::http::http_response& response)>;

    static concurrency::streams::ostream stream(Write write, Place place = Place::apart, Begin begin = nullptr);

    SinkBuffer(Write write, Place place, Begin begin);
    ~SinkBuffer() override;

    void begin(const web::http::http_response& response);
    /// Takes a run of bytes, which may go when this returns. With a null `wake` the function is called at once, on a thread that may wait.
    /// All of a body comes in one of the two ways.
    /// Returns: false if there is no room; `wake` is called, on any thread, when there is. Throws what the function threw.
    bool offer(const uint8_t* bytes, std::size_t count, const Wake& wake);
    /// Calls back when the function has had all, at once or on the thread where it had the last of them.
    void flush(Flushed flushed);

    bool can_seek() const override { return false; }
    bool has_size() const override { return false; }
    std::size_t buffer_size(std::ios_base::openmode) const override { return 0; }
    void set_buffer_size(std::size_t, std::ios_base::openmode) override {}
    std::size_t in_avail() const override { return 0; }
    pos_type getpos(std::ios_base::openmode) const override { return nowhere(); }
    pos_type seekpos(pos_type, std::ios_base::openmode) override { return nowhere(); }
    pos_type seekoff(off_type, std::ios_base::seekdir, std::ios_base::openmode) override { return nowhere(); }
    bool acquire(uint8_t*& bytes, std::size_t& count) override;
    void release(uint8_t*, std::size_t) override {}

protected:
    pplx::task<int_type> _putc(uint8_t byte) override;
    pplx::task<std::size_t> _putn(const uint8_t* bytes, std::size_t count) override;
    pplx::task<bool> _sync() override;
    uint8_t* _alloc(std::size_t) override { return nullptr; }
    void _commit(std::size_t) override {}

    // A sink is never read.
    pplx::task<int_type> _bumpc() override { return ended(); }
    int_type _sbumpc() override { return traits::eof(); }
    pplx::task<int_type> _getc() override { return ended(); }
    int_type _sgetc() override { return traits::eof(); }
    pplx::task<int_type> _nextc() override { return ended(); }
    pplx::task<int_type> _ungetc() override { return ended(); }
    pplx::task<std::size_t> _getn(uint8_t*, std::size_t) override;
    std::size_t _scopy(uint8_t*, std::size_t) override { return 0; }

private:
    static pos_type nowhere() { return static_cast<pos_type>(traits::eof()); }
    static pplx::task<int_type> ended();

    const Begin m_begin;
    struct Runs;
    const std::shared_ptr<Runs> m_runs;
};

} // namespace orlo::http
