#include "platform/linux/tray/TrayStatusItem.h"

#include "tests/platform/windows/WindowManagerQuestion.h"
#include "tests/support/EventLoop.h"
#include "tests/support/HandDrivenQueue.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/X11TestClient.h"

#include <xcb/composite.h>

#include <gmock/gmock.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>
#include <vector>

namespace {

using LinuxPlatform::TrayStatusItem;
using LinuxPlatform::X11Connection;
using LinuxPlatform::XcbPointer;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using TestSupport::spinUntil;
using TestSupport::X11TestClient;

constexpr std::chrono::seconds patience{30};
/// As a pixel of a true-colour screen has it.
constexpr std::uint32_t darkGray = 0x303030;
constexpr std::uint32_t lightGray = 0xD0D0D0;
constexpr std::uint32_t red = 0xE00000;
constexpr std::uint32_t opaque = 0xFF000000;

/// A tray that records who wants to stand in it, and can take them in.
class FakeTray {
public:
    explicit FakeTray(bool hasAlpha = false) : hasAlpha_(hasAlpha), window_(client_.create("tray", "Tray")) {
        if (hasAlpha) {
            client_.setNumbers(window_, "_NET_SYSTEM_TRAY_VISUAL", XCB_ATOM_VISUALID,
                               std::array{alphaVisual()});
        }
        xcb_set_selection_owner(client_.get(), window_, client_.atom("_NET_SYSTEM_TRAY_S0"),
                                XCB_CURRENT_TIME);
        xcb_client_message_event_t message{};
        message.response_type = XCB_CLIENT_MESSAGE;
        message.format = 32;
        message.window = client_.root();
        message.type = client_.atom("MANAGER");
        message.data.data32[1] = client_.atom("_NET_SYSTEM_TRAY_S0");
        message.data.data32[2] = window_;
        xcb_send_event(client_.get(), 0, client_.root(), XCB_EVENT_MASK_STRUCTURE_NOTIFY,
                       reinterpret_cast<const char*>(&message));
        client_.sync();
    }

    /// The window of the next request to stand in the tray, if one has arrived.
    std::optional<xcb_window_t> request() {
        while (const XcbPointer<xcb_generic_event_t> event{xcb_poll_for_event(client_.get())}) {
            if ((event->response_type & 0x7FU) == XCB_CLIENT_MESSAGE) {
                return reinterpret_cast<const xcb_client_message_event_t&>(*event).data.data32[2];
            }
        }
        return std::nullopt;
    }

    /// Takes a window into a panel of that colour, at the corner of the screen.
    void embed(xcb_window_t icon, std::uint32_t color) {
        panel_ = xcb_generate_id(client_.get());
        const auto visual = hasAlpha_ ? alphaVisual() : screen().root_visual;
        const auto colormap = xcb_generate_id(client_.get());
        xcb_create_colormap(client_.get(), XCB_COLORMAP_ALLOC_NONE, colormap, screen().root, visual);
        const std::array<std::uint32_t, 4> values{color, 0, 1, colormap};
        xcb_create_window(client_.get(), hasAlpha_ ? 32 : screen().root_depth, panel_, screen().root, 0, 0,
                          100, 30, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, visual,
                          XCB_CW_BACK_PIXEL | XCB_CW_BORDER_PIXEL | XCB_CW_OVERRIDE_REDIRECT |
                              XCB_CW_COLORMAP,
                          values.data());
        xcb_map_window(client_.get(), panel_);
        // As a tray does whose icons must outlive it.
        xcb_change_save_set(client_.get(), XCB_SET_MODE_INSERT, icon);
        xcb_reparent_window(client_.get(), icon, panel_, 10, 2);
        if (hasAlpha_) {
            // Such a tray lays the icon over the panel by itself.
            xcb_composite_query_version(client_.get(), 0, 4);
            xcb_composite_redirect_window(client_.get(), icon, XCB_COMPOSITE_REDIRECT_MANUAL);
        }
        xcb_map_window(client_.get(), icon);
        client_.sync();
    }

    /// Lets go of a button over the icon.
    void release(xcb_window_t icon, std::uint8_t button) {
        xcb_button_release_event_t event{};
        event.response_type = XCB_BUTTON_RELEASE;
        event.detail = button;
        event.root = client_.root();
        event.event = icon;
        event.event_x = 4;
        event.event_y = 4;
        xcb_send_event(client_.get(), 0, icon, XCB_EVENT_MASK_BUTTON_RELEASE,
                       reinterpret_cast<const char*>(&event));
        client_.sync();
    }

