#include "SourceBuffer.h"

#include "../Engine/Workers.h"

#include <algorithm>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

namespace orlo::http {

namespace {

constexpr std::size_t pieceSize = std::size_t{1} << 20;

/// The room is made once.
struct Piece
{
    std::vector<uint8_t> bytes;
    std::size_t size = 0;
    std::size_t used = 0;

    bool isUsedUp() const { return used == size; }
};

} // namespace

struct SourceBuffer::Pieces : std::enable_shared_from_this<Pieces>
{
    explicit Pieces(Read function) : read(std::move(function)) {}

    /// Whether there is something, or nothing more will come. Throws what the function threw.
    bool isReady()
    {
        if (current.isUsedUp() && !isReading && !hasEnded)
            turn();
        return !current.isUsedUp() || hasEnded;
    }

    std::size_t copy(uint8_t* room, std::size_t size)
    {
        const std::size_t count = std::min(size, current.size - current.used);
        std::copy_n(current.bytes.data() + current.used, count, room);
        current.used += count;
        return count;
    }

    pplx::task<std::size_t> whenReady(uint8_t* room, std::size_t size)
    {
        waiting = Waiting{room, size, {}};
        return pplx::create_task(waiting->given, pplx::task_options(Workers::atOnce()));
    }

    std::mutex mutex;
    Piece current;

private:
    struct Waiting
    {
        uint8_t* room;
        std::size_t size;
        pplx::task_completion_event<std::size_t> given;
    };

    /// To the piece that was read meanwhile, and on to the next one.
    void turn()
    {
        if (thrown)
            std::rethrow_exception(thrown);
        std::swap(current, next);
        hasEnded = hasBegun && current.isUsedUp();
        if (hasEnded)
            return;
        isReading = true;
        hasBegun = true;
        Workers::instance().run([self = shared_from_this()] { self->readPiece(); });
    }

    void readPiece()
    {
        std::exception_ptr failure;
        Piece piece;
        {
            const std::lock_guard lock(mutex);
            std::swap(piece, next);
        }
        try {
            piece.bytes.resize(pieceSize);
            piece.used = 0;
            piece.size = read(piece.bytes.data(), piece.bytes.size());
        }
        catch (...) {
            failure = std::current_exception();
        }
        std::unique_lock lock(mutex);
        next = std::move(piece);
        thrown = failure;
        isReading = false;
        if (waiting)
            answer(lock);
    }

    void answer(std::unique_lock<std::mutex>& lock)
    {
        const Waiting asker = *std::exchange(waiting, std::nullopt);
        try {
            isReady();
            const std::size_t count = copy(asker.room, asker.size);
            lock.unlock();
            asker.given.set(count);
        }
        catch (...) {
            lock.unlock();
            asker.given.set_exception(std::current_exception());
        }
    }

    const Read read;
    Piece next; ///< of the thread that reads, while one does
    std::exception_ptr thrown;
    std::optional<Waiting> waiting;
    bool isReading = false;
    bool hasBegun = false;
    bool hasEnded = false;
};

SourceBuffer::SourceBuffer(Read read) : streambuf_state_manager(std::ios_base::in), m_pieces(std::make_shared<Pieces>(std::move(read)))
{}

SourceBuffer::~SourceBuffer() = default;

concurrency::streams::istream SourceBuffer::stream(Read read)
{
    std::shared_ptr<concurrency::streams::details::basic_streambuf<uint8_t>> buffer = std::make_shared<SourceBuffer>(std::move(read));
    return concurrency::streams::istream(concurrency::streams::streambuf<uint8_t>(buffer));
}

bool SourceBuffer::acquire(uint8_t*& bytes, std::size_t& count)
{
    bytes = nullptr;
    count = 0;
    const std::lock_guard lock(m_pieces->mutex);
    try {
        if (!m_pieces->isReady())
            return false;
    }
    catch (...) {
        return false; // the one who asks for it hears it
    }
    Piece& current = m_pieces->current;
    count = current.size - current.used;
    bytes = count > 0 ? current.bytes.data() + current.used : nullptr;
    return true;
}

void SourceBuffer::release(uint8_t*, std::size_t count)
{
    const std::lock_guard lock(m_pieces->mutex);
    m_pieces->current.used += count;
}

pplx::task<std::size_t> SourceBuffer::_getn(uint8_t* room, std::size_t size)
{
    const std::lock_guard lock(m_pieces->mutex);
    try {
        if (!m_pieces->isReady())
            return m_pieces->whenReady(room, size);
        return pplx::task_from_result(m_pieces->copy(room, size));
    }
    catch (...) {
        return pplx::task_from_exception<std::size_t>(std::current_exception());
    }
}

} // namespace orlo::http
