#pragma once

#include "OpenFile.h"

#include <cstdint>
#include <filesystem>
#include <string_view>

namespace orlo::platform {

/// A file that is being written under a name of its own. It takes its place when it is whole; otherwise it goes with this object.
class StagedBlob
{
public:
    explicit StagedBlob(std::filesystem::path file);
    ~StagedBlob();
    StagedBlob(const StagedBlob&) = delete;
    StagedBlob& operator=(const StagedBlob&) = delete;

    void append(std::string_view bytes);
    std::int64_t length() const { return m_length; }
    /// What was written so far, for reading.
    OpenFile open() const { return OpenFile(m_file); }
    void moveTo(const std::filesystem::path& target);

private:
    std::filesystem::path m_file;
    Descriptor m_descriptor;
    std::int64_t m_length = 0;
};

} // namespace orlo::platform
