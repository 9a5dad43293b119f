// The work of OrloEngineWorker by libcurl alone, on one thread with a multi handle.
//
//   OrloCurlWorker [--ca FILE] [--keep] WORK
//
// WORK is one of: get URL COUNT WIDTH | upload URL FILE | download URL FILE | batch URL COUNT WIDTH FOLDER
// COUNT requests, WIDTH of them at a time; a batch asks for URL/0, URL/1 and so on. Without --keep every request has a connection of
// its own. Prints what Usage.h says, without threads. Buffers and shared caches are as the curl command has them.

#include "../Help.h"
#include "Usage.h"

#include <cstdlib>
#include <curl/curl.h>
#include <functional>
#include <memory>
#include <sys/stat.h>
#include <vector>

namespace {

using Words = std::vector<std::string>;
using File = std::unique_ptr<FILE, int (*)(FILE*)>;

struct Options
{
    std::string caFile;
    bool keep = false;
    Words work;
};

Options optionsOf(const Words& words)
{
    Options options;
    size_t next = 0;
    for (; next < words.size() && words[next].compare(0, 2, "--") == 0; ++next) {
        if (words[next] == "--ca" && next + 1 < words.size())
            options.caFile = words[++next];
        options.keep = options.keep || words[next] == "--keep";
    }
    options.work.assign(words.begin() + static_cast<std::ptrdiff_t>(next), words.end());
    return options;
}

size_t forget(char*, size_t size, size_t count, void* sum)
{
    *static_cast<size_t*>(sum) += size * count;
    return size * count;
}

/// One handle, and the file that it works on at the moment.
class Lane
{
public:
    Lane(const Options& options, CURLSH* shared) : m_handle(curl_easy_init())
    {
        set(CURLOPT_SHARE, shared);
        set(CURLOPT_PRIVATE, this);
        set(CURLOPT_PROXY, "");
        set(CURLOPT_FAILONERROR, 1L);
        set(CURLOPT_BUFFERSIZE, 102400L);
        set(CURLOPT_FRESH_CONNECT, options.keep ? 0L : 1L);
        set(CURLOPT_FORBID_REUSE, options.keep ? 0L : 1L);
        if (!options.caFile.empty())
            set(CURLOPT_CAINFO, options.caFile.c_str());
        set(CURLOPT_CAPATH, static_cast<char*>(nullptr)); // with one, the authorities would be read for every connection
    }
    ~Lane() { curl_easy_cleanup(m_handle); }

    Lane(const Lane&) = delete;
    Lane& operator=(const Lane&) = delete;

    CURL* handle() const { return m_handle; }
    size_t received() const { return m_received; }

    template <class T>
    void set(CURLoption option, T value)
    {
        curl_easy_setopt(m_handle, option, value);
    }

    void get(const std::string& url)
    {
        set(CURLOPT_URL, url.c_str());
        set(CURLOPT_WRITEFUNCTION, forget);
        set(CURLOPT_WRITEDATA, &m_received);
    }
    bool getToFile(const std::string& url, const std::string& path)
    {
        set(CURLOPT_URL, url.c_str());
        return open(path, "wb", CURLOPT_WRITEDATA);
    }
    bool putFile(const std::string& url, const std::string& path)
    {
        struct stat facts
        {};
        if (::stat(path.c_str(), &facts) != 0)
            return false;
        get(url);
        set(CURLOPT_UPLOAD, 1L);
        set(CURLOPT_INFILESIZE_LARGE, static_cast<curl_off_t>(facts.st_size));
        return open(path, "rb", CURLOPT_READDATA);
    }
    bool close() { return !m_file || std::fclose(m_file.release()) == 0; }

private:
    bool open(const std::string& path, const char* mode, CURLoption data)
    {
        m_file.reset(std::fopen(path.c_str(), mode));
        set(data, m_file.get());
        return m_file != nullptr;
    }

