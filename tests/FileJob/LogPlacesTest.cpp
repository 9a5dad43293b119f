#include "UploadJobsTest.h"

#include <OrloProjectManager/Transfer/BatchDownload.h>
#include <OrloProjectManager/Transfer/FileDownload.h>
#include <OrloProjectManager/Transfer/ICollaborationFileManager.h>

#include <gmock/gmock.h>

namespace orlo::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

/// The line of a log names the place of the call, not that of a constant or of a helper.
class LogPlaces : public UploadJobsTest
{
protected:
    /// The lines of the sources that the positions of the log lead to.
    std::vector<std::string> places() const
    {
        std::vector<std::string> lines;
        for (const LogEntry& entry : log.entries()) {
            if (entry.level == L'@')
                lines.push_back(entry.sourceLine());
        }
        return lines;
    }
};

TEST_F(LogPlaces, ofACopyThatFailsAreThoseOfItsSteps)
{
    std::wstring copy;
    EXPECT_FALSE(CopyFileToTempPath(localFile("a", "b"), "..", L"", copy));
    EXPECT_THAT(places(), ElementsAre(HasSubstr("return failed(ORLO_HERE(function), noFolder);")));
}

TEST_F(LogPlaces, ofASubmissionAreThoseInTheOperation)
{
    EXPECT_FALSE(ICollaborationFileManager::UploadFilesWithDsByJob("p-1", L"f-1", {}, "", -1));
    EXPECT_FALSE(ICollaborationFileManager::UploadFileByJob("p-1", L"f-1", L"/missing"));
    EXPECT_THAT(places(), ElementsAre(HasSubstr("log::errorAt(ORLO_HERE(function), L\"fileList is empty\");"),
                                      HasSubstr("return submit(ORLO_HERE(function), {projectId")));
}

// A second end of a transfer is the one that tells of itself.
TEST_F(LogPlaces, ofADownloadAreThoseOfItsEnds)
{
    const auto outcome = std::make_shared<TransferOutcome>(error);
    const auto download = std::make_shared<DownloadFileHandler>(outcome, L"x");
    const auto context = std::make_shared<OrloCallbackContext>();
    ErrorCode failure;
    download->on_complete(500, L"", std::string("GetFile"), context, failure);
    download->on_complete(500, L"", std::string("GetFile"), context, failure);
    context->propagate = false;
    download->on_complete(500, L"", std::vector<unsigned char>(), "GetFile", context, failure);
    EXPECT_THAT(places(), ElementsAre(HasSubstr("m_outcome->settle({false, status, body}, error, ORLO_HERE(onComplete));"),
                                      HasSubstr("PromiseData(false, status, body), error, ORLO_HERE(onComplete)")));
}

} // namespace
} // namespace orlo::test
