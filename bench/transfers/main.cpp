// Transfers by the library beside the same transfers by curl: one server, one after the other, each in a process of its own.
//
//   OrloTransferBench [ROUNDS] [CASE]
//
// Prints the medians as a table. Files lie in memory (/dev/shm), so that no disk takes part.

#include "../Help.h"
#include "Process.h"

#include <rapidjson/document.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

namespace fs = std::filesystem;
using orlo::bench::Ended;
using orlo::bench::mustRun;
using orlo::bench::PlatformProcess;
using orlo::bench::run;
using Command = std::vector<std::string>;

constexpr const char* token = "Authorization: Bearer demo-token";
constexpr std::size_t mebibyte = std::size_t{1} << 20;

fs::path besideThis(const char* name)
{
    return fs::read_symlink("/proc/self/exe").parent_path() / name;
}

/// Noise in blocks that repeat a little, so that gzip has something to do and something to win.
void makeFile(const fs::path& path, std::size_t size, unsigned seed)
{
    std::mt19937_64 random(seed);
    std::string block(64 * 1024, '\0');
    std::ofstream file(path, std::ios::binary);
    for (std::size_t written = 0; written < size; written += block.size()) {
        for (std::size_t i = 0; i < block.size(); i += 16)
            *reinterpret_cast<std::uint64_t*>(&block[i]) = random();
        file.write(block.data(), static_cast<std::streamsize>(std::min(block.size(), size - written)));
    }
}

bool isSame(const fs::path& left, const fs::path& right)
{
    return run({"cmp", "-s", left.string(), right.string()}).good;
}

/// The platform, the folders, and what curl asks it for.
class Stage
{
public:
    Stage() : m_platform(besideThis("orlo-local-platform").string(), folder("platform")) {}
    ~Stage() { fs::remove_all(m_root); }

    std::string url() const { return m_platform.url(); }
    fs::path path(const std::string& name) const { return m_root / name; }
    std::string folder(const std::string& name) const
    {
        fs::create_directories(m_root / name);
        return (m_root / name).string();
    }
    /// Drops what was uploaded, so that every round finds the same free memory.
    void dropUploads() const { empty("platform/blobs"); }
    void empty(const std::string& name) const
    {
        fs::remove_all(m_root / name);
        fs::create_directories(m_root / name);
    }

    /// Asks the platform; dies if it refuses.
    std::string ask(const std::string& method, const std::string& path, const std::string& body = {}) const
    {
        Command command{"curl", "-sSf", "-X", method, "-H", token, "-H", "Content-Type: application/json", url() + path};
        if (!body.empty())
            command.insert(command.end(), {"--data-binary", body});
        return mustRun(command);
    }
    std::string uploadAddress() const { return text(ask("PUT", "/file/new?fileName=curl.bin&filepath=bench", "null"), "fileUrlWithSAS"); }
    std::string downloadAddress(const std::string& remotePath) const
    {
        return text(ask("POST", "/file/read", remotePath), "fileUrlWithSAS");
    }

    static std::string text(const std::string& json, const char* key)
    {
        rapidjson::Document answer;
        answer.Parse(json.c_str());
        return answer[key].GetString();
    }

    /// The files of a dataset, and their signed addresses.
    void makeDataset(const std::vector<fs::path>& files) const
    {
        ask("POST", "/_control/projects", R"({"name":"bench","id":"bench"})");
        rapidjson::Document folders;
        folders.Parse(ask("GET", "/folder/byproject?projectId=bench").c_str());
        const std::string folderId = folders[0]["id"].GetString();
        ask("POST", "/_control/datasets", R"({"name":"bench","id":"bench-dataset","folderId":")" + folderId + "\"}");
        addFiles(files);
    }
    void addFiles(const std::vector<fs::path>& files) const
    {
        for (std::size_t i = 0; i < files.size(); ++i)
            mustRun({"curl", "-sSf", "-o", "/dev/null", "-T", files[i].string(),
                     url() + "/_control/datasets/bench-dataset/files?path=blocks/" + std::to_string(i)});
    }
    std::vector<std::string> batchAddresses(std::size_t count) const
    {
        std::string seeds;
        for (std::size_t i = 0; i < count; ++i)
            seeds += (i > 0 ? ",\"" : "\"") + ("blocks/" + std::to_string(i) + "\"");
        rapidjson::Document answer;
        answer.Parse(ask("POST", "/datasets/bench-dataset/blockFiles/readSAS", "[" + seeds + "]").c_str());
        std::vector<std::string> addresses;
        for (const auto& entry : answer["data"].GetArray())
            addresses.emplace_back(entry["datasetFilePathWithSAS"].GetString());
        return addresses;
    }

