#include "platform/linux/system/FileReplacement.h"

#include "platform/linux/system/Descriptor.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <optional>
#include <string_view>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace LinuxPlatform {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view temporarySuffix = ".new";

std::error_code writeAll(int descriptor, std::string_view bytes) {
    std::size_t written = 0;
    while (written < bytes.size()) {
        const auto count = ::write(descriptor, bytes.data() + written, bytes.size() - written);
        if (count < 0 && errno != EINTR) {
            return lastError();
        }
        written += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    }
    return {};
}

/// The thread that wrote a temporary file, told by the file's name; absent for any other file.
std::optional<pid_t> writerOf(std::string_view name, std::string_view prefix) {
    if (!name.starts_with(prefix)) {
        return std::nullopt;
    }
    name.remove_prefix(prefix.size());
    if (!name.ends_with(temporarySuffix)) {
        return std::nullopt;
    }
    name.remove_suffix(temporarySuffix.size());
    pid_t writer = 0;
    const auto* const end = name.data() + name.size();
    const auto parsed = std::from_chars(name.data(), end, writer);
    return parsed.ec == std::errc{} && parsed.ptr == end && writer > 0 ? std::optional(writer) : std::nullopt;
}

/// What a process that was killed while it replaced the file may have left beside it.
void removeLeftovers(const fs::path& folder, std::string_view prefix) {
    std::error_code error;
    for (fs::directory_iterator iterator(folder, error); !error && iterator != fs::directory_iterator();
         iterator.increment(error)) {
        const auto writer = writerOf(iterator->path().filename().string(), prefix);
        if (writer && ::kill(*writer, 0) != 0 && errno == ESRCH) {
            ::unlink(iterator->path().c_str());
        }
    }
}

} // namespace

std::error_code lastError() {
    return {errno, std::generic_category()};
}

std::error_code syncFolder(const fs::path& folder) {
    const Descriptor descriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    // One that may not be listed cannot be opened, and not every file system can do it. The names are right
    // all the same.
    const bool isDone = !descriptor.isOpen() || ::fsync(descriptor.get()) == 0 || errno == EINVAL;
    return isDone ? std::error_code{} : lastError();
}

std::error_code replaceFile(const fs::path& path, std::string_view bytes) {
    std::error_code error;
    auto target = fs::weakly_canonical(path, error);
    if (error) {
        target = path;
        error.clear();
    }
    const auto folder = target.parent_path();
    const auto prefix = "." + target.filename().string() + ".";
    removeLeftovers(folder, prefix);
    const auto temporary = folder / (prefix + std::to_string(::gettid()) + std::string(temporarySuffix));
    // Several threads may replace one file at once. Whatever an earlier process with this id left, or someone
    // else put there, is not to be written to.
    ::unlink(temporary.c_str());
    const Descriptor file(
        ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!file.isOpen()) {
        return lastError();
    }
    error = writeAll(file.get(), bytes);
    if (!error && (::fsync(file.get()) != 0 || ::rename(temporary.c_str(), target.c_str()) != 0)) {
        error = lastError();
    }
    if (error) {
        ::unlink(temporary.c_str());
        return error;
    }
    return syncFolder(folder);
}

} // namespace LinuxPlatform
