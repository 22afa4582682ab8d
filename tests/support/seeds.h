#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <string_view>

namespace fernlow::test {

/// Saves the input of a test as a seed for a fuzzer, if the environment variable FERNLOW_SEEDS
/// names a folder for seeds.
inline void keepSeed(std::string_view corpus, std::string_view input) {
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
