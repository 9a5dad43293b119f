#pragma once

#include <memory>
#include <string>
#include <vector>

namespace orlo::test {

/// A platform that knows one listing of folders and no datasets, for trees that are too large for a script: it answers
/// "GET /folder/byproject?projectId=p-1" with the listing, and anything else with an empty array.
class PlainPlatform
{
public:
    explicit PlainPlatform(std::string folders);
    ~PlainPlatform();

    PlainPlatform(const PlainPlatform&) = delete;
    PlainPlatform& operator=(const PlainPlatform&) = delete;

    std::string url() const;
    /// What came, as "GET /path?query", in the order of arrival.
    std::vector<std::string> requests() const;

private:
    class Listener;
    std::unique_ptr<Listener> m_listener;
};

} // namespace orlo::test
