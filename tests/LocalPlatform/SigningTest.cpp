#include <gtest/gtest.h>

#include <LocalPlatform/Server/Answer.h>
#include <LocalPlatform/Store/Signing.h>

namespace orlo::platform {
namespace {

// Reckoned with openssl dgst -sha256 -hmac "key" over "GET\n/blobs/a\n1000".
constexpr const char* goodSignature = "6a75684a6c1de404c5678134c5d199979751beaa503e5ff809b9a67aa9042f02";

int statusOf(const Signer& signer, const std::string& method, const std::string& path, const std::string& expires,
             const std::string& signature, std::int64_t now)
{
    try {
        signer.check(method, path, expires, signature, now);
        return 200;
    }
    catch (const Refusal& refusal) {
        return refusal.status();
    }
}

TEST(Signer, SignsMethodPathAndExpiryWithHmacSha256)
{
    EXPECT_EQ(Signer("key").query("GET", "/blobs/a", 1000), std::string("expires=1000&signature=") + goodSignature);
}

TEST(Signer, AcceptsItsOwnSignatureUntilItExpires)
{
    const Signer signer("key");
    EXPECT_EQ(statusOf(signer, "GET", "/blobs/a", "1000", goodSignature, 999), 200);
    EXPECT_EQ(statusOf(signer, "GET", "/blobs/a", "1000", goodSignature, 1000), 403);
}

TEST(Signer, RefusesWhatItDidNotSign)
{
    const Signer signer("key");
    EXPECT_EQ(statusOf(signer, "PUT", "/blobs/a", "1000", goodSignature, 0), 403);
    EXPECT_EQ(statusOf(signer, "GET", "/blobs/b", "1000", goodSignature, 0), 403);
    EXPECT_EQ(statusOf(signer, "GET", "/blobs/a", "1001", goodSignature, 0), 403);
    EXPECT_EQ(statusOf(signer, "GET", "/blobs/a", "1000", "", 0), 403);
    EXPECT_EQ(statusOf(Signer("other"), "GET", "/blobs/a", "1000", goodSignature, 0), 403);
}

} // namespace
} // namespace orlo::platform
