#pragma once

#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <array>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <numbers>
#include <sstream>
#include <string>
#include <string_view>
#include <system_error>
#include <thread>
#include <vector>

namespace TestSupport {

/// What a shell command prints; empty if it fails.
inline std::string outputOf(const std::string& command) {
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen((command + " 2>/dev/null").c_str(), "r"), &pclose);
    std::string output;
    std::array<char, 4096> piece{};
    while (const auto count = std::fread(piece.data(), 1, piece.size(), pipe.get())) {
        output.append(piece.data(), count);
    }
    return output;
}

/// For what happens in other processes; false when it does not happen in time.
template <class Condition>
bool waitUntil(const Condition& condition, std::chrono::milliseconds deadline = std::chrono::seconds(15)) {
    const auto end = std::chrono::steady_clock::now() + deadline;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

inline std::vector<float> tone(double frequency, double amplitude, double seconds, int rate = 48000) {
    std::vector<float> samples(static_cast<std::size_t>(seconds * rate));
    for (std::size_t frame = 0; frame < samples.size(); ++frame) {
        samples[frame] = static_cast<float>(
            amplitude * std::sin(2 * std::numbers::pi * frequency * static_cast<double>(frame) / rate));
    }
    return samples;
}

inline void writeSamples(const std::filesystem::path& path, const std::vector<float>& samples) {
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(samples.data()),
               static_cast<std::streamsize>(samples.size() * sizeof(float)));
}

inline std::vector<float> readSamples(const std::filesystem::path& path) {
    const auto bytes = readFile(path);
    std::vector<float> samples(bytes.size() / sizeof(float));
    std::copy_n(bytes.data(), samples.size() * sizeof(float), reinterpret_cast<char*>(samples.data()));
    return samples;
}

/// Writes down what the speakers of a virtual desktop play, at 48000 frames a second.
class SpeakersEar {
public:
    explicit SpeakersEar(const std::filesystem::path& file)
        : file_(file),
          recorder_({"parec", "--raw", "--latency-msec=20", "--device=speakers.monitor", "--format=float32le",
                     "--rate=48000", "--channels=2", file.string()}) {
        waitUntil([this] { return frames() > 0; });
    }

    /// What the left one has played so far, and for half a second more.
    std::vector<float> heard() {
        // What has been played may still be on its way into the file.
        const auto before = frames();
        waitUntil([&] { return frames() > before + 24000; });
        recorder_.end(SIGTERM);
        const auto both = readSamples(file_);
        std::vector<float> left(both.size() / 2);
        for (std::size_t frame = 0; frame < left.size(); ++frame) {
            left[frame] = both[2 * frame];
        }
        return left;
    }

private:
    std::size_t frames() const {
        std::error_code error;
        const auto size = std::filesystem::file_size(file_, error);
        return error ? 0 : size / (2 * sizeof(float));
    }

    std::filesystem::path file_;
    ChildProcess recorder_;
};

/// The sound server, microphone and speakers of a virtual desktop that was started with --media. Afterwards
/// they are as they were.
class SoundWorld {
public:
    SoundWorld() { serverCommand(); }
    ~SoundWorld() {
        silence();
        thaw();
        if (!isServerThere()) {
            startServer();
        }
        for (const auto& module : modules_) {
            outputOf("pactl unload-module " + module);
        }
        if (!hasSource("microphone")) {
            plugIn();
        }
        makeDefault("microphone");
        outputOf("pactl set-default-sink speakers");
        outputOf("pactl set-source-mute microphone 0; pactl set-source-volume microphone 100%");
    }
    SoundWorld(const SoundWorld&) = delete;
    SoundWorld& operator=(const SoundWorld&) = delete;

