#include "tests/platform/windows/WindowFocusContract.h"
#include "tests/platform/windows/WindowSystemContract.h"
#include "tests/platform/windows/i3/I3WindowFixture.h"

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>

#include <unistd.h>

namespace TestSupport {
namespace {

using PlatformTests::I3Desktop;

/// i3 or sway.
class I3ContractWorld {
public:
    LinuxPlatform::I3WindowSystem& system() { return *i3_.system; }
    LinuxPlatform::WindowId open(const std::string& name) { return i3_.open(name); }
    static std::uint32_t process() { return static_cast<std::uint32_t>(getpid()); }
    void close(LinuxPlatform::WindowId window) { i3_.client.destroy(i3_.windows.at(window)); }
    static void bringBack(LinuxPlatform::WindowId window) { run(window, "scratchpad show"); }

    template <class Condition>
    static bool waitUntil(const Condition& condition) {
        return spinUntil(condition, std::chrono::minutes(1));
    }

    static std::optional<LinuxPlatform::WindowId> focused() {
        const auto tree = I3Desktop::tree();
        const auto* const leaf = tree->focused();
        return leaf != nullptr ? std::optional(leaf->node->window) : std::nullopt;
    }
    static void focus(LinuxPlatform::WindowId window) { run(window, "focus"); }

    static void moveToSecondWorkspace(LinuxPlatform::WindowId window) {
        run(window, "move container to workspace 2");
    }
    static int workspaceOf(LinuxPlatform::WindowId window) {
        const auto tree = I3Desktop::tree();
        return numberOf(*tree->find(window)->workspace);
    }
    static int workspace() {
        const auto tree = I3Desktop::tree();
        return numberOf(*tree->focusedWorkspace());
    }
    static void goToWorkspace(int number) { I3Desktop::run("workspace " + std::to_string(number + 1)); }

    static void makeFullscreen(LinuxPlatform::WindowId window) { run(window, "fullscreen enable"); }
    static bool isFullscreen(LinuxPlatform::WindowId window) {
        const auto tree = I3Desktop::tree();
        return tree->find(window)->node->isFullscreen;
    }

private:
    static int numberOf(const LinuxPlatform::I3Node& workspace) {
        return std::atoi(workspace.name.c_str()) - 1;
    }

    static void run(LinuxPlatform::WindowId window, const std::string& command) {
        const auto tree = I3Desktop::tree();
        I3Desktop::run("[con_id=" + std::to_string(tree->find(window)->node->id) + "] " + command);
    }

    PlatformTests::I3WindowWorld i3_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(I3, WindowSystemContract, I3ContractWorld);
INSTANTIATE_TYPED_TEST_SUITE_P(I3, WindowFocusContract, I3ContractWorld);

} // namespace
} // namespace TestSupport
