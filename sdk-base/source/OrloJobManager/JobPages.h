#pragma once

#include <SQLiteCpp/Exception.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace orlo {

/// The numbers of a database's pages, by what their first byte says.
struct JobPages
{
    /// With rows of tables.
    std::vector<std::int64_t> leaves;
    std::vector<std::int64_t> index;
};

/// A copy of a damaged database that can be opened, whatever it looked like: with the sound part of its log in it, and with a first page
/// that tells of two tables, `leaf` and `entry`. Their roots can be any page: a leaf of the job table, or a page of its index. Gone at the
/// end. Everything throws a std::exception where the system has no place or no memory.
class JobPagesCopy
{
public:
    explicit JobPagesCopy(const std::wstring& damaged);
    ~JobPagesCopy() = default;
    JobPagesCopy(const JobPagesCopy&) = delete;
    JobPagesCopy& operator=(const JobPagesCopy&) = delete;

    /// In UTF-8, as SQLite takes it.
    std::string path() const { return m_path.u8string(); }
    std::uintmax_t size() const { return std::filesystem::file_size(m_path); }
    JobPages pages() const;

private:
    /// Nothing stands there before and after.
    struct Place
    {
        explicit Place(std::wstring path) : name(std::move(path)) { clear(); }
        ~Place() { clear(); }
        Place(const Place&) = delete;
        Place& operator=(const Place&) = delete;

        void clear() const;
        void clearLog() const;

        const std::wstring name;
    };

    void take(const std::wstring& damaged, const wchar_t* end) const;
    void fillUp() const;
    void mergeLog() const;
    void putFirstPage(bool isLogged) const;

    const Place m_place;
    const std::filesystem::path m_path;
    std::size_t m_pageSize = 0;
};

/// For what damage throws: it is passed over, unless it was the system that failed.
void passOverDamage(const SQLite::Exception& thrown);

} // namespace orlo
