#include "Curtain/FileCount.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string_view>
#include <vector>

namespace {

struct Case {
    std::string_view lang;
    std::string_view text;
    std::vector<std::int64_t> counts;
};

const std::vector<Case> cases{
    {"en", "files on desktop", {0, 1, 2, 12, 1000000}},
    {"xx", "files on desktop", {0, 1, 12}},
    {"es", "archivo en el escritorio", {1}},
    {"es", "archivos en el escritorio", {0, 2, 21, 101}},
    {"pt", "arquivo na área de trabalho", {1}},
    {"pt", "arquivos na área de trabalho", {0, 2, 21, 101}},
    {"fr", "fichier sur le bureau", {0, 1}},
    {"fr", "fichiers sur le bureau", {2, 21, 101}},
    {"ru", "файл на рабочем столе", {1, 21, 101, 1000001}},
    {"ru", "файла на рабочем столе", {2, 3, 4, 22, 104}},
    {"ru", "файлов на рабочем столе", {0, 5, 9, 10, 11, 12, 14, 19, 20, 25, 111, 1012}},
    {"ar", "ملف على سطح المكتب", {1, 2, 100, 101, 102, 1000}},
    {"ar", "ملفات على سطح المكتب", {0, 3, 10, 103, 110}},
    {"ar", "ملفًا على سطح المكتب", {11, 12, 99, 111, 199}},
    {"zh", "个桌面文件", {0, 1, 12}},
    {"hi", "आइटम डेस्कटॉप पर", {0, 1, 12}},
};

TEST(FileCount, TheNounFollowsItsNumber) {
    for (const auto& [lang, text, counts] : cases) {
        for (const auto count : counts) {
            EXPECT_EQ(Curtain::filesOnDesktop(count, lang), std::to_string(count) + ' ' + std::string(text))
                << lang;
        }
    }
}

} // namespace
