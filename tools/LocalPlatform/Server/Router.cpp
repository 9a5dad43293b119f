#include "Router.h"

#include <charconv>
#include <optional>

namespace orlo::platform {

namespace {

using Places = std::map<std::string, std::string>;

bool isPlace(const std::string& segment)
{
    return segment.size() > 2 && segment.front() == '{' && segment.back() == '}';
}

std::optional<Places> match(const std::vector<std::string>& pattern, const std::vector<std::string>& segments)
{
    if (pattern.size() != segments.size())
        return std::nullopt;
    Places places;
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        if (isPlace(pattern[i]) && !segments[i].empty())
            places[pattern[i].substr(1, pattern[i].size() - 2)] = segments[i];
        else if (pattern[i] != segments[i])
            return std::nullopt;
    }
    return places;
}

} // namespace

int readNumber(const std::string& text, const std::string& name)
{
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size())
        throw Refusal(400, "\"" + name + "\" must be an integer");
    return value;
}

StagedBlob& Call::uploaded() const
{
    if (!upload)
        throw Refusal(400, "a file is expected as the body");
    return *upload;
}

int Call::numberPlace(const std::string& name) const
{
    return readNumber(place(name), name);
}

std::string Call::query(const std::string& name) const
{
    const auto found = target.query.find(name);
    return found == target.query.end() ? std::string() : found->second;
}

std::string Call::filledQuery(const std::string& name) const
{
    std::string value = query(name);
    if (value.empty())
        throw Refusal(400, "the query needs \"" + name + "\"");
    return value;
}

void Router::add(const std::string& method, const std::string& path, Handler handler, Access access)
{
    m_routes.push_back(Route{method, readTarget(path).segments, access, std::move(handler)});
}

void Router::addControl(const std::string& method, const std::string& name, Handler handler)
{
    add(method, controlPaths + name, std::move(handler), Access::Control);
}

const Route& Router::find(Call& call) const
{
    bool pathKnown = false;
    for (const Route& route : m_routes) {
        std::optional<Places> places = match(route.segments, call.target.segments);
        if (places && route.method == call.method) {
            call.places = std::move(*places);
            return route;
        }
        pathKnown = pathKnown || places;
    }
    throw pathKnown ? Refusal(405, "this path has no method " + call.method) : Refusal(404, "no such path: " + call.target.path());
}

} // namespace orlo::platform
