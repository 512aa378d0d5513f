#include "platform/qt/OwnLibrary.h"

#include <QCoreApplication>

#include <cerrno>
#include <cstring>

#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

namespace QtPlatform {
namespace {

int openFile(const std::string& path) {
    return open(path.c_str(), O_RDONLY | O_CLOEXEC);
}

} // namespace

OwnLibrary::OwnLibrary(const std::string& path) : file_(openFile(path)) {}

OwnLibrary::~OwnLibrary() {
    if (file_ >= 0) {
        close(file_);
    }
}

std::string OwnLibrary::pathOf(const std::string& name) {
    return QCoreApplication::applicationDirPath().toStdString() + "/" CURTAIN_LIBRARIES "/" + name;
}

std::optional<std::string> OwnLibrary::problemWith(const std::string& path, const std::string& content) {
    const int file = openFile(path);
    if (file < 0) {
        return "Curtain: its " + content + " are missing (" + path + ": " + std::strerror(errno) +
               "); install it again";
    }
    close(file);
    return std::nullopt;
}

void* OwnLibrary::symbol(const char* name) const {
    const auto path = "/proc/self/fd/" + std::to_string(file_);
    void* const library = dlopen(path.c_str(), RTLD_LAZY | RTLD_LOCAL);
    return library == nullptr ? nullptr : dlsym(library, name);
}

} // namespace QtPlatform
