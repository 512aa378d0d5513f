#include <gmock/gmock.h>

#include <sys/wait.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace {

namespace fs = std::filesystem;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;

std::string contents(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

/// Runs the real program on a copy of the real texts.
class TextCompilerTest : public testing::Test {
protected:
    struct Result {
        int status = -1;
        std::string errors;
    };

    void SetUp() override {
        auto name = (fs::path(testing::TempDir()) / "texts-XXXXXX").string();
        ASSERT_NE(mkdtemp(name.data()), nullptr);
        folder = name;
        for (const auto& file : fs::directory_iterator(TEXT_FOLDER)) {
            fs::copy_file(file.path(), folder / file.path().filename());
        }
    }

    void TearDown() override { fs::remove_all(folder); }

    void write(const std::string& file, const std::string& text) {
        std::ofstream(folder / file, std::ios::binary) << text;
    }

    /// Replaces the first `before` in a file and returns the number of its line.
    std::size_t replace(const std::string& file, const std::string& before, const std::string& after) {
        auto text = contents(folder / file);
        const auto at = text.find(before);
        EXPECT_NE(at, std::string::npos) << before;
        const auto line = 1 + std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(at), '\n');
        write(file, text.replace(at, before.size(), after));
        return static_cast<std::size_t>(line);
    }

    Result run() const {
        const auto command = "'" TEXT_COMPILER "' '" + folder.string() + "' '" + output().string() + "' 2>&1";
        Result result;
        auto* const pipe = popen(command.c_str(), "r");
        for (int character = std::fgetc(pipe); character != EOF; character = std::fgetc(pipe)) {
            result.errors += static_cast<char>(character);
        }
        const int status = pclose(pipe);
        result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        return result;
    }

    void expectOnlyProblem(const std::string& file, std::size_t line, const std::string& message) const {
        const auto result = run();
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.errors,
                  (folder / file).string() + ":" + std::to_string(line) + ": " + message + "\n");
        EXPECT_FALSE(fs::exists(output()));
    }

    fs::path output() const { return folder / "table.cpp"; }

    fs::path folder;
};

TEST_F(TextCompilerTest, TheTextsAreGood) {
    const auto result = run();
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.errors, IsEmpty());
    EXPECT_THAT(contents(output()), HasSubstr("\"Готовы к звонку?\""));
}

TEST_F(TextCompilerTest, CommentsAndEmptyLinesAreSkipped) {
    write("fr.txt", "# a = b\n\n#\n" + contents(folder / "fr.txt") + "\n# = \n\n");
    EXPECT_EQ(run().status, 0);
}

TEST_F(TextCompilerTest, TheLastLineNeedsNoEnd) {
    auto text = contents(folder / "fr.txt");
    ASSERT_THAT(text, EndsWith("\n"));
    text.pop_back();
    write("fr.txt", text);
    EXPECT_EQ(run().status, 0);
}

