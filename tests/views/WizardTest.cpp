#include "core/Localizer.h"
#include "tests/support/OnboardingWorld.h"
#include "tests/views/ViewFixture.h"

#include <QAccessible>
#include <QKeyEvent>

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace TestSupport {
namespace {

using CurtainCore::OnboardingStep;
using CurtainCore::PermissionKind;
using Platform::AuthorizationStatus;
using Platform::MediaType;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::UnorderedElementsAre;

enum class Answer { ask, granted, denied };

/// A page of the wizard in one of its states.
struct Look {
    const char* name;
    OnboardingStep step;
    Answer answer = Answer::ask;
    /// No camera, no microphone, no call apps.
    bool hasNothing = false;
    std::optional<Platform::HidingObstacle> obstacle = std::nullopt;
};

const std::vector<Look>& looks() {
    using Platform::HidingObstacle;
    static const std::vector<Look> all{
        {"welcome", OnboardingStep::welcome()},
        {"compatibility", OnboardingStep::compatibility()},
        {"compatibility-nothing", OnboardingStep::compatibility(), Answer::ask, true},
        {"unsupported-wayland", OnboardingStep::compatibility(), Answer::ask, false,
         HidingObstacle::waylandSession},
        {"unsupported-manager", OnboardingStep::compatibility(), Answer::ask, false,
         HidingObstacle::noWindowManager},
        {"unsupported-session", OnboardingStep::compatibility(), Answer::ask, false,
         HidingObstacle::nextSessionNeeded},
        {"unsupported-ignored", OnboardingStep::compatibility(), Answer::ask, false,
         HidingObstacle::windowManagerIgnoresHiding},
        {"unsupported-extension", OnboardingStep::compatibility(), Answer::ask, false,
         HidingObstacle::extensionMissing},
        {"unsupported-extension-off", OnboardingStep::compatibility(), Answer::ask, false,
         HidingObstacle::extensionOff},
        {"unsupported-extension-fails", OnboardingStep::compatibility(), Answer::ask, false,
         HidingObstacle::extensionFails},
        {"unsupported-open", OnboardingStep::compatibility(), Answer::ask, false,
         HidingObstacle::notKnownYet},
        {"desktop", OnboardingStep::permission(PermissionKind::desktop)},
        {"desktop-granted", OnboardingStep::permission(PermissionKind::desktop), Answer::granted},
        {"microphone", OnboardingStep::permission(PermissionKind::microphone)},
        {"microphone-granted", OnboardingStep::permission(PermissionKind::microphone), Answer::granted},
        {"microphone-missing", OnboardingStep::permission(PermissionKind::microphone), Answer::granted, true},
        {"microphone-denied", OnboardingStep::permission(PermissionKind::microphone), Answer::denied},
        {"camera", OnboardingStep::permission(PermissionKind::camera)},
        {"camera-granted", OnboardingStep::permission(PermissionKind::camera), Answer::granted},
        {"camera-missing", OnboardingStep::permission(PermissionKind::camera), Answer::granted, true},
        {"camera-denied", OnboardingStep::permission(PermissionKind::camera), Answer::denied},
        {"summary", OnboardingStep::summary()},
    };
    return all;
}

/// A sunset, so that pictures of the page with the camera show something.
std::shared_ptr<const Platform::Picture> sunset() {
    auto picture = std::make_shared<Platform::Picture>(*plainPicture(640, 360, 0, 0, 0));
    for (int y = 0; y < 360; ++y) {
        for (int x = 0; x < 640; ++x) {
            auto* const pixel = &picture->pixels[static_cast<std::size_t>(y * 640 + x) * 4];
            const bool isSun = std::hypot(x - 320, y - 180) < 70;
            pixel[0] = static_cast<std::byte>(isSun ? 0xEC : 0xFA - y / 3);
            pixel[1] = static_cast<std::byte>(isSun ? 0xF6 : 0xC8);
            pixel[2] = static_cast<std::byte>(isSun ? 0xFF : 0xB9 + y / 6);
        }
    }
    return picture;
}

class Wizard : public ViewTest, protected OnboardingWorld {
protected:
    std::shared_ptr<Curtain::OnboardingViewModel> model;

    void make(const OnboardingStep& step, const std::string& language = "en") {
        model = makeModel(language, step);
        model->onFinish = [this] { ++finished; };
    }

    ShownView show(Motion motion = Motion::full) {
        return {{"qrc:/Curtain/OnboardingWizardView.qml", model}, QSize(420, 460), motion};
    }

    ShownView show(const OnboardingStep& step, const std::string& language = "en") {
        make(step, language);
        return show();
    }
    ShownView show(PermissionKind kind, const std::string& language = "en") {
        return show(OnboardingStep::permission(kind), language);
    }

    /// As its name says, with what the page needs for it.
    ShownView show(const Look& look, const std::string& language) {
        capture.cameras.clear();
        if (!look.hasNothing) {
            capture.cameras = {{"camera", "Camera"}};
        }
        audio.isInputDeviceThere = !look.hasNothing;
        workspace.urls.clear();
        workspace.handlers.clear();
        audio.inputFormat = look.hasNothing ? Platform::AudioFormat{0, 0} : Platform::AudioFormat{1, 48000};
        if (!look.hasNothing) {
            workspace.urls = {{"us.zoom.xos", "/a"}, {"com.microsoft.teams2", "/b"}};
            workspace.handlers["https"] = "/c";
        }
        system.version = look.obstacle ? 0 : 14;
        system.obstacle = look.obstacle;
        const auto status =
            look.answer == Answer::denied ? AuthorizationStatus::denied : AuthorizationStatus::authorized;
        authorization.statuses = {{MediaType::audio, status}, {MediaType::video, status}};
        make(look.step, language);
        if (look.answer != Answer::ask || look.step == OnboardingStep::summary()) {
            model->requestCurrentPermission();
            settle();
        }
        if (look.answer == Answer::granted && isMicrophoneOn()) {
            speak(0.7F);
        }
        capture.session->show(isCameraOn() ? sunset() : nullptr);
        return show(Motion::reduced);
    }

    void speak(float level) {
        // The level is twenty times the root of the mean square.
        audio.engine().feedSamples(std::vector<float>(1024, level / 20));
        settle();
    }

    int finished = 0;
};

TEST_F(Wizard, AnotherLanguageChangesEveryTextOfAnyPage) {
    for (const auto& look : looks()) {
        SCOPED_TRACE(look.name);
        const auto rest = [&] {
            cameraManager.stop();
            micMonitor.stop();
            settle();
        };
        rest();
        const auto expected = show(look, "fr").texts();
        rest();
        auto view = show(look, "en");
        EXPECT_NE(view.texts(), expected);
        model->setLang("fr");
        view.settle();
        EXPECT_EQ(view.texts(), expected);
        model->setLang("ar");
        view.settle();
        EXPECT_THAT(view.problems(true), IsEmpty());
    }
}

TEST_F(Wizard, WordsFitOnEveryPageInEveryLanguage) {
    for (const auto& language : languages()) {
        for (const auto& look : looks()) {
            SCOPED_TRACE(language + " " + look.name);
            cameraManager.stop();
            micMonitor.stop();
            settle();
            auto view = show(look, language);
            EXPECT_THAT(view.problems(CurtainCore::Localizer::isRightToLeft(language)), IsEmpty());
            view.picture("wizard-" + std::string(look.name) + "-" + language);
        }
    }
}

TEST_F(Wizard, BlocksAreWhereTheyBelong) {
    const auto expect = [](ShownView& view, const std::vector<std::pair<const char*, QRectF>>& places) {
        for (const auto& [name, place] : places) {
            EXPECT_EQ(view.place(name), place) << name;
        }
    };
    {
        auto view = show(OnboardingStep::welcome());
        expect(view, {{"dots", {167, 24, 85, 7}},
                      {"logo", {110, 74, 200, 52}},
                      {"body", {36, 226, 348, 60}},
                      {"goOn", {24, 370, 372, 40}},
                      {"note", {24, 418, 372, 16}}});
        // As wide as its even lines, in the middle.
        const auto title = view.place("title");
        EXPECT_NEAR(title.center().x(), 210, 1);
        EXPECT_EQ(title.y(), 160);
        EXPECT_EQ(title.height(), 56);
    }
    {
        auto view = show(looks().at(1), "en");
        expect(view, {{"seal", {182, 64, 56, 56}},
                      {"title", {24, 136, 372, 26}},
                      {"body", {36, 166, 348, 20}},
                      {"rows", {24, 208, 372, 150}},
                      {"goOn", {24, 396, 372, 40}}});
    }
    {
        auto view = show(PermissionKind::desktop);
        expect(view, {{"liveArea", {24, 51, 372, 180}},
                      {"title", {24, 250, 372, 26}},
                      {"body", {36, 283, 348, 40}},
                      {"goOn", {24, 396, 372, 40}}});
    }
    authorization.statuses[MediaType::video] = AuthorizationStatus::denied;
    {
        auto view = show(PermissionKind::camera);
        model->requestCurrentPermission();
        view.settle();
        expect(view, {{"placeholder", {24, 51, 372, 180}},
                      {"body", {26, 283, 368, 40}},
                      {"goOn", {24, 350, 372, 38}},
                      {"goOnWithout", {24, 396, 372, 40}}});
    }
    {
        auto view = show(OnboardingStep::summary());
        expect(view, {{"seal", {182, 64, 56, 56}},
                      {"title", {24, 140, 372, 26}},
                      {"rows", {24, 192, 372, 140}},
                      {"goOn", {24, 396, 372, 40}}});
    }
}

TEST_F(Wizard, WelcomeSaysWhatCurtainDoes) {
    auto view = show(OnboardingStep::welcome());
    EXPECT_THAT(view.texts(),
                UnorderedElementsAre("Share your screen without surprises",
                                     "Before every call, Curtain checks your camera, mic, notifications and "
                                     "what's showing on screen. You walk in; the private stuff stays out.",
                                     "See if my computer qualifies",
                                     "~30s · 3 permissions · nothing is recorded"));
    view.click("goOn");
    EXPECT_EQ(model->page(), "compatibility");
}

TEST_F(Wizard, CompatibilityListsWhatWasFound) {
    auto view = show(looks().at(1), "en");
    EXPECT_THAT(view.texts(), UnorderedElementsAre("Your computer is perfect for this",
                                                   "You're exactly who we built Curtain for.", "Hiding apps",
                                                   "Camera and microphone", "Video-call apps",
                                                   "Zoom · Teams · Meet", "Continue"));
    EXPECT_EQ(view.find("missing"), nullptr);
    EXPECT_EQ(view.find("spinner"), nullptr);
    view.click("goOn");
    EXPECT_EQ(model->page(), "desktop");
}

TEST_F(Wizard, CompatibilityShowsWhatIsMissingAndLeadsOnAllTheSame) {
    auto view = show(looks().at(2), "en");
    EXPECT_THAT(view.texts(), UnorderedElementsAre("Your computer is perfect for this",
                                                   "You're exactly who we built Curtain for.", "Hiding apps",
                                                   "Camera and microphone", "Video-call apps", "Continue"));
    const auto mark = [&](const char* row) {
        return view.find(row)->findChild<QQuickItem*>("ok") != nullptr ? "ok" : "missing";
    };
    EXPECT_STREQ(mark("system"), "ok");
    EXPECT_STREQ(mark("devices"), "missing");
    EXPECT_STREQ(mark("apps"), "missing");
    view.click("goOn");
    EXPECT_EQ(model->page(), "desktop");
}

TEST_F(Wizard, ASessionThatHasNotAnsweredIsWaitedFor) {
    system.version = 0;
    system.obstacle = Platform::HidingObstacle::notKnownYet;
    auto view = show(OnboardingStep::compatibility());
    EXPECT_NE(view.find("spinner"), nullptr);
    EXPECT_NE(view.find("waiting"), nullptr);
    EXPECT_NE(view.find("close"), nullptr);
    EXPECT_EQ(view.find("verdict"), nullptr);
    system.version = 14;
    system.obstacle.reset();
    mainQueue.advance(0.25);
    view.settle();
    EXPECT_EQ(view.find("spinner"), nullptr);
    EXPECT_EQ(view.find("close"), nullptr);
    EXPECT_TRUE(view.find("goOn")->hasActiveFocus());
}

TEST_F(Wizard, OneClickSwitchesTheExtensionOn) {
    system.version = 0;
    system.obstacle = Platform::HidingObstacle::extensionOff;
    auto view = show(OnboardingStep::compatibility());
    EXPECT_TRUE(view.find("switchOn")->hasActiveFocus());
    view.click("switchOn");
    EXPECT_EQ(system.switchedOn, 1);
    EXPECT_EQ(view.find("switchOn"), nullptr);
    EXPECT_NE(view.find("spinner"), nullptr);
    system.version = 14;
    system.obstacle.reset();
    mainQueue.advance(0.25);
    view.settle();
    EXPECT_TRUE(view.find("goOn")->hasActiveFocus());
}

TEST_F(Wizard, AnUnsupportedSessionLeadsNowhereAndSaysWhy) {
    auto view = show(looks().at(4), "en");
    EXPECT_THAT(view.texts(),
                UnorderedElementsAre("Curtain can't hide apps in this session. Please log in to another one "
                                     "to continue.",
                                     "No window manager is running, so apps can't be hidden.",
                                     "Start a window manager, or choose a complete desktop at the login "
                                     "screen.",
                                     "Close"));
    EXPECT_EQ(view.find("goOn"), nullptr);
    int closed = 0;
    model->onClose = [&] { ++closed; };
    EXPECT_TRUE(view.find("close")->hasActiveFocus());
    view.press(Qt::Key_Space);
    EXPECT_EQ(closed, 1);
    view.click("close");
    EXPECT_EQ(closed, 2);
    for (const auto key : {Qt::Key_Return, Qt::Key_Space, Qt::Key_Tab, Qt::Key_Space}) {
        view.press(key);
    }
    EXPECT_EQ(model->page(), "compatibility");
    EXPECT_EQ(finished, 0);
}

TEST_F(Wizard, DesktopIsClearedWhenItIsGranted) {
    auto view = show(PermissionKind::desktop);
    EXPECT_THAT(view.texts(), UnorderedElementsAre("Tidy your desktop",
                                                   "So we can hide your desktop files when you share. First, "
                                                   "allow access.",
                                                   "Allow"));
    EXPECT_NE(view.find("file0"), nullptr);
    view.click("goOn");
    settle();
    view.settle();
    EXPECT_TRUE(ShownView::waitFor([&] { return view.find("file0") == nullptr; }));
    EXPECT_THAT(view.texts(),
                UnorderedElementsAre("Tidy your desktop", "Ready to hide your desktop", "Continue"));
    view.click("goOn");
    EXPECT_EQ(model->page(), "microphone");
}

TEST_F(Wizard, WithReducedMotionTheDesktopIsClearedAtOnce) {
    auto view = show(PermissionKind::desktop);
    view.engine().style().setAppearance({.isMotionReduced = true});
    model->requestCurrentPermission();
    settle();
    EXPECT_EQ(view.find("file0"), nullptr);
    model->advance();
    EXPECT_EQ(view.place("dot3").width(), 20);
}

TEST_F(Wizard, MicrophoneIsShownOnceItIsGranted) {
    auto view = show(PermissionKind::microphone);
    EXPECT_THAT(view.texts(),
                UnorderedElementsAre("Check your microphone",
                                     "We make sure you're heard — and nothing leaks. First, allow access.",
                                     "Allow"));
    EXPECT_NE(view.find("placeholder"), nullptr);
    EXPECT_EQ(view.find("segment0"), nullptr);
    view.click("goOn");
    ASSERT_TRUE(isMicrophoneOn());
    view.settle();
    EXPECT_EQ(view.find("placeholder"), nullptr);
    EXPECT_NE(view.find("segment7"), nullptr);
    EXPECT_EQ(view.find("segment8"), nullptr);
    EXPECT_THAT(view.texts(),
                UnorderedElementsAre("Check your microphone", "We hear you loud and clear", "Continue"));
}

TEST_F(Wizard, BarsRiseWithTheVoice) {
    auto view = show(PermissionKind::microphone);
    view.engine().style().setAppearance({.isMotionReduced = true});
    model->requestCurrentPermission();
    ASSERT_TRUE(isMicrophoneOn());
    for (const auto level : {0.0F, 0.05F, 0.125F, 0.13F, 0.5F, 0.8F, 1.0F}) {
        speak(level);
        const auto shown = model->level();
        EXPECT_NEAR(shown, level, 1e-5);
        for (int index = 0; index < 8; ++index) {
            SCOPED_TRACE(std::to_string(level) + " " + std::to_string(index));
            const auto name = "segment" + QString::number(index);
            auto* const segment = view.find(name);
            ASSERT_NE(segment, nullptr);
            EXPECT_NEAR(segment->height(), std::max(8.0, 132 * std::min((0.4 + 0.1 * index) * shown, 1.0)),
                        1e-6);
            EXPECT_DOUBLE_EQ(segment->opacity(), index / 8.0 < shown ? 1 : 0.18);
            EXPECT_EQ(segment->property("color").value<QColor>(), QColor(index < 3   ? "#34C778"
                                                                         : index < 6 ? "#F2C744"
                                                                                     : "#F58A2B"));
            EXPECT_NEAR(view.place(name).center().y(), 141, 1e-6);
            EXPECT_DOUBLE_EQ(view.place(name).x(), 75 + 36 * index);
        }
    }
}

TEST_F(Wizard, BarsFollowTheVoiceWithoutBeingAskedAgain) {
    auto view = show(PermissionKind::microphone);
    model->requestCurrentPermission();
    ASSERT_TRUE(isMicrophoneOn());
    view.settle();
    const auto atRest = view.place("segment7").height();
    speak(0.9F);
    EXPECT_TRUE(ShownView::waitFor([&] { return view.place("segment7").height() > atRest + 80; }));
    speak(0);
    EXPECT_TRUE(ShownView::waitFor([&] { return view.place("segment7").height() == atRest; }));
}

TEST_F(Wizard, CameraIsShownOnceItIsGranted) {
    auto view = show(PermissionKind::camera);
    EXPECT_THAT(view.texts(), UnorderedElementsAre("Check your camera",
                                                   "So you see how you look before you walk in. Nothing is "
                                                   "recorded. First, allow access.",
                                                   "Allow"));
    view.click("goOn");
    ASSERT_TRUE(isCameraOn());
    capture.session->show(plainPicture(372, 180, 200, 30, 30));
    view.settle();
    EXPECT_THAT(view.texts(),
                UnorderedElementsAre("Check your camera", "Camera access OK — that's how they'll see you",
                                     "Continue"));
    EXPECT_EQ(view.find("noPicture"), nullptr);
    const auto image = view.window().grabWindow();
    const auto ratio = view.window().effectiveDevicePixelRatio();
    const auto colorAt = [&](int x, int y) {
        return image.pixelColor((QPointF(x + 0.5, y + 0.5) * ratio).toPoint());
    };
    EXPECT_EQ(colorAt(210, 141), QColor(200, 30, 30));
    for (const auto& corner : {QPoint(24, 51), QPoint(395, 51), QPoint(24, 230), QPoint(395, 230)}) {
        EXPECT_EQ(colorAt(corner.x(), corner.y()), QColor("#F4F5F8")) << "round corners";
    }
}

TEST_F(Wizard, WithoutDevicesTheLiveAreasSaySo) {
    capture.cameras.clear();
    audio.inputFormat = {0, 0};
    auto view = show(PermissionKind::microphone);
    view.click("goOn");
    settle();
    view.settle();
    EXPECT_THAT(view.texts(), Contains("No input device"));
    EXPECT_THAT(view.texts(), Not(Contains("We hear you loud and clear")));
    view.click("goOn");
    view.click("goOn");
    settle();
    view.settle();
    EXPECT_NE(view.find("noPicture"), nullptr);
    EXPECT_THAT(view.texts(), Contains("No camera found"));
    EXPECT_EQ(view.find("validation"), nullptr);
    view.click("goOn");
    EXPECT_EQ(model->page(), "summary");
    EXPECT_THAT(view.texts(), testing::IsSupersetOf({"No input device", "No camera found"}));
}

TEST_F(Wizard, TheSummarySaysWhatIsMissingInEveryLanguage) {
    capture.cameras.clear();
    authorization.statuses[MediaType::audio] = AuthorizationStatus::denied;
    for (const auto& language : languages()) {
        SCOPED_TRACE(language);
        auto view = show(PermissionKind::microphone, language);
        view.click("goOn");
        view.click("goOnWithout");
        view.click("goOn");
        settle();
        view.click("goOn");
        ASSERT_EQ(model->page(), "summary");
        EXPECT_THAT(view.texts(), testing::IsSupersetOf({model->microphoneGap(), model->cameraGap()}));
        EXPECT_NE(model->microphoneGap(), "");
        EXPECT_THAT(view.problems(model->isRightToLeft()), IsEmpty());
        EXPECT_LT(view.place("rows").bottom(), view.place("goOn").top() - 8);
        view.picture("wizard-summary-missing-" + language);
    }
}

TEST_F(Wizard, ACameraThatTheSystemForbidsLeadsToNoSettings) {
    authorization.statuses[MediaType::video] = AuthorizationStatus::restricted;
    for (const auto& language : languages()) {
        SCOPED_TRACE(language);
        auto view = show(PermissionKind::camera, language);
        view.click("goOn");
        EXPECT_THAT(view.texts(), Contains(model->texts()->cameraForbidden()));
        EXPECT_EQ(view.find("goOnWithout"), nullptr);
        EXPECT_THAT(view.problems(model->isRightToLeft()), IsEmpty());
        view.picture("wizard-camera-forbidden-" + language);
        view.click("goOn");
        EXPECT_THAT(urlOpener.opened, IsEmpty());
        EXPECT_EQ(model->page(), "summary");
    }
}

TEST_F(Wizard, WhatIsGrantedMeanwhileIsSeenWhenItsUserComesBack) {
    authorization.statuses[MediaType::video] = AuthorizationStatus::denied;
    auto view = show(PermissionKind::camera);
    view.click("goOn");
    ASSERT_TRUE(model->isDenied());
    QQuickWindow settings;
    settings.show();
    settings.requestActivate();
    ASSERT_TRUE(ShownView::waitFor([&] { return settings.isActive(); }));
    authorization.statuses[MediaType::video] = AuthorizationStatus::authorized;
    view.window().requestActivate();
    EXPECT_TRUE(ShownView::waitFor([&] { return model->isGranted(); }));
    EXPECT_TRUE(isCameraOn());
}

TEST_F(Wizard, TheButtonThatGoesWithARefusalLeavesTheKeyboardToTheOther) {
    authorization.statuses[MediaType::video] = AuthorizationStatus::denied;
    auto view = show(PermissionKind::camera);
    view.press(Qt::Key_Space);
    view.press(Qt::Key_Tab);
    ASSERT_TRUE(view.find("goOnWithout")->hasActiveFocus());
    authorization.statuses[MediaType::video] = AuthorizationStatus::authorized;
    model->lookAgain();
    view.settle();
    EXPECT_EQ(view.find("goOnWithout"), nullptr);
    ASSERT_TRUE(view.find("goOn")->hasActiveFocus());
    EXPECT_TRUE(view.find("goOn")->property("visualFocus").toBool());
    view.press(Qt::Key_Return);
    EXPECT_EQ(model->page(), "summary");
}

TEST_F(Wizard, DeniedPageLeadsToTheSettingsAndOn) {
    authorization.statuses[MediaType::audio] = AuthorizationStatus::denied;
    auto view = show(PermissionKind::microphone);
    view.click("goOn");
    EXPECT_THAT(view.texts(),
                UnorderedElementsAre("Check your microphone",
                                     "Access denied. Open the system settings to grant it, then retry.",
                                     "Open system settings", "Continue"));
    EXPECT_NE(view.find("placeholder"), nullptr);
    view.click("goOn");
    EXPECT_THAT(urlOpener.opened, ElementsAre("x-apple.systempreferences:com.apple.preference.security"));
    EXPECT_EQ(model->page(), "microphone");
    view.click("goOnWithout");
    EXPECT_EQ(model->page(), "camera");
}

TEST_F(Wizard, DeniedPageSaysThatThereAreNoSettingsToOpen) {
    authorization.statuses[MediaType::audio] = AuthorizationStatus::denied;
    urlOpener.canOpen = false;
    for (const auto& language : languages()) {
        SCOPED_TRACE(language);
        auto view = show(PermissionKind::microphone, language);
        view.click("goOn");
        view.click("goOn");
        EXPECT_THAT(view.texts(), Contains(model->settingsProblem()));
        EXPECT_THAT(view.problems(model->isRightToLeft()), IsEmpty());
    }
}

TEST_F(Wizard, SummaryShowsThreeRowsWhateverWasGranted) {
    {
        auto view = show(OnboardingStep::summary());
        EXPECT_THAT(view.texts(), UnorderedElementsAre("Access validated", "Desktop · 0 files to hide",
                                                       "Microphone · level detected",
                                                       "Camera · preview active", "Start using Curtain"));
        EXPECT_EQ(view.find("missing"), nullptr);
        view.click("goOn");
        EXPECT_EQ(finished, 1);
    }
    auto view = show(PermissionKind::desktop);
    view.click("goOn");
    settle();
    for (int page = 0; page < 3; ++page) {
        model->advance();
    }
    view.settle();
    EXPECT_THAT(view.texts(), Contains("Desktop · 3 files to hide"));
}

TEST_F(Wizard, ArabicIsMirrored) {
    auto view = show(looks().at(1), "ar");
    EXPECT_GT(view.place("dot0").x(), view.place("dot5").x());
    EXPECT_GT(view.place("ok").x(), 300);
    EXPECT_EQ(view.place("rows"), QRectF(24, 208, 372, 150));
    auto desktop = show(PermissionKind::desktop, "ar");
    EXPECT_LT(desktop.place("file0").x(), 100);
    EXPECT_NEAR(desktop.place("file0").x(), 420 - show(PermissionKind::desktop).place("file0").right(), 1e-6);
    auto bars = show(PermissionKind::microphone, "ar");
    bars.click("goOn");
    settle();
    bars.settle();
    EXPECT_GT(bars.place("segment0").x(), bars.place("segment7").x());
}

TEST_F(Wizard, TheWholeRoadWithTheKeyboard) {
    auto view = show(OnboardingStep::welcome());
    for (const auto* const page :
         {"compatibility", "desktop", "desktop", "microphone", "microphone", "camera", "camera", "summary"}) {
        view.press(Qt::Key_Return);
        settle();
        view.settle();
        EXPECT_EQ(model->page(), page);
    }
    EXPECT_EQ(finished, 0);
    view.press(Qt::Key_Space);
    EXPECT_EQ(finished, 1);
    EXPECT_TRUE(isMicrophoneOn());
    EXPECT_TRUE(isCameraOn());
}

TEST_F(Wizard, TheRingStaysWithOneWhoUsesTheKeyboard) {
    const auto hasRing = [](ShownView& view) { return view.find("goOn")->property("visualFocus").toBool(); };
    auto view = show(OnboardingStep::welcome());
    EXPECT_TRUE(view.find("goOn")->hasActiveFocus());
    EXPECT_FALSE(hasRing(view));
    view.press(Qt::Key_Tab);
    EXPECT_TRUE(hasRing(view));
    view.press(Qt::Key_Space);
    EXPECT_EQ(model->page(), "compatibility");
    EXPECT_TRUE(hasRing(view));
    view.picture("wizard-focus");
    view.click("goOn");
    EXPECT_EQ(model->page(), "desktop");
    EXPECT_TRUE(view.find("goOn")->hasActiveFocus());
    EXPECT_FALSE(hasRing(view));
}

TEST_F(Wizard, BothButtonsOfADeniedPageAreReachedWithTab) {
    authorization.statuses[MediaType::video] = AuthorizationStatus::denied;
    auto view = show(PermissionKind::camera);
    view.press(Qt::Key_Space);
    view.press(Qt::Key_Space);
    EXPECT_THAT(urlOpener.opened, SizeIs(1));
    view.press(Qt::Key_Tab);
    EXPECT_TRUE(view.find("goOnWithout")->hasActiveFocus());
    view.press(Qt::Key_Return);
    EXPECT_EQ(model->page(), "summary");
}

TEST_F(Wizard, ADoubleClickCountsOnce) {
    auto view = show(OnboardingStep::welcome());
    const auto send = [&](QEvent::Type type) {
        const auto place = view.place("goOn").center();
        QMouseEvent event(type, place, view.window().mapToGlobal(place), Qt::LeftButton,
                          type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&view.window(), &event);
    };
    // What the answer to the first click changes is there when the second one comes.
    const auto doubleClick = [&] {
        send(QEvent::MouseButtonPress);
        send(QEvent::MouseButtonRelease);
        settle();
        view.settle();
        send(QEvent::MouseButtonPress);
        send(QEvent::MouseButtonDblClick);
        send(QEvent::MouseButtonRelease);
        settle();
        view.settle();
    };
    model->advance();
    view.settle();
    doubleClick();
    EXPECT_EQ(model->page(), "desktop");
    EXPECT_FALSE(model->isGranted());
    doubleClick();
    EXPECT_EQ(model->page(), "desktop");
    EXPECT_TRUE(model->isGranted());
}

TEST_F(Wizard, ThePressOnAButtonIsNotLeftToTheBackground) {
    auto view = show(OnboardingStep::welcome());
    const auto isTaken = [&](const QPointF& place) {
        QMouseEvent press(QEvent::MouseButtonPress, place, view.window().mapToGlobal(place), Qt::LeftButton,
                          Qt::LeftButton, Qt::NoModifier);
        press.ignore();
        QCoreApplication::sendEvent(&view.window(), &press);
        const bool isAccepted = press.isAccepted();
        QMouseEvent release(QEvent::MouseButtonRelease, place, view.window().mapToGlobal(place),
                            Qt::LeftButton, Qt::NoButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&view.window(), &release);
        return isAccepted;
    };
    EXPECT_FALSE(isTaken({210, 330}));
    EXPECT_TRUE(isTaken(view.place("goOn").center()));
}

TEST_F(Wizard, AKeyThatIsHeldDownCountsOnce) {
    auto view = show(OnboardingStep::welcome());
    view.press(Qt::Key_Return);
    for (int repetition = 0; repetition < 5; ++repetition) {
        for (const auto type : {QEvent::KeyPress, QEvent::KeyRelease}) {
            for (const auto key : {Qt::Key_Return, Qt::Key_Space}) {
                QKeyEvent event(type, key, Qt::NoModifier, QString(), true);
                QCoreApplication::sendEvent(&view.window(), &event);
            }
        }
    }
    view.settle();
    EXPECT_EQ(model->page(), "compatibility");
}

TEST_F(Wizard, OddValuesDoNoHarm) {
    audio.inputFormat = {1, 48000};
    for (int file = 0; file < 123456; ++file) {
        files.addFile("/home/ada/Desktop/" + std::to_string(file));
    }
    workspace.urls = {
        {"us.zoom.xos", "/a"},     {"com.microsoft.teams2", "/b"}, {"com.cisco.webexmeetingsapp", "/c"},
        {"com.hnc.Discord", "/d"}, {"com.apple.FaceTime", "/e"},   {"com.google.Chrome", "/f"}};
    for (const auto& language : languages()) {
        SCOPED_TRACE(language);
        auto view = show(OnboardingStep::compatibility(), language);
        EXPECT_THAT(view.problems(model->isRightToLeft()), IsEmpty());
        model->advance();
        model->requestCurrentPermission();
        settle();
        for (int page = 0; page < 3; ++page) {
            model->advance();
        }
        view.settle();
        EXPECT_EQ(model->desktopFileCount(), 123459);
        EXPECT_THAT(view.problems(model->isRightToLeft()), IsEmpty());
    }
    auto view = show(OnboardingStep::welcome(), "xx");
    EXPECT_THAT(view.texts(), Contains("See if my computer qualifies"));
}

TEST_F(Wizard, AssistiveTechnologyHearsWhatThePageSays) {
    auto view = show(looks().at(1), "en");
    const auto name = [&](const char* item) {
        auto* const interface = QAccessible::queryAccessibleInterface(view.find(item));
        return interface == nullptr ? QString() : interface->text(QAccessible::Name);
    };
    EXPECT_EQ(name("dots"), "2 / 6");
    EXPECT_EQ(name("title"), "Your computer is perfect for this");
    EXPECT_EQ(name("apps"), "Video-call apps, Zoom · Teams · Meet: Looks good");
    EXPECT_EQ(name("goOn"), "Continue");
}

TEST_F(Wizard, FollowsADarkDesktop) {
    for (const auto* const language : {"en", "ru", "ar"}) {
        for (const auto& look : looks()) {
            SCOPED_TRACE(std::string(look.name) + ' ' + language);
            auto view = show(look, language);
            view.engine().style().setAppearance({.isDark = true, .isMotionReduced = true});
            view.settle();
            EXPECT_THAT(view.problems(model->isRightToLeft()), IsEmpty());
            const auto picture = view.picture(std::string("dark-wizard-") + look.name + '-' + language);
            EXPECT_LT(picture.pixelColor(2, 2).lightness(), 64);
        }
    }
}

TEST_F(Wizard, TheCurrentDotIsACapsule) {
    auto view = show(looks().at(1), "en");
    const auto dot = view.place("dot1");
    const auto picture = view.picture("wizard-dots");
    const auto ratio = picture.width() / view.root().width();
    const auto colorAt = [&](double x, double y) {
        return picture.pixelColor(static_cast<int>(x * ratio), static_cast<int>(y * ratio));
    };
    // At its corners stands what is behind it, in the middle of its ends the capsule.
    for (const auto x : {dot.left() + 0.4, dot.right() - 0.6}) {
        EXPECT_GT(colorAt(x, dot.top() + 0.4).lightness(), 200);
        EXPECT_GT(colorAt(x, dot.bottom() - 0.6).lightness(), 200);
        EXPECT_LT(colorAt(x, dot.center().y()).lightness(), 200);
    }
}

TEST_F(Wizard, NoWordOfAHeadlineStandsAlone) {
    for (const auto& language : languages()) {
        auto view = show(looks().at(0), language);
        auto* const title = view.find("title");
        ASSERT_NE(title, nullptr);
        const auto lines = title->property("lineCount").toInt();
        if (lines > 1) {
            EXPECT_LE(title->property("contentWidth").toDouble(), 1.2 * title->implicitWidth() / lines)
                << language;
        }
    }
}

} // namespace
} // namespace TestSupport
