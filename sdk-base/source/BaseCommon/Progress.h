#pragma once

#include <cstdint>
#include <functional>

namespace orlo {

/// How far something is. Bytes are those of the bodies of requests and answers as they go over the network, compressed ones as compressed.
/// What is known of grows while the work goes on: the size of an answer is known when its head has come, that of a file to be sent when it
/// is about to be sent. Before another attempt what the failed one counted is taken back.
struct Progress
{
    std::uint64_t bytesDone = 0;
    std::uint64_t bytesInAll = 0; ///< never less than those that are done
    /// Of these, the bytes of files that go to and from the platform's store.
    std::uint64_t fileBytesDone = 0;
    std::uint64_t fileBytesInAll = 0;
};

using ProgressCallback = std::function<void(const Progress&)>;

} // namespace orlo
