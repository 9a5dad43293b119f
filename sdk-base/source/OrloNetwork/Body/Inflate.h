#pragma once

#include <OrloNetwork/Export.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

namespace orlo::http {

/// Inflates a gzip or zlib stream, all members of it. cpprestsdk's own switch for this can lose the tail of a body without a
/// word, and has no bound. Each throws std::runtime_error for a stream that is broken, cut short, or larger than `limit` inflated.
ORLO_NETWORK_API std::vector<unsigned char> inflateAll(const std::vector<unsigned char>& compressed, std::size_t limit);

/// The same piece by piece.
class ORLO_NETWORK_API Inflater
{
public:
    using Out = std::function<void(const unsigned char* bytes, std::size_t count)>;

    explicit Inflater(unsigned long long limit);
    ~Inflater();

    Inflater(const Inflater&) = delete;
    Inflater& operator=(const Inflater&) = delete;

    /// Hands on what comes of a piece.
    void feed(const unsigned char* bytes, std::size_t count, const Out& out);
    /// To be called behind the last piece.
    void end() const;

private:
    struct State;
    const std::unique_ptr<State> m_state;
};

} // namespace orlo::http
