#pragma once

#include "platform/linux/shortcutlists/Accelerator.h"

#include <QObject>

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace LinuxPlatform {

/// What a configuration of i3 or sway binds outside of modes.
struct I3Bindings {
    /// A key by its place, whatever is written there.
    struct Position {
        /// In the hot-key service's bits.
        std::int64_t modifiers = 0;
        /// In XKB's numbers.
        std::uint32_t scanCode = 0;

        bool operator==(const Position&) const = default;
    };

    std::vector<Accelerator> bySymbol;
    std::vector<Position> byPosition;
};

/// The key bindings in the configuration of i3 or sway, asked for over its socket.
class I3Shortcuts : public ShortcutList {
public:
    /// `socketPath` is empty when this session is neither of the two.
    explicit I3Shortcuts(std::string socketPath);

    void ask(const WantedShortcut& wanted, Answer answer) override;

    /// Variables are resolved. Included files are read where that of the configuration itself is known.
    static I3Bindings bindings(std::string_view configuration, const std::filesystem::path& file = {});

private:
    std::string socketPath_;
    QObject questions_;
};

} // namespace LinuxPlatform
