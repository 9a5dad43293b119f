#pragma once

#include "StreamWeb.h"

namespace orlo {

/// Bytes that are to be sent, and who keeps them.
struct Payload
{
    const std::uint8_t* bytes = nullptr;
    std::size_t size = 0;
    std::shared_ptr<const void> owner;
};

/// Compresses the content in one piece. Returns what is wrong, or null.
const wchar_t* gzipped(const std::string& content, Payload& payload);

} // namespace orlo
