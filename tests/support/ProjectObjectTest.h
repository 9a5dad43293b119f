#pragma once

#include "RequestFailures.h"
#include "WireTest.h"

#include <OrloProjectManager/Projects/ICollaborationProject.h>

#include <memory>

namespace orlo::test {

/// The project "p-1", as a host holds it, on a scripted platform.
class ProjectObjectTest : public WireTest
{
protected:
    static std::shared_ptr<ICollaborationProject> projectOf(const std::wstring& id);

    std::shared_ptr<ICollaborationProject> project = projectOf(L"p-1");
};

} // namespace orlo::test
