#include "FileBody.h"

#include "Connection.h"

#include <algorithm>

namespace orlo::platform {

namespace {

constexpr std::int64_t lastPiece = 64 * 1024;

} // namespace

void FileBody::send(Connection& connection)
{
    const std::int64_t last = std::min(m_file.size(), lastPiece);
    const std::int64_t first = m_file.size() - last;
    const bool goesOn = connection.sendFile(m_file.descriptor(), 0, static_cast<std::size_t>(first));
    m_pass.reset();
    if (goesOn)
        connection.sendFile(m_file.descriptor(), first, static_cast<std::size_t>(last));
}

} // namespace orlo::platform