    CURL* m_handle;
    File m_file{nullptr, &std::fclose};
    size_t m_received = 0;
};

using Prepare = std::function<bool(Lane&, int)>;

/// Performs the requests 0 to count - 1, so many at a time as there are lanes.
class Performance
{
public:
    Performance(const Options& options, int count, int width, Prepare prepare)
        : m_multi(curl_multi_init()), m_shared(curl_share_init()), m_count(count), m_prepare(std::move(prepare))
    {
        curl_share_setopt(m_shared, CURLSHOPT_SHARE, CURL_LOCK_DATA_SSL_SESSION);
        for (int i = 0; i < width; ++i)
            m_lanes.push_back(std::make_unique<Lane>(options, m_shared));
    }
    ~Performance()
    {
        m_lanes.clear();
        curl_multi_cleanup(m_multi);
        curl_share_cleanup(m_shared);
    }

    Performance(const Performance&) = delete;
    Performance& operator=(const Performance&) = delete;

    bool run()
    {
        for (const auto& lane : m_lanes)
            startNext(*lane);
        for (int running = 0; m_good && m_ended < m_count;) {
            if (curl_multi_perform(m_multi, &running) != CURLM_OK)
                return false;
            readMessages();
            if (m_ended < m_count && curl_multi_poll(m_multi, nullptr, 0, 1000, nullptr) != CURLM_OK)
                return false;
        }
        return m_good;
    }

    size_t received() const
    {
        size_t sum = 0;
        for (const auto& lane : m_lanes)
            sum += lane->received();
        return sum;
    }

private:
    void startNext(Lane& lane)
    {
        if (m_next >= m_count)
            return;
        m_good = m_prepare(lane, m_next++) && m_good;
        curl_multi_add_handle(m_multi, lane.handle());
    }

    void readMessages()
    {
        int left = 0;
        while (const CURLMsg* const message = curl_multi_info_read(m_multi, &left)) {
            const CURLcode result = message->data.result;
            Lane* lane = nullptr;
            curl_easy_getinfo(message->easy_handle, CURLINFO_PRIVATE, &lane);
            curl_multi_remove_handle(m_multi, lane->handle());
            ++m_ended;
            m_good = lane->close() && result == CURLE_OK && m_good;
            if (result != CURLE_OK)
                std::fprintf(stderr, "a request failed: %s\n", curl_easy_strerror(result));
            startNext(*lane);
        }
    }

    CURLM* m_multi;
    CURLSH* m_shared;
    int m_count;
    int m_next = 0;
    int m_ended = 0;
    bool m_good = true;
    Prepare m_prepare;
    std::vector<std::unique_ptr<Lane>> m_lanes;
};

bool getMany(const Options& options)
{
    const std::string& url = options.work[1];
    const int count = std::stoi(options.work[2]);
    Performance performance(options, count, std::stoi(options.work[3]), [&](Lane& lane, int) {
        lane.get(url);
        return true;
    });
    return performance.run() && performance.received() > static_cast<size_t>(count) * 900;
}

bool doWork(const Options& options)
{
    const Words& work = options.work;
    if (work[0] == "get")
        return getMany(options);
    if (work[0] == "upload")
        return Performance(options, 1, 1, [&](Lane& lane, int) { return lane.putFile(work[1], work[2]); }).run();
    if (work[0] == "download")
        return Performance(options, 1, 1, [&](Lane& lane, int) { return lane.getToFile(work[1], work[2]); }).run();
    return Performance(options, std::stoi(work[2]), std::stoi(work[3]),
                       [&](Lane& lane, int number) {
                           const std::string name = "/" + std::to_string(number);
                           return lane.getToFile(work[1] + name, work[4] + name);
                       })
        .run();
}

constexpr const char* help = R"([--ca FILE] [--keep] WORK
  The work of OrloEngineWorker by libcurl alone, for OrloEngineBench. Prints the seconds that the work took, and what memory.
  --ca    PEM file of the certificates to trust
  --keep  keeps connections
  WORK    get URL COUNT WIDTH | upload URL FILE | download URL FILE | batch URL COUNT WIDTH FOLDER)";

} // namespace

int main(int argc, char** argv)
{
    if (orlo::bench::answersForItself(argc, argv, "OrloCurlWorker", help))
        return 0;
    const Options options = optionsOf({argv + 1, argv + argc});
    if (options.work.size() < 3)
        return 2;
    const auto begin = std::chrono::steady_clock::now();
    curl_global_init(CURL_GLOBAL_DEFAULT);
    const bool good = doWork(options);
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
    orlo::bench::report(taken.count(), orlo::bench::statusNumber("VmHWM"), 0, 0);
    return good ? 0 : 1;
}
