#pragma once

#include "../Store/OpenFile.h"

#include <memory>

namespace orlo::platform {

class Connection;

/// A file that goes out behind the head of an answer.
class FileBody
{
public:
    /// pass: held until the last bytes are handed out, so that it is gone when the client has them.
    FileBody(OpenFile file, std::shared_ptr<const void> pass) : m_file(std::move(file)), m_pass(std::move(pass)) {}

    const OpenFile& file() const { return m_file; }
    void replace(OpenFile file) { m_file = std::move(file); }
    void send(Connection& connection);

private:
    OpenFile m_file;
    std::shared_ptr<const void> m_pass;
};

} // namespace orlo::platform
