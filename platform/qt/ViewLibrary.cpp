#include "platform/qt/ViewLibrary.h"

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

ViewLibrary::ViewLibrary(const std::string& path, Platform::Log& log) : log_(log), file_(openFile(path)) {}

ViewLibrary::~ViewLibrary() {
    if (file_ >= 0) {
        close(file_);
    }
}

std::string ViewLibrary::standardPath() {
    return QCoreApplication::applicationDirPath().toStdString() + "/" CURTAIN_VIEW_LIBRARY;
}

std::optional<std::string> ViewLibrary::problemWith(const std::string& path) {
    const int file = openFile(path);
    if (file < 0) {
        return "Curtain: its windows are missing (" + path + ": " + std::strerror(errno) +
               "); install it again";
    }
    close(file);
    return std::nullopt;
}

ViewToolkit* ViewLibrary::toolkit() {
    if (!isTried_) {
        isTried_ = true;
        if (auto* const make = load()) {
            toolkit_.reset(make());
            toolkit_->setAppearance(appearance_);
        } else {
            log_.writeLine("Curtain: its windows cannot be shown: " + std::string(dlerror()));
        }
    }
    return toolkit_.get();
}

void ViewLibrary::setAppearance(const Appearance& appearance) {
    appearance_ = appearance;
    if (toolkit_) {
        toolkit_->setAppearance(appearance);
    }
}

MakeViewToolkit* ViewLibrary::load() {
    const auto path = "/proc/self/fd/" + std::to_string(file_);
    // It is never let go: Qt keeps addresses in it.
    void* const library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    return library == nullptr ? nullptr
                              : reinterpret_cast<MakeViewToolkit*>(dlsym(library, nameOfMakeViewToolkit));
}

} // namespace QtPlatform
