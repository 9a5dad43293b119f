#include "Doors.h"

#include <BaseCommon/Text.h>
#include <BaseCommon/TokenText.h>

namespace orlo::fuzz {

void tokenFile(std::string_view bytes)
{
    utils::Tokens tokens;
    if (!utils::parseTokens(std::string(bytes), tokens))
        return;
    utils::TokenText text(tokens);
    const std::string written = text.wholeText("r");
    utils::Tokens again;
    require(utils::parseTokens(written, again), "a file that was written can be read");
    require(again == tokens, "no token is lost or changed");
    require(utils::TokenText(again).wholeText("r") == written, "a file that was read back is written as before");
    for (const auto& [holder, token] : tokens) {
        require(utils::isValidUtf8(holder.first) && utils::isValidUtf8(holder.second) && utils::isValidUtf8(token), "all is UTF-8");
        require(text.find(holder.first, holder.second) == token, "each entry is found in the text");
    }
    if (tokens.empty())
        return;
    const auto [holder, token] = *tokens.begin();
    require(text.drop(holder.first, holder.second) && !text.drop(holder.first, holder.second), "an entry goes once");
    utils::Tokens rest;
    require(utils::parseTokens(text.wholeText("r"), rest) && rest.size() + 1 == tokens.size() && rest.count(holder) == 0, "and no other");
    text.put(holder.first, holder.second, token);
    rest.clear();
    require(utils::parseTokens(text.wholeText("r"), rest) && rest == tokens, "and comes back");
}

} // namespace orlo::fuzz
