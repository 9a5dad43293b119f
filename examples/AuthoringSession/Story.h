#pragma once

#include <BaseCommon/ErrorCode.h>

#include <stdexcept>
#include <string>

namespace session {

/// Something in the session went another way than the story has it.
class StoryFailed : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// Tells the session on the standard output, in UTF-8 whatever the locale.
class Story
{
public:
    void title(const std::wstring& text);
    void chapter(const std::wstring& text);
    void say(const std::wstring& text);

    /// Ends the session unless the call went well.
    void expect(bool wentWell, const std::wstring& what, const orlo::ErrorCode& error = {});

private:
    int m_chapter = 0;
};

/// What an ErrorCode means, for a person.
std::wstring inWords(const orlo::ErrorCode& error);

} // namespace session
