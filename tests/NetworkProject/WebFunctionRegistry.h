#pragma once

#include <BaseCommon/ErrorCode.h>

#include <functional>
#include <iosfwd>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace orlo::test {

/// What a web function makes of the body of an answer with status 200.
enum class Body {
    json,    ///< reads it as JSON, and throws where it is none; JSON of any shape gives a result without an exception
    strict,  ///< as json, and throws where the JSON lacks what the function needs
    told,    ///< fails with a line in the log where it is no JSON, or not what the function needs
    refused, ///< as json, and takes an answer that lacks what the function needs for the service's refusal
    unread   ///< succeeds whatever it is
};

enum class Way {
    plain,
    tellsMessage, ///< the line for a status that is not 200 ends with the platform's words
    tellsWords,   ///< the same, in words of its own
    tellsReason,  ///< a second line tells that the platform's words are no JSON
    framed        ///< a frame of its own catches everything, so that nothing is thrown
};

/// One web function with sample arguments that it accepts.
struct WebFunction
{
    /// As declared. A function with two forms has a row for each.
    std::string name;
    /// The line logged for a status that is not 200, up to the status; empty: none.
    std::wstring failureLine;
    /// Gives whether the function succeeded.
    std::function<bool(ErrorCode&)> call;
    Body body = Body::json;
    Way way = Way::plain;
    /// The key of the address that it goes to.
    std::wstring service = L"project";
};

void PrintTo(const WebFunction& row, std::ostream* out);

/// Every web function that sends one request and waits for the answer, once.
const std::vector<WebFunction>& webFunctions();

namespace detail {

inline bool succeeded(bool result)
{
    return result;
}
inline bool succeeded(const std::string& text)
{
    return !text.empty();
}
inline bool succeeded(const std::wstring& text)
{
    return !text.empty();
}
template <class Result>
bool succeeded(const std::vector<Result>& list)
{
    return !list.empty();
}

} // namespace detail

/// A web function that reads into a record, with the arguments behind the record.
template <class Result, class Out, class... Parameters, class... Arguments, std::enable_if_t<!std::is_const_v<Out>, int> = 0>
std::function<bool(ErrorCode&)> into(Result (*function)(ErrorCode&, Out&, Parameters...), Arguments... arguments)
{
    return [=](ErrorCode& error) {
        Out out{};
        return detail::succeeded(function(error, out, arguments...));
    };
}

/// A web function whose result is all that it gives, with its arguments.
template <class Result, class... Parameters, class... Arguments>
std::function<bool(ErrorCode&)> plain(Result (*function)(ErrorCode&, Parameters...), Arguments... arguments)
{
    return [=](ErrorCode& error) { return detail::succeeded(function(error, arguments...)); };
}

} // namespace orlo::test
