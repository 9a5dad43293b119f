// The library's transport beside the curl command and a bare curl multi, against a server that isn't what is measured.
//
//   OrloEngineBench [--delay] [ROUNDS] [WORD...]
//
// Measures the rows whose names hold all of the words, and prints a table of medians. Files lie in memory (/dev/shm), so that no disk
// takes part.

#include "../Help.h"
#include "Checksum.h"
#include "DelayProxy.h"
#include "Work.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <optional>
#include <sstream>

namespace {

namespace fs = std::filesystem;
using namespace orlo::bench;

constexpr const char* sideNames[] = {"the library", "the bare multi", "curl"};
enum Side : std::size_t { library, multi, curl, sideCount };

std::string besideThis(const char* name)
{
    return (fs::read_symlink("/proc/self/exe").parent_path() / name).string();
}

std::uint64_t sumOf(const fs::path& path)
{
    Checksum sum;
    std::vector<char> room(mebibyte);
    std::ifstream file(path, std::ios::binary);
    while (file.read(room.data(), static_cast<std::streamsize>(room.size())) || file.gcount() > 0)
        sum.add(room.data(), static_cast<std::size_t>(file.gcount()));
    return sum.value();
}

double median(std::vector<double> values)
{
    if (values.empty())
        return 0;
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

/// The server as the clients reach it: straight, or through the proxy.
class Network
{
public:
    Network(const Folder& folder, const Sources& sources, bool delayed) : m_folder(folder), m_sources(sources), m_origin(sources.folder())
    {
        if (delayed)
            m_proxy.emplace(std::chrono::milliseconds(20));
        for (const Way& way : {Way{false, false}, Way{false, true}, Way{true, false}, Way{true, true}})
            m_ports.push_back(m_proxy ? m_proxy->leadTo(m_origin.port(way)) : m_origin.port(way));
        if (m_proxy)
            m_proxy->start();
    }

    std::string url(const Way& way) const
    {
        const std::size_t index = (way.tls ? 2 : 0) + (way.closes ? 1 : 0);
        return (way.tls ? "https://127.0.0.1:" : "http://127.0.0.1:") + std::to_string(m_ports[index]);
    }
    const Origin& origin() const { return m_origin; }
    const Folder& folder() const { return m_folder; }
    const Sources& sources() const { return m_sources; }

private:
    const Folder& m_folder;
    const Sources& m_sources;
    Origin m_origin;
    std::optional<DelayProxy> m_proxy;
    std::vector<int> m_ports;
};

/// One row: the three sides' commands, and whether they did what they should.
class Row
{
public:
    Row(const Network& network, const Work& work, bool tls) : m_network(network), m_work(work), m_tls(tls)
    {
        network.sources().make(work);
        m_source = network.sources().folder() / Sources::name(work);
        if (work.kind == Kind::upload)
            m_sum = sumOf(m_source);
    }

    std::string name() const { return m_work.name(m_tls); }
    double aim() const { return m_work.aims[m_tls ? 1 : 0]; }

    /// The folders are as at first, and the server counts anew.
    Command prepare(Side side, bool watch) const
    {
        m_network.folder().emptied("received");
        const std::string root = m_network.folder().emptied("root").string();
        m_network.origin().takeSums(watch);
        return side == library ? libraryCommand(root, watch) : side == multi ? multiCommand() : curlCommand();
    }

    /// Returns: what went wrong, or nothing.
    std::string complaint(Side side, bool sums) const
    {
        const Counts counts = m_network.origin().takeCounts();
        if (m_work.kind == Kind::get)
            return complaintOfGets(counts, m_work.keep && side != curl);
        if (m_work.kind == Kind::upload)
            return counts.uploadSize == m_work.size && (!sums || counts.uploadSum == m_sum) ? "" : "the server has other bytes";
        const fs::path received = side == library && m_work.kind == Kind::batch ? cachedBlocks() : target();
        return run({"diff", "-rq", m_source.string(), received.string()}).good ? "" : "other bytes arrived";
    }

private:
    std::string complaintOfGets(const Counts& counts, bool kept) const
    {
        const auto asked = static_cast<std::uint64_t>(m_work.count);
        if (counts.smallRequests != asked)
            return std::to_string(counts.smallRequests) + " requests instead of " + std::to_string(asked);
        // A kept connection may die and be replaced; one for each request isn't kept.
        return (kept ? counts.connections > asked / 2 : counts.connections < asked) ? std::to_string(counts.connections) + " connections"
                                                                                    : "";
    }

    Command libraryCommand(const std::string& root, bool watch) const
    {
        Command command{besideThis("OrloEngineWorker"), url(false), root};
        addTo(command, trust("--ca"));
        if (m_work.kind == Kind::get && m_work.keep)
            addTo(command, {"--keep"});
        if (watch)
            addTo(command, {"--watch"});
        switch (m_work.kind) {
        case Kind::get:
            return addTo(command, {"get", std::to_string(m_work.count), std::to_string(m_work.width)});
        case Kind::upload:
            return addTo(command, {"upload", m_source.string()});
        case Kind::download:
            return addTo(command, {"download", Sources::name(m_work), target().string()});
        case Kind::batch:
            break;
        }
        return addTo(command, {"batch", Sources::name(m_work), std::to_string(m_work.count)});
    }

    Command multiCommand() const
    {
        Command command{besideThis("OrloCurlWorker")};
        addTo(command, trust("--ca"));
        if (m_work.keep)
            addTo(command, {"--keep"});
        switch (m_work.kind) {
        case Kind::get:
            return addTo(command, {"get", datasetUrl(false), std::to_string(m_work.count), std::to_string(m_work.width)});
        case Kind::upload:
            return addTo(command, {"upload", url(false) + "/store", m_source.string()});
        case Kind::download:
            return addTo(command, {"download", fileUrl(), target().string()});
        case Kind::batch:
            break;
        }
        fs::create_directories(target());
        return addTo(command, {"batch", fileUrl(), std::to_string(m_work.count), std::to_string(m_work.width), target().string()});
    }

    Command curlCommand() const
    {
        Command command{"curl", "-q", "-sS", "--fail", "--fail-early", "--no-progress-meter", "--noproxy", "*"};
        addTo(command, trust("--cacert"));
        if (m_work.width > 1)
            addTo(command, {"--parallel", "--parallel-immediate", "--parallel-max", std::to_string(m_work.width)});
        const std::string numbers = "[0-" + std::to_string(m_work.count - 1) + "]";
        switch (m_work.kind) {
        case Kind::get: // only a server that closes makes the command connect for each request
            return addTo(command, {"-o", "/dev/null", "-H", "Authorization: Bearer demo-token", datasetUrl(true) + "?" + numbers});
        case Kind::upload:
            return addTo(command, {"-o", "/dev/null", "-T", m_source.string(), url(false) + "/store"});
        case Kind::download:
            return addTo(command, {"-o", target().string(), fileUrl()});
        case Kind::batch:
            break;
        }
        fs::create_directories(target());
        return addTo(command, {"-o", (target() / "#1").string(), fileUrl() + "/" + numbers});
    }

    static Command addTo(Command& command, const Command& words)
    {
        command.insert(command.end(), words.begin(), words.end());
        return command;
    }
    Command trust(const char* option) const { return m_tls ? Command{option, m_network.origin().caFile()} : Command{}; }

    std::string url(bool closes) const { return m_network.url({m_tls, closes}); }
    std::string datasetUrl(bool closes) const { return url(closes) + "/v2/dataSets/5f0c2a6e-7d5b-4b8e-9a55-0d6f3f1f2a10"; }
    std::string fileUrl() const { return url(false) + "/files/" + Sources::name(m_work); }
    fs::path target() const { return m_network.folder() / "received/it"; }

    fs::path cachedBlocks() const
    {
        for (const auto& entry : fs::recursive_directory_iterator(m_network.folder() / "root")) {
            if (entry.is_directory() && entry.path().filename() == "blocks")
                return entry.path();
        }
        return "/nowhere";
    }

    const Network& m_network;
    Work m_work;
    bool m_tls;
    fs::path m_source;
    std::uint64_t m_sum = 0;
};

struct Figures
{
    std::vector<double> whole;
    std::vector<double> alone;
    std::vector<double> peaks;
    long threads = 0;
    long idleThreads = 0;
    std::string trouble; ///< why there are none

    bool has() const { return trouble.empty(); }
    std::string times() const
    {
        char text[64];
        std::snprintf(text, sizeof text, "%.3f s (%.3f)", median(whole), median(alone));
        return has() ? text : trouble;
    }
    std::string peak() const { return has() ? std::to_string(std::lround(median(peaks))) : "-"; }
};

std::string ratio(const Figures& one, const Figures& other, std::vector<double> Figures::*which)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.2f", median(one.*which) / median(other.*which));
    return one.has() && other.has() ? text : "-";
}

/// How long the curl command takes for nothing.
double startUp()
{
    return run({"curl", "-q", "-sS", "-o", "/dev/null", "file:///dev/null"}).seconds;
}

class Measurement
{
public:
    explicit Measurement(const Row& row) : m_row(row) {}

