#include "PermissionWireTest.h"

#include <BaseCommon/PermissionFileHelper.h>

namespace orlo::test {

std::string PermissionWireTest::kept()
{
    return utils::PermissionFileHelper::GetInstance()->GetDatasetTokenFromFile("user-1", "d-1");
}

void PermissionWireTest::hold()
{
    ASSERT_TRUE(utils::PermissionFileHelper::GetInstance()->WriteTokenToFile("user-1", "d-1", "held-token-0"));
}

} // namespace orlo::test
