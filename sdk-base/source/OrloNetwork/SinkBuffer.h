#pragma once

#include <OrloNetwork/Export.h>

#include <cpprest/astreambuf.h>
#include <cpprest/streams.h>

#include <functional>
#include <memory>

namespace orlo::http {

/// Hands every run of bytes that cpprestsdk receives to a function, before the next run is asked for; so a slow
/// receiver slows the sender down instead of filling the memory. What the function throws fails the transfer.
/// It stands in for cpprestsdk's file streams, which crash the process when a write fails.
class ORLO_NETWORK_API SinkBuffer : public concurrency::streams::details::streambuf_state_manager<uint8_t>
{
public:
    using Write = std::function<void(const uint8_t* bytes, size_t count)>;

    static concurrency::streams::ostream stream(Write write);

    explicit SinkBuffer(Write write);
    ~SinkBuffer() override;

    bool can_seek() const override { return false; }
    bool has_size() const override { return false; }
    size_t buffer_size(std::ios_base::openmode) const override { return 0; }
    void set_buffer_size(size_t, std::ios_base::openmode) override {}
    size_t in_avail() const override { return 0; }
    pos_type getpos(std::ios_base::openmode) const override { return nowhere(); }
    pos_type seekpos(pos_type, std::ios_base::openmode) override { return nowhere(); }
    pos_type seekoff(off_type, std::ios_base::seekdir, std::ios_base::openmode) override { return nowhere(); }
    bool acquire(uint8_t*& bytes, size_t& count) override;
    void release(uint8_t*, size_t) override {}

protected:
    pplx::task<int_type> _putc(uint8_t byte) override;
    pplx::task<size_t> _putn(const uint8_t* bytes, size_t count) override;
    pplx::task<bool> _sync() override;
    uint8_t* _alloc(size_t) override { return nullptr; }
    void _commit(size_t) override {}

    // A sink is never read.
    pplx::task<int_type> _bumpc() override { return ended(); }
    int_type _sbumpc() override { return traits::eof(); }
    pplx::task<int_type> _getc() override { return ended(); }
    int_type _sgetc() override { return traits::eof(); }
    pplx::task<int_type> _nextc() override { return ended(); }
    pplx::task<int_type> _ungetc() override { return ended(); }
    pplx::task<size_t> _getn(uint8_t*, size_t) override;
    size_t _scopy(uint8_t*, size_t) override { return 0; }

private:
    static pos_type nowhere() { return static_cast<pos_type>(traits::eof()); }
    static pplx::task<int_type> ended();

    Write m_write;
};

} // namespace orlo::http
