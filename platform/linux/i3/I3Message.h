#pragma once

#include <QByteArray>
#include <QJsonDocument>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace LinuxPlatform {

// The messages of i3 and sway. Source: i3's documentation, "IPC interface", and sway-ipc(7). A message is the
// text "i3-ipc", the payload's length and the type, both of 32 bits in the machine's byte order, and the
// payload, which is a command or JSON.

enum class I3Request : std::uint32_t {
    runCommand = 0,
    getWorkspaces = 1,
    subscribe = 2,
    getOutputs = 3,
    getTree = 4,
    getVersion = 7,
    getConfig = 9,
};

enum class I3Event : std::uint32_t {
    workspace = 0x80000000,
    window = 0x80000003,
    binding = 0x80000005,
    shutdown = 0x80000006,
};

struct I3Message {
    std::uint32_t type = 0;
    QByteArray payload;

    bool isEvent() const { return (type & 0x80000000U) != 0; }
};

QByteArray i3Message(I3Request type, const QByteArray& payload);

/// What a message says. Names that programs gave in another encoding than UTF-8 are passed on as they are;
/// what cannot be read of them is replaced.
QJsonDocument jsonOf(const QByteArray& payload);

/// Why commands were not carried out, in the other side's words and each on one line; the payload is the
/// reply to `runCommand`. Empty where all of them were.
std::vector<std::string> refusalsIn(const QByteArray& payload);

/// Puts messages together from what comes in, in pieces of any size.
class I3MessageReader {
public:
    /// A longer one is not read: nobody has so many windows.
    static constexpr std::size_t longestPayload = std::size_t{16} << 20U;

    void add(const char* bytes, std::size_t count);
    /// The next whole message; absent until there is one.
    std::optional<I3Message> next();
    /// Whether what came in are no messages, or one that is too long. Nothing more can be read then.
    bool isBroken() const { return isBroken_; }

private:
    QByteArray bytes_;
    /// Of `bytes_`, already given out.
    qsizetype used_ = 0;
    bool isBroken_ = false;
};

} // namespace LinuxPlatform
