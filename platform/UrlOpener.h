#pragma once

#include <string>

namespace Platform {

class UrlOpener {
public:
    virtual ~UrlOpener() = default;

    /// Opens what belongs to the address. Returns whether anything here can; not waited for.
    virtual bool open(const std::string& url) = 0;
};

} // namespace Platform
