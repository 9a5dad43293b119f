#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <future>
#include <initializer_list>
#include <limits>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// What the headers of a windowing system leave behind, and another library's idea of a short name.
#define min(a, b) ((a) < (b) ? (a) : (b))
#define max(a, b) ((a) > (b) ? (a) : (b))
#define GetMessage GetMessageW
#define GetObject GetObjectW
#define ERROR 0
#define U(x) x
#define NO_ERROR 0
#define DELETE 0x10000
#define CreateFile CreateFileW
#define interface struct
#define IN
#define OUT

#include <OrloProjectManager/OrloProjectManager.h>

#undef min
#undef max
#undef GetMessage
#undef GetObject
#undef ERROR
#undef U
#undef NO_ERROR
#undef DELETE
#undef CreateFile
#undef interface
#undef IN
#undef OUT

#include <gtest/gtest.h>

namespace {

TEST(Face, canBeIncludedBehindHostileMacrosAndUsed)
{
    ASSERT_NE(orlo::ICollaborationProjectManager::Get(), nullptr);
    EXPECT_EQ(orlo::ICollaborationProjectManager::Get(), orlo::ICollaborationProjectManager::Get());
    orlo::ICollaborationProjectManager::Projects projects;
    EXPECT_FALSE(orlo::ICollaborationProjectManager::Get()->GetProjectByStatus(orlo::ProjectStatus::Unknown, projects));
}

} // namespace
