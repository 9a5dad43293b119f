#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>

namespace orlo::platform {

/// Whether a signed download tells the sum of its bytes.
enum class Sums {
    untold,
    told, ///< "Content-MD5", unless the answer is packed
    wrong ///< the same of other bytes, as if they had been altered on their way
};

/// How signed addresses behave. Any thread may call.
class Transfers
{
public:
    /// In seconds, of addresses that are handed out from now on; 900 at first. 0 or less: expired as soon as made.
    std::int64_t signedLifetime() const { return m_signedLifetime; }
    void setSignedLifetime(std::int64_t seconds) { m_signedLifetime = seconds; }
    /// Whether signed downloads are packed for clients that accept it. Off at first.
    bool gzipAnswers() const { return m_gzipAnswers; }
    void setGzipAnswers(bool on) { m_gzipAnswers = on; }
    /// Untold at first.
    Sums sums() const { return m_sums; }
    void setSums(Sums sums) { m_sums = sums; }
    /// What a signed PUT answers that isn't one by Arkiv; empty at first.
    std::string plainPutAnswer() const;
    void setPlainPutAnswer(const std::string& body);

private:
    std::atomic<std::int64_t> m_signedLifetime{900};
    std::atomic<bool> m_gzipAnswers{false};
    std::atomic<Sums> m_sums{Sums::untold};
    mutable std::mutex m_mutex;
    std::string m_plainPutAnswer;
};

} // namespace orlo::platform
