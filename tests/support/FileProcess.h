#pragma once

#include "ChildProcess.h"
#include "TempFolder.h"

#include <filesystem>

namespace orlo::test {

/// A process that works on files at a local root, as FileHost.cpp says.
class FileProcess : public ChildProcess
{
public:
    explicit FileProcess(const TempFolder& root);
};

/// One that others know to live.
class LivingProcess : public FileProcess
{
public:
    explicit LivingProcess(const TempFolder& root);
};

/// Writes a file over and over until its time is later than that of all that was written before.   Returns: that time.
std::filesystem::file_time_type writtenNow(const std::filesystem::path& path);

} // namespace orlo::test
