#pragma once

#include "tests/support/TemporaryFolder.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <future>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <wayland-server.h>

namespace PlatformTests {

/// A Wayland compositor without a screen, on a thread of its own: a seat, and windows that it lets others
/// list and minimise. It says and does what the test wants. Windows are numbered from 1 as they open.
class ScriptedCompositor {
public:
    using Window = std::uint64_t;
    enum class Protocol { offered, notOffered };

    explicit ScriptedCompositor(Protocol protocol = Protocol::offered);
    ~ScriptedCompositor();
    ScriptedCompositor(const ScriptedCompositor&) = delete;
    ScriptedCompositor& operator=(const ScriptedCompositor&) = delete;

    std::filesystem::path path() const { return folder_.path() / "socket"; }

    Window open(const std::string& applicationId);
    void rename(Window window, const std::string& applicationId);
    void close(Window window);
    /// By its user: gives it the focus, and brings it back.
    void focus(Window window);
    /// Tells once more what holds.
    void repeat(Window window);
    Window focused();
    bool isMinimised(Window window);

    /// What it was asked, as in "minimise 1".
    std::vector<std::string> asked();
    int connections();
    void setHeedsHiding(bool heedsHiding);
    /// Whether activating brings a minimised window back, as at first, or is not heeded.
    void setActivatingRestores(bool activatingRestores);
    /// A protocol error for whoever is connected, and for whoever comes.
    void setRefuses(bool refuses);
    /// Has nothing more to say of windows, for good.
    void finish();
    /// Does nothing until `thaw`.
    void freeze();
    void thaw();
    /// As at a restart: without windows and without anybody.
    void startAnew();

private:
    struct Toplevel {
        ScriptedCompositor* compositor = nullptr;
        Window number = 0;
        std::string applicationId;
        bool isMinimised = false;
        bool isActivated = false;
        std::set<wl_resource*> handles;
    };
    struct Requests;

    void listen();
    void perform(const std::function<void()>& task);
    void hand(std::packaged_task<void()> task);
    static int runTasks(int descriptor, std::uint32_t mask, void* data);
    static void bindManager(wl_client* client, void* data, std::uint32_t version, std::uint32_t id);
    static void bindSeat(wl_client* client, void* data, std::uint32_t version, std::uint32_t id);
    void introduce(Toplevel& window, wl_resource* manager);
    void tellName(const Toplevel& window);
    void tellState(const Toplevel& window);
    void activate(Toplevel& window);
    void activateAsAsked(Toplevel& window);
    void minimise(Toplevel& window);
    void restore(Toplevel& window);

    TestSupport::TemporaryFolder folder_;
    wl_display* display_ = wl_display_create();
    int tasksArrived_ = -1;
    std::mutex mutex_;
    std::vector<std::packaged_task<void()>> tasks_;
    std::promise<void> thawed_;
    // What follows belongs to the thread.
    std::map<Window, std::unique_ptr<Toplevel>> windows_;
    std::set<wl_resource*> managers_;
    Window lastWindow_ = 0;
    std::vector<std::string> asked_;
    int connections_ = 0;
    bool heedsHiding_ = true;
    bool activatingRestores_ = true;
    bool refuses_ = false;
    std::thread thread_;
};

} // namespace PlatformTests
