#pragma once

#include <cstddef>
#include <cstdint>

namespace orlo::bench {

/// FNV-1a, which doesn't care in what pieces the bytes come.
class Checksum
{
public:
    void add(const char* bytes, std::size_t count)
    {
        for (std::size_t i = 0; i < count; ++i)
            m_value = (m_value ^ static_cast<unsigned char>(bytes[i])) * 0x100000001b3;
    }
    std::uint64_t value() const { return m_value; }

private:
    std::uint64_t m_value = 0xcbf29ce484222325;
};

} // namespace orlo::bench
