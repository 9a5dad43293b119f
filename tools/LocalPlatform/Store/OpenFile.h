#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

namespace orlo::platform {

/// Owns a file descriptor.
class Descriptor
{
public:
    explicit Descriptor(int number = -1) : m_number(number) {}
    ~Descriptor();
    Descriptor(Descriptor&& other) noexcept;
    Descriptor& operator=(Descriptor&& other) noexcept;

    int number() const { return m_number; }

private:
    int m_number;
};

/// A file open for reading. It stays readable when its name goes to another file, or away.
class OpenFile
{
public:
    /// Refuses a file that isn't there with 404.
    explicit OpenFile(const std::filesystem::path& file);

    int descriptor() const { return m_descriptor.number(); }
    std::int64_t size() const { return m_size; }
    /// Hands the bytes over, piece by piece.
    void read(const std::function<void(std::string_view)>& use) const;

private:
    Descriptor m_descriptor;
    std::int64_t m_size = 0;
};

} // namespace orlo::platform