    /// Returns: whether all sides did what they should, or said that they can't.
    bool measure(int rounds)
    {
        for (int round = 0; round <= rounds; ++round) { // the first one warms up, looks closer, and doesn't count
            for (std::size_t i = 0; i < sideCount; ++i)
                runSide(static_cast<Side>((i + static_cast<std::size_t>(round)) % sideCount), round == 0);
        }
        return m_good;
    }

    void print() const
    {
        const auto& [ours, bare, command] = m_figures;
        char aim[16] = "";
        if (m_row.aim() > 0)
            std::snprintf(aim, sizeof aim, "%.2f", m_row.aim());
        std::printf("| %s | %s | %s | %s | %s | %s | %s | %s | %s / %s / %s | %ld | %ld |\n", m_row.name().c_str(), ours.times().c_str(),
                    bare.times().c_str(), command.times().c_str(), ratio(ours, command, &Figures::whole).c_str(), aim,
                    ratio(ours, command, &Figures::alone).c_str(), ratio(bare, command, &Figures::whole).c_str(), ours.peak().c_str(),
                    bare.peak().c_str(), command.peak().c_str(), ours.threads, ours.idleThreads);
        std::fflush(stdout);
    }

private:
    void runSide(Side side, bool isFirst)
    {
        Figures& figures = m_figures[side];
        if (!figures.has())
            return;
        const double nothing = side == curl ? startUp() : 0;
        const Ended ended = run(m_row.prepare(side, isFirst));
        const std::string complaint = ended.good ? m_row.complaint(side, isFirst) : "it failed";
        if (!complaint.empty()) {
            std::fprintf(stderr, "%s: %s: %s\n", m_row.name().c_str(), sideNames[side], complaint.c_str());
            figures.trouble = "failed";
            m_good = false;
        }
        else {
            add(figures, ended, side, nothing, isFirst);
        }
    }

