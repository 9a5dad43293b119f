#pragma once

#include "Answer.h"
#include "LocalPlatform.h"
#include "Url.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace orlo::platform {

class BlobStore;
class Clock;
class FaultBook;
class RequestLog;
class Signer;
class Tables;

/// A request, as its route sees it.
struct Call
{
    std::string method;
    Target target;
    std::string body;
    std::string accessToken;
    std::map<std::string, std::string> places; ///< The `{name}` parts of the route's path.
    User caller;                               ///< Empty on open routes.

    const std::string& place(const std::string& name) const { return places.at(name); }
    /// A place that must be an integer; anything else is refused with 400.
    int numberPlace(const std::string& name) const;
    /// Empty if the query has no such name.
    std::string query(const std::string& name) const;
    /// Refused with 400 if missing or empty.
    std::string filledQuery(const std::string& name) const;
};

/// What routes and seeding calls work on, for the length of one transaction.
struct World
{
    Tables& tables;
    BlobStore& blobs;
    const Signer& signer;
    Clock& clock;
    FaultBook& faults;
    RequestLog& requests;
    std::string url;
};

using Handler = std::function<Answer(const Call&, World&)>;

enum class Access {
    Token,  ///< A registered user's access token is needed.
    Signed, ///< The signature of the address is the right to use it.
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

    /// The route for the call, whose places are filled. Refuses an unknown path with 404 and a wrong method with 405.
    const Route& find(Call& call) const;

private:
    std::vector<Route> m_routes;
};

/// Reads the text as a 32-bit integer, refused with 400 if it is none.
int readNumber(const std::string& text, const std::string& name);

} // namespace orlo::platform
