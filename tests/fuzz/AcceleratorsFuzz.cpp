#include "platform/linux/shortcutlists/Accelerator.h"

#include <cstdint>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(bytes), size);
    LinuxPlatform::Accelerator::fromGtk(text);
    LinuxPlatform::Accelerator::fromI3(text);
    return 0;
}
