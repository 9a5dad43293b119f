#include "Work.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <random>
#include <unistd.h>

namespace orlo::bench {

namespace fs = std::filesystem;

namespace {

constexpr const char* prefix = "orlo-engine-bench-";
constexpr std::size_t kibibyte = 1024;

std::string sizeText(std::size_t size)
{
    return size >= mebibyte ? std::to_string(size / mebibyte) + " MiB" : std::to_string(size / kibibyte) + " KiB";
}

/// Noise, another for each seed.
void makeFile(const fs::path& path, std::size_t size, unsigned seed)
{
    std::mt19937_64 random(seed);
    std::vector<std::uint64_t> block(std::min(size, mebibyte) / sizeof(std::uint64_t));
    std::ofstream file(path, std::ios::binary);
    for (std::size_t written = 0; written < size; written += block.size() * sizeof(std::uint64_t)) {
        std::generate(block.begin(), block.end(), std::ref(random));
        file.write(reinterpret_cast<const char*>(block.data()), static_cast<std::streamsize>(block.size() * sizeof(std::uint64_t)));
    }
}

void removeLeftovers(const fs::path& memory)
{
    for (const auto& entry : fs::directory_iterator(memory)) {
        const std::string name = entry.path().filename().string();
        const std::string head = prefix;
        if (name.compare(0, head.size(), head) == 0 && ::kill(std::atoi(name.c_str() + head.size()), 0) != 0)
            fs::remove_all(entry.path());
    }
}

} // namespace

std::string Work::name(bool tls) const
{
    const std::string end = tls ? " (https)" : " (http)";
    switch (kind) {
    case Kind::get:
        return "GET " + std::to_string(count) + "x, " + std::to_string(width) + (width > 1 ? " threads, " : " thread, ") +
               (keep ? "kept" : "fresh") + end;
    case Kind::upload:
        return "upload " + sizeText(size) + end;
    case Kind::download:
        return "download " + sizeText(size) + end;
    case Kind::batch:
        break;
    }
    return "batch " + std::to_string(count) + " x " + sizeText(size) + end;
}

std::vector<Work> allWork(bool delayed)
{
    if (delayed)
        return {{Kind::get, 30, 1, 0, false, {}},
                {Kind::get, 160, 8, 0, false, {}},
                {Kind::get, 30, 1, 0, true, {}},
                {Kind::get, 160, 8, 0, true, {}},
                {Kind::batch, 120, 6, 16 * kibibyte, true, {}}};
    return {{Kind::get, 300, 1, 0, false, {1.5, 1.1}},
            {Kind::get, 800, 8, 0, false, {1.5, 1.1}},
            {Kind::get, 300, 1, 0, true, {0.5, 0.2}},
            {Kind::get, 800, 8, 0, true, {0.5, 0.2}},
            {Kind::upload, 1, 1, 256 * mebibyte, true, {1.2, 1.2}},
            {Kind::upload, 1, 1, 1024 * mebibyte, true, {}},
            {Kind::download, 1, 1, 256 * mebibyte, true, {1.0, 1.1}},
            {Kind::download, 1, 1, 1024 * mebibyte, true, {1.0, 1.1}},
            {Kind::batch, 12, 6, 64 * mebibyte, true, {0.9, 1.05}},
            {Kind::batch, 1000, 6, 16 * kibibyte, true, {2.0, 2.0}}};
}

Folder::Folder() : m_path(fs::path("/dev/shm") / (prefix + std::to_string(::getpid())))
{
    removeLeftovers("/dev/shm");
    fs::create_directories(m_path);
}

Folder::~Folder()
{
    std::error_code ignored;
    fs::remove_all(m_path, ignored);
}

fs::path Folder::emptied(const std::string& name) const
{
    fs::remove_all(m_path / name);
    fs::create_directories(m_path / name);
    return m_path / name;
}

std::string Sources::name(const Work& work)
{
    return (work.kind == Kind::batch ? "batch" + std::to_string(work.count) + "-" : "file") + std::to_string(work.size);
}

void Sources::make(const Work& work) const
{
    const fs::path path = m_folder / name(work);
    if (work.kind == Kind::get || fs::exists(path))
        return;
    if (work.kind != Kind::batch)
        return makeFile(path, work.size, 0);
    fs::create_directories(path);
    for (int i = 0; i < work.count; ++i)
        makeFile(path / std::to_string(i), work.size, static_cast<unsigned>(i));
}

} // namespace orlo::bench
