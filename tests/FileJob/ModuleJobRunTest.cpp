#include "UploadJobsTest.h"

#include <BaseCommon/IOrloEventManager.h>
#include <OrloProjectManager/FileJob/UploadModuleJobEntity.h>

#include <stdexcept>

namespace orlo::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// The host's event board, while it lives.
class Board : public IOrloEventManager
{
public:
    Board() { Install(this); }
    ~Board() override { Install(nullptr); }

    int Subscribe(int, Listener) override { return 0; }
    bool Unsubscribe(int) override { return false; }
    void PostEvent(int eventType, const std::wstring& value) override
    {
        posted.push_back(std::to_wstring(eventType) + L" " + value);
        if (onPost)
            onPost();
    }

    std::vector<std::wstring> posted;
    std::function<void()> onPost;
};

/// A module manager that does what the test says.
struct ToldModules : IModuleUploads
{
    class Module : public ICollaborationModule
    {
    public:
        std::wstring GetFileKey() const override { return L"key-1"; }
        std::wstring GetUrl() const override { return L"http://store/1"; }
    };

    std::shared_ptr<ICollaborationModule> UploadModule(const std::wstring& spaceType, const std::wstring& spaceTypeParameter,
                                                       const std::wstring& resourceType, const std::wstring& localPath,
                                                       const std::wstring& fileName, const std::wstring& md5, bool gzip,
                                                       ErrorCode& error) override
    {
        calls.push_back(L"upload " + spaceType + L"|" + spaceTypeParameter + L"|" + resourceType + L"|" + fileName + L"|" + md5 +
                        (gzip ? L"|gzip" : L""));
        path = localPath;
        error.Assign(badInputValue, std::make_shared<GenericError>(L"no upload"));
        if (throwsAtUpload)
            throw std::runtime_error("out of paper");
        return isUploaded ? std::make_shared<Module>() : nullptr;
    }
    bool AddModuleToProject(const std::wstring& spaceType, const std::wstring& spaceTypeParameter, const NewModule& module,
                            std::string& resource, ErrorCode& error) override
    {
        calls.push_back(L"add " + spaceType + L"|" + spaceTypeParameter + L"|" + module.resourceType + L"|" + module.categoryId + L"|" +
                        module.applicationType + L"|" + module.fileKey + L"|" + module.url + L"|" + module.name + L"|" + module.md5);
        resource = "r-8&2";
        error.Assign(badInputValue, std::make_shared<GenericError>(L"not added"));
        return isAdded;
    }

    bool isUploaded = true;
    bool isAdded = true;
    bool throwsAtUpload = false;
    std::vector<std::wstring> calls;
    std::wstring path;
};

class WatchedModuleJob : public WatchedJob<UploadModuleJobEntity>
{
public:
    WatchedModuleJob(const std::wstring& copy, const std::wstring& fileName, IModuleUploads* modules)
        : WatchedJob(L"模-1", L"", L"projects", "p-1", L"module", L"c-5", L"zok", copy, fileName), m_modules(modules)
    {}

protected:
    IModuleUploads* moduleManager() const override { return m_modules; }

private:
    IModuleUploads* m_modules;
};

class ModuleJobRun : public UploadJobsTest
{
protected:
    void runModule(bool success, int status, const std::wstring& message, const std::wstring& fileName = L"门")
    {
        WatchedModuleJob tested(copyOf("door.v2.vmd", "bytes"), fileName, &modules);
        run(tested, success, status, message);
        EXPECT_EQ(modules.path, tested.GetLocalFilePath());
    }

    ToldModules modules;
    Board board;
};

TEST_F(ModuleJobRun, uploadsAndPublishesTheModuleWithItsSumAndTellsTheHost)
{
    runModule(true, 200, L"Upload Module success");
    EXPECT_THAT(modules.calls, ElementsAre(L"upload projects|p-1|module|门|4b3a6218bb3e3a7303e8a171a60fcf92",
                                           L"add projects|p-1|module|c-5|zok|key-1|http://store/1|门|4b3a6218bb3e3a7303e8a171a60fcf92"));
    EXPECT_THAT(board.posted, ElementsAre(L"4 module_模-1_r-8&2"));
}

TEST_F(ModuleJobRun, withoutANameTakesThatOfTheFileLessItsExtension)
{
    runModule(true, 200, L"Upload Module success", L"");
    EXPECT_THAT(modules.calls,
                ElementsAre(L"upload projects|p-1|module|door.v2|4b3a6218bb3e3a7303e8a171a60fcf92",
                            L"add projects|p-1|module|c-5|zok|key-1|http://store/1|door.v2|4b3a6218bb3e3a7303e8a171a60fcf92"));
}

TEST_F(ModuleJobRun, withoutAModuleManagerFails)
{
    WatchedModuleJob tested(copyOf("door.vmd", "bytes"), L"门", nullptr);
    run(tested, false, 10010, L"IModuleManager is null");
    EXPECT_EQ(log.lines(), Lines{L"E [ORLOSDK][UploadModuleJobEntity::resumeExcution] IModuleManager is null"});
    EXPECT_THAT(board.posted, IsEmpty());
}

TEST_F(ModuleJobRun, failsWhenTheUploadFails)
{
    modules.isUploaded = false;
    runModule(false, 10011, L"上传文件失败：no upload");
    EXPECT_EQ(modules.calls.size(), 1u);
    EXPECT_THAT(board.posted, IsEmpty());
}

TEST_F(ModuleJobRun, failsWhenTheModuleCannotBePublished)
{
    modules.isAdded = false;
    runModule(false, 10011, L"上传文件失败：not added");
    EXPECT_THAT(board.posted, IsEmpty());
}

TEST_F(ModuleJobRun, anExceptionFailsWithTheErrorAsItStands)
{
    modules.throwsAtUpload = true;
    runModule(false, 10011, L"上传文件失败：no upload");
    EXPECT_THAT(board.posted, IsEmpty());
}

TEST_F(ModuleJobRun, tellsTheHostBeforeItDropsTheRow)
{
    std::size_t rowsThen = 0;
    board.onPost = [&] { rowsThen = rows().size(); };
    runModule(true, 200, L"Upload Module success");
    EXPECT_EQ(rowsThen, 1u);
}

TEST_F(ModuleJobRun, aBoardThatThrowsKeepsNeitherTheRowNorTheCopy)
{
    board.onPost = [] { throw std::runtime_error("board full"); };
    runModule(true, 200, L"Upload Module success");
    EXPECT_EQ(log.lines(), Lines{L"E@orlo::UploadJobEntity::Run the host's event board threw an exception."});
}

TEST_F(ModuleJobRun, withoutABoardEndsAsWell)
{
    IOrloEventManager::Install(nullptr);
    runModule(true, 200, L"Upload Module success");
    EXPECT_THAT(board.posted, IsEmpty());
}

TEST_F(ModuleJobRun, aFileOutsideTheCopiesStays)
{
    const std::wstring mine = localFile("door.vmd", "bytes");
    WatchedModuleJob tested(mine, L"门", &modules);
    EXPECT_TRUE(tested.Run());
    EXPECT_EQ(readFile(localPath("door.vmd")), "bytes");
}

} // namespace
} // namespace orlo::test