    /// Changes the panel's colour and has the icon draw itself anew, as trays do.
    void recolor(xcb_window_t icon, std::uint32_t color) {
        xcb_change_window_attributes(client_.get(), panel_, XCB_CW_BACK_PIXEL, &color);
        xcb_clear_area(client_.get(), 0, panel_, 0, 0, 0, 0);
        xcb_clear_area(client_.get(), 1, icon, 0, 0, 0, 0);
        client_.sync();
    }

    void resize(xcb_window_t icon, std::uint32_t side) {
        const std::array values{side, side};
        xcb_configure_window(client_.get(), icon, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT,
                             values.data());
        client_.sync();
    }

    /// Tells the icon of a size that it does not have, and has it draw itself anew.
    void pretendSize(xcb_window_t icon, std::uint16_t side) {
        xcb_configure_notify_event_t change{};
        change.response_type = XCB_CONFIGURE_NOTIFY;
        change.event = change.window = icon;
        change.width = change.height = side;
        xcb_send_event(client_.get(), 0, icon, XCB_EVENT_MASK_STRUCTURE_NOTIFY,
                       reinterpret_cast<const char*>(&change));
        xcb_clear_area(client_.get(), 1, icon, 0, 0, 0, 0);
        client_.sync();
    }

    void nameColor(std::uint32_t color) {
        const auto component = [&](unsigned int shift) { return (color >> shift & 0xFFU) * 0x101U; };
        client_.setNumbers(
            window_, "_NET_SYSTEM_TRAY_COLORS", XCB_ATOM_CARDINAL,
            std::array{component(16), component(8), component(0), 0U, 0U, 0U, 0U, 0U, 0U, 0U, 0U, 0U});
    }

    /// The pixel of a window at a place, 0 when it cannot be read.
    std::uint32_t pixel(xcb_window_t window, std::int16_t x, std::int16_t y) {
        const XcbPointer<xcb_get_image_reply_t> reply(xcb_get_image_reply(
            client_.get(), xcb_get_image(client_.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, window, x, y, 1, 1, ~0U),
            nullptr));
        std::uint32_t value = 0;
        if (reply) {
            std::memcpy(&value, xcb_get_image_data(reply.get()), sizeof value);
        }
        return value;
    }

    bool isViewable(xcb_window_t window) {
        const XcbPointer<xcb_get_window_attributes_reply_t> reply(xcb_get_window_attributes_reply(
            client_.get(), xcb_get_window_attributes(client_.get(), window), nullptr));
        return reply && reply->map_state == XCB_MAP_STATE_VIEWABLE;
    }

private:
    const xcb_screen_t& screen() const {
        return *xcb_setup_roots_iterator(xcb_get_setup(client_.get())).data;
    }

    xcb_visualid_t alphaVisual() const {
        for (auto depths = xcb_screen_allowed_depths_iterator(&screen()); depths.rem > 0;
             xcb_depth_next(&depths)) {
            if (depths.data->depth == 32 && xcb_depth_visuals_length(depths.data) > 0) {
                return xcb_depth_visuals(depths.data)->visual_id;
            }
        }
        ADD_FAILURE() << "the server has no visual with an alpha channel";
        return 0;
    }

    bool hasAlpha_;
    X11TestClient client_;
    xcb_window_t window_;
    xcb_window_t panel_ = XCB_WINDOW_NONE;
};

/// A tray that ends gives its icons back to the desktop, where the window manager takes them in.
struct SettledWindowManager {
    SettledWindowManager() { TestSupport::waitForManager(); }
};

class TrayStatusItemTest : public testing::Test {
protected:
    SettledWindowManager windowManager_;
    std::unique_ptr<X11Connection> connection_ = X11Connection::open();
    TestSupport::HandDrivenQueue queue_;
    TestSupport::RecordingLog log_;
    int renderedSize_ = 0;
    TrayStatusItem item_{connection_.get(),
                         queue_,
                         log_,
                         {.render =
                              [this](const auto&, const QColor& color, int size) {
                                  renderedSize_ = size;
                                  QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
                                  image.fill(color);
                                  return image;
                              },
                          .popUpMenu = [](const auto&, const auto&) {},
                          .pointer = [] { return std::nullopt; },
                          .isPlausible = [](const QPoint&) { return true; },
                          .textColor = Qt::blue}};

