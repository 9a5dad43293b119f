#pragma once

#include "LocalPlatform.h"
#include "Server/Faults.h"
#include "Server/RequestLog.h"
#include "Server/Router.h"
#include "Server/Server.h"
#include "Store/BlobStore.h"
#include "Store/Clock.h"
#include "Store/Signing.h"
#include "Store/Store.h"
#include "Store/Transfers.h"
#include "World.h"

#include <filesystem>
#include <mutex>
#include <string>

namespace orlo::platform {

/// All that a platform consists of, and the road of a call through it.
class LocalPlatform::Core
{
public:
    explicit Core(const Options& options);

    void start();
    void stop();
    std::string url() const;

    /// Runs `work(world)` as one transaction. Its result can't be void, since a transaction always has one.
    template <class Work>
    auto transact(const Work& work)
    {
        return m_store.transact([&](Tables& tables) {
            World world{tables, m_blobs, m_signer, m_clock, m_faults, m_requests, m_transfers, url()};
            return work(world);
        });
    }

    FaultBook& faults() { return m_faults; }
    RequestLog& requests() { return m_requests; }
    Transfers& transfers() { return m_transfers; }
    Clock& clock() { return m_clock; }

private:
    Strike noteCall(Call& call);
    Answer answer(Call& call);
    void checkSigned(const Call& call) const;
    void pack(Answer& answer) const;

    std::filesystem::path m_folder;
    Store m_store;
    BlobStore m_blobs;
    Signer m_signer;
    Clock m_clock;
    FaultBook m_faults;
    RequestLog m_requests;
    Transfers m_transfers;
    Router m_router;
    Server m_server;
    std::mutex m_lifeMutex;
    bool m_running = false;
    int m_port;
    mutable std::mutex m_urlMutex;
    std::string m_url;
};

} // namespace orlo::platform