    /// Plays samples into the microphone, until they end or something else is fed.
    void feed(const std::vector<float>& samples, const std::string& sink = "microphone_feed",
              int rate = 48000, int channels = 1) {
        silence();
        const auto path = folder_.path() / "feed";
        writeSamples(path, samples);
        player_ = std::make_unique<ChildProcess>(std::vector<std::string>{
            "pacat", "--playback", "--raw", "--device=" + sink, "--format=float32le",
            "--rate=" + std::to_string(rate), "--channels=" + std::to_string(channels), path.string()});
    }

    void silence() { player_.reset(); }

    /// Another microphone; it hears what is fed to the sink NAME_feed.
    void addMicrophone(const std::string& name, int rate, std::size_t channels = 2) {
        struct Channel {
            std::string map;
            std::string port;
        };
        static const std::vector<Channel> every{
            {"front-left", "FL"},   {"front-right", "FR"}, {"rear-left", "RL"}, {"rear-right", "RR"},
            {"front-center", "FC"}, {"lfe", "LFE"},        {"side-left", "SL"}, {"side-right", "SR"}};
        auto format =
            " rate=" + std::to_string(rate) + " channels=" + std::to_string(channels) + " channel_map=";
        for (std::size_t channel = 0; channel < channels; ++channel) {
            format += (channel == 0 ? "" : ",") + every[channel].map;
        }
        load(nullSink(name + "_feed") + format);
        if (isPipeWire()) {
            // Its remapped sources have the server's rate, whatever is asked for.
            load("module-null-sink media.class=Audio/Source/Virtual sink_name=" + name + format);
            waitUntil([&] { return hasSource(name); });
            for (std::size_t channel = 0; channel < channels; ++channel) {
                const auto& port = every[channel].port;
                const auto link = "pw-link " + name + "_feed:monitor_" + port + " " + name + ":input_" + port;
                // The ports come a little later than the source.
                waitUntil([&] { return std::system((link + " 2>/dev/null").c_str()) == 0; });
            }
        } else {
            load("module-remap-source master=" + name + "_feed.monitor source_name=" + name + format);
        }
        waitUntil([&] { return hasSource(name); });
    }

    /// The microphone of a Bluetooth headset, as PipeWire's session managers show it since 0.5. It is silent.
    void addHeadset(const std::string& name) {
        load("module-null-sink media.class=Audio/Source/Virtual sink_name=" + name +
             " sink_properties=bluez5.loopback=true");
        waitUntil([&] { return hasSource(name); });
    }

    /// Both ends of the headset with this card of PipeWire's, and makes them the default ones.
    void addHeadset(std::uint32_t card) {
        const auto ofCard = "device.id=" + std::to_string(card);
        // A telephone's one channel.
        load("module-null-sink media.class=Audio/Source/Virtual sink_name=bluez_input.scripted "
             "channels=1 channel_map=mono sink_properties='device.description=Headset bluez5.loopback=true " +
             ofCard + "'");
        load("module-null-sink sink_name=bluez_output.scripted sink_properties=" + ofCard);
        waitUntil([] { return hasSource("bluez_output.scripted.monitor"); });
        outputOf("pactl set-default-sink bluez_output.scripted");
        makeDefault("bluez_input.scripted");
    }

    /// Silent microphones "extra0", "extra1" …; as many as this server takes, and at most 200.
    int addMicrophones() {
        const int count = isPipeWire() ? 200 : 50;
        for (int number = 0; number < count; ++number) {
            const auto name = "extra" + std::to_string(number);
            load(isPipeWire() ? "module-null-sink media.class=Audio/Source/Virtual sink_name=" + name
                              : "module-null-source source_name=" + name);
        }
        return waitUntil([&] { return hasSource("extra" + std::to_string(count - 1)); }) ? count : 0;
    }

    static void makeDefault(const std::string& name) {
        outputOf("pactl set-default-source " + name);
        waitUntil([&] { return outputOf("pactl get-default-source") == name + "\n"; });
    }

    static void unplug() {
        outputOf("pactl list short modules | awk '/source_name=microphone / {print $1}' | "
                 "xargs -rn1 pactl unload-module");
        waitUntil([] { return !hasSource("microphone"); });
    }

