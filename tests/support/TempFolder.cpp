#include "TempFolder.h"

#include <BaseCommon/Files.h>
#include <BaseCommon/LocalFolders.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>

namespace orlo::test {

TempFolder::TempFolder() : TempFolder(std::filesystem::temp_directory_path())
{}

TempFolder::TempFolder(const std::filesystem::path& parent)
{
    std::string name = (parent / "orlo-test-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr)
        throw std::runtime_error("no temporary folder");
    m_path = name;
}

TempFolder::~TempFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

std::filesystem::path TempFolder::path(const std::string& utf8Name) const
{
    return m_path / std::filesystem::u8path(utf8Name);
}

std::wstring TempFolder::wide() const
{
    return utils::fromPath(m_path);
}

std::wstring TempFolder::wide(const std::string& utf8Name) const
{
    return utils::fromPath(path(utf8Name));
}

LocalRoot::LocalRoot(const TempFolder& folder)
{
    utils::setLocalRoot(folder.wide());
}

LocalRoot::~LocalRoot()
{
    utils::setLocalRoot({});
}

std::string readFile(const std::filesystem::path& file)
{
    std::ifstream in(file, std::ios::binary);
    std::ostringstream content;
    content << in.rdbuf();
    return content.str();
}

void writeFile(const std::filesystem::path& file, const std::string& content)
{
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    out << content;
    if (!out.flush())
        throw std::runtime_error("can't write " + file.string());
}

bool makeNamedPipe(const std::filesystem::path& path)
{
    return ::mkfifo(path.c_str(), 0644) == 0;
}

std::filesystem::path otherFileSystem(const std::filesystem::path& folder)
{
    const char* const memory = "/dev/shm";
    struct stat here = {};
    struct stat there = {};
    const bool isOther = ::stat(memory, &there) == 0 && ::stat(folder.c_str(), &here) == 0 && there.st_dev != here.st_dev;
    return isOther && ::access(memory, W_OK) == 0 ? memory : "";
}

UsualPermissions::UsualPermissions() : m_before(::umask(0022))
{}

UsualPermissions::~UsualPermissions()
{
    ::umask(m_before);
}

std::vector<std::string> filesBelow(const std::filesystem::path& folder)
{
    std::vector<std::string> files;
    std::error_code error;
    for (std::filesystem::recursive_directory_iterator at(folder, error), end; !error && at != end; at.increment(error)) {
        if (at->is_regular_file() && at->path().extension() != ".alive")
            files.push_back(at->path().lexically_relative(folder).u8string());
    }
    std::sort(files.begin(), files.end());
    return files;
}

} // namespace orlo::test