    /// The curl command doesn't tell what its work takes: it is what remains without its start and end.
    static void add(Figures& figures, const Ended& ended, Side side, double nothing, bool isFirst)
    {
        std::istringstream words(ended.output);
        double alone = ended.seconds - nothing;
        double kibibytes = ended.peakMebibytes * 1024;
        long threads = 0;
        long idleThreads = 0;
        if (side != curl)
            words >> alone >> kibibytes >> threads >> idleThreads;
        if (isFirst) {
            figures.threads = threads;
            figures.idleThreads = idleThreads;
            return;
        }
        figures.whole.push_back(ended.seconds);
        figures.alone.push_back(alone);
        figures.peaks.push_back(kibibytes / 1024);
    }

    const Row& m_row;
    Figures m_figures[sideCount];
    bool m_good = true;
};

struct Options
{
    bool delayed = false;
    int rounds = 7;
    std::vector<std::string> words;

    bool wants(const std::string& name) const
    {
        return std::all_of(words.begin(), words.end(), [&](const std::string& word) { return name.find(word) != std::string::npos; });
    }
};

Options optionsOf(const std::vector<std::string>& words)
{
    Options options;
    for (const std::string& word : words) {
        if (word == "--delay")
            options.delayed = true;
        else if (&word == &words[options.delayed ? 1 : 0] && std::atoi(word.c_str()) > 0)
            options.rounds = std::atoi(word.c_str());
        else
            options.words.push_back(word);
    }
    return options;
}

bool hasRoom(const std::vector<std::pair<Work, bool>>& rows)
{
    std::map<std::string, std::size_t> sources;
    std::size_t needed = 64 * mebibyte;
    for (const auto& [work, tls] : rows) {
        sources[Sources::name(work)] = work.bytes();
        needed = std::max(needed, work.bytes() + 64 * mebibyte); // what arrives
    }
    for (const auto& [name, size] : sources)
        needed += size;
    return fs::space("/dev/shm").available > needed;
}

constexpr const char* help = R"([--delay] [ROUNDS] [WORD...]
  The library's transport beside the curl command and a bare curl multi; prints a table of medians, times in seconds.
  --delay   through a proxy on this machine that holds everything up by 20 ms
  ROUNDS    how often each row is measured
  WORD      measures the rows alone whose names hold all of the words, as: upload TLS
  Files lie in memory (/dev/shm). bench/README.md tells what is measured.)";

} // namespace

int main(int argc, char** argv)
{
    if (answersForItself(argc, argv, "OrloEngineBench", help))
        return 0;
    const Options options = optionsOf({argv + 1, argv + argc});
    std::vector<std::pair<Work, bool>> rows;
    for (const Work& work : allWork(options.delayed)) {
        for (const bool tls : {false, true}) {
            if (options.wants(work.name(tls)))
                rows.emplace_back(work, tls);
        }
    }
    const Folder folder;
    if (rows.empty() || !hasRoom(rows)) {
        std::fprintf(stderr, "OrloEngineBench: %s\n", rows.empty() ? "no such row" : "not enough room in /dev/shm");
        return 2;
    }
    const Sources sources(folder);
    const Network network(folder, sources, options.delayed);
    std::printf("| Work | library | bare multi | curl | library / curl | aim | the same, work alone | multi / curl "
                "| peak in MiB: library / multi / curl | threads at most | once idle |\n|---|---|---|---|---|---|---|---|---|---|---|\n");
    bool good = true;
    for (const auto& [work, tls] : rows) {
        const Row row(network, work, tls);
        Measurement measurement(row);
        good = measurement.measure(options.rounds) && good;
        measurement.print();
    }
    return good ? 0 : 1;
}
