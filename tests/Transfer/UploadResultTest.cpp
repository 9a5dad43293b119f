#include <OrloProjectManager/Transfer/FileUpload.h>

#include <gtest/gtest.h>

namespace orlo {
namespace {

TEST(UploadResultTest, isTheBarePathForAnAnswerThatTellsNothing)
{
    for (const wchar_t* answer : {L"", L"null", L"7", L"text", L"{", L"[]", L"{}", LR"({"fileId":"f"})", LR"({"data":null})",
                                  LR"({"data":"f"})", LR"({"data":[1]})", LR"([{"data":{}}])"})
        EXPECT_EQ(uploadResult(L"a/b 文.dwg", answer), L"a/b 文.dwg");
}

TEST(UploadResultTest, isJsonWithThePathAloneForDataThatTellsNothing)
{
    EXPECT_EQ(uploadResult(L"a/b", LR"({"data":{}})"), LR"({"remoteFilePath":"a/b"})");
    EXPECT_EQ(uploadResult(L"", LR"({"data":{"x":1}})"), LR"({"remoteFilePath":""})");
}

TEST(UploadResultTest, holdsWhatDataTellsInAFixedOrder)
{
    EXPECT_EQ(uploadResult(L"文/b", LR"({"data":{"length":5000000000,"versionIndex":3,"fileId":"f-1","more":true}})"),
              LR"({"remoteFilePath":"文/b","fileId":"f-1","versionIndex":3,"length":5000000000})");
}

TEST(UploadResultTest, leavesOutWhatIsOfAnotherType)
{
    EXPECT_EQ(uploadResult(L"p", LR"({"data":{"fileId":7,"versionIndex":"3","length":1.5}})"), LR"({"remoteFilePath":"p"})");
    EXPECT_EQ(uploadResult(L"p", LR"({"data":{"fileId":"f","versionIndex":null,"length":-1}})"),
              LR"({"remoteFilePath":"p","fileId":"f","length":-1})");
}

TEST(UploadResultTest, escapesThePathAsJson)
{
    EXPECT_EQ(uploadResult(L"a\"\\b", LR"({"data":{}})"), LR"({"remoteFilePath":"a\"\\b"})");
}

} // namespace
} // namespace orlo
