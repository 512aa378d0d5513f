#pragma once

#include <optional>
#include <string>

namespace QtPlatform {

/// A library that belongs to this program, mapped when it is first needed; it then stays, since others keep
/// addresses in it. Until then its file is only held open: what is loaded is what was installed when the
/// program started, even if another version has taken its place.
class OwnLibrary {
public:
    explicit OwnLibrary(const std::string& path);
    ~OwnLibrary();
    OwnLibrary(const OwnLibrary&) = delete;
    OwnLibrary& operator=(const OwnLibrary&) = delete;

    /// Beside this program.
    static std::string pathOf(const std::string& name);
    /// Why there is nothing to load, in one sentence that calls what is missing `content`.
    static std::optional<std::string> problemWith(const std::string& path, const std::string& content);

    /// Loads it. Null where that fails, which `dlerror` then explains.
    template <typename Function>
    Function* entry(const char* name) const {
        return reinterpret_cast<Function*>(symbol(name));
    }

private:
    void* symbol(const char* name) const;

    int file_;
};

} // namespace QtPlatform
