#include "BodySink.h"

#include "Workers.h"

namespace orlo::http {

namespace {

void whenDone(const pplx::task<std::size_t>& task, std::function<void(const pplx::task<std::size_t>&)> work)
{
    task.then([work = std::move(work)](const pplx::task<std::size_t>& done) { work(done); }, pplx::task_options(Workers::atOnce()));
}

std::exception_ptr failureOf(const pplx::task<std::size_t>& task)
{
    try {
        task.get();
        return {};
    }
    catch (...) {
        return std::current_exception();
    }
}

} // namespace

BodySink::BodySink(const concurrency::streams::ostream& stream)
    : m_own(std::dynamic_pointer_cast<SinkBuffer>(stream.streambuf().get_base())), m_other(stream.streambuf())
{}

void BodySink::begin(const web::http::http_response& response) const
{
    if (m_own)
        m_own->begin(response);
}

bool BodySink::write(const std::uint8_t* bytes, std::size_t count, const Wake& wake)
{
    if (!(m_own ? m_own->offer(bytes, count, wake) : writeToOther(bytes, count, wake)))
        return false;
    m_size += count;
    return true;
}

bool BodySink::writeToOther(const std::uint8_t* bytes, std::size_t count, const Wake& wake)
{
    if (m_isTaking && wake && !m_taken.is_done()) {
        whenDone(m_taken, [wake](const auto& done) {
            failureOf(done); // it is looked at when the transfer goes on
            wake();
        });
        return false;
    }
    if (m_isTaking)
        m_taken.get();
    m_piece.assign(bytes, bytes + count);
    m_taken = m_other.putn_nocopy(m_piece.data(), count);
    m_isTaking = true;
    return true;
}

void BodySink::flush(const Flushed& flushed)
{
    if (m_own)
        return m_own->flush(flushed);
    if (!m_isTaking)
        return flushed({});
    whenDone(m_taken, [flushed](const auto& done) { flushed(failureOf(done)); });
}

} // namespace orlo::http
