#pragma once

#include <string>

namespace orlo::platform {

class BlobStore;
class Clock;
class FaultBook;
class RequestLog;
class Signer;
class Tables;
class Transfers;

/// What routes and seeding functions work on, for the length of one transaction.
struct World
{
    Tables& tables;
    BlobStore& blobs;
    const Signer& signer;
    Clock& clock;
    FaultBook& faults;
    RequestLog& requests;
    Transfers& transfers;
    std::string url;
};

} // namespace orlo::platform
