#pragma once

namespace Platform {

class SystemVersion {
public:
    virtual ~SystemVersion() = default;

    /// 14 where apps can be hidden, 0 where they cannot.
    virtual int majorVersion() = 0;
};

} // namespace Platform
