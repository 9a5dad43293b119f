#include "Doors.h"

#include <BaseCommon/Text.h>
#include <BaseCommon/TokenText.h>

namespace orlo::fuzz {

void tokenFile(std::string_view bytes)
{
    utils::Tokens tokens;
    if (!utils::parseTokens(std::string(bytes), tokens))
        return;
    const std::string written = utils::textOf(tokens);
    utils::Tokens again;
    require(utils::parseTokens(written, again), "a file that was written can be read");
    require(again == tokens, "no token is lost or changed");
    require(utils::textOf(again) == written, "a file that was read back is written as before");
    for (const auto& [holder, token] : tokens)
        require(utils::isValidUtf8(holder.first) && utils::isValidUtf8(holder.second) && utils::isValidUtf8(token), "all is UTF-8");
}

} // namespace orlo::fuzz
