#include "platform/linux/shortcutlists/I3Shortcuts.h"

#include "platform/linux/i3/I3Message.h"
#include "platform/linux/shortcutlists/I3Includes.h"
#include "platform/linux/system/LocalSocket.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QSocketNotifier>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <map>
#include <set>
#include <sstream>
#include <system_error>
#include <utility>

#include <sys/socket.h>
#include <unistd.h>

namespace LinuxPlatform {
namespace {

/// One reply as it comes in.
class Reply : public QObject {
public:
    /// `onEnd` receives the payload; an empty one where no whole message came.
    Reply(int descriptor, std::function<void(const QByteArray& payload)> onEnd, QObject* parent)
        : QObject(parent),
          descriptor_(descriptor),
          onEnd_(std::move(onEnd)),
          notifier_(descriptor, QSocketNotifier::Read) {
        connect(&notifier_, &QSocketNotifier::activated, this, [this] { read(); });
    }
    ~Reply() override { ::close(descriptor_); }
    Reply(const Reply&) = delete;
    Reply& operator=(const Reply&) = delete;

private:
    void read() {
        std::array<char, 65536> block;
        const auto count = ::recv(descriptor_, block.data(), block.size(), 0);
        if (count < 0 && (errno == EAGAIN || errno == EINTR)) {
            return;
        }
        if (count > 0) {
            reader_.add(block.data(), static_cast<std::size_t>(count));
        }
        const auto message = reader_.next();
        if (message || count <= 0 || reader_.isBroken()) {
            notifier_.setEnabled(false);
            deleteLater();
            onEnd_(message ? message->payload : QByteArray());
        }
    }

    int descriptor_;
    std::function<void(const QByteArray&)> onEnd_;
    QSocketNotifier notifier_;
    I3MessageReader reader_;
};

std::vector<std::string> configurationsIn(const QByteArray& payload) {
    const auto reply = jsonOf(payload).object();
    std::vector<std::string> texts;
    // Newer ones give every included file, with the variables resolved; the main file is the first of them.
    for (const auto& file : reply.value(QLatin1String("included_configs")).toArray()) {
        texts.push_back(
            file.toObject().value(QLatin1String("variable_replaced_contents")).toString().toStdString());
    }
    if (texts.empty()) {
        texts.push_back(reply.value(QLatin1String("config")).toString().toStdString());
    }
    return texts;
}

std::string withVariables(std::string text, const std::map<std::string, std::string>& variables) {
    // Longer names first, since one may begin another.
    for (auto variable = variables.rbegin(); variable != variables.rend(); ++variable) {
        for (auto place = text.find(variable->first); place != std::string::npos;
             place = text.find(variable->first, place + variable->second.size())) {
            text.replace(place, variable->first.size(), variable->second);
        }
    }
    return text;
}

/// "set $NAME VALUE".
void define(const std::string& line, std::map<std::string, std::string>& variables) {
    std::istringstream definition(line);
    std::string command;
    std::string name;
    definition >> command >> name >> std::ws;
    std::string value;
    std::getline(definition, value);
    value.erase(value.find_last_not_of(" \t\r") + 1);
    if (name.starts_with('$')) {
        variables[name] = withVariables(value, variables);
    }
}

/// "Mod4+Shift+43".
std::optional<I3Bindings::Position> positionIn(const std::string& combination) {
    const auto start = combination.rfind('+') + 1;
    I3Bindings::Position position;
    const auto* const end = combination.data() + combination.size();
    const auto number = std::from_chars(combination.data() + start, end, position.scanCode);
    // With a key that everybody knows, the rest reads as that of any other binding.
    const auto accelerator = Accelerator::fromI3(combination.substr(0, start) + "a");
    if (number.ec != std::errc{} || number.ptr != end || !accelerator) {
        return std::nullopt;
    }
    position.modifiers = accelerator->modifiers;
    return position;
}

/// `words` are what follows the command.
void addBinding(const std::string& command, std::istringstream& words, I3Bindings& bindings) {
    std::string combination;
    while (words >> combination && combination.starts_with("--")) {
    }
    if (command == "bindcode") {
        if (const auto position = positionIn(combination)) {
            bindings.byPosition.push_back(*position);
        }
    } else if (const auto accelerator = Accelerator::fromI3(combination)) {
        bindings.bySymbol.push_back(*accelerator);
    }
}

/// Reads a configuration with what it includes.
class ConfigurationReader {
public:
    /// `file` is where the text comes from; empty where that is not known.
    ConfigurationReader(const std::string& text, const std::filesystem::path& file) {
        std::error_code error;
        included_.insert(std::filesystem::canonical(file, error));
        read(text, file);
    }

    const I3Bindings& bindings() const { return bindings_; }

private:
    void read(const std::string& text, const std::filesystem::path& file) {
        std::istringstream lines(text);
        int modeDepth = 0;
        for (std::string line; std::getline(lines, line);) {
            std::istringstream words(withVariables(line, variables_));
            std::string command;
            words >> command;
            const auto last = line.find_last_not_of(" \t\r");
            const bool opensBlock = last != std::string::npos && line[last] == '{';
            if (modeDepth > 0) {
                modeDepth += opensBlock ? 1 : command == "}" ? -1 : 0;
            } else if (command == "mode" && opensBlock) {
                modeDepth = 1;
            } else if (command == "set") {
                define(line, variables_);
            } else if (command == "bindsym" || command == "bindcode") {
                addBinding(command, words, bindings_);
            } else if (command == "include" && !file.empty()) {
                std::string included;
                std::getline(words >> std::ws, included);
                include(included, file);
            }
        }
    }

    void include(const std::string& words, const std::filesystem::path& from) {
        for (const auto& file : I3Includes::files(words, from.parent_path())) {
            std::error_code error;
            // Each is read once.
            const bool isNew = included_.insert(std::filesystem::canonical(file, error)).second;
            if (const auto text = isNew && !error ? I3Includes::read(file) : std::nullopt) {
                read(*text, file);
            }
        }
    }

    std::map<std::string, std::string> variables_;
    std::set<std::filesystem::path> included_;
    I3Bindings bindings_;
};

} // namespace

I3Shortcuts::I3Shortcuts(std::string socketPath) : socketPath_(std::move(socketPath)) {}

void I3Shortcuts::ask(const WantedShortcut& wanted, Answer answer) {
    const int descriptor = connectToSocket(socketPath_);
    if (descriptor < 0) {
        answer(false);
        return;
    }
    const auto message = i3Message(I3Request::getConfig, {});
    if (::send(descriptor, message.constData(), static_cast<std::size_t>(message.size()), MSG_NOSIGNAL) !=
        message.size()) {
        ::close(descriptor);
        answer(false);
        return;
    }
    new Reply(
        descriptor,
        [wanted, answer = std::move(answer)](const QByteArray& payload) {
            const auto configurations = configurationsIn(payload);
            answer(std::ranges::any_of(configurations, [&](const std::string& configuration) {
                return std::ranges::any_of(
                    bindings(configuration).bySymbol,
                    [&](const Accelerator& accelerator) { return wanted.matches(accelerator); });
            }));
        },
        &questions_);
}

I3Bindings I3Shortcuts::bindings(std::string_view configuration, const std::filesystem::path& file) {
    return ConfigurationReader(std::string(configuration), file).bindings();
}

} // namespace LinuxPlatform
