#pragma once

#include <BaseCommon/ErrorCode.h>

#include <stdexcept>
#include <string>
#include <vector>

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
    /// explains: for a reader who wants to write such an application: with the source of each chapter and the call behind each line.
    explicit Story(bool explains) : m_explains(explains) {}

    bool explains() const { return m_explains; }

    void title(const std::wstring& text);
    /// source: where the chapter stands, as __FILE__ has it.
    void chapter(const std::wstring& text, const char* source);
    /// call: of the library, without "orlo::", and units that the line doesn't tell; empty where none is behind the line.
    void say(const std::wstring& text, const std::wstring& call = {});
    /// The same for several lines, such as a drawing; the call stands on the first.
    void say(const std::vector<std::wstring>& lines, const std::wstring& call = {});

    /// Ends the session unless the call went well.
    void expect(bool wentWell, const std::wstring& what, const orlo::ErrorCode& error = {});

private:
    const bool m_explains;
    int m_chapter = 0;
};

/// What an ErrorCode means, for a person.
std::wstring inWords(const orlo::ErrorCode& error);

} // namespace session
