#include "ProjectObjectTest.h"

#include <OrloProjectManager/Projects/Project.h>

namespace orlo::test {

std::shared_ptr<ICollaborationProject> ProjectObjectTest::projectOf(const std::wstring& id)
{
    return std::make_shared<Project>(id, L"示例", L"2024-03-01T08:00:00Z", L"d", ProjectStatus::Suspended, ProjectGridType::TypeTwo,
                                     5000000000);
}

} // namespace orlo::test
