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

void Story::chapter(const std::wstring& text)
{
    std::cout << "\n" << ++m_chapter << ". " << toString(text) << std::endl;
}

void Story::say(const std::wstring& text)
{
    std::cout << "   " << toString(text) << std::endl;
}

void Story::expect(bool wentWell, const std::wstring& what, const orlo::ErrorCode& error)
{
    if (!wentWell)
        throw StoryFailed(toString(what + L": " + inWords(error)));
}

} // namespace session
