#pragma once

#include <BaseCommon/Caught.h>
#include <OrloLogging/Log.h>

#include <string>
#include <utility>

namespace orlo {

/// The words for the exception that is being handled; never empty.
inline std::wstring wordsOfCaught()
{
    utils::Caught caught = utils::caught();
    return caught.text.empty() ? utils::Caught().text : std::move(caught.text);
}

} // namespace orlo
