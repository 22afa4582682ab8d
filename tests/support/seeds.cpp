#include "support/seeds.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>

namespace fernlow::test {

void keepSeed(std::string_view corpus, std::string_view input) {
    const char* const folder = std::getenv("FERNLOW_SEEDS");
    if (folder == nullptr) {
        return;
    }
    const auto corpusFolder = std::filesystem::path(folder) / corpus;
    std::filesystem::create_directories(corpusFolder);
    const std::string name = std::to_string(std::hash<std::string_view>()(input));
    std::ofstream(corpusFolder / name, std::ios::binary) << input;
}

} // namespace fernlow::test
