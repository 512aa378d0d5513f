#include "platform/linux/system/FolderChanges.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include <sys/inotify.h>
#include <unistd.h>

namespace LinuxPlatform {
namespace {

constexpr std::uint32_t watched = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_CLOSE_WRITE |
                                  IN_ATTRIB | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;

} // namespace

FolderChanges::FolderChanges(std::string_view suffix)
    : suffix_(suffix),
      descriptor_(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {}

FolderChanges::~FolderChanges() {
    if (descriptor_ >= 0) {
        ::close(descriptor_);
    }
}

bool FolderChanges::add(const std::filesystem::path& folder) {
    return descriptor_ >= 0 && ::inotify_add_watch(descriptor_, folder.c_str(), watched) >= 0;
}

bool FolderChanges::take() {
    bool hasChanged = false;
    alignas(inotify_event) std::array<char, 16384> buffer;
    while (descriptor_ >= 0) {
        const auto count = ::read(descriptor_, buffer.data(), buffer.size());
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            break;
        }
        for (std::size_t place = 0; place < static_cast<std::size_t>(count);) {
            inotify_event event{};
            std::memcpy(&event, buffer.data() + place, sizeof event);
            const std::string_view name =
                event.len > 0 ? std::string_view(buffer.data() + place + sizeof event) : std::string_view();
            hasChanged =
                hasChanged || event.len == 0 || (event.mask & IN_ISDIR) != 0 || name.ends_with(suffix_);
            place += sizeof event + event.len;
        }
    }
    return hasChanged;
}

} // namespace LinuxPlatform
