#pragma once

#include "PlatformFixture.h"

#include <map>
#include <string>

namespace orlo::platform::test {

/// The right to send or fetch one file.
struct Authority
{
    std::string remotePath;
    std::string target; ///< The signed address without the platform's own.
};

/// Reads an authority object; `place`: "" for a bare one, "data." for one in an envelope.
Authority readAuthority(const LocalPlatform& platform, const std::string& body, const std::string& place = {});

/// An exchange with a signed address, without a token.
Reply signedGet(const std::string& url, const std::string& target, const httplib::Headers& headers = {});
Reply signedPut(const std::string& url, const std::string& target, const std::string& bytes, const httplib::Headers& headers = {});

std::string gzipped(const std::string& bytes);

/// Some bytes that don't repeat soon and don't pack.
std::string noise(std::size_t size);

class TransferTest : public PlatformTest
{
protected:
    Authority uploadAuthority(const std::string& fileName = "a.bin") const;
    Authority docUploadAuthority(const std::string& folderId, const std::string& fileName = "a.bin") const;
    Authority downloadAuthority(const std::string& remotePath) const;
    /// The target of a file that was seeded.
    std::string seeded(const std::string& bytes);

    Reply fetch(const std::string& target, const httplib::Headers& headers = {}) const
    {
        return signedGet(platform.url(), target, headers);
    }
    Reply send(const std::string& target, const std::string& bytes, const httplib::Headers& headers = {}) const
    {
        return signedPut(platform.url(), target, bytes, headers);
    }
};

} // namespace orlo::platform::test
