#include "AnswerHead.h"

#include "Failure.h"

#include <BaseCommon/NativeText.h>

#include <algorithm>
#include <string>

namespace orlo::http {

namespace {

constexpr int switchingProtocols = 101;

std::string_view trimmed(std::string_view text)
{
    constexpr std::string_view blanks = " \t\r\n";
    const std::size_t begin = std::min(text.find_first_not_of(blanks), text.size());
    const std::size_t end = text.find_last_not_of(blanks) + 1;
    return text.substr(begin, end - std::min(begin, end));
}

utility::string_t native(std::string_view text)
{
    return utils::toNative(std::string(text));
}

/// "HTTP/1.1 200 OK"
int statusOf(std::string_view line)
{
    const std::size_t blank = std::min(line.find(' '), line.size());
    const std::string_view status = trimmed(line.substr(blank)).substr(0, 3);
    const bool isNumber = status.size() == 3 && std::all_of(status.begin(), status.end(), [](char c) { return c >= '0' && c <= '9'; });
    if (!isNumber)
        throw transportFailure(0, "Invalid HTTP status line");
    return (status[0] - '0') * 100 + (status[1] - '0') * 10 + (status[2] - '0');
}

} // namespace

void AnswerHead::begin(std::string_view line, web::http::http_response& response)
{
    response.headers().clear();
    response.set_status_code(static_cast<web::http::status_code>(statusOf(line)));
    const std::string_view afterVersion = trimmed(line.substr(std::min(line.find(' '), line.size())));
    response.set_reason_phrase(native(trimmed(afterVersion.substr(3))));
}

void AnswerHead::take(std::string_view line, web::http::http_response& response)
{
    if (m_isComplete)
        return;
    m_size += line.size();
    if (m_size > most)
        throw transportFailure(0, "the head of the answer is too large");
    if (line.compare(0, 5, "HTTP/") == 0)
        return begin(line, response);
    const std::string_view text = trimmed(line);
    if (text.empty()) {
        const int status = response.status_code();
        m_isComplete = status >= 200 || status == switchingProtocols;
        return;
    }
    const std::size_t colon = text.find(':');
    if (colon != std::string_view::npos && colon > 0)
        response.headers().add(native(trimmed(text.substr(0, colon))), native(trimmed(text.substr(colon + 1))));
}

} // namespace orlo::http
