#pragma once

#include "platform/linux/i3/I3Message.h"
#include "platform/linux/session/XServerQuestion.h"
#include "platform/linux/windows/i3/I3Tree.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace PlatformTests {

/// The i3 or sway of this virtual desktop, as another program asks it.
class I3Desktop {
public:
    static const std::filesystem::path& socket() {
        static const auto path = isSway()
                                     ? std::filesystem::path(std::getenv("SWAYSOCK"))
                                     : LinuxPlatform::askXServer(std::getenv("DISPLAY")).value().i3Socket;
        return path;
    }
    static bool isSway() { return std::string(std::getenv("VIRTUAL_DESKTOP_SESSION")) == "sway"; }

    /// Whether the file was made for this virtual desktop, and goes with it.
    static bool owns(const std::filesystem::path& file) {
        const auto folder = std::filesystem::path(std::getenv("XDG_RUNTIME_DIR")).parent_path();
        const auto place = std::filesystem::weakly_canonical(file).lexically_relative(
            std::filesystem::weakly_canonical(folder));
        return !place.empty() && *place.begin() != "..";
    }

    static QByteArray ask(LinuxPlatform::I3Request type, const std::string& payload = {}) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        const auto path = socket().string();
        std::memcpy(address.sun_path, path.data(), path.size());
        const int descriptor = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        EXPECT_EQ(::connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        const auto request = LinuxPlatform::i3Message(type, QByteArray::fromStdString(payload));
        EXPECT_EQ(::send(descriptor, request.data(), static_cast<std::size_t>(request.size()), 0),
                  request.size());
        LinuxPlatform::I3MessageReader reader;
        std::vector<char> block(std::size_t{1} << 20U);
        auto message = reader.next();
        for (ssize_t count = 1; !message && count > 0; message = reader.next()) {
            count = ::recv(descriptor, block.data(), block.size(), 0);
            reader.add(block.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        }
        ::close(descriptor);
        EXPECT_TRUE(message);
        return message ? message->payload : QByteArray();
    }

    static void run(const std::string& commands) {
        const auto reply = ask(LinuxPlatform::I3Request::runCommand, commands);
        EXPECT_FALSE(reply.contains("\"success\":false") || reply.contains("\"success\": false"))
            << commands << ": " << reply.toStdString();
    }

    static std::unique_ptr<const LinuxPlatform::I3Tree> tree() {
        return LinuxPlatform::I3Tree::parse(ask(LinuxPlatform::I3Request::getTree));
    }

    /// Everything of the layout that a person sees, by the classes of the windows.
    static std::string picture() {
        const auto layout = tree();
        std::string text;
        for (const auto* const output : layout->outputs()) {
            const auto* const visible = layout->visibleWorkspace(*output);
            text += output->name + " shows " + (visible != nullptr ? visible->name : "nothing") + "\n";
        }
        describe(*layout, layout->root(), text, "", true);
        return text;
    }

private:
    using Node = LinuxPlatform::I3Node;

    static void describe(const LinuxPlatform::I3Tree& layout, const Node& node, std::string& text,
                         const std::string& indent, bool areRectsKnown) {
        // i3 does not lay out what nobody sees.
        areRectsKnown =
            areRectsKnown && (isSway() || node.kind != Node::Kind::workspace || layout.isVisible(node));
        const bool isSeen = node.kind == Node::Kind::workspace || node.kind == Node::Kind::container ||
                            node.kind == Node::Kind::floating;
        if (isSeen && !node.name.starts_with("content")) {
            text += indent + (node.isWindow                        ? nameOf(node)
                              : node.kind == Node::Kind::workspace ? node.name
                                                                   : "group");
            text += node.isWindow ? "" : " " + node.layout;
            if (areRectsKnown) {
                text += " " + std::to_string(node.rect.x) + "," + std::to_string(node.rect.y) + " " +
                        std::to_string(node.rect.width) + "x" + std::to_string(node.rect.height);
            }
            text += std::string(node.kind == Node::Kind::floating ? " floating" : "") +
                    (node.isFocused ? " focused" : "") +
                    (node.isFullscreen && node.kind != Node::Kind::workspace ? " fullscreen" : "") +
                    (node.isSticky ? " sticky" : "") + "\n";
        }
        for (const auto* const children : {&node.nodes, &node.floatingNodes}) {
            for (const auto& child : *children) {
                describe(layout, child, text, indent + "  ", areRectsKnown);
            }
        }
    }

    static std::string nameOf(const Node& node) {
        return node.className.empty() ? node.applicationId : node.className;
    }
};

} // namespace PlatformTests
