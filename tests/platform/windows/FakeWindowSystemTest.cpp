#include "tests/support/FakeWindowSystem.h"
#include "tests/platform/windows/WindowSystemContract.h"

#include <cstdint>
#include <string>

namespace TestSupport {
namespace {

class FakeWindowsWorld {
public:
    FakeWindowSystem& system() { return system_; }

    LinuxPlatform::WindowId open(const std::string& name) {
        const auto window = ++lastWindow_;
        system_.open(window, name, process());
        system_.send(LinuxPlatform::WindowEvent::opened, window);
        return window;
    }

    static std::uint32_t process() { return 42; }
    void close(LinuxPlatform::WindowId window) { system_.close(window); }

    void bringBack(LinuxPlatform::WindowId window) {
        system_.at(window).isHidden = false;
        system_.send(LinuxPlatform::WindowEvent::activated, window);
    }

    /// What is asked of the fake has been done at once.
    template <class Condition>
    static bool waitUntil(const Condition& condition) {
        return condition();
    }

private:
    FakeWindowSystem system_;
    LinuxPlatform::WindowId lastWindow_ = 0;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Fake, WindowSystemContract, FakeWindowsWorld);

} // namespace
} // namespace TestSupport