TEST_F(TextCompilerTest, MarksOfTheProgrammingLanguageAreOnlyText) {
    replace("fr.txt", "camera = Caméra", R"(camera = a "b" \n = ??/ %d)");
    EXPECT_EQ(run().status, 0);
    EXPECT_THAT(contents(output()), HasSubstr(R"("a \"b\" \\n = ??/ %d")"));
}

TEST_F(TextCompilerTest, AMissingKeyIsReportedWhereItBelongs) {
    const auto line = replace("es.txt", "camera = Cámara\n", "");
    expectOnlyProblem("es.txt", line, "missing key 'camera'");
}

TEST_F(TextCompilerTest, AMissingLastKeyIsReportedAtTheEnd) {
    const auto line = replace("es.txt", "wizSummaryStart = Empezar a usar Curtain\n", "");
    expectOnlyProblem("es.txt", line - 1, "missing key 'wizSummaryStart'");
}

TEST_F(TextCompilerTest, ADoubleKeyIsReported) {
    const auto line = replace("zh.txt", "microphone = 麦克风\n", "microphone = 麦克风\ncamera = 相机\n");
    expectOnlyProblem("zh.txt", line + 1,
                      "second text for 'camera', the first is in line " + std::to_string(line - 1));
}

TEST_F(TextCompilerTest, AnUnknownKeyIsReported) {
    const auto line = replace("hi.txt", "camera = ", "kamera = x\ncamera = ");
    expectOnlyProblem("hi.txt", line, "unknown key 'kamera'");
}

TEST_F(TextCompilerTest, AKeyInOtherLettersIsUnknown) {
    const auto line = replace("hi.txt", "camera = ", "Camera = x\ncamera = ");
    expectOnlyProblem("hi.txt", line, "unknown key 'Camera'");
}

TEST_F(TextCompilerTest, AKeyOutOfOrderIsReported) {
    const auto line = replace("pt.txt", "camera = Câmera\nmicrophone = Microfone\n",
                              "microphone = Microfone\ncamera = Câmera\n");
    expectOnlyProblem("pt.txt", line + 1, "'camera' belongs before 'microphone'");
}

TEST_F(TextCompilerTest, ALostPlaceholderIsReported) {
    const auto line = replace("ar.txt", "%@", "12");
    expectOnlyProblem("ar.txt", line, "'wizSummaryDesktop' must hold %@ as often as in English (1)");
}

TEST_F(TextCompilerTest, ADoubledPlaceholderIsReported) {
    const auto line = replace("ru.txt", "%@", "%@ %@");
    expectOnlyProblem("ru.txt", line, "'wizSummaryDesktop' must hold %@ as often as in English (1)");
}

TEST_F(TextCompilerTest, AnInventedPlaceholderIsReported) {
    const auto line = replace("ru.txt", "quit = ", "quit = %@ ");
    expectOnlyProblem("ru.txt", line, "'quit' must hold %@ as often as in English (0)");
}

TEST_F(TextCompilerTest, AnEmptyTextIsReported) {
    for (const auto* const empty : {"quit =", "quit = ", "quit="}) {
        const auto before = contents(folder / "ru.txt");
        const auto line = replace("ru.txt", "quit = Выйти", empty);
        expectOnlyProblem("ru.txt", line, "empty text for 'quit'");
        write("ru.txt", before);
    }
}

TEST_F(TextCompilerTest, StrayWhiteSpaceIsReported) {
    for (const auto* const stray :
         {" Выйти", "Выйти ", "Вы  йти", "Вы\tйти", "\tВыйти", "Выйти\r", "\u00A0Выйти", "Выйти\u202F",
          "Вы \u00A0йти", "\u3000Выйти", "Выйти\u200B", "\uFEFFВыйти", "Вы\u2009\u2009йти", "  ", "Вы\x01йти",
          "Вы\x7Fйти"}) {
        const auto before = contents(folder / "ru.txt");
        const auto line = replace("ru.txt", "quit = Выйти", std::string("quit = ") + stray);
        expectOnlyProblem("ru.txt", line, "stray white space in the text of 'quit'");
        write("ru.txt", before);
    }
}

TEST_F(TextCompilerTest, SpacesInsideATextAreFine) {
    replace("ru.txt", "quit = Выйти", "quit = Выйти\u00A0отсюда и\u202Fтуда");
    EXPECT_EQ(run().status, 0);
}

TEST_F(TextCompilerTest, BytesThatAreNotUtf8AreReported) {
    for (const auto* const bytes : {"\xC0", "\x80", "caf\xE9", "\xE9t\xE9", "\xF5\x80\x80\x80", "\xE2\x82"}) {
        const auto before = contents(folder / "fr.txt");
        const auto line = replace("fr.txt", "quit = Quitter", std::string("quit = ") + bytes);
        expectOnlyProblem("fr.txt", line, "the text of 'quit' is not UTF-8");
        write("fr.txt", before);
    }
}

TEST_F(TextCompilerTest, ALineThatIsNoTextIsReported) {
    for (const auto* const bad :
         {"quit", " ", "\xEF\xBB\xBF# a comment after a byte order mark", "= Quitter"}) {
        const auto before = contents(folder / "fr.txt");
        write("fr.txt", std::string(bad) + "\n" + before);
        expectOnlyProblem("fr.txt", 1, "expected 'key = text'");
        write("fr.txt", before);
    }
}

TEST_F(TextCompilerTest, AMissingFileIsReported) {
    fs::remove(folder / "hi.txt");
    expectOnlyProblem("hi.txt", 1, "the file cannot be read");
}

TEST_F(TextCompilerTest, AFolderInPlaceOfAFileIsReported) {
    fs::remove(folder / "hi.txt");
    fs::create_directory(folder / "hi.txt");
    expectOnlyProblem("hi.txt", 1, "the file cannot be read");
}

TEST_F(TextCompilerTest, AnEmptyFileLacksEveryKey) {
    write("hi.txt", "");
    const auto result = run();
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, HasSubstr("hi.txt:1: missing key 'readyForCall'\n"));
    EXPECT_THAT(result.errors, HasSubstr("hi.txt:1: missing key 'wizSummaryStart'\n"));
    EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 131);
}

TEST_F(TextCompilerTest, EveryProblemOfEveryFileIsReported) {
    const auto first = replace("en.txt", "quit = Quit", "quit = Quit ");
    const auto second = replace("ru.txt", "why = Почему?\n", "");
    const auto result = run();
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, HasSubstr("en.txt:" + std::to_string(first) + ": stray white space"));
    EXPECT_THAT(result.errors, HasSubstr("ru.txt:" + std::to_string(second) + ": missing key 'why'"));
}

TEST_F(TextCompilerTest, ATableThatCannotBeWrittenIsReported) {
    fs::create_directory(output());
    const auto result = run();
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, output().string() + ": cannot be written\n");
}

TEST_F(TextCompilerTest, AnOldTableSurvivesABadText) {
    write("table.cpp", "old");
    replace("ru.txt", "quit = Выйти", "quit =");
    EXPECT_EQ(run().status, 1);
    EXPECT_EQ(contents(output()), "old");
}

} // namespace
