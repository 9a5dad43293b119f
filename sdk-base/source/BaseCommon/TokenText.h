#pragma once

#include <map>
#include <string>
#include <utility>

// The text of the file in which PermissionFileHelper keeps its tokens. For this library only.
namespace orlo::utils {

/// By user id, then dataset id.
using Tokens = std::map<std::pair<std::string, std::string>, std::string>;

/// Adds the entries of a text. False if it isn't that of such a file; an entry that lacks something is passed over.
bool parseTokens(const std::string& text, Tokens& tokens);

/// Such a text, which is looked into and changed where an entry stands, without being read as a whole. All ids and tokens must be UTF-8.
class TokenText
{
public:
    TokenText() = default;
    explicit TokenText(const Tokens& tokens);

    /// Empty if there is none.
    std::string find(const std::string& userId, const std::string& datasetId) const;
    void put(const std::string& userId, const std::string& datasetId, const std::string& token);
    /// Returns: whether there was one.
    bool drop(const std::string& userId, const std::string& datasetId);

    /// The beginning of the whole text. Two texts of the same revision are the same text.
    static std::string headOf(const std::string& revision);
    std::string wholeText(const std::string& revision) const;

private:
    struct Entry
    {
        std::size_t begin;
        std::size_t token;
        std::size_t end;
    };
    /// Of no length where there is none.
    Entry entryOf(const std::string& userId, const std::string& datasetId) const;

    std::string m_entries; ///< with commas between them
};

} // namespace orlo::utils
