#include "ReceivedFile.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/NativeText.h>
#include <BaseCommon/Platform.h>
#include <BaseCommon/Text.h>
#include <OrloCommon/OrloConfigManager.h>
#include <OrloNetwork/WebRequest.h>

#include <algorithm>
#include <filesystem>

namespace orlo {

namespace {

constexpr std::size_t largestHead = std::size_t{1} << 20;

bool saysPacked(const web::http::http_response& response)
{
    utility::string_t encoding;
    response.headers().match(web::http::header_names::content_encoding, encoding);
    const std::wstring name = utils::LowerString(utils::fromNative(encoding));
    return name == L"gzip" || name == L"x-gzip" || name == L"deflate";
}

/// What packed bytes may become: in memory a part of it, on a disk what is free there and the host allows.
unsigned long long unpackedLimit(const std::wstring& place)
{
    if (place.empty())
        return utils::memoryLimit() / 8;
    std::error_code failed;
    const auto space = std::filesystem::space(utils::makePath(place).parent_path(), failed);
    const unsigned long long allowed = OrloConfigManager::Get()->snapshot()->largestUnpackedFile;
    return failed ? allowed : std::min<unsigned long long>(allowed, space.available);
}

void append(std::vector<unsigned char>& received, const unsigned char* bytes, std::size_t count)
{
    if (received.capacity() - received.size() < count) {
        received.reserve(std::max(received.size() + count, 2 * received.capacity()));
        utils::expectFilling(received.data() + received.size(), received.capacity() - received.size());
    }
    received.insert(received.end(), bytes, bytes + count);
}

} // namespace

ReceivedFile::ReceivedFile(std::wstring place) : m_place(std::move(place))
{}

void ReceivedFile::begin(const web::http::http_response& response)
{
    m_isWanted = response.status_code() == web::http::status_codes::OK;
    m_isPacked = saysPacked(response);
}

void ReceivedFile::receive(const unsigned char* bytes, std::size_t count)
{
    const std::lock_guard lock(m_mutex);
    if (m_isDiscarded)
        return;
    if (!m_isPacked || !m_isWanted)
        return keep(bytes, count);
    if (!m_inflater)
        m_inflater.emplace(unpackedLimit(m_place));
    m_inflater->feed(bytes, count, [this](const unsigned char* unpacked, std::size_t size) { keep(unpacked, size); });
}

void ReceivedFile::end()
{
    if (m_inflater)
        m_inflater->end();
    if (!m_isPacked || m_isWanted || m_head.empty())
        return;
    try {
        m_head = http::inflateAll(m_head, OrloWebService::largestErrorBody);
    }
    catch (const std::exception&) { // the words of an error that can't be unpacked stay as they came: its status counts for more
    }
}

void ReceivedFile::keep(const unsigned char* bytes, std::size_t count)
{
    if (m_place.empty() && m_isWanted)
        return append(m_head, bytes, count);
    const std::size_t toHead = std::min(count, largestHead - std::min(largestHead, m_head.size()));
    const bool begins = m_isWanted && !m_isLarge && toHead < count;
    if (begins) {
        m_isLarge = true;
        m_temporaryName = utils::halfMadeNameBeside(m_place);
        m_file.emplace(m_temporaryName);
        write(m_head.data(), m_head.size());
    }
    append(m_head, bytes, toHead);
    if (m_isLarge)
        write(bytes, count);
}

void ReceivedFile::write(const unsigned char* bytes, std::size_t count)
{
    try {
        if (m_file)
            m_file->write(bytes, count);
    }
    catch (const std::exception&) {
        m_file.reset();
    }
}

void ReceivedFile::discard() noexcept
{
    const std::lock_guard lock(m_mutex);
    m_isDiscarded = true;
    m_file.reset();
}

bool ReceivedFile::moveToPlace()
{
    if (!m_file)
        return false;
    try {
        m_file->close();
    }
    catch (const std::exception&) {
        m_file.reset();
        return false;
    }
    const bool isThere = utils::flushFile(m_temporaryName) && utils::renameOver(m_temporaryName, m_place);
    if (isThere)
        m_file->keep();
    m_file.reset();
    return isThere;
}

} // namespace orlo
