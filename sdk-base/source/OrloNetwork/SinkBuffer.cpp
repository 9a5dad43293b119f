#include "SinkBuffer.h"

#include <utility>

namespace orlo::http {

SinkBuffer::SinkBuffer(Write write) : streambuf_state_manager(std::ios_base::out), m_write(std::move(write))
{}

SinkBuffer::~SinkBuffer() = default;

concurrency::streams::ostream SinkBuffer::stream(Write write)
{
    std::shared_ptr<concurrency::streams::details::basic_streambuf<uint8_t>> buffer = std::make_shared<SinkBuffer>(std::move(write));
    return concurrency::streams::ostream(concurrency::streams::streambuf<uint8_t>(buffer));
}

bool SinkBuffer::acquire(uint8_t*& bytes, size_t& count)
{
    bytes = nullptr;
    count = 0;
    return false;
}

pplx::task<SinkBuffer::int_type> SinkBuffer::_putc(uint8_t byte)
{
    return _putn(&byte, 1).then([byte](size_t) { return static_cast<int_type>(byte); });
}

pplx::task<size_t> SinkBuffer::_putn(const uint8_t* bytes, size_t count)
{
    try {
        m_write(bytes, count);
    }
    catch (...) {
        return pplx::task_from_exception<size_t>(std::current_exception());
    }
    return pplx::task_from_result(count);
}

pplx::task<bool> SinkBuffer::_sync()
{
    return pplx::task_from_result(true);
}

pplx::task<size_t> SinkBuffer::_getn(uint8_t*, size_t)
{
    return pplx::task_from_result<size_t>(0);
}

pplx::task<SinkBuffer::int_type> SinkBuffer::ended()
{
    return pplx::task_from_result<int_type>(traits::eof());
}

} // namespace orlo::http
