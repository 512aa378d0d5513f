#pragma once

namespace Platform {

class AudioPlayer;

class AudioPlayerDelegate {
public:
    virtual ~AudioPlayerDelegate() = default;

    /// The last sample has been heard, or the playback has failed. Called on the main thread, never from
    /// inside a call to the player.
    virtual void audioPlayerDidFinishPlaying(AudioPlayer& player, bool successfully) = 0;
};

/// Plays one file on the default speakers. Its destruction ends the playback without telling anybody. Main
/// thread only; nothing here waits.
class AudioPlayer {
public:
    virtual ~AudioPlayer() = default;

    /// `delegate` outlives the player.
    virtual void setDelegate(AudioPlayerDelegate* delegate) = 0;
    /// 0 to 1, whatever volume this program's sound had before.
    virtual void setVolume(float volume) = 0;
    virtual void prepareToPlay() = 0;
    virtual void play() = 0;
};

} // namespace Platform
