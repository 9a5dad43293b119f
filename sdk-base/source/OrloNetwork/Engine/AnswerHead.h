#pragma once

#include <cpprest/http_msg.h>

#include <cstddef>
#include <string_view>

namespace orlo::http {

/// Reads the head of an answer from the lines that libcurl hands over.
class AnswerHead
{
public:
    /// Beyond it a head is taken for an attack on the memory. libcurl's own bounds may be lower: 300 KiB in all and 100 KiB a line in those
    /// versions that have one.
    static constexpr std::size_t most = std::size_t{1} << 20;

    /// Throws http_exception for a status line that is none, and for a head that is too large. Of heads that come before the
    /// last one, as those of a proxy and of a status below 200, nothing stays; lines behind the last one are passed over.
    void take(std::string_view line, web::http::http_response& response);

    bool isComplete() const { return m_isComplete; }
    std::size_t size() const { return m_size; }

private:
    void begin(std::string_view line, web::http::http_response& response);

    std::size_t m_size = 0;
    bool m_isComplete = false;
};

} // namespace orlo::http
