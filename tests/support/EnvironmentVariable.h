#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace orlo::test {

/// A variable of the environment as it is to be, for as long as this lives.
class EnvironmentVariable
{
public:
    /// value: null for a variable that isn't set.
    EnvironmentVariable(const char* name, const char* value) : m_name(name)
    {
        if (const char* before = std::getenv(name))
            m_before = before;
        set(value);
    }
    ~EnvironmentVariable() { set(m_before ? m_before->c_str() : nullptr); }
    EnvironmentVariable(const EnvironmentVariable&) = delete;
    EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;

private:
    void set(const char* value) const
    {
        if (value)
            ::setenv(m_name, value, 1);
        else
            ::unsetenv(m_name);
    }

    const char* m_name;
    std::optional<std::string> m_before;
};

} // namespace orlo::test
