#include "Core.h"

#include "Routes/Routes.h"
#include "Routes/Users.h"
#include "Server/Encoding.h"
#include "Server/FileBody.h"
#include "Store/Ids.h"

namespace orlo::platform {

namespace {

std::filesystem::path dataFolder(const Options& options)
{
    std::filesystem::path folder = std::filesystem::u8path(options.dataFolder);
    if (!folder.empty())
        std::filesystem::create_directories(folder);
    return folder;
}

std::string databaseFile(const std::filesystem::path& folder)
{
    return folder.empty() ? ":memory:" : (folder / "platform.db").u8string();
}

/// Made once and kept with the data, so that a signed address survives a restart.
std::string signingKey(Tables& tables)
{
    tables.run("INSERT OR IGNORE INTO setting (name, value) VALUES ('signingKey', ?)", toHex(randomBytes(32)));
    return fromHex(*tables.text("SELECT value FROM setting WHERE name = 'signingKey'"));
}

bool isControl(const std::string& path)
{
    return path.rfind(controlPaths, 0) == 0;
}

bool isDownload(const std::string& method, const std::string& path)
{
    return method == "GET" && path.compare(0, 7, "/blobs/") == 0;
}

} // namespace

LocalPlatform::Core::Core(const Options& options)
    : m_folder(dataFolder(options)),
      m_store(databaseFile(m_folder)),
      m_blobs(m_folder.empty() ? std::filesystem::path() : m_folder / "blobs"),
      m_signer(m_store.transact(signingKey)),
      m_server({[this](Call& call) { return noteCall(call); }, [this](Call& call) { return answer(call); }}),
      m_port(options.port)
{
    addRoutes(m_router);
}

void LocalPlatform::Core::start()
{
    const std::lock_guard lock(m_lifeMutex);
    if (m_running)
        return;
    const int port = m_server.start(m_port);
    m_running = true;
    m_port = port;
    const std::lock_guard urlLock(m_urlMutex);
    m_url = "http://127.0.0.1:" + std::to_string(port);
}

void LocalPlatform::Core::stop()
{
    const std::lock_guard lock(m_lifeMutex);
    m_server.stop();
    m_running = false;
}

std::string LocalPlatform::Core::url() const
{
    const std::lock_guard lock(m_urlMutex);
    return m_url;
}

Strike LocalPlatform::Core::noteCall(Call& call)
{
    const std::string path = call.target.path();
    if (isControl(path))
        return {};
    m_requests.note(call.method, path);
    if (isDownload(call.method, path))
        call.download = m_requests.openDownload();
    return m_faults.strike(call.method, path);
}

void LocalPlatform::Core::checkSigned(const Call& call) const
{
    if (call.showsAuthorization)
        throw Refusal(400, "an access token was sent to a signed address, where it doesn't belong");
    m_signer.check(call.method, call.target.path(), call.query("expires"), call.query("signature"), m_clock.seconds());
}

/// Bodies of files are received and packed outside the transaction: others go on meanwhile.
Answer LocalPlatform::Core::answer(Call& call)
{
    const Route& route = m_router.find(call);
    if (route.access == Access::Signed)
        checkSigned(call);
    if (call.stream)
        call.upload = receive(*call.stream, call.contentEncoding, m_blobs);
    Answer answer = transact([&](World& world) {
        if (route.access == Access::Token)
            call.caller = userOfToken(world, call.accessToken);
        return route.handler(call, world);
    });
    if (answer.file && call.acceptsGzip && m_transfers.gzipAnswers())
        pack(answer);
    return answer;
}

void LocalPlatform::Core::pack(Answer& answer) const
{
    answer.file->replace(packed(answer.file->file(), m_blobs));
    answer.contentEncoding = "gzip";
    answer.contentMd5.clear(); // it was that of the file as it is
}

} // namespace orlo::platform
