#include "GzipPayload.h"

#include <algorithm>
#include <atomic>

namespace orlo {

namespace compression = web::http::compression;

namespace {

std::unique_ptr<compression::compress_provider> makeGzipCompressor()
{
    return compression::builtin::make_compressor(compression::builtin::algorithm::GZIP);
}

std::atomic<OrloWebService::CompressorMaker> compressorMaker{&makeGzipCompressor};

constexpr const wchar_t* compressFailed = L"OrloWebService::PutFileAsync - compress failed";

} // namespace

namespace OrloWebService {

void setCompressorMaker(CompressorMaker maker)
{
    compressorMaker = maker ? maker : &makeGzipCompressor;
}

} // namespace OrloWebService

const wchar_t* gzipped(const std::string& content, Payload& payload)
{
    const auto compressor = compressorMaker.load()();
    if (!compressor)
        return L"OrloWebService::PutFileAsync - compressor get failed";
    // Left uninitialised, so that only what the compressor writes takes memory.
    const std::size_t room = std::max<std::size_t>(100, content.size() + content.size() / 5);
    const std::shared_ptr<std::uint8_t[]> buffer(new std::uint8_t[room]);
    std::size_t used = 0;
    bool done = false;
    std::size_t produced = 0;
    try {
        produced = compressor->compress(reinterpret_cast<const std::uint8_t*>(content.data()), content.size(), buffer.get(), room,
                                        compression::operation_hint::is_last, used, done);
    }
    catch (const std::exception&) { // more than the compressor can count
        return compressFailed;
    }
    if (!done || used != content.size())
        return compressFailed;
    payload = {buffer.get(), produced, buffer};
    return nullptr;
}

} // namespace orlo
