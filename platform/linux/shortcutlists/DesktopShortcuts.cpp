#include "platform/linux/shortcutlists/DesktopShortcuts.h"

#include <cstddef>
#include <utility>

namespace LinuxPlatform {
namespace {

/// The same key combination with or without this one is one to the desktops.
constexpr auto functionModifier = Platform::HotKeyModifier::function;
constexpr Platform::MainQueue::Seconds patience{1};
constexpr Platform::HotKeyID trialID{0x54524C30, 0};

} // namespace

DesktopShortcuts::DesktopShortcuts(Platform::HotKeyService& service, Platform::MainQueue& mainQueue,
                                   SymbolsOfKey symbolsOfKey,
                                   std::vector<std::unique_ptr<ShortcutList>> lists)
    : service_(service),
      mainQueue_(mainQueue),
      symbolsOfKey_(std::move(symbolsOfKey)),
      lists_(std::move(lists)) {}

void DesktopShortcuts::isTaken(const Platform::HotKeyCombination& combination, Answer answer) {
    struct Question {
        Answer answer;
        std::size_t missing = 0;
    };
    const auto question = std::make_shared<Question>(Question{std::move(answer), lists_.size()});
    const auto settle = lifetime_.weak([this, question](bool isTaken) {
        if (auto toTell = std::exchange(question->answer, nullptr)) {
            mainQueue_.async(lifetime_.weak([toTell = std::move(toTell), isTaken] { toTell(isTaken); }));
        }
    });
    if (isHeldByAnotherProgram(combination)) {
        settle(true);
        return;
    }
    if (lists_.empty()) {
        settle(false);
        return;
    }
    mainQueue_.asyncAfter(patience, [settle] { settle(false); });
    const WantedShortcut wanted{combination.modifiers & ~functionModifier,
                                symbolsOfKey_(combination.keyCode)};
    for (const auto& list : lists_) {
        list->ask(wanted, [question, settle](bool isTaken) {
            if (isTaken || --question->missing == 0) {
                settle(isTaken);
            }
        });
    }
}

bool DesktopShortcuts::isHeldByAnotherProgram(const Platform::HotKeyCombination& combination) {
    const auto status = service_.registerHotKey(combination, trialID);
    if (status == 0) {
        service_.unregisterHotKey(trialID);
    }
    return status == Platform::hotKeyExists;
}

} // namespace LinuxPlatform
