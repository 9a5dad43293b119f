#include "Platform.h"

#include "Checksum.h"

#include <rapidjson/document.h>

#include <algorithm>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <utility>
#include <vector>

namespace orlo::bench {

namespace {

/// About 1 KiB, as a dataset with a description has it.
std::string makeDataset()
{
    std::string description;
    while (description.size() < 600)
        description += "Level 1 to 12, east tower; ";
    return R"({"code":10000,"message":"success","data":{"id":"5f0c2a6e-7d5b-4b8e-9a55-0d6f3f1f2a10",)"
           R"("modelingDatasetId":"c7a8f0d2-14a0-4f0a-8d4e-3f9f8a2b7c61","name":"east tower","type":"workunit","description":")" +
           description +
           R"(","ownerId":"user-100023","specialtyId":"specialty-7","teamId":"a1d3c7f0-5b1e-4c26-b0f8-8c1b6a7d9e20",)"
           R"("projectId":"0b9f6e14-2c3d-4e5f-8a7b-6c5d4e3f2a1b"}})";
}

bool beginsWith(const std::string& text, std::string_view head)
{
    return text.compare(0, head.size(), head) == 0;
}

/// The base is this server's own and the names are the benchmark's, so nothing needs escaping.
std::string authority(const std::string& place, const std::string& address)
{
    return R"({"fileOSSPath":")" + place + R"(","fileUrlWithSAS":")" + address + "\"}";
}

Answer batchAuthority(const Request& request)
{
    rapidjson::Document seeds;
    seeds.Parse(request.body.c_str());
    if (seeds.HasParseError() || !seeds.IsArray())
        return {400, {}};
    std::string entries;
    for (const auto& seed : seeds.GetArray()) {
        const std::string name = seed.IsString() ? seed.GetString() : "";
        entries += (entries.empty() ? R"({"datasetFilePath":")" : R"(,{"datasetFilePath":")") + name + R"(","datasetFilePathWithSAS":")" +
                   request.base + "/files/" + name + "\"}";
    }
    return {200, R"({"code":10000,"message":"OK","data":[)" + entries + "]}"};
}

} // namespace

Platform::Platform(std::string dataFolder) : m_folder(std::move(dataFolder))
{}

Answer Platform::answerTo(const Request& request)
{
    static const std::string dataset = makeDataset();
    if (beginsWith(request.path, "/v2/dataSets/")) {
        ++m_smallRequests;
        return {200, dataset};
    }
    if (beginsWith(request.path, "/files/")) {
        const OpenFile* const file = open(request.path.substr(7));
        return {file ? 200 : 404, {}, file};
    }
    if (takesBody(request))
        return {200, "{}"};
    if (beginsWith(request.path, "/file/new?"))
        return {200, authority("bench/upload", request.base + "/store")};
    if (request.path == "/file/read")
        return {200, authority(request.body, request.base + "/files/" + request.body)};
    if (beginsWith(request.path, "/datasets/"))
        return batchAuthority(request);
    return {404, {}};
}

bool Platform::takeBody(Stream& stream, std::string_view begun, std::uint64_t size)
{
    const bool sums = m_sums;
    Checksum sum;
    sum.add(begun.data(), sums ? begun.size() : 0);
    std::vector<char> room(sums ? std::size_t{1} << 20 : 0);
    std::uint64_t left = size - begun.size();
    while (left > 0) {
        const auto wanted = static_cast<std::size_t>(left);
        const std::size_t count = sums ? stream.read(room.data(), std::min(room.size(), wanted)) : stream.discard(wanted);
        if (count == 0)
            return false;
        sum.add(room.data(), sums ? count : 0);
        left -= count;
    }
    m_uploadSize = size;
    m_uploadSum = sum.value();
    return true;
}

Answer Platform::answerToControl(const Request& request)
{
    if (beginsWith(request.path, "/sums/"))
        m_sums = request.path == "/sums/on";
    return {200, std::to_string(m_connections.exchange(0)) + " " + std::to_string(m_smallRequests.exchange(0)) + " " +
                     std::to_string(m_uploadSize.exchange(0)) + " " + std::to_string(m_uploadSum.exchange(0)) + "\n"};
}

const OpenFile* Platform::open(const std::string& name)
{
    const std::lock_guard lock(m_mutex);
    const auto known = m_files.find(name);
    if (known != m_files.end())
        return &known->second;
    const int descriptor = ::open((m_folder + "/" + name).c_str(), O_RDONLY | O_CLOEXEC);
    struct stat facts
    {};
    if (descriptor < 0 || ::fstat(descriptor, &facts) != 0 || facts.st_size == 0)
        return nullptr;
    const auto size = static_cast<std::size_t>(facts.st_size);
    void* const bytes = ::mmap(nullptr, size, PROT_READ, MAP_SHARED | MAP_POPULATE, descriptor, 0);
    if (bytes == MAP_FAILED)
        return nullptr;
    return &m_files.emplace(name, OpenFile{descriptor, {static_cast<const char*>(bytes), size}}).first->second;
}

} // namespace orlo::bench
