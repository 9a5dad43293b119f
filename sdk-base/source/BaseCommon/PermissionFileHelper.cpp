#include "PermissionFileHelper.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/LocalFolders.h>
#include <BaseCommon/NeverDestroyed.h>
#include <BaseCommon/Platform.h>
#include <BaseCommon/Text.h>
#include <BaseCommon/TokenText.h>

#include <optional>

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

} // namespace

/// The file, and what it held when this process last read or wrote it.
class PermissionFileHelper::File
{
public:
    /// None is as good as an empty one. A broken one is moved away, which only the holder of the lock may do.
    /// Returns: false if there is a file that must not be written over.
    bool load(const std::wstring& folder, bool isLocked)
    {
        const std::wstring path = tokenFile(folder);
        const std::optional<State> state = stateOf(path);
        if (state && state == m_known)
            return true;
        m_known.reset();
        m_text = TokenText();
        std::string text;
        if (!readWholeFile(path, text))
            return !hasFile(path);
        Tokens tokens;
        if (!parseTokens(text, tokens))
            return isLocked && moveFile(path, brokenFile(folder));
        m_text = TokenText(tokens);
        if (isLocked)
            m_known = state;
        return true;
    }

    const TokenText& text() const { return m_text; }
    /// What is changed is known again when it has been saved.
    TokenText& change()
    {
        m_known.reset();
        return m_text;
    }

    bool save(const std::wstring& folder)
    {
        removeHalfMadeFiles(folder);
        const std::wstring path = tokenFile(folder);
        const std::string revision = toString(generateGuid());
        if (revision.empty() || !writeFileAtomically(path, m_text.wholeText(revision), FileAccess::ownerOnly))
            return false;
        m_known = stateOf(path);
        return true;
    }

private:
    struct State
    {
        bool operator==(const State& other) const { return path == other.path && version == other.version && head == other.head; }

        std::wstring path;
        OpenFile::Version version;
        std::string head; ///< with the revision, of which whoever writes the file makes a new one
    };

    /// None for a file without a revision.
    static std::optional<State> stateOf(const std::wstring& path)
    {
        static constexpr std::size_t guidSize = 36;
        static const std::string& pattern = neverDestroyed(new const std::string(TokenText::headOf(std::string(guidSize, '.'))));
        State state{path, {}, std::string(pattern.size(), '\0')};
        OpenFile file;
        std::size_t got = 0;
        if (!file.open(path) || !file.getVersion(state.version) || !file.read(0, state.head.data(), state.head.size(), got) ||
            TokenText::headOf(state.head.substr(pattern.find('.'), guidSize)) != state.head)
            return std::nullopt;
        return state;
    }

    TokenText m_text;
    std::optional<State> m_known;
};

PermissionFileHelper::PermissionFileHelper() : m_file(std::make_unique<File>())
{}

PermissionFileHelper::~PermissionFileHelper() = default;

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
    m_file->load(folder, lock.acquire(lockFile(folder), lockMilliseconds));
    return m_file->text().find(userId, datasetId);
}

bool PermissionFileHelper::WriteTokenToFile(const std::string& userId, const std::string& datasetId, const std::string& token)
{
    // What isn't UTF-8 would come back from the file as something else.
    if (token.empty() || !isValidUtf8(userId) || !isValidUtf8(datasetId) || !isValidUtf8(token))
        return false;
    const std::lock_guard guard(m_mutex);
    const std::wstring folder = TokenFolder();
    FileLock lock;
    if (!createDirectoryRecursively(folder) || !lock.acquire(lockFile(folder), lockMilliseconds) || !m_file->load(folder, true))
        return false;
    m_file->change().put(userId, datasetId, token);
    return m_file->save(folder);
}

bool PermissionFileHelper::ReleasePermission(const std::string& userId, const std::string& datasetId)
{
    const std::lock_guard guard(m_mutex);
    const std::wstring folder = TokenFolder();
    FileLock lock;
    if (!hasFile(tokenFile(folder)) || !lock.acquire(lockFile(folder), lockMilliseconds) || !m_file->load(folder, true))
        return false;
    return m_file->change().drop(userId, datasetId) && m_file->save(folder);
}

} // namespace orlo::utils
