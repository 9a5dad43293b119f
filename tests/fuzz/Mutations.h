#pragma once

#include <random>
#include <string>
#include <vector>

namespace orlo::fuzz {

/// Changes texts by chance, but the same texts in the same way each time.
class Mutations
{
public:
    explicit Mutations(std::vector<std::string> seeds) : m_seeds(std::move(seeds)) {}

    /// One of the seeds with one to eight changes.
    std::string next();

private:
    std::size_t below(std::size_t end) { return static_cast<std::size_t>(m_random() % end); }
    void change(std::string& text);
    std::string piece();

    std::vector<std::string> m_seeds;
    std::mt19937_64 m_random{20261121};
};

} // namespace orlo::fuzz