private:
    fs::path m_root = fs::path("/dev/shm") / ("orlo-transfer-bench-" + std::to_string(::getpid()));
    PlatformProcess m_platform;
};

/// One row of the table. The sides' preparations and checks are not measured.
struct Case
{
    std::string name;
    double mebibytes;
    std::function<Command()> library;
    std::function<bool(const Ended&)> libraryIsRight;
    std::function<Command()> curl;
    std::function<bool()> curlIsRight;
    double aim; ///< of curl's time divided by the library's; 0 for none
};

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

struct Side
{
    std::vector<double> seconds;
    std::vector<double> peaks;
    bool add(const Ended& ended, bool isRight)
    {
        seconds.push_back(ended.seconds);
        peaks.push_back(ended.peakMebibytes);
        return ended.good && isRight;
    }
};

bool measure(const Case& tested, int rounds)
{
    Side library;
    Side curl;
    std::vector<double> inside;
    for (int i = -1; i < rounds; ++i) { // the first round warms up and doesn't count
        const Ended ours = run(tested.library());
        const bool oursIsRight = tested.libraryIsRight(ours);
        const Ended theirs = run(tested.curl());
        const bool theirsIsRight = tested.curlIsRight();
        if (i < 0)
            continue;
        inside.push_back(std::atof(ours.output.c_str()));
        if (!library.add(ours, oursIsRight) || !curl.add(theirs, theirsIsRight)) {
            std::fprintf(stderr, "%s: %s went wrong\n", tested.name.c_str(), ours.good && oursIsRight ? "curl" : "the library");
            return false;
        }
    }
    const double ourTime = median(library.seconds);
    const double theirTime = median(curl.seconds);
    std::printf("| %s | %.3f s (%.0f MiB/s), transfer alone %.3f s | %.3f s (%.0f MiB/s) | %.2f | %s | %.0f MiB | %.0f MiB |\n",
                tested.name.c_str(), ourTime, tested.mebibytes / ourTime, median(inside), theirTime, tested.mebibytes / theirTime,
                theirTime / ourTime, tested.aim > 0 ? std::to_string(tested.aim).substr(0, 3).c_str() : "", median(library.peaks),
                median(curl.peaks));
    std::fflush(stdout);
    return true;
}

class Cases
{
public:
    explicit Cases(const Stage& stage) : m_stage(stage), m_big(stage.path("big.bin")) { makeFile(m_big, 256 * mebibyte, 1); }

    Case upload(bool gzip) const
    {
        Case tested{gzip ? "upload 256 MiB, gzip" : "upload 256 MiB", 256, {}, {}, {}, {}, gzip ? 0 : 0.9};
        tested.library = [=] {
            m_stage.dropUploads();
            return worker({gzip ? "upload-gzip" : "upload", m_big.string()});
        };
        tested.libraryIsRight = [=](const Ended& ended) { return storeHolds(ended.output.substr(ended.output.find('\n') + 1)); };
        tested.curl = [=] {
            m_stage.dropUploads();
            return gzip ? curlGzipUpload() : Command{"curl", "-sSf", "-o", "/dev/null", "-T", m_big.string(), m_stage.uploadAddress()};
        };
        tested.curlIsRight = [] { return true; };
        return tested;
    }

    Case download() const
    {
        mustRun({"curl", "-sSf", "-o", "/dev/null", "-T", m_big.string(), m_stage.url() + "/_control/files?path=bench/big.bin"});
        const fs::path ours = m_stage.path("ours.bin");
        const fs::path theirs = m_stage.path("theirs.bin");
        Case tested{"download 256 MiB", 256, {}, {}, {}, {}, 0};
        tested.library = [=] {
            fs::remove(ours);
            return worker({"download", "bench/big.bin", ours.string()});
        };
        tested.libraryIsRight = [=](const Ended&) { return isSame(m_big, ours); };
        tested.curl = [=] {
            fs::remove(theirs);
            return Command{"curl", "-sSf", "-o", theirs.string(), m_stage.downloadAddress("bench/big.bin")};
        };
        tested.curlIsRight = [=] { return isSame(m_big, theirs); };
        return tested;
    }