    static bool isRequested(FakeTray& tray) {
        return spinUntil([&] { return tray.request().has_value(); });
    }

    /// The window of the icon, taken into a panel of that colour.
    xcb_window_t embedIn(FakeTray& tray, std::uint32_t color) {
        item_.setImage({"anything", 18, 18, true, {}});
        queue_.advance(std::chrono::seconds(1));
        std::optional<xcb_window_t> icon;
        EXPECT_TRUE(spinUntil([&] { return (icon = tray.request()).has_value(); }));
        tray.embed(icon.value_or(XCB_WINDOW_NONE), color);
        return icon.value_or(XCB_WINDOW_NONE);
    }

    /// Whether the icon's middle comes to have a colour that the condition likes.
    template <class Condition>
    static bool comesToHave(FakeTray& tray, xcb_window_t icon, Condition condition) {
        return spinUntil([&] { return condition(QColor::fromRgb(tray.pixel(icon, 11, 11))); });
    }

    static bool isLight(const QColor& color) { return color.lightness() > 230; }
    static bool isDark(const QColor& color) { return color.lightness() < 40; }
};

TEST_F(TrayStatusItemTest, saysOnceThatNoTrayHasAppeared) {
    item_.setImage({});
    queue_.advance(std::chrono::seconds(14));
    EXPECT_THAT(log_.lines, IsEmpty());
    queue_.advance(std::chrono::seconds(2));
    EXPECT_THAT(log_.lines, ElementsAre(HasSubstr("no panel with a tray")));
    queue_.advance(std::chrono::hours(1));
    EXPECT_EQ(log_.lines.size(), 1U);
}

TEST_F(TrayStatusItemTest, saysNothingWhenATrayHasAppeared) {
    item_.setImage({});
    {
        FakeTray tray;
        EXPECT_TRUE(isRequested(tray));
    }
    queue_.advance(std::chrono::hours(1));
    EXPECT_THAT(log_.lines, IsEmpty());
}

TEST_F(TrayStatusItemTest, asksEachTrayOnce) {
    item_.setImage({});
    for (int round = 0; round < 2; ++round) {
        FakeTray tray;
        EXPECT_TRUE(isRequested(tray));
        queue_.advance(std::chrono::seconds(1));
        EXPECT_FALSE(spinUntil([&] { return tray.request().has_value(); }, std::chrono::milliseconds(50)));
    }
}

TEST_F(TrayStatusItemTest, asksNoTrayBeforeThereIsAnImage) {
    FakeTray tray;
    queue_.advance(std::chrono::seconds(1));
    EXPECT_FALSE(spinUntil([&] { return tray.request().has_value(); }, std::chrono::milliseconds(50)));
    item_.setImage({});
    EXPECT_TRUE(isRequested(tray));
}

TEST_F(TrayStatusItemTest, tellsWhetherThereIsATray) {
    std::vector<bool> told;
    const auto observer = item_.addPanelObserver([&] { told.push_back(item_.hasPanel()); });
    item_.setImage({});
    queue_.advance(std::chrono::seconds(1));
    EXPECT_FALSE(item_.hasPanel());
    {
        FakeTray tray;
        EXPECT_TRUE(spinUntil([&] { return item_.hasPanel(); }));
    }
    EXPECT_TRUE(spinUntil([&] { return !item_.hasPanel(); }));
    EXPECT_THAT(told, ElementsAre(true, false));
}

TEST_F(TrayStatusItemTest, isTintedForThePanelItStandsOn) {
    FakeTray tray;
    const auto icon = embedIn(tray, darkGray);
    EXPECT_TRUE(comesToHave(tray, icon, isLight));
    EXPECT_EQ(tray.pixel(icon, 0, 0), darkGray);
    EXPECT_EQ(renderedSize_, 18);
    tray.recolor(icon, lightGray);
    EXPECT_TRUE(comesToHave(tray, icon, isDark));
    EXPECT_EQ(tray.pixel(icon, 0, 0), lightGray);
}

TEST_F(TrayStatusItemTest, isTintedForAPanelThatShinesThrough) {
    FakeTray tray(true);
    const auto icon = embedIn(tray, opaque | darkGray);
    EXPECT_TRUE(comesToHave(tray, icon, isLight));
    EXPECT_EQ(tray.pixel(icon, 0, 0), 0U);
}

TEST_F(TrayStatusItemTest, hasTheColourOfTextOnAPanelThatCannotBeSeen) {
    FakeTray tray(true);
    const auto icon = embedIn(tray, 0);
    EXPECT_TRUE(comesToHave(tray, icon, [](const QColor& color) { return color == QColor(Qt::blue); }));
}

TEST_F(TrayStatusItemTest, hasTheColourThatTheTrayNames) {
    FakeTray tray;
    tray.nameColor(red);
    const auto icon = embedIn(tray, lightGray);
    EXPECT_TRUE(comesToHave(tray, icon, [](const QColor& color) { return color == QColor::fromRgb(red); }));
    tray.nameColor(darkGray);
    EXPECT_TRUE(
        comesToHave(tray, icon, [](const QColor& color) { return color == QColor::fromRgb(darkGray); }));
}

TEST_F(TrayStatusItemTest, growsWithThePanel) {
    FakeTray tray;
    const auto icon = embedIn(tray, lightGray);
    EXPECT_TRUE(comesToHave(tray, icon, isDark));
    tray.resize(icon, 16);
    EXPECT_TRUE(spinUntil([&] { return renderedSize_ == 16; }));
    tray.resize(icon, 48);
    EXPECT_TRUE(spinUntil([&] { return renderedSize_ == 32; }));
    // There is a drawing for 18 pixels, and none for two thirds of 28.
    tray.resize(icon, 28);
    EXPECT_TRUE(spinUntil([&] { return renderedSize_ == 18; }));
}

TEST_F(TrayStatusItemTest, isNotDrawnAsLargeAsNoPanelIs) {
    FakeTray tray(true);
    const auto icon = embedIn(tray, lightGray | opaque);
    ASSERT_TRUE(spinUntil([&] { return renderedSize_ != 0; }, patience));
    renderedSize_ = 0;
    tray.pretendSize(icon, 8000);
    EXPECT_TRUE(spinUntil([&] { return renderedSize_ != 0; }, patience));
    EXPECT_LE(renderedSize_, 1024);
}

TEST_F(TrayStatusItemTest, middleButtonDoesTheSecondAction) {
    std::vector<std::uint64_t> clicks;
    int second = 0;
    item_.setAction(1U << Platform::EventType::leftMouseUp | 1U << Platform::EventType::rightMouseUp,
                    [&](const auto& event) { clicks.push_back(event->type); });
    FakeTray tray;
    const auto icon = embedIn(tray, lightGray);
    tray.release(icon, XCB_BUTTON_INDEX_2);
    tray.release(icon, XCB_BUTTON_INDEX_4);
    tray.release(icon, XCB_BUTTON_INDEX_1);
    EXPECT_TRUE(spinUntil([&] { return !clicks.empty(); }));
    EXPECT_EQ(second, 0) << "nothing was asked for";
    item_.setSecondaryAction([&] { ++second; });
    tray.release(icon, XCB_BUTTON_INDEX_2);
    EXPECT_TRUE(spinUntil([&] { return second == 1; }));
    EXPECT_THAT(clicks, ElementsAre(Platform::EventType::leftMouseUp));
}

TEST_F(TrayStatusItemTest, hasNoPlaceUntilATrayHasTakenItIn) {
    item_.setImage({"anything", 18, 18, true, {}});
    FakeTray tray;
    std::optional<xcb_window_t> icon;
    ASSERT_TRUE(spinUntil([&] { return (icon = tray.request()).has_value(); }));
    EXPECT_FALSE(item_.frame()) << "the corner of the screen, where it was made, is no place of an icon";
    tray.embed(*icon, lightGray);
    ASSERT_TRUE(spinUntil([&] { return item_.frame().has_value(); }));
    EXPECT_EQ(item_.frame()->x, 10);
}

TEST_F(TrayStatusItemTest, doesNotStandOnTheDesktopWhenItsTrayDies) {
    auto tray = std::make_unique<FakeTray>();
    const auto icon = embedIn(*tray, lightGray);
    EXPECT_TRUE(comesToHave(*tray, icon, isDark));
    tray.reset();
    FakeTray observer;
    EXPECT_TRUE(spinUntil([&] { return !observer.isViewable(icon); }));
    EXPECT_TRUE(isRequested(observer));
}

} // namespace
