#include "platform/linux/session/SessionBusCheck.h"

#include "platform/linux/system/Descriptor.h"
#include "platform/linux/system/Patience.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace LinuxPlatform {
namespace {

/// Buses answer within milliseconds, on a busy machine somewhat later.
constexpr std::chrono::seconds sessionBusPatience{3};

std::string unescaped(std::string_view text) {
    std::string result;
    for (std::size_t index = 0; index < text.size(); ++index) {
        unsigned value = 0;
        const auto* const digits = text.data() + index + 1;
        const bool isEscape = text[index] == '%' && index + 3 <= text.size() &&
                              std::from_chars(digits, digits + 2, value, 16).ptr == digits + 2;
        result += isEscape ? static_cast<char>(value) : text[index];
        index += isEscape ? 2 : 0;
    }
    return result;
}

/// The socket's name as the kernel takes it: an abstract one begins with a zero byte.
std::optional<std::string> socketName(std::string_view address) {
    constexpr std::string_view transport = "unix:";
    // Of several addresses the first is tried first.
    address = address.substr(0, address.find(';'));
    if (!address.starts_with(transport)) {
        return std::nullopt;
    }
    for (auto rest = address.substr(transport.size()); !rest.empty();) {
        const auto pair = rest.substr(0, rest.find(','));
        rest.remove_prefix(std::min(pair.size() + 1, rest.size()));
        const auto value = unescaped(pair.substr(std::min(pair.find('=') + 1, pair.size())));
        if (pair.starts_with("path=")) {
            return value;
        }
        if (pair.starts_with("abstract=")) {
            return '\0' + value;
        }
    }
    return std::nullopt;
}

/// The first words of every client: a zero byte and the user.
std::string greeting() {
    std::string text = std::string(1, '\0') + "AUTH EXTERNAL ";
    for (const char digit : std::to_string(geteuid())) {
        constexpr std::string_view digits = "0123456789abcdef";
        text += digits[static_cast<unsigned char>(digit) >> 4U];
        text += digits[static_cast<unsigned char>(digit) & 0xFU];
    }
    return text + "\r\n";
}

} // namespace

std::string systemBusAddress() {
    const auto* const address = std::getenv("DBUS_SYSTEM_BUS_ADDRESS");
    return address != nullptr && *address != '\0' ? address : "unix:path=/var/run/dbus/system_bus_socket";
}

std::string sessionBusAddress() {
    if (const auto* const address = std::getenv("DBUS_SESSION_BUS_ADDRESS");
        address != nullptr && *address != '\0') {
        return address;
    }
    const auto* const folder = std::getenv("XDG_RUNTIME_DIR");
    return folder != nullptr ? std::string("unix:path=") + folder + "/bus" : std::string();
}

bool isBusSilent(std::string_view address, std::chrono::milliseconds patience) {
    const auto name = socketName(address);
    const Descriptor bus(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    sockaddr_un place{};
    place.sun_family = AF_UNIX;
    if (!name || bus.get() < 0 || name->size() >= sizeof place.sun_path) {
        return false;
    }
    std::memcpy(place.sun_path, name->data(), name->size());
    const bool isAbstract = name->starts_with('\0');
    const auto length =
        static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name->size() + (isAbstract ? 0 : 1));
    if (connect(bus.get(), reinterpret_cast<const sockaddr*>(&place), length) != 0) {
        // So many wait already that no more are taken.
        return errno == EAGAIN;
    }
    const auto text = greeting();
    if (send(bus.get(), text.data(), text.size(), MSG_NOSIGNAL) < 0) {
        return false;
    }
    pollfd answer{bus.get(), POLLIN, 0};
    Patience waiting(patience);
    while (const auto look = waiting.nextLook()) {
        if (poll(&answer, 1, static_cast<int>(look->count())) != 0) {
            return false;
        }
    }
    return true;
}

void leaveSilentSessionBus() {
    if (isBusSilent(sessionBusAddress(), sessionBusPatience)) {
        setenv("DBUS_SESSION_BUS_ADDRESS", "disabled:", 1);
    }
}

} // namespace LinuxPlatform
