#include "PermissionFileHelper.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/LocalFolders.h>
#include <BaseCommon/NeverDestroyed.h>
#include <BaseCommon/Platform.h>
#include <BaseCommon/Text.h>
#include <BaseCommon/TokenText.h>

namespace orlo::utils {

namespace {

constexpr unsigned lockMilliseconds = 5000;

std::wstring fileIn(const std::wstring& folder, const wchar_t* name)
{
    return FilePath::Combine(folder, name);
}
std::wstring tokenFile(const std::wstring& folder)
{
    return fileIn(folder, L"DatasetTokens.json");
}
std::wstring lockFile(const std::wstring& folder)
{
    return fileIn(folder, L"DatasetTokens.lock");
}
std::wstring brokenFile(const std::wstring& folder)
{
    return fileIn(folder, L"DatasetTokens.broken");
}

// Reads the file; none is as good as an empty one. A broken one is moved away, which only the holder of the lock may do.
// False if there is a file that must not be written over.
bool load(const std::wstring& folder, bool isLocked, Tokens& tokens)
{
    const std::wstring path = tokenFile(folder);
    std::string text;
    if (!readWholeFile(path, text))
        return !hasFile(path);
    return parseTokens(text, tokens) || (isLocked && moveFile(path, brokenFile(folder)));
}

bool save(const std::wstring& folder, const Tokens& tokens)
{
    removeHalfMadeFiles(folder);
    return writeFileAtomically(tokenFile(folder), textOf(tokens), FileAccess::ownerOnly);
}

} // namespace

PermissionFileHelper* PermissionFileHelper::GetInstance()
{
    static auto& helper = utils::neverDestroyed(new PermissionFileHelper);
    return &helper;
}

std::wstring PermissionFileHelper::TokenFolder()
{
    return FilePath::Combine(getLocalAppDataPath(), toNativeSeparators(L"Veltrin\\PermissionToken"));
}

std::string PermissionFileHelper::GetDatasetTokenFromFile(const std::string& userId, const std::string& datasetId)
{
    const std::lock_guard guard(m_mutex);
    const std::wstring folder = TokenFolder();
    if (!hasFile(tokenFile(folder)))
        return {};
    FileLock lock;
    Tokens tokens;
    load(folder, lock.acquire(lockFile(folder), lockMilliseconds), tokens);
    const auto found = tokens.find({userId, datasetId});
    return found == tokens.end() ? std::string() : found->second;
}

bool PermissionFileHelper::WriteTokenToFile(const std::string& userId, const std::string& datasetId, const std::string& token)
{
    // What isn't UTF-8 would come back from the file as something else.
    if (token.empty() || !isValidUtf8(userId) || !isValidUtf8(datasetId) || !isValidUtf8(token))
        return false;
    const std::lock_guard guard(m_mutex);
    const std::wstring folder = TokenFolder();
    FileLock lock;
    Tokens tokens;
    if (!createDirectoryRecursively(folder) || !lock.acquire(lockFile(folder), lockMilliseconds) || !load(folder, true, tokens))
        return false;
    tokens[{userId, datasetId}] = token;
    return save(folder, tokens);
}

bool PermissionFileHelper::ReleasePermission(const std::string& userId, const std::string& datasetId)
{
    const std::lock_guard guard(m_mutex);
    const std::wstring folder = TokenFolder();
    FileLock lock;
    Tokens tokens;
    if (!hasFile(tokenFile(folder)) || !lock.acquire(lockFile(folder), lockMilliseconds) || !load(folder, true, tokens))
        return false;
    return tokens.erase({userId, datasetId}) == 1 && save(folder, tokens);
}

} // namespace orlo::utils