    static void plugIn(const std::string& format = "channels=1 channel_map=mono") {
        outputOf(
            "pactl load-module module-remap-source master=microphone_feed.monitor source_name=microphone " +
            format);
        waitUntil([] { return hasSource("microphone"); });
        makeDefault("microphone");
    }

    static void killServer() {
        ::kill(serverProcess(), SIGKILL);
        replacement().reset();
        waitUntil([] { return !isServerThere(); });
    }

    static bool isPipeWire() { return std::filesystem::exists(processOf("pipewire-pulse")); }

    /// With devices as before.
    static void startServer() {
        replacement() = std::make_unique<ChildProcess>(serverCommand());
        waitUntil(isServerThere);
        outputOf("pactl load-module " + nullSink("speakers") +
                 " rate=48000 channels=2 channel_map=front-left,front-right");
        outputOf("pactl load-module " + nullSink("microphone_feed") +
                 " rate=48000 channels=1 channel_map=mono");
        waitUntil([] { return hasSource("microphone_feed.monitor"); });
        plugIn();
        outputOf("pactl set-default-sink speakers");
    }

    static void freeze() { ::kill(serverProcess(), SIGSTOP); }
    static void thaw() { ::kill(serverProcess(), SIGCONT); }

    /// The program's own recording streams, as the server lists them.
    static int ourRecordings() {
        constexpr std::string_view ours = "application.name = \"Curtain\"";
        const auto list = outputOf("pactl list source-outputs");
        int count = 0;
        for (auto at = list.find(ours); at != std::string::npos; at = list.find(ours, at + 1)) {
            ++count;
        }
        return count;
    }
    static bool hasOurRecording() { return ourRecordings() > 0; }

    static void suspend(bool isSuspended) {
        outputOf(std::string("pactl suspend-source microphone ") + (isSuspended ? "1" : "0"));
    }

    /// The program's own connections, as the server lists them.
    static bool hasOurClient() {
        return outputOf("pactl list clients").find("application.name = \"Curtain\"") != std::string::npos;
    }

    static bool hasSource(const std::string& name) {
        return outputOf("pactl list short sources").find("\t" + name + "\t") != std::string::npos;
    }

private:
    /// The module of a sink that plays little at a time, as scripts/virtual-desktop has it.
    static std::string nullSink(const std::string& name) {
        return "module-null-sink norewinds=true sink_name=" + name;
    }

    static std::filesystem::path processOf(const std::string& part) {
        return std::filesystem::path(std::getenv("VIRTUAL_DESKTOP_PIDS")) / part;
    }

    static bool isServerThere() { return !outputOf("timeout 5 pactl info").empty(); }

    /// The server that a test has started in place of the first one; it serves the tests that follow.
    static std::unique_ptr<ChildProcess>& replacement() {
        static std::unique_ptr<ChildProcess> process;
        return process;
    }

    static pid_t serverProcess() {
        return replacement() ? replacement()->id()
                             : std::stoi(readFile(processOf(isPipeWire() ? "pipewire-pulse" : "pulseaudio")));
    }

    /// How the first server was started.
    static const std::vector<std::string>& serverCommand() {
        static const auto command = [] {
            std::istringstream words(readFile("/proc/" + std::to_string(serverProcess()) + "/cmdline"));
            std::vector<std::string> result;
            for (std::string word; std::getline(words, word, '\0');) {
                result.push_back(word);
            }
            return result;
        }();
        return command;
    }

    void load(const std::string& module) {
        auto number = outputOf("pactl load-module " + module);
        number.erase(number.find_last_not_of('\n') + 1);
        // Those that stand on others go first.
        modules_.insert(modules_.begin(), number);
    }

    TemporaryFolder folder_;
    std::unique_ptr<ChildProcess> player_;
    std::vector<std::string> modules_;
};

} // namespace TestSupport
