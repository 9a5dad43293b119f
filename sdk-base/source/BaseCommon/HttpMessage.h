#pragma once

#include <string>

namespace orlo::http {

/// What the platform says about a refused request: the "code" and "message" of the body of the answer.
/// Both keep their defaults where the body is no such object.
struct HttpMessage
{
    int code = 0;
    std::wstring message;
};

} // namespace orlo::http
