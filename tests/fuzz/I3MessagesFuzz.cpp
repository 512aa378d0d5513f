#include "tests/fuzz/FuzzCheck.h"

#include "platform/linux/i3/I3Message.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace {

using LinuxPlatform::I3Message;
using LinuxPlatform::I3MessageReader;

struct Reading {
    std::vector<I3Message> messages;
    bool isBroken = false;
};

Reading inPiecesOf(std::size_t piece, const char* bytes, std::size_t size) {
    Reading reading;
    I3MessageReader reader;
    for (std::size_t at = 0; at < size; at += piece) {
        reader.add(bytes + at, std::min(piece, size - at));
        while (auto message = reader.next()) {
            reading.messages.push_back(std::move(*message));
        }
    }
    reading.isBroken = reader.isBroken();
    return reading;
}

bool isSame(const I3Message& one, const I3Message& other) {
    return one.type == other.type && one.payload == other.payload;
}

} // namespace

/// The first byte tells the size of the pieces, the others come in.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    if (size < 2) {
        return 0;
    }
    const char* const stream = reinterpret_cast<const char*>(bytes) + 1;
    const auto whole = inPiecesOf(size, stream, size - 1);
    const auto pieces = inPiecesOf(bytes[0] + std::size_t{1}, stream, size - 1);
    Fuzz::check(whole.isBroken == pieces.isBroken, "pieces change nothing in what is refused");
    Fuzz::check(std::ranges::equal(whole.messages, pieces.messages, isSame), "pieces change no message");
    for (const auto& message : whole.messages) {
        for (const auto& refusal : LinuxPlatform::refusalsIn(message.payload)) {
            Fuzz::check(refusal.find('\n') == std::string::npos, "a refusal is one line");
        }
    }
    return 0;
}
