#pragma once

namespace QtPlatform {

/// Keeps what the toolkit says about other people's icons, pictures and fonts away from standard error while
/// it lives; everything else reaches the handler of before. Pictures of the program's own are among what
/// nothing is said about, so that tests have to look at them. One at a time; messages may come from any
/// thread.
class ForeignFileMessages {
public:
    /// With `areShown`, each of these messages is written once, in a line of its own.
    explicit ForeignFileMessages(bool areShown);
    ~ForeignFileMessages();
    ForeignFileMessages(const ForeignFileMessages&) = delete;
    ForeignFileMessages& operator=(const ForeignFileMessages&) = delete;
};

} // namespace QtPlatform
