#include "platform/linux/apps/InterpretedProgram.h"

#include "platform/linux/system/AsciiCase.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <vector>

namespace LinuxPlatform {
namespace {

struct Interpreter {
    std::string_view name;
    /// Options that take the word after them.
    std::string_view optionsWithValue;
    /// Options after which the word is the program itself, be it a file or a module.
    std::string_view programOptions;
    /// Options after which the word is no file but a program's text.
    std::string_view textOptions;
};

/// Options are separated by blanks and stand between blanks.
constexpr std::array<Interpreter, 25> interpreters{{
    {"python", " -W -X -Q ", " -m ", " -c "},
    {"pypy", " -W -X ", " -m ", " -c "},
    {"perl", " -I -M -m ", "", " -e -E "},
    {"ruby", " -I -r -C ", "", " -e "},
    {"node", " -r --require --import --loader ", "", " -e --eval -p --print "},
    {"nodejs", " -r --require --import --loader ", "", " -e --eval -p --print "},
    {"java", " -cp -classpath --class-path -p --module-path --add-modules --add-opens --add-exports ",
     " -jar -m --module ", ""},
    {"mono", " --config ", "", ""},
    {"mono-sgen", " --config ", "", ""},
    {"dotnet", " --additionalprobingpath --fx-version --depsfile --runtimeconfig ", " exec ", ""},
    {"wine", "", "", ""},
    {"wine-preloader", "", "", ""},
    {"wine64", "", "", ""},
    {"wine64-preloader", "", "", ""},
    {"electron", " -r --require ", "", ""},
    {"gjs", " -I --include-path -C --coverage-prefix ", "", " -c --command "},
    {"gjs-console", " -I --include-path -C --coverage-prefix ", "", " -c --command "},
    {"wish", " -encoding ", "", ""},
    {"tclsh", " -encoding ", "", ""},
    {"guile", " -L -C -l ", "", " -c "},
    {"sh", " -o ", "", " -c "},
    {"bash", " -o -O --rcfile --init-file ", "", " -c "},
    {"dash", " -o ", "", " -c "},
    {"zsh", " -o ", "", " -c "},
    {"ksh", " -o ", "", " -c "},
}};

bool isVersion(std::string_view text) {
    return std::ranges::all_of(text, [](unsigned char character) {
        return std::isdigit(character) != 0 || character == '.' || character == '-';
    });
}

/// Of "editor-1.2" the editor.
std::string_view withoutVersion(std::string_view name) {
    const auto end = name.find_last_not_of("0123456789.");
    const bool hasVersion =
        end != std::string_view::npos && end > 0 && end + 1 < name.size() && name[end] == '-';
    return hasVersion ? name.substr(0, end) : name;
}

const Interpreter* find(std::string_view program) {
    const auto* const found = std::ranges::find_if(interpreters, [&](const Interpreter& interpreter) {
        return program.starts_with(interpreter.name) && isVersion(program.substr(interpreter.name.size()));
    });
    return found == interpreters.end() ? nullptr : found;
}

bool contains(std::string_view options, const std::string& option) {
    return options.find(' ' + option + ' ') != std::string_view::npos;
}

/// The last piece of a path, be it one of this system or of the one that Wine stands in for.
std::string_view takeLastPiece(std::string_view& path) {
    while (path.ends_with('/') || path.ends_with('\\')) {
        path.remove_suffix(1);
    }
    const auto start = path.find_last_of("/\\");
    const auto piece = start == std::string_view::npos ? path : path.substr(start + 1);
    path.remove_suffix(piece.size());
    return piece;
}

std::string_view withoutSuffix(std::string_view name) {
    constexpr std::array<std::string_view, 17> suffixes{".py",   ".pyw", ".pyc", ".pyz", ".pl",  ".rb",
                                                        ".js",   ".cjs", ".mjs", ".jar", ".exe", ".dll",
                                                        ".asar", ".sh",  ".bin", ".gjs", ".pex"};
    const auto lowerCase = asciiLowerCase(name);
    for (const auto suffix : suffixes) {
        if (lowerCase.size() > suffix.size() && lowerCase.ends_with(suffix)) {
            return withoutVersion(name.substr(0, name.size() - suffix.size()));
        }
    }
    return name;
}

bool isNameOfManyPrograms(std::string_view name) {
    constexpr std::array<std::string_view, 22> names{
        "__main__", "main",      "app", "apprun", "application", "start",  "run", "index",
        "launch",   "launcher",  "gui", "cli",    "client",      "bin",    "lib", "libexec",
        "dist",     "resources", "out", "src",    "build",       "program"};
    return name.empty() || name == "." || name == ".." ||
           std::ranges::find(names, asciiLowerCase(name)) != names.end();
}

std::optional<std::string> nameOfFile(std::string_view path) {
    const auto first = withoutSuffix(takeLastPiece(path));
    auto name = first;
    while (isNameOfManyPrograms(name) && !path.empty()) {
        name = withoutSuffix(takeLastPiece(path));
    }
    // In a folder of the system's there is no better name than the file's.
    const bool isPlace = name == "usr" || name == "opt" || name == "share" || isNameOfManyPrograms(name);
    const auto best = isPlace ? first : name;
    return best.empty() ? std::nullopt : std::optional(std::string(best));
}

/// A class or module, whose last parts often are those of every program: of "org.example.editor.Main" the
/// editor.
std::optional<std::string> nameOfModule(std::string_view module) {
    module = module.substr(0, module.find('/'));
    while (!module.empty()) {
        const auto dot = module.rfind('.');
        const auto name = dot == std::string_view::npos ? module : module.substr(dot + 1);
        if (!isNameOfManyPrograms(name)) {
            return std::string(name);
        }
        module = module.substr(0, dot == std::string_view::npos ? 0 : dot);
    }
    return std::nullopt;
}

} // namespace

bool isInterpreter(std::string_view program) {
    return find(program) != nullptr;
}

bool isLauncher(std::string_view program) {
    constexpr std::array<std::string_view, 10> launchers{"sh",   "bash",    "dash",  "zsh",      "ksh",
                                                         "fish", "busybox", "bwrap", "firejail", "oosplash"};
    return std::ranges::find(launchers, program) != launchers.end();
}

std::optional<std::string> interpretedProgram(std::span<const std::string> arguments) {
    if (arguments.empty()) {
        return std::nullopt;
    }
    std::string_view command = arguments.front();
    const auto* const interpreter = find(takeLastPiece(command));
    if (interpreter == nullptr) {
        return std::nullopt;
    }
    const bool isJava = interpreter->name == "java";
    for (std::size_t index = 1; index < arguments.size(); ++index) {
        const auto& argument = arguments[index];
        const bool hasNext = index + 1 < arguments.size();
        if (contains(interpreter->textOptions, argument)) {
            return std::nullopt;
        }
        if (contains(interpreter->programOptions, argument)) {
            if (!hasNext) {
                return std::nullopt;
            }
            const auto& program = arguments[index + 1];
            const bool isFile = argument == "-jar" || argument == "exec";
            return isFile ? nameOfFile(program) : nameOfModule(program);
        }
        if (contains(interpreter->optionsWithValue, argument)) {
            ++index;
        } else if (!argument.empty() && !argument.starts_with('-')) {
            return isJava ? nameOfModule(argument) : nameOfFile(argument);
        }
    }
    return std::nullopt;
}

} // namespace LinuxPlatform
