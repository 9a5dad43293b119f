#include "BlobStore.h"

#include "Answer.h"

#include <algorithm>
#include <fstream>
#include <iterator>

namespace orlo::platform {

namespace {

bool isPlainId(const std::string& id)
{
    return !id.empty() &&
           std::all_of(id.begin(), id.end(), [](char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || c == '-'; });
}

void writeFile(const std::filesystem::path& file, const std::string& bytes)
{
    const std::filesystem::path fresh = file.string() + ".new";
    {
        std::ofstream out(fresh, std::ios::binary | std::ios::trunc);
        out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        if (!out.flush())
            throw std::runtime_error("can't write " + fresh.string());
    }
    std::filesystem::rename(fresh, file);
}

} // namespace

BlobStore::BlobStore(std::filesystem::path folder) : m_folder(std::move(folder))
{
    if (!m_folder.empty())
        std::filesystem::create_directories(m_folder);
}

std::filesystem::path BlobStore::fileOf(const std::string& id) const
{
    if (!isPlainId(id))
        throw Refusal(404, "no such file");
    return m_folder / id;
}

void BlobStore::put(const std::string& id, const std::string& bytes)
{
    const std::lock_guard lock(m_mutex);
    if (m_folder.empty())
        m_memory[id] = bytes;
    else
        writeFile(fileOf(id), bytes);
}

std::string BlobStore::get(const std::string& id) const
{
    const std::lock_guard lock(m_mutex);
    if (m_folder.empty()) {
        const auto found = m_memory.find(id);
        if (found == m_memory.end())
            throw Refusal(404, "no such file");
        return found->second;
    }
    std::ifstream in(fileOf(id), std::ios::binary);
    if (!in)
        throw Refusal(404, "no such file");
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

void BlobStore::remove(const std::string& id)
{
    const std::lock_guard lock(m_mutex);
    m_memory.erase(id);
    std::error_code ignored;
    if (!m_folder.empty())
        std::filesystem::remove(fileOf(id), ignored);
}

} // namespace orlo::platform
