#include "Story.h"

#include <BaseCommon/Text.h>

#include <iostream>

namespace session {

using orlo::utils::toString;

namespace {

std::wstring kindOf(long long value)
{
    switch (value) {
    case orlo::error::badInput:
        return L"the input was refused, or the answer was unusable";
    case orlo::error::emptyParameter:
        return L"a parameter was empty";
    case orlo::error::exception:
        return L"the platform could not be reached, or an exception was caught";
    case orlo::error::errorStatus:
        return L"the platform answered with an error status";
    default:
        return L"an error";
    }
}

std::wstring detailOf(const orlo::ErrorCode& error)
{
    if (const auto http = std::dynamic_pointer_cast<orlo::HttpError>(error.GetCategory()))
        return L" (" + std::to_wstring(http->GetCode()) + L")";
    return {};
}

} // namespace

std::wstring inWords(const orlo::ErrorCode& error)
{
    if (error.isClear())
        return L"no error";
    return kindOf(error.GetValue()) + detailOf(error) + L", in its own words: " + error.GetErrorMessage();
}

void Story::title(const std::wstring& text)
{
    std::cout << toString(text) << "\n" << std::string(text.size(), '=') << std::endl;
}

void Story::chapter(const std::wstring& text, const char* source)
{
    std::cout << "\n" << ++m_chapter << ". " << toString(text) << std::endl;
    if (m_explains)
        std::cout << "   (" << source << ")" << std::endl;
}

void Story::say(const std::wstring& text, const std::wstring& call)
{
    std::cout << "   " << toString(text);
    if (m_explains && !call.empty())
        std::cout << "  [" << toString(call) << "]";
    std::cout << std::endl;
}

void Story::say(const std::vector<std::wstring>& lines, const std::wstring& call)
{
    for (std::size_t i = 0; i < lines.size(); ++i)
        say(lines[i], i == 0 ? call : L"");
}

void Story::expect(bool wentWell, const std::wstring& what, const orlo::ErrorCode& error)
{
    if (!wentWell)
        throw StoryFailed(toString(what + L": " + inWords(error)));
}

} // namespace session
