#include "platform/linux/session/SessionProbe.h"

#include "platform/linux/session/BoundedQuestion.h"
#include "platform/linux/session/SessionBusCheck.h"
#include "platform/linux/session/SocketQuestion.h"
#include "platform/linux/session/XServerQuestion.h"

#include <QByteArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QString>

#include <array>
#include <cstdlib>
#include <cstring>
#include <fstream>

#include <gio/gio.h>

namespace LinuxPlatform {
namespace {

using Milliseconds = std::chrono::milliseconds;

std::string variable(const std::string& name) {
    const auto* const value = std::getenv(name.c_str());
    return value != nullptr ? value : "";
}

template <std::size_t count>
std::string bytesOf(const std::array<std::uint32_t, count>& numbers) {
    return {reinterpret_cast<const char*>(numbers.data()), sizeof numbers};
}

/// Asks the display for a sign that it has come so far, which every compositor gives.
/// Source: https://wayland.freedesktop.org/docs/html/ch04.html, wl_display.sync.
std::optional<CompositorAnswer> askCompositor(const std::filesystem::path& socket, Milliseconds patience) {
    constexpr std::uint32_t display = 1;
    constexpr std::uint32_t sync = 0;
    constexpr std::uint32_t callback = 2;
    constexpr std::uint32_t size = 3 * sizeof(std::uint32_t);
    const auto answer = askSocket(
        socket, bytesOf(std::array{display, size << 16U | sync, callback}),
        [](std::string_view bytes) { return bytes.size() >= 2 * sizeof(std::uint32_t); }, patience);
    return answer ? std::optional(CompositorAnswer{answer->process}) : std::nullopt;
}

/// Asks for the version. The message format is that of i3's documentation: these bytes, the payload's length
/// and the type, both in the machine's byte order, and the payload.
std::optional<I3Answer> askI3(const std::filesystem::path& socket, Milliseconds patience) {
    static constexpr std::string_view magic = "i3-ipc";
    static constexpr std::size_t headerSize = magic.size() + 2 * sizeof(std::uint32_t);
    constexpr std::uint32_t getVersion = 7;
    const auto isComplete = [](std::string_view bytes) {
        std::uint32_t length = 0;
        if (bytes.size() >= headerSize) {
            std::memcpy(&length, bytes.data() + magic.size(), sizeof length);
        }
        return bytes.size() >= headerSize && bytes.size() - headerSize >= length;
    };
    const auto answer = askSocket(
        socket, std::string(magic) + bytesOf(std::array{std::uint32_t{0}, getVersion}), isComplete, patience);
    if (!answer || !answer->bytes.starts_with(magic)) {
        return std::nullopt;
    }
    const auto version =
        QJsonDocument::fromJson(QByteArray::fromStdString(answer->bytes.substr(headerSize))).object();
    if (!version.contains(QLatin1String("human_readable"))) {
        return std::nullopt;
    }
    // i3 leaves its own name out.
    return I3Answer{version.value(QLatin1String("variant")).toString(QStringLiteral("i3")).toStdString(),
                    answer->process};
}

struct Unref {
    void operator()(gpointer object) const { g_object_unref(object); }
};

struct UnrefVariant {
    void operator()(GVariant* variant) const { g_variant_unref(variant); }
};

/// Absent when nobody has the name.
std::optional<std::uint32_t> ownerOf(GDBusConnection* bus, const std::string& name) {
    // It would count while the whole machine stands still; `answerWithin` has one for all questions.
    constexpr gint withoutDeadline = G_MAXINT;
    const std::unique_ptr<GVariant, UnrefVariant> reply(g_dbus_connection_call_sync(
        bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
        "GetConnectionUnixProcessID", g_variant_new("(s)", name.c_str()), G_VARIANT_TYPE("(u)"),
        G_DBUS_CALL_FLAGS_NO_AUTO_START, withoutDeadline, nullptr, nullptr));
    guint32 process = 0;
    if (reply) {
        g_variant_get(reply.get(), "(u)", &process);
    }
    return reply ? std::optional<std::uint32_t>(process) : std::nullopt;
}

/// On a connection of its own: nothing of the toolkit may be used yet.
std::map<std::string, std::uint32_t> askBus(const std::vector<std::string>& names) {
    std::map<std::string, std::uint32_t> owners;
    constexpr auto flags = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                             G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    const std::unique_ptr<GDBusConnection, Unref> bus(g_dbus_connection_new_for_address_sync(
        sessionBusAddress().c_str(), flags, nullptr, nullptr, nullptr));
    if (!bus) {
        return owners;
    }
    for (const auto& name : names) {
        if (const auto owner = ownerOf(bus.get(), name)) {
            owners.emplace(name, *owner);
        }
    }
    g_dbus_connection_close_sync(bus.get(), nullptr, nullptr);
    return owners;
}

std::string programName(std::uint32_t process) {
    std::string name;
    std::getline(std::ifstream("/proc/" + std::to_string(process) + "/comm"), name);
    return name;
}

} // namespace

SessionSources sourcesOfThisSession(const SessionPatience& patience) {
    return {
        .variable = variable,
        .askXServer =
            [patience = patience.xServer](const std::string& display) {
                return answerWithin<std::optional<XServerAnswer>>(Patience(patience),
                                                                  [display] { return askXServer(display); })
                    .value_or(std::nullopt);
            },
        .askCompositor = [patience = patience.socket](
                             const std::filesystem::path& socket) { return askCompositor(socket, patience); },
        .askI3 = [patience = patience.socket](
                     const std::filesystem::path& socket) { return askI3(socket, patience); },
        .busOwners =
            [patience = patience.bus](const std::vector<std::string>& names) {
                return answerWithin<std::map<std::string, std::uint32_t>>(Patience(patience),
                                                                          [names] { return askBus(names); })
                    .value_or(std::map<std::string, std::uint32_t>());
            },
        .programName = programName,
    };
}

} // namespace LinuxPlatform
