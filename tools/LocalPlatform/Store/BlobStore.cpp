#include "BlobStore.h"

#include "../Server/Answer.h"
#include "Ids.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <system_error>

namespace orlo::platform {

namespace {

constexpr const char* stagedSuffix = ".new";

bool isPlainId(const std::string& id)
{
    return !id.empty() &&
           std::all_of(id.begin(), id.end(), [](char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || c == '-'; });
}

std::filesystem::path temporaryFolder()
{
    std::string name = (std::filesystem::temp_directory_path() / "orlo-local-platform-XXXXXX").string();
    if (!::mkdtemp(name.data()))
        throw std::system_error(errno, std::generic_category(), "can't make a temporary folder");
    return name;
}

/// What a killed platform was writing.
void removeStaged(const std::filesystem::path& folder)
{
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.path().extension() == stagedSuffix)
            std::filesystem::remove(entry.path());
    }
}

} // namespace

BlobStore::BlobStore(const std::filesystem::path& folder) : m_temporary(folder.empty()), m_folder(m_temporary ? temporaryFolder() : folder)
{
    std::filesystem::create_directories(m_folder);
    removeStaged(m_folder);
}

BlobStore::~BlobStore()
{
    std::error_code ignored;
    if (m_temporary)
        std::filesystem::remove_all(m_folder, ignored);
}

std::filesystem::path BlobStore::fileOf(const std::string& id) const
{
    if (!isPlainId(id))
        throw Refusal(404, "no such file");
    return m_folder / id;
}

std::unique_ptr<StagedBlob> BlobStore::stage() const
{
    return std::make_unique<StagedBlob>(m_folder / (newId() + stagedSuffix));
}

void BlobStore::keep(StagedBlob& staged, const std::string& id) const
{
    staged.moveTo(fileOf(id));
}

void BlobStore::put(const std::string& id, const std::string& bytes) const
{
    const auto staged = stage();
    staged->append(bytes);
    keep(*staged, id);
}

OpenFile BlobStore::open(const std::string& id) const
{
    return OpenFile(fileOf(id));
}

std::string BlobStore::get(const std::string& id) const
{
    const OpenFile file = open(id);
    std::string bytes;
    bytes.reserve(static_cast<std::size_t>(file.size()));
    file.read([&](std::string_view piece) { bytes.append(piece); });
    return bytes;
}

void BlobStore::remove(const std::string& id) const
{
    std::error_code ignored;
    std::filesystem::remove(fileOf(id), ignored);
}

} // namespace orlo::platform
