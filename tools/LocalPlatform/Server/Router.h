#pragma once

#include "../Seeds.h"
#include "Answer.h"
#include "Url.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace orlo::platform {

class RequestBody;
class StagedBlob;

/// The beginning of the paths of control calls.
constexpr const char* controlPaths = "/_control/";

/// A request, as its route sees it.
struct Call
{
    std::string method;
    Target target;
    std::string body;
    std::string accessToken;
    bool showsAuthorization = false; ///< There was an Authorization header, of whatever kind.
    bool acceptsGzip = false;
    std::string contentEncoding;
    RequestBody* stream = nullptr;             ///< A body that is still to be read, in place of `body`.
    std::shared_ptr<StagedBlob> upload;        ///< The streamed body, unpacked.
    std::shared_ptr<const void> download;      ///< Counts as an open download as long as this lives.
    std::map<std::string, std::string> places; ///< The `{name}` parts of the route's path.
    User caller;                               ///< Empty on open routes.

    /// The streamed body; refused with 400 if there is none.
    StagedBlob& uploaded() const;
    const std::string& place(const std::string& name) const { return places.at(name); }
    /// A place that must be an integer; anything else is refused with 400.
    int numberPlace(const std::string& name) const;
    /// Empty if the query has no such name.
    std::string query(const std::string& name) const;
    /// Refused with 400 if missing or empty.
    std::string filledQuery(const std::string& name) const;
};

using Handler = std::function<Answer(const Call&, World&)>;

enum class Access {
    Token,  ///< A registered user's access token is needed.
    Signed, ///< The signature of the address is the right to use it. An access token has no business there and is refused.
    Control ///< Open, neither counted nor struck by faults.
};

struct Route
{
    std::string method;
    std::vector<std::string> segments;
    Access access = Access::Token;
    Handler handler;
};

class Router
{
public:
    /// path: "/projects/{projectId}/teams"; a place takes one non-empty segment.
    void add(const std::string& method, const std::string& path, Handler handler, Access access = Access::Token);

    /// A control call: "users" for the path "/_control/users".
    void addControl(const std::string& method, const std::string& name, Handler handler);

    /// The route for the call, whose places are filled. Refuses an unknown path with 404 and a wrong method with 405.
    const Route& find(Call& call) const;

private:
    std::vector<Route> m_routes;
};

/// Reads the text as a 32-bit integer, refused with 400 if it is none.
int readNumber(const std::string& text, const std::string& name);

} // namespace orlo::platform
