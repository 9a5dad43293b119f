#pragma once

#include <OrloNetwork/Export.h>

#include <cpprest/astreambuf.h>
#include <cpprest/streams.h>

#include <cstddef>
#include <functional>
#include <memory>

namespace orlo::http {

/// The body of a request that a function gives piece by piece, one ahead of what is being sent, on a thread where it may wait for a disk.
/// What the function throws fails the transfer.
class ORLO_NETWORK_API SourceBuffer : public concurrency::streams::details::streambuf_state_manager<uint8_t>
{
public:
    /// Fills the room as far as it can.   Returns: how much that is, 0 at the end.
    using Read = std::function<std::size_t(uint8_t* room, std::size_t size)>;

    static concurrency::streams::istream stream(Read read);

    explicit SourceBuffer(Read read);
    ~SourceBuffer() override;

    bool can_seek() const override { return false; }
    bool has_size() const override { return false; }
    std::size_t buffer_size(std::ios_base::openmode) const override { return 0; }
    void set_buffer_size(std::size_t, std::ios_base::openmode) override {}
    std::size_t in_avail() const override { return 0; }
    pos_type getpos(std::ios_base::openmode) const override { return nowhere(); }
    pos_type seekpos(pos_type, std::ios_base::openmode) override { return nowhere(); }
    pos_type seekoff(off_type, std::ios_base::seekdir, std::ios_base::openmode) override { return nowhere(); }
    /// Lends what is there.   Returns: false while it is being read; true with a null pointer at the end.
    bool acquire(uint8_t*& bytes, std::size_t& count) override;
    void release(uint8_t* bytes, std::size_t count) override;

protected:
    pplx::task<std::size_t> _getn(uint8_t* room, std::size_t size) override;

    // Nobody reads it but in runs, and nobody writes to it.
    pplx::task<int_type> _bumpc() override { return none(); }
    int_type _sbumpc() override { return traits::requires_async(); }
    pplx::task<int_type> _getc() override { return none(); }
    int_type _sgetc() override { return traits::requires_async(); }
    pplx::task<int_type> _nextc() override { return none(); }
    pplx::task<int_type> _ungetc() override { return none(); }
    std::size_t _scopy(uint8_t*, std::size_t) override { return 0; }
    pplx::task<int_type> _putc(uint8_t) override { return none(); }
    pplx::task<std::size_t> _putn(const uint8_t*, std::size_t) override { return pplx::task_from_result<std::size_t>(0); }
    pplx::task<bool> _sync() override { return pplx::task_from_result(true); }
    uint8_t* _alloc(std::size_t) override { return nullptr; }
    void _commit(std::size_t) override {}

private:
    static pos_type nowhere() { return static_cast<pos_type>(traits::eof()); }
    static pplx::task<int_type> none() { return pplx::task_from_result<int_type>(traits::eof()); }

    struct Pieces;
    const std::shared_ptr<Pieces> m_pieces;
};

} // namespace orlo::http
