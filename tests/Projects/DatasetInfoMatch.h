#pragma once

#include <OrloProjectManager/Projects/DatasetRecords.h>

#include <gtest/gtest.h>

namespace orlo::test {

/// Nothing of a dataset was read.
inline void expectEmpty(const DatasetInfo& info)
{
    EXPECT_EQ(info.id + info.modelingDatasetId, "");
    EXPECT_EQ(info.name + info.description + info.ownerId + info.specialtyId + info.teamId + info.projectId, L"");
    EXPECT_EQ(static_cast<int>(info.type), 0);
}

} // namespace orlo::test
