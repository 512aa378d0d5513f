#pragma once

#include "platform/linux/camera/LinuxCaptureServices.h"
#include "platform/linux/camera/pipewire/PipeWireCameras.h"
#include "platform/linux/system/ThreadWorkQueues.h"

#include "tests/platform/camera/CameraWorld.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace TestSupport {

/// One session of the cameras of this world's PipeWire.
struct PipeWireCameraCheck : testing::Test {
    static constexpr auto patience = std::chrono::seconds(20);

    TemporaryFolder folder;
    QtPlatform::QtMainQueue mainQueue;
    LinuxPlatform::ThreadWorkQueues workQueues;
    LinuxPlatform::LinuxCaptureServices services{mainQueue, workQueues,
                                                 std::make_unique<LinuxPlatform::PipeWireCameras>(), nullptr};
    std::shared_ptr<Platform::CaptureSession> session = services.makeSession();
    std::shared_ptr<Platform::PhotoOutput> output = services.makePhotoOutput();
    std::unique_ptr<Platform::VideoPreview> preview;
    int pictures = 0;

    void SetUp() override {
        // Cameras of an earlier test may still be on their way out.
        ASSERT_TRUE(spinUntil([&] { return services.devices().empty(); }, patience));
    }

    void TearDown() override { session->stopRunning(); }

    std::unique_ptr<VirtualCamera> plugIn(const std::string& name, const std::string& description,
                                          const std::string& formats,
                                          const std::vector<std::string>& options = {}) {
        const auto before = listed(name);
        auto camera = std::make_unique<VirtualCamera>(folder, name, description, formats, options);
        EXPECT_TRUE(spinUntil([&] { return listed(name) > before; }, patience)) << name;
        return camera;
    }

    /// Those whose names begin so.
    std::ptrdiff_t listed(const std::string& name) {
        const auto devices = services.devices();
        return std::ranges::count_if(devices, [&](const Platform::CaptureDevice& device) {
            return device.uniqueID.starts_with(name);
        });
    }

    /// After it has been unplugged. Before, another one of its name cannot be told from it.
    bool isGone(const std::string& name) {
        return spinUntil([&] { return listed(name) == 0; }, patience);
    }

    void choose(const std::string& id) {
        session->beginConfiguration();
        for (const auto& input : session->inputs()) {
            session->removeInput(input);
        }
        for (const auto& device : services.devices()) {
            if (device.uniqueID == id) {
                session->addInput(services.makeInput(device));
            }
        }
        if (session->canAddOutput(output)) {
            session->addOutput(output);
        }
        session->commitConfiguration();
        ASSERT_EQ(session->inputs().size(), 1U);
    }

    void look(int width = 332, int height = 187) {
        preview = session->makePreview([this] { ++pictures; });
        preview->setSize(width, height);
    }

    /// Until another camera has delivered: by then, one that streams already has, too.
    void waitForAWitness() {
        const auto witness = plugIn("witness", "Witness", "yuyv");
        const auto second = services.makeSession();
        second->addInput(services.makeInput({"witness", "Witness"}));
        int seen = 0;
        const auto watcher = second->makePreview([&] { ++seen; });
        watcher->setSize(16, 9);
        second->startRunning();
        ASSERT_TRUE(spinUntil([&] { return seen >= 3; }, patience));
        witness->unplug();
        ASSERT_TRUE(spinUntil(
            [&] {
                return std::ranges::count(services.devices(),
                                          Platform::CaptureDevice{"witness", "Witness"}) == 0;
            },
            patience));
    }

    bool comesOn() {
        return spinUntil([&] { return preview->picture() != nullptr; }, patience);
    }
    bool goesDark() {
        return spinUntil([&] { return preview->picture() == nullptr; }, patience);
    }
};

} // namespace TestSupport
