#include "TempFile.h"

#include <BaseCommon/Files.h>

#include <stdexcept>
#include <utility>

namespace orlo::http {

TempFile::TempFile(std::wstring path) : m_path(std::move(path))
{}

TempFile::~TempFile()
{
    m_file.close();
    if (m_exists)
        utils::removeFile(m_path);
}

void TempFile::open()
{
    if (m_exists)
        return;
    m_file.rdbuf()->pubsetbuf(nullptr, 0); // the pieces are large already
    m_file.open(utils::makePath(m_path), std::ios::binary | std::ios::trunc);
    if (!m_file)
        throw std::runtime_error("the temporary file can't be made");
    m_exists = true;
}

void TempFile::write(const void* bytes, std::size_t count)
{
    open();
    if (!m_file.write(static_cast<const char*>(bytes), static_cast<std::streamsize>(count)))
        throw std::runtime_error("the temporary file can't be written");
}

void TempFile::close()
{
    open();
    m_file.close();
    if (!m_file)
        throw std::runtime_error("the temporary file can't be written");
}

bool TempFile::moveTo(const std::wstring& target)
{
    m_exists = false; // from here on it is the target, or stays
    return utils::moveFile(m_path, target);
}

} // namespace orlo::http
