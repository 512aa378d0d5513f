#pragma once

#include "platform/linux/shortcutlists/Accelerator.h"

#include <QObject>

#include <string>
#include <string_view>
#include <vector>

namespace LinuxPlatform {

/// The key bindings in the configuration of i3 or sway, asked for over its socket.
class I3Shortcuts : public ShortcutList {
public:
    /// `socketPath` is empty when this session is neither of the two.
    explicit I3Shortcuts(std::string socketPath);

    void ask(const WantedShortcut& wanted, Answer answer) override;

    /// The combinations that are bound outside of modes, variables resolved.
    static std::vector<Accelerator> bindings(std::string_view configuration);

private:
    std::string socketPath_;
    QObject questions_;
};

} // namespace LinuxPlatform