    Case batch(const std::string& name, std::size_t count, std::size_t size, double aim, bool freshConnections) const
    {
        std::vector<fs::path> files;
        m_stage.empty("source");
        for (std::size_t i = 0; i < count; ++i) {
            files.push_back(m_stage.path("source") / std::to_string(i));
            makeFile(files.back(), size, static_cast<unsigned>(i));
        }
        m_stage.addFiles(files);
        const double mebibytes = static_cast<double>(count * size) / static_cast<double>(mebibyte);
        Case tested{name, mebibytes, {}, {}, {}, {}, aim};
        tested.library = [=] {
            m_stage.empty("root");
            return worker({"batch", std::to_string(count)});
        };
        tested.libraryIsRight = [=](const Ended&) { return sameFolder(cachedBlocks()); };
        tested.curl = [=] { return curlBatch(count, freshConnections); };
        tested.curlIsRight = [=] { return sameFolder(m_stage.path("curl")); };
        return tested;
    }

private:
    Command worker(std::vector<std::string> words) const
    {
        Command command{besideThis("OrloTransferWorker").string(), m_stage.url(), m_stage.folder("root")};
        command.insert(command.end(), words.begin(), words.end());
        return command;
    }

    bool storeHolds(std::string remotePath) const
    {
        remotePath.erase(remotePath.find('\n'));
        const fs::path back = m_stage.path("back.bin");
        mustRun({"curl", "-sSf", "-o", back.string(), m_stage.downloadAddress(remotePath)});
        const bool holds = isSame(m_big, back);
        fs::remove(back);
        return holds;
    }

    Command curlGzipUpload() const
    {
        const std::string packed = m_stage.path("packed.gz").string();
        return {"sh", "-c",
                "gzip -6 -c '" + m_big.string() + "' >'" + packed + "' && curl -sSf -o /dev/null -H 'Content-Encoding: gzip' -T '" +
                    packed + "' '" + m_stage.uploadAddress() + "'"};
    }

    Command curlBatch(std::size_t count, bool freshConnections) const
    {
        m_stage.empty("curl");
        const fs::path list = m_stage.path("list.txt");
        std::ofstream file(list);
        const std::vector<std::string> addresses = m_stage.batchAddresses(count);
        for (std::size_t i = 0; i < count; ++i)
            file << "url=\"" << addresses[i] << "\"\noutput=\"" << (m_stage.path("curl") / std::to_string(i)).string() << "\"\n";
        Command command{"curl", "-sSf", "--no-progress-meter", "--parallel", "--parallel-max", "6", "--config", list.string()};
        if (freshConnections)
            command.insert(command.end(), {"-H", "Connection: close"});
        return command;
    }

    fs::path cachedBlocks() const
    {
        for (const auto& entry : fs::recursive_directory_iterator(m_stage.path("root"))) {
            if (entry.is_directory() && entry.path().filename() == "blocks")
                return entry.path();
        }
        return {};
    }
    bool sameFolder(const fs::path& found) const { return run({"diff", "-rq", m_stage.path("source").string(), found.string()}).good; }

    const Stage& m_stage;
    fs::path m_big;
};

constexpr const char* help = R"([ROUNDS] [CASE]
  Transfers by the library beside the same transfers by curl, against a local platform of its own; prints a table of medians.
  ROUNDS   how often each case is measured; 7 unless told otherwise
  CASE     one of upload, gzip, download, large, small; all without it
  Files lie in memory (/dev/shm). bench/README.md tells what is measured.)";

} // namespace

int main(int argc, char** argv)
{
    if (orlo::bench::answersForItself(argc, argv, "OrloTransferBench", help))
        return 0;
    const int rounds = argc > 1 ? std::max(1, std::atoi(argv[1])) : 7;
    const std::string only = argc > 2 ? argv[2] : "";
    const Stage stage;
    const Cases cases(stage);
    stage.makeDataset({});
    std::printf("| Transfer | library | curl | curl / library | aim | peak, library | peak, curl |\n|---|---|---|---|---|---|---|\n");
    bool good = true;
    const auto measureIf = [&](const char* word, const auto& make) {
        if (only.empty() || only == word)
            good = measure(make(), rounds) && good;
    };
    measureIf("upload", [&] { return cases.upload(false); });
    measureIf("gzip", [&] { return cases.upload(true); });
    measureIf("download", [&] { return cases.download(); });
    measureIf("large", [&] { return cases.batch("batch of 12 files of 64 MiB", 12, 64 * mebibyte, 0.9, false); });
    measureIf("small", [&] { return cases.batch("batch of 1,000 files of 16 KiB", 1000, 16 * 1024, 0.5, true); });
    return good ? 0 : 1;
}
