#include "PlatformFixture.h"
#include "support/TempFolder.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <gtest/gtest.h>

#include <LocalPlatform/LocalPlatform.h>
#include <fstream>
#include <sstream>

namespace orlo::platform::test {
namespace {

using orlo::test::TempFolder;

int schemaVersion(const std::string& file)
{
    const SQLite::Database database(file);
    SQLite::Statement query(database, "PRAGMA user_version");
    query.executeStep();
    return query.getColumn(0).getInt();
}

TEST(Schema, ItsVersionStandsInTheFile)
{
    const TempFolder folder;
    const std::string data = folder.path("平台").u8string();
    {
        const LocalPlatform platform(Options{data, 0, false});
    }
    EXPECT_EQ(schemaVersion(data + "/platform.db"), 11);
}

TEST(Schema, DataOfTheFirstPlatformIsKeptAndBroughtUpToDate)
{
    const TempFolder folder;
    const std::string data = folder.path("平台").u8string();
    std::filesystem::create_directories(folder.path("平台"));
    std::stringstream schema;
    schema << std::ifstream(ORLO_FIRST_SCHEMA).rdbuf();
    SQLite::Database(data + "/platform.db", SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE).exec(schema.str());
    {
        LocalPlatform platform(Options{data, 0, false});
        platform.start();
        const Caller demo(platform.url(), "demo-token");
        EXPECT_EQ(jsonText(demo.get("/v2/datasets/d1/version/1").body, "data.dataSetSourceFile"), "old.zok");
        platform.change(addFile, "new.zok", "bytes");
        EXPECT_EQ(demo.put("/dataset/d1/version?sourceFile=new.zok", "{}").status, 200);
        EXPECT_EQ(demo.post("/v2/p1/sub_item/0", "{}").status, 200);
    }
    EXPECT_EQ(schemaVersion(data + "/platform.db"), 11);
}

TEST(Schema, DataOfANewerProgramIsLeftAlone)
{
    const TempFolder folder;
    const std::string data = folder.path("平台").u8string();
    const std::string file = data + "/platform.db";
    std::filesystem::create_directories(folder.path("平台"));
    SQLite::Database(file, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE).exec("PRAGMA user_version = 999");
    EXPECT_THROW(LocalPlatform(Options{data, 0, false}), std::runtime_error);
    EXPECT_EQ(schemaVersion(file), 999);
}

} // namespace
} // namespace orlo::platform::test
